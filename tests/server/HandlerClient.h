// HandlerClient: a test's session with an App Manager (in-process or the real appmgrd) that
// sends one typed request and returns the decoded response record.
//
// Texts and arrays of the returned records stay valid until the client is destroyed (each call
// keeps its own receive buffer). Transport failures are test failures, reported where they
// happen; the returned record is then all zero, so its header's version reads 0.
//
// Thread-safety: one thread per client.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <memory>
#include <string>

#include "platform/net/CKpNetwork.h"
#include "platform/xml/CNMessageBase.h"
#include "protocol/Message.h"

namespace appmgr::server {

// What a response header says, and whether everything after it is zero bytes.
struct Outcome {
  int code = 0;
  std::string text;  // "" for a null text
  bool restZero = false;
};

template <class Resp>
Outcome OutcomeOf(const Resp& resp) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&resp);
  return Outcome{resp.hdr.errorCode, resp.hdr.errorText ? resp.hdr.errorText : "",
                 std::all_of(bytes + sizeof(AppMgrRespHdr), bytes + sizeof(Resp),
                             [](unsigned char b) { return b == 0; })};
}

class HandlerClient {
 public:
  explicit HandlerClient(const std::string& connect, const std::string& client = "handlers-test") {
    bool timedOut = false;
    CLmError e =
        session_.Attach_RemoteService(connect, "AppManager network access", client, 10, timedOut);
    EXPECT_FALSE(e) << "attach to " << connect << ": " << e.AsString();
  }
  ~HandlerClient() {
    bool timedOut = false;
    if (session_.IsConnected()) session_.Disconnect(2, timedOut);
  }
  HandlerClient(const HandlerClient&) = delete;
  HandlerClient& operator=(const HandlerClient&) = delete;

  bool attached() const { return session_.IsUsable(); }

  template <class Req, class Resp>
  Resp Call(const wire::Op<Req, Resp>& op, Req req) {
    req.hdr.version = 2;
    // Zero the padding too, so that "everything after the header is zero" can be checked.
    Resp resp;
    std::memset(static_cast<void*>(&resp), 0, sizeof resp);
    kpsDatabuf_v2 out;
    out.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
    kpsDatabuf_v2& in = buffers_.emplace_back();
    in.setExternalBuffer(reinterpret_cast<char*>(&resp), sizeof resp);
    bool timedOut = false;
    CLmError e = session_.SendXDRMessage(op.requestId, &out, 0, 10, timedOut);
    EXPECT_FALSE(e) << op.requestName << ": " << e.AsString();
    if (e) return resp;
    unsigned long id = op.responseId;
    e = session_.ReceiveXDRMessage(&id, &in, nullptr, 0, 10, timedOut);
    EXPECT_FALSE(e) << op.responseName << ": " << e.AsString();
    EXPECT_EQ(id, op.responseId);
    return resp;
  }

  // Sends an XML message and returns the answer (null on failure, reported).
  std::unique_ptr<CNMessageBase> CallXml(CNMessageBase& request, unsigned long* tagId = nullptr) {
    bool timedOut = false;
    CLmError e = session_.SendXMLMessage(request, 0, 10, timedOut);
    EXPECT_FALSE(e) << e.AsString();
    if (e) return nullptr;
    unsigned long type = 0;
    CNMessageBase* answer = nullptr;
    e = session_.ReceiveXMLMessage(&type, answer, nullptr, 0, 10, timedOut);
    EXPECT_FALSE(e) << e.AsString();
    if (tagId) *tagId = type;
    return std::unique_ptr<CNMessageBase>(answer);
  }

 private:
  CKpNetwork session_;
  std::deque<kpsDatabuf_v2> buffers_;
};

}  // namespace appmgr::server
