// The server-fill exchange of the client-side message cache.
#pragma once

#include "appmgr/records/AppMgrHeaders.h"

struct EnableServerCacheReq {
  AppMgrReqHdr hdr;
  uint64_t jobId = 0;  // the job whose prepared messages are wanted
};
static_assert(sizeof(EnableServerCacheReq) == 40 && offsetof(EnableServerCacheReq, jobId) == 32);

struct EnableServerCacheResp {
  AppMgrRespHdr hdr;
  const char* xmlText = nullptr;  // an App::EnableAppServerCacheResp XML message
};
static_assert(sizeof(EnableServerCacheResp) == 40 && offsetof(EnableServerCacheResp, xmlText) == 32);
