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
#include "appmgr/AppIdInterface.h"
#include "appmgr/AppMgrNet.h"
#include "appmgr/BSInterface.h"
#include "appmgr/ClientInterface.h"
#include "appmgr/ClientGroupInterface.h"
#include "appmgr/GlobalParamInterface.h"
#include "appmgr/OrbitInterface.h"
#include "appmgr/AppTypeInterface.h"
#include "appmgr/InstInterface.h"
#include "appmgr/SCInterface.h"
#include "appmgr/CACertificateInterface.h"
#include "appmgr/CertificateInterface.h"
#include "appmgr/DaxBackupInterface.h"
#include "appmgr/LogMonitorInterface.h"
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

TEST_F(LibraryTest, ExportsItsFunctionsUnderOneVersionNodeAndHidesTheRest) {
  for (const char* name : {"getLibraryInterface", "EnableClientMessageCache", "EnableServerSideMessageCache",
                           "GetDataInPreInstallMode", "CleanClientSessionPool", "TerminateClientSessions",
                           "GetClientLibraryStatistics", "GetClientLibraryVersion",
                           "SetFileTransferProgressCallback"}) {
    void* plain = dlsym(lib_, name);
    EXPECT_NE(plain, nullptr) << name;
    // A program linked against the library binds to this node; a library without it is refused.
    EXPECT_EQ(dlvsym(lib_, name, "APPMGRNET_1.0"), plain) << name;
    EXPECT_EQ(dlvsym(lib_, name, "APPMGRNET_0.9"), nullptr) << name;
  }
  EXPECT_STREQ(Symbol<AppMgrGetClientLibraryVersionFn>("GetClientLibraryVersion")(), APPMGRNET_VERSION);
  EXPECT_EQ(dlsym(lib_, "_ZN14BSInterfaceNet6lookupEmRNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERlRmS8_S8_S6_S8_S6_Pv"),
            nullptr);
  EXPECT_EQ(dlsym(lib_, "KPS_PRIM_STRING"), nullptr);
  EXPECT_EQ(dlsym(lib_, "vmFatalError"), nullptr);
}

TEST_F(LibraryTest, TheFactoryMakesTheBackupSetInterfaceAndNullForOtherCodes) {
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  EXPECT_EQ(get(0), nullptr);
  EXPECT_EQ(get(17), nullptr);
  EXPECT_EQ(get(100), nullptr);
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

TEST_F(LibraryTest, TheFactoryMakesWorkingClientAndApplicationIdInterfaces) {
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  server_->On(appmgr::msg::kClientLookup, [](const ClientInfoReq7& req, ClientInfoResp7& resp,
                                             appmgr::server::Exchange& x) {
    resp.integer1 = req.integer1;
    resp.text1 = x.Text("client-" + std::to_string(req.integer1));
  });
  server_->On(appmgr::msg::kAppIdIncrArchiveGroup, [](const GetIncrAgInfoReq& req, GetIncrAgInfoRes& resp,
                                                      appmgr::server::Exchange&) { resp.archiveGroupId = req.id * 2; });

  std::unique_ptr<ClientInterface> client(static_cast<ClientInterface*>(get(APPMGR_INTERFACE_CLIENT)));
  ASSERT_NE(client, nullptr);
  _AppClientInfo info;
  info.clientId = 12;
  ClientPlatformInfo platforms[3];
  std::string err;
  ASSERT_EQ(client->lookup(info, platforms, err, nullptr), 0) << err;
  EXPECT_EQ(info.clientName, "client-12");
  unsigned long type = 0;
  EXPECT_EQ(client->getSRMAgentlessDaxType(1, type, err, nullptr), 0xa0010);

  std::unique_ptr<AppIdInterface> appIds(static_cast<AppIdInterface*>(get(APPMGR_INTERFACE_APP_ID)));
  ASSERT_NE(appIds, nullptr);
  unsigned long group = 0;
  ASSERT_EQ(appIds->getIncrArchiveGroup(group, 21, err, nullptr), 0) << err;
  EXPECT_EQ(group, 42u);
}

TEST_F(LibraryTest, TheFactoryMakesWorkingPassthroughAndCertificateInterfaces) {
  server_->On(appmgr::msg::kHandleLogMonitorXml, [](const HandleLogMonitorXMLReq& req,
                                                    HandleLogMonitorXMLResp& resp,
                                                    appmgr::server::Exchange& x) {
    resp.xml = x.Text(std::string("log:") + req.xml + ":" + std::to_string(req.id1));
  });
  server_->On(appmgr::msg::kHandleDaxXml, [](const HandleDaxXMLReq& req, HandleDaxXMLResp& resp,
                                             appmgr::server::Exchange& x) {
    resp.hdr.errorCode = 4;
    resp.xml = x.Text(std::string("dax:") + req.xml + ":" + std::to_string(req.id2));
  });
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  std::unique_ptr<LogMonitorInterface> logmon(static_cast<LogMonitorInterface*>(get(APPMGR_INTERFACE_LOG_MONITOR)));
  std::unique_ptr<DaxBackupInterface> dax(static_cast<DaxBackupInterface*>(get(APPMGR_INTERFACE_DAX_BACKUP)));
  std::unique_ptr<CACertificateInterface> ca(static_cast<CACertificateInterface*>(get(APPMGR_INTERFACE_CA_CERTIFICATE)));
  std::unique_ptr<CertificateInterface> cert(static_cast<CertificateInterface*>(get(APPMGR_INTERFACE_CERTIFICATE)));
  ASSERT_TRUE(logmon && dax && ca && cert);

  std::string xml = "<q/>";
  EXPECT_EQ(logmon->logMonitoringOperation(6, 0, xml), 0);
  EXPECT_EQ(xml, "log:<q/>:6");
  xml = "<r/>";
  EXPECT_EQ(dax->handleXMLRequest(0, 9, xml), 4);
  EXPECT_EQ(xml, "dax:<r/>:9");

  std::string err;
  _AppCACertificateInfo caInfo;
  EXPECT_EQ(ca->lookup(caInfo, err, nullptr), -1);
  EXPECT_EQ(err, "Feature Not Supported");
  int count = 3;
  EXPECT_EQ(cert->countActiveCertificates(0, 0, &count, nullptr), -1);
  EXPECT_EQ(count, 3);
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

// The domain, global-parameter and client-group objects, each through one exchange (or its
// local answer) on the library's own session machinery.
TEST_F(LibraryTest, TheFactoryMakesTheDomainParameterAndClientGroupInterfaces) {
  using appmgr::server::Exchange;
  server_->On(appmgr::msg::kOrbitRemove, [](const RemoveOrbitReq& req, GenericResp& resp, Exchange& x) {
    if (req.id != 1) {
      resp.hdr.errorCode = 1;
      resp.hdr.errorText = x.Text("domain " + std::to_string(req.id) + " does not exist");
    }
  });
  server_->On(appmgr::msg::kGlobalParamGet, [](const GetGlobalParamReq& req, GetGlobalParamResp& resp,
                                               Exchange& x) { resp.value = x.Text(std::string(req.name) + "-value"); });
  server_->On(appmgr::msg::kClientGroupLookup, [](const ClientGroupInfoReq& req, ClientGroupInfoResp& resp,
                                                  Exchange& x) {
    resp.int1 = 5;
    resp.text1 = x.Text(req.text1);
  });
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  std::unique_ptr<OrbitInterface> orbit(static_cast<OrbitInterface*>(get(APPMGR_INTERFACE_ORBIT)));
  std::unique_ptr<GlobalParamInterface> params(
      static_cast<GlobalParamInterface*>(get(APPMGR_INTERFACE_GLOBAL_PARAM)));
  std::unique_ptr<ClientGroupInterface> groups(
      static_cast<ClientGroupInterface*>(get(APPMGR_INTERFACE_CLIENT_GROUP)));
  ASSERT_TRUE(orbit && params && groups);

  std::string err;
  EXPECT_EQ(orbit->remove(1, err, nullptr), 0) << err;
  EXPECT_EQ(orbit->remove(2, err, nullptr), 1);
  EXPECT_EQ(err, "domain 2 does not exist");

  std::string value;
  EXPECT_EQ(params->getProperty("sTimeZone", value, err, 0, nullptr), 0) << err;
  EXPECT_EQ(value, "sTimeZone-value");

  _AppClientGroupInfo info;
  info.text1 = "Web";
  EXPECT_EQ(groups->lookup(info, err, nullptr), 0) << err;
  EXPECT_EQ(info.int1, 5u);
  EXPECT_EQ(info.text1, "Web");
  EXPECT_EQ(groups->remove(5, err, nullptr), 0xa0010);
  EXPECT_EQ(err, "Api not implemented.");
}

TEST_F(LibraryTest, TheFactoryMakesAWorkingSubclientInterfaceForCodeEight) {
  using appmgr::server::Exchange;
  server_->On(appmgr::msg::kScInitContent, [](const GenericInitContentReq& req, GenericInitContentResp2& resp,
                                              Exchange& x) {
    resp.contentFlag = 1;
    resp.count = 1;
    resp.entries = x.Array<AppMgrContent>(1);
    resp.entries[0] = {x.Text("/sc/" + std::to_string(req.id)), 1};
  });
  struct Content : ContentCallBack {
    std::string seen;
    void setFlag(bool flag) override { seen += flag ? "set;" : "unset;"; }
    void addContent(unsigned long type, const std::string& text) override {
      seen += std::to_string(type) + ":" + text + ";";
    }
  };
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  std::unique_ptr<SCInterface> sc(static_cast<SCInterface*>(get(APPMGR_INTERFACE_SUBCLIENT)));
  ASSERT_NE(sc, nullptr);
  Content content;
  std::string err;
  ASSERT_EQ(sc->initContent(1021, 0, err, &content, nullptr, false, 0, false), 0) << err;
  EXPECT_EQ(content.seen, "set;1:/sc/1021;");
  std::string groups;
  EXPECT_EQ(sc->setContentGroups(1, groups, nullptr), 0xa0010);
}

// The instance (6) and application-type (5) objects, each through one exchange and one local
// answer.
TEST_F(LibraryTest, TheFactoryMakesTheInstanceAndApplicationTypeInterfaces) {
  using appmgr::server::Exchange;
  server_->On(appmgr::msg::kInstLookup, [](const GenericLookupReq3& req, GenericLookupResp3& resp, Exchange& x) {
    resp.name = x.Text("instance-" + std::to_string(req.id));
  });
  server_->On(appmgr::msg::kAppTypeLookup, [](const GenericDaxReq& req, GenericLookupResp2& resp, Exchange& x) {
    resp.value = req.id2;
    resp.name = x.Text("type-" + std::to_string(req.id1));
  });
  auto get = Symbol<AppMgrGetLibraryInterfaceFn>("getLibraryInterface");
  std::unique_ptr<InstInterface> inst(static_cast<InstInterface*>(get(APPMGR_INTERFACE_INSTANCE)));
  std::unique_ptr<AppTypeInterface> appType(static_cast<AppTypeInterface*>(get(APPMGR_INTERFACE_APP_TYPE)));
  ASSERT_NE(inst, nullptr);
  ASSERT_NE(appType, nullptr);

  std::string name, text, err;
  long value = 0;
  unsigned long a2 = 0, a3 = 0, a4 = 0;
  ASSERT_EQ(inst->lookup(13, name, value, a2, a3, a4, text, err, nullptr), 0) << err;
  EXPECT_EQ(name, "instance-13");

  ASSERT_EQ(appType->lookup(3, 20, name, value, a2, a3, err, nullptr), 0) << err;
  EXPECT_EQ(name, "type-20");
  EXPECT_EQ(value, 3);
  EXPECT_EQ(appType->getFSAppTypeNumber(3, a2, err, nullptr), -1);
  EXPECT_EQ(err, "Feature Not Supported");
}

}  // namespace
