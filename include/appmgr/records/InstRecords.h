// Records of the instance interface. The instance's content and property requests use the
// generic records (GenericRecords.h); the delete-all and undelete-all requests are the entity
// tree's RecDelAppIdsReq at level 3.
#pragma once

#include "appmgr/records/GenericRecords.h"

struct GenericLookupReq3 {
  AppMgrReqHdr hdr;
  uint64_t id = 0;  // the instance
};
static_assert(sizeof(GenericLookupReq3) == 40 && offsetof(GenericLookupReq3, id) == 32);

// An instance as a lookup answers it: the subclient lookup's answer without its last field.
struct GenericLookupResp3 {
  AppMgrRespHdr hdr;
  uint64_t id = 0;             // the instance; not copied out by the library
  const char* name = nullptr;  // null leaves the caller's name as it was
  int64_t value = 0;           // first attribute, to the caller's long&
  uint64_t attr2 = 0;          // second to fourth attributes, to the three unsigned long&
  uint64_t attr3 = 0;
  uint64_t attr4 = 0;
  const char* text = nullptr;  // text attribute; null leaves the caller's text as it was
};
static_assert(sizeof(GenericLookupResp3) == 88);
static_assert(offsetof(GenericLookupResp3, id) == 32 && offsetof(GenericLookupResp3, name) == 40 &&
              offsetof(GenericLookupResp3, value) == 48 &&
              offsetof(GenericLookupResp3, attr2) == 56 &&
              offsetof(GenericLookupResp3, attr3) == 64 &&
              offsetof(GenericLookupResp3, attr4) == 72 &&
              offsetof(GenericLookupResp3, text) == 80);

// An instance's content as the content read-out answers it: the entries, in order, with no
// content flag (the subclient form has one).
struct GenericInitContentResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  AppMgrContent* content = nullptr;
};
static_assert(sizeof(GenericInitContentResp) == 48);
static_assert(offsetof(GenericInitContentResp, count) == 32 &&
              offsetof(GenericInitContentResp, content) == 40);
