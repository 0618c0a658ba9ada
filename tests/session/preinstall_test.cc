// The web console lookup of a machine that is not installed yet.
#include "session/KpAppMgrPreInstall.h"

#include <gtest/gtest.h>

#include "platform/xml/AppMessages.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/RawPeer.h"

namespace {

class PreInstallTest : public SessionFixture {
 protected:
  // Answers the request with `url` in field 1, with a message of another tag, or with none.
  enum class Kind { kUrl, kWrongTag, kEmpty };
  void Answer(ScriptServer& server, const std::string& url, Kind kind = Kind::kUrl) {
    server.core().HandleXml(App::GetDataInPreInstallModeReq().getTagId(),
                            [url, kind](const CNMessageBase&, const appmgr::server::ConnectionInfo&)
                                -> std::unique_ptr<CNMessageBase> {
                              if (kind == Kind::kEmpty) return nullptr;
                              if (kind == Kind::kWrongTag) return std::make_unique<App::GetDataInPreInstallModeReq>();
                              auto resp = std::make_unique<App::GetDataInPreInstallModeResp>();
                              if (!url.empty()) resp->SetWebConsoleUrl(url);
                              return resp;
                            });
  }
};

constexpr const char* kConnect = "ConnectToAppMgrSvc";
constexpr const char* kGet = "GetWebConsoleUrlInPreInstallMode";

TEST_F(PreInstallTest, FetchesTheAddress) {
  ScriptServer ch;
  Answer(ch, "https://ch01.example/webconsole");
  Settings("[Platform]\nsPhysicalMachine = newmachine\n");
  std::string url = "unchanged";
  EXPECT_TRUE(KpAppMgrPreInstall::GetWebConsoleUrlInPreInstallMode(ch.host(), url, "ch01"));
  EXPECT_EQ(url, "https://ch01.example/webconsole");
  EXPECT_EQ(Logged(kConnect, 1, "Client [newmachine] is trying to fetch webconsole URL from CH [" + ch.host() +
                                    "] in preinstall mode"),
            1u);
  EXPECT_EQ(Logged(kConnect, 1, "Mangled CH host name: [ch01@" + ch.host() + "," + std::to_string(ch.port()) + "]"),
            1u);
  EXPECT_EQ(Logged(kConnect, 1, "Client is successfully attached to AppMgrSvc in server"), 1u);
  EXPECT_EQ(Logged(kGet, 1, "Client successfully sent App::GetDataInPreInstallModeReq XML to server"), 1u);
  EXPECT_EQ(Logged(kGet, 1, "Client successfully received App::GetDataInPreInstallModeResp XML from server"), 1u);
  EXPECT_EQ(Logged(kGet, 1, "Successfully fetched webconsole URL [https://ch01.example/webconsole] in preinstall mode"),
            1u);
  App::GetDataInPreInstallModeResp answer;
  answer.SetWebConsoleUrl(url);
  std::string xml, line = "XML response for fetching WebconsoleURL in preinstall mode [";
  answer.serialize(xml, false);
  EXPECT_EQ(Logged(kGet, 5, line.append(xml).append("]")), 1u);

  // Without a host client name the connect string names the host twice.
  EXPECT_TRUE(KpAppMgrPreInstall::GetWebConsoleUrlInPreInstallMode(ch.host(), url, ""));
  EXPECT_EQ(Logged(kConnect, 1, "Mangled CH host name: [" + ch.host() + "@" + ch.host() + "," +
                                    std::to_string(ch.port()) + "]"),
            1u);
}

TEST_F(PreInstallTest, FailuresAnswerFalseAndLeaveTheAddress) {
  ScriptServer ch;
  RawPeer silent([](appmgr::net::Socket& s) {  // takes the request and closes without an answer
    appmgr::net::FrameConn conn(std::move(s));
    if (RawPeer::AcceptHello(conn)) RawPeer::ReadFrame(conn);
  });
  RawPeer outOfStep([](appmgr::net::Socket& s) {  // bytes nobody asked for follow its accept
    appmgr::net::FrameConn conn(std::move(s));
    RawPeer::AcceptHello(conn, "stray");
  });
  Settings("");
  struct {
    const char* name;
    std::string host;
    std::function<void()> arrange;
    const char* label;
    const char* logged;
  } cases[] = {
      {"no host", "", [] {}, kConnect, "CH hostname not provided. Cannot proceed further"},
      {"empty address", ch.host(), [&] { Answer(ch, ""); }, kGet,
       "WebConsole URL is not populated in App::GetDataInPreInstallModeResp XML"},
      {"wrong tag", ch.host(), [&] { Answer(ch, "x", Kind::kWrongTag); }, kGet,
       "Invalid tag in App::GetDataInPreInstallModeResp XML"},
      {"no message", ch.host(), [&] { Answer(ch, "x", Kind::kEmpty); }, kGet,
       "Pointer to App::GetDataInPreInstallModeResp XML is NULL"},
      {"out of step", "127.0.0.1:" + std::to_string(outOfStep.port()), [] {}, kGet,
       "Client is unable to send App::GetDataInPreInstallModeReq request to server. ErrorString "
       "[XML message App::GetDataInPreInstallModeReq: bytes nobody asked for wait on the connection]"},
      {"no answer", "127.0.0.1:" + std::to_string(silent.port()), [] {}, kGet,
       "Client failed to receive App::GetDataInPreInstallModeResp XML from server. ErrorString "
       "[frame: the peer closed the connection]"},
      {"refused", ch.host(), [&] { ch.RefuseHello("not now"); }, kGet,
       "Unable to attach client to AppMgrSvc in server"},
  };
  for (auto& c : cases) {
    c.arrange();
    log_.Clear();
    uint64_t accepted = ch.core().ConnectionsAccepted();
    std::string url = "unchanged";
    EXPECT_FALSE(KpAppMgrPreInstall::GetWebConsoleUrlInPreInstallMode(c.host, url, "ch01")) << c.name;
    EXPECT_EQ(url, "unchanged") << c.name;
    EXPECT_EQ(Logged(c.label, kError, c.logged), 1u) << c.name;
    if (c.host.empty()) {
      EXPECT_EQ(ch.core().ConnectionsAccepted(), accepted) << "no network activity";
    }
  }
}

}  // namespace
