// Records of the global-parameter and application-property interface.
#pragma once

#include "appmgr/records/GenericRecords.h"

struct GetGlobalParamReq {
  AppMgrReqHdr hdr;
  const char* name = nullptr;  // the parameter
};
static_assert(sizeof(GetGlobalParamReq) == 40 && offsetof(GetGlobalParamReq, name) == 32);

struct GetGlobalParamResp {
  AppMgrRespHdr hdr;
  const char* value = nullptr;
};
static_assert(sizeof(GetGlobalParamResp) == 40 && offsetof(GetGlobalParamResp, value) == 32);

struct SetGlobalParamReq {
  AppMgrReqHdr hdr;
  const char* name = nullptr;
  const char* value = nullptr;
};
static_assert(sizeof(SetGlobalParamReq) == 48);
static_assert(offsetof(SetGlobalParamReq, name) == 32 && offsetof(SetGlobalParamReq, value) == 40);

struct DelGlobalParamReq {
  AppMgrReqHdr hdr;
  const char* name = nullptr;
};
static_assert(sizeof(DelGlobalParamReq) == 40 && offsetof(DelGlobalParamReq, name) == 32);

struct GetAppPropertyReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
};
static_assert(sizeof(GetAppPropertyReq) == 48);
static_assert(offsetof(GetAppPropertyReq, id1) == 32 && offsetof(GetAppPropertyReq, id2) == 40);

struct GetAppPropertyResp {
  AppMgrRespHdr hdr;
  const char* value = nullptr;
};
static_assert(sizeof(GetAppPropertyResp) == 40 && offsetof(GetAppPropertyResp, value) == 32);

struct SetAppPropertyReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  const char* value = nullptr;
};
static_assert(sizeof(SetAppPropertyReq) == 56);
static_assert(offsetof(SetAppPropertyReq, id1) == 32 && offsetof(SetAppPropertyReq, id2) == 40 &&
              offsetof(SetAppPropertyReq, value) == 48);
