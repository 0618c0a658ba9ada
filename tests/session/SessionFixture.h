// Shared set-up of the session-layer tests: a private settings file whose [Controlhost] section
// points at test servers, pools and class-wide state reset before and after each case, and a
// log capture that checks label and level as well as text.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "platform/base/EvDebug.h"
#include "platform/info/KPPlatformInfo.h"
#include "protocol/Messages.h"
#include "session/AppMgrSessionPool.h"
#include "session/ClientSessionWrapper.h"
#include "session/MessageCache.h"
#include "session/NetMessage.h"
#include "tests/support/ScriptServer.h"
#include "tests/support/TestSettings.h"

// [Controlhost] lines naming `server` as the Controlhost (host carries the port).
inline std::string ControlhostAt(const ScriptServer& server, const std::string& client = "ch01") {
  return "[Controlhost]\nsHOSTNAME = " + server.host() + "\nsCLIENTNAME = " + client + "\n";
}

// [Controlhost] lines naming `server` as this client's lite App Manager.
inline std::string LiteAt(const ScriptServer& server, const std::string& client = "lite01") {
  return "sAPPMGRHOSTNAME = " + server.host() + "\nsAPPMGRCLIENTNAME = " + client + "\n";
}

class SessionFixture : public testing::Test {
 protected:
  SessionFixture() { Reset(); }
  ~SessionFixture() override { Reset(); }

  static void Reset() {
    AppMgrSessionPoolSingleton::resetForTesting();
    ClientSessionWrapper::resetClassStateForTesting();
    CMessageCacheSingleton::ResetForTesting();
    KPPI_Focus::resetServiceProcess();
  }

  // Writes the settings (with debug level 10 and a private log folder). Unless useCache_ is set,
  // the message cache is switched off, so every request reaches the server.
  void Settings(const std::string& ini) {
    std::string text = ini;
    if (!useCache_) text += "\n[EventManager]\nnDisableAppMessageCache = 1\n";
    if (!settings_) {
      settings_ = std::make_unique<TestSettings>(text, 10);
    } else {
      settings_->Write(text);
    }
  }

  bool useCache_ = false;

 public:
  // A scripted BS lookup answer: value = id * 10, name "bs-<id>".
  static void ScriptLookup(ScriptServer& server) {
    server.On(appmgr::msg::kBsLookup, [](const GenericLookupReq4& req, GenericLookupResp4& resp,
                                         appmgr::server::Exchange& x) {
      resp.value = static_cast<int64_t>(req.id) * 10;
      resp.name = x.Text("bs-" + std::to_string(req.id));
    });
  }

  // One lookup, as an operation makes it, on `wrapper` (either wrapper class) or through a fresh
  // ClientSessionWrapper.
  struct Result {
    int sendStatus = 0, receiveStatus = 0, verify = 0;
    std::string error;
    GenericLookupResp4 resp;
    std::string name;
  };
  template <class Wrapper>
  static Result LookupOn(Wrapper& wrapper, uint64_t id,
                         unsigned long responseId = appmgr::msg::kBsLookup.responseId) {
    Result r;
    GenericLookupReq4 req;
    NetMessage msg;
    msg.initRequestHeader(req.hdr);
    req.id = id;
    r.sendStatus = wrapper.send(appmgr::msg::kBsLookup.requestId, &req, sizeof req, r.error);
    if (r.sendStatus) return r;
    r.receiveStatus = wrapper.receive(responseId, &r.resp, sizeof r.resp, r.error);
    if (r.receiveStatus) return r;
    r.verify = msg.verifyResponseHeader(r.resp.hdr);
    if (r.resp.name) r.name = r.resp.name;
    r.resp.name = r.resp.text = r.resp.hdr.errorText = nullptr;  // they point into the wrapper
    return r;
  }
  static Result Lookup(uint64_t id, bool skipLite = false) {
    ClientSessionWrapper wrapper(0x1a000000, skipLite);
    return LookupOn(wrapper, id);
  }
  // The BS update (a critical message) through a fresh wrapper: 0 or the failing step's status.
  static int Update(uint64_t id) {
    GenericUpdateReq2 req;
    GenericResp resp;
    NetMessage msg;
    ClientSessionWrapper wrapper(0x1a000000, false);
    msg.initRequestHeader(req.hdr);
    req.id = id;
    std::string err;
    if (int rc = wrapper.send(appmgr::msg::kBsUpdate.requestId, &req, sizeof req, err)) return rc;
    if (int rc = wrapper.receive(appmgr::msg::kBsUpdate.responseId, &resp, sizeof resp, err)) return rc;
    return msg.verifyResponseHeader(resp.hdr);
  }

 protected:
  // Lines logged under `label` at debug `level` (kError: error lines) whose text is `text`.
  static constexpr int kError = -1;
  size_t Logged(std::string_view label, int level, std::string_view text) const {
    size_t n = 0;
    for (const EvLogRecord& r : log_.Records()) {
      bool levelMatches = level == kError ? r.error : !r.error && r.level == level;
      n += levelMatches && r.label == label && r.text == text ? 1 : 0;
    }
    return n;
  }

  std::unique_ptr<TestSettings> settings_;
  EvLogCapture log_;
};
