// The binary records that carry XML messages to the App Manager.
//
// HandleXMLReq carries any XML text with its XML message type (0x34000220, answered by
// HandleXMLResp under 0x34000221). SendKpAlertXML_Req carries a serialised message with its XML
// tag id (the alert list under 0x34000150, the advisory requests under 0x34000152, 0x34000154,
// 0x34000156 and 0x34000160); every one of them is answered by SendKpAlertXML_Resp under
// 0x34000151, whose tag id names the message its text carries.
#pragma once

#include "appmgr/records/AppMgrHeaders.h"

struct HandleXMLReq {
  AppMgrReqHdr hdr;
  uint64_t route = 0;           // the caller's route value
  uint64_t xmlType = 0;         // the XML message type of `xml`
  uint64_t value = 0;           // the caller's extra value
  const char* extra = nullptr;  // the caller's extra text
  const char* xml = nullptr;    // the request document
};
static_assert(sizeof(HandleXMLReq) == 72);
static_assert(offsetof(HandleXMLReq, route) == 32 && offsetof(HandleXMLReq, xmlType) == 40 &&
              offsetof(HandleXMLReq, value) == 48 && offsetof(HandleXMLReq, extra) == 56 &&
              offsetof(HandleXMLReq, xml) == 64);

struct HandleXMLResp {
  AppMgrRespHdr hdr;
  const char* xml = nullptr;  // the answer document
};
static_assert(sizeof(HandleXMLResp) == 40 && offsetof(HandleXMLResp, xml) == 32);

struct SendKpAlertXML_Req {
  AppMgrReqHdr hdr;
  uint64_t tagId = 0;         // XML tag id of the message in `xml`
  const char* xml = nullptr;  // the serialised request
};
static_assert(sizeof(SendKpAlertXML_Req) == 48);
static_assert(offsetof(SendKpAlertXML_Req, tagId) == 32 && offsetof(SendKpAlertXML_Req, xml) == 40);

struct SendKpAlertXML_Resp {
  AppMgrRespHdr hdr;
  uint64_t tagId = 0;         // XML tag id of the message in `xml`
  const char* xml = nullptr;  // the serialised answer
};
static_assert(sizeof(SendKpAlertXML_Resp) == 48);
static_assert(offsetof(SendKpAlertXML_Resp, tagId) == 32 &&
              offsetof(SendKpAlertXML_Resp, xml) == 40);
