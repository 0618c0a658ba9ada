#include "platform/base/KpSettings.h"

#include <gtest/gtest.h>

#include <climits>

#include "platform/info/KPPlatformInfo.h"
#include "tests/support/TestSettings.h"

namespace {

struct ParseCase {
  const char* name;
  const char* text;
  const char* section;
  const char* key;
  const char* expected;  // nullptr: absent
};

class SettingsParse : public testing::TestWithParam<ParseCase> {};

TEST_P(SettingsParse, FindsTheValueALineSets) {
  const ParseCase& c = GetParam();
  KpSettings::Parsed p = KpSettings::Parse(c.text, "t.ini");
  std::string k = std::string(c.section) + "\n" + c.key;
  for (char& ch : k) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
  auto it = p.values.find(k);
  if (c.expected == nullptr) {
    EXPECT_EQ(it, p.values.end()) << c.name;
  } else {
    ASSERT_NE(it, p.values.end()) << c.name;
    EXPECT_EQ(it->second, c.expected) << c.name;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Lines, SettingsParse,
    testing::Values(
        ParseCase{"plain", "[Controlhost]\nsHOSTNAME=ch01\n", "Controlhost", "sHOSTNAME", "ch01"},
        ParseCase{"blanks around", "  [ Controlhost ]  \n  sHOSTNAME   =   ch01  \n",
                  "Controlhost", "sHOSTNAME", "ch01"},
        ParseCase{"case of names", "[controlhost]\nshostname=ch01\n", "Controlhost", "sHOSTNAME",
                  "ch01"},
        ParseCase{"semicolon comment", "[A]\n; k=1\n", "A", "k", nullptr},
        ParseCase{"hash comment", "[A]\n   # k=1\n", "A", "k", nullptr},
        ParseCase{"semicolon inside value", "[A]\nk=a;b\n", "A", "k", "a;b"},
        ParseCase{"duplicate keeps last", "[A]\nk=1\nk=2\n", "A", "k", "2"},
        ParseCase{"duplicate section merges", "[A]\nk=1\n[B]\nj=0\n[A]\nm=3\n", "A", "k", "1"},
        ParseCase{"quoted value", "[A]\nk=\"  spaced  \"\n", "A", "k", "  spaced  "},
        ParseCase{"empty value", "[A]\nk=\n", "A", "k", ""},
        ParseCase{"equals in value", "[A]\nurl=http://h/?a=b\n", "A", "url", "http://h/?a=b"},
        ParseCase{"CRLF line ends", "[A]\r\nk=v\r\n", "A", "k", "v"},
        ParseCase{"byte order mark", "\xEF\xBB\xBF[A]\nk=v\n", "A", "k", "v"},
        ParseCase{"key before any section", "k=v\n", "", "k", "v"},
        ParseCase{"same key other section", "[A]\nk=1\n", "B", "k", nullptr},
        ParseCase{"unclosed section ignored", "[A]\nk=1\n[B\nk=2\n", "A", "k", "2"}),
    [](const testing::TestParamInfo<ParseCase>& i) {
      std::string n = i.param.name;
      for (char& ch : n) if (!isalnum(static_cast<unsigned char>(ch))) ch = '_';
      return n;
    });

TEST(SettingsParse, ReportsLinesItCannotRead) {
  KpSettings::Parsed p = KpSettings::Parse("[A]\njunk line\n=novalue\n[B\n", "x.ini");
  ASSERT_EQ(p.warnings.size(), 3u);
  EXPECT_EQ(p.warnings[0], "x.ini:2: line is neither a section, a comment nor key = value");
  EXPECT_EQ(p.warnings[1], "x.ini:3: empty key");
  EXPECT_EQ(p.warnings[2], "x.ini:4: section header without closing ']'");
}

TEST(SettingsNumber, AcceptsOnlyWholeUnsignedLongs) {
  struct {
    const char* text;
    bool ok;
    unsigned long value;
  } cases[] = {
      {"0", true, 0},
      {"42", true, 42},
      {" 7 ", true, 7},
      {"0x1F", true, 31},
      {"0X10", true, 16},
      {"18446744073709551615", true, ULONG_MAX},
      {"18446744073709551616", false, 0},
      {"0x10000000000000000", false, 0},
      {"-1", false, 0},
      {"+1", false, 0},
      {"", false, 0},
      {"abc", false, 0},
      {"12abc", false, 0},
      {"1.5", false, 0},
      {"0x", false, 0},
      {"0xg", false, 0},
  };
  for (const auto& c : cases) {
    unsigned long v = 12345;
    EXPECT_EQ(KpSettings::ParseNumber(c.text, &v), c.ok) << '"' << c.text << '"';
    EXPECT_EQ(v, c.ok ? c.value : 12345ul) << '"' << c.text << '"';
  }
}

TEST(SettingsStore, AbsentOrBadKeysLeaveTheOutputUntouched) {
  TestSettings t("[EventManager]\nnDisableAppMessageCache = yes\n[Controlhost]\nsHOSTNAME = ch\n");
  KpSettings& s = KpSettings::Instance();
  unsigned long n = 77;
  EXPECT_FALSE(s.GetNumber("EventManager", "nMissing", &n));
  EXPECT_FALSE(s.GetNumber("EventManager", "nDisableAppMessageCache", &n));
  EXPECT_EQ(n, 77u);
  std::string str = "before";
  EXPECT_FALSE(s.GetString("Controlhost", "sAPPMGRHOSTNAME", &str));
  EXPECT_EQ(str, "before");
  EXPECT_TRUE(s.GetString("Controlhost", "sHOSTNAME", &str));
  EXPECT_EQ(str, "ch");
  bool reported = false;
  for (const std::string& w : s.Warnings()) {
    reported |= w.find("nDisableAppMessageCache = \"yes\" is not a number") != std::string::npos;
  }
  EXPECT_TRUE(reported);
}

struct CheckCase {
  const char* name;
  const char* text;
  const char* warning;  // the one warning expected, without "t.ini:"; nullptr: none
};

class SettingsCheck : public testing::TestWithParam<CheckCase> {};

TEST_P(SettingsCheck, WarnsAboutWhatIsProbablyAMistake) {
  const CheckCase& c = GetParam();
  KpSettings::Parsed p = KpSettings::Parse(c.text, "t.ini");
  std::vector<std::string> all = p.warnings;
  for (std::string& w : KpSettings::Check(p, "t.ini")) all.push_back(w);
  if (c.warning == nullptr) {
    EXPECT_TRUE(all.empty()) << all.front();
  } else {
    ASSERT_EQ(all.size(), 1u) << (all.empty() ? "none" : all.back());
    EXPECT_EQ(all[0], std::string("t.ini:") + c.warning);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Files, SettingsCheck,
    testing::Values(
        CheckCase{"every known key",
                  "[Controlhost]\nsHOSTNAME = ch01:8400\nsclientname = ch01\n"
                  "[EVENTMANAGER]\nnDebugLevel = 0x4\nsLogDirectory = /var/log/a;b\n"
                  "[Features]\nAnyFeature = 1\n[Network]\nnCallTimeoutSeconds = 30\n",
                  nullptr},
        CheckCase{"misspelt key", "[EventManager]\nnDebugLvl = 4\n",
                  "2: [EventManager] nDebugLvl is not a setting this system reads (did you mean "
                  "nDebugLevel?)"},
        CheckCase{"unknown key, nothing close", "[Network]\nsProxy = x\n",
                  "2: [Network] sProxy is not a setting this system reads"},
        CheckCase{"misspelt section", "\n[Controlhst]\nsHOSTNAME = ch01\nsCLIENTNAME = ch01\n",
                  "2: section [Controlhst] is not one this system reads; its keys are ignored "
                  "(did you mean [Controlhost]?)"},
        CheckCase{"inline comment in a number", "[EventManager]\nnDebugLevel = 4 ; verbose\n",
                  "2: [EventManager] nDebugLevel = \"4 ; verbose\" is not a number, so the "
                  "default applies (a comment must be on a line of its own)"},
        CheckCase{"inline comment in a text", "[Controlhost]\nsHOSTNAME = ch01 # the lab\n",
                  "2: [Controlhost] sHOSTNAME = \"ch01 # the lab\": the ';' or '#' is part of the "
                  "value (a comment must be on a line of its own)"},
        CheckCase{"feature that is not a number", "[Features]\nAppMgrSvcLiteDisable = yes\n",
                  "2: [Features] AppMgrSvcLiteDisable = \"yes\" is not a number, so the default "
                  "applies"},
        CheckCase{"key set twice", "[Network]\nnMaxFrameBytes = 1\nNMAXFRAMEBYTES = 8192\n",
                  "3: [Network] NMAXFRAMEBYTES is set again; the value of line 2 is replaced"}),
    [](const testing::TestParamInfo<CheckCase>& i) {
      std::string n = i.param.name;
      for (char& ch : n)
        if (!isalnum(static_cast<unsigned char>(ch))) ch = '_';
      return n;
    });

TEST(SettingsCheck, TheShippedExampleFileReadsWithoutAWarning) {
  const std::string path = std::string(APPMGR_SOURCE_DIR) + "/packaging/appmgrnet.ini";
  const std::string text = ReadFileText(path);
  ASSERT_FALSE(text.empty()) << path;
  KpSettings::Parsed p = KpSettings::Parse(text, path);
  std::vector<std::string> all = p.warnings;
  for (std::string& w : KpSettings::Check(p, path)) all.push_back(w);
  EXPECT_TRUE(all.empty()) << all.front();
  EXPECT_EQ(p.values.count("controlhost\nshostname"), 1u);
}

TEST(SettingsStore, TheOverlayWinsOverTheFileAndDescribesAPlatformOnItsOwn) {
  TestSettings t("[Controlhost]\nsHOSTNAME = from-file\nsCLIENTNAME = file-client\n");
  setenv(KpSettings::kOverlayVariable, "[controlhost]\nshostname = from-overlay\n[Netwrk]\nn = 1\n",
         1);
  KpSettings& s = KpSettings::Instance();
  s.Reload();
  std::string v;
  EXPECT_TRUE(s.GetString("Controlhost", "sHOSTNAME", &v));
  EXPECT_EQ(v, "from-overlay");
  EXPECT_TRUE(s.GetString("Controlhost", "sCLIENTNAME", &v));
  EXPECT_EQ(v, "file-client") << "keys the overlay does not set come from the file";
  EXPECT_TRUE(s.OverlayRead());
  bool named = false;
  for (const std::string& w : s.Warnings()) named |= w.starts_with("APPMGR_SETTINGS_OVERLAY:3: ");
  EXPECT_TRUE(named) << "overlay warnings name the overlay";

  s.Load(t.dir() + "/missing.ini");
  EXPECT_FALSE(s.FileRead());
  EXPECT_FALSE(KPPI_Fleetmember().invalidKPPlatform());
  EXPECT_TRUE(s.GetString("Controlhost", "sHOSTNAME", &v));
  EXPECT_EQ(v, "from-overlay");

  unsetenv(KpSettings::kOverlayVariable);
  s.Reload();
  EXPECT_FALSE(s.OverlayRead());
  EXPECT_TRUE(KPPI_Fleetmember().invalidKPPlatform());
}

TEST(SettingsStore, MissingFileIsAnEmptyStore) {
  TestSettings t;
  KpSettings::Instance().Load(t.dir() + "/does-not-exist.ini");
  EXPECT_FALSE(KpSettings::Instance().FileRead());
  std::string v = "x";
  EXPECT_FALSE(KpSettings::Instance().GetString("EventManager", "sLogDirectory", &v));
  EXPECT_EQ(v, "x");
}

TEST(SettingsStore, ReloadSeesTheRewrittenFileAndLoadSwitchesFiles) {
  TestSettings t("[A]\nk = 1\n");
  unsigned long v = 0;
  uint64_t gen = KpSettings::Instance().Generation();
  ASSERT_TRUE(KpSettings::Instance().GetNumber("A", "k", &v));
  EXPECT_EQ(v, 1u);
  t.Write("[A]\nk = 2\n");
  EXPECT_GT(KpSettings::Instance().Generation(), gen);
  ASSERT_TRUE(KpSettings::Instance().GetNumber("A", "k", &v));
  EXPECT_EQ(v, 2u);

  TestSettings other("[A]\nk = 3\n");
  ASSERT_TRUE(KpSettings::Instance().GetNumber("A", "k", &v));
  EXPECT_EQ(v, 3u);
}

TEST(SettingsStore, EnvironmentNamesTheFile) {
  TestSettings t("[A]\nk = 9\n");
  setenv(KpSettings::kPathVariable, t.path().c_str(), 1);
  KpSettings::Instance().Load("/nonexistent");
  KpSettings::Instance().ResetToEnvironment();
  unsigned long v = 0;
  EXPECT_TRUE(KpSettings::Instance().GetNumber("A", "k", &v));
  EXPECT_EQ(v, 9u);
  EXPECT_EQ(KpSettings::Instance().Path(), t.path());
  unsetenv(KpSettings::kPathVariable);
}

}  // namespace
