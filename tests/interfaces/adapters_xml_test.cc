// XML routing of AdaptersInterfaceNet against the scriptable server: which pool a raw XML
// request takes, how the typed requests read their answer's tag, the XML exchange on the session,
// and what a hostile answer does.
#include <gtest/gtest.h>

#include <functional>
#include <typeinfo>

#include "adapters/AdaptersInterfaceNet.h"
#include "platform/xml/AppMessages.h"
#include "platform/xml/KPGuiMessages.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/RawPeer.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::ConnectionInfo;
using appmgr::server::Exchange;

constexpr int kUnserializationFailed = 0x000b0002;

std::string GenericResponse(int64_t status, const std::string& text) {
  KPGui::AlertResponse r;
  r.SetStatus(status);
  r.SetErrorText(text);
  std::string xml;
  EXPECT_EQ(r.serialize(xml), 0);
  return xml;
}

class XmlTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }

  // Answers `op` with this tag id and text, and this header code and text.
  void Answer(const appmgr::wire::Op<SendKpAlertXML_Req, SendKpAlertXML_Resp>& op, uint64_t tag,
              std::string xml, int32_t code = 0, const char* codeText = nullptr) {
    server_.On(op,
               [=, this](const SendKpAlertXML_Req& req, SendKpAlertXML_Resp& resp, Exchange& x) {
                 sentTag_ = req.tagId;
                 sentXml_ = req.xml ? req.xml : "";
                 resp.tagId = tag;
                 resp.xml = x.Text(xml);
                 resp.hdr.errorCode = code;
                 resp.hdr.errorText = codeText;
               });
  }

  ScriptServer server_;
  AdaptersInterfaceNet adapters_;
  std::string err_;
  uint64_t sentTag_ = 0;
  std::string sentXml_;
};

TEST_F(XmlTest, CentralOnlyTypesSkipTheLitePoolAndOthersTakeIt) {
  ScriptServer lite;
  Settings(ControlhostAt(server_) + LiteAt(lite));
  auto script = [](ScriptServer& s, const char* who) {
    s.On(msg::kHandleXml,
         [who](const HandleXMLReq&, HandleXMLResp& resp, Exchange& x) { resp.xml = x.Text(who); });
  };
  script(server_, "central");
  script(lite, "lite");
  for (unsigned long type :
       {0x1e70954dul, 0x1e980685ul, 0x168df5d9ul, 0x1e752270ul, 0x644c8485ul, 0x7657b53eul}) {
    std::string xml = "<x/>";
    ASSERT_EQ(adapters_.handleXMLReq(1, type, xml, err_, "", 0), 0) << err_;
    EXPECT_EQ(xml, "central") << std::hex << type;
  }
  std::string xml = "<x/>";
  ASSERT_EQ(adapters_.handleXMLReq(1, 0x1e392f0b, xml, err_, "", 0), 0) << err_;
  EXPECT_EQ(xml, "lite");

  size_t routed = 0;
  for (const EvLogRecord& r : log_.Records()) {
    if (r.text.rfind("Routing xml message request [", 0) != 0) continue;
    ++routed;
    EXPECT_EQ(r.label, "AdaptersInterfaceNet::handleXMLReq");
    EXPECT_EQ(r.level, 10);
  }
  EXPECT_EQ(routed, 6u);
  EXPECT_EQ(log_.Count("Routing xml message request [510694733] to CH App Manager..."), 1u);
}

TEST_F(XmlTest, HandleXmlReqSendsEveryFieldAndIgnoresTheHeader) {
  HandleXMLReq seen;
  std::string extra, sent;
  server_.On(msg::kHandleXml, [&](const HandleXMLReq& req, HandleXMLResp& resp, Exchange& x) {
    seen = req;
    extra = req.extra;
    sent = req.xml;
    resp.hdr.errorCode = 9;
    resp.hdr.errorText = "inside the answer";
    resp.xml = x.Text("<answer/>");
  });
  std::string xml = "<question/>";
  EXPECT_EQ(adapters_.handleXMLReq(4, 77, xml, err_, "extra text", 5), 0);
  EXPECT_EQ(xml, "<answer/>");
  EXPECT_EQ(err_, "");
  EXPECT_EQ(seen.route, 4u);
  EXPECT_EQ(seen.xmlType, 77u);
  EXPECT_EQ(seen.value, 5u);
  EXPECT_EQ(extra, "extra text");
  EXPECT_EQ(sent, "<question/>");

  server_.On(msg::kHandleXml, [](const HandleXMLReq&, HandleXMLResp&, Exchange&) {});
  EXPECT_EQ(adapters_.handleXMLReq(4, 77, xml, err_, "", 5), 0);
  EXPECT_EQ(xml, "") << "a null answer is an empty text";

  server_.Stop();
  xml = "<kept/>";
  EXPECT_NE(adapters_.handleXMLReq(4, 77, xml, err_, "", 5), 0);
  EXPECT_EQ(xml, "<kept/>");
}

// The three requests answered by the generic response alone.
struct AdvisoryOp {
  const char* name;
  const appmgr::wire::Op<SendKpAlertXML_Req, SendKpAlertXML_Resp>* op;
  uint64_t tag;
  std::function<int(AdaptersInterfaceNet&, std::string&)> call;
};

std::vector<AdvisoryOp> AdvisoryOps() {
  return {
      {"AdaptersInterfaceNet::syncSRMClientAdvisories()", &msg::kSyncSrmClientAdvisories,
       0x010003fc,
       [](AdaptersInterfaceNet& a, std::string& e) {
         KPGui::SyncSRMClientAdvisories m;
         m.SetClientId(11);
         m.AddAdvisory({5, 2, "openssl"});
         return a.syncSRMClientAdvisories(m, e);
       }},
      {"AdaptersInterfaceNet::syncSRMSourceAdvisories()", &msg::kSyncSrmSourceAdvisories,
       0x010003fd,
       [](AdaptersInterfaceNet& a, std::string& e) {
         KPGui::SyncSRMSourceAdvisories m;
         m.SetSourceName("feed");
         return a.syncSRMSourceAdvisories(m, e);
       }},
      {"AdaptersInterfaceNet::controlAdvisories()", &msg::kControlSrmAdvisories, 0x010003fe,
       [](AdaptersInterfaceNet& a, std::string& e) {
         KPGui::ControlSRMAdvisories m;
         m.SetAction(KPGui::ControlSRMAdvisories::kActionAcknowledge);
         m.AddTarget({5, 0});
         return a.controlAdvisories(m, e);
       }},
  };
}

TEST_F(XmlTest, AdvisoryRequestsCarryTheirTagAndAnswerTheGenericResponsesStatus) {
  for (const AdvisoryOp& op : AdvisoryOps()) {
    SCOPED_TRACE(op.name);
    // The header says failure; the XML decides, and its text replaces the header's.
    Answer(*op.op, 0x010003f0, GenericResponse(7, "seven"), 4, "header text");
    err_ = "before";
    EXPECT_EQ(op.call(adapters_, err_), 7);
    EXPECT_EQ(err_, "seven");
    EXPECT_EQ(sentTag_, op.tag);
    int rc = -1;
    std::unique_ptr<CNMessageBase> sent =
        CNMessageBase::FromXml(sentXml_.data(), sentXml_.size(), &rc);
    ASSERT_NE(sent, nullptr);
    EXPECT_EQ(sent->getTagId(), op.tag);

    Answer(*op.op, 0x010003f0, GenericResponse(0, ""));
    err_ = "before";
    EXPECT_EQ(op.call(adapters_, err_), 0);
    EXPECT_EQ(err_, "") << "the response's text is copied even when empty";
    EXPECT_EQ(server_.Count(op.op->requestId), 2u);
  }
}

TEST_F(XmlTest, AdvisoryAnswersOfAnotherTagOrUnreadableAreRefused) {
  for (const AdvisoryOp& op : AdvisoryOps()) {
    SCOPED_TRACE(op.name);
    log_.Clear();
    Answer(*op.op, 0x010003f7, "<whatever/>");
    EXPECT_EQ(op.call(adapters_, err_), kUnserializationFailed);
    EXPECT_EQ(err_, "XML Message unserilization failed");
    ASSERT_EQ(log_.Count("Expecting KPGui::Tag_GenericResp, got [0x010003f7]"), 1u);
    for (const EvLogRecord& r : log_.Records()) {
      if (r.text.rfind("Expecting", 0) == 0) {
        EXPECT_EQ(r.label, op.name);
        EXPECT_TRUE(r.error);
      }
    }

    // The generic tag over text that is not the generic response, or no text at all.
    for (const char* hostile :
         {"<KPGui.AlertResponse tag=\"0x010003f0\"><int n=\"1\">x</int>", "\xff\xfe<", ""}) {
      Answer(*op.op, 0x010003f0, hostile);
      EXPECT_EQ(op.call(adapters_, err_), kUnserializationFailed);
      EXPECT_EQ(err_, "XML Message unserilization failed");
    }
    EXPECT_EQ(log_.CountContaining("Unserializing Generic Response"), 3u);
  }
}

TEST_F(XmlTest, ARequestThatCannotBeWrittenSendsNothing) {
  // Lists nested past the depth limit cannot be written, whatever the class declares.
  KPGui::SyncSRMClientAdvisories m;
  CNEntity* level = m.AddEntity(9);
  for (int i = 0; i < kCNMaxDepth + 1; ++i) level = level->AddEntity(9);
  EXPECT_EQ(adapters_.syncSRMClientAdvisories(m, err_), 0x000b0008);
  EXPECT_EQ(err_, "XML Message serilization failed");
  EXPECT_EQ(log_.CountContaining("Could not serialize request data. Error[1104]"), 1u);
  EXPECT_EQ(server_.Count(msg::kSyncSrmClientAdvisories.requestId), 0u);
}

TEST_F(XmlTest, AdvisoryTypesAreReadFromTheListOrFromTheGenericResponse) {
  KPGui::AlertSRMAdvisoryTypeListResp list;
  list.AddType({1, "critical", "patch now"});
  list.AddType({2, "info", ""});
  std::string listXml;
  ASSERT_EQ(list.serialize(listXml), 0);
  KPGui::AlertSRMAdvisoryTypeListReq req;
  req.SetClientId(42);

  Answer(msg::kGetSrmAdvisoryTypes, 0x010003f7, listXml);
  KPGui::AlertSRMAdvisoryTypeListResp got;
  ASSERT_EQ(adapters_.getSRMAdvisoryTypes(req, got, err_), 0) << err_;
  EXPECT_EQ(got.GetTypes(), list.GetTypes());
  EXPECT_EQ(sentTag_, 0x010003f6u);

  Answer(msg::kGetSrmAdvisoryTypes, 0x010003f0, GenericResponse(1, "client 42 does not exist"));
  EXPECT_EQ(adapters_.getSRMAdvisoryTypes(req, got, err_), 1);
  EXPECT_EQ(err_, "client 42 does not exist");

  Answer(msg::kGetSrmAdvisoryTypes, 0x010003f7, "<not the list/>");
  EXPECT_EQ(adapters_.getSRMAdvisoryTypes(req, got, err_), kUnserializationFailed);
  EXPECT_EQ(err_, "XML Message unserilization failed");
  EXPECT_EQ(got.GetTypes(), list.GetTypes()) << "a failed read leaves the answer as it was";

  Answer(msg::kGetSrmAdvisoryTypes, 0x010003fc, listXml);
  EXPECT_EQ(adapters_.getSRMAdvisoryTypes(req, got, err_), kUnserializationFailed);
  EXPECT_EQ(log_.Count("Expecting KPGui::Tag_AlertSRMAdvisoryTypeListResp, got [0x010003fc]"), 1u);
}

TEST_F(XmlTest, TheAlertListLogsAZeroSizeAndAnswersByTheHeaderAlone) {
  KPGui::AlertEvAlertExList alerts;
  alerts.AddAlert({1, 3, 11, "agent01", 1700000000, "disk full"});
  // The answer's XML is not read: neither a foreign tag nor garbage matters.
  Answer(msg::kSendKpAlertXml, 0x12345678, "garbage <<");
  ASSERT_EQ(adapters_.SendAlert(alerts, err_), 0) << err_;
  EXPECT_EQ(sentTag_, 0x0100001fu);
  KPGui::AlertEvAlertExList back;
  ASSERT_EQ(back.unserialize(sentXml_), 0);
  EXPECT_EQ(back.GetAlerts(), alerts.GetAlerts());
  ASSERT_EQ(log_.Count("Size of XML is [0]"), 1u);
  for (const EvLogRecord& r : log_.Records()) {
    if (r.text == "Size of XML is [0]") {
      EXPECT_EQ(r.label, "AdaptersInterfaceNet::SendAlert(string & alert ..");
      EXPECT_EQ(r.level, 3);
    }
  }

  Answer(msg::kSendKpAlertXml, 0x010003f0, GenericResponse(0, ""), 2, "alert 1 already stored");
  EXPECT_EQ(adapters_.SendAlert(alerts, err_), 2);
  EXPECT_EQ(err_, "alert 1 already stored");
}

TEST_F(XmlTest, ProcessXmlRequestHandsOverTheAnswerOfItsClass) {
  server_.core().HandleXml(
      App::GetHTTPProxySettingsReq::kTagId, [](const CNMessageBase& req, const ConnectionInfo&) {
        auto answer = std::make_unique<App::HTTPProxySettings>();
        answer->SetHost(static_cast<const App::GetHTTPProxySettingsReq&>(req).GetClientName() +
                        ".proxy");
        return std::unique_ptr<CNMessageBase>(std::move(answer));
      });
  App::GetHTTPProxySettingsReq req;
  req.SetClientName("agent01");
  CNMessageBase* response = nullptr;
  ASSERT_EQ(adapters_.processXMLRequest(req, response, err_, nullptr), 0) << err_;
  std::unique_ptr<CNMessageBase> owned(response);
  ASSERT_EQ(typeid(*owned), typeid(App::HTTPProxySettings));
  EXPECT_EQ(static_cast<App::HTTPProxySettings&>(*owned).GetHost(), "agent01.proxy");
  EXPECT_EQ(log_.Count(
                "Sending XML Message [App::GetHTTPProxySettingsReq] with timeout [300] minutes..."),
            1u);
  EXPECT_EQ(log_.Count("Receiving XML Message with timeout [300] minutes..."), 1u);
  EXPECT_EQ(log_.Count("Got response [App::HTTPProxySettings]."), 1u);
}

TEST_F(XmlTest, ProcessXmlRequestReportsAnEmptyAnswerAndAServersRefusal) {
  server_.core().HandleXml(App::GetHTTPProxySettingsReq::kTagId,
                           [](const CNMessageBase&, const ConnectionInfo&) { return nullptr; });
  App::GetHTTPProxySettingsReq req;
  CNMessageBase* response = nullptr;
  EXPECT_EQ(adapters_.processXMLRequest(req, response, err_, nullptr), 0x000a0004);
  EXPECT_EQ(err_, "Response is null");
  EXPECT_EQ(response, nullptr);
  EXPECT_EQ(log_.Count("Error : Response is null."), 1u);

  // No handler for the tag: the server answers with an error frame.
  KPGui::AlertSRMAdvisoryTypeListReq other;
  EXPECT_EQ(adapters_.processXMLRequest(other, response, err_, nullptr), kKpErrNotSupported);
  EXPECT_NE(err_.find("no handler for XML tag 0x010003f6"), std::string::npos) << err_;
  EXPECT_EQ(response, nullptr);
  EXPECT_EQ(log_.CountContaining("ReceiveXMLMessage() failed. Error [1008 - "), 1u);
  EXPECT_EQ(log_.CountContaining("timedOut[FALSE]"), 1u);
}

TEST_F(XmlTest, ProcessXmlRequestFromAHostileServerGetsAnErrorNotACrash) {
  // A peer that accepts the hello and answers every request with text that is no message.
  RawPeer peer([](appmgr::net::Socket& socket) {
    appmgr::net::FrameConn conn(std::move(socket));
    if (!RawPeer::AcceptHello(conn)) return;
    for (const char* text : {"<<<not xml", "<KPGui.AlertResponse tag=\"0x010003f0\">"}) {
      kpsHostProtocolHeader h;
      if (!RawPeer::ReadFrame(conn, &h)) return;
      kpsHostProtocolHeader answer;
      answer.msgId = 0x010003f0;
      answer.control = appmgr::net::MakeControl(appmgr::net::FrameKind::kXml, true);
      answer.status = h.status;
      conn.Write(answer, text, strlen(text), appmgr::net::Deadline::After(5000));
    }
  });
  Settings("[Controlhost]\nsHOSTNAME = 127.0.0.1:" + std::to_string(peer.port()) +
           "\nsCLIENTNAME = ch01\n");
  App::GetHTTPProxySettingsReq req;
  for (int i = 0; i < 2; ++i) {
    CNMessageBase* response = nullptr;
    EXPECT_EQ(adapters_.processXMLRequest(req, response, err_, nullptr), kKpErrProtocol);
    EXPECT_NE(err_.find("could not be read"), std::string::npos) << err_;
    EXPECT_EQ(response, nullptr);
  }
}

TEST_F(XmlTest, AnAnswerAboveTheFrameLimitIsRefusedUnread) {
  // A peer that answers with a frame header announcing more than any frame may carry.
  RawPeer peer([](appmgr::net::Socket& socket) {
    appmgr::net::FrameConn conn(std::move(socket));
    if (!RawPeer::AcceptHello(conn)) return;
    kpsHostProtocolHeader h;
    if (!RawPeer::ReadFrame(conn, &h)) return;
    kpsHostProtocolHeader answer;
    answer.msgId = 0x010003f0;
    answer.control = appmgr::net::MakeControl(appmgr::net::FrameKind::kXml, true);
    answer.status = h.status;
    answer.payloadLength = 1ull << 40;
    uint8_t bytes[appmgr::net::kFrameHeaderBytes];
    appmgr::net::EncodeFrameHeader(answer, bytes);
    conn.socket().SendAll(bytes, sizeof bytes, appmgr::net::Deadline::After(5000), "test");
  });
  Settings("[Controlhost]\nsHOSTNAME = 127.0.0.1:" + std::to_string(peer.port()) +
           "\nsCLIENTNAME = ch01\n");
  App::GetHTTPProxySettingsReq req;
  CNMessageBase* response = nullptr;
  EXPECT_EQ(adapters_.processXMLRequest(req, response, err_, nullptr), kKpErrLimit);
  EXPECT_EQ(response, nullptr);
  EXPECT_EQ(log_.CountContaining("ReceiveXMLMessage() failed. Error [1009 - "), 1u);
}

TEST_F(XmlTest, ProxySettingsTravelAsRawXmlOfTheirOwnType) {
  App::HTTPProxySettings settings;
  settings.SetEnabled(true);
  settings.SetHost("proxy.lab");
  settings.SetPort(3128);
  settings.AddExclusion("*.lab");
  std::string answer;
  ASSERT_EQ(settings.serialize(answer), 0);
  HandleXMLReq seen;
  server_.On(msg::kHandleXml, [&](const HandleXMLReq& req, HandleXMLResp& resp, Exchange& x) {
    seen = req;
    seen.xml = seen.extra = nullptr;
    resp.xml = x.Text(answer);
  });
  App::GetHTTPProxySettingsReq req;
  App::HTTPProxySettings got;
  ASSERT_EQ(adapters_.GetHTTPProxySettings(req, got, err_), 0) << err_;
  EXPECT_TRUE(got == settings);
  EXPECT_EQ(seen.route, 1u);
  EXPECT_EQ(seen.xmlType, 0x1e392f0bu);
  EXPECT_EQ(seen.value, 0u);

  // A refusal comes back as the generic response: its code is the reader's, its text the server's.
  answer = GenericResponse(1, "client agent09 does not exist");
  EXPECT_EQ(adapters_.GetHTTPProxySettings(req, got, err_), kCNErrWrongTag);
  EXPECT_EQ(err_, "client agent09 does not exist");
  EXPECT_EQ(log_.CountContaining("Error constructing response for input : ["), 1u);

  server_.Stop();
  long status = adapters_.GetHTTPProxySettings(req, got, err_);
  EXPECT_NE(status, 0);
  EXPECT_EQ(log_.CountContaining("Failed to fetch HTTP Proxy Settings for the request : [<App."),
            1u);
}

}  // namespace
