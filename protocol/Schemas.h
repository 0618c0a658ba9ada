// Every field list of every record.
#pragma once

#include "protocol/schemas/AlertSchemas.h"
#include "protocol/schemas/BSSchemas.h"
#include "protocol/schemas/GenericSchemas.h"
#include "protocol/schemas/ListSchemas.h"
#include "protocol/schemas/XmlSchemas.h"
