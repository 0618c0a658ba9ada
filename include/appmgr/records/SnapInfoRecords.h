// Records of the snapshot-info interface.
//
// A snapshot record travels as one SnapInfo block of fifteen 64-bit slots. The caller's fields
// F1..F15 (_AppSnapInfo) sit in the slots in declaration order except F4, F5 and F6, which
// travel as F5, F6, F4 (slots 3, 4, 5). The members below are named after the field they carry,
// in slot order.
#pragma once

#include "appmgr/records/GenericRecords.h"

struct SnapInfo {
  uint64_t f1 = 0;            // slot 0
  uint64_t f2 = 0;            // slot 1: the record's id
  const char* f3 = nullptr;   // slot 2
  const char* f5 = nullptr;   // slot 3
  const char* f6 = nullptr;   // slot 4
  const char* f4 = nullptr;   // slot 5
  uint64_t f7 = 0;            // slot 6: never filled or read by the library
  const char* f8 = nullptr;   // slot 7
  const char* f9 = nullptr;   // slot 8
  uint64_t f10 = 0;           // slot 9
  uint64_t f11 = 0;           // slot 10
  uint64_t f12 = 0;           // slot 11
  const char* f13 = nullptr;  // slot 12
  const char* f14 = nullptr;  // slot 13: never filled or read by the library
  uint64_t f15 = 0;           // slot 14
};
static_assert(sizeof(SnapInfo) == 120);
static_assert(offsetof(SnapInfo, f1) == 0 && offsetof(SnapInfo, f2) == 8 && offsetof(SnapInfo, f3) == 16 &&
              offsetof(SnapInfo, f5) == 24 && offsetof(SnapInfo, f6) == 32 &&
              offsetof(SnapInfo, f4) == 40 && offsetof(SnapInfo, f7) == 48 &&
              offsetof(SnapInfo, f8) == 56 && offsetof(SnapInfo, f9) == 64 &&
              offsetof(SnapInfo, f10) == 72 && offsetof(SnapInfo, f11) == 80 &&
              offsetof(SnapInfo, f12) == 88 && offsetof(SnapInfo, f13) == 96 &&
              offsetof(SnapInfo, f14) == 104 && offsetof(SnapInfo, f15) == 112);

// The request of lookup, create, update and remove.
struct SanpInfoReq {
  AppMgrReqHdr hdr;
  SnapInfo info;
};
static_assert(sizeof(SanpInfoReq) == 152 && offsetof(SanpInfoReq, info) == 32);

struct SanpInfoResp {
  AppMgrRespHdr hdr;
  SnapInfo info;
};
static_assert(sizeof(SanpInfoResp) == 152 && offsetof(SanpInfoResp, info) == 32);

struct SetSnapInfoReq {
  AppMgrReqHdr hdr;
  SnapInfo info;
};
static_assert(sizeof(SetSnapInfoReq) == 152 && offsetof(SetSnapInfoReq, info) == 32);

struct GetSnapInfoListReq {
  AppMgrReqHdr hdr;
};
static_assert(sizeof(GetSnapInfoListReq) == 32);

struct GetSnapInfoListResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  SnapInfo* infos = nullptr;
};
static_assert(sizeof(GetSnapInfoListResp) == 48 && offsetof(GetSnapInfoListResp, count) == 32 &&
              offsetof(GetSnapInfoListResp, infos) == 40);

struct SetSnapInfoListReq {
  AppMgrReqHdr hdr;
  uint32_t count = 0;
  SnapInfo* infos = nullptr;
};
static_assert(sizeof(SetSnapInfoListReq) == 48 && offsetof(SetSnapInfoListReq, count) == 32 &&
              offsetof(SetSnapInfoListReq, infos) == 40);
