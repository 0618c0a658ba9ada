#include "platform/base/KpSettings.h"

#include <gtest/gtest.h>

#include <climits>

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
    reported |= w.find("ndisableappmessagecache") != std::string::npos;
  }
  EXPECT_TRUE(reported);
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
