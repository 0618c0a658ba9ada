// Every field list of every record.
#pragma once

#include "protocol/schemas/AppIdSchemas.h"
#include "protocol/schemas/AlertSchemas.h"
#include "protocol/schemas/BSSchemas.h"
#include "protocol/schemas/ClientSchemas.h"
#include "protocol/schemas/GenericSchemas.h"
#include "protocol/schemas/ListSchemas.h"
#include "protocol/schemas/ClientGroupSchemas.h"
#include "protocol/schemas/GlobalParamSchemas.h"
#include "protocol/schemas/OrbitSchemas.h"
#include "protocol/schemas/SCSchemas.h"
#include "protocol/schemas/InstSchemas.h"
#include "protocol/schemas/AppTypeSchemas.h"
#include "protocol/schemas/XmlSchemas.h"
#include "protocol/schemas/SnapInfoSchemas.h"
#include "protocol/schemas/MailBoxDelegateSchemas.h"
#include "protocol/schemas/FileContentSchemas.h"
