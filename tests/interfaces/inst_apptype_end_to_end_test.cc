// Every instance and application-type operation through the library against the real appmgrd
// on its demo data: its answer, and its server error path. One server per case.
#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "interfaces/AppTypeInterfaceNet.h"
#include "interfaces/InstInterfaceNet.h"
#include "server/store/StoreErrors.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

using appmgr::server::kStoreErrConflict;
using appmgr::server::kStoreErrNotFound;

struct Props : PropCallBack {
  std::map<std::string, std::string> seen;
  void addProperty(const std::string& n, unsigned long, const std::string& v, long) override { seen[n] = v; }
};
using PropMap = std::map<std::string, std::string>;

struct Content : ContentCallBack {
  std::vector<std::string> seen;
  void addContent(unsigned long type, const std::string& text) override {
    seen.push_back(std::to_string(type) + ":" + text);
  }
  void setFlag(bool) override {}
};

class InstAppTypeEndToEnd : public SessionFixture {
 protected:
  void SetUp() override {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    server_ = std::make_unique<AppmgrdProcess>(o);
    Settings("[Controlhost]\nsHOSTNAME = " + server_->host() + "\nsCLIENTNAME = controlhost\n");
  }
  std::unique_ptr<AppmgrdProcess> server_;
  InstInterfaceNet inst_;
  AppTypeInterfaceNet types_;
  std::string err_;
};

TEST_F(InstAppTypeEndToEnd, EveryInstanceOperation) {
  const std::string missing = "instance 999 does not exist";
  auto expectMissing = [&](int status) {
    EXPECT_EQ(status, kStoreErrNotFound);
    EXPECT_EQ(err_, missing);
  };
  std::string name, text;
  long value = 0;
  unsigned long a2 = 0, a3 = 0, a4 = 0;
  ASSERT_EQ(inst_.lookup(13, name, value, a2, a3, a4, text, err_, nullptr), 0) << err_;
  EXPECT_EQ(name, "SALESDB");
  EXPECT_EQ(text, "listener port 4100");
  expectMissing(inst_.lookup(999, name, value, a2, a3, a4, text, err_, nullptr));

  long newValue = 3;
  ASSERT_EQ(inst_.update(13, "SALES", newValue, false, 0, 0, err_, nullptr), 0) << err_;
  ASSERT_EQ(inst_.lookup(13, name, value, a2, a3, a4, text, err_, nullptr), 0);
  EXPECT_EQ(name, "SALES");
  EXPECT_EQ(value, 3);
  EXPECT_EQ(inst_.update(13, "+ASM", newValue, false, 0, 0, err_, nullptr), kStoreErrConflict) << err_;
  expectMissing(inst_.update(999, "x", newValue, false, 0, 0, err_, nullptr));

  EXPECT_EQ(inst_.deleteAll(13, err_, nullptr), 0) << err_;
  EXPECT_EQ(inst_.undeleteAll(13, err_, nullptr), 0) << err_;
  expectMissing(inst_.deleteAll(999, err_, nullptr));
  expectMissing(inst_.undeleteAll(999, err_, nullptr));

  Props own;
  ASSERT_EQ(inst_.getProperties(13, 0, err_, &own, nullptr), 0) << err_;
  EXPECT_EQ(own.seen, (PropMap{{"nMaxStreams", "4"}}));
  ApplProperty streams("nMaxStreams", 1, "8"), owner("sOwner", 2, "dba");
  ASSERT_EQ(inst_.setProperties(13, {&streams, &owner}, false, err_, nullptr, nullptr), 0) << err_;
  ASSERT_EQ(inst_.removeProperties(13, std::list<std::string>{"sOwner"}, true, err_, nullptr, nullptr), 0);
  ASSERT_EQ(inst_.removeProperties(13, std::list<const ApplProperty*>{&owner}, false, err_, nullptr, nullptr), 0);
  ApplProperty listener("sListener", 2, "AG-LISTENER");
  ASSERT_EQ(inst_.setMSSQLAGProperties(13, {&listener}, true, err_, nullptr, nullptr), 0) << err_;
  Props after, group;
  ASSERT_EQ(inst_.getProperties(13, 0, err_, &after, nullptr), 0);
  ASSERT_EQ(inst_.getProperties(13, 2, err_, &group, nullptr), 0);
  EXPECT_EQ(after.seen, (PropMap{{"nMaxStreams", "8"}})) << "the group's set replaces only its own table";
  EXPECT_EQ(group.seen, (PropMap{{"sListener", "AG-LISTENER"}}));
  expectMissing(inst_.getProperties(999, 0, err_, &after, nullptr));
  expectMissing(inst_.setProperties(999, {&owner}, false, err_, nullptr, nullptr));
  expectMissing(inst_.removeProperties(999, std::list<std::string>{"x"}, false, err_, nullptr, nullptr));
  expectMissing(inst_.removeProperties(999, std::list<const ApplProperty*>{&owner}, false, err_, nullptr, nullptr));
  expectMissing(inst_.setMSSQLAGProperties(999, {&listener}, false, err_, nullptr, nullptr));

  Content before;
  ASSERT_EQ(inst_.initContent(13, 0, err_, &before, nullptr), 0) << err_;
  EXPECT_EQ(before.seen, (std::vector<std::string>{"2:SALESDB", "2:SALESDB_ARCHIVE"}));
  std::string added = "SALESDB_HIST", removed = "SALESDB_ARCHIVE";
  ASSERT_EQ(inst_.updateContent(13, 2, {&added}, {&removed}, false, false, false, err_, nullptr, nullptr), 0)
      << err_;
  Content changed;
  ASSERT_EQ(inst_.initContent(13, 0, err_, &changed, nullptr), 0);
  EXPECT_EQ(changed.seen, (std::vector<std::string>{"2:SALESDB", "2:SALESDB_HIST"}));
  expectMissing(inst_.initContent(999, 0, err_, &changed, nullptr));
  expectMissing(inst_.updateContent(999, 2, {&added}, {}, false, false, false, err_, nullptr, nullptr));
  std::string empty;
  EXPECT_EQ(inst_.updateContent(13, 2, {&empty}, {}, false, false, false, err_, nullptr, nullptr),
            appmgr::server::kStoreErrInvalidArgument);
}

TEST_F(InstAppTypeEndToEnd, EveryApplicationTypeOperation) {
  auto expectNoPair = [&](int status) {
    EXPECT_EQ(status, kStoreErrNotFound);
    EXPECT_EQ(err_, "client 4 has no application type 20");
  };
  std::string name;
  long value = 0;
  unsigned long o1 = 0, o2 = 0;
  ASSERT_EQ(types_.lookup(3, 20, name, value, o1, o2, err_, nullptr), 0) << err_;
  EXPECT_EQ(name, "SQL Database");
  EXPECT_EQ(value, 1);
  expectNoPair(types_.lookup(4, 20, name, value, o1, o2, err_, nullptr));

  long newValue = 42;
  ASSERT_EQ(types_.update(3, 20, newValue, false, 0, 0, err_, nullptr), 0) << err_;
  ASSERT_EQ(types_.lookup(3, 20, name, value, o1, o2, err_, nullptr), 0);
  EXPECT_EQ(value, 42);
  expectNoPair(types_.update(4, 20, newValue, false, 0, 0, err_, nullptr));

  Props props;
  ASSERT_EQ(types_.getProperties(3, 20, 0, err_, &props, nullptr), 0) << err_;
  EXPECT_EQ(props.seen, (PropMap{{"sLogBackupMode", "full"}, {"nLogIntervalMin", "15"}}));
  ApplProperty mode("sLogBackupMode", 2, "bulk"), extra("sExtra", 2, "x");
  ASSERT_EQ(types_.setProperties(3, 20, {&mode, &extra}, false, err_, nullptr, nullptr), 0) << err_;
  ASSERT_EQ(types_.removeProperties(3, 20, std::list<std::string>{"nLogIntervalMin"}, true, err_, nullptr, nullptr),
            0);
  ASSERT_EQ(types_.removeProperties(3, 20, std::list<const ApplProperty*>{&extra}, true, err_, nullptr, nullptr), 0);
  Props after;
  ASSERT_EQ(types_.getProperties(3, 20, 0, err_, &after, nullptr), 0);
  EXPECT_EQ(after.seen, (PropMap{{"sLogBackupMode", "bulk"}}));
  expectNoPair(types_.getProperties(4, 20, 0, err_, &after, nullptr));
  expectNoPair(types_.setProperties(4, 20, {&mode}, false, err_, nullptr, nullptr));
  expectNoPair(types_.removeProperties(4, 20, std::list<std::string>{"x"}, false, err_, nullptr, nullptr));
  expectNoPair(types_.removeProperties(4, 20, std::list<const ApplProperty*>{&mode}, false, err_, nullptr, nullptr));

  unsigned long v1 = 1, v2 = 2, v3 = 3, v4 = 4, v5 = 5;
  long sv = -6;
  std::string guid = "{vol}";
  ASSERT_EQ(types_.opDCvolProp(3, 20, 7, v1, guid, v2, v3, v4, sv, v5, err_, nullptr), 0) << err_;
  expectNoPair(types_.opDCvolProp(4, 20, 7, v1, guid, v2, v3, v4, sv, v5, err_, nullptr));

  // Create, then the two-step removal of a type with instances.
  ASSERT_EQ(types_.create(4, 20, 0, 0, err_, nullptr), 0) << err_;
  EXPECT_EQ(types_.create(4, 20, 0, 0, err_, nullptr), kStoreErrConflict);
  EXPECT_EQ(err_, "client 4 already has application type 20");
  EXPECT_EQ(types_.create(4, 99, 0, 0, err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "application type 99 does not exist");
  ASSERT_EQ(types_.remove(4, 20, err_, nullptr), 0) << err_;

  EXPECT_EQ(types_.remove(3, 20, err_, nullptr), kStoreErrConflict);
  EXPECT_EQ(err_.find("application type 20 cannot be removed from client 3"), 0u) << err_;
  ASSERT_EQ(types_.deleteAll(3, 20, err_, nullptr, 1), 0) << err_;
  ASSERT_EQ(types_.undeleteAll(3, 20, err_, nullptr), 0) << err_;
  EXPECT_EQ(types_.remove(3, 20, err_, nullptr), kStoreErrConflict) << "undeleted again";
  ASSERT_EQ(types_.deleteAll(3, 20, err_, nullptr, 0), 0) << err_;
  ASSERT_EQ(types_.remove(3, 20, err_, nullptr), 0) << err_;
  std::string instanceName, text;
  unsigned long a2, a3, a4;
  EXPECT_EQ(inst_.lookup(13, instanceName, value, a2, a3, a4, text, err_, nullptr), kStoreErrNotFound)
      << "the instance went with its type";
  expectNoPair(types_.remove(4, 20, err_, nullptr));
  expectNoPair(types_.deleteAll(4, 20, err_, nullptr, 0));
  expectNoPair(types_.undeleteAll(4, 20, err_, nullptr));
  EXPECT_EQ(types_.lookup(99, 20, name, value, o1, o2, err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "client 99 does not exist");
}

}  // namespace
