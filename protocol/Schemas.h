// Every field list of every record.
#pragma once

#include "protocol/schemas/BSSchemas.h"
#include "protocol/schemas/GenericSchemas.h"
#include "protocol/schemas/ListSchemas.h"
#include "protocol/schemas/SnapInfoSchemas.h"
#include "protocol/schemas/MailBoxDelegateSchemas.h"
#include "protocol/schemas/FileContentSchemas.h"
