// The binary alert of AdaptersInterfaceNet: how an EvAlertEx is flattened (widths, the narrowed
// ids, lists and event messages), and what SendAlert sends and answers.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "adapters/AdaptersAlerts.h"
#include "adapters/AdaptersInterfaceNet.h"
#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

// An alert with every list empty and a few scalars set.
EvAlertEx Plain() {
  EvAlertEx a;
  a.setAlertType(12);
  a.setClientName("agent01");
  a.setDescription("backup failed");
  return a;
}

// The record CopyAlertExData makes, its arrays released at the end of the test.
struct Copied {
  explicit Copied(EvAlertEx& alert) { CopyAlertExData(req, alert); }
  ~Copied() { ReleaseAlertExData(req); }
  SendAlertExReq3 req;
};

TEST(CopyAlertExData, NarrowsTheIdsTheRecordCutsAndKeepsTheOthersWhole) {
  const long big = 0x80000000L;  // 2^31: the first id that arrives altered
  EvAlertEx a;
  a.setClientId(big);
  a.setLibraryId(big);
  a.setMediaId(big + 5);
  a.setStorenodeId(0x100000007L);  // above 32 bits: only the low word travels
  a.setOrbitId(big);
  a.setappTypeId(big);
  a.setInstanceId(big);
  a.setSubClientId(big);
  a.setBackupsetId(0x100000007L);
  a.setStorPolicyId(big);
  a.setAlertType(-3);
  a.setKBDoanloaded(-1);
  a.setPercentageChange(-9);
  a.setJobId(0x123456789aL);
  Copied c(a);
  const SendAlertExReq3& r = c.req;
  for (int64_t v : {r.clientId, r.libraryId, r.orbitId, r.appTypeId, r.instanceId}) {
    EXPECT_EQ(static_cast<uint64_t>(v), 0xffffffff80000000u);
  }
  EXPECT_EQ(r.mediaId, -2147483643);
  EXPECT_EQ(r.storenodeId, 7);
  EXPECT_EQ(r.subclientId, 0x80000000u);
  EXPECT_EQ(r.backupsetId, 0x100000007u);
  EXPECT_EQ(r.storPolicyId, 0x80000000u);
  EXPECT_EQ(r.alertType, -3);
  EXPECT_EQ(r.kbDownloaded, -1);
  EXPECT_EQ(r.percentageChange, -9);
  EXPECT_EQ(r.jobId, 0x123456789au);
}

TEST(CopyAlertExData, PointsAtTheAlertsStringsAndStoresFlagsAsZeroOrOne) {
  EvAlertEx a = Plain();
  a.setConditionCleared(true);
  a.setMoreMediaToCome(true);
  a.setRdJob(false);
  a.setWorkFlowName("wf");
  Copied c(a);
  EXPECT_EQ(c.req.clientName, a.getClientName().c_str()) << "no copy: the alert's own characters";
  EXPECT_EQ(c.req.workFlowName, a.getWorkFlowName().c_str());
  EXPECT_STREQ(c.req.description, "backup failed");
  EXPECT_STREQ(c.req.comment, "") << "an empty attribute is an empty text, not a null";
  EXPECT_EQ(c.req.conditionCleared, 1u);
  EXPECT_EQ(c.req.mediaRequired, 0u);
  EXPECT_EQ(c.req.moreMediaToCome, 1u);
  EXPECT_EQ(c.req.rdJob, 0u);
}

TEST(CopyAlertExData, EmptyListsAndTheReservedListAllocateNothing) {
  EvAlertEx a = Plain();
  Copied c(a);
  const SendAlertExReq3& r = c.req;
  const std::pair<uint32_t, const void*> lists[] = {{r.vtStoragePoliciesCount, r.vtStoragePolicies},
                                                    {r.clientsCount, r.clients},
                                                    {r.mediaIdsCount, r.mediaIds},
                                                    {r.reservedCount, r.reserved},
                                                    {r.failureReasonsCount, r.failureReasons},
                                                    {r.eventMsgsCount, r.eventMsgs},
                                                    {r.barCodesCount, r.barCodes},
                                                    {r.failedMediaCount, r.failedMedia}};
  for (const auto& [count, items] : lists) {
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(items, nullptr);
  }
}

TEST(CopyAlertExData, ListsGetOneElementPerEntryInOrderWithIntegersSignExtended) {
  EvAlertEx a;
  a.setClientList({"c1", "c2", "c3"});
  a.setBarCodeList({"B1"});
  a.setFailureReasons({-1, 7});
  a.setFailedMedialist({2147483647});
  a.addEventMsg({1, 2, 3, 4, "first"});
  a.addEventMsg({5, 6, 7, 8, "second"});
  a.addEventMsg({0, 0, 0, ~0ull, ""});
  Copied c(a);
  const SendAlertExReq3& r = c.req;
  ASSERT_EQ(r.clientsCount, 3u);
  EXPECT_EQ(r.clients[2].text, a.getClientList()[2].c_str());
  ASSERT_EQ(r.barCodesCount, 1u);
  EXPECT_STREQ(r.barCodes[0].text, "B1");
  ASSERT_EQ(r.failureReasonsCount, 2u);
  EXPECT_EQ(r.failureReasons[0].id, ~0ull) << "-1 widened with its sign";
  EXPECT_EQ(r.failureReasons[1].id, 7u);
  EXPECT_EQ(r.failedMedia[0].id, 2147483647u);
  ASSERT_EQ(r.eventMsgsCount, 3u);
  EXPECT_EQ(r.eventMsgs[1].value1, 5u);
  EXPECT_EQ(r.eventMsgs[1].value4, 8u);
  EXPECT_STREQ(r.eventMsgs[1].text, "second");
  EXPECT_EQ(r.eventMsgs[2].value4, ~0ull);
  EXPECT_EQ(r.reservedCount, 0u);
  EXPECT_EQ(r.reserved, nullptr);
}

class AlertTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  ScriptServer server_;
  AdaptersInterfaceNet adapters_;
  std::string err_;
};

TEST_F(AlertTest, SendAlertDeliversTheWholeRecordAndAnswersZero) {
  struct Seen {
    int64_t clientId = 0;
    uint64_t subclientId = 0;
    std::string clientName, description;
    std::vector<std::string> clients, events;
    std::vector<uint64_t> values;
    uint32_t reserved = 99;
  } seen;
  server_.On(msg::kSendAlertEx, [&](const SendAlertExReq3& req, GenericResp&, Exchange&) {
    seen.clientId = req.clientId;
    seen.subclientId = req.subclientId;
    seen.clientName = req.clientName;
    seen.description = req.description;
    for (uint32_t i = 0; i < req.clientsCount; ++i) seen.clients.push_back(req.clients[i].text);
    for (uint32_t i = 0; i < req.eventMsgsCount; ++i) {
      seen.events.push_back(req.eventMsgs[i].text);
      seen.values.push_back(req.eventMsgs[i].value3);
    }
    seen.reserved = req.reservedCount;
  });
  EvAlertEx a = Plain();
  a.setClientId(0x80000000L);
  a.setSubClientId(0x80000000L);
  a.setClientList({"x", "y"});
  a.addEventMsg({1, 2, 3, 4, "e1"});
  a.addEventMsg({5, 6, 7, 8, "e2"});
  a.addEventMsg({9, 10, 11, 12, "e3"});
  ASSERT_EQ(adapters_.SendAlert(a, err_), 0) << err_;
  EXPECT_EQ(seen.clientId, -2147483648);
  EXPECT_EQ(seen.subclientId, 0x80000000u);
  EXPECT_EQ(seen.clientName, "agent01");
  EXPECT_EQ(seen.description, "backup failed");
  EXPECT_EQ(seen.clients, (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(seen.events, (std::vector<std::string>{"e1", "e2", "e3"}));
  EXPECT_EQ(seen.values, (std::vector<uint64_t>{3, 7, 11}));
  EXPECT_EQ(seen.reserved, 0u);
  EXPECT_EQ(server_.Count(msg::kSendAlertEx.requestId), 1u);
}

TEST_F(AlertTest, ARejectedAlertAnswersTheHeadersCodeAndText) {
  server_.On(msg::kSendAlertEx, [](const SendAlertExReq3&, GenericResp& resp, Exchange&) {
    resp.hdr.errorCode = 3;
    resp.hdr.errorText = "the alert names no type";
  });
  EvAlertEx a = Plain();
  a.addEventMsg({1, 2, 3, 4, "kept until the answer"});
  EXPECT_EQ(adapters_.SendAlert(a, err_), 3);
  EXPECT_EQ(err_, "the alert names no type");
}

TEST_F(AlertTest, ATransportFailureAnswersTheSendersStatusAndReleasesTheArrays) {
  server_.Stop();
  EvAlertEx a = Plain();
  a.setUpdatesList({"u1"});
  a.addEventMsg({1, 2, 3, 4, "lost"});
  EXPECT_NE(adapters_.SendAlert(a, err_), 0);
  EXPECT_NE(err_, "");
  // Under the leak checker, an array left behind on this path fails the run.
}

}  // namespace
