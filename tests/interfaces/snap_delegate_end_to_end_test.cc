// Every snapshot-record and mailbox-delegate operation through the library against the real
// appmgrd on its demo data: its answer, and its server error path.
#include <gtest/gtest.h>

#include <memory>

#include "interfaces/MailBoxDelegateInterfaceNet.h"
#include "interfaces/SnapInfoInterfaceNet.h"
#include "server/store/StoreErrors.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/AppmgrdProcess.h"

namespace {

using appmgr::server::kStoreErrConflict;
using appmgr::server::kStoreErrInvalidArgument;
using appmgr::server::kStoreErrNotFound;

class SnapDelegateEndToEnd : public SessionFixture {
 protected:
  void SetUp() override {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    server_ = std::make_unique<AppmgrdProcess>(o);
    Settings("[Controlhost]\nsHOSTNAME = " + server_->host() + "\nsCLIENTNAME = controlhost\n");
  }
  // The status, and the error string when it failed.
  std::string Failed(int status) { return std::to_string(status) + ": " + err_; }

  std::unique_ptr<AppmgrdProcess> server_;
  SnapInfoInterfaceNet snap_;
  MailBoxDelegateInterfaceNet delegates_;
  std::string err_;
};

TEST_F(SnapDelegateEndToEnd, EverySnapshotOperation) {
  _AppSnapInfo r;
  r.F2 = 501;
  ASSERT_EQ(snap_.lookup(r, err_, nullptr), 0) << err_;
  EXPECT_EQ(r.F4, "D:\\");
  EXPECT_EQ(r.F8, "snap-20240301-0100");
  EXPECT_EQ(r.F3, "") << "lookup does not carry F3";
  r.F2 = 999;
  EXPECT_EQ(Failed(snap_.lookup(r, err_, nullptr)), "1: snapshot record 999 does not exist");

  _AppSnapInfo fresh;
  fresh.F2 = 600;
  fresh.F3 = "not sent";
  fresh.F4 = "G:\\";
  fresh.F15 = 3;
  ASSERT_EQ(snap_.create(fresh, err_, nullptr), 0) << err_;
  EXPECT_EQ(Failed(snap_.create(fresh, err_, nullptr)), "2: snapshot record 600 exists already");
  fresh.F4 = "H:\\";
  ASSERT_EQ(snap_.update(fresh, err_, nullptr), 0) << err_;
  fresh.F2 = 999;
  EXPECT_EQ(Failed(snap_.update(fresh, err_, nullptr)), "1: snapshot record 999 does not exist");
  fresh.F2 = 600;
  ASSERT_EQ(snap_.setSnapInfo(fresh, err_, nullptr), 0) << err_;
  fresh.F2 = 0;
  EXPECT_EQ(Failed(snap_.setSnapInfo(fresh, err_, nullptr)),
            std::to_string(kStoreErrInvalidArgument) + ": a snapshot record needs a non-zero id (F2)");

  std::list<_AppSnapInfo> all;
  ASSERT_EQ(snap_.getSnapInfoList(all, err_, nullptr), 0) << err_;
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all.back().F2, 600u);
  EXPECT_EQ(all.back().F3, "not sent") << "written by set, read by the list";
  EXPECT_EQ(all.back().F4, "H:\\");

  _AppSnapInfo a = all.front(), b = all.back();
  a.F13 = "daily";
  b.F2 = 0;
  EXPECT_EQ(Failed(snap_.setSnapInfoList({a, b}, err_, nullptr)),
            "3: entry 2 of 2: a snapshot record needs a non-zero id (F2)");
  b.F2 = 601;
  ASSERT_EQ(snap_.setSnapInfoList({a, b}, err_, nullptr), 0) << err_;
  ASSERT_EQ(snap_.remove(600, err_, nullptr), 0) << err_;
  EXPECT_EQ(Failed(snap_.remove(600, err_, nullptr)), "1: snapshot record 600 does not exist");
  all.clear();
  ASSERT_EQ(snap_.getSnapInfoList(all, err_, nullptr), 0);
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all.front().F13, "daily");
  EXPECT_EQ(all.back().F2, 601u);

  // The list read's failure path is the transport's: no server.
  server_->Stop();
  all.clear();
  EXPECT_NE(snap_.getSnapInfoList(all, err_, nullptr), 0);
  EXPECT_FALSE(err_.empty());
  EXPECT_TRUE(all.empty());
}

TEST_F(SnapDelegateEndToEnd, EveryDelegateOperation) {
  _MailBoxDelegateInfo d;
  d.G7 = 2;
  ASSERT_EQ(delegates_.lookup(d, err_, nullptr), 0) << err_;
  EXPECT_EQ(d.G4, "SendAs");
  d.G7 = 99;
  EXPECT_EQ(Failed(delegates_.lookup(d, err_, nullptr)), "1: mailbox delegate 99 does not exist");
  EXPECT_EQ(d.G4, "SendAs") << "kept on failure";

  _MailBoxDelegateInfo mine{7, "me@lab", "you@lab", "FullAccess", "Inbox", "", 20};
  ASSERT_EQ(delegates_.create(mine, err_, nullptr), 0) << err_;
  EXPECT_EQ(Failed(delegates_.create(mine, err_, nullptr)), "2: mailbox delegate 20 exists already");
  mine.G4 = "ReadOnly";
  ASSERT_EQ(delegates_.update(mine, err_, nullptr), 0) << err_;
  mine.G7 = 98;
  EXPECT_EQ(Failed(delegates_.update(mine, err_, nullptr)), "1: mailbox delegate 98 does not exist");
  mine.G7 = 21;
  ASSERT_EQ(delegates_.setMailBoxDelegate(mine, err_, nullptr), 0) << err_;
  mine.G7 = 0;
  EXPECT_EQ(Failed(delegates_.setMailBoxDelegate(mine, err_, nullptr)),
            std::to_string(kStoreErrInvalidArgument) + ": a mailbox delegate needs a non-zero id (G7)");

  std::list<_MailBoxDelegateInfo> sevens;
  ASSERT_EQ(delegates_.getMailBoxDelegateList(sevens, 7, err_, nullptr), 0) << err_;
  ASSERT_EQ(sevens.size(), 2u);
  EXPECT_EQ(sevens.front().G4, "ReadOnly");
  std::list<_MailBoxDelegateInfo> all;
  ASSERT_EQ(delegates_.getMailBoxDelegateList(all, err_, nullptr), 0) << err_;
  EXPECT_EQ(all.size(), 5u);

  _MailBoxDelegateInfo x{8, "x", "", "", "", "", 30}, y{8, "y", "", "", "", "", 0};
  EXPECT_EQ(Failed(delegates_.setMailBoxDelegateList({x, y}, err_, nullptr)),
            "3: entry 2 of 2: a mailbox delegate needs a non-zero id (G7)");
  y.G7 = 31;
  ASSERT_EQ(delegates_.setMailBoxDelegateList({x, y}, err_, nullptr), 0) << err_;
  EXPECT_EQ(Failed(delegates_.removeMailBoxDelegateList({x, _MailBoxDelegateInfo{0, "", "", "", "", "", 77}},
                                                       err_, nullptr)),
            "1: mailbox delegate 77 does not exist; none was removed");
  ASSERT_EQ(delegates_.removeMailBoxDelegateList({x, y}, err_, nullptr), 0) << err_;
  ASSERT_EQ(delegates_.remove(20, err_, nullptr), 0) << err_;
  EXPECT_EQ(Failed(delegates_.remove(20, err_, nullptr)), "1: mailbox delegate 20 does not exist");
  std::list<_MailBoxDelegateInfo> left;
  ASSERT_EQ(delegates_.getMailBoxDelegateList(left, 0, err_, nullptr), 0);
  EXPECT_EQ(left.size(), 4u);

  server_->Stop();
  EXPECT_NE(delegates_.getMailBoxDelegateList(left, err_, nullptr), 0);
  EXPECT_EQ(left.size(), 4u);
}

}  // namespace
