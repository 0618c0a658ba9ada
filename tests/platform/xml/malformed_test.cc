// Hostile and broken documents: each is refused with its code, through both entry points, and
// nothing crashes, over-reads (ASan) or recurses without bound.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "platform/xml/AppMessages.h"
#include "platform/xml/CNMessageBase.h"

// GCC 12 at -O3 (the Release build) reports "literal" + std::string inside libstdc++ as an
// overlapping memcpy (-Wrestrict), wrongly; the documents below are built that way throughout.
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ == 12
#pragma GCC diagnostic ignored "-Wrestrict"
#endif

namespace {

constexpr const char* kOpen = "<App.EnableAppServerCacheResp tag=\"0x1ea717d1\">";
constexpr const char* kClose = "</App.EnableAppServerCacheResp>";

std::string Doc(const std::string& body) {
  return kOpen + body + kClose;
}

// Lists nested `depth` deep: the innermost entity sits at depth `depth`.
std::string Nested(int depth) {
  std::string body;
  for (int i = 0; i < depth; ++i) body += "<list n=\"1\"><entity>";
  for (int i = 0; i < depth; ++i) body += "</entity></list>";
  return "<X tag=\"0x1\">" + body + "</X>";
}

std::string Entities(size_t count) {
  std::string body = "<list n=\"9\">";
  for (size_t i = 0; i < count; ++i) body += "<entity/>";
  return Doc(body + "</list>");
}

// Reads `xml` both into a typed object and through the factory; both must give `code`.
void ExpectRefused(const std::string& xml, int code) {
  App::EnableAppServerCacheResp m;
  EXPECT_EQ(m.unserialize(xml), code) << m.GetReadError();
  EXPECT_FALSE(m.GetReadError().empty());
  EXPECT_TRUE(m.IsEmpty());
  int error = kCNOk;
  std::string why;
  EXPECT_EQ(CNMessageBase::FromXml(xml.data(), xml.size(), &error, &why), nullptr);
  EXPECT_EQ(error, code) << why;
}

TEST(CNMessageBaseMalformed, EachBrokenDocumentIsRefusedWithItsCode) {
  struct Case {
    const char* name;
    std::string xml;
    int code;
  };
  const Case cases[] = {
      {"empty", "", kCNErrMalformed},
      {"only whitespace", " \n", kCNErrMalformed},
      {"not XML", "hello", kCNErrMalformed},
      {"unclosed root", kOpen, kCNErrMalformed},
      {"mismatched end", Doc("<int n=\"1\">1</str>"), kCNErrMalformed},
      {"two roots", Doc("") + Doc(""), kCNErrMalformed},
      {"text after root", Doc("") + "x", kCNErrMalformed},
      {"text before root", "x" + Doc(""), kCNErrMalformed},
      {"declaration after space", " <?xml version=\"1.0\"?>" + Doc(""), kCNErrMalformed},
      {"declaration after root", Doc("") + "<?xml version=\"1.0\"?>", kCNErrMalformed},
      {"root with a colon", "<App:X tag=\"0x1\"/>", kCNErrMalformed},
      {"root without tag", "<App.EnableAppServerCacheResp/>", kCNErrMalformed},
      {"decimal tag", "<App.EnableAppServerCacheResp tag=\"514529233\"/>", kCNErrBadValue},
      {"other tag id", "<App.EnableAppServerCacheResp tag=\"0x1ea717d0\"/>", kCNErrWrongTag},
      {"other root name", "<App.Other tag=\"0x1ea717d1\"/>", kCNErrWrongTag},
      {"unknown root attribute", "<App.EnableAppServerCacheResp tag=\"0x1ea717d1\" v=\"1\"/>",
       kCNErrMalformed},
      {"unknown element", Doc("<float n=\"1\">1.5</float>"), kCNErrMalformed},
      {"text between fields", Doc("<int n=\"1\">1</int>junk"), kCNErrMalformed},
      {"missing field number", Doc("<int>1</int>"), kCNErrMalformed},
      {"field number 0", Doc("<int n=\"0\">1</int>"), kCNErrBadValue},
      {"field number past the last", Doc("<int n=\"65536\">1</int>"), kCNErrBadValue},
      {"attribute given twice", Doc("<int n=\"1\" n=\"2\">1</int>"), kCNErrMalformed},
      {"field given twice", Doc("<int n=\"2\">1</int><str n=\"2\">x</str>"), kCNErrMalformed},
      {"non-numeric int", Doc("<int n=\"2\">twelve</int>"), kCNErrBadValue},
      {"empty int", Doc("<int n=\"2\"/>"), kCNErrBadValue},
      {"int with spaces", Doc("<int n=\"2\"> 12 </int>"), kCNErrBadValue},
      {"int overflow", Doc("<int n=\"2\">9223372036854775808</int>"), kCNErrBadValue},
      {"element inside a value", Doc("<str n=\"2\"><int n=\"1\">1</int></str>"), kCNErrMalformed},
      {"bad base64", Doc("<bin n=\"2\">not base64!</bin>"), kCNErrBadValue},
      {"non-canonical base64", Doc("<bin n=\"2\">Zh==</bin>"), kCNErrBadValue},
      {"reference to NUL", Doc("<str n=\"2\">a&#0;b</str>"), kCNErrBadValue},
      {"unknown entity", Doc("<str n=\"2\">&nbsp;</str>"), kCNErrBadValue},
      {"NUL byte", Doc(std::string("<str n=\"2\">a\0b</str>", 21)), kCNErrMalformed},
      {"invalid UTF-8", Doc("<str n=\"2\">\xC3\x28</str>"), kCNErrMalformed},
      {"Latin-1 declared", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + Doc(""),
       kCNErrMalformed},
      {"entity bomb",
       "<!DOCTYPE x [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;&a;\">]>" +
           Doc("<str n=\"2\">&b;</str>"),
       kCNErrMalformed},
      {"list of non-entities", Doc("<list n=\"1\"><int n=\"1\">1</int></list>"), kCNErrMalformed},
      {"entity with attributes", Doc("<list n=\"1\"><entity n=\"1\"/></list>"), kCNErrMalformed},
      {"list inside an elem", Doc("<elem id=\"0x1\"><list n=\"1\" key=\"1\"/></elem>"),
       kCNErrMalformed},
      {"empty elem", Doc("<elem id=\"0x1\"/>"), kCNErrMalformed},
      {"elem without id", Doc("<elem><int n=\"1\" key=\"1\">1</int></elem>"), kCNErrMalformed},
      {"attribute without key", Doc("<elem id=\"0x1\"><int n=\"1\">1</int></elem>"),
       kCNErrMalformed},
      {"negative key", Doc("<elem id=\"0x1\"><int n=\"1\" key=\"-1\">1</int></elem>"),
       kCNErrBadValue},
      {"elem given twice",
       Doc("<elem id=\"0x1\"><int n=\"1\" key=\"1\">1</int></elem>"
           "<elem id=\"0x01\"><int n=\"2\" key=\"1\">1</int></elem>"),
       kCNErrMalformed},
      {"slot given twice",
       Doc("<elem id=\"0x1\"><int n=\"1\" key=\"1\">1</int><str n=\"1\" key=\"2\"/></elem>"),
       kCNErrMalformed},
      {"declared field of another kind", Doc("<int n=\"1\">1</int>"), kCNErrBadValue},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ExpectRefused(c.xml, c.code);
  }
}

TEST(CNMessageBaseMalformed, EveryTruncationOfAValidDocumentIsRefused) {
  App::EnableAppServerCacheResp m;
  m.AddCacheEntity({1, -2, "req", "resp"});
  m.setstring(1, kCNKindString, 0x9, 9, "x&y");
  std::string text;
  ASSERT_EQ(m.serialize(text), kCNOk);
  for (size_t n = 0; n < text.size(); ++n) {
    int error = kCNOk;
    EXPECT_EQ(CNMessageBase::FromXml(text.data(), n, &error), nullptr) << n;
    EXPECT_NE(error, kCNOk) << n;
  }
  App::EnableAppServerCacheResp whole;
  EXPECT_EQ(whole.unserialize(text), kCNOk);
}

TEST(CNMessageBaseMalformed, LimitsHoldAtTheirValueAndFailOnePast) {
  CNMessageBase m(0x1);
  EXPECT_EQ(m.unserialize(Nested(kCNMaxDepth)), kCNOk) << m.GetReadError();
  EXPECT_EQ(m.unserialize(Nested(kCNMaxDepth + 1)), kCNErrLimit);

  App::EnableAppServerCacheResp list;
  EXPECT_EQ(list.unserialize(Entities(kCNMaxListEntries)), kCNOk) << list.GetReadError();
  EXPECT_EQ(list.GetList(9).size(), kCNMaxListEntries);
  ExpectRefused(Entities(kCNMaxListEntries + 1), kCNErrLimit);

  std::string huge = Doc("");
  huge.append(kCNMaxDocumentBytes + 1 - huge.size(), ' ');
  ExpectRefused(huge, kCNErrLimit);
}

TEST(CNMessageBaseMalformed, DeepArbitraryNestingIsRefusedWithoutRecursing) {
  // Far deeper than any stack would survive if parsing recursed per level.
  const int depth = 200000;
  std::string xml = "<X tag=\"0x1\">";
  for (int i = 0; i < depth; ++i) xml += "<a>";
  for (int i = 0; i < depth; ++i) xml += "</a>";
  xml += "</X>";
  int error = kCNOk;
  EXPECT_EQ(CNMessageBase::FromXml(xml.data(), xml.size(), &error), nullptr);
  EXPECT_EQ(error, kCNErrMalformed);

  ExpectRefused(Nested(depth), kCNErrLimit);
}

TEST(CNMessageBaseMalformed, RandomBytesAndMutatedDocumentsNeverCrash) {
  std::mt19937 rng(20261122);
  App::EnableAppServerCacheResp m;
  m.AddCacheEntity({1, 2, "abc", "def"});
  m.SetString(5, "text");
  m.setint64(1, 3, 4, 5);
  std::string valid;
  ASSERT_EQ(m.serialize(valid, true), kCNOk);
  for (int round = 0; round < 2000; ++round) {
    std::string bytes;
    if (round % 2 == 0) {
      bytes.resize(rng() % 64);
      for (char& c : bytes) c = static_cast<char>(rng());
    } else {
      bytes = valid;
      for (int k = 0; k < 3; ++k) bytes[rng() % bytes.size()] = static_cast<char>(rng());
    }
    int error = kCNOk;
    std::unique_ptr<CNMessageBase> got = CNMessageBase::FromXml(bytes.data(), bytes.size(), &error);
    EXPECT_EQ(got == nullptr, error != kCNOk);
    if (got) {  // a mutation that still reads must still write and read back the same
      std::string text, again;
      ASSERT_EQ(got->serialize(text), kCNOk);
      std::unique_ptr<CNMessageBase> back =
          CNMessageBase::FromXml(text.data(), text.size(), &error);
      ASSERT_NE(back, nullptr) << text;
      ASSERT_EQ(back->serialize(again), kCNOk);
      EXPECT_EQ(again, text);
    }
  }
}

TEST(CNMessageBaseMalformed, NullAndCStringInputs) {
  App::EnableAppServerCacheResp m;
  EXPECT_EQ(m.unserialize(static_cast<const char*>(nullptr)), kCNErrBadArgument);
  int error = kCNOk;
  EXPECT_EQ(CNMessageBase::FromXml(nullptr, 10, &error), nullptr);
  EXPECT_EQ(error, kCNErrBadArgument);
  // The C string form stops at the NUL, so what follows it is never seen.
  std::string withTail = Doc("") + std::string("\0garbage", 8);
  EXPECT_EQ(m.unserialize(withTail.c_str()), kCNOk);
  EXPECT_EQ(m.unserialize(withTail), kCNErrMalformed);
  // A byte order mark, a declaration and comments are accepted.
  EXPECT_EQ(m.unserialize("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?><!-- c -->" +
                          Doc("<!-- c --><int n=\"5\">1</int>")),
            kCNOk);
  EXPECT_EQ(m.GetInt64(5), 1);
}

}  // namespace
