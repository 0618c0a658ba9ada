// Records of the mailbox-delegate interface.
//
// A delegate record travels as one block of seven 64-bit slots, the caller's fields G1..G7
// (_MailBoxDelegateInfo) in declaration order: G1 a number, G2..G6 texts, G7 the record's id.
#pragma once

#include "appmgr/records/GenericRecords.h"

struct MailBoxDelegate {
  uint64_t g1 = 0;            // slot 0
  const char* g2 = nullptr;   // slot 1
  const char* g3 = nullptr;   // slot 2
  const char* g4 = nullptr;   // slot 3
  const char* g5 = nullptr;   // slot 4
  const char* g6 = nullptr;   // slot 5
  uint64_t g7 = 0;            // slot 6: the record's id
};
static_assert(sizeof(MailBoxDelegate) == 56);
static_assert(offsetof(MailBoxDelegate, g1) == 0 && offsetof(MailBoxDelegate, g2) == 8 && offsetof(MailBoxDelegate, g3) == 16 &&
              offsetof(MailBoxDelegate, g4) == 24 && offsetof(MailBoxDelegate, g5) == 32 &&
              offsetof(MailBoxDelegate, g6) == 40 && offsetof(MailBoxDelegate, g7) == 48);

// The request of lookup, create, update and remove.
struct MailBoxDelegateReq {
  AppMgrReqHdr hdr;
  MailBoxDelegate info;
};
static_assert(sizeof(MailBoxDelegateReq) == 88 && offsetof(MailBoxDelegateReq, info) == 32);

struct MailBoxDelegateResp {
  AppMgrRespHdr hdr;
  MailBoxDelegate info;
};
static_assert(sizeof(MailBoxDelegateResp) == 88 && offsetof(MailBoxDelegateResp, info) == 32);

struct SetMailBoxDelegateReq {
  AppMgrReqHdr hdr;
  MailBoxDelegate info;
};
static_assert(sizeof(SetMailBoxDelegateReq) == 88 && offsetof(SetMailBoxDelegateReq, info) == 32);

struct GetMailBoxDelegateListReq {
  AppMgrReqHdr hdr;
  uint64_t selector = 0;  // 0 from the overload without an id
};
static_assert(sizeof(GetMailBoxDelegateListReq) == 40 &&
              offsetof(GetMailBoxDelegateListReq, selector) == 32);

struct GetMailBoxDelegateListResp {
  AppMgrRespHdr hdr;
  uint32_t count = 0;
  MailBoxDelegate* infos = nullptr;
};
static_assert(sizeof(GetMailBoxDelegateListResp) == 48 &&
              offsetof(GetMailBoxDelegateListResp, count) == 32 &&
              offsetof(GetMailBoxDelegateListResp, infos) == 40);

struct SetMailBoxDelegateListReq {
  AppMgrReqHdr hdr;
  uint32_t count = 0;
  MailBoxDelegate* infos = nullptr;
};
static_assert(sizeof(SetMailBoxDelegateListReq) == 48 &&
              offsetof(SetMailBoxDelegateListReq, count) == 32 &&
              offsetof(SetMailBoxDelegateListReq, infos) == 40);

struct RemoveMailBoxDelegateListReq {
  AppMgrReqHdr hdr;
  uint32_t count = 0;
  MailBoxDelegate* infos = nullptr;
};
static_assert(sizeof(RemoveMailBoxDelegateListReq) == 48 &&
              offsetof(RemoveMailBoxDelegateListReq, count) == 32 &&
              offsetof(RemoveMailBoxDelegateListReq, infos) == 40);
