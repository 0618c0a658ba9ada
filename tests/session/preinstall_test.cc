// The web console lookup of a machine that is not installed yet.
#include "session/KpAppMgrPreInstall.h"

#include <gtest/gtest.h>

#include "platform/xml/AppMessages.h"
#include "tests/session/SessionFixture.h"

namespace {

class PreInstallTest : public SessionFixture {
 protected:
  // Answers the request with `url` in field 1, or with a message of another tag.
  void Answer(ScriptServer& server, const std::string& url, bool wrongTag = false) {
    server.core().HandleXml(App::GetDataInPreInstallModeReq().getTagId(),
                            [url, wrongTag](const CNMessageBase&, const appmgr::server::ConnectionInfo&)
                                -> std::unique_ptr<CNMessageBase> {
                              if (wrongTag) return std::make_unique<App::GetDataInPreInstallModeReq>();
                              auto resp = std::make_unique<App::GetDataInPreInstallModeResp>();
                              if (!url.empty()) resp->SetWebConsoleUrl(url);
                              return resp;
                            });
  }
};

TEST_F(PreInstallTest, FetchesTheAddress) {
  ScriptServer ch;
  Answer(ch, "https://ch01.example/webconsole");
  Settings("[Platform]\nsPhysicalMachine = newmachine\n");
  std::string url = "unchanged";
  EXPECT_TRUE(KpAppMgrPreInstall::GetWebConsoleUrlInPreInstallMode(ch.host(), url, "ch01"));
  EXPECT_EQ(url, "https://ch01.example/webconsole");
  EXPECT_EQ(log_.Count("Client [newmachine] is trying to fetch webconsole URL from CH [" + ch.host() +
                       "] in preinstall mode"),
            1u);
  EXPECT_EQ(log_.Count("Mangled CH host name: [ch01@" + ch.host() + "," + std::to_string(ch.port()) + "]"), 1u);
  EXPECT_EQ(log_.Count("Successfully fetched webconsole URL [https://ch01.example/webconsole] in preinstall mode"), 1u);
  EXPECT_EQ(log_.CountContaining("XML response for fetching WebconsoleURL in preinstall mode"), 1u);
}

TEST_F(PreInstallTest, AnEmptyHostClientNameUsesTheHostNameTwice) {
  ScriptServer ch;
  Answer(ch, "https://x/");
  Settings("");
  std::string url;
  EXPECT_TRUE(KpAppMgrPreInstall::GetWebConsoleUrlInPreInstallMode(ch.host(), url, ""));
  EXPECT_EQ(log_.Count("Mangled CH host name: [" + ch.host() + "@" + ch.host() + "," +
                       std::to_string(ch.port()) + "]"),
            1u);
}

TEST_F(PreInstallTest, FailuresAnswerFalseAndLeaveTheAddress) {
  ScriptServer ch;
  Settings("");
  struct {
    const char* name;
    std::string host;
    std::function<void()> arrange;
    const char* logged;
  } cases[] = {
      {"no host", "", [] {}, "CH hostname not provided. Cannot proceed further"},
      {"empty address", ch.host(), [&] { Answer(ch, ""); },
       "WebConsole URL is not populated in App::GetDataInPreInstallModeResp XML"},
      {"wrong tag", ch.host(), [&] { Answer(ch, "x", true); }, "Invalid tag in App::GetDataInPreInstallModeResp XML"},
      {"refused", ch.host(), [&] { ch.RefuseHello("not now"); }, "Unable to attach client to AppMgrSvc in server"},
  };
  for (auto& c : cases) {
    c.arrange();
    log_.Clear();
    uint64_t accepted = ch.core().ConnectionsAccepted();
    std::string url = "unchanged";
    EXPECT_FALSE(KpAppMgrPreInstall::GetWebConsoleUrlInPreInstallMode(c.host, url, "ch01")) << c.name;
    EXPECT_EQ(url, "unchanged") << c.name;
    EXPECT_EQ(log_.Count(c.logged), 1u) << c.name;
    if (c.host.empty()) {
      EXPECT_EQ(ch.core().ConnectionsAccepted(), accepted) << "no network activity";
    }
  }
}

}  // namespace
