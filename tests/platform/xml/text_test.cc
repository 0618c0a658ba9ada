// The text helpers behind the reader and writer: each has one accepted spelling per value.
#include <gtest/gtest.h>

#include <string>

#include "platform/xml/CNBase64.h"
#include "platform/xml/CNXmlText.h"

namespace appmgr::xml {
namespace {

TEST(CNBase64, EncodesRfcVectorsAndDecodesThemBack) {
  const std::pair<std::string, std::string> vectors[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
      {std::string("\0\xff\xfe", 3), "AP/+"},
  };
  for (const auto& [bytes, text] : vectors) {
    std::string encoded;
    AppendBase64(bytes, &encoded);
    EXPECT_EQ(encoded, text);
    std::string decoded;
    ASSERT_TRUE(DecodeBase64(text, &decoded)) << text;
    EXPECT_EQ(decoded, bytes);
  }
}

TEST(CNBase64, RefusesEverythingButTheCanonicalSpelling) {
  const char* bad[] = {
      "Zg",        // no padding
      "Zg=",       // short padding
      "Zh==",      // unused bits set: "f" is only "Zg=="
      "Zm9=",      // unused bits set
      "Zm 9v",     // whitespace
      "Zm9v\n",    // line break
      "Z===",      // three pads
      "====",      // only padding
      "Zg==Zg==",  // padding inside
      "Zm9-",      // URL-safe alphabet
      "Zm9v*A==",  // not in the alphabet
  };
  for (const char* text : bad) {
    std::string out;
    EXPECT_FALSE(DecodeBase64(text, &out)) << text;
  }
}

TEST(CNXmlText, NumbersHaveOneSpelling) {
  int64_t v = 0;
  EXPECT_TRUE(ParseInt64("0", &v) && v == 0);
  EXPECT_TRUE(ParseInt64("-9223372036854775808", &v) && v == INT64_MIN);
  EXPECT_TRUE(ParseInt64("9223372036854775807", &v) && v == INT64_MAX);
  for (const char* bad : {"", "-", "-0", "+1", "01", " 1", "1 ", "1e3", "0x10",
                          "9223372036854775808", "-9223372036854775809", "１"}) {
    EXPECT_FALSE(ParseInt64(bad, &v)) << bad;
  }
  unsigned long u = 0;
  EXPECT_TRUE(ParseHexUnsigned("0x1EA717D0", &u) && u == 0x1ea717d0);
  EXPECT_TRUE(ParseHexUnsigned("0xffffffffffffffff", &u) && u == ~0ul);
  for (const char* bad : {"0x", "1ea717d0", "0x-1", "0x1g", "0x10000000000000000", " 0x1"}) {
    EXPECT_FALSE(ParseHexUnsigned(bad, &u)) << bad;
  }
  EXPECT_TRUE(ParseDecimalUnsigned("18446744073709551615", &u) && u == ~0ul);
  EXPECT_FALSE(ParseDecimalUnsigned("18446744073709551616", &u));
  EXPECT_FALSE(ParseDecimalUnsigned("-1", &u));

  std::string s;
  AppendHex(0x10003f0, &s);
  AppendHex(0x123456789ul, &s);
  AppendInt64(INT64_MIN, &s);
  EXPECT_EQ(s, "0x010003f00x123456789-9223372036854775808");
}

TEST(CNXmlText, EscapingSurvivesTheReadersNormalisation) {
  std::string escaped;
  AppendEscaped("a&b<c>d\re\n]]>", &escaped);
  EXPECT_EQ(escaped, "a&amp;b&lt;c&gt;d&#13;e\n]]&gt;");

  std::string text;
  ASSERT_TRUE(AppendUnescaped("&lt;&gt;&amp;&quot;&apos;&#65;&#x42;&#x1F600;", &text));
  EXPECT_EQ(text, "<>&\"'AB\xF0\x9F\x98\x80");
  // References to characters XML forbids, unknown entities and a bare '&' are refused.
  for (const char* bad : {"&#0;", "&#x1;", "&#xD800;", "&#x110000;", "&#xFFFE;", "&nbsp;", "a & b",
                          "&#;", "&#x;", "&#X41;", "&#999999999;", "&lt"}) {
    std::string out;
    EXPECT_FALSE(AppendUnescaped(bad, &out)) << bad;
  }
}

TEST(CNXmlText, RootNamesMapOneToOneOntoTagNames) {
  std::string root, tag;
  ASSERT_TRUE(RootNameFromTagName("App::GetDataInPreInstallModeResp", &root));
  EXPECT_EQ(root, "App.GetDataInPreInstallModeResp");
  ASSERT_TRUE(TagNameFromRootName("A..b_1.", &tag));
  EXPECT_EQ(tag, "A::::b_1::");
  ASSERT_TRUE(RootNameFromTagName(tag, &root));
  EXPECT_EQ(root, "A..b_1.");
  for (const char* bad : {"", "1App", "App:X", "App::X y", "App-X", ":::A", "Ä"}) {
    EXPECT_FALSE(RootNameFromTagName(bad, &root)) << bad;
  }
  for (const char* bad : {"", ".A", "a:b", "a-b", "1a"}) {
    EXPECT_FALSE(TagNameFromRootName(bad, &tag)) << bad;
  }
  EXPECT_FALSE(TagNameFromRootName(std::string(kMaxRootNameLength + 1, 'a'), &tag));
}

}  // namespace
}  // namespace appmgr::xml
