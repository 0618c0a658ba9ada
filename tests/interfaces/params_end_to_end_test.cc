// Global parameters, application properties, client groups and the domain through the library
// against the real appmgrd on its demo data: every operation's answer and its server error
// path. Each case starts one server and runs many operations on it.
#include <gtest/gtest.h>

#include <memory>

#include "interfaces/ClientGroupInterfaceNet.h"
#include "interfaces/GlobalParamInterfaceNet.h"
#include "interfaces/OrbitInterfaceNet.h"
#include "server/store/StoreErrors.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

using appmgr::server::kStoreErrConflict;
using appmgr::server::kStoreErrInvalidArgument;
using appmgr::server::kStoreErrNotFound;

class ParamsEndToEnd : public SessionFixture {
 protected:
  void SetUp() override {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    server_ = std::make_unique<AppmgrdProcess>(o);
    Settings("[Controlhost]\nsHOSTNAME = " + server_->host() + "\nsCLIENTNAME = controlhost\n");
  }
  std::string Param(const std::string& name) {
    std::string value = "<unread>";
    EXPECT_EQ(params_.getProperty(name, value, err_, 0, nullptr), 0) << name << ": " << err_;
    return value;
  }
  std::unique_ptr<AppmgrdProcess> server_;
  GlobalParamInterfaceNet params_;
  ClientGroupInterfaceNet groups_;
  OrbitInterfaceNet orbit_;
  std::string err_;
};

TEST_F(ParamsEndToEnd, ParametersAndApplicationPropertiesRoundTripAndSurviveARestart) {
  EXPECT_EQ(Param("nAuditRetentionDays"), "90");
  EXPECT_EQ(Param("sTimeZone"), "UTC") << "a default the fresh installation holds";
  std::string value = "kept";
  EXPECT_EQ(params_.getProperty("sNothing", value, err_, 0, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "global parameter 'sNothing' is not set");
  EXPECT_EQ(value, "kept");

  ASSERT_EQ(params_.setProperty(ApplProperty("nMaxConcurrentJobs", 1, "25"), err_, false, nullptr),
            0)
      << err_;
  ASSERT_EQ(params_.setProperty(ApplProperty("sSite", 2, "Building 4"), err_, false, nullptr), 0)
      << err_;
  EXPECT_EQ(
      params_.setProperty(ApplProperty("nMaxConcurrentJobs", 1, "none"), err_, false, nullptr),
      kStoreErrInvalidArgument);
  EXPECT_EQ(
      err_,
      "global parameter 'nMaxConcurrentJobs' takes a whole number from 1 to 10000, not 'none'");
  EXPECT_EQ(Param("nMaxConcurrentJobs"), "25");

  ASSERT_EQ(params_.removeProperty(ApplProperty("nAuditRetentionDays", 0, ""), err_, nullptr), 0)
      << err_;
  EXPECT_EQ(Param("nAuditRetentionDays"), "365") << "back to its default";
  ASSERT_EQ(params_.removeProperty(std::string("sSupportContract"), err_, nullptr), 0) << err_;
  EXPECT_EQ(params_.removeProperty(std::string("sSupportContract"), err_, nullptr),
            kStoreErrNotFound);
  EXPECT_EQ(err_, "global parameter 'sSupportContract' is not set");
  EXPECT_EQ(params_.removeProperty(ApplProperty("", 0, ""), err_, nullptr),
            kStoreErrInvalidArgument);

  ASSERT_EQ(params_.getAppProperty(302, 1, value, err_, nullptr), 0) << err_;
  EXPECT_EQ(value, "4");
  ASSERT_EQ(params_.getAppProperty(302, 3, value, err_, nullptr), 0) << err_;
  EXPECT_EQ(value, "3") << "a built-in number's default";
  ASSERT_EQ(params_.setAppProperty(302, 3, "5", err_, nullptr), 0) << err_;
  EXPECT_EQ(params_.setAppProperty(999, 3, "5", err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "client application type 999 does not exist");
  EXPECT_EQ(params_.getAppProperty(302, 77, value, err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "client application type 302 has no application property 77");

  server_->Restart();
  EXPECT_EQ(Param("nMaxConcurrentJobs"), "25");
  EXPECT_EQ(Param("sSite"), "Building 4");
  EXPECT_EQ(Param("nAuditRetentionDays"), "365");
  ASSERT_EQ(params_.getAppProperty(302, 3, value, err_, nullptr), 0) << err_;
  EXPECT_EQ(value, "5");
}

TEST_F(ParamsEndToEnd, ClientGroupsAndTheDomain) {
  _AppClientGroupInfo info;
  info.text1 = "production SERVERS";
  ASSERT_EQ(groups_.lookup(info, err_, nullptr), 0) << err_;
  EXPECT_EQ(info.int1, 1u);
  EXPECT_EQ(info.text1, "Production servers");
  EXPECT_EQ(info.text2, "Agents backed up nightly");

  _AppClientGroupInfo fresh;
  fresh.text1 = "Databases";
  fresh.text2 = "SQL servers";
  fresh.int3 = 7;
  ASSERT_EQ(groups_.create(fresh, err_, nullptr), 0) << err_;
  EXPECT_EQ(fresh.int1, 3u);
  EXPECT_EQ(fresh.int3, 7u);
  _AppClientGroupInfo again = fresh;
  EXPECT_EQ(groups_.create(again, err_, nullptr), kStoreErrConflict);
  EXPECT_EQ(err_, "client group 'Databases' already exists (id 3, 'Databases')");
  _AppClientGroupInfo missing;
  missing.text1 = "Nobody";
  EXPECT_EQ(groups_.lookup(missing, err_, nullptr), kStoreErrNotFound);
  EXPECT_EQ(err_, "no client group is named 'Nobody'");
  EXPECT_EQ(missing.int1, 0u);
  EXPECT_EQ(groups_.update(fresh, err_, nullptr), 0xa0010);
  EXPECT_EQ(groups_.remove(3, err_, nullptr), 0xa0010);

  unsigned long id1 = 0, id2 = 0, id3 = 0, id4 = 0;
  std::string t1, t2, t3, t4, t5, t6;
  int number = 5;
  ASSERT_EQ(orbit_.lookup(id1, id2, id3, id4, t1, t2, t3, t4, t5, number, t6, err_, nullptr), 0)
      << err_;
  EXPECT_EQ(id1, 1u);
  EXPECT_EQ(id2, 2u);
  EXPECT_EQ(t1, "lab-domain");
  EXPECT_EQ(t4, "1.0");
  EXPECT_EQ(number, 5);

  t3 = "Changed description";
  ASSERT_EQ(orbit_.modify(id1, id2, id3, id4, t1, t2, t3, t4, t5, number, t6, err_, nullptr), 0)
      << err_;
  EXPECT_EQ(t3, "Changed description");
  unsigned long wrong = 9;
  EXPECT_EQ(orbit_.modify(wrong, id2, id3, id4, t1, t2, t3, t4, t5, number, t6, err_, nullptr),
            kStoreErrNotFound);
  EXPECT_EQ(err_, "domain 9 does not exist (this installation's domain is 1)");
  EXPECT_EQ(wrong, 9u);
  EXPECT_EQ(orbit_.create(id1, id2, id3, id4, t1, t2, t3, t4, t5, number, t6, err_, nullptr),
            kStoreErrConflict);
  EXPECT_EQ(
      err_,
      "this installation already has a domain (1, 'lab-domain'); modify or remove it instead");

  EXPECT_EQ(orbit_.remove(2, err_, nullptr), kStoreErrNotFound);
  ASSERT_EQ(orbit_.remove(1, err_, nullptr), 0) << err_;
  std::string name = "untouched";
  EXPECT_EQ(orbit_.lookup(id1, id2, id3, id4, name, t2, t3, t4, t5, number, t6, err_, nullptr),
            kStoreErrNotFound);
  EXPECT_EQ(err_, "this installation has no domain");
  EXPECT_EQ(name, "untouched");

  unsigned long newId = 0;
  std::string newName = "rebuilt";
  ASSERT_EQ(orbit_.create(newId, id2, id3, id4, newName, t2, t3, t4, t5, number, t6, err_, nullptr),
            0)
      << err_;
  EXPECT_EQ(newId, 1u) << "id 0 takes id 1";
  unsigned long any = 0;
  ASSERT_EQ(orbit_.lookup(any, id2, id3, id4, t1, t2, t3, t4, t5, number, t6, err_, nullptr), 0)
      << err_;
  EXPECT_EQ(t1, "rebuilt");
  EXPECT_EQ(t3, "Changed description");
}

}  // namespace
