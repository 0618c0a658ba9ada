// Field lists of the records that carry XML messages, of log monitoring and of the agent XML
// passthrough.
#pragma once

#include "appmgr/records/LogMonitorRecords.h"
#include "appmgr/records/XmlRecords.h"
#include "protocol/schemas/GenericSchemas.h"

APPMGR_WIRE_RECORD(HandleXMLReq, WIRE_F(HandleXMLReq, hdr), WIRE_F(HandleXMLReq, route),
                   WIRE_F(HandleXMLReq, xmlType), WIRE_F(HandleXMLReq, value),
                   WIRE_F(HandleXMLReq, extra), WIRE_F(HandleXMLReq, xml));
APPMGR_WIRE_RECORD(HandleXMLResp, WIRE_F(HandleXMLResp, hdr), WIRE_F(HandleXMLResp, xml));
APPMGR_WIRE_RECORD(SendKpAlertXML_Req, WIRE_F(SendKpAlertXML_Req, hdr),
                   WIRE_F(SendKpAlertXML_Req, tagId), WIRE_F(SendKpAlertXML_Req, xml));
APPMGR_WIRE_RECORD(SendKpAlertXML_Resp, WIRE_F(SendKpAlertXML_Resp, hdr),
                   WIRE_F(SendKpAlertXML_Resp, tagId), WIRE_F(SendKpAlertXML_Resp, xml));

APPMGR_WIRE_RECORD(HandleLogMonitorXMLReq, WIRE_F(HandleLogMonitorXMLReq, hdr),
                   WIRE_F(HandleLogMonitorXMLReq, reserved), WIRE_F(HandleLogMonitorXMLReq, id1),
                   WIRE_F(HandleLogMonitorXMLReq, id2), WIRE_F(HandleLogMonitorXMLReq, extra),
                   WIRE_F(HandleLogMonitorXMLReq, xml));
APPMGR_WIRE_RECORD(HandleLogMonitorXMLResp, WIRE_F(HandleLogMonitorXMLResp, hdr),
                   WIRE_F(HandleLogMonitorXMLResp, xml));
APPMGR_WIRE_RECORD(GetLogMonitoringParamReq, WIRE_F(GetLogMonitoringParamReq, hdr),
                   WIRE_F(GetLogMonitoringParamReq, name), WIRE_F(GetLogMonitoringParamReq, type),
                   WIRE_F(GetLogMonitoringParamReq, id));
APPMGR_WIRE_RECORD(GetLogMonitoringParamResp, WIRE_F(GetLogMonitoringParamResp, hdr),
                   WIRE_F(GetLogMonitoringParamResp, value));
APPMGR_WIRE_RECORD(HandleDaxXMLReq, WIRE_F(HandleDaxXMLReq, hdr), WIRE_F(HandleDaxXMLReq, id1),
                   WIRE_F(HandleDaxXMLReq, reserved1), WIRE_F(HandleDaxXMLReq, reserved2),
                   WIRE_F(HandleDaxXMLReq, id2), WIRE_F(HandleDaxXMLReq, reserved3),
                   WIRE_F(HandleDaxXMLReq, xml));
APPMGR_WIRE_RECORD(HandleDaxXMLResp, WIRE_F(HandleDaxXMLResp, hdr), WIRE_F(HandleDaxXMLResp, xml));
