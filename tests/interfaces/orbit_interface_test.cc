// OrbitInterfaceNet against the scriptable server: the eleven values each operation sends, the
// caller's number that no answer changes, the null-text rules, and modify's own response id.
#include "interfaces/OrbitInterfaceNet.h"

#include <gtest/gtest.h>

#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

// The caller's side of one call.
struct Refs {
  unsigned long id1 = 1, id2 = 2, id3 = 3, id4 = 4;
  std::string t1 = "a", t2 = "b", t3 = "c", t4 = "d", t5 = "e", t6 = "f";
  int number = 17;
};

using Call = int (OrbitInterfaceNet::*)(unsigned long&, unsigned long&, unsigned long&,
                                        unsigned long&, std::string&, std::string&, std::string&,
                                        std::string&, std::string&, int&, std::string&,
                                        std::string&, void*);

class OrbitTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  // Answers `op` with ids 11..14, number 999, and texts "r1".."r6" except the null ones.
  void Answer(const appmgr::wire::Op<OrbitInfoReq1, OrbitInfoResp1>& op, bool nullTexts) {
    server_.On(op, [this, nullTexts](const OrbitInfoReq1& req, OrbitInfoResp1& resp, Exchange& x) {
      sent_ = std::to_string(req.id1) + std::to_string(req.id2) + std::to_string(req.id3) +
              std::to_string(req.id4) + req.text1 + req.text2 + req.text3 + req.text4 + req.text5 +
              req.text6 + std::to_string(req.number);
      resp.id1 = 11;
      resp.id2 = 12;
      resp.id3 = 13;
      resp.id4 = 14;
      resp.number = 999;
      const char** texts[] = {&resp.text1, &resp.text2, &resp.text3,
                              &resp.text4, &resp.text5, &resp.text6};
      for (int i = 0; i < 6; ++i) {
        const char name[] = {'r', static_cast<char>('1' + i), '\0'};
        *texts[i] = nullTexts && i % 2 == 0 ? nullptr : x.Text(name);
      }
    });
  }
  int Run(Call call, Refs& r) {
    return (orbit_.*call)(r.id1, r.id2, r.id3, r.id4, r.t1, r.t2, r.t3, r.t4, r.t5, r.number, r.t6,
                          err_, nullptr);
  }
  ScriptServer server_;
  OrbitInterfaceNet orbit_;
  std::string sent_;
  std::string err_;
};

TEST_F(OrbitTest, EachOperationSendsAllElevenAndNeverTakesTheAnswersNumber) {
  struct Case {
    const char* name;
    const appmgr::wire::Op<OrbitInfoReq1, OrbitInfoResp1>& op;
    Call call;
  } cases[] = {{"lookup", msg::kOrbitLookup, &OrbitInterfaceNet::lookup},
               {"create", msg::kOrbitCreate, &OrbitInterfaceNet::create},
               {"modify", msg::kOrbitModify, &OrbitInterfaceNet::modify}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Answer(c.op, /*nullTexts=*/false);
    Refs r;
    ASSERT_EQ(Run(c.call, r), 0) << err_;
    EXPECT_EQ(sent_, "1234abcdef17");
    EXPECT_EQ(r.id1 * 1000 + r.id2 * 100 + r.id3 * 10 + r.id4, 11u * 1000 + 1200 + 130 + 14);
    EXPECT_EQ(r.t1 + r.t2 + r.t3 + r.t4 + r.t5 + r.t6, "r1r2r3r4r5r6");
    EXPECT_EQ(r.number, 17) << "the integer of the answer is not read";
  }
  // modify is sent and answered under the same id.
  EXPECT_EQ(msg::kOrbitModify.requestId, 0x34000182u);
  EXPECT_EQ(msg::kOrbitModify.responseId, 0x34000182u);
  EXPECT_EQ(server_.Count(0x34000182), 1u);
}

TEST_F(OrbitTest, LookupKeepsTheCallersStringsForNullTextsCreateAndModifyEmptyThem) {
  Answer(msg::kOrbitLookup, /*nullTexts=*/true);
  Refs r;
  ASSERT_EQ(Run(&OrbitInterfaceNet::lookup, r), 0) << err_;
  EXPECT_EQ(r.t1 + "|" + r.t2 + "|" + r.t3 + "|" + r.t4 + "|" + r.t5 + "|" + r.t6,
            "a|r2|c|r4|e|r6");

  Answer(msg::kOrbitModify, /*nullTexts=*/true);
  Refs m;
  ASSERT_EQ(Run(&OrbitInterfaceNet::modify, m), 0) << err_;
  EXPECT_EQ(m.t1 + "|" + m.t2 + "|" + m.t3 + "|" + m.t4 + "|" + m.t5 + "|" + m.t6, "|r2||r4||r6");
}

TEST_F(OrbitTest, AFailureLeavesEveryOutput) {
  server_.On(msg::kOrbitCreate, [](const OrbitInfoReq1&, OrbitInfoResp1& resp, Exchange&) {
    resp.hdr.errorCode = 2;
    resp.hdr.errorText = "this installation already has a domain";
    resp.id1 = 55;
  });
  Refs r;
  EXPECT_EQ(Run(&OrbitInterfaceNet::create, r), 2);
  EXPECT_EQ(err_, "this installation already has a domain");
  EXPECT_EQ(r.id1, 1u);
  EXPECT_EQ(r.t1, "a");
  EXPECT_EQ(r.number, 17);
}

TEST_F(OrbitTest, RemoveSendsOnlyTheId) {
  uint64_t seen = 0;
  server_.On(msg::kOrbitRemove,
             [&](const RemoveOrbitReq& req, GenericResp&, Exchange&) { seen = req.id; });
  ASSERT_EQ(orbit_.remove(42, err_, nullptr), 0) << err_;
  EXPECT_EQ(seen, 42u);
  server_.On(msg::kOrbitRemove, [](const RemoveOrbitReq&, GenericResp& resp, Exchange&) {
    resp.hdr.errorCode = 1;
    resp.hdr.errorText = "domain 43 does not exist";
  });
  EXPECT_EQ(orbit_.remove(43, err_, nullptr), 1);
  EXPECT_EQ(err_, "domain 43 does not exist");
}

}  // namespace
