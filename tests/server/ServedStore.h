// ServedStore: the store of a test, loaded with the demo fixture, behind an in-process server
// core with every appmgrd handler, on a free loopback port, receiving files into Temp/ of its
// folder.
//
// The store lives in a TempStore (its own temporary folder and log). The destructor stops the
// server before the store closes, as appmgrd does.
#pragma once

#include <memory>
#include <string>

#include "platform/net/MangleHostName.h"
#include "server/core/Server.h"
#include "server/handlers/AllHandlers.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {

inline constexpr const char* kDemoFixture = APPMGR_SOURCE_DIR "/server/fixtures/demo.json";

class ServedStore {
 public:
  explicit ServedStore(const std::string& webConsoleUrl = "") {
    EXPECT_OK(t_.Open());
    EXPECT_OK(LoadFixtureFile(t_.store(), kDemoFixture));
    ServerOptions o;
    o.address = "127.0.0.1";
    o.port = 0;
    o.name = "served-store";
    o.tempDirectory = tempDirectory();
    server_ = std::make_unique<Server>(o);
    RegisterAllHandlers(*server_, t_.store(), {webConsoleUrl, tempDirectory()});
    EXPECT_OK(server_->Start());
  }
  ~ServedStore() { server_->Stop(); }
  ServedStore(const ServedStore&) = delete;
  ServedStore& operator=(const ServedStore&) = delete;

  std::string connect() const {
    return MangleHostName("127.0.0.1:" + std::to_string(server_->port()), "ch01", 8400, 8402);
  }
  Store& store() { return t_.store(); }
  Server& server() { return *server_; }
  // The folder files put through the file-transfer facility go to.
  std::string tempDirectory() const { return t_.dir() + "/Temp"; }

 private:
  TempStore t_;
  std::unique_ptr<Server> server_;
};

}  // namespace appmgr::server
