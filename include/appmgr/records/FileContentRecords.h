// Records of the client file content operations of the adapters interface. Their responses
// are the response header alone.
#pragma once

#include "appmgr/records/GenericRecords.h"

struct GetClientFileContentReq {
  AppMgrReqHdr hdr;
  uint64_t clientId = 0;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
};
static_assert(sizeof(GetClientFileContentReq) == 56 &&
              offsetof(GetClientFileContentReq, clientId) == 32 &&
              offsetof(GetClientFileContentReq, text1) == 40 &&
              offsetof(GetClientFileContentReq, text2) == 48);

struct GetClientFileContentResp {
  AppMgrRespHdr hdr;
};
static_assert(sizeof(GetClientFileContentResp) == 32);

// Registers a file put into the server's Temp/ folder.
struct SetClientFileContentReq {
  AppMgrReqHdr hdr;
  uint64_t clientId = 0;
  const char* serverPath = nullptr;  // install directory, "Temp/", file name
  const char* text = nullptr;        // the caller's second string
};
static_assert(sizeof(SetClientFileContentReq) == 56 &&
              offsetof(SetClientFileContentReq, clientId) == 32 &&
              offsetof(SetClientFileContentReq, serverPath) == 40 &&
              offsetof(SetClientFileContentReq, text) == 48);

struct SetClientFileContentResp {
  AppMgrRespHdr hdr;
};
static_assert(sizeof(SetClientFileContentResp) == 32);

struct pushVSDataReq {
  AppMgrReqHdr hdr;
  uint64_t value1 = 0;  // the caller's four numbers, in order
  uint64_t value2 = 0;
  uint64_t value3 = 0;
  uint64_t value4 = 0;
  const char* text = nullptr;
  int32_t number = 0;   // the caller's int
};
static_assert(sizeof(pushVSDataReq) == 80 && offsetof(pushVSDataReq, value1) == 32 &&
              offsetof(pushVSDataReq, value2) == 40 && offsetof(pushVSDataReq, value3) == 48 &&
              offsetof(pushVSDataReq, value4) == 56 && offsetof(pushVSDataReq, text) == 64 &&
              offsetof(pushVSDataReq, number) == 72);

struct pushVSDataResp {
  AppMgrRespHdr hdr;
};
static_assert(sizeof(pushVSDataResp) == 32);
