// SnapshotStore and DelegateStore: the rules beyond plain rows — which fields a write keeps,
// creates against updates, and list writes and removals that are all or nothing.
#include "server/store/SnapshotStore.h"

#include <gtest/gtest.h>

#include <vector>

#include "server/store/StoreErrors.h"
#include "tests/server/TempStore.h"

namespace appmgr::server {
namespace {

SnapshotRecord Snapshot(uint64_t id, const std::string& tag) {
  SnapshotRecord r;
  r.f1 = id * 10;
  r.f2 = id;
  r.f3 = tag + "-f3";
  r.f4 = tag + "-f4";
  r.f5 = tag + "-f5";
  r.f6 = tag + "-f6";
  r.f7 = id * 7;
  r.f8 = tag + "-f8";
  r.f9 = tag + "-f9";
  r.f10 = 10;
  r.f11 = 11;
  r.f12 = 12;
  r.f13 = tag + "-f13";
  r.f14 = tag + "-f14";
  r.f15 = 15;
  return r;
}

DelegateRecord Delegate(uint64_t id, uint64_t selector, const std::string& tag) {
  return DelegateRecord{selector, tag + "2", tag + "3", tag + "4", tag + "5", tag + "6", id};
}

class SnapshotStoreTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_OK(t_.Open()); }
  SnapshotStore snaps() { return SnapshotStore(t_.store()); }
  DelegateStore delegates() { return DelegateStore(t_.store()); }
  TempStore t_;
};

TEST_F(SnapshotStoreTest, WritesKeepF7AndF14AndOnlySetAndListsWriteF3) {
  ASSERT_OK(snaps().Create(Snapshot(5, "a")));
  SnapshotRecord got;
  ASSERT_OK(snaps().Lookup(5, &got));
  EXPECT_EQ(got, Snapshot(5, "a"));

  SnapshotRecord changed = Snapshot(5, "b");
  changed.f7 = 999;
  changed.f14 = "never";
  ASSERT_OK(snaps().Update(changed, /*withF3=*/false));
  ASSERT_OK(snaps().Lookup(5, &got));
  EXPECT_EQ(got.f4, "b-f4");
  EXPECT_EQ(got.f3, "a-f3") << "update does not carry F3";
  EXPECT_EQ(got.f7, 35u);
  EXPECT_EQ(got.f14, "a-f14");

  ASSERT_OK(snaps().Set(changed));
  ASSERT_OK(snaps().Lookup(5, &got));
  EXPECT_EQ(got.f3, "b-f3");
  EXPECT_EQ(got.f7, 35u) << "a set of an existing record keeps F7";
  EXPECT_EQ(got.f14, "a-f14");

  ASSERT_OK(snaps().Set(Snapshot(6, "c")));  // set creates what does not exist
  std::vector<SnapshotRecord> all;
  ASSERT_OK(snaps().List(&all));
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[1], Snapshot(6, "c"));
}

TEST_F(SnapshotStoreTest, MissingDuplicateAndZeroIdsAreRefusedWithTheirNames) {
  ASSERT_OK(snaps().Create(Snapshot(5, "a")));
  struct Case {
    const char* what;
    CLmError error;
    int code;
    const char* text;
  } cases[] = {
      {"lookup", [&] { SnapshotRecord r; return snaps().Lookup(42, &r); }(), kStoreErrNotFound,
       "snapshot record 42 does not exist"},
      {"update", snaps().Update(Snapshot(42, "x"), true), kStoreErrNotFound,
       "snapshot record 42 does not exist"},
      {"remove", snaps().Remove(42), kStoreErrNotFound, "snapshot record 42 does not exist"},
      {"create twice", snaps().Create(Snapshot(5, "b")), kStoreErrConflict,
       "snapshot record 5 exists already"},
      {"id 0", snaps().Create(Snapshot(0, "z")), kStoreErrInvalidArgument,
       "a snapshot record needs a non-zero id (F2)"},
      {"delegate lookup", [&] { DelegateRecord r; return delegates().Lookup(9, &r); }(),
       kStoreErrNotFound, "mailbox delegate 9 does not exist"},
      {"delegate update", delegates().Update(Delegate(9, 1, "x")), kStoreErrNotFound,
       "mailbox delegate 9 does not exist"},
      {"delegate id 0", delegates().Set(Delegate(0, 1, "x")), kStoreErrInvalidArgument,
       "a mailbox delegate needs a non-zero id (G7)"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.error.GetErrorCode(), c.code) << c.what;
    EXPECT_EQ(c.error.Text(), c.text) << c.what;
  }
  SnapshotRecord got;
  ASSERT_OK(snaps().Lookup(5, &got));
  EXPECT_EQ(got.f4, "a-f4") << "the refused create changed nothing";
}

TEST_F(SnapshotStoreTest, AListWriteIsAllOrNothing) {
  ASSERT_OK(snaps().Create(Snapshot(1, "old")));
  CLmError e = snaps().SetList({Snapshot(1, "new"), Snapshot(2, "new"), Snapshot(0, "bad")});
  EXPECT_EQ(e.GetErrorCode(), kStoreErrInvalidArgument);
  EXPECT_EQ(e.Text(), "entry 3 of 3: a snapshot record needs a non-zero id (F2)");
  std::vector<SnapshotRecord> all;
  ASSERT_OK(snaps().List(&all));
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].f4, "old-f4");

  ASSERT_OK(snaps().SetList({Snapshot(2, "first"), Snapshot(1, "new"), Snapshot(2, "later")}));
  ASSERT_OK(snaps().List(&all));
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].f4, "new-f4");
  EXPECT_EQ(all[1].f4, "later-f4") << "a repeated id takes its later entry";
}

TEST_F(SnapshotStoreTest, DelegateListsAreSelectedByG1AndRemovedAllOrNothing) {
  ASSERT_OK(delegates().SetList({Delegate(3, 1, "c"), Delegate(1, 2, "a"), Delegate(2, 1, "b")}));
  std::vector<DelegateRecord> got;
  ASSERT_OK(delegates().List(1, &got));
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(got[0], Delegate(2, 1, "b"));
  EXPECT_EQ(got[1], Delegate(3, 1, "c"));
  ASSERT_OK(delegates().List(0, &got));
  EXPECT_EQ(got.size(), 3u) << "selector 0 lists every delegate";
  ASSERT_OK(delegates().List(7, &got));
  EXPECT_TRUE(got.empty());

  CLmError e = delegates().RemoveList({1, 8, 2, 9});
  EXPECT_EQ(e.GetErrorCode(), kStoreErrNotFound);
  EXPECT_EQ(e.Text(), "mailbox delegates 8, 9 do not exist; none was removed");
  ASSERT_OK(delegates().List(0, &got));
  EXPECT_EQ(got.size(), 3u);

  ASSERT_OK(delegates().RemoveList({1, 2, 1}));
  ASSERT_OK(delegates().List(0, &got));
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].g7, 3u);
  EXPECT_OK(delegates().Remove(3));
  EXPECT_EQ(delegates().Remove(3).GetErrorCode(), kStoreErrNotFound);
}

}  // namespace
}  // namespace appmgr::server
