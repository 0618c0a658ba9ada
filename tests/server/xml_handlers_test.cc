// Alerts, XML routing, advisories, log monitoring and the agent passthrough on a real server core
// and store loaded with the demo fixture: what each carrier accepts and refuses, what each route
// does to the store, and that every refusal is an XML answer (and, where clients read it, a
// header) with a code and a text.
#include "server/handlers/XmlHandlers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/xml/AppMessages.h"
#include "platform/xml/KPGuiMessages.h"
#include "protocol/Messages.h"
#include "server/store/AdvisoryStore.h"
#include "server/store/AlertStore.h"
#include "server/store/LogMonitorStore.h"
#include "server/store/StoreErrors.h"
#include "tests/server/HandlerClient.h"
#include "tests/server/ServedStore.h"

namespace appmgr::server {
namespace {

using namespace appmgr::msg;

std::string Xml(const CNMessageBase& m) {
  std::string text;
  EXPECT_EQ(m.serialize(text), 0);
  return text;
}

// The document of an answer, read back; null (and a failure) when it does not read.
std::unique_ptr<CNMessageBase> Read(const char* xml) {
  EXPECT_NE(xml, nullptr);
  if (xml == nullptr) return nullptr;
  int rc = 0;
  std::string why;
  auto m = CNMessageBase::FromXml(xml, std::strlen(xml), &rc, &why);
  EXPECT_NE(m, nullptr) << rc << " " << why;
  return m;
}

// "status: text" of a generic answer; "tag 0x..." of any other.
std::string Said(const char* xml) {
  std::unique_ptr<CNMessageBase> m = Read(xml);
  if (!m) return "unreadable";
  if (m->getTagId() != KPGui::AlertResponse::kTagId) {
    char tag[32];
    snprintf(tag, sizeof tag, "tag 0x%08lx", m->getTagId());
    return tag;
  }
  return std::to_string(StatusOf(*m)) + ": " + ErrorTextOf(*m);
}

class XmlHandlersTest : public testing::Test {
 protected:
  HandleXMLResp HandleXml(unsigned long type, const std::string& xml) {
    HandleXMLReq req;
    req.route = 1;
    req.xmlType = type;
    req.xml = xml.c_str();
    return client_.Call(kHandleXml, req);
  }
  SendKpAlertXML_Resp Typed(const wire::Op<SendKpAlertXML_Req, SendKpAlertXML_Resp>& op,
                            uint64_t tag, const std::string& xml) {
    SendKpAlertXML_Req req;
    req.tagId = tag;
    req.xml = xml.c_str();
    return client_.Call(op, req);
  }
  std::vector<StoredAlert> Alerts(AlertFilter filter = {}) {
    std::vector<StoredAlert> out;
    EXPECT_OK(AlertStore(served_.store()).List(filter, &out));
    return out;
  }

  ServedStore served_;
  HandlerClient client_{served_.connect(), "ops-console"};
};

TEST_F(XmlHandlersTest, TheAlertRecordIsStoredWithEveryFieldOrRefusedWhole) {
  const size_t before = Alerts().size();
  SendAlertExReq3 req;
  req.alertType = 12;
  req.clientId = 3;
  req.jobId = 4711;
  req.backupsetId = 102;
  req.failureReason = "network path not found";
  req.description = "";
  AppStringList clients[2];
  clients[0].text = "db01";
  clients[1].text = "fs02";
  req.clientsCount = 2;
  req.clients = clients;
  AppMgrAlertEventMsg events[1];
  events[0].value2 = 7;
  events[0].text = "retry 1";
  req.eventMsgsCount = 1;
  req.eventMsgs = events;
  EXPECT_EQ(OutcomeOf(client_.Call(kSendAlertEx, req)).code, 0);

  std::vector<StoredAlert> all = Alerts();
  ASSERT_EQ(all.size(), before + 1);
  const StoredAlert& a = all.back();
  EXPECT_EQ(a.source, StoredAlert::kSourceRecord);
  EXPECT_EQ(a.clientName, "db01") << "the record gave no name: the client's";
  EXPECT_EQ(a.text, "network path not found") << "no description: the failure reason";
  EXPECT_EQ(a.backupSetId, 102u);
  EXPECT_EQ(a.jobId, 4711u);
  EXPECT_NEAR(static_cast<double>(a.receivedAt), static_cast<double>(time(nullptr)), 60);
  nlohmann::json details = nlohmann::json::parse(a.details);
  EXPECT_FALSE(details.contains("hdr"));
  EXPECT_EQ(details["clients"], nlohmann::json({"db01", "fs02"}));
  EXPECT_EQ(details["eventMsgs"][0]["value2"], 7);
  EXPECT_EQ(details["eventMsgs"][0]["text"], "retry 1");
  EXPECT_TRUE(details["comment"].is_null());
  EXPECT_EQ(details["alertType"], 12);

  // Bytes an XML message cannot carry are stored as sent, and listed replaced.
  req.description = "bad\x01text\xc3(";
  req.clientName =
      "\xff"
      "db";
  EXPECT_EQ(OutcomeOf(client_.Call(kSendAlertEx, req)).code, 0);
  KPGui::AlertListReq ask;
  ask.SetLimit(1);
  std::unique_ptr<CNMessageBase> listed = client_.CallXml(ask);
  ASSERT_NE(listed, nullptr);
  ASSERT_EQ(listed->getTagId(), KPGui::AlertListResp::kTagId) << Said(Xml(*listed).c_str());
  std::vector<KPGui::AlertRecord> last = static_cast<KPGui::AlertListResp&>(*listed).GetAlerts();
  ASSERT_EQ(last.size(), 1u);
  EXPECT_EQ(last[0].text, "bad\uFFFDtext\uFFFD(");
  EXPECT_EQ(last[0].clientName, "\uFFFDdb");
  EXPECT_EQ(Alerts().back().text, "bad\x01text\xc3(");

  req.clientId = static_cast<int64_t>(0xffffffff80000000u);  // a narrowed id of 2^31
  Outcome refused = OutcomeOf(client_.Call(kSendAlertEx, req));
  EXPECT_EQ(refused.code, kStoreErrNotFound);
  EXPECT_EQ(refused.text, "client -2147483648 does not exist");
  EXPECT_EQ(Alerts().size(), before + 2);
}

TEST_F(XmlHandlersTest, TheAlertListIsStoredAllOrNothingAndListedAndAcknowledgedByXml) {
  KPGui::AlertEvAlertExList list;
  list.AddAlert({501, 4, 4, "", 1700100000, "library offline"});
  list.AddAlert({502, 2, 0, "standalone", 1700100001, "no client"});
  SendKpAlertXML_Resp resp = Typed(kSendKpAlertXml, KPGui::AlertEvAlertExList::kTagId, Xml(list));
  EXPECT_EQ(resp.hdr.errorCode, 0) << resp.hdr.errorText;
  EXPECT_EQ(resp.tagId, KPGui::AlertResponse::kTagId);
  EXPECT_EQ(Said(resp.xml), "0: ");

  list.AddAlert({503, 9, 4, "", 1, "bad severity"});
  resp = Typed(kSendKpAlertXml, KPGui::AlertEvAlertExList::kTagId, Xml(list));
  EXPECT_EQ(resp.hdr.errorCode, kStoreErrInvalidArgument) << "the header carries the refusal";
  EXPECT_STREQ(resp.hdr.errorText,
               "alert 3 of 3: severity 9 is not one of 0 none, 1 info, 2 warning, 3 error, 4 "
               "critical");

  // Listed over an XML frame: client 4's unacknowledged alerts, most recent first cut to 1.
  KPGui::AlertListReq ask;
  ask.SetClientId(4);
  ask.SetUnacknowledgedOnly(true);
  std::unique_ptr<CNMessageBase> answer = client_.CallXml(ask);
  ASSERT_NE(answer, nullptr);
  ASSERT_EQ(answer->getTagId(), KPGui::AlertListResp::kTagId);
  std::vector<KPGui::AlertRecord> got = static_cast<KPGui::AlertListResp&>(*answer).GetAlerts();
  ASSERT_EQ(got.size(), 1u) << "the demo's alert of client 4 is acknowledged";
  EXPECT_EQ(got[0].text, "library offline");
  EXPECT_EQ(got[0].clientName, "fs02");
  EXPECT_EQ(got[0].raised, 1700100000);
  EXPECT_EQ(got[0].alertType, 501);
  EXPECT_EQ(got[0].severity, 4);
  EXPECT_EQ(got[0].source, KPGui::AlertRecord::kSourceXml);

  KPGui::AlertAckReq ack;
  ack.AddAlertId(got[0].alertId);
  answer = client_.CallXml(ack);
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(StatusOf(*answer), 0) << ErrorTextOf(*answer);
  std::vector<StoredAlert> stored = Alerts({4, false, 0});
  EXPECT_EQ(stored.back().acknowledgedBy, "ops-console") << "no name given: the connection's";

  KPGui::AlertAckReq missing;
  missing.AddAlertId(got[0].alertId);
  missing.AddAlertId(99999);
  answer = client_.CallXml(missing);
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(StatusOf(*answer), kStoreErrNotFound);
  EXPECT_EQ(ErrorTextOf(*answer), "alert 99999 does not exist");
}

TEST_F(XmlHandlersTest, EachCarrierRefusesADocumentThatIsNotWhatItCarries) {
  KPGui::SyncSRMClientAdvisories sync;
  sync.SetClientId(4);
  struct Case {
    const char* name;
    std::function<std::pair<int, std::string>()> call;
    int code;
    const char* text;
  };
  auto typed = [&](uint64_t tag, std::string xml) {
    return [=, this] {
      SendKpAlertXML_Resp r = Typed(kSyncSrmClientAdvisories, tag, xml);
      EXPECT_EQ(Said(r.xml).rfind(std::to_string(r.hdr.errorCode) + ": ", 0), 0u);
      return std::make_pair(r.hdr.errorCode, std::string(r.hdr.errorText ? r.hdr.errorText : ""));
    };
  };
  auto raw = [&](unsigned long type, std::string xml) {
    return [=, this] {
      HandleXMLResp r = HandleXml(type, xml);
      EXPECT_EQ(Said(r.xml).rfind(std::to_string(r.hdr.errorCode) + ": ", 0), 0u);
      return std::make_pair(r.hdr.errorCode, std::string(r.hdr.errorText ? r.hdr.errorText : ""));
    };
  };
  const Case cases[] = {
      {"typed: another tag in the record", typed(0x010003fd, Xml(sync)), kStoreErrInvalidArgument,
       "SYNC_SRM_CLIENT_ADVISORIES_REQ carries KPGui::SyncSRMClientAdvisories (tag 0x010003fc), "
       "not tag 0x010003fd"},
      {"typed: another document", typed(0x010003fc, Xml(KPGui::ControlSRMAdvisories())),
       kStoreErrInvalidArgument,
       "the XML document is a KPGui::ControlSRMAdvisories (tag 0x010003fe), not a message of "
       "type 0x010003fc"},
      {"typed: not XML", typed(0x010003fc, "<<<"), kStoreErrInvalidArgument, nullptr},
      {"raw: unknown type", raw(0x1e70954d, "<x/>"), kKpErrNotSupported,
       "no handler for XML message type 0x1e70954d here"},
      {"raw: type 0", raw(0, Xml(sync)), kKpErrNotSupported,
       "no handler for XML message type 0x00000000 here"},
      {"raw: the type is not the document's", raw(0x010003fd, Xml(sync)), kStoreErrInvalidArgument,
       nullptr},
      {"raw: truncated", raw(0x010003fc, Xml(sync).substr(0, 20)), kStoreErrInvalidArgument,
       nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto [code, text] = c.call();
    EXPECT_EQ(code, c.code);
    if (c.text) {
      EXPECT_EQ(text, c.text);
    } else {
      EXPECT_FALSE(text.empty());
    }
  }
  // A null document is refused rather than read.
  HandleXMLReq none;
  none.xmlType = KPGui::SyncSRMClientAdvisories::kTagId;
  HandleXMLResp r = client_.Call(kHandleXml, none);
  EXPECT_EQ(r.hdr.errorCode, kStoreErrInvalidArgument);
  EXPECT_STREQ(r.hdr.errorText, "the request carries no XML document");

  // An XML frame of a tag nobody serves gets the XML error answer, and the session goes on.
  CNMessageBase unknown(0x0badcafe);
  std::unique_ptr<CNMessageBase> answer = client_.CallXml(unknown);
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(StatusOf(*answer), kKpErrNotSupported);
  EXPECT_EQ(ErrorTextOf(*answer), "no handler for XML message CNMessage (tag 0x0badcafe) here");
  EXPECT_EQ(Typed(kSyncSrmClientAdvisories, 0x010003fc, Xml(sync)).hdr.errorCode, 0);
}

TEST_F(XmlHandlersTest, AdvisoriesAreSyncedControlledAndListedThroughTheirMessages) {
  KPGui::SyncSRMClientAdvisories sync;
  sync.SetClientId(4);
  sync.AddAdvisory({9002, 2, "Compression library memory corruption"});
  sync.AddAdvisory({9004, 1, "New one"});
  EXPECT_EQ(Typed(kSyncSrmClientAdvisories, sync.getTagId(), Xml(sync)).hdr.errorCode, 0);
  KPGui::ControlSRMAdvisories control;
  control.SetAction(KPGui::ControlSRMAdvisories::kActionDisable);
  control.AddTarget({9004, 4});
  EXPECT_EQ(Typed(kControlSrmAdvisories, control.getTagId(), Xml(control)).hdr.errorCode, 0);
  control.AddTarget({9004, 3});
  SendKpAlertXML_Resp refused = Typed(kControlSrmAdvisories, control.getTagId(), Xml(control));
  EXPECT_EQ(Said(refused.xml), "1: advisory 9004 does not apply to client 3");

  KPGui::SRMAdvisoryListReq list;
  list.SetClientId(4);
  HandleXMLResp r = HandleXml(list.getTagId(), Xml(list));
  auto answer = Read(r.xml);
  ASSERT_NE(answer, nullptr);
  ASSERT_EQ(answer->getTagId(), KPGui::SRMAdvisoryListResp::kTagId);
  auto entries = static_cast<KPGui::SRMAdvisoryListResp&>(*answer).GetAdvisories();
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0].state, KPGui::SRMAdvisoryEntry::kStateEnabled);
  EXPECT_EQ(entries[1].advisoryId, 9004);
  EXPECT_EQ(entries[1].state, KPGui::SRMAdvisoryEntry::kStateDisabled);

  list.SetSourceName("vendor-feed");
  answer = Read(HandleXml(list.getTagId(), Xml(list)).xml);
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(static_cast<KPGui::SRMAdvisoryListResp&>(*answer).GetAdvisories().size(), 3u);

  KPGui::AlertSRMAdvisoryTypeListReq types;
  types.SetClientId(3);
  SendKpAlertXML_Resp t = Typed(kGetSrmAdvisoryTypes, types.getTagId(), Xml(types));
  EXPECT_EQ(t.tagId, KPGui::AlertSRMAdvisoryTypeListResp::kTagId);
  answer = Read(t.xml);
  ASSERT_NE(answer, nullptr);
  auto got = static_cast<KPGui::AlertSRMAdvisoryTypeListResp&>(*answer).GetTypes();
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(got[0].name, "critical");
  EXPECT_EQ(got[1].name, "moderate");
  types.SetClientId(99);
  t = Typed(kGetSrmAdvisoryTypes, types.getTagId(), Xml(types));
  EXPECT_EQ(t.tagId, KPGui::AlertResponse::kTagId);
  EXPECT_EQ(Said(t.xml), "1: client 99 does not exist");
}

TEST_F(XmlHandlersTest, ProxySettingsAreTheInstallationsWithAClientsOverrides) {
  App::GetHTTPProxySettingsReq req;
  auto settings = [&](const std::string& client) -> std::unique_ptr<CNMessageBase> {
    req.SetClientName(client);
    return Read(HandleXml(req.getTagId(), Xml(req)).xml);
  };
  auto own = settings("");  // the connection is "ops-console", which is no client
  ASSERT_NE(own, nullptr);
  ASSERT_EQ(own->getTagId(), App::HTTPProxySettings::kTagId);
  auto& p = static_cast<App::HTTPProxySettings&>(*own);
  EXPECT_TRUE(p.GetEnabled());
  EXPECT_EQ(p.GetHost(), "proxy.lab.example.net");
  EXPECT_EQ(p.GetPort(), 3128);
  EXPECT_EQ(p.GetExclusions(), (std::vector<std::string>{"*.lab.example.net", "localhost"}));

  auto fs02 = settings("FS02");
  ASSERT_NE(fs02, nullptr);
  ASSERT_EQ(fs02->getTagId(), App::HTTPProxySettings::kTagId);
  EXPECT_FALSE(static_cast<App::HTTPProxySettings&>(*fs02).GetEnabled()) << "its own property";
  EXPECT_EQ(static_cast<App::HTTPProxySettings&>(*fs02).GetHost(), "proxy.lab.example.net");

  req.SetClientName("nobody");
  EXPECT_EQ(Said(HandleXml(req.getTagId(), Xml(req)).xml), "1: client 'nobody' does not exist");
}

TEST_F(XmlHandlersTest, LogMonitoringReadsAndChangesParametersWithThePassthroughsIds) {
  GetLogMonitoringParamReq get;
  get.id = 3;
  get.type = 2;
  get.name = "nIntervalSeconds";
  GetLogMonitoringParamResp value = client_.Call(kGetLogMonitoringParam, get);
  EXPECT_EQ(value.hdr.errorCode, 0);
  EXPECT_STREQ(value.value, "300");
  get.type = 1;
  Outcome missing = OutcomeOf(client_.Call(kGetLogMonitoringParam, get));
  EXPECT_EQ(missing.code, kStoreErrNotFound);
  EXPECT_EQ(missing.text, "log-monitoring parameter 'nIntervalSeconds' of type 1 is not set for 3");
  EXPECT_TRUE(missing.restZero);
  get.name = nullptr;
  EXPECT_EQ(OutcomeOf(client_.Call(kGetLogMonitoringParam, get)).text,
            "the request carries no parameter name");

  auto passthrough = [&](uint64_t id1, uint64_t id2, const CNMessageBase& m) {
    std::string xml = Xml(m);
    HandleLogMonitorXMLReq req;
    req.id1 = id1;
    req.id2 = id2;
    req.extra = "";
    req.xml = xml.c_str();
    HandleLogMonitorXMLResp r = client_.Call(kHandleLogMonitorXml, req);
    return Read(r.xml);
  };
  // Entity and type left out: the ids stand in for them.
  auto params = passthrough(3, 1, App::LogMonitoringParamsReq());
  ASSERT_NE(params, nullptr);
  ASSERT_EQ(params->getTagId(), App::LogMonitoringParams::kTagId);
  auto& list = static_cast<App::LogMonitoringParams&>(*params);
  EXPECT_EQ(list.GetEntityId(), 3);
  EXPECT_EQ(list.GetParams().size(), 2u) << "type 1 only";

  App::SetLogMonitoringParams set;
  set.SetAction(App::SetLogMonitoringParams::kActionReplace);
  set.AddParam({5, "sOnly", "x"});
  auto done = passthrough(4, 0, set);
  ASSERT_NE(done, nullptr);
  EXPECT_EQ(StatusOf(*done), 0) << ErrorTextOf(*done);
  std::vector<LogParam> stored;
  ASSERT_OK(LogMonitorStore(served_.store()).List(4, 0, true, &stored));
  EXPECT_EQ(stored, (std::vector<LogParam>{{5, "sOnly", "x"}}));

  App::LogMonitoringParamsReq every;
  every.SetEntityId(3);
  every.SetType(0);
  auto all = passthrough(4, 1, every);
  ASSERT_NE(all, nullptr);
  EXPECT_EQ(static_cast<App::LogMonitoringParams&>(*all).GetParams().size(), 3u)
      << "the document's own entity and type win; type 0 is every type";

  set.SetAction(9);
  EXPECT_EQ(StatusOf(*passthrough(4, 0, set)), kStoreErrInvalidArgument);
  App::SetLogMonitoringParams wide;
  wide.SetAction(App::SetLogMonitoringParams::kActionSet);
  wide.AddParam({int64_t{1} << 32, "n", ""});
  EXPECT_EQ(ErrorTextOf(*passthrough(4, 0, wide)),
            "log-monitoring type 4294967296 is not within 0 to 4294967295");
  // Only log-monitoring messages travel here.
  auto other = passthrough(3, 1, KPGui::AlertListReq());
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(StatusOf(*other), kKpErrNotSupported);
}

TEST_F(XmlHandlersTest, TheAgentPassthroughRoutesItsDocumentAndAnswersItsStatusInTheHeader) {
  auto dax = [&](uint64_t client, const std::string& xml) {
    HandleDaxXMLReq req;
    req.id1 = client;
    req.id2 = 77;
    req.xml = xml.c_str();
    return client_.Call(kHandleDaxXml, req);
  };
  KPGui::AlertListReq ask;
  ask.SetLimit(1);
  HandleDaxXMLResp r = dax(3, Xml(ask));
  EXPECT_EQ(r.hdr.errorCode, 0);
  EXPECT_EQ(Said(r.xml), "tag 0x01000021");

  r = dax(99, Xml(ask));
  EXPECT_EQ(r.hdr.errorCode, kStoreErrNotFound);
  EXPECT_STREQ(r.hdr.errorText, "client 99 does not exist");
  EXPECT_EQ(Said(r.xml), "1: client 99 does not exist");

  KPGui::SyncSRMClientAdvisories sync;
  sync.SetClientId(42);
  r = dax(0, Xml(sync));
  EXPECT_EQ(r.hdr.errorCode, kStoreErrNotFound) << "the route's status is the header's code";
  EXPECT_EQ(Said(r.xml), "1: client 42 does not exist");

  r = dax(0, "not xml at all");
  EXPECT_EQ(r.hdr.errorCode, kStoreErrInvalidArgument);
}

}  // namespace
}  // namespace appmgr::server
