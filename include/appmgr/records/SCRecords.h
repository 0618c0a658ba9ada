// Records of the subclient interface.
//
// Fields follow the header in the order listed; 64-bit fields sit on 8-byte boundaries, so a
// 32-bit field before a 64-bit one is followed by 4 bytes of padding, which the record lengths
// include.
#pragma once

#include "appmgr/records/AppIdRecords.h"
#include "appmgr/records/GenericRecords.h"

// The answer of both subclient look-ups (by id and by GUID).
struct AppGetSubClientPropertiesResp {
  AppMgrRespHdr hdr;
  uint64_t subclientId = 0;
  const char* name = nullptr;
  int64_t value = 0;   // first attribute: the caller's long&
  uint64_t attr2 = 0;  // second to fourth attributes: the caller's three unsigned long&
  uint64_t attr3 = 0;
  uint64_t attr4 = 0;
  const char* text = nullptr;  // text attribute
  uint64_t parentId = 0;       // read by neither look-up; appmgrd sends the backup set
};
static_assert(sizeof(AppGetSubClientPropertiesResp) == 96);
static_assert(offsetof(AppGetSubClientPropertiesResp, subclientId) == 32 &&
              offsetof(AppGetSubClientPropertiesResp, name) == 40 &&
              offsetof(AppGetSubClientPropertiesResp, value) == 48 &&
              offsetof(AppGetSubClientPropertiesResp, attr2) == 56 &&
              offsetof(AppGetSubClientPropertiesResp, attr3) == 64 &&
              offsetof(AppGetSubClientPropertiesResp, attr4) == 72 &&
              offsetof(AppGetSubClientPropertiesResp, text) == 80 &&
              offsetof(AppGetSubClientPropertiesResp, parentId) == 88);

struct SCGUIDLookupReq {
  AppMgrReqHdr hdr;
  const char* guid = nullptr;
};
static_assert(sizeof(SCGUIDLookupReq) == 40 && offsetof(SCGUIDLookupReq, guid) == 32);

// The subclient's content read-out: its content flag and its entries.
struct GenericInitContentResp2 {
  AppMgrRespHdr hdr;
  uint64_t contentFlag = 0;  // 1 means set
  uint32_t count = 0;
  AppMgrContent* entries = nullptr;
};
static_assert(sizeof(GenericInitContentResp2) == 56);
static_assert(offsetof(GenericInitContentResp2, contentFlag) == 32 &&
              offsetof(GenericInitContentResp2, count) == 40 &&
              offsetof(GenericInitContentResp2, entries) == 48);

// The store associations of a subclient, as a whole list.
struct SetStoreAssocReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  uint32_t count = 0;
  AppStringList* names = nullptr;
};
static_assert(sizeof(SetStoreAssocReq) == 56);
static_assert(offsetof(SetStoreAssocReq, id) == 32 && offsetof(SetStoreAssocReq, count) == 40 &&
              offsetof(SetStoreAssocReq, names) == 48);

// The directory associations of a subclient; the same fields as SetStoreAssocReq.
struct SetActiveDirAssocReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  uint32_t count = 0;
  AppStringList* names = nullptr;
};
static_assert(sizeof(SetActiveDirAssocReq) == 56);
static_assert(offsetof(SetActiveDirAssocReq, id) == 32 &&
              offsetof(SetActiveDirAssocReq, count) == 40 &&
              offsetof(SetActiveDirAssocReq, names) == 48);

struct GetOverlappingSCListReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
};
static_assert(sizeof(GetOverlappingSCListReq) == 40 && offsetof(GetOverlappingSCListReq, id) == 32);

struct GetOverlappingSCListResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  uint64_t* ids = nullptr;  // subclient ids
};
static_assert(sizeof(GetOverlappingSCListResp) == 48);
static_assert(offsetof(GetOverlappingSCListResp, count) == 32 &&
              offsetof(GetOverlappingSCListResp, ids) == 40);

struct BackupHostClientReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
};
static_assert(sizeof(BackupHostClientReq) == 40 && offsetof(BackupHostClientReq, id) == 32);

struct BackupHostClientResp {
  AppMgrRespHdr hdr;
  uint64_t hostId = 0;  // the backup host (a client)
};
static_assert(sizeof(BackupHostClientResp) == 40 && offsetof(BackupHostClientResp, hostId) == 32);

// Replication pair data: the first, second and sixth arguments of the read.
struct GetFRdataPairPropReq {
  AppMgrReqHdr hdr;
  uint64_t first = 0;
  uint64_t second = 0;
  uint64_t third = 0;
};
static_assert(sizeof(GetFRdataPairPropReq) == 56);
static_assert(offsetof(GetFRdataPairPropReq, first) == 32 &&
              offsetof(GetFRdataPairPropReq, second) == 40 &&
              offsetof(GetFRdataPairPropReq, third) == 48);

struct GetFRdataPairPropResp {
  AppMgrRespHdr hdr;
  uint64_t value = 0;
  const char* text = nullptr;
};
static_assert(sizeof(GetFRdataPairPropResp) == 48);
static_assert(offsetof(GetFRdataPairPropResp, value) == 32 &&
              offsetof(GetFRdataPairPropResp, text) == 40);

struct SetFRdataPairPropReq {
  AppMgrReqHdr hdr;
  uint64_t first = 0;
  uint64_t second = 0;
  uint64_t third = 0;
  const char* text = nullptr;
  uint32_t flag = 0;  // the caller's bool as 0 or 1
};
static_assert(sizeof(SetFRdataPairPropReq) == 72);
static_assert(offsetof(SetFRdataPairPropReq, first) == 32 &&
              offsetof(SetFRdataPairPropReq, second) == 40 &&
              offsetof(SetFRdataPairPropReq, third) == 48 &&
              offsetof(SetFRdataPairPropReq, text) == 56 &&
              offsetof(SetFRdataPairPropReq, flag) == 64);

struct GetExtensionsForFileTypeReq {
  AppMgrReqHdr hdr;
  const char* fileType = nullptr;
};
static_assert(sizeof(GetExtensionsForFileTypeReq) == 40 &&
              offsetof(GetExtensionsForFileTypeReq, fileType) == 32);

struct GetExtensionsForFileTypeResp {
  AppMgrRespHdr hdr;
  const char* extensions = nullptr;
};
static_assert(sizeof(GetExtensionsForFileTypeResp) == 40 &&
              offsetof(GetExtensionsForFileTypeResp, extensions) == 32);

// A whole application id, its own header included, then one number and a flag.
struct GetBackupsetContentReq {
  AppMgrReqHdr hdr;
  AppIdInfoReq appId;
  uint64_t value = 0;
  uint32_t flag = 0;
};
static_assert(sizeof(GetBackupsetContentReq) == 184);
static_assert(offsetof(GetBackupsetContentReq, appId) == 32 &&
              offsetof(GetBackupsetContentReq, value) == 168 &&
              offsetof(GetBackupsetContentReq, flag) == 176);

struct GetBackupsetContentResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  uint64_t* ids = nullptr;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
};
static_assert(sizeof(GetBackupsetContentResp) == 64);
static_assert(offsetof(GetBackupsetContentResp, count) == 32 &&
              offsetof(GetBackupsetContentResp, ids) == 40 &&
              offsetof(GetBackupsetContentResp, text1) == 48 &&
              offsetof(GetBackupsetContentResp, text2) == 56);

struct GetReferenceCopySCReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
};
static_assert(sizeof(GetReferenceCopySCReq) == 40 && offsetof(GetReferenceCopySCReq, id) == 32);

// One reference-copy subclient; also the element callers receive.
struct RefCopySCInfo {
  uint64_t subclientId = 0;
};
static_assert(sizeof(RefCopySCInfo) == 8);

struct GetReferenceCopySCResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  RefCopySCInfo* copies = nullptr;
};
static_assert(sizeof(GetReferenceCopySCResp) == 48);
static_assert(offsetof(GetReferenceCopySCResp, count) == 32 &&
              offsetof(GetReferenceCopySCResp, copies) == 40);
