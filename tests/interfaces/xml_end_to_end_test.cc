// Alerts, XML routing, advisories, log monitoring and the agent passthrough through the library
// against the real appmgrd on its demo data: every operation's success and the server's refusal
// as the operation reports it, and hostile clients that get clear errors while the server goes on.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "adapters/AdaptersInterfaceNet.h"
#include "appmgr/EvAlertEx.h"
#include "interfaces/DaxBackupInterfaceNet.h"
#include "interfaces/LogMonitorInterfaceNet.h"
#include "platform/net/ControlRecords.h"
#include "platform/net/Frame.h"
#include "platform/net/XdrCodec.h"
#include "platform/xml/AppMessages.h"
#include "platform/xml/KPGuiMessages.h"
#include "server/store/StoreErrors.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/AppmgrdProcess.h"
#include "tests/support/RawPeer.h"

namespace {

using appmgr::net::Deadline;
using appmgr::net::FrameConn;
using appmgr::net::FrameKind;
using appmgr::server::kStoreErrConflict;
using appmgr::server::kStoreErrInvalidArgument;
using appmgr::server::kStoreErrNotFound;

constexpr int kUnserializationFailed = 0x000b0002;

// The generic response's status and text, as "status: text"; "tag 0x..." for another message.
std::string Outcome(const CNMessageBase* m) {
  if (m == nullptr) return "null";
  if (m->getTagId() != KPGui::AlertResponse::kTagId) {
    char tag[32];
    snprintf(tag, sizeof tag, "tag 0x%08lx", m->getTagId());
    return tag;
  }
  const auto& r = static_cast<const KPGui::AlertResponse&>(*m);
  return std::to_string(r.GetStatus()) + ": " + r.GetErrorText();
}

class XmlEndToEnd : public SessionFixture {
 protected:
  void SetUp() override {
    AppmgrdProcess::Options o;
    o.fixture = AppmgrdProcess::DemoFixture();
    server_ = std::make_unique<AppmgrdProcess>(o);
    Settings("[Controlhost]\nsHOSTNAME = " + server_->host() + "\nsCLIENTNAME = controlhost\n");
  }

  // processXMLRequest, the answer owned.
  std::unique_ptr<CNMessageBase> Process(CNMessageBase& request, int* status = nullptr) {
    CNMessageBase* answer = nullptr;
    int rc = a_.processXMLRequest(request, answer, err_, nullptr);
    if (status) *status = rc;
    EXPECT_EQ(rc, 0) << err_;
    return std::unique_ptr<CNMessageBase>(answer);
  }

  // A raw session that has passed the hello, for clients that misbehave.
  FrameConn Raw() {
    appmgr::net::Socket sock;
    EXPECT_FALSE(
        appmgr::net::Socket::Connect("127.0.0.1", server_->port(), Deadline::After(5000), &sock));
    FrameConn conn(std::move(sock));
    appmgr::net::HelloRecord hello;
    hello.frameVersion = 1;
    hello.service = "AppManager network access";
    hello.client = "hostile";
    std::vector<uint8_t> out;
    appmgr::wire::EncodeRecord(hello, out);
    kpsHostProtocolHeader h;
    h.control = appmgr::net::MakeControl(FrameKind::kHello, false);
    conn.Write(h, out.data(), out.size(), Deadline::After(5000));
    kpsHostProtocolHeader answer;
    EXPECT_TRUE(RawPeer::ReadFrame(conn, &answer));
    EXPECT_EQ(appmgr::net::KindOf(answer), FrameKind::kHelloAccept);
    return conn;
  }

  std::unique_ptr<AppmgrdProcess> server_;
  AdaptersInterfaceNet a_;
  std::string err_;
};

TEST_F(XmlEndToEnd, AlertsArriveBothWaysAndAreListedAndAcknowledged) {
  EvAlertEx record;
  record.setAlertType(12);
  record.setClientId(3);
  record.setDescription("backup of db01 failed");
  record.setClientList({"db01"});
  record.addEventMsg({1, 2, 3, 4, "retrying"});
  ASSERT_EQ(a_.SendAlert(record, err_), 0) << err_;
  record.setClientId(0x80000000L);  // narrowed on the way: no such client
  EXPECT_EQ(a_.SendAlert(record, err_), kStoreErrNotFound);
  EXPECT_EQ(err_, "client -2147483648 does not exist");

  KPGui::AlertEvAlertExList list;
  list.AddAlert({40, KPGui::AlertItem::kSeverityCritical, 4, "", 1700100000, "library offline"});
  err_.clear();
  ASSERT_EQ(a_.SendAlert(list, err_), 0) << err_;
  list.AddAlert({41, 7, 4, "", 1700100001, "bad severity"});
  EXPECT_EQ(a_.SendAlert(list, err_), kStoreErrInvalidArgument) << "refused in the header";
  EXPECT_EQ(
      err_,
      "alert 2 of 2: severity 7 is not one of 0 none, 1 info, 2 warning, 3 error, 4 critical");

  KPGui::AlertListReq ask;
  ask.SetUnacknowledgedOnly(true);
  std::unique_ptr<CNMessageBase> answer = Process(ask);
  ASSERT_EQ(Outcome(answer.get()), "tag 0x01000021");
  auto alerts = static_cast<KPGui::AlertListResp&>(*answer).GetAlerts();
  ASSERT_EQ(alerts.size(), 4u) << "two of the demo's, the record and one of the list";
  EXPECT_EQ(alerts[2].text, "backup of db01 failed");
  EXPECT_EQ(alerts[2].source, KPGui::AlertRecord::kSourceRecord);
  EXPECT_NE(alerts[2].details.find("\"clients\":[\"db01\"]"), std::string::npos)
      << alerts[2].details;
  EXPECT_EQ(alerts[3].text, "library offline");
  EXPECT_EQ(alerts[3].clientName, "fs02");

  KPGui::AlertAckReq ack;
  ack.AddAlertId(alerts[2].alertId);
  ack.SetBy("ops");
  EXPECT_EQ(Outcome(Process(ack).get()), "0: ");
  KPGui::AlertAckReq missing;
  missing.AddAlertId(4242);
  EXPECT_EQ(Outcome(Process(missing).get()), "1: alert 4242 does not exist");
  EXPECT_EQ(static_cast<KPGui::AlertListResp&>(*Process(ask)).GetAlerts().size(), 3u);

  // A tag nobody serves: the XML error answer, not a failed exchange.
  CNMessageBase unknown(0x0badcafe);
  EXPECT_EQ(Outcome(Process(unknown).get()),
            "1008: no handler for XML message CNMessage (tag 0x0badcafe) here");
}

TEST_F(XmlEndToEnd, AdvisoriesAndProxySettingsAnswerTheirStatusOrTheirMessage) {
  KPGui::SyncSRMClientAdvisories sync;
  sync.SetClientId(4);
  sync.AddAdvisory({9002, 2, "Compression library memory corruption"});
  sync.AddAdvisory({9010, 1, "Kernel privilege escalation"});
  EXPECT_EQ(a_.syncSRMClientAdvisories(sync, err_), 0);
  EXPECT_EQ(err_, "");
  sync.SetClientId(99);
  EXPECT_EQ(a_.syncSRMClientAdvisories(sync, err_), kStoreErrNotFound);
  EXPECT_EQ(err_, "client 99 does not exist");

  KPGui::SyncSRMSourceAdvisories source;
  source.SetSourceName("second-feed");
  source.AddAdvisory({9100, 3, "Old timezone data"});
  EXPECT_EQ(a_.syncSRMSourceAdvisories(source, err_), 0);
  source.AddAdvisory({9001, 1, "taken"});
  EXPECT_EQ(a_.syncSRMSourceAdvisories(source, err_), kStoreErrConflict);
  EXPECT_EQ(err_, "advisory 9001 is published by source 'vendor-feed', not 'second-feed'");

  KPGui::ControlSRMAdvisories control;
  control.SetAction(KPGui::ControlSRMAdvisories::kActionAcknowledge);
  control.AddTarget({9010, 0});
  EXPECT_EQ(a_.controlAdvisories(control, err_), 0);
  control.AddTarget({9010, 3});
  EXPECT_EQ(a_.controlAdvisories(control, err_), kStoreErrNotFound);
  EXPECT_EQ(err_, "advisory 9010 does not apply to client 3");

  KPGui::AlertSRMAdvisoryTypeListReq types;
  types.SetClientId(4);
  KPGui::AlertSRMAdvisoryTypeListResp got;
  ASSERT_EQ(a_.getSRMAdvisoryTypes(types, got, err_), 0) << err_;
  ASSERT_EQ(got.GetTypes().size(), 2u);
  EXPECT_EQ(got.GetTypes()[0].name, "critical");
  EXPECT_EQ(got.GetTypes()[1].name, "important");
  types.SetClientId(99);
  EXPECT_EQ(a_.getSRMAdvisoryTypes(types, got, err_), kStoreErrNotFound);
  EXPECT_EQ(err_, "client 99 does not exist");

  App::GetHTTPProxySettingsReq proxy;
  proxy.SetClientName("db01");
  App::HTTPProxySettings settings;
  ASSERT_EQ(a_.GetHTTPProxySettings(proxy, settings, err_), 0) << err_;
  EXPECT_TRUE(settings.GetEnabled());
  EXPECT_EQ(settings.GetHost(), "proxy.lab.example.net");
  EXPECT_EQ(settings.GetPort(), 3128);
  proxy.SetClientName("nobody");
  EXPECT_EQ(a_.GetHTTPProxySettings(proxy, settings, err_), kCNErrWrongTag)
      << "the settings did not come: the reader's code";
  EXPECT_EQ(err_, "client 'nobody' does not exist") << "and the server's reason";

  // Raw XML: a type only a central App Manager serves is not served here, in the answer's XML.
  std::string xml = "<x/>";
  EXPECT_EQ(a_.handleXMLReq(1, 0x1e70954d, xml, err_, "", 0), 0) << "the exchange succeeded";
  KPGui::AlertResponse refusal;
  ASSERT_EQ(refusal.unserialize(xml), 0) << xml;
  EXPECT_EQ(refusal.GetStatus(), kKpErrNotSupported);
  EXPECT_EQ(refusal.GetErrorText(), "no handler for XML message type 0x1e70954d here");
}

TEST_F(XmlEndToEnd, LogMonitoringAndTheAgentPassthroughReportAsTheirCallersExpect) {
  LogMonitorInterfaceNet logmon;
  std::string value = "before", err = "untouched";
  ASSERT_EQ(logmon.getProperties(3, 2, "nIntervalSeconds", value, err, nullptr), 0);
  EXPECT_EQ(value, "300");
  EXPECT_EQ(logmon.getProperties(3, 2, "sMissing", value, err, nullptr), kStoreErrNotFound);
  EXPECT_EQ(value, "300");
  EXPECT_EQ(err, "untouched");

  App::SetLogMonitoringParams set;
  set.SetAction(App::SetLogMonitoringParams::kActionSet);
  set.AddParam({2, "nKeepDays", "14"});
  std::string xml;
  ASSERT_EQ(set.serialize(xml), 0);
  ASSERT_EQ(logmon.logMonitoringOperation(3, 0, xml), 0);
  EXPECT_EQ(Outcome(CNMessageBase::FromXml(xml.data(), xml.size(), nullptr).get()), "0: ");
  App::LogMonitoringParamsReq list;
  ASSERT_EQ(list.serialize(xml), 0);
  ASSERT_EQ(logmon.logMonitoringOperation(3, 2, xml), 0);
  App::LogMonitoringParams params;
  ASSERT_EQ(params.unserialize(xml), 0) << xml;
  EXPECT_EQ(params.GetParams(), (std::vector<App::LogMonitoringParam>{
                                    {2, "nIntervalSeconds", "300"}, {2, "nKeepDays", "14"}}));
  // A refusal travels in the answer; the operation still reports a good exchange.
  set.SetAction(App::SetLogMonitoringParams::kActionRemove);
  set.AddParam({2, "sMissing", ""});
  ASSERT_EQ(set.serialize(xml), 0);
  EXPECT_EQ(logmon.logMonitoringOperation(3, 0, xml), 0);
  EXPECT_EQ(Outcome(CNMessageBase::FromXml(xml.data(), xml.size(), nullptr).get()),
            "1: log-monitoring parameter 'sMissing' of type 2 is not set for 3");

  DaxBackupInterfaceNet dax;
  KPGui::AlertListReq ask;
  ask.SetClientId(3);
  ASSERT_EQ(ask.serialize(xml), 0);
  ASSERT_EQ(dax.handleXMLRequest(3, 4711, xml), 0);
  EXPECT_EQ(Outcome(CNMessageBase::FromXml(xml.data(), xml.size(), nullptr).get()),
            "tag 0x01000021");
  ASSERT_EQ(ask.serialize(xml), 0);
  EXPECT_EQ(dax.handleXMLRequest(99, 0, xml), kStoreErrNotFound);
  EXPECT_EQ(Outcome(CNMessageBase::FromXml(xml.data(), xml.size(), nullptr).get()),
            "1: client 99 does not exist")
      << "the answer comes back with the failure";
}

TEST_F(XmlEndToEnd, HostileClientsGetClearErrorsAndTheServerGoesOn) {
  FrameConn conn = Raw();
  auto read = [&](kpsHostProtocolHeader* h, std::string* text) {
    const uint8_t* p = nullptr;
    size_t n = 0;
    EXPECT_FALSE(conn.Read(h, &p, &n, Deadline::After(5000), 1u << 20));
    if (appmgr::net::KindOf(*h) == FrameKind::kError) {
      appmgr::net::ReasonRecord r;
      appmgr::wire::Arena arena;
      EXPECT_FALSE(appmgr::wire::DecodeRecord(p, n, r, arena));
      *text = r.text ? r.text : "";
    } else {
      *text = std::string(reinterpret_cast<const char*>(p), n);
    }
  };
  auto xmlFrame = [](uint64_t tag, uint32_t seq) {
    kpsHostProtocolHeader h;
    h.msgId = tag;
    h.control = appmgr::net::MakeControl(FrameKind::kXml, false);
    h.status = appmgr::net::MakeStatus(seq, 0);
    return h;
  };
  // An XML frame that is no document: an error frame saying why.
  const std::string garbage = "<KPGui.AlertListReq tag=\"0x01000020\"><int n=\"1\">x</int>";
  ASSERT_FALSE(
      conn.Write(xmlFrame(0x01000020, 1), garbage.data(), garbage.size(), Deadline::After(5000)));
  kpsHostProtocolHeader h;
  std::string text;
  read(&h, &text);
  EXPECT_EQ(appmgr::net::KindOf(h), FrameKind::kError);
  EXPECT_EQ(appmgr::net::StatusOf(h), kKpErrProtocol);
  EXPECT_TRUE(text.starts_with("the XML request could not be read (")) << text;

  // XML inside a binary request that is no document: the XML error answer.
  HandleXMLReq req;
  req.hdr.version = 2;
  req.xmlType = KPGui::AlertListReq::kTagId;
  req.xml = "\xff\xfe not xml";
  std::vector<uint8_t> payload;
  appmgr::wire::EncodeRecord(req, payload);
  kpsHostProtocolHeader binary;
  binary.msgId = appmgr::msg::kHandleXml.requestId;
  binary.control = appmgr::net::MakeControl(FrameKind::kBinary, false);
  binary.recordLength = sizeof(HandleXMLReq);
  binary.status = appmgr::net::MakeStatus(2, 0);
  ASSERT_FALSE(conn.Write(binary, payload.data(), payload.size(), Deadline::After(5000)));
  read(&h, &text);
  ASSERT_EQ(appmgr::net::KindOf(h), FrameKind::kBinary);
  {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(text.data());
    HandleXMLResp resp;
    appmgr::wire::Arena arena;
    ASSERT_FALSE(appmgr::wire::DecodeRecord(p, text.size(), resp, arena));
    EXPECT_EQ(resp.hdr.errorCode, kStoreErrInvalidArgument);
    EXPECT_EQ(Outcome(CNMessageBase::FromXml(resp.xml, strlen(resp.xml), nullptr).get())
                  .rfind("3: the XML document could not be read (1101): ", 0),
              0u);
  }

  // A frame above the server's limit: refused unread, with the reason, and the connection ends.
  kpsHostProtocolHeader huge = xmlFrame(0x01000020, 3);
  huge.payloadLength = (64ull << 20);
  uint8_t header[appmgr::net::kFrameHeaderBytes];
  appmgr::net::EncodeFrameHeader(huge, header);
  ASSERT_FALSE(conn.socket().SendAll(header, sizeof header, Deadline::After(5000), "test"));
  read(&h, &text);
  EXPECT_EQ(appmgr::net::StatusOf(h), kKpErrLimit);
  EXPECT_TRUE(text.starts_with("frame of 67108864 bytes exceeds the limit of ")) << text;

  // The library refuses to send a document above its own frame limit, and says so.
  Settings("[Controlhost]\nsHOSTNAME = " + server_->host() +
           "\nsCLIENTNAME = controlhost\n[Network]\nnMaxFrameBytes = 65536\n");
  appmgr::net::ReloadFrameLimit();
  std::string big = "<x>" + std::string(70000, 'x') + "</x>";
  int status = a_.handleXMLReq(1, KPGui::AlertListReq::kTagId, big, err_, "", 0);
  Settings("[Controlhost]\nsHOSTNAME = " + server_->host() + "\nsCLIENTNAME = controlhost\n");
  appmgr::net::ReloadFrameLimit();
  EXPECT_EQ(status, kKpErrLimit);
  EXPECT_NE(err_.find("above the frame limit"), std::string::npos) << err_;

  // And the server still serves.
  KPGui::AlertListReq ask;
  EXPECT_EQ(Outcome(Process(ask).get()), "tag 0x01000021");
  EXPECT_TRUE(server_->running());
}

}  // namespace
