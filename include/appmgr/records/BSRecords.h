// Records of the backup-set interface.
#pragma once

#include "appmgr/records/GenericRecords.h"

struct GetDefaultSCForStoreReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;                  // the backup set
  const char* storeName = nullptr;
};
static_assert(sizeof(GetDefaultSCForStoreReq) == 48 && offsetof(GetDefaultSCForStoreReq, storeName) == 40);

struct GetDefaultSCForStoreResp {
  AppMgrRespHdr hdr;
  uint64_t subclientId = 0;
};
static_assert(sizeof(GetDefaultSCForStoreResp) == 40);

// The request of both store-list operations.
struct GetStoreListReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
};
static_assert(sizeof(GetStoreListReq) == 40);

struct getFRdataInterfacePairReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  uint64_t pairId = 0;
  uint64_t selector = 0;
};
static_assert(sizeof(getFRdataInterfacePairReq) == 56 && offsetof(getFRdataInterfacePairReq, selector) == 48);

struct getFRdataInterfacePairResp {
  AppMgrRespHdr hdr;
  const char* first = nullptr;
  const char* second = nullptr;
};
static_assert(sizeof(getFRdataInterfacePairResp) == 48 && offsetof(getFRdataInterfacePairResp, second) == 40);

struct GetClientIdFromBackupSetReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
};
static_assert(sizeof(GetClientIdFromBackupSetReq) == 40);

struct GetClientIdFromBackupSetResp {
  AppMgrRespHdr hdr;
  uint64_t clientId = 0;
};
static_assert(sizeof(GetClientIdFromBackupSetResp) == 40);

struct CheckPairConflictReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
};
static_assert(sizeof(CheckPairConflictReq) == 56 && offsetof(CheckPairConflictReq, text2) == 48);

// One replication data pair as the server describes it; the caller's DataPairConflict has the
// same layout.
struct DataPairConflict_1 {
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  uint64_t id3 = 0;
  uint64_t id4 = 0;
  char text1[255] = {};
  char text2[128] = {};
  char text3[128] = {};
  char text4[1024] = {};
  uint64_t value = 0;
};
static_assert(sizeof(DataPairConflict_1) == 1576);
static_assert(offsetof(DataPairConflict_1, text1) == 32 && offsetof(DataPairConflict_1, text2) == 287 &&
              offsetof(DataPairConflict_1, text3) == 415 && offsetof(DataPairConflict_1, text4) == 543 &&
              offsetof(DataPairConflict_1, value) == 1568);

struct CheckPairConflictResp {
  AppMgrRespHdr hdr;
  DataPairConflict_1 pair1;
  DataPairConflict_1 pair2;
  uint32_t conflict = 0;  // 0: no conflict
};
static_assert(sizeof(CheckPairConflictResp) == 3192);
static_assert(offsetof(CheckPairConflictResp, pair2) == 1608 &&
              offsetof(CheckPairConflictResp, conflict) == 3184);

struct APPFLRSystemStateInfoReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  const char* name = nullptr;
};
static_assert(sizeof(APPFLRSystemStateInfoReq) == 48);

// One pair of a system-state entry.
struct APPFLRSystemStatePair {
  uint64_t id = 0;
  const char* name = nullptr;
};
static_assert(sizeof(APPFLRSystemStatePair) == 16);

struct APPFLRSystemStateInfo {
  uint64_t id = 0;
  uint32_t pairCount = 0;
  APPFLRSystemStatePair* pairs = nullptr;
  uint64_t value = 0;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
};
static_assert(sizeof(APPFLRSystemStateInfo) == 48);
static_assert(offsetof(APPFLRSystemStateInfo, pairCount) == 8 && offsetof(APPFLRSystemStateInfo, pairs) == 16 &&
              offsetof(APPFLRSystemStateInfo, value) == 24 && offsetof(APPFLRSystemStateInfo, text1) == 32 &&
              offsetof(APPFLRSystemStateInfo, text2) == 40);

struct APPFLRSystemStateInfoResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  APPFLRSystemStateInfo* infos = nullptr;
};
static_assert(sizeof(APPFLRSystemStateInfoResp) == 48 && offsetof(APPFLRSystemStateInfoResp, infos) == 40);
