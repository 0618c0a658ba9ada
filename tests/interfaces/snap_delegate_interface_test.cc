// SnapInfoInterfaceNet and MailBoxDelegateInterfaceNet against the scriptable server: which slots
// each operation sends and reads back, what lists append, and what a failure leaves alone.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "interfaces/MailBoxDelegateInterfaceNet.h"
#include "interfaces/SnapInfoInterfaceNet.h"
#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

// A slot as the test reads it: a number, "null", or the text.
std::string Slot(uint64_t v) { return std::to_string(v); }
std::string Slot(const char* t) { return t ? std::string("'") + t + "'" : "null"; }

// The fifteen slots of a block, in slot order.
std::vector<std::string> Slots(const SnapInfo& b) {
  return {Slot(b.f1), Slot(b.f2),  Slot(b.f3),  Slot(b.f5),  Slot(b.f6),
          Slot(b.f4), Slot(b.f7),  Slot(b.f8),  Slot(b.f9),  Slot(b.f10),
          Slot(b.f11), Slot(b.f12), Slot(b.f13), Slot(b.f14), Slot(b.f15)};
}
std::vector<std::string> Slots(const MailBoxDelegate& d) {
  return {Slot(d.g1), Slot(d.g2), Slot(d.g3), Slot(d.g4), Slot(d.g5), Slot(d.g6), Slot(d.g7)};
}

_AppSnapInfo Record(unsigned long id, const std::string& tag) {
  _AppSnapInfo r;
  r.F1 = 1;
  r.F2 = id;
  r.F3 = tag + "3";
  r.F4 = tag + "4";
  r.F5 = tag + "5";
  r.F6 = tag + "6";
  r.F7 = 7;
  r.F8 = tag + "8";
  r.F9 = tag + "9";
  r.F10 = 10;
  r.F11 = 11;
  r.F12 = 12;
  r.F13 = tag + "13";
  r.F14 = tag + "14";
  r.F15 = 15;
  return r;
}

// A block as a server fills it: every slot set.
void Fill(SnapInfo& b, uint64_t id, const std::string& tag, Exchange& x) {
  b = SnapInfo{100, id, x.Text(tag + "-f3"), x.Text(tag + "-f5"), x.Text(tag + "-f6"),
               x.Text(tag + "-f4"), 700, x.Text(tag + "-f8"), x.Text(tag + "-f9"), 1000, 1100,
               1200, x.Text(tag + "-f13"), x.Text(tag + "-f14"), 1500};
}

class SnapDelegateTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  template <class Req, class Resp>
  void Fail(const appmgr::wire::Op<Req, Resp>& op, int32_t code, const char* text) {
    server_.On(op, [code, text](const Req&, Resp& resp, Exchange&) {
      resp.hdr.errorCode = code;
      resp.hdr.errorText = text;
    });
  }
  // Records the slots of each single-block request of `op`.
  template <class Req, class Resp>
  void Capture(const appmgr::wire::Op<Req, Resp>& op) {
    server_.On(op, [this](const Req& req, Resp&, Exchange&) { seen_.push_back(Slots(req.info)); });
  }
  ScriptServer server_;
  SnapInfoInterfaceNet snap_;
  MailBoxDelegateInterfaceNet delegates_;
  std::string err_;
  std::vector<std::vector<std::string>> seen_;
};

TEST_F(SnapDelegateTest, EachSnapshotWriteSendsItsSlots) {
  Capture(msg::kSnapCreate);
  Capture(msg::kSnapUpdate);
  Capture(msg::kSnapRemove);
  Capture(msg::kSnapSet);
  _AppSnapInfo r = Record(42, "t");
  ASSERT_EQ(snap_.create(r, err_, nullptr), 0) << err_;
  ASSERT_EQ(snap_.update(r, err_, nullptr), 0) << err_;
  ASSERT_EQ(snap_.remove(42, err_, nullptr), 0) << err_;
  ASSERT_EQ(snap_.setSnapInfo(r, err_, nullptr), 0) << err_;
  // Slots 3, 4, 5 carry F5, F6, F4; F7 and F14 never travel; only set carries F3.
  const std::vector<std::string> withoutF3 = {"1",    "42",   "null", "'t5'", "'t6'",
                                              "'t4'", "0",    "'t8'", "'t9'", "10",
                                              "11",   "12",   "'t13'", "null", "15"};
  std::vector<std::string> withF3 = withoutF3;
  withF3[2] = "'t3'";
  std::vector<std::string> idOnly(15, "0");
  idOnly[1] = "42";
  for (int slot : {2, 3, 4, 5, 7, 8, 12, 13}) idOnly[slot] = "null";
  ASSERT_EQ(seen_.size(), 4u);
  EXPECT_EQ(seen_[0], withoutF3) << "create";
  EXPECT_EQ(seen_[1], withoutF3) << "update";
  EXPECT_EQ(seen_[2], idOnly) << "remove sends the id alone";
  EXPECT_EQ(seen_[3], withF3) << "set";
}

TEST_F(SnapDelegateTest, SnapshotLookupReadsBackAllButF3F7AndF14) {
  server_.On(msg::kSnapLookup, [](const SanpInfoReq& req, SanpInfoResp& resp, Exchange& x) {
    Fill(resp.info, req.info.f2, "srv", x);
    resp.info.f13 = nullptr;  // a null text reads as empty
  });
  _AppSnapInfo r = Record(5, "mine");
  ASSERT_EQ(snap_.lookup(r, err_, nullptr), 0) << err_;
  EXPECT_EQ(r.F1, 100u);
  EXPECT_EQ(r.F2, 5u);
  EXPECT_EQ(r.F3, "mine3") << "F3 is not read back";
  EXPECT_EQ(r.F4, "srv-f4");
  EXPECT_EQ(r.F5, "srv-f5");
  EXPECT_EQ(r.F6, "srv-f6");
  EXPECT_EQ(r.F7, 7u);
  EXPECT_EQ(r.F13, "");
  EXPECT_EQ(r.F14, "mine14");
  EXPECT_EQ(r.F15, 1500u);

  Fail(msg::kSnapLookup, 1, "snapshot record 5 does not exist");
  _AppSnapInfo kept = Record(5, "kept");
  EXPECT_EQ(snap_.lookup(kept, err_, nullptr), 1);
  EXPECT_EQ(err_, "snapshot record 5 does not exist");
  EXPECT_EQ(kept.F4, "kept4");
  EXPECT_EQ(kept.F1, 1u);
}

TEST_F(SnapDelegateTest, SnapshotListsAppendAndCarryF3) {
  server_.On(msg::kSnapGetList, [](const GetSnapInfoListReq&, GetSnapInfoListResp& resp, Exchange& x) {
    resp.count = 2;
    resp.infos = x.Array<SnapInfo>(2);
    Fill(resp.infos[0], 8, "a", x);
    Fill(resp.infos[1], 9, "b", x);
  });
  std::list<_AppSnapInfo> list{Record(1, "x"), Record(2, "y")};
  ASSERT_EQ(snap_.getSnapInfoList(list, err_, nullptr), 0) << err_;
  ASSERT_EQ(list.size(), 4u);
  auto it = list.begin();
  EXPECT_EQ(it->F2, 1u);
  EXPECT_EQ((++it)->F2, 2u);
  const _AppSnapInfo& third = *++it;
  EXPECT_EQ(third.F2, 8u);
  EXPECT_EQ(third.F3, "a-f3");
  EXPECT_EQ(third.F4, "a-f4");
  EXPECT_EQ(third.F7, 0u) << "F7 and F14 keep the defaults";
  EXPECT_EQ(third.F14, "");
  EXPECT_EQ((++it)->F9, "b-f9");

  std::vector<std::string> sent;
  server_.On(msg::kSnapSetList, [&](const SetSnapInfoListReq& req, GenericResp&, Exchange&) {
    sent.push_back("count=" + std::to_string(req.count) + (req.infos ? "" : " null"));
    for (uint32_t i = 0; i < req.count; ++i) {
      std::vector<std::string> s = Slots(req.infos[i]);
      sent.push_back(s[1] + " " + s[2] + " " + s[5] + " " + s[6] + " " + s[13]);
    }
  });
  ASSERT_EQ(snap_.setSnapInfoList({Record(3, "p"), Record(4, "q")}, err_, nullptr), 0);
  ASSERT_EQ(snap_.setSnapInfoList({}, err_, nullptr), 0);
  EXPECT_EQ(sent, (std::vector<std::string>{"count=2", "3 'p3' 'p4' 0 null", "4 'q3' 'q4' 0 null",
                                            "count=0 null"}));

  Fail(msg::kSnapGetList, 4, "database is locked");
  EXPECT_EQ(snap_.getSnapInfoList(list, err_, nullptr), 4);
  EXPECT_EQ(err_, "database is locked");
  EXPECT_EQ(list.size(), 4u) << "nothing appended on failure";
}

TEST_F(SnapDelegateTest, DelegateRemoveSendsTheIdWithEmptyTexts) {
  Capture(msg::kDelegateRemove);
  Capture(msg::kDelegateCreate);
  Capture(msg::kDelegateUpdate);
  Capture(msg::kDelegateSet);
  ASSERT_EQ(delegates_.remove(9, err_, nullptr), 0) << err_;
  _MailBoxDelegateInfo d{5, "a", "b", "c", "d", "e", 6};
  ASSERT_EQ(delegates_.create(d, err_, nullptr), 0);
  ASSERT_EQ(delegates_.update(d, err_, nullptr), 0);
  ASSERT_EQ(delegates_.setMailBoxDelegate(d, err_, nullptr), 0);
  const std::vector<std::string> all = {"5", "'a'", "'b'", "'c'", "'d'", "'e'", "6"};
  EXPECT_EQ(seen_, (std::vector<std::vector<std::string>>{
                       {"0", "''", "''", "''", "''", "''", "9"}, all, all, all}));
}

TEST_F(SnapDelegateTest, BothDelegateListReadsSendTheSameRequestAndAppend) {
  std::vector<uint64_t> selectors;
  server_.On(msg::kDelegateGetList, [&](const GetMailBoxDelegateListReq& req,
                                        GetMailBoxDelegateListResp& resp, Exchange& x) {
    selectors.push_back(req.selector);
    resp.count = 1;
    resp.infos = x.Array<MailBoxDelegate>(1);
    resp.infos[0] = {req.selector + 1, x.Text("g2"), nullptr, x.Text("g4"), x.Text("g5"),
                     x.Text("g6"), 70};
  });
  std::list<_MailBoxDelegateInfo> list{_MailBoxDelegateInfo{}};
  ASSERT_EQ(delegates_.getMailBoxDelegateList(list, err_, nullptr), 0) << err_;
  ASSERT_EQ(delegates_.getMailBoxDelegateList(list, 0, err_, nullptr), 0) << err_;
  ASSERT_EQ(delegates_.getMailBoxDelegateList(list, 4, err_, nullptr), 0) << err_;
  EXPECT_EQ(selectors, (std::vector<uint64_t>{0, 0, 4}));
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(list.back().G1, 5u);
  EXPECT_EQ(list.back().G2, "g2");
  EXPECT_EQ(list.back().G3, "");
  EXPECT_EQ(list.back().G7, 70u);

  std::vector<std::string> sent;
  auto record = [&](uint32_t count, const MailBoxDelegate* infos) {
    sent.push_back("count=" + std::to_string(count) + (infos ? "" : " null"));
    for (uint32_t i = 0; i < count; ++i) sent.push_back(Slots(infos[i])[6] + Slots(infos[i])[1]);
  };
  server_.On(msg::kDelegateSetList, [&](const SetMailBoxDelegateListReq& req, GenericResp&, Exchange&) {
    record(req.count, req.infos);
  });
  server_.On(msg::kDelegateRemoveList,
             [&](const RemoveMailBoxDelegateListReq& req, GenericResp&, Exchange&) {
               record(req.count, req.infos);
             });
  std::list<_MailBoxDelegateInfo> two{{0, "x", "", "", "", "", 1}, {0, "y", "", "", "", "", 2}};
  ASSERT_EQ(delegates_.setMailBoxDelegateList(two, err_, nullptr), 0);
  ASSERT_EQ(delegates_.removeMailBoxDelegateList(two, err_, nullptr), 0);
  ASSERT_EQ(delegates_.removeMailBoxDelegateList({}, err_, nullptr), 0);
  EXPECT_EQ(sent, (std::vector<std::string>{"count=2", "1'x'", "2'y'", "count=2", "1'x'", "2'y'",
                                            "count=0 null"}));
}

TEST_F(SnapDelegateTest, ADelegateLookupThatFailsLeavesEverySlot) {
  server_.On(msg::kDelegateLookup, [](const MailBoxDelegateReq& req, MailBoxDelegateResp& resp, Exchange& x) {
    resp.info = {11, x.Text("n2"), x.Text("n3"), x.Text("n4"), x.Text("n5"), nullptr, req.info.g7};
  });
  _MailBoxDelegateInfo d{1, "a", "b", "c", "d", "e", 3};
  ASSERT_EQ(delegates_.lookup(d, err_, nullptr), 0);
  EXPECT_EQ(d.G1, 11u);
  EXPECT_EQ(d.G5, "n5");
  EXPECT_EQ(d.G6, "");
  EXPECT_EQ(d.G7, 3u);

  Fail(msg::kDelegateLookup, 1, "mailbox delegate 3 does not exist");
  _MailBoxDelegateInfo kept{1, "a", "b", "c", "d", "e", 3};
  EXPECT_EQ(delegates_.lookup(kept, err_, nullptr), 1);
  EXPECT_EQ(err_, "mailbox delegate 3 does not exist");
  const std::vector<std::string> before = {"1", "a", "b", "c", "d", "e", "3"};
  EXPECT_EQ((std::vector<std::string>{std::to_string(kept.G1), kept.G2, kept.G3, kept.G4, kept.G5,
                                      kept.G6, std::to_string(kept.G7)}),
            before);

  // A transport failure: the receive's status and text, nothing sent twice.
  server_.DropBeforeAnswer(msg::kDelegateRemove.requestId);
  server_.Answer(msg::kDelegateRemove);
  EXPECT_EQ(delegates_.remove(3, err_, nullptr), kKpErrDisconnected);
  EXPECT_EQ(err_.rfind("[ClientSessionWrapper::receive] Error receiving message.", 0), 0u) << err_;
}

}  // namespace
