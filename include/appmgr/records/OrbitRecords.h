// Records of the domain (Orbit) interface.
#pragma once

#include "appmgr/records/GenericRecords.h"

// The domain record: four ids, six texts and one integer. OrbitInfoResp1 has the same layout
// after its response header.
struct OrbitInfoReq1 {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  uint64_t id3 = 0;
  uint64_t id4 = 0;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
  const char* text3 = nullptr;
  const char* text4 = nullptr;
  const char* text5 = nullptr;
  const char* text6 = nullptr;
  int32_t number = 0;
};
static_assert(sizeof(OrbitInfoReq1) == 120);
static_assert(offsetof(OrbitInfoReq1, id1) == 32 && offsetof(OrbitInfoReq1, id2) == 40 &&
              offsetof(OrbitInfoReq1, id3) == 48 && offsetof(OrbitInfoReq1, id4) == 56 &&
              offsetof(OrbitInfoReq1, text1) == 64 && offsetof(OrbitInfoReq1, text2) == 72 &&
              offsetof(OrbitInfoReq1, text3) == 80 && offsetof(OrbitInfoReq1, text4) == 88 &&
              offsetof(OrbitInfoReq1, text5) == 96 && offsetof(OrbitInfoReq1, text6) == 104 &&
              offsetof(OrbitInfoReq1, number) == 112);

struct OrbitInfoResp1 {
  AppMgrRespHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  uint64_t id3 = 0;
  uint64_t id4 = 0;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
  const char* text3 = nullptr;
  const char* text4 = nullptr;
  const char* text5 = nullptr;
  const char* text6 = nullptr;
  int32_t number = 0;
};
static_assert(sizeof(OrbitInfoResp1) == 120);
static_assert(offsetof(OrbitInfoResp1, id1) == 32 && offsetof(OrbitInfoResp1, id2) == 40 &&
              offsetof(OrbitInfoResp1, id3) == 48 && offsetof(OrbitInfoResp1, id4) == 56 &&
              offsetof(OrbitInfoResp1, text1) == 64 && offsetof(OrbitInfoResp1, text2) == 72 &&
              offsetof(OrbitInfoResp1, text3) == 80 && offsetof(OrbitInfoResp1, text4) == 88 &&
              offsetof(OrbitInfoResp1, text5) == 96 && offsetof(OrbitInfoResp1, text6) == 104 &&
              offsetof(OrbitInfoResp1, number) == 112);

struct RemoveOrbitReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;  // the domain
};
static_assert(sizeof(RemoveOrbitReq) == 40 && offsetof(RemoveOrbitReq, id) == 32);
