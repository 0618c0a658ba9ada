// Field lists of the client-group records.
#pragma once

#include "appmgr/records/ClientGroupRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(ClientGroupInfoReq, WIRE_F(ClientGroupInfoReq, hdr),
                   WIRE_F(ClientGroupInfoReq, int2), WIRE_F(ClientGroupInfoReq, int3),
                   WIRE_F(ClientGroupInfoReq, int4), WIRE_F(ClientGroupInfoReq, text1),
                   WIRE_F(ClientGroupInfoReq, int5), WIRE_F(ClientGroupInfoReq, text3),
                   WIRE_F(ClientGroupInfoReq, text2), WIRE_F(ClientGroupInfoReq, int6));
APPMGR_WIRE_RECORD(ClientGroupInfoResp, WIRE_F(ClientGroupInfoResp, hdr),
                   WIRE_F(ClientGroupInfoResp, int1), WIRE_F(ClientGroupInfoResp, int2),
                   WIRE_F(ClientGroupInfoResp, int3), WIRE_F(ClientGroupInfoResp, int4),
                   WIRE_F(ClientGroupInfoResp, text1), WIRE_F(ClientGroupInfoResp, int5),
                   WIRE_F(ClientGroupInfoResp, text3), WIRE_F(ClientGroupInfoResp, text2),
                   WIRE_F(ClientGroupInfoResp, int6));
