#include "platform/xml/CNEntity.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(CNEntity, UnsetOrOtherKindFieldsReadAsDefaultsAndSettersReplaceTheKind) {
  CNEntity e;
  EXPECT_TRUE(e.IsEmpty());
  EXPECT_EQ(e.GetInt64(1), 0);
  EXPECT_EQ(e.GetInt64(1, -7), -7);
  EXPECT_EQ(e.GetString(1), "");
  EXPECT_TRUE(e.GetList(1).empty());

  ASSERT_EQ(e.SetString(1, "text"), kCNOk);
  EXPECT_EQ(e.FieldKind(1), kCNKindString);
  EXPECT_EQ(e.GetInt64(1, -7), -7);  // not an integer
  EXPECT_EQ(e.GetBinary(1), "");     // text is not binary

  ASSERT_EQ(e.SetInt64(1, INT64_MIN), kCNOk);
  EXPECT_EQ(e.FieldKind(1), kCNKindInt64);
  EXPECT_EQ(e.GetInt64(1), INT64_MIN);
  EXPECT_EQ(e.GetString(1), "");

  ASSERT_NE(e.AddEntity(1), nullptr);  // an integer field becomes a list
  EXPECT_EQ(e.FieldKind(1), kCNKindList);
  EXPECT_EQ(e.GetList(1).size(), 1u);

  ASSERT_EQ(e.SetList(2, {}), kCNOk);  // an empty list is still a set field
  EXPECT_EQ(e.FieldNumbers(), (std::vector<int>{1, 2}));
  e.ClearField(1);
  EXPECT_EQ(e.FieldNumbers(), (std::vector<int>{2}));
  e.Clear();
  EXPECT_TRUE(e.IsEmpty());
}

TEST(CNEntity, SettersRefuseWhatCouldNeverBeWrittenAndChangeNothing) {
  struct Case {
    const char* name;
    int field;
    std::string text;
  };
  const Case cases[] = {
      {"field 0", 0, "ok"},
      {"negative field", -1, "ok"},
      {"field one past the last", kCNMaxFieldNumber + 1, "ok"},
      {"NUL in text", 1, std::string("a\0b", 3)},
      {"control character", 1, "bell\x07"},
      {"truncated UTF-8", 1, "\xC3"},
      {"overlong UTF-8", 1, "\xC0\xAF"},
      {"UTF-16 surrogate", 1, "\xED\xA0\x80"},
      {"U+FFFE", 1, "\xEF\xBF\xBE"},
      {"above U+10FFFF", 1, "\xF4\x90\x80\x80"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    CNEntity e;
    ASSERT_EQ(e.SetInt64(3, 3), kCNOk);
    CNEntity before = e;
    EXPECT_EQ(e.SetString(c.field, c.text), kCNErrBadArgument);
    EXPECT_EQ(e.setstring(c.field, kCNKindString, 0x10, 7, c.text), kCNErrBadArgument);
    EXPECT_TRUE(e == before);
  }
  // Binary values take any bytes; only the number is checked.
  CNEntity e;
  EXPECT_EQ(e.SetBinary(1, std::string("\0\xff", 2)), kCNOk);
  EXPECT_EQ(e.SetBinary(0, "x"), kCNErrBadArgument);
  EXPECT_EQ(e.AddEntity(kCNMaxFieldNumber + 1), nullptr);
  EXPECT_EQ(e.setstring(1, kCNKindInt64, 0x10, 7, "x"), kCNErrBadArgument);
  // The last valid number and the tab, line feed, carriage return and astral characters pass.
  EXPECT_EQ(e.SetString(kCNMaxFieldNumber, "\t\n\r \xF0\x9F\x98\x80 \xEF\xBF\xBD"), kCNOk);
}

TEST(CNEntity, KeyedAttributesAreFoundOnlyWhenSlotKeyAndKindAgree) {
  CNEntity e;
  ASSERT_EQ(e.setint64(1, 0x1000406, 10268693, -5), kCNOk);
  ASSERT_EQ(e.setstring(2, kCNKindString, 0x1000406, 12053727, "no such client"), kCNOk);
  ASSERT_EQ(e.setstring(3, kCNKindBinary, 0x1000406, 99, std::string("\0\1", 2)), kCNOk);

  EXPECT_EQ(e.getint64(1, 0x1000406, 10268693), -5);
  EXPECT_EQ(e.getstringByRef(2, kCNKindString, 0x1000406, 12053727), "no such client");
  EXPECT_EQ(e.getstringByRef(3, kCNKindBinary, 0x1000406, 99), std::string("\0\1", 2));

  EXPECT_EQ(e.getint64(1, 0x1000406, 12053727), 0);                        // wrong key for the slot
  EXPECT_EQ(e.getint64(2, 0x1000406, 12053727), 0);                        // a text, not an integer
  EXPECT_EQ(e.getint64(1, 0x1000407, 10268693), 0);                        // no such element
  EXPECT_EQ(e.getstringByRef(2, kCNKindBinary, 0x1000406, 12053727), "");  // kind differs
  EXPECT_EQ(e.getstringByRef(3, kCNKindString, 0x1000406, 99), "");
  EXPECT_EQ(e.getkind(1, 0x1000406, 10268693), kCNKindInt64);
  EXPECT_EQ(e.getkind(1, 0x1000406, 1), kCNKindNone);

  // A slot is replaced whole, key included.
  ASSERT_EQ(e.setint64(1, 0x1000406, 1, 9), kCNOk);
  EXPECT_EQ(e.getint64(1, 0x1000406, 10268693), 0);
  EXPECT_EQ(e.getint64(1, 0x1000406, 1), 9);
  EXPECT_EQ(e.ElementIds(), (std::vector<unsigned long>{0x1000406}));
  e.RemoveElement(0x1000406);
  EXPECT_TRUE(e.IsEmpty());
}

TEST(CNEntity, ListsStopAtTheEntryLimit) {
  CNEntity e;
  std::vector<CNEntity> full(kCNMaxListEntries);
  EXPECT_EQ(e.SetList(1, std::vector<CNEntity>(kCNMaxListEntries + 1)), kCNErrLimit);
  ASSERT_EQ(e.SetList(1, std::move(full)), kCNOk);
  EXPECT_EQ(e.AddEntity(1), nullptr);
  EXPECT_EQ(e.AddEntity(1, CNEntity()), kCNErrLimit);
  EXPECT_EQ(e.GetList(1).size(), kCNMaxListEntries);
}

TEST(CNEntity, CopiesAreDeepAndEqualityLooksAtEveryLevel) {
  CNEntity a;
  CNEntity* inner = a.AddEntity(4);
  ASSERT_NE(inner, nullptr);
  inner->SetString(1, "inner");
  inner->AddEntity(2)->SetInt64(1, 1);
  a.setint64(1, 5, 6, 7);

  CNEntity b = a;
  EXPECT_TRUE(a == b);
  b.MutableEntry(4, 0)->MutableEntry(2, 0)->SetInt64(1, 2);
  EXPECT_FALSE(a == b);
  EXPECT_EQ(a.GetList(4)[0].GetList(2)[0].GetInt64(1), 1);
  EXPECT_EQ(b.MutableEntry(4, 1), nullptr);
  EXPECT_EQ(b.MutableEntry(5, 0), nullptr);

  // An emptied record equals a fresh one.
  b.Clear();
  b.SetInt64(1, 1);
  b.ClearField(1);
  EXPECT_TRUE(b == CNEntity());
}

}  // namespace
