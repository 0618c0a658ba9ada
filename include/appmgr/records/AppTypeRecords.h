// Records of the application-type interface. An application type on a client is named by the
// pair (client id, application type id); which of the two ids comes first differs by request
// and is told at each record. The delete-all requests are the entity tree's RecDelAppIdsReq1
// and RecDelAppIdsReq at level 2 (GenericRecords.h).
#pragma once

#include "appmgr/records/GenericRecords.h"

// Create and remove: id1 the client, id2 the application type. Lookup: id1 the application
// type, id2 the client.
struct GenericDaxReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
};
static_assert(sizeof(GenericDaxReq) == 48 && offsetof(GenericDaxReq, id1) == 32 &&
              offsetof(GenericDaxReq, id2) == 40);

struct GenericLookupResp2 {
  AppMgrRespHdr hdr;
  uint64_t value = 0;          // the numeric attribute, to the caller's long&
  const char* name = nullptr;  // the application type's name
};
static_assert(sizeof(GenericLookupResp2) == 48 && offsetof(GenericLookupResp2, value) == 32 &&
              offsetof(GenericLookupResp2, name) == 40);

// id1 the application type, id2 the client (the lookup's order).
struct ApptypeUpdateReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
  int64_t value = 0;  // from the caller's long&
};
static_assert(sizeof(ApptypeUpdateReq) == 56 && offsetof(ApptypeUpdateReq, id1) == 32 &&
              offsetof(ApptypeUpdateReq, id2) == 40 && offsetof(ApptypeUpdateReq, value) == 48);

struct GetAppTypePropsReq {
  AppMgrReqHdr hdr;
  uint64_t clientId = 0;
  uint64_t appTypeId = 0;
  int64_t table = 0;  // property-table selector, passed through unchanged
};
static_assert(sizeof(GetAppTypePropsReq) == 56 && offsetof(GetAppTypePropsReq, clientId) == 32 &&
              offsetof(GetAppTypePropsReq, appTypeId) == 40 &&
              offsetof(GetAppTypePropsReq, table) == 48);

struct SetAppTypePropsReq {
  AppMgrReqHdr hdr;
  uint64_t clientId = 0;
  uint64_t appTypeId = 0;
  uint32_t count = 0;
  AppMgrProps* props = nullptr;
  uint32_t flag = 0;  // the caller's bool as 0 or 1
};
static_assert(sizeof(SetAppTypePropsReq) == 72);
static_assert(offsetof(SetAppTypePropsReq, appTypeId) == 40 &&
              offsetof(SetAppTypePropsReq, count) == 48 &&
              offsetof(SetAppTypePropsReq, props) == 56 && offsetof(SetAppTypePropsReq, flag) == 64);

// Same fields as SetAppTypePropsReq: the properties named are removed.
struct RemoveAppTypePropsReq1 {
  AppMgrReqHdr hdr;
  uint64_t clientId = 0;
  uint64_t appTypeId = 0;
  uint32_t count = 0;
  AppMgrProps* props = nullptr;
  uint32_t flag = 0;
};
static_assert(sizeof(RemoveAppTypePropsReq1) == 72);
static_assert(offsetof(RemoveAppTypePropsReq1, count) == 48 &&
              offsetof(RemoveAppTypePropsReq1, props) == 56 &&
              offsetof(RemoveAppTypePropsReq1, flag) == 64);

struct RemoveAppTypePropsReq2 {
  AppMgrReqHdr hdr;
  uint64_t clientId = 0;
  uint64_t appTypeId = 0;
  uint32_t count = 0;
  AppStringList* names = nullptr;  // property names
  uint32_t flag = 0;
};
static_assert(sizeof(RemoveAppTypePropsReq2) == 72);
static_assert(offsetof(RemoveAppTypePropsReq2, count) == 48 &&
              offsetof(RemoveAppTypePropsReq2, names) == 56 &&
              offsetof(RemoveAppTypePropsReq2, flag) == 64);

// One volume-property record. The fields are the arguments of opDCvolProp in this order: its
// third argument, its first unsigned long&, its first and second arguments, its string, its
// next three unsigned long&, its long& and its last unsigned long&.
struct UpdateDCVolPropReq {
  AppMgrReqHdr hdr;
  uint64_t volumeId = 0;       // third argument
  uint64_t value1 = 0;         // first unsigned long&
  uint64_t clientId = 0;       // first argument
  uint64_t appTypeId = 0;      // second argument
  const char* text = nullptr;  // the string&
  uint64_t value2 = 0;         // the next three unsigned long&
  uint64_t value3 = 0;
  uint64_t value4 = 0;
  int64_t signedValue = 0;     // the long&
  uint64_t value5 = 0;         // last unsigned long&
};
static_assert(sizeof(UpdateDCVolPropReq) == 112);
static_assert(offsetof(UpdateDCVolPropReq, volumeId) == 32 &&
              offsetof(UpdateDCVolPropReq, value1) == 40 &&
              offsetof(UpdateDCVolPropReq, clientId) == 48 &&
              offsetof(UpdateDCVolPropReq, appTypeId) == 56 &&
              offsetof(UpdateDCVolPropReq, text) == 64 &&
              offsetof(UpdateDCVolPropReq, value2) == 72 &&
              offsetof(UpdateDCVolPropReq, value3) == 80 &&
              offsetof(UpdateDCVolPropReq, value4) == 88 &&
              offsetof(UpdateDCVolPropReq, signedValue) == 96 &&
              offsetof(UpdateDCVolPropReq, value5) == 104);
