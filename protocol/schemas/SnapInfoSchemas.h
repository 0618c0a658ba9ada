// Field lists of the snapshot-info records.
#pragma once

#include "appmgr/records/SnapInfoRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(SnapInfo, WIRE_F(SnapInfo, f1), WIRE_F(SnapInfo, f2), WIRE_F(SnapInfo, f3),
                   WIRE_F(SnapInfo, f5), WIRE_F(SnapInfo, f6), WIRE_F(SnapInfo, f4),
                   WIRE_F(SnapInfo, f7), WIRE_F(SnapInfo, f8), WIRE_F(SnapInfo, f9),
                   WIRE_F(SnapInfo, f10), WIRE_F(SnapInfo, f11), WIRE_F(SnapInfo, f12),
                   WIRE_F(SnapInfo, f13), WIRE_F(SnapInfo, f14), WIRE_F(SnapInfo, f15));
APPMGR_WIRE_RECORD(SanpInfoReq, WIRE_F(SanpInfoReq, hdr), WIRE_F(SanpInfoReq, info));
APPMGR_WIRE_RECORD(SanpInfoResp, WIRE_F(SanpInfoResp, hdr), WIRE_F(SanpInfoResp, info));
APPMGR_WIRE_RECORD(SetSnapInfoReq, WIRE_F(SetSnapInfoReq, hdr), WIRE_F(SetSnapInfoReq, info));
APPMGR_WIRE_RECORD(GetSnapInfoListReq, WIRE_F(GetSnapInfoListReq, hdr));
APPMGR_WIRE_RECORD(GetSnapInfoListResp, WIRE_F(GetSnapInfoListResp, hdr),
                   WIRE_ARRAY(GetSnapInfoListResp, count, infos));
APPMGR_WIRE_RECORD(SetSnapInfoListReq, WIRE_F(SetSnapInfoListReq, hdr),
                   WIRE_ARRAY(SetSnapInfoListReq, count, infos));
