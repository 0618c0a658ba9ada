// Records shared by many interfaces, and the element records of their counted arrays.
//
// A counted array is an unsigned 32-bit count followed (at the next 8-byte boundary) by a
// pointer to that many elements. In a request the operation owns the elements; in a response
// they live in the session's receive buffer until the wrapper releases it.
#pragma once

#include "appmgr/records/AppMgrHeaders.h"

// ---- Element records (no header) ----

struct AppMgrProps {
  const char* name = nullptr;   // property name
  uint64_t type = 0;            // property type
  const char* value = nullptr;  // property value
};
static_assert(sizeof(AppMgrProps) == 24);
static_assert(offsetof(AppMgrProps, type) == 8 && offsetof(AppMgrProps, value) == 16);

struct AppStringList {
  const char* text = nullptr;  // one property name
};
static_assert(sizeof(AppStringList) == 8);

struct LongList {
  uint64_t id = 0;
};
static_assert(sizeof(LongList) == 8);

struct AppMgrContent {
  const char* text = nullptr;  // one content entry, for example a path
  int64_t type = 0;            // content type, the caller's int sign-extended
};
static_assert(sizeof(AppMgrContent) == 16 && offsetof(AppMgrContent, type) == 8);

// ---- Generic records ----

// The reply of every update, delete and set operation: the header alone.
struct GenericResp {
  AppMgrRespHdr hdr;
};
static_assert(sizeof(GenericResp) == 32);

struct GenericLookupReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;  // entity looked up
};
static_assert(sizeof(GenericLookupReq) == 40 && offsetof(GenericLookupReq, id) == 32);

struct GenericLookupResp {
  AppMgrRespHdr hdr;
  const char* name = nullptr;
};
static_assert(sizeof(GenericLookupResp) == 40 && offsetof(GenericLookupResp, name) == 32);

struct GenericLookupReq4 {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
};
static_assert(sizeof(GenericLookupReq4) == 40 && offsetof(GenericLookupReq4, id) == 32);

struct GenericLookupResp4 {
  AppMgrRespHdr hdr;
  int64_t value = 0;            // returned to the caller's long&
  const char* name = nullptr;   // the entity's name
  const char* text = nullptr;   // a second descriptive text
};
static_assert(sizeof(GenericLookupResp4) == 56);
static_assert(offsetof(GenericLookupResp4, value) == 32 && offsetof(GenericLookupResp4, name) == 40 &&
              offsetof(GenericLookupResp4, text) == 48);

struct GenericGetPropsReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  int64_t table = 0;  // property-table selector, passed through unchanged
};
static_assert(sizeof(GenericGetPropsReq) == 48 && offsetof(GenericGetPropsReq, table) == 40);

struct GenericGetPropsResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  AppMgrProps* props = nullptr;
};
static_assert(sizeof(GenericGetPropsResp) == 48);
static_assert(offsetof(GenericGetPropsResp, count) == 32 && offsetof(GenericGetPropsResp, props) == 40);

struct GenericSetPropsReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  uint32_t count = 0;
  AppMgrProps* props = nullptr;
  uint32_t flag = 0;  // the caller's bool as 0 or 1
};
static_assert(sizeof(GenericSetPropsReq) == 64);
static_assert(offsetof(GenericSetPropsReq, count) == 40 && offsetof(GenericSetPropsReq, props) == 48 &&
              offsetof(GenericSetPropsReq, flag) == 56);

// Same layout and meaning as GenericSetPropsReq: the properties named are removed.
struct GenericRemovePropsReq1 {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  uint32_t count = 0;
  AppMgrProps* props = nullptr;
  uint32_t flag = 0;
};
static_assert(sizeof(GenericRemovePropsReq1) == 64);
static_assert(offsetof(GenericRemovePropsReq1, props) == 48 && offsetof(GenericRemovePropsReq1, flag) == 56);

struct GenericRemovePropsReq2 {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  uint32_t count = 0;
  AppStringList* names = nullptr;  // property names
  uint32_t flag = 0;
};
static_assert(sizeof(GenericRemovePropsReq2) == 64);
static_assert(offsetof(GenericRemovePropsReq2, names) == 48 && offsetof(GenericRemovePropsReq2, flag) == 56);

struct GenericUpdateReq2 {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  int64_t value = 0;           // from the caller's long&
  const char* name = nullptr;  // the new name
};
static_assert(sizeof(GenericUpdateReq2) == 56);
static_assert(offsetof(GenericUpdateReq2, value) == 40 && offsetof(GenericUpdateReq2, name) == 48);

struct GenericStringListResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  const char** texts = nullptr;
};
static_assert(sizeof(GenericStringListResp) == 48 && offsetof(GenericStringListResp, texts) == 40);

struct GenericIdListResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  LongList* ids = nullptr;
};
static_assert(sizeof(GenericIdListResp) == 48 && offsetof(GenericIdListResp, ids) == 40);

struct GenericListPairReq {
  AppMgrReqHdr hdr;
  uint64_t selector = 0;
  uint32_t option = 0;
};
static_assert(sizeof(GenericListPairReq) == 48 && offsetof(GenericListPairReq, option) == 40);

// Element i of ids and element i of names describe the same entity.
struct GenericListPairResp {
  AppMgrRespHdr hdr;
  uint32_t idCount = 0;
  uint64_t* ids = nullptr;
  uint32_t nameCount = 0;
  const char** names = nullptr;
};
static_assert(sizeof(GenericListPairResp) == 64);
static_assert(offsetof(GenericListPairResp, ids) == 40 && offsetof(GenericListPairResp, nameCount) == 48 &&
              offsetof(GenericListPairResp, names) == 56);

struct GenericUpdateContentReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  uint32_t count1 = 0;
  AppMgrContent* content1 = nullptr;
  uint32_t count2 = 0;
  AppMgrContent* content2 = nullptr;
  uint32_t flag1 = 0;
  uint32_t flag2 = 0;
  uint32_t flag3 = 0;
};
static_assert(sizeof(GenericUpdateContentReq) == 88);
static_assert(offsetof(GenericUpdateContentReq, content1) == 48 &&
              offsetof(GenericUpdateContentReq, count2) == 56 &&
              offsetof(GenericUpdateContentReq, content2) == 64 &&
              offsetof(GenericUpdateContentReq, flag1) == 72 &&
              offsetof(GenericUpdateContentReq, flag2) == 76 &&
              offsetof(GenericUpdateContentReq, flag3) == 80);

// The content read-out request of subclients and instances: the entity and the caller's
// `long` argument, passed as it is.
struct GenericInitContentReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  int64_t value = 0;
};
static_assert(sizeof(GenericInitContentReq) == 48 && offsetof(GenericInitContentReq, id) == 32 &&
              offsetof(GenericInitContentReq, value) == 40);

// The levels of the entity tree that a delete-all or undelete-all names.
enum EntityLevel : uint32_t {
  kEntityLevelAppType = 2,    // an application type on a client: id is the client, secondId
                              // the application type
  kEntityLevelInstance = 3,   // id is the instance; secondId 0
  kEntityLevelBackupSet = 4,  // id is the backup set; secondId 0
};

// Marks an entity and everything under it deleted (or undeleted).
struct RecDelAppIdsReq {
  AppMgrReqHdr hdr;
  uint64_t id = 0;        // the entity, or the client for an application type
  uint64_t secondId = 0;  // the application type at level 2; 0 otherwise
  uint32_t level = 0;     // EntityLevel
};
static_assert(sizeof(RecDelAppIdsReq) == 56 && offsetof(RecDelAppIdsReq, secondId) == 40 &&
              offsetof(RecDelAppIdsReq, level) == 48);

// RecDelAppIdsReq with one more field: the application-type delete-all carries its caller's
// option in what is padding in RecDelAppIdsReq.
struct RecDelAppIdsReq1 {
  AppMgrReqHdr hdr;
  uint64_t id = 0;
  uint64_t secondId = 0;
  uint32_t level = 0;
  uint32_t option = 0;
};
static_assert(sizeof(RecDelAppIdsReq1) == 56 && offsetof(RecDelAppIdsReq1, level) == 48 &&
              offsetof(RecDelAppIdsReq1, option) == 52);
