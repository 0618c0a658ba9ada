// Records of the log-monitoring interface and of the agent XML passthrough: an opaque text
// (an XML document) carried to the App Manager, and its answer carried back.
#pragma once

#include "appmgr/records/AppMgrHeaders.h"

// Sent under 0x34000222, answered by HandleLogMonitorXMLResp under 0x34000223.
struct HandleLogMonitorXMLReq {
  AppMgrReqHdr hdr;
  uint64_t reserved = 0;  // always 0
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  const char* extra = nullptr;  // always the empty string
  const char* xml = nullptr;    // the request document
};
static_assert(sizeof(HandleLogMonitorXMLReq) == 72);
static_assert(offsetof(HandleLogMonitorXMLReq, id1) == 40 &&
              offsetof(HandleLogMonitorXMLReq, id2) == 48 &&
              offsetof(HandleLogMonitorXMLReq, extra) == 56 &&
              offsetof(HandleLogMonitorXMLReq, xml) == 64);

struct HandleLogMonitorXMLResp {
  AppMgrRespHdr hdr;
  const char* xml = nullptr;  // the answer document
};
static_assert(sizeof(HandleLogMonitorXMLResp) == 40 &&
              offsetof(HandleLogMonitorXMLResp, xml) == 32);

// Sent under 0x34000224, answered by GetLogMonitoringParamResp under 0x34000225.
struct GetLogMonitoringParamReq {
  AppMgrReqHdr hdr;
  const char* name = nullptr;  // the parameter's name
  uint32_t type = 0;           // the parameter's type
  uint64_t id = 0;             // whom the parameter belongs to
};
static_assert(sizeof(GetLogMonitoringParamReq) == 56);
static_assert(offsetof(GetLogMonitoringParamReq, name) == 32 &&
              offsetof(GetLogMonitoringParamReq, type) == 40 &&
              offsetof(GetLogMonitoringParamReq, id) == 48);

struct GetLogMonitoringParamResp {
  AppMgrRespHdr hdr;
  const char* value = nullptr;  // the parameter's value
};
static_assert(sizeof(GetLogMonitoringParamResp) == 40 &&
              offsetof(GetLogMonitoringParamResp, value) == 32);

// The agent XML passthrough: sent under 0x34000250, answered by HandleDaxXMLResp under
// 0x34000251, whose header's error code is the status of the request.
struct HandleDaxXMLReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t reserved1 = 0;  // always 0
  uint64_t reserved2 = 0;  // always 0
  uint64_t id2 = 0;
  uint64_t reserved3 = 0;     // always 0
  const char* xml = nullptr;  // the request document
};
static_assert(sizeof(HandleDaxXMLReq) == 80);
static_assert(offsetof(HandleDaxXMLReq, id1) == 32 && offsetof(HandleDaxXMLReq, reserved1) == 40 &&
              offsetof(HandleDaxXMLReq, reserved2) == 48 && offsetof(HandleDaxXMLReq, id2) == 56 &&
              offsetof(HandleDaxXMLReq, reserved3) == 64 && offsetof(HandleDaxXMLReq, xml) == 72);

struct HandleDaxXMLResp {
  AppMgrRespHdr hdr;
  const char* xml = nullptr;  // the answer document
};
static_assert(sizeof(HandleDaxXMLResp) == 40 && offsetof(HandleDaxXMLResp, xml) == 32);
