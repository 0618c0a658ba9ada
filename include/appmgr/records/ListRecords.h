// Records of the entity list queries (the adapters interface).
//
// A list response is a set of counted arrays read side by side: element i of every array
// describes the same member, and one array (the ids, or the strings of a string list) drives
// the walk. A request's selectors are filters whose meaning is the server's (docs/server.md);
// the trailing flag is a 32-bit field: a caller's bool as 0 or 1, a caller's int unchanged.
#pragma once

#include "appmgr/records/GenericRecords.h"

// ---- Requests ----

struct GetProvidersListReq {
  AppMgrReqHdr hdr;
  uint64_t selector = 0;
};
static_assert(sizeof(GetProvidersListReq) == 40 && offsetof(GetProvidersListReq, selector) == 32);

struct GetAppIdListReq {
  AppMgrReqHdr hdr;
  uint64_t selector1 = 0;
  uint64_t selector2 = 0;
  uint64_t selector3 = 0;
  uint64_t selector4 = 0;
  uint64_t selector5 = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetAppIdListReq) == 80);
static_assert(offsetof(GetAppIdListReq, selector1) == 32 &&
              offsetof(GetAppIdListReq, selector2) == 40 &&
              offsetof(GetAppIdListReq, selector3) == 48 &&
              offsetof(GetAppIdListReq, selector4) == 56 &&
              offsetof(GetAppIdListReq, selector5) == 64 && offsetof(GetAppIdListReq, flag) == 72);

struct GetClientListOfTypeReq {
  AppMgrReqHdr hdr;
  uint64_t selector1 = 0;
  uint64_t selector2 = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetClientListOfTypeReq) == 56);
static_assert(offsetof(GetClientListOfTypeReq, selector2) == 40 &&
              offsetof(GetClientListOfTypeReq, flag) == 48);

struct GetInstanceListReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  uint64_t id3 = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetInstanceListReq) == 64);
static_assert(offsetof(GetInstanceListReq, id1) == 32 && offsetof(GetInstanceListReq, id2) == 40 &&
              offsetof(GetInstanceListReq, id3) == 48 && offsetof(GetInstanceListReq, flag) == 56);

struct GetBackupsetListReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  uint64_t id3 = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetBackupsetListReq) == 64);
static_assert(offsetof(GetBackupsetListReq, id1) == 32 &&
              offsetof(GetBackupsetListReq, id2) == 40 &&
              offsetof(GetBackupsetListReq, id3) == 48 &&
              offsetof(GetBackupsetListReq, flag) == 56);

struct GetSubclientListReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetSubclientListReq) == 56);
static_assert(offsetof(GetSubclientListReq, id2) == 40 &&
              offsetof(GetSubclientListReq, flag) == 48);

struct GetAllSubclientListReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  uint64_t id3 = 0;
  uint64_t id4 = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetAllSubclientListReq) == 72);
static_assert(offsetof(GetAllSubclientListReq, id3) == 48 &&
              offsetof(GetAllSubclientListReq, id4) == 56 &&
              offsetof(GetAllSubclientListReq, flag) == 64);

struct GetSiblingSCListReq {
  AppMgrReqHdr hdr;
  uint64_t subclientId = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetSiblingSCListReq) == 48 && offsetof(GetSiblingSCListReq, flag) == 40);

struct GetClientListByAppTypeReq {
  AppMgrReqHdr hdr;
  uint64_t selector1 = 0;
  uint64_t selector2 = 0;
};
static_assert(sizeof(GetClientListByAppTypeReq) == 48 &&
              offsetof(GetClientListByAppTypeReq, selector2) == 40);

struct GetClientListByAppGroupReq {
  AppMgrReqHdr hdr;
  uint64_t selector1 = 0;
  uint64_t selector2 = 0;
};
static_assert(sizeof(GetClientListByAppGroupReq) == 48 &&
              offsetof(GetClientListByAppGroupReq, selector2) == 40);

struct GetAppIdListByArchIdReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
};
static_assert(sizeof(GetAppIdListByArchIdReq) == 48 &&
              offsetof(GetAppIdListByArchIdReq, id2) == 40);

struct GetClientsByClientGroupReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetClientsByClientGroupReq) == 56);
static_assert(offsetof(GetClientsByClientGroupReq, id2) == 40 &&
              offsetof(GetClientsByClientGroupReq, flag) == 48);

struct GetClientGroupsOfClientReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetClientGroupsOfClientReq) == 56);
static_assert(offsetof(GetClientGroupsOfClientReq, id2) == 40 &&
              offsetof(GetClientGroupsOfClientReq, flag) == 48);

// The domain name travels by pointer; it is the caller's string, valid for the call.
struct GetEXDMDomainListReq {
  AppMgrReqHdr hdr;
  const char* domain = nullptr;
};
static_assert(sizeof(GetEXDMDomainListReq) == 40 && offsetof(GetEXDMDomainListReq, domain) == 32);

struct GetCloudListReq {
  AppMgrReqHdr hdr;
  uint64_t selector = 0;
};
static_assert(sizeof(GetCloudListReq) == 40);

struct GetCloudClientListReq {
  AppMgrReqHdr hdr;
  uint64_t cloudId = 0;
};
static_assert(sizeof(GetCloudClientListReq) == 40);

// ---- Responses ----

// Five arrays walked by the count of the ids, which come third.
struct GetProvidersListResp {
  AppMgrRespHdr hdr;
  uint32_t nameCount = 0;
  const char** names = nullptr;
  uint32_t textCount = 0;
  const char** texts = nullptr;  // a second string per provider
  uint32_t idCount = 0;
  uint64_t* ids = nullptr;
  uint32_t flagCount = 0;
  uint64_t* flags = nullptr;  // non-zero: true
  uint32_t valueCount = 0;
  uint64_t* values = nullptr;
};
static_assert(sizeof(GetProvidersListResp) == 112);
static_assert(offsetof(GetProvidersListResp, nameCount) == 32 &&
              offsetof(GetProvidersListResp, names) == 40 &&
              offsetof(GetProvidersListResp, textCount) == 48 &&
              offsetof(GetProvidersListResp, texts) == 56 &&
              offsetof(GetProvidersListResp, idCount) == 64 &&
              offsetof(GetProvidersListResp, ids) == 72 &&
              offsetof(GetProvidersListResp, flagCount) == 80 &&
              offsetof(GetProvidersListResp, flags) == 88 &&
              offsetof(GetProvidersListResp, valueCount) == 96 &&
              offsetof(GetProvidersListResp, values) == 104);

// Ids, names and one flag per member: the answer of the backup-set list.
struct BackupsetListResp {
  AppMgrRespHdr hdr;
  uint32_t idCount = 0;
  uint64_t* ids = nullptr;
  uint32_t nameCount = 0;
  const char** names = nullptr;
  uint32_t flagCount = 0;
  uint64_t* flags = nullptr;
};
static_assert(sizeof(BackupsetListResp) == 80);
static_assert(offsetof(BackupsetListResp, ids) == 40 &&
              offsetof(BackupsetListResp, nameCount) == 48 &&
              offsetof(BackupsetListResp, names) == 56 &&
              offsetof(BackupsetListResp, flagCount) == 64 &&
              offsetof(BackupsetListResp, flags) == 72);

// The same shape as BackupsetListResp, for subclients.
struct SubclientListResp {
  AppMgrRespHdr hdr;
  uint32_t idCount = 0;
  uint64_t* ids = nullptr;
  uint32_t nameCount = 0;
  const char** names = nullptr;
  uint32_t flagCount = 0;
  uint64_t* flags = nullptr;
};
static_assert(sizeof(SubclientListResp) == 80);
static_assert(offsetof(SubclientListResp, ids) == 40 && offsetof(SubclientListResp, names) == 56 &&
              offsetof(SubclientListResp, flags) == 72);

struct GetAllSubclientListResp {
  AppMgrRespHdr hdr;
  uint32_t idCount = 0;
  uint64_t* ids = nullptr;
  uint32_t nameCount = 0;
  const char** names = nullptr;
};
static_assert(sizeof(GetAllSubclientListResp) == 64);
static_assert(offsetof(GetAllSubclientListResp, ids) == 40 &&
              offsetof(GetAllSubclientListResp, names) == 56);

// Ids and names, then five values that describe the subclient the request named.
struct SiblingSCListResp {
  AppMgrRespHdr hdr;
  uint32_t idCount = 0;
  uint64_t* ids = nullptr;
  uint32_t nameCount = 0;
  const char** names = nullptr;
  uint64_t value1 = 0;
  uint64_t value2 = 0;
  uint64_t value3 = 0;
  uint64_t value4 = 0;
  uint64_t value5 = 0;
};
static_assert(sizeof(SiblingSCListResp) == 104);
static_assert(offsetof(SiblingSCListResp, names) == 56 &&
              offsetof(SiblingSCListResp, value1) == 64 &&
              offsetof(SiblingSCListResp, value2) == 72 &&
              offsetof(SiblingSCListResp, value3) == 80 &&
              offsetof(SiblingSCListResp, value4) == 88 &&
              offsetof(SiblingSCListResp, value5) == 96);

// Ids, one 64-bit value per member, then the names.
struct ClientListWOSResp {
  AppMgrRespHdr hdr;
  uint32_t idCount = 0;
  uint64_t* ids = nullptr;
  uint32_t valueCount = 0;
  uint64_t* values = nullptr;
  uint32_t nameCount = 0;
  const char** names = nullptr;
};
static_assert(sizeof(ClientListWOSResp) == 80);
static_assert(offsetof(ClientListWOSResp, ids) == 40 &&
              offsetof(ClientListWOSResp, valueCount) == 48 &&
              offsetof(ClientListWOSResp, values) == 56 &&
              offsetof(ClientListWOSResp, nameCount) == 64 &&
              offsetof(ClientListWOSResp, names) == 72);

// Ids, three further 64-bit arrays and two string arrays.
struct GetEXDMDomainListResp {
  AppMgrRespHdr hdr;
  uint32_t idCount = 0;
  uint64_t* ids = nullptr;
  uint32_t value1Count = 0;
  uint64_t* values1 = nullptr;
  uint32_t value2Count = 0;
  uint64_t* values2 = nullptr;
  uint32_t value3Count = 0;
  uint64_t* values3 = nullptr;
  uint32_t text1Count = 0;
  const char** texts1 = nullptr;
  uint32_t text2Count = 0;
  const char** texts2 = nullptr;
};
static_assert(sizeof(GetEXDMDomainListResp) == 128);
static_assert(offsetof(GetEXDMDomainListResp, ids) == 40 &&
              offsetof(GetEXDMDomainListResp, values1) == 56 &&
              offsetof(GetEXDMDomainListResp, values2) == 72 &&
              offsetof(GetEXDMDomainListResp, values3) == 88 &&
              offsetof(GetEXDMDomainListResp, texts1) == 104 &&
              offsetof(GetEXDMDomainListResp, texts2) == 120);

struct GetCloudListResp {
  AppMgrRespHdr hdr;
  uint32_t idCount = 0;
  uint64_t* ids = nullptr;
  uint32_t nameCount = 0;
  const char** names = nullptr;
};
static_assert(sizeof(GetCloudListResp) == 64);
static_assert(offsetof(GetCloudListResp, ids) == 40 && offsetof(GetCloudListResp, names) == 56);

// Two id arrays, walked by the first.
struct GetCloudClientListResp {
  AppMgrRespHdr hdr;
  uint32_t id1Count = 0;
  uint64_t* ids1 = nullptr;
  uint32_t id2Count = 0;
  uint64_t* ids2 = nullptr;
};
static_assert(sizeof(GetCloudClientListResp) == 64);
static_assert(offsetof(GetCloudClientListResp, ids1) == 40 &&
              offsetof(GetCloudClientListResp, id2Count) == 48 &&
              offsetof(GetCloudClientListResp, ids2) == 56);
