// Log monitoring, the agent XML passthrough and the certificate interfaces against the
// scriptable server: what each sends, which failures reach the caller and how, and that the
// certificate classes never exchange anything.
#include <gtest/gtest.h>

#include <functional>

#include "interfaces/CACertificateInterfaceNet.h"
#include "interfaces/CertificateInterfaceNet.h"
#include "interfaces/DaxBackupInterfaceNet.h"
#include "interfaces/LogMonitorInterfaceNet.h"
#include "tests/session/SessionFixture.h"

namespace {

namespace msg = appmgr::msg;
using appmgr::server::Exchange;

class PassthroughTest : public SessionFixture {
 protected:
  void SetUp() override { Settings(ControlhostAt(server_)); }
  ScriptServer server_;
  LogMonitorInterfaceNet logmon_;
  DaxBackupInterfaceNet dax_;
};

TEST_F(PassthroughTest, LogMonitoringOperationReplacesTheTextEvenWhenTheHeaderSaysError) {
  HandleLogMonitorXMLReq seen;
  std::string extra, sent;
  server_.On(msg::kHandleLogMonitorXml,
             [&](const HandleLogMonitorXMLReq& req, HandleLogMonitorXMLResp& resp, Exchange& x) {
               seen = req;
               extra = req.extra ? req.extra : "(null)";
               sent = req.xml;
               resp.hdr.errorCode = 3;
               resp.hdr.errorText = "refused";
               resp.xml = x.Text("<answer/>");
             });
  std::string xml = "<request/>";
  EXPECT_EQ(logmon_.logMonitoringOperation(7, 8, xml), 0);
  EXPECT_EQ(xml, "<answer/>");
  EXPECT_EQ(seen.reserved, 0u);
  EXPECT_EQ(seen.id1, 7u);
  EXPECT_EQ(seen.id2, 8u);
  EXPECT_EQ(extra, "") << "an empty text, not a null";
  EXPECT_EQ(sent, "<request/>");

  server_.Stop();
  xml = "<kept/>";
  EXPECT_NE(logmon_.logMonitoringOperation(7, 8, xml), 0);
  EXPECT_EQ(xml, "<kept/>");
}

TEST_F(PassthroughTest, LogMonitoringParameterNeverWritesTheErrorString) {
  server_.On(msg::kGetLogMonitoringParam, [](const GetLogMonitoringParamReq& req,
                                             GetLogMonitoringParamResp& resp, Exchange& x) {
    std::string name = req.name;
    if (name == "missing") {
      resp.hdr.errorCode = 1;
      resp.hdr.errorText = "no such parameter";
    } else if (name != "null") {
      resp.value = x.Text(name + "/" + std::to_string(req.type) + "/" + std::to_string(req.id));
    }
  });
  std::string value = "before", err = "untouched";
  ASSERT_EQ(logmon_.getProperties(42, 3, "nInterval", value, err, nullptr), 0);
  EXPECT_EQ(value, "nInterval/3/42");
  ASSERT_EQ(logmon_.getProperties(42, 3, "null", value, err, nullptr), 0);
  EXPECT_EQ(value, "nInterval/3/42") << "a null answer leaves the value";
  EXPECT_EQ(logmon_.getProperties(42, 3, "missing", value, err, nullptr), 1);
  EXPECT_EQ(value, "nInterval/3/42");
  EXPECT_EQ(err, "untouched");
  server_.Stop();
  EXPECT_NE(logmon_.getProperties(42, 3, "nInterval", value, err, nullptr), 0);
  EXPECT_EQ(err, "untouched");
}

TEST_F(PassthroughTest, AgentRequestAnswersTheHeadersCodeWithTheAnswerAndNoVersionCheck) {
  HandleDaxXMLReq seen;
  int32_t code = 5;
  uint64_t version = 2;
  server_.On(msg::kHandleDaxXml,
             [&](const HandleDaxXMLReq& req, HandleDaxXMLResp& resp, Exchange& x) {
               seen = req;
               seen.xml = nullptr;
               resp.hdr.version = version;
               resp.hdr.errorCode = code;
               resp.xml = x.Text("<status code=\"" + std::to_string(code) + "\"/>");
             });
  std::string xml = "<request/>";
  EXPECT_EQ(dax_.handleXMLRequest(11, 22, xml), 5);
  EXPECT_EQ(xml, "<status code=\"5\"/>") << "replaced although the code is not 0";
  EXPECT_EQ(seen.id1, 11u);
  EXPECT_EQ(seen.id2, 22u);
  EXPECT_EQ(seen.reserved1 + seen.reserved2 + seen.reserved3, 0u);

  code = -2;
  version = 3;  // not checked: only the code counts
  EXPECT_EQ(dax_.handleXMLRequest(11, 22, xml), -2);
  EXPECT_EQ(xml, "<status code=\"-2\"/>");
}

TEST_F(PassthroughTest, AgentRequestLogsWhichStepFailedAndKeepsTheText) {
  server_.Answer(msg::kHandleDaxXml);
  server_.DropBeforeAnswer(msg::kHandleDaxXml.requestId);
  std::string xml = "<kept/>";
  int status = dax_.handleXMLRequest(1, 2, xml);
  EXPECT_NE(status, 0);
  EXPECT_EQ(xml, "<kept/>");
  EXPECT_EQ(log_.Count("Receive request failed with an error [" + std::to_string(status) + "]"),
            1u);

  server_.Stop();
  status = dax_.handleXMLRequest(1, 2, xml);
  EXPECT_NE(status, 0);
  EXPECT_EQ(xml, "<kept/>");
  size_t sendLines = 0;
  for (const EvLogRecord& r : log_.Records()) {
    if (r.text != "Send request failed with an error [" + std::to_string(status) + "]") continue;
    ++sendLines;
    EXPECT_TRUE(r.error);
    EXPECT_EQ(r.label, "DaxBackupInterfaceNet::handleXMLRequest");
  }
  EXPECT_EQ(sendLines, 1u);
}

TEST_F(PassthroughTest, CertificateOperationsRefuseWithoutAnExchange) {
  CertificateInterfaceNet certs;
  CACertificateInterfaceNet authorities;
  _AppCertificateInfo info;
  info.subject = "CN=agent01";
  _AppCACertificateInfo ca;
  ca.name = "root";
  std::vector<_AppCertificateInfo> list(1);
  std::vector<_AppCACertificateInfo> caList(2);
  using Call = std::function<int(std::string&)>;
  const std::pair<const char*, Call> calls[] = {
      {"CertificateInterfaceNet::lookup",
       [&](std::string& e) { return certs.lookup(info, e, nullptr); }},
      {"CertificateInterfaceNet::create",
       [&](std::string& e) { return certs.create(info, e, nullptr); }},
      {"CertificateInterfaceNet::update",
       [&](std::string& e) { return certs.update(info, e, nullptr); }},
      {"CertificateInterfaceNet::remove",
       [&](std::string& e) { return certs.remove(1, e, nullptr); }},
      {"CertificateInterfaceNet::getCertificateInfoList",
       [&](std::string& e) { return certs.getCertificateInfoList(info, list, e, nullptr); }},
      {"CertificateInterfaceNet::pruneCertificates",
       [&](std::string& e) { return certs.pruneCertificates(e, nullptr); }},
      {"CertificateInterfaceNet::revokeCertificate",
       [&](std::string& e) { return certs.revokeCertificates(info, e, nullptr); }},
      {"CertificateInterfaceNet::uninstallCertificates",
       [&](std::string& e) { return certs.markCertificatesUninstalled(info, e, nullptr); }},
      {"CACertificateInterfaceNet::lookup",
       [&](std::string& e) { return authorities.lookup(ca, e, nullptr); }},
      {"CACertificateInterfaceNet::create",
       [&](std::string& e) { return authorities.create(ca, e, nullptr); }},
      {"CACertificateInterfaceNet::update",
       [&](std::string& e) { return authorities.update(ca, e, nullptr); }},
      {"CACertificateInterfaceNet::remove",
       [&](std::string& e) { return authorities.remove(1, e, nullptr); }},
      {"CACertificateInterfaceNet::setCACertificateInfo",
       [&](std::string& e) { return authorities.setCACertificateInfo(ca, e, nullptr); }},
      {"CACertificateInterfaceNet::getCACertificateInfoList",
       [&](std::string& e) {
         return authorities.getCACertificateInfoList(ca, caList, e, nullptr);
       }},
  };
  for (const auto& [label, call] : calls) {
    SCOPED_TRACE(label);
    log_.Clear();
    std::string err = "before";
    EXPECT_EQ(call(err), -1);
    EXPECT_EQ(err, "Feature Not Supported");
    std::vector<EvLogRecord> lines = log_.Records();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].label, label);
    EXPECT_EQ(lines[0].text, "Feature Not Supported");
    EXPECT_TRUE(lines[0].error);
  }
  EXPECT_EQ(info.subject, "CN=agent01");
  EXPECT_EQ(ca.name, "root");
  EXPECT_EQ(list.size(), 1u);
  EXPECT_EQ(caList.size(), 2u);

  log_.Clear();
  int count = 17;
  EXPECT_EQ(certs.countActiveCertificates(1, 2, &count, nullptr), -1);
  EXPECT_EQ(count, 17);
  ASSERT_EQ(log_.Records().size(), 1u);
  EXPECT_EQ(log_.Records()[0].label, "CertificateInterfaceNet::countActiveCertificates");
  EXPECT_EQ(log_.Records()[0].text, "Feature Not Supported");
  EXPECT_TRUE(server_.core().RequestCounts().empty()) << "nothing was sent";
}

}  // namespace
