// The global-parameter, client-group and domain handlers on a real server core and store with the
// demo fixture, driven by a client session: the requests the server refuses (null texts no
// library call sends among them), and how the group and domain records map onto the store.
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "protocol/Messages.h"
#include "server/store/StoreErrors.h"
#include "tests/server/HandlerClient.h"
#include "tests/server/ServedStore.h"

namespace appmgr::server {
namespace {

using namespace appmgr::msg;

class ParamsHandlersTest : public testing::Test {
 public:
  template <class Req, class Resp>
  Resp Call(const wire::Op<Req, Resp>& op, Req req) {
    return client_.Call(op, req);
  }
  template <class Req, class Resp>
  Outcome Try(const wire::Op<Req, Resp>& op, Req req) {
    return OutcomeOf(client_.Call(op, req));
  }

 protected:
  ServedStore served_;
  HandlerClient client_{served_.connect()};
};

// ---- Refused requests: the header carries code and text, nothing else is sent ----

struct RefusedCase {
  const char* name;
  std::function<Outcome(ParamsHandlersTest&)> call;
  int code;
  const char* text;
};
void PrintTo(const RefusedCase& c, std::ostream* os) {
  *os << c.name;
}

template <class Req, class Resp>
RefusedCase Case(const char* name, const wire::Op<Req, Resp>& op, Req req, int code,
                 const char* text) {
  return RefusedCase{name, [&op, req](ParamsHandlersTest& t) { return t.Try(op, req); }, code,
                     text};
}

class ParamsRefused : public ParamsHandlersTest, public testing::WithParamInterface<RefusedCase> {};

TEST_P(ParamsRefused, PutsCodeAndTextInTheHeaderAndNothingElse) {
  const RefusedCase& c = GetParam();
  Outcome o = c.call(*this);
  EXPECT_EQ(o.code, c.code);
  EXPECT_EQ(o.text, c.text);
  EXPECT_TRUE(o.restZero) << "a failed answer carries the header alone";
}

constexpr int kInvalid = kStoreErrInvalidArgument;
constexpr int kNotFound = kStoreErrNotFound;

OrbitInfoReq1 Domain(uint64_t id, const char* name) {
  return OrbitInfoReq1{.hdr = {},
                       .id1 = id,
                       .text1 = name,
                       .text2 = "",
                       .text3 = "",
                       .text4 = "",
                       .text5 = "",
                       .text6 = ""};
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParamsRefused,
    testing::Values(
        Case("GetWithoutName", kGlobalParamGet, GetGlobalParamReq{}, kInvalid,
             "the request carries no parameter name"),
        Case("GetUnknown", kGlobalParamGet, GetGlobalParamReq{.hdr = {}, .name = "sNothing"},
             kNotFound, "global parameter 'sNothing' is not set"),
        Case("SetWithoutValue", kGlobalParamSet, SetGlobalParamReq{.hdr = {}, .name = "sA"},
             kInvalid, "the request carries no parameter value"),
        Case("SetOfTheWrongType", kGlobalParamSet,
             SetGlobalParamReq{.hdr = {}, .name = "nMaxConcurrentJobs", .value = "x"}, kInvalid,
             "global parameter 'nMaxConcurrentJobs' takes a whole number from 1 to 10000, not "
             "'x'"),
        Case("RemoveWithoutName", kGlobalParamRemove, DelGlobalParamReq{}, kInvalid,
             "the request carries no parameter name"),
        Case("AppGetOfNoApplication", kAppPropertyGet,
             GetAppPropertyReq{.hdr = {}, .id1 = 999, .id2 = 1}, kNotFound,
             "client application type 999 does not exist"),
        Case("AppSetWithoutValue", kAppPropertySet,
             SetAppPropertyReq{.hdr = {}, .id1 = 302, .id2 = 1}, kInvalid,
             "the request carries no property value"),
        Case("GroupLookupWithoutName", kClientGroupLookup, ClientGroupInfoReq{}, kInvalid,
             "the request carries no group name"),
        Case("GroupLookupOfNoGroup", kClientGroupLookup,
             ClientGroupInfoReq{.hdr = {}, .text1 = "Nobody"}, kNotFound,
             "no client group is named 'Nobody'"),
        Case("GroupCreateWithoutDescription", kClientGroupCreate,
             ClientGroupInfoReq{.hdr = {}, .text1 = "New", .text3 = ""}, kInvalid,
             "the request carries no group description"),
        Case("GroupCreateOfATakenName", kClientGroupCreate,
             ClientGroupInfoReq{.hdr = {}, .text1 = "linux MACHINES", .text3 = "", .text2 = ""},
             kStoreErrConflict,
             "client group 'linux MACHINES' already exists (id 2, 'Linux machines')"),
        Case("DomainLookupOfAnotherId", kOrbitLookup, OrbitInfoReq1{.hdr = {}, .id1 = 9}, kNotFound,
             "domain 9 does not exist (this installation's domain is 1)"),
        Case("DomainCreateWhileOneExists", kOrbitCreate, Domain(0, "second"), kStoreErrConflict,
             "this installation already has a domain (1, 'lab-domain'); modify or remove it "
             "instead"),
        Case("DomainModifyWithoutAText", kOrbitModify,
             OrbitInfoReq1{
                 .hdr = {}, .text1 = "x", .text2 = "", .text3 = "", .text4 = "", .text5 = ""},
             kInvalid, "the request carries no sixth domain text"),
        Case("DomainModifyToAnEmptyName", kOrbitModify, Domain(1, ""), kInvalid,
             "a domain's name cannot be empty"),
        Case("DomainRemoveOfIdZero", kOrbitRemove, RemoveOrbitReq{}, kInvalid,
             "a domain is removed by its id, not by id 0")),
    [](const auto& info) { return std::string(info.param.name); });

// ---- Each message's success ----

TEST_F(ParamsHandlersTest, GroupFieldsTravelInTheirOwnPlacesAndLookupReadsOnlyTheName) {
  ClientGroupInfoReq create{.hdr = {},
                            .int2 = 2,
                            .int3 = 3,
                            .int4 = 4,
                            .text1 = "Databases",
                            .int5 = 5,
                            .text3 = "dba team",
                            .text2 = "SQL servers",
                            .int6 = 6};
  ClientGroupInfoResp created = Call(kClientGroupCreate, create);
  ASSERT_EQ(created.hdr.errorCode, 0) << created.hdr.errorText;
  EXPECT_EQ(created.int1, 3u) << "one above the demo's highest group id";

  // Every integer the lookup sends is ignored: the name alone finds the group.
  ClientGroupInfoResp found = Call(kClientGroupLookup, ClientGroupInfoReq{.hdr = {},
                                                                          .int2 = 70,
                                                                          .int4 = 71,
                                                                          .text1 = "DATABASES",
                                                                          .int5 = 72,
                                                                          .text3 = "",
                                                                          .text2 = "",
                                                                          .int6 = 73});
  ASSERT_EQ(found.hdr.errorCode, 0) << found.hdr.errorText;
  for (const ClientGroupInfoResp* r : {&created, &found}) {
    EXPECT_EQ(r->int1, 3u);
    EXPECT_EQ(r->int2, 2u);
    EXPECT_EQ(r->int3, 3u);
    EXPECT_EQ(r->int4, 4u);
    EXPECT_EQ(r->int5, 5u);
    EXPECT_EQ(r->int6, 6u);
    EXPECT_STREQ(r->text1, "Databases");
    EXPECT_STREQ(r->text2, "SQL servers");
    EXPECT_STREQ(r->text3, "dba team");
  }
}

TEST_F(ParamsHandlersTest, DomainAnswersTheWholeRecordAndModifyKeepsTheIdAndNumber) {
  OrbitInfoResp1 d = Call(kOrbitLookup, OrbitInfoReq1{});
  ASSERT_EQ(d.hdr.errorCode, 0) << d.hdr.errorText;
  EXPECT_EQ(d.id1, 1u);
  EXPECT_EQ(d.id2, 2u);
  EXPECT_STREQ(d.text1, "lab-domain");
  EXPECT_STREQ(d.text2, "ch01.lab.example.net");
  EXPECT_STREQ(d.text3, "Demonstration domain");
  EXPECT_STREQ(d.text4, "1.0");
  EXPECT_STREQ(d.text5, "");
  EXPECT_EQ(d.number, 0);

  OrbitInfoReq1 change{.hdr = {},
                       .id1 = 0,
                       .id2 = 20,
                       .id3 = 30,
                       .id4 = 40,
                       .text1 = "renamed",
                       .text2 = "ch02",
                       .text3 = "d",
                       .text4 = "2.0",
                       .text5 = "five",
                       .text6 = "six",
                       .number = 55};
  // HandlerClient checks that the answer comes under the paired id: 0x34000182 again.
  OrbitInfoResp1 m = Call(kOrbitModify, change);
  ASSERT_EQ(m.hdr.errorCode, 0) << m.hdr.errorText;
  EXPECT_EQ(m.id1, 1u);
  EXPECT_EQ(m.id4, 40u);
  EXPECT_STREQ(m.text6, "six");
  EXPECT_EQ(m.number, 0) << "fixed at creation";
  d = Call(kOrbitLookup, OrbitInfoReq1{.hdr = {}, .id1 = 1});
  EXPECT_EQ(d.id3, 30u);
  EXPECT_STREQ(d.text1, "renamed");

  ASSERT_EQ(Try(kOrbitRemove, RemoveOrbitReq{.hdr = {}, .id = 1}).code, 0);
  EXPECT_EQ(Try(kOrbitLookup, OrbitInfoReq1{}).text, "this installation has no domain");
  OrbitInfoReq1 again = Domain(0, "fresh");
  again.number = -3;
  OrbitInfoResp1 c = Call(kOrbitCreate, again);
  ASSERT_EQ(c.hdr.errorCode, 0) << c.hdr.errorText;
  EXPECT_EQ(c.id1, 1u);
  EXPECT_EQ(c.number, -3);
}

}  // namespace
}  // namespace appmgr::server
