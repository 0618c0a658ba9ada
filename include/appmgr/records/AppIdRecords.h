// Records of the application-id interface.
//
// AppIdInfoReq carries a whole application id (nine numbers, three texts, an option). It is a
// record of its own, with its own field list, because other requests embed it whole, header and
// all.
#pragma once

#include "appmgr/records/GenericRecords.h"

struct AppIdInfoReq {
  AppMgrReqHdr hdr;
  uint64_t number0 = 0;
  uint64_t number1 = 0;
  uint64_t number2 = 0;
  uint64_t number3 = 0;
  uint64_t number4 = 0;
  uint64_t number5 = 0;
  uint64_t number6 = 0;
  uint64_t number7 = 0;
  uint64_t number8 = 0;
  const char* text0 = nullptr;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
  uint32_t option = 0;
};
static_assert(sizeof(AppIdInfoReq) == 136);
static_assert(offsetof(AppIdInfoReq, number0) == 32 && offsetof(AppIdInfoReq, number1) == 40 &&
              offsetof(AppIdInfoReq, number2) == 48 && offsetof(AppIdInfoReq, number3) == 56 &&
              offsetof(AppIdInfoReq, number4) == 64 && offsetof(AppIdInfoReq, number5) == 72 &&
              offsetof(AppIdInfoReq, number6) == 80 && offsetof(AppIdInfoReq, number7) == 88 &&
              offsetof(AppIdInfoReq, number8) == 96 && offsetof(AppIdInfoReq, text0) == 104 &&
              offsetof(AppIdInfoReq, text1) == 112 && offsetof(AppIdInfoReq, text2) == 120 &&
              offsetof(AppIdInfoReq, option) == 128);

struct AppIdInfoResp {
  AppMgrRespHdr hdr;
  uint64_t number0 = 0;
  uint64_t number1 = 0;
  uint64_t number2 = 0;
  uint64_t number3 = 0;
  uint64_t number4 = 0;
  uint64_t number5 = 0;
  uint64_t number6 = 0;
  uint64_t number7 = 0;
  uint64_t number8 = 0;
  const char* text0 = nullptr;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
};
static_assert(sizeof(AppIdInfoResp) == 128);
static_assert(offsetof(AppIdInfoResp, number0) == 32 && offsetof(AppIdInfoResp, number8) == 96 &&
              offsetof(AppIdInfoResp, text0) == 104 && offsetof(AppIdInfoResp, text1) == 112 &&
              offsetof(AppIdInfoResp, text2) == 120);

// The archive groups of an application id: three values, in the caller's argument order.
struct AppIdUpdSPReq {
  AppMgrReqHdr hdr;
  uint64_t first = 0;
  uint64_t second = 0;
  uint64_t third = 0;
};
static_assert(sizeof(AppIdUpdSPReq) == 56);
static_assert(offsetof(AppIdUpdSPReq, first) == 32 && offsetof(AppIdUpdSPReq, second) == 40 &&
              offsetof(AppIdUpdSPReq, third) == 48);

struct GetIncrAgInfoReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
};
static_assert(sizeof(GetIncrAgInfoReq) == 40);

struct GetIncrAgInfoRes {
  AppMgrRespHdr hdr;
  uint64_t archiveGroupId = 0;
};
static_assert(sizeof(GetIncrAgInfoRes) == 40);
