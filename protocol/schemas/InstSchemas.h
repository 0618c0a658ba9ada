// Field lists of the instance records.
#pragma once

#include "appmgr/records/InstRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(GenericLookupReq3, WIRE_F(GenericLookupReq3, hdr), WIRE_F(GenericLookupReq3, id));
APPMGR_WIRE_RECORD(GenericLookupResp3, WIRE_F(GenericLookupResp3, hdr),
                   WIRE_F(GenericLookupResp3, id), WIRE_F(GenericLookupResp3, name),
                   WIRE_F(GenericLookupResp3, value), WIRE_F(GenericLookupResp3, attr2),
                   WIRE_F(GenericLookupResp3, attr3), WIRE_F(GenericLookupResp3, attr4),
                   WIRE_F(GenericLookupResp3, text));
APPMGR_WIRE_RECORD(GenericInitContentResp, WIRE_F(GenericInitContentResp, hdr),
                   WIRE_ARRAY(GenericInitContentResp, count, content));
