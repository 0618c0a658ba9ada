// Every subclient operation through the library against the real appmgrd on its demo data: its
// answer and its server error path. Content and associations survive a restart of appmgrd.
#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "interfaces/SCInterfaceNet.h"
#include "server/store/Store.h"
#include "server/store/StoreErrors.h"
#include "server/store/SubclientStore.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

using appmgr::server::kStoreErrConflict;
using appmgr::server::kStoreErrInvalidArgument;
using appmgr::server::kStoreErrNotFound;

constexpr unsigned long kMissing = 999;

class ScEndToEnd : public SessionFixture {
 protected:
  void SetUp() override {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    server_ = std::make_unique<AppmgrdProcess>(o);
    Settings("[Controlhost]\nsHOSTNAME = " + server_->host() + "\nsCLIENTNAME = controlhost\n");
  }
  void ExpectMissing(int status, const std::string& error) {
    EXPECT_EQ(status, kStoreErrNotFound);
    EXPECT_EQ(error, "subclient 999 does not exist");
  }
  std::string Content(unsigned long id, bool* flag = nullptr) {
    struct Collect : ContentCallBack {
      std::string seen;
      bool flag = false;
      void setFlag(bool f) override { flag = f; }
      void addContent(unsigned long type, const std::string& text) override {
        seen += (seen.empty() ? "" : ",") + text + (type == 1 ? "" : "#" + std::to_string(type));
      }
    } c;
    std::string err;
    EXPECT_EQ(sc_.initContent(id, 0, err, &c, nullptr, false, 0, false), 0) << err;
    if (flag) *flag = c.flag;
    return c.seen;
  }
  std::unique_ptr<AppmgrdProcess> server_;
  SCInterfaceNet sc_;
  std::string err_;
};

struct Props : PropCallBack {
  std::map<std::string, std::string> seen;
  void addProperty(const std::string& n, unsigned long, const std::string& v, long) override { seen[n] = v; }
};

TEST_F(ScEndToEnd, LookupsUpdateAndProperties) {
  std::string name, text;
  long value = 0;
  unsigned long a2, a3, a4, id = 0;
  ASSERT_EQ(sc_.lookup(1032, name, value, a2, a3, a4, text, err_, nullptr), 0) << err_;
  EXPECT_EQ(name, "hourly-logs");
  EXPECT_EQ(value, 1);
  ExpectMissing(sc_.lookup(kMissing, name, value, a2, a3, a4, text, err_, nullptr), err_);

  ASSERT_EQ(sc_.lookup(std::string("9b1e0f6a-5d34-4b8e-8f7a-2c3d4e5f1022"), name, value, a2, a3, a4, id, err_,
                       nullptr),
            0)
      << err_;
  EXPECT_EQ(id, 1022u);
  EXPECT_EQ(name, "logs");
  EXPECT_EQ(sc_.lookup(std::string("no-such-guid"), name, value, a2, a3, a4, id, err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "no subclient has GUID 'no-such-guid'");

  long newValue = 12;
  ASSERT_EQ(sc_.update(1022, "app-logs", newValue, false, 0, 0, err_, nullptr), 0) << err_;
  ASSERT_EQ(sc_.lookup(1022, name, value, a2, a3, a4, text, err_, nullptr), 0);
  EXPECT_EQ(name + "/" + std::to_string(value), "app-logs/12");
  EXPECT_EQ(sc_.update(1022, "default", newValue, false, 0, 0, err_, nullptr), kStoreErrConflict)
      << "a sibling has that name";
  ExpectMissing(sc_.update(kMissing, "x", newValue, false, 0, 0, err_, nullptr), err_);

  Props before;
  ASSERT_EQ(sc_.getProperties(1032, 0, err_, &before, nullptr), 0) << err_;
  EXPECT_EQ(before.seen, (std::map<std::string, std::string>{{"nBackupEveryMinutes", "60"}}));
  ApplProperty every("nBackupEveryMinutes", 1, "15"), owner("sOwner", 2, "dba");
  ASSERT_EQ(sc_.setProperties(1032, {&every, &owner}, false, err_, nullptr, nullptr), 0) << err_;
  ASSERT_EQ(sc_.removeProperties(1032, std::list<std::string>{"sOwner"}, true, err_, nullptr, nullptr), 0);
  ASSERT_EQ(sc_.removeProperties(1032, std::list<const ApplProperty*>{&owner}, false, err_, nullptr, nullptr), 0);
  Props after;
  sc_.getProperties(1032, 0, err_, &after, nullptr);
  EXPECT_EQ(after.seen, (std::map<std::string, std::string>{{"nBackupEveryMinutes", "15"}}));
  Props none;
  ExpectMissing(sc_.getProperties(kMissing, 0, err_, &none, nullptr), err_);
  ExpectMissing(sc_.setProperties(kMissing, {&owner}, false, err_, nullptr, nullptr), err_);
  ExpectMissing(sc_.removeProperties(kMissing, std::list<std::string>{"x"}, false, err_, nullptr, nullptr), err_);
  ExpectMissing(sc_.removeProperties(kMissing, std::list<const ApplProperty*>{&owner}, false, err_, nullptr, nullptr),
                err_);
}

TEST_F(ScEndToEnd, SettingsAndQuestionsOfTheDemoData) {
  std::list<unsigned long> overlapping{7};
  ASSERT_EQ(sc_.getOverlappingSubclientList(1021, overlapping, err_, nullptr), 0) << err_;
  EXPECT_EQ(overlapping, (std::list<unsigned long>{7, 1061})) << "C:\\ contains C:\\Shares";
  overlapping.clear();
  ASSERT_EQ(sc_.getOverlappingSubclientList(1022, overlapping, err_, nullptr), 0);
  EXPECT_EQ(overlapping, (std::list<unsigned long>{1051})) << "D:\\Logs contains D:\\Logs\\Replica";
  ExpectMissing(sc_.getOverlappingSubclientList(kMissing, overlapping, err_, nullptr), err_);

  unsigned long host = 0;
  ASSERT_EQ(sc_.getBackupHost(1051, host, err_, nullptr), 0) << err_;
  EXPECT_EQ(host, 4u) << "set for it";
  ASSERT_EQ(sc_.getBackupHost(1021, host, err_, nullptr), 0);
  EXPECT_EQ(host, 3u) << "none set: its own client";
  ExpectMissing(sc_.getBackupHost(kMissing, host, err_, nullptr), err_);

  unsigned long state = 0;
  std::string text;
  ASSERT_EQ(sc_.getFRPairData(1051, 1, state, text, err_, 0, nullptr), 0) << err_;
  EXPECT_EQ(text, "journal");
  EXPECT_EQ(state, 1u);
  std::string newText = "snapshot";
  EXPECT_EQ(sc_.setFRPairData(1051, 1, 0, newText, err_, false, nullptr), kStoreErrConflict);
  ASSERT_EQ(sc_.setFRPairData(1051, 1, 0, newText, err_, true, nullptr), 0) << err_;
  ASSERT_EQ(sc_.setFRPairData(1051, 2, 5, newText, err_, false, nullptr), 0) << err_;
  ASSERT_EQ(sc_.getFRPairData(1051, 1, state, text, err_, 0, nullptr), 0);
  EXPECT_EQ(text, "snapshot");
  EXPECT_EQ(sc_.getFRPairData(1051, 2, state, text, err_, 9, nullptr), kStoreErrNotFound);
  EXPECT_EQ(sc_.getFRPairData(1021, 1, state, text, err_, 0, nullptr), kStoreErrNotFound)
      << "pair 1 is not a pair of 1021's backup set";
  ExpectMissing(sc_.getFRPairData(kMissing, 1, state, text, err_, 0, nullptr), err_);
  ExpectMissing(sc_.setFRPairData(kMissing, 1, 0, newText, err_, true, nullptr), err_);

  std::string type = "office";
  ASSERT_EQ(sc_.getExtensionForFileType(type, nullptr), 0);
  EXPECT_EQ(type, "doc,docx,xls,xlsx,ppt,pptx");
  type = "Nothing";
  EXPECT_EQ(sc_.getExtensionForFileType(type, nullptr), kStoreErrNotFound);
  EXPECT_EQ(type, "Nothing");

  std::string bsName, entries;
  std::vector<unsigned long> ids;
  ASSERT_EQ(sc_.getFSBackupsetContent(3, 10, 12, 102, 0, 0, false, bsName, entries, ids, nullptr), 0);
  EXPECT_EQ(bsName, "defaultBackupSet");
  EXPECT_EQ(entries, "C:\\\nD:\\Logs");
  EXPECT_EQ(ids, (std::vector<unsigned long>{1021, 1022}));
  ids.clear();
  ASSERT_EQ(sc_.getFSBackupsetContent(0, 0, 0, 106, 0, 0, false, bsName, entries, ids, nullptr), 0);
  EXPECT_TRUE(ids.empty()) << "1061 is marked deleted";
  ASSERT_EQ(sc_.getFSBackupsetContent(0, 0, 0, 106, 0, 0, true, bsName, entries, ids, nullptr), 0);
  EXPECT_EQ(ids, (std::vector<unsigned long>{1061}));
  EXPECT_EQ(sc_.getFSBackupsetContent(4, 0, 0, 102, 0, 0, false, bsName, entries, ids, nullptr), kStoreErrNotFound)
      << "backup set 102 is not on client 4";
  EXPECT_EQ(sc_.getFSBackupsetContent(0, 0, 0, kMissing, 0, 0, false, bsName, entries, ids, nullptr),
            kStoreErrNotFound);

  std::vector<RefCopySCInfo> copies;
  ASSERT_EQ(sc_.getSmartCopySubclients(1022, copies, nullptr), 0);
  ASSERT_EQ(copies.size(), 1u);
  EXPECT_EQ(copies[0].subclientId, 1051u);
  EXPECT_EQ(sc_.getSmartCopySubclients(kMissing, copies, nullptr), kStoreErrNotFound);
  EXPECT_EQ(copies.size(), 1u);
}

TEST_F(ScEndToEnd, ContentAndAssociationsChangeAtomicallyAndSurviveARestart) {
  bool flag = false;
  EXPECT_EQ(Content(1051, &flag), "D:\\Data,D:\\Logs\\Replica");
  EXPECT_TRUE(flag);
  Content(1021, &flag);
  EXPECT_FALSE(flag);

  std::string add1 = "D:\\Projects", add2 = "SALES", remove = "D:\\Data";
  ASSERT_EQ(sc_.updateContent(1051, 1, {&add1}, {&remove}, false, false, false, err_, nullptr, nullptr), 0) << err_;
  ASSERT_EQ(sc_.updateContent(1051, 2, {&add2}, {}, false, false, false, err_, nullptr, nullptr), 0) << err_;
  EXPECT_EQ(Content(1051), "D:\\Logs\\Replica,D:\\Projects,SALES#2");

  // A refused entry leaves nothing half-written: neither the good entry before it nor the removal.
  std::string good = "D:\\Good", empty;
  std::string projects = "D:\\Projects";
  EXPECT_EQ(sc_.updateContent(1051, 1, {&good, &empty}, {&projects}, false, false, false, err_, nullptr, nullptr),
            kStoreErrInvalidArgument);
  EXPECT_EQ(err_, "entry 2 of 2 of the content to add to subclient 1051 is empty");
  EXPECT_EQ(sc_.updateContent(1051, 1, {&good, nullptr}, {}, false, false, false, err_, nullptr, nullptr),
            kStoreErrInvalidArgument);
  EXPECT_EQ(err_, "entry 2 of 2 of the content to add to subclient 1051 has no text");
  EXPECT_EQ(Content(1051), "D:\\Logs\\Replica,D:\\Projects,SALES#2");
  std::string x = "/x";
  ExpectMissing(sc_.updateContent(kMissing, 1, {&x}, {}, false, false, false, err_, nullptr, nullptr), err_);

  ASSERT_EQ(sc_.SetStoreAssociation(1022, {"primary", "archive", "primary"}, err_, nullptr), 0) << err_;
  EXPECT_EQ(sc_.SetStoreAssociation(1022, {"nowhere"}, err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "backup set 102 has no store named 'nowhere'");
  ASSERT_EQ(sc_.SetActiveDirectoryAssociation(1022, {"OU=Logs,DC=lab"}, err_, nullptr), 0) << err_;
  ExpectMissing(sc_.SetStoreAssociation(kMissing, {"primary"}, err_, nullptr), err_);
  ExpectMissing(sc_.SetActiveDirectoryAssociation(kMissing, {"ou"}, err_, nullptr), err_);

  server_->Restart();
  EXPECT_EQ(Content(1051), "D:\\Logs\\Replica,D:\\Projects,SALES#2");

  // Nothing in the interface reads associations back: read the stopped server's file.
  ASSERT_EQ(server_->Stop(), 0);
  std::unique_ptr<appmgr::server::Store> store;
  ASSERT_FALSE(appmgr::server::Store::Open(server_->dataDir() + "/appmgr.db", {}, &store));
  appmgr::server::SubclientStore subclients(*store);
  std::vector<std::string> stores, directories;
  ASSERT_FALSE(subclients.Associations(1022, appmgr::server::AssociationKind::kStore, &stores));
  ASSERT_FALSE(subclients.Associations(1022, appmgr::server::AssociationKind::kDirectory, &directories));
  EXPECT_EQ(stores, (std::vector<std::string>{"primary", "archive"}));
  EXPECT_EQ(directories, (std::vector<std::string>{"OU=Logs,DC=lab"}));
}

}  // namespace
