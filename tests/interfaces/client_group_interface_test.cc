// ClientGroupInterfaceNet against the scriptable server: which members each operation sends,
// how the answer fills the caller's record, and the operations that are not provided.
#include "interfaces/ClientGroupInterfaceNet.h"

#include <gtest/gtest.h>

#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

class ClientGroupTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  // Answers with a fixed group (text2 null when `nullText2`) and remembers the request.
  template <class Op>
  void Answer(const Op& op, bool nullText2 = false) {
    server_.On(op, [this, nullText2](const ClientGroupInfoReq& req, ClientGroupInfoResp& resp,
                                     Exchange& x) {
      seen_ = req;
      seenTexts_ = {req.text1, req.text2, req.text3};
      seen_.text1 = seen_.text2 = seen_.text3 = nullptr;  // they die with the request
      resp.int1 = 101;
      resp.int2 = 102;
      resp.int3 = 103;
      resp.int4 = 104;
      resp.int5 = 105;
      resp.int6 = 106;
      resp.text1 = x.Text("name");
      resp.text2 = nullText2 ? nullptr : x.Text("description");
      resp.text3 = x.Text("third");
    });
  }
  static _AppClientGroupInfo Caller() {
    _AppClientGroupInfo info;
    info.int1 = 1;
    info.int2 = 2;
    info.int3 = 3;
    info.int4 = 4;
    info.int5 = 5;
    info.text1 = "t1";
    info.text2 = "t2";
    info.text3 = "t3";
    info.int6 = 6;
    return info;
  }
  ScriptServer server_;
  ClientGroupInterfaceNet groups_;
  ClientGroupInfoReq seen_;
  std::vector<std::string> seenTexts_;
  std::string err_;
};

TEST_F(ClientGroupTest, LookupNeverSendsInt1OrInt3AndOverwritesBoth) {
  Answer(msg::kClientGroupLookup, /*nullText2=*/true);
  _AppClientGroupInfo info = Caller();
  ASSERT_EQ(groups_.lookup(info, err_, nullptr), 0) << err_;
  EXPECT_EQ(seen_.int2, 2u);
  EXPECT_EQ(seen_.int3, 0u) << "int3 is create's alone";
  EXPECT_EQ(seen_.int4, 4u);
  EXPECT_EQ(seen_.int5, 5u);
  EXPECT_EQ(seen_.int6, 6u);
  EXPECT_EQ(seenTexts_, (std::vector<std::string>{"t1", "t2", "t3"}))
      << "each text in its own field";
  EXPECT_EQ(info.int1, 101u);
  EXPECT_EQ(info.int3, 103u);
  EXPECT_EQ(info.int6, 106u);
  EXPECT_EQ(info.text1, "name");
  EXPECT_EQ(info.text2, "") << "a null text empties its member";
  EXPECT_EQ(info.text3, "third");
}

TEST_F(ClientGroupTest, CreateSendsInt3AndCopiesAllNineMembers) {
  Answer(msg::kClientGroupCreate);
  _AppClientGroupInfo info = Caller();
  ASSERT_EQ(groups_.create(info, err_, nullptr), 0) << err_;
  EXPECT_EQ(seen_.int3, 3u);
  EXPECT_EQ(seen_.int2 + seen_.int4 + seen_.int5 + seen_.int6, 2u + 4 + 5 + 6);
  EXPECT_EQ(info.int1, 101u);
  EXPECT_EQ(info.int2, 102u);
  EXPECT_EQ(info.int4, 104u);
  EXPECT_EQ(info.int5, 105u);
  EXPECT_EQ(info.text2, "description");
  EXPECT_EQ(server_.Count(msg::kClientGroupLookup.requestId), 0u);
}

TEST_F(ClientGroupTest, AFailureLeavesTheRecordAndIsLoggedUnderTheOperationsLabel) {
  for (auto* op : {&msg::kClientGroupLookup, &msg::kClientGroupCreate}) {
    server_.On(*op, [](const ClientGroupInfoReq&, ClientGroupInfoResp& resp, Exchange&) {
      resp.hdr.errorCode = 2;
      resp.hdr.errorText = "client group 'x' already exists";
      resp.int1 = 99;
    });
  }
  _AppClientGroupInfo info = Caller();
  EXPECT_EQ(groups_.lookup(info, err_, nullptr), 2);
  EXPECT_EQ(groups_.create(info, err_, nullptr), 2);
  EXPECT_EQ(err_, "client group 'x' already exists");
  EXPECT_EQ(info.int1, 1u);
  EXPECT_EQ(info.text2, "t2");
  std::vector<std::string> labels;
  for (const EvLogRecord& r : log_.Records()) {
    if (r.error && r.level == 0 && r.text == "client group 'x' already exists")
      labels.push_back(r.label);
  }
  EXPECT_EQ(labels, (std::vector<std::string>{"ClientGroupInterfaceNet::lookup",
                                              "ClientGroupInterfaceNet::create"}));
}

TEST_F(ClientGroupTest, UpdateAndRemoveAreNotProvidedAndSendNothing) {
  _AppClientGroupInfo info = Caller();
  std::string e1, e2;
  EXPECT_EQ(groups_.update(info, e1, nullptr), 0xa0010);
  EXPECT_EQ(groups_.remove(1, e2, nullptr), 0xa0010);
  EXPECT_EQ(e1, "Api not implemented.");
  EXPECT_EQ(e2, "Api not implemented.");
  EXPECT_EQ(info.int1, 1u);
  EXPECT_EQ(server_.core().ConnectionsAccepted(), 0u);
}

}  // namespace
