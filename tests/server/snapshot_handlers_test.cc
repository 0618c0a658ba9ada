// The snapshot-record and mailbox-delegate handlers on a real server core and store holding the
// demo fixture: what each request reads of its record, what the answers carry, and the refusals
// a client can cause.
#include "server/handlers/SnapshotHandlers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "protocol/Messages.h"
#include "server/store/SnapshotStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/HandlerClient.h"
#include "tests/server/ServedStore.h"

namespace appmgr::server {
namespace {

using namespace appmgr::msg;

// Every text slot of a block set, F7 and F14 too.
SnapInfo Block(uint64_t id, const char* tag) {
  SnapInfo b;
  b.f1 = 1;
  b.f2 = id;
  b.f3 = b.f4 = b.f5 = b.f6 = b.f8 = b.f9 = b.f13 = b.f14 = tag;
  b.f7 = 77;
  b.f10 = 10;
  return b;
}

MailBoxDelegate DelegateBlock(uint64_t id, uint64_t selector, const char* tag) {
  MailBoxDelegate d;
  d.g1 = selector;
  d.g2 = d.g3 = d.g4 = d.g5 = d.g6 = tag;
  d.g7 = id;
  return d;
}

class SnapshotHandlersTest : public testing::Test {
 protected:
  SnapshotRecord Stored(uint64_t id) {
    SnapshotRecord r;
    EXPECT_OK(SnapshotStore(served_.store()).Lookup(id, &r));
    return r;
  }
  ServedStore served_;
  HandlerClient client_{served_.connect()};
};

TEST_F(SnapshotHandlersTest, LookupAnswersEverySlotAndWritesCarryWhatTheyCarry) {
  SanpInfoResp found = client_.Call(kSnapLookup, SanpInfoReq{.hdr = {}, .info = SnapInfo{.f2 = 501}});
  ASSERT_EQ(found.hdr.errorCode, 0) << found.hdr.errorText;
  EXPECT_STREQ(found.info.f3, "SALESDB");
  EXPECT_STREQ(found.info.f4, "D:\\");
  EXPECT_STREQ(found.info.f14, "created by the demo");
  EXPECT_EQ(found.info.f7, 1u);
  EXPECT_EQ(found.info.f15, 7u);

  // Create and update do not carry F3 (null here) nor F14 (null too).
  SnapInfo created = Block(600, "new");
  created.f3 = created.f14 = nullptr;
  EXPECT_EQ(client_.Call(kSnapCreate, SanpInfoReq{.hdr = {}, .info = created}).hdr.errorCode, 0);
  EXPECT_EQ(Stored(600).f3, "");
  EXPECT_EQ(Stored(600).f7, 77u) << "a create stores F7 as sent";
  SnapInfo updated = Block(600, "upd");
  updated.f3 = nullptr;
  EXPECT_EQ(client_.Call(kSnapUpdate, SanpInfoReq{.hdr = {}, .info = updated}).hdr.errorCode, 0);
  EXPECT_EQ(Stored(600).f4, "upd");
  EXPECT_EQ(Stored(600).f14, "") << "F14 is never changed after the create";
  EXPECT_EQ(client_.Call(kSnapSet, SetSnapInfoReq{.hdr = {}, .info = Block(600, "set")}).hdr.errorCode, 0);
  EXPECT_EQ(Stored(600).f3, "set");

  EXPECT_EQ(client_.Call(kSnapRemove, SanpInfoReq{.hdr = {}, .info = SnapInfo{.f2 = 600}}).hdr.errorCode, 0);
  Outcome gone = OutcomeOf(client_.Call(kSnapLookup, SanpInfoReq{.hdr = {}, .info = SnapInfo{.f2 = 600}}));
  EXPECT_EQ(gone.code, kStoreErrNotFound);
  EXPECT_EQ(gone.text, "snapshot record 600 does not exist");
  EXPECT_TRUE(gone.restZero);
}

TEST_F(SnapshotHandlersTest, NullTextsAndBadListEntriesAreRefusedAndChangeNothing) {
  SnapInfo noF4 = Block(700, "x");
  noF4.f4 = nullptr;
  Outcome o = OutcomeOf(client_.Call(kSnapCreate, SanpInfoReq{.hdr = {}, .info = noF4}));
  EXPECT_EQ(o.code, kStoreErrInvalidArgument);
  EXPECT_EQ(o.text, "the request carries no F4");
  SnapInfo noF3 = Block(700, "x");
  noF3.f3 = nullptr;
  o = OutcomeOf(client_.Call(kSnapSet, SetSnapInfoReq{.hdr = {}, .info = noF3}));
  EXPECT_EQ(o.text, "the request carries no F3") << "set carries F3";

  SnapInfo list[2] = {Block(701, "a"), Block(702, "b")};
  list[1].f8 = nullptr;
  o = OutcomeOf(client_.Call(kSnapSetList, SetSnapInfoListReq{.hdr = {}, .count = 2, .infos = list}));
  EXPECT_EQ(o.code, kStoreErrInvalidArgument);
  EXPECT_EQ(o.text, "entry 2 of 2: the request carries no F8");
  GetSnapInfoListResp all = client_.Call(kSnapGetList, GetSnapInfoListReq{});
  ASSERT_EQ(all.count, 2u) << "only the demo's records";
  EXPECT_EQ(all.infos[0].f2, 501u);
  EXPECT_EQ(all.infos[1].f2, 502u);
}

TEST_F(SnapshotHandlersTest, DelegateListsAreSelectedAndRemovedByIdOnly) {
  GetMailBoxDelegateListResp four =
      client_.Call(kDelegateGetList, GetMailBoxDelegateListReq{.hdr = {}, .selector = 4});
  ASSERT_EQ(four.count, 2u);
  EXPECT_STREQ(four.infos[0].g3, "bob@lab.example.net");
  EXPECT_EQ(client_.Call(kDelegateGetList, GetMailBoxDelegateListReq{}).count, 3u);

  MailBoxDelegate set[2] = {DelegateBlock(10, 9, "p"), DelegateBlock(11, 9, "q")};
  EXPECT_EQ(client_.Call(kDelegateSetList, SetMailBoxDelegateListReq{.hdr = {}, .count = 2, .infos = set})
                .hdr.errorCode,
            0);
  MailBoxDelegateResp one =
      client_.Call(kDelegateLookup, MailBoxDelegateReq{.hdr = {}, .info = MailBoxDelegate{.g7 = 11}});
  EXPECT_EQ(one.info.g1, 9u);
  EXPECT_STREQ(one.info.g6, "q");

  // A removal names delegates by id; their texts may be null.
  MailBoxDelegate ids[2] = {MailBoxDelegate{.g7 = 10}, MailBoxDelegate{.g7 = 12}};
  Outcome o = OutcomeOf(
      client_.Call(kDelegateRemoveList, RemoveMailBoxDelegateListReq{.hdr = {}, .count = 2, .infos = ids}));
  EXPECT_EQ(o.code, kStoreErrNotFound);
  EXPECT_EQ(o.text, "mailbox delegate 12 does not exist; none was removed");
  ids[1].g7 = 11;
  EXPECT_EQ(client_.Call(kDelegateRemoveList, RemoveMailBoxDelegateListReq{.hdr = {}, .count = 2, .infos = ids})
                .hdr.errorCode,
            0);
  EXPECT_EQ(client_.Call(kDelegateGetList, GetMailBoxDelegateListReq{.hdr = {}, .selector = 9}).count, 0u);

  MailBoxDelegate noText = DelegateBlock(13, 1, "x");
  noText.g5 = nullptr;
  o = OutcomeOf(client_.Call(kDelegateCreate, MailBoxDelegateReq{.hdr = {}, .info = noText}));
  EXPECT_EQ(o.text, "the request carries no G5");
}

}  // namespace
}  // namespace appmgr::server
