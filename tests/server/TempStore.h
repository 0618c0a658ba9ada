// TempStore: a store in a private temporary folder, for one test.
//
// The folder comes from TestSettings (which also points the event log into it) and is removed
// with it. The store can be closed and reopened on the same file, as a server restart would.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "server/store/Fixture.h"
#include "server/store/Store.h"
#include "tests/support/TestSettings.h"

// Success, or a failure shown with its text.
#define ASSERT_OK(expr)                            \
  do {                                             \
    CLmError assert_ok_ = (expr);                  \
    ASSERT_FALSE(assert_ok_) << assert_ok_.Text(); \
  } while (0)
#define EXPECT_OK(expr)                            \
  do {                                             \
    CLmError expect_ok_ = (expr);                  \
    EXPECT_FALSE(expect_ok_) << expect_ok_.Text(); \
  } while (0)

namespace appmgr::server {

class TempStore {
 public:
  explicit TempStore(Store::Options options = {}) : options_(options) {}

  const std::string& path() const { return path_; }
  void set_path(std::string path) { path_ = std::move(path); }
  const std::string& dir() const { return settings_.dir(); }

  CLmError Open() { return Store::Open(path(), options_, &store_); }
  void Close() { store_.reset(); }
  CLmError Reopen() {
    Close();
    return Open();
  }
  CLmError Load(std::string_view fixture) { return LoadFixtureText(*store_, fixture, "test"); }

  Store& store() { return *store_; }
  bool open() const { return store_ != nullptr; }
  Store::Options& options() { return options_; }

 private:
  TestSettings settings_{"", 4};
  std::string path_ = settings_.dir() + "/appmgr.db";
  Store::Options options_;
  std::unique_ptr<Store> store_;
};

// A small installation most store tests start from: one client with two backup sets under one
// instance, a second client as a replication target.
inline constexpr std::string_view kSmallFixture = R"json({
  "format": 1,
  "appTypes": [{"id": 10, "name": "File System"}],
  "clients": [
    {"id": 3, "name": "db01", "hostName": "db01.example.net",
     "applications": [{"id": 301, "appType": 10}]},
    {"id": 4, "name": "fs02", "hostName": "fs02.example.net"}
  ],
  "instances": [{"id": 12, "client": 3, "appType": 10, "name": "default"}],
  "backupSets": [
    {"id": 7, "instance": 12, "name": "defaultBackupSet", "value": -5, "description": "files",
     "subclients": [{"id": 71, "name": "default"}, {"id": 72, "name": "logs"}],
     "stores": [{"name": "primary", "defaultSubclient": 71}, {"name": "archive",
                 "defaultSubclient": 72}, {"name": "standby"}],
     "wildcards": ["*.tmp", "~$*"],
     "replicationPairs": [
       {"id": 1, "destinationClient": 4, "source": "D:\\Data", "sourceGuid": "{s1}",
        "destinationGuid": "{d1}", "destination": "/replica/Data", "state": 1},
       {"id": 2, "destinationClient": 4, "source": "D:\\Logs",
        "destination": "/replica/Logs"}],
     "interfacePairs": [{"pair": 1, "selector": 0, "first": "10.0.1.13", "second": "10.0.2.14"},
                        {"pair": 1, "selector": 1, "first": "eth1", "second": "eth2"}],
     "systemState": [
       {"name": "db01", "id": 5, "value": 2, "text1": "Registry", "text2": "HKLM",
        "pairs": [{"id": 1, "name": "SYSTEM"}, {"id": 2, "name": "SOFTWARE"}]},
       {"name": "other", "id": 6},
       {"name": "db01", "id": 4, "value": 1, "text1": "Boot"}]},
    {"id": 8, "instance": 12, "name": "second",
     "subclients": [{"id": 81, "name": "default"}],
     "replicationPairs": [{"id": 3, "destinationClient": 4, "source": "E:\\",
                           "destination": "/replica/E"}]}
  ]
})json";

}  // namespace appmgr::server
