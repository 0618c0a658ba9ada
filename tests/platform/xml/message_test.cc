#include "platform/xml/CNMessageBase.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "platform/xml/AppMessages.h"
#include "platform/xml/CNMessageCatalog.h"
#include "platform/xml/CNRecordLayout.h"
#include "platform/xml/KPGuiMessages.h"

namespace {

// Gives every declared field a value (lists get two entries, filled the same way), plus an
// undeclared field and a keyed element, which every class must carry through unchanged.
void FillFromLayout(const CNRecordLayout& layout, int seed, CNEntity* e) {
  for (size_t i = 0; i < layout.count; ++i) {
    const CNFieldLayout& f = layout.fields[i];
    switch (f.kind) {
      case kCNKindInt64:
        ASSERT_EQ(e->SetInt64(f.number, -1000 * seed - f.number), kCNOk);
        break;
      case kCNKindString:
        ASSERT_EQ(e->SetString(f.number, std::string(f.name) + " <&> \r\n\t\xC3\xA9"), kCNOk);
        break;
      case kCNKindBinary:
        ASSERT_EQ(e->SetBinary(f.number, std::string("\0\xff\r\n", 4) + f.name), kCNOk);
        break;
      case kCNKindList:
        for (int k = 0; k < 2; ++k) FillFromLayout(*f.entry, seed + k + 1, e->AddEntity(f.number));
        break;
      default:
        FAIL() << "kind " << f.kind;
    }
  }
  ASSERT_EQ(e->SetString(900, "added by a newer peer"), kCNOk);
  ASSERT_EQ(e->setint64(1, 0x77, 123, seed), kCNOk);
}

// Serialises `m` (both forms), reads each text into a fresh message of the same tag and through
// the factory, and checks that content and text survive.
void ExpectRoundTrip(const CNMessageBase& m) {
  for (bool pretty : {false, true}) {
    SCOPED_TRACE(pretty ? "pretty" : "compact");
    std::string text;
    ASSERT_EQ(m.serialize(text, pretty), kCNOk);
    std::unique_ptr<CNMessageBase> fresh = CNMessageBase::Create(m.getTagId());
    ASSERT_EQ(fresh->unserialize(text), kCNOk) << fresh->GetReadError() << "\n" << text;
    EXPECT_TRUE(*fresh == m) << text;
    std::string again;
    ASSERT_EQ(fresh->serialize(again, pretty), kCNOk);
    EXPECT_EQ(again, text);

    int error = -1;
    std::unique_ptr<CNMessageBase> made = CNMessageBase::FromXml(text.data(), text.size(), &error);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(error, kCNOk);
    EXPECT_EQ(typeid(*made), typeid(m));
    EXPECT_TRUE(*made == m);
  }
}

TEST(CNMessageBase, EveryCatalogueClassRoundTripsWithEveryFieldSet) {
  ASSERT_EQ(CNMessageBase::Initialize(), kCNOk);
  for (const CNMessageType& type : CNMessageTypes()) {
    SCOPED_TRACE(type.tagName);
    std::unique_ptr<CNMessageBase> m = type.create();
    ExpectRoundTrip(*m);  // as constructed
    ASSERT_NE(m->GetLayout(), nullptr);
    FillFromLayout(*m->GetLayout(), 1, m.get());
    // The generic filler overwrote the layout version; a response of another major is refused
    // by design (tested below).
    if (type.tagId == KPGui::AlertResponse::kTagId) {
      m->SetInt64(KPGui::AlertResponse::kFieldLayoutMajor, KPGui::AlertResponse::kLayoutMajor);
    }
    ExpectRoundTrip(*m);
  }
}

TEST(CNMessageBase, TheWireFormIsFixed) {
  KPGui::AlertResponse r(1, 24);
  r.SetStatus(-3);
  r.SetErrorText("a<b");
  r.SetBinary(7, "hi");
  std::string text;
  ASSERT_EQ(r.serialize(text), kCNOk);
  EXPECT_EQ(text,
            "<KPGui.AlertResponse tag=\"0x010003f0\"><int n=\"1\">1</int><int n=\"2\">24</int>"
            "<bin n=\"7\">aGk=</bin><elem id=\"0x01000406\"><int n=\"1\" key=\"10268693\">-3</int>"
            "<str n=\"2\" key=\"12053727\">a&lt;b</str></elem></KPGui.AlertResponse>");

  App::EnableAppServerCacheResp c;
  c.AddCacheEntity({1, 2, "", "x"});
  c.SetList(2, {});
  ASSERT_EQ(c.serialize(text, true), kCNOk);
  EXPECT_EQ(text,
            "<App.EnableAppServerCacheResp tag=\"0x1ea717d1\">\n"
            "  <list n=\"1\">\n"
            "    <entity>\n"
            "      <int n=\"1\">1</int>\n"
            "      <int n=\"2\">2</int>\n"
            "      <bin n=\"3\"/>\n"
            "      <bin n=\"4\">eA==</bin>\n"
            "    </entity>\n"
            "  </list>\n"
            "  <list n=\"2\"/>\n"
            "</App.EnableAppServerCacheResp>\n");
}

TEST(CNMessageBase, EqualMessagesGiveEqualTextWhateverTheOrderTheyWereBuiltIn) {
  App::HTTPProxySettings a, b;
  a.SetHost("proxy.example");
  a.SetPort(3128);
  a.setint64(2, 9, 9, 9);
  a.setint64(1, 8, 8, 8);
  a.SetEnabled(true);
  b.setint64(1, 8, 8, 8);
  b.SetEnabled(true);
  b.SetPort(3128);
  b.setint64(2, 9, 9, 9);
  b.SetHost("proxy.example");
  std::string ta, tb;
  ASSERT_EQ(a.serialize(ta), kCNOk);
  ASSERT_EQ(b.serialize(tb), kCNOk);
  EXPECT_EQ(ta, tb);
  EXPECT_TRUE(a == b);
}

TEST(CNMessageBase, TypedAccessorsMatchTheNumberedFields) {
  App::EnableAppServerCacheResp cache;
  const App::ServerMessageCacheEntity entities[] = {
      {0x34000003, 0x34000004, std::string("\0\0\0\x01", 4), std::string(70000, '\xfe')},
      {0x34000005, 0x34000006, "", ""},
  };
  for (const auto& e : entities) ASSERT_EQ(cache.AddCacheEntity(e), kCNOk);
  ExpectRoundTrip(cache);
  ASSERT_EQ(cache.GetCacheEntityCount(), 2u);
  EXPECT_EQ(cache.GetCacheEntities()[0], entities[0]);
  EXPECT_EQ(cache.GetCacheEntities()[1], entities[1]);
  EXPECT_EQ(cache.GetList(1)[0].GetBinary(4).size(), 70000u);

  App::GetDataInPreInstallModeResp pre;
  ASSERT_EQ(pre.SetWebConsoleUrl("https://ch.example:443/console"), kCNOk);
  EXPECT_EQ(pre.GetString(1), "https://ch.example:443/console");
  EXPECT_EQ(pre.getTagId(), 0x1ea717d0u);
  EXPECT_STREQ(pre.getTagName(), "App::GetDataInPreInstallModeResp");

  App::HTTPProxySettings proxy;
  proxy.SetEnabled(true);
  proxy.SetUser("svc");
  proxy.SetPassword("p&ss");
  proxy.AddExclusion("*.local");
  proxy.AddExclusion("10.0.0.0/8");
  ExpectRoundTrip(proxy);
  EXPECT_TRUE(proxy.GetEnabled());
  EXPECT_EQ(proxy.GetExclusions(), (std::vector<std::string>{"*.local", "10.0.0.0/8"}));
  EXPECT_EQ(proxy.AddExclusion(std::string("\0", 1)), kCNErrBadArgument);

  KPGui::AlertEvAlertExList alerts;
  KPGui::AlertItem alert{
      7, KPGui::AlertItem::kSeverityCritical, -2147483648LL, "client-1", 1795000000, "disk full"};
  ASSERT_EQ(alerts.AddAlert(alert), kCNOk);
  alert.text = std::string("bad\x01");
  EXPECT_EQ(alerts.AddAlert(alert), kCNErrBadArgument);
  ASSERT_EQ(alerts.GetAlertCount(), 1u);
  EXPECT_EQ(alerts.GetAlerts()[0].clientId, -2147483648LL);

  KPGui::ControlSRMAdvisories control;
  control.SetAction(KPGui::ControlSRMAdvisories::kActionAcknowledge);
  control.AddTarget({11, 0});
  ExpectRoundTrip(control);
  EXPECT_EQ(control.GetTargets(), (std::vector<KPGui::SRMAdvisoryTarget>{{11, 0}}));

  KPGui::AlertSRMAdvisoryTypeListResp types;
  types.AddType({3, "kernel", "Kernel updates"});
  ExpectRoundTrip(types);
  EXPECT_EQ(types.GetTypes()[0].description, "Kernel updates");
}

TEST(CNMessageBase, AlertResponseIsReadThroughItsKeyedElement) {
  KPGui::AlertResponse built(1, 24);
  EXPECT_EQ(built.getint64(1, 0x1000406, 10268693), 0);
  ASSERT_EQ(built.SetStatus(0x000b0002), kCNOk);
  ASSERT_EQ(built.SetErrorText("Client not found"), kCNOk);
  EXPECT_EQ(built.getint64(1, 0x1000406, 10268693), 0x000b0002);
  EXPECT_EQ(built.getstringByRef(2, 2, 0x1000406, 12053727), "Client not found");

  std::string text;
  ASSERT_EQ(built.serialize(text), kCNOk);
  KPGui::AlertResponse read(1, 24);
  ASSERT_EQ(read.unserialize(text.c_str()), kCNOk);
  EXPECT_EQ(read.GetStatus(), 0x000b0002);
  EXPECT_EQ(read.GetErrorText(), "Client not found");
  EXPECT_EQ(read.GetLayoutMinor(), 24);

  // A response of a later major layout is refused; one that names no layout is read.
  KPGui::AlertResponse later(2, 0);
  later.SetStatus(5);
  ASSERT_EQ(later.serialize(text), kCNOk);
  EXPECT_EQ(read.unserialize(text), kCNErrBadValue);
  EXPECT_EQ(read.GetStatus(), 0x000b0002);  // untouched by the failure
  later.ClearField(KPGui::AlertResponse::kFieldLayoutMajor);
  ASSERT_EQ(later.serialize(text), kCNOk);
  ASSERT_EQ(read.unserialize(text), kCNOk);
  EXPECT_EQ(read.GetStatus(), 5);

  // A status that is not an integer is refused, not read as 0.
  const char* textStatus =
      "<KPGui.AlertResponse tag=\"0x010003f0\"><elem id=\"0x01000406\">"
      "<str n=\"1\" key=\"10268693\">0</str></elem></KPGui.AlertResponse>";
  EXPECT_EQ(read.unserialize(textStatus), kCNErrBadValue);
}

TEST(CNMessageBase, FactoryPicksTheClassByTagAndKeepsUnknownMessagesWhole) {
  const std::pair<unsigned long, const std::type_info*> known[] = {
      {0x0100001f, &typeid(KPGui::AlertEvAlertExList)},
      {0x010003f0, &typeid(KPGui::AlertResponse)},
      {0x010003f7, &typeid(KPGui::AlertSRMAdvisoryTypeListResp)},
      {0x1e392f0b, &typeid(App::GetHTTPProxySettingsReq)},
      {0x1ea717d0, &typeid(App::GetDataInPreInstallModeResp)},
      {0x1ea717d1, &typeid(App::EnableAppServerCacheResp)},
  };
  for (const auto& [tag, type] : known) {
    std::unique_ptr<CNMessageBase> m = CNMessageBase::Create(tag);
    EXPECT_EQ(typeid(*m), *type);
    EXPECT_EQ(m->getTagId(), tag);
  }

  std::unique_ptr<CNMessageBase> generic = CNMessageBase::Create(0x12345678);
  EXPECT_EQ(typeid(*generic), typeid(CNMessageBase));
  EXPECT_STREQ(generic->getTagName(), "CNMessage");
  EXPECT_EQ(generic->GetLayout(), nullptr);

  const std::string text =
      "<Other.Thing tag=\"0x12345678\"><int n=\"1\">5</int><list n=\"2\"><entity><str n=\"1\">"
      "x</str></entity></list></Other.Thing>";
  int error = -1;
  std::string why;
  std::unique_ptr<CNMessageBase> m = CNMessageBase::FromXml(text.data(), text.size(), &error, &why);
  ASSERT_NE(m, nullptr) << why;
  EXPECT_EQ(typeid(*m), typeid(CNMessageBase));
  EXPECT_STREQ(m->getTagName(), "Other::Thing");
  EXPECT_EQ(m->GetList(2)[0].GetString(1), "x");
  std::string again;
  ASSERT_EQ(m->serialize(again), kCNOk);
  EXPECT_EQ(again, text);

  // A generic message still checks the tag id it was made with.
  CNMessageBase other(0x1);
  EXPECT_EQ(other.unserialize(text), kCNErrWrongTag);
}

TEST(CNMessageBase, TypedClassesRefuseOtherTagsAndWrongKindsButKeepUndeclaredFields) {
  App::GetDataInPreInstallModeResp resp;
  resp.SetWebConsoleUrl("kept");
  struct Case {
    const char* name;
    const char* xml;
    int code;
  };
  const Case cases[] = {
      {"other tag id", "<App.GetDataInPreInstallModeResp tag=\"0x1ea717cf\"/>", kCNErrWrongTag},
      {"other root name", "<App.Other tag=\"0x1ea717d0\"/>", kCNErrWrongTag},
      {"declared text given as integer",
       "<App.GetDataInPreInstallModeResp tag=\"0x1ea717d0\"><int n=\"1\">1</int>"
       "</App.GetDataInPreInstallModeResp>",
       kCNErrBadValue},
      {"list entry of the wrong kind",
       "<App.EnableAppServerCacheResp tag=\"0x1ea717d1\"><list n=\"1\"><entity><str n=\"3\">x"
       "</str></entity></list></App.EnableAppServerCacheResp>",
       kCNErrBadValue},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::unique_ptr<CNMessageBase> m =
        std::string(c.xml).find("Cache") != std::string::npos
            ? std::unique_ptr<CNMessageBase>(new App::EnableAppServerCacheResp)
            : std::unique_ptr<CNMessageBase>(new App::GetDataInPreInstallModeResp(resp));
    std::string original;
    ASSERT_EQ(m->serialize(original), kCNOk);
    EXPECT_EQ(m->unserialize(c.xml), c.code);
    EXPECT_FALSE(m->GetReadError().empty());
    std::string after;
    ASSERT_EQ(m->serialize(after), kCNOk);
    EXPECT_EQ(after, original);  // a failed read leaves the message as it was
  }

  ASSERT_EQ(resp.unserialize("<App.GetDataInPreInstallModeResp tag=\"0x1ea717d0\">"
                             "<bin n=\"1000\">AA==</bin></App.GetDataInPreInstallModeResp>"),
            kCNOk);
  EXPECT_EQ(resp.GetWebConsoleUrl(), "");  // an unset field reads empty: not an address
  EXPECT_EQ(resp.GetBinary(1000), std::string(1, '\0'));
  EXPECT_TRUE(resp.GetReadError().empty());
}

TEST(CNMessageBase, SerialiseRefusesListsNestedDeeperThanAReaderAccepts) {
  CNMessageBase m(0x42);
  CNEntity* e = &m;
  for (int depth = 1; depth <= kCNMaxDepth; ++depth) e = e->AddEntity(1);
  e->SetInt64(1, 1);
  std::string text = "unchanged";
  ASSERT_EQ(m.serialize(text), kCNOk);
  EXPECT_EQ(CNMessageBase(0x42).unserialize(text), kCNOk);
  e->AddEntity(1);
  std::string refused = "unchanged";
  EXPECT_EQ(m.serialize(refused), kCNErrLimit);
  EXPECT_EQ(refused, "unchanged");
}

}  // namespace
