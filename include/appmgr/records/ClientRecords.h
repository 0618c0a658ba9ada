// Records of the client interface.
//
// A client travels as ClientInfoReq7 / ClientInfoResp7: one layout, request and response header
// apart. Integer 5 of the caller's _AppClientInfo travels twice: as a signed 32-bit value at 152,
// the one a response is read from, and whole at 208, filled in requests and not read from
// responses. The platform descriptions travel beside it as an array of ClientPlatInfo; requests
// always carry three.
#pragma once

#include "appmgr/records/GenericRecords.h"

// One platform description of a client (no header).
struct ClientPlatInfo {
  uint64_t value = 0;           // platform value
  const char* text = nullptr;   // platform text
};
static_assert(sizeof(ClientPlatInfo) == 16 && offsetof(ClientPlatInfo, text) == 8);

// The members are named after the caller's _AppClientInfo (integer1 ... text8); the order is
// the wire's, which is not the record's declaration order.
struct ClientInfoReq7 {
  AppMgrReqHdr hdr;
  uint64_t integer1 = 0;
  uint64_t integer2 = 0;
  uint64_t integer3 = 0;
  uint64_t integer4 = 0;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
  const char* text3 = nullptr;
  const char* text5 = nullptr;
  const char* text6 = nullptr;
  uint64_t integer8 = 0;
  uint64_t integer6 = 0;
  uint64_t integer7 = 0;
  uint64_t integer9 = 0;
  uint32_t platformCount = 0;  // always 3 in requests
  ClientPlatInfo* platforms = nullptr;
  int32_t integer5 = 0;        // integer 5 cut to 32 bits
  uint64_t integer10 = 0;
  const char* text4 = nullptr;
  uint64_t integer11 = 0;
  const char* text7 = nullptr;
  uint64_t integer12 = 0;
  const char* text8 = nullptr;
  int64_t integer5Whole = 0;   // integer 5 whole
};
static_assert(sizeof(ClientInfoReq7) == 216);
static_assert(offsetof(ClientInfoReq7, integer1) == 32 && offsetof(ClientInfoReq7, integer2) == 40 &&
              offsetof(ClientInfoReq7, integer3) == 48 && offsetof(ClientInfoReq7, integer4) == 56 &&
              offsetof(ClientInfoReq7, text1) == 64 && offsetof(ClientInfoReq7, text2) == 72 &&
              offsetof(ClientInfoReq7, text3) == 80 && offsetof(ClientInfoReq7, text5) == 88 &&
              offsetof(ClientInfoReq7, text6) == 96 && offsetof(ClientInfoReq7, integer8) == 104 &&
              offsetof(ClientInfoReq7, integer6) == 112 && offsetof(ClientInfoReq7, integer7) == 120 &&
              offsetof(ClientInfoReq7, integer9) == 128 &&
              offsetof(ClientInfoReq7, platformCount) == 136 &&
              offsetof(ClientInfoReq7, platforms) == 144 && offsetof(ClientInfoReq7, integer5) == 152 &&
              offsetof(ClientInfoReq7, integer10) == 160 && offsetof(ClientInfoReq7, text4) == 168 &&
              offsetof(ClientInfoReq7, integer11) == 176 && offsetof(ClientInfoReq7, text7) == 184 &&
              offsetof(ClientInfoReq7, integer12) == 192 && offsetof(ClientInfoReq7, text8) == 200 &&
              offsetof(ClientInfoReq7, integer5Whole) == 208);

// The same layout as ClientInfoReq7 under a response header. integer5Whole is carried but never
// read: integer 5 is taken from the 32-bit field.
struct ClientInfoResp7 {
  AppMgrRespHdr hdr;
  uint64_t integer1 = 0;
  uint64_t integer2 = 0;
  uint64_t integer3 = 0;
  uint64_t integer4 = 0;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
  const char* text3 = nullptr;
  const char* text5 = nullptr;
  const char* text6 = nullptr;
  uint64_t integer8 = 0;
  uint64_t integer6 = 0;
  uint64_t integer7 = 0;
  uint64_t integer9 = 0;
  uint32_t platformCount = 0;
  ClientPlatInfo* platforms = nullptr;
  int32_t integer5 = 0;
  uint64_t integer10 = 0;
  const char* text4 = nullptr;
  uint64_t integer11 = 0;
  const char* text7 = nullptr;
  uint64_t integer12 = 0;
  const char* text8 = nullptr;
  int64_t integer5Whole = 0;
};
static_assert(sizeof(ClientInfoResp7) == 216);
static_assert(offsetof(ClientInfoResp7, integer1) == 32 && offsetof(ClientInfoResp7, integer2) == 40 &&
              offsetof(ClientInfoResp7, integer3) == 48 && offsetof(ClientInfoResp7, integer4) == 56 &&
              offsetof(ClientInfoResp7, text1) == 64 && offsetof(ClientInfoResp7, text2) == 72 &&
              offsetof(ClientInfoResp7, text3) == 80 && offsetof(ClientInfoResp7, text5) == 88 &&
              offsetof(ClientInfoResp7, text6) == 96 && offsetof(ClientInfoResp7, integer8) == 104 &&
              offsetof(ClientInfoResp7, integer6) == 112 && offsetof(ClientInfoResp7, integer7) == 120 &&
              offsetof(ClientInfoResp7, integer9) == 128 &&
              offsetof(ClientInfoResp7, platformCount) == 136 &&
              offsetof(ClientInfoResp7, platforms) == 144 && offsetof(ClientInfoResp7, integer5) == 152 &&
              offsetof(ClientInfoResp7, integer10) == 160 && offsetof(ClientInfoResp7, text4) == 168 &&
              offsetof(ClientInfoResp7, integer11) == 176 && offsetof(ClientInfoResp7, text7) == 184 &&
              offsetof(ClientInfoResp7, integer12) == 192 && offsetof(ClientInfoResp7, text8) == 200 &&
              offsetof(ClientInfoResp7, integer5Whole) == 208);

struct RemoveClientReq {
  AppMgrReqHdr hdr;
  uint64_t clientId = 0;
};
static_assert(sizeof(RemoveClientReq) == 40);

struct GetPairListForDestinationVolumeGUIDReq {
  AppMgrReqHdr hdr;
  const char* volumeGuid = nullptr;
  int64_t option = 0;
};
static_assert(sizeof(GetPairListForDestinationVolumeGUIDReq) == 48 &&
              offsetof(GetPairListForDestinationVolumeGUIDReq, option) == 40);

struct GetPairListForDestinationVolumeGUIDResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  uint64_t* pairIds = nullptr;
};
static_assert(sizeof(GetPairListForDestinationVolumeGUIDResp) == 48 &&
              offsetof(GetPairListForDestinationVolumeGUIDResp, pairIds) == 40);

struct GetFRSetsWithDestinationClientReq {
  AppMgrReqHdr hdr;
  uint64_t clientId = 0;
};
static_assert(sizeof(GetFRSetsWithDestinationClientReq) == 40);

// Three independent id lists, each with its own count.
struct GetFRSetsWithDestinationClientResp {
  AppMgrRespHdr hdr;
  uint32_t count1 = 0;
  uint64_t* ids1 = nullptr;
  uint32_t count2 = 0;
  uint64_t* ids2 = nullptr;
  uint32_t count3 = 0;
  uint64_t* ids3 = nullptr;
};
static_assert(sizeof(GetFRSetsWithDestinationClientResp) == 80);
static_assert(offsetof(GetFRSetsWithDestinationClientResp, ids1) == 40 &&
              offsetof(GetFRSetsWithDestinationClientResp, count2) == 48 &&
              offsetof(GetFRSetsWithDestinationClientResp, ids2) == 56 &&
              offsetof(GetFRSetsWithDestinationClientResp, count3) == 64 &&
              offsetof(GetFRSetsWithDestinationClientResp, ids3) == 72);

struct GetClientInfoReq {
  AppMgrReqHdr hdr;
  const char* propertyName = nullptr;
  const char* propertyValue = nullptr;
};
static_assert(sizeof(GetClientInfoReq) == 48 && offsetof(GetClientInfoReq, propertyValue) == 40);

// One client of a GetClientInfoResp (no header): integer 1 and texts 1 to 3 of its record.
struct GetClientInfoElement {
  uint64_t integer1 = 0;
  const char* text1 = nullptr;
  const char* text2 = nullptr;
  const char* text3 = nullptr;
};
static_assert(sizeof(GetClientInfoElement) == 32);
static_assert(offsetof(GetClientInfoElement, text1) == 8 && offsetof(GetClientInfoElement, text2) == 16 &&
              offsetof(GetClientInfoElement, text3) == 24);

struct GetClientInfoResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  GetClientInfoElement* clients = nullptr;
};
static_assert(sizeof(GetClientInfoResp) == 48 && offsetof(GetClientInfoResp, clients) == 40);

struct GetASMIntancesReq {
  AppMgrReqHdr hdr;
  uint64_t id1 = 0;
  uint64_t id2 = 0;
};
static_assert(sizeof(GetASMIntancesReq) == 48 && offsetof(GetASMIntancesReq, id2) == 40);

struct GetASMIntancesResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  uint64_t* instanceIds = nullptr;
};
static_assert(sizeof(GetASMIntancesResp) == 48 && offsetof(GetASMIntancesResp, instanceIds) == 40);

struct HandleFSNodeActivityReq {
  AppMgrReqHdr hdr;
  uint32_t clientId = 0;
  const char* data = nullptr;
  uint32_t flag = 0;   // the caller's bool as 0 or 1
  int32_t value = 0;
};
static_assert(sizeof(HandleFSNodeActivityReq) == 56);
static_assert(offsetof(HandleFSNodeActivityReq, data) == 40 && offsetof(HandleFSNodeActivityReq, flag) == 48 &&
              offsetof(HandleFSNodeActivityReq, value) == 52);

// The header and 16 bytes that the client library carries but does not read.
struct HandleFSNodeActivityResp {
  AppMgrRespHdr hdr;
  uint64_t reserved1 = 0;
  uint64_t reserved2 = 0;
};
static_assert(sizeof(HandleFSNodeActivityResp) == 48 && offsetof(HandleFSNodeActivityResp, reserved2) == 40);
