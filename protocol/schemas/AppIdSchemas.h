// Field lists of the application-id records.
#pragma once

#include "appmgr/records/AppIdRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(AppIdInfoReq, WIRE_F(AppIdInfoReq, hdr), WIRE_F(AppIdInfoReq, number0),
                   WIRE_F(AppIdInfoReq, number1), WIRE_F(AppIdInfoReq, number2),
                   WIRE_F(AppIdInfoReq, number3), WIRE_F(AppIdInfoReq, number4),
                   WIRE_F(AppIdInfoReq, number5), WIRE_F(AppIdInfoReq, number6),
                   WIRE_F(AppIdInfoReq, number7), WIRE_F(AppIdInfoReq, number8),
                   WIRE_F(AppIdInfoReq, text0), WIRE_F(AppIdInfoReq, text1),
                   WIRE_F(AppIdInfoReq, text2), WIRE_F(AppIdInfoReq, option));
APPMGR_WIRE_RECORD(AppIdInfoResp, WIRE_F(AppIdInfoResp, hdr), WIRE_F(AppIdInfoResp, number0),
                   WIRE_F(AppIdInfoResp, number1), WIRE_F(AppIdInfoResp, number2),
                   WIRE_F(AppIdInfoResp, number3), WIRE_F(AppIdInfoResp, number4),
                   WIRE_F(AppIdInfoResp, number5), WIRE_F(AppIdInfoResp, number6),
                   WIRE_F(AppIdInfoResp, number7), WIRE_F(AppIdInfoResp, number8),
                   WIRE_F(AppIdInfoResp, text0), WIRE_F(AppIdInfoResp, text1),
                   WIRE_F(AppIdInfoResp, text2));
APPMGR_WIRE_RECORD(AppIdUpdSPReq, WIRE_F(AppIdUpdSPReq, hdr), WIRE_F(AppIdUpdSPReq, first),
                   WIRE_F(AppIdUpdSPReq, second), WIRE_F(AppIdUpdSPReq, third));
APPMGR_WIRE_RECORD(GetIncrAgInfoReq, WIRE_F(GetIncrAgInfoReq, hdr), WIRE_F(GetIncrAgInfoReq, id));
APPMGR_WIRE_RECORD(GetIncrAgInfoRes, WIRE_F(GetIncrAgInfoRes, hdr),
                   WIRE_F(GetIncrAgInfoRes, archiveGroupId));
