// The library as callers see it: loaded with dlopen, the factory and the switches found by name,
// nothing else visible.
//
// Callers set the environment before they load the library, and the library reads its settings
// when it is loaded; so the suite starts one script server, names it in one settings file, and
// loads the library once for all its cases (it stays loaded, so counters are compared as
// differences).
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "appmgr/AdaptersInterface.h"
#include "appmgr/AppMgrNet.h"
#include "appmgr/BSInterface.h"
#include "appmgr/MailBoxDelegateInterface.h"
#include "appmgr/SnapInterface.h"
#include "appmgr/records/MailBoxDelegateRecords.h"
#include "appmgr/records/SnapInfoRecords.h"
#include "tests/session/SessionFixture.h"

namespace {

class LibraryTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    server_ = new ScriptServer();
    SessionFixture::ScriptLookup(*server_);
    settings_ = new TestSettings(ControlhostAt(*server_), 10);
    setenv("APPMGR_SETTINGS", settings_->path().c_str(), 1);
    // NODELETE: the library's process-wide state is never freed, and must stay reachable for
    // leak checkers after the handle is closed.
    lib_ = dlopen(APPMGRNET_LIBRARY, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  }
  static void TearDownTestSuite() {
    if (lib_) dlclose(lib_);
    delete settings_;
    delete server_;
    unsetenv("APPMGR_SETTINGS");
  }
  void SetUp() override { ASSERT_NE(lib_, nullptr) << dlerror(); }

  template <class F>
  static F Symbol(const char* name) {
    return reinterpret_cast<F>(dlsym(lib_, name));
  }
  static AppMgrNetStatistics Stats() {
    AppMgrNetStatistics s{};
    EXPECT_EQ(Symbol<AppMgrGetClientLibraryStatisticsFn>("GetClientLibraryStatistics")(&s), 0);
    return s;
  }
  static std::string Lookup(BSInterface& bs, unsigned long id) {
    std::string name, text, err;
    long value = 0;
    unsigned long o1, o2, o3, o4 = 0;
    EXPECT_EQ(bs.lookup(id, name, value, o1, o2, o3, text, o4, err, nullptr), 0) << err;
    return name;
  }

  static ScriptServer* server_;
  static TestSettings* settings_;
  static void* lib_;
};

ScriptServer* LibraryTest::server_ = nullptr;
TestSettings* LibraryTest::settings_ = nullptr;
void* LibraryTest::lib_ = nullptr;

TEST_F(LibraryTest, ExportsItsFunctionsAndHidesTheRest) {
  for (const char* name : {"getLibraryInterface", "EnableClientMessageCache", "EnableServerSideMessageCache",
                           "GetDataInPreInstallMode", "CleanClientSessionPool", "TerminateClientSessions",
                           "GetClientLibraryStatistics", "SetFileTransferProgressCallback"}) {
    EXPECT_NE(dlsym(lib_, name), nullptr) << name;
  }
  EXPECT_EQ(dlsym(lib_, "_ZN14BSInterfaceNet6lookupEmRNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERlRmS8_S8_S6_S8_S6_Pv"),
            nullptr);
  EXPECT_EQ(dlsym(lib_, "KPS_PRIM_STRING"), nullptr);
  EXPECT_EQ(dlsym(lib_, "vmFatalError"), nullptr);
}

TEST_F(LibraryTest, TheFactoryMakesTheBackupSetInterfaceAndNullForOtherCodes) {
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  EXPECT_EQ(get(0), nullptr);
  EXPECT_EQ(get(17), nullptr);
  EXPECT_EQ(get(-1), nullptr);
  auto* a = static_cast<BSInterface*>(get(APPMGR_INTERFACE_BACKUP_SET));
  auto* b = static_cast<BSInterface*>(get(APPMGR_INTERFACE_BACKUP_SET));
  ASSERT_NE(a, nullptr);
  EXPECT_NE(a, b) << "one new object per call";
  std::string err;
  EXPECT_EQ(a->remove(1, err, nullptr), 0xa0010);
  EXPECT_EQ(err, "Api not implemented.");
  EXPECT_EQ(Lookup(*b, 31), "bs-31");
  delete a;
  delete b;
}

TEST_F(LibraryTest, TheFactoryMakesAWorkingAdaptersInterfaceForCodeOne) {
  server_->On(appmgr::msg::kGetClientList, [](const GenericListPairReq& req, GenericListPairResp& resp,
                                              appmgr::server::Exchange& x) {
    resp.idCount = resp.nameCount = 1;
    resp.ids = x.Array<uint64_t>(1);
    resp.ids[0] = req.selector + 1;
    resp.names = x.Array<const char*>(1);
    resp.names[0] = x.Text("client-" + std::to_string(req.option));
  });
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  std::unique_ptr<AdaptersInterface> adapters(static_cast<AdaptersInterface*>(get(APPMGR_INTERFACE_ADAPTERS)));
  ASSERT_NE(adapters, nullptr);
  std::list<unsigned long> ids{5};
  std::list<std::string> names{"five"};
  std::string err;
  ASSERT_EQ(adapters->getClientList(ids, names, err, 41, nullptr, 3), 0) << err;
  EXPECT_EQ(ids, (std::list<unsigned long>{5, 42}));
  EXPECT_EQ(names, (std::list<std::string>{"five", "client-3"}));
  EXPECT_EQ(adapters->lookupkeys(1, names, err, nullptr), 0xa0010);
  EXPECT_EQ(err, "Api not implemented.");
  EXPECT_EQ(adapters->setOpRules(1, names, err, nullptr), 0);
}

TEST_F(LibraryTest, TheFactoryMakesWorkingSnapshotAndDelegateInterfaces) {
  server_->On(appmgr::msg::kSnapLookup, [](const SanpInfoReq& req, SanpInfoResp& resp, appmgr::server::Exchange& x) {
    resp.info.f2 = req.info.f2;
    resp.info.f4 = x.Text("snap-" + std::to_string(req.info.f2));
  });
  server_->On(appmgr::msg::kDelegateGetList, [](const GetMailBoxDelegateListReq& req, GetMailBoxDelegateListResp& resp,
                                                appmgr::server::Exchange& x) {
    resp.count = 1;
    resp.infos = x.Array<MailBoxDelegate>(1);
    resp.infos[0].g7 = req.selector * 2;
    resp.infos[0].g2 = x.Text("delegate");
  });
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  std::unique_ptr<SnapInterface> snap(static_cast<SnapInterface*>(get(APPMGR_INTERFACE_SNAP_INFO)));
  std::unique_ptr<MailBoxDelegateInterface> delegates(
      static_cast<MailBoxDelegateInterface*>(get(APPMGR_INTERFACE_MAILBOX_DELEGATE)));
  ASSERT_NE(snap, nullptr);
  ASSERT_NE(delegates, nullptr);
  std::string err;
  _AppSnapInfo info;
  info.F2 = 77;
  ASSERT_EQ(snap->lookup(info, err, nullptr), 0) << err;
  EXPECT_EQ(info.F4, "snap-77");
  std::list<_MailBoxDelegateInfo> list;
  ASSERT_EQ(delegates->getMailBoxDelegateList(list, 21, err, nullptr), 0) << err;
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list.front().G7, 42u);
  EXPECT_EQ(list.front().G2, "delegate");
}

TEST_F(LibraryTest, SwitchesReachTheLibrarysOwnCacheAndPools) {
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  auto enable = Symbol<AppMgrEnableClientMessageCacheFn>("EnableClientMessageCache");
  auto clean = Symbol<AppMgrVoidFn>("CleanClientSessionPool");
  auto terminate = Symbol<AppMgrVoidFn>("TerminateClientSessions");
  auto fill = Symbol<AppMgrEnableServerSideMessageCacheFn>("EnableServerSideMessageCache");
  std::unique_ptr<BSInterface> bs(static_cast<BSInterface*>(get(APPMGR_INTERFACE_BACKUP_SET)));

  AppMgrNetStatistics before = Stats();
  EXPECT_EQ(Lookup(*bs, 3), "bs-3");
  EXPECT_EQ(Lookup(*bs, 3), "bs-3");
  AppMgrNetStatistics after = Stats();
  EXPECT_EQ(after.totalMessageCalls - before.totalMessageCalls, 2u);
  EXPECT_EQ(after.skippedMessageCalls - before.skippedMessageCalls, 1u);
  EXPECT_GE(after.messagesInCache, 1u);
  EXPECT_EQ(after.fullPoolExists, 1u);
  EXPECT_EQ(after.fullPoolOpen, 1u);

  terminate();
  EXPECT_EQ(Stats().fullPoolOpen, 1u) << "TerminateClientSessions does nothing";

  enable(0x100);  // only the low byte counts: 0 is off
  EXPECT_EQ(Stats().cacheInUse, 0u);
  EXPECT_EQ(Stats().messagesInCache, 0u);
  enable(1);
  EXPECT_EQ(Stats().cacheInUse, 1u);

  clean();
  EXPECT_EQ(Stats().fullPoolExists, 0u);
  EXPECT_EQ(Lookup(*bs, 4), "bs-4") << "the next call builds a new pool";
  EXPECT_EQ(Stats().fullPoolExists, 1u);

  // The fill answers its underlying call's result unchanged: false (0) when the server has no
  // answer for it.
  EXPECT_EQ(fill(7), 0);
}

}  // namespace
