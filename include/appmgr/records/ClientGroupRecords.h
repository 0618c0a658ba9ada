// Records of the client-group interface. The fields are named after the members of the
// caller's _AppClientGroupInfo they carry; the two records order them differently.
#pragma once

#include "appmgr/records/GenericRecords.h"

// The group as a request sends it. int1 has no field; int3 is sent by create only.
struct ClientGroupInfoReq {
  AppMgrReqHdr hdr;
  uint64_t int2 = 0;
  uint64_t int3 = 0;
  uint64_t int4 = 0;
  const char* text1 = nullptr;
  uint64_t int5 = 0;
  const char* text3 = nullptr;
  const char* text2 = nullptr;
  uint64_t int6 = 0;
};
static_assert(sizeof(ClientGroupInfoReq) == 96);
static_assert(
    offsetof(ClientGroupInfoReq, int2) == 32 && offsetof(ClientGroupInfoReq, int3) == 40 &&
    offsetof(ClientGroupInfoReq, int4) == 48 && offsetof(ClientGroupInfoReq, text1) == 56 &&
    offsetof(ClientGroupInfoReq, int5) == 64 && offsetof(ClientGroupInfoReq, text3) == 72 &&
    offsetof(ClientGroupInfoReq, text2) == 80 && offsetof(ClientGroupInfoReq, int6) == 88);

struct ClientGroupInfoResp {
  AppMgrRespHdr hdr;
  uint64_t int1 = 0;
  uint64_t int2 = 0;
  uint64_t int3 = 0;
  uint64_t int4 = 0;
  const char* text1 = nullptr;
  uint64_t int5 = 0;
  const char* text3 = nullptr;
  const char* text2 = nullptr;
  uint64_t int6 = 0;
};
static_assert(sizeof(ClientGroupInfoResp) == 104);
static_assert(
    offsetof(ClientGroupInfoResp, int1) == 32 && offsetof(ClientGroupInfoResp, int2) == 40 &&
    offsetof(ClientGroupInfoResp, int3) == 48 && offsetof(ClientGroupInfoResp, int4) == 56 &&
    offsetof(ClientGroupInfoResp, text1) == 64 && offsetof(ClientGroupInfoResp, int5) == 72 &&
    offsetof(ClientGroupInfoResp, text3) == 80 && offsetof(ClientGroupInfoResp, text2) == 88 &&
    offsetof(ClientGroupInfoResp, int6) == 96);
