// Field lists of the client file content records.
#pragma once

#include "appmgr/records/FileContentRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(GetClientFileContentReq, WIRE_F(GetClientFileContentReq, hdr),
                   WIRE_F(GetClientFileContentReq, clientId),
                   WIRE_F(GetClientFileContentReq, text1), WIRE_F(GetClientFileContentReq, text2));
APPMGR_WIRE_RECORD(GetClientFileContentResp, WIRE_F(GetClientFileContentResp, hdr));
APPMGR_WIRE_RECORD(SetClientFileContentReq, WIRE_F(SetClientFileContentReq, hdr),
                   WIRE_F(SetClientFileContentReq, clientId),
                   WIRE_F(SetClientFileContentReq, serverPath),
                   WIRE_F(SetClientFileContentReq, text));
APPMGR_WIRE_RECORD(SetClientFileContentResp, WIRE_F(SetClientFileContentResp, hdr));
APPMGR_WIRE_RECORD(pushVSDataReq, WIRE_F(pushVSDataReq, hdr), WIRE_F(pushVSDataReq, value1),
                   WIRE_F(pushVSDataReq, value2), WIRE_F(pushVSDataReq, value3),
                   WIRE_F(pushVSDataReq, value4), WIRE_F(pushVSDataReq, text),
                   WIRE_F(pushVSDataReq, number));
APPMGR_WIRE_RECORD(pushVSDataResp, WIRE_F(pushVSDataResp, hdr));
