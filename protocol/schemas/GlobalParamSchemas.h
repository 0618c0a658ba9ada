// Field lists of the global-parameter and application-property records.
#pragma once

#include "appmgr/records/GlobalParamRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(GetGlobalParamReq, WIRE_F(GetGlobalParamReq, hdr),
                   WIRE_F(GetGlobalParamReq, name));
APPMGR_WIRE_RECORD(GetGlobalParamResp, WIRE_F(GetGlobalParamResp, hdr),
                   WIRE_F(GetGlobalParamResp, value));
APPMGR_WIRE_RECORD(SetGlobalParamReq, WIRE_F(SetGlobalParamReq, hdr),
                   WIRE_F(SetGlobalParamReq, name), WIRE_F(SetGlobalParamReq, value));
APPMGR_WIRE_RECORD(DelGlobalParamReq, WIRE_F(DelGlobalParamReq, hdr),
                   WIRE_F(DelGlobalParamReq, name));
APPMGR_WIRE_RECORD(GetAppPropertyReq, WIRE_F(GetAppPropertyReq, hdr),
                   WIRE_F(GetAppPropertyReq, id1), WIRE_F(GetAppPropertyReq, id2));
APPMGR_WIRE_RECORD(GetAppPropertyResp, WIRE_F(GetAppPropertyResp, hdr),
                   WIRE_F(GetAppPropertyResp, value));
APPMGR_WIRE_RECORD(SetAppPropertyReq, WIRE_F(SetAppPropertyReq, hdr),
                   WIRE_F(SetAppPropertyReq, id1), WIRE_F(SetAppPropertyReq, id2),
                   WIRE_F(SetAppPropertyReq, value));
