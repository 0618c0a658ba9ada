// The catalogue and every record it lists, checked from the field lists alone, so a record
// added later with a wrong or incomplete field list fails here.
#include "protocol/Catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <vector>

#include "platform/net/XdrCodec.h"
#include "protocol/Messages.h"
#include "tests/support/RecordSamples.h"

namespace {

using appmgr::wire::Arena;
using appmgr::wire::Catalogue;
using appmgr::wire::Direction;
using appmgr::wire::FieldDesc;
using appmgr::wire::FieldKind;
using appmgr::wire::MessageRow;
using appmgr::wire::RecordSchema;

uint32_t NaturalAlign(const FieldDesc& f) {
  switch (f.kind) {
    case FieldKind::kU32:
    case FieldKind::kI32:
      return 4;
    case FieldKind::kChars:
      return 1;
    case FieldKind::kStruct:
      return f.element->align;
    default:
      return 8;
  }
}

// Fields must cover the struct: sorted by offset, none overlapping, each aligned, and every
// gap (and the tail) no larger than alignment padding. A field missing from a list leaves a
// gap of its size, which this catches.
void ExpectFieldsTile(const RecordSchema& s) {
  struct Span {
    uint32_t begin, end, align;
    std::string name;
  };
  std::vector<Span> spans;
  for (uint32_t i = 0; i < s.fieldCount; ++i) {
    const FieldDesc& f = s.fields[i];
    if (f.kind == FieldKind::kArray) {
      spans.push_back({f.countOffset, f.countOffset + 4, 4, std::string(f.name) + ".count"});
    }
    spans.push_back({f.offset, f.offset + f.size, NaturalAlign(f), f.name});
  }
  std::sort(spans.begin(), spans.end(), [](auto& a, auto& b) { return a.begin < b.begin; });
  uint32_t at = 0;
  for (const Span& sp : spans) {
    EXPECT_GE(sp.begin, at) << s.name << "." << sp.name << " overlaps the field before it";
    EXPECT_EQ(sp.begin % sp.align, 0u) << s.name << "." << sp.name << " is misaligned";
    EXPECT_LT(sp.begin - std::min(at, sp.begin), sp.align)
        << s.name << ": bytes " << at << ".." << sp.begin << " before " << sp.name
        << " are not covered by any field";
    at = std::max(at, sp.end);
  }
  EXPECT_LT(s.size - std::min(at, s.size), s.align)
      << s.name << ": bytes " << at << ".." << s.size << " at the end are not covered";
  EXPECT_LE(at, s.size) << s.name;
}

TEST(Catalogue, IsSound) {
  std::vector<std::string> problems = Catalogue::Validate();
  for (const std::string& p : problems) ADD_FAILURE() << p;
  EXPECT_FALSE(Catalogue::Rows().empty());
}

TEST(Catalogue, FieldListsTileEveryRecord) {
  for (const RecordSchema* s : Catalogue::Records()) ExpectFieldsTile(*s);
}

TEST(Catalogue, EveryRecordRoundTrips) {
  std::mt19937_64 rng(20261122);
  for (const RecordSchema* s : Catalogue::Records()) {
    for (int trial = 0; trial < 25; ++trial) {
      SCOPED_TRACE(std::string(s->name) + " trial " + std::to_string(trial));
      Arena storage;
      std::vector<char> original(s->size, 0), decoded(s->size, 0);
      FillRecord(*s, original.data(), rng, storage);

      std::vector<uint8_t> bytes;
      ASSERT_FALSE(appmgr::wire::EncodeAppend(*s, original.data(), bytes, "test"));
      Arena arena;
      CLmError e = appmgr::wire::Decode(*s, bytes.data(), bytes.size(), decoded.data(), arena, "t");
      ASSERT_FALSE(e) << e.AsString();
      std::string where;
      EXPECT_TRUE(SameRecord(*s, original.data(), decoded.data(), &where)) << "differs at " << where;

      std::vector<uint8_t> again;
      ASSERT_FALSE(appmgr::wire::EncodeAppend(*s, decoded.data(), again, "test"));
      EXPECT_EQ(bytes, again) << "equal records must give equal bytes";
    }
  }
}

TEST(Catalogue, AZeroedRecordEncodesToItsMinimumSize) {
  for (const RecordSchema* s : Catalogue::Records()) {
    std::vector<char> zero(s->size, 0);
    size_t length = 0;
    ASSERT_FALSE(appmgr::wire::Encode(*s, zero.data(), nullptr, 0, &length, "t"));
    EXPECT_EQ(length, s->minWireSize) << s->name;
  }
}

TEST(Catalogue, ARecordIsFoundByIdDirectionAndLength) {
  const MessageRow* req = Catalogue::Find(0x34000061, Direction::kRequest, 40);
  ASSERT_NE(req, nullptr);
  EXPECT_STREQ(req->record->name, "EnableServerCacheReq");
  EXPECT_EQ(req->responseId, 0x34000062u);
  EXPECT_STREQ(req->responseRecord->name, "EnableServerCacheResp");
  EXPECT_EQ(Catalogue::Find(0x34000061, Direction::kResponse, 40), nullptr);
  EXPECT_EQ(Catalogue::Find(0x34000061, Direction::kRequest, 41), nullptr);
  EXPECT_EQ(Catalogue::Find(0x35000001, Direction::kRequest, 40), nullptr);
  EXPECT_STREQ(Catalogue::Name(0x35000001), "UNKNOWN_MESSAGE");
}

TEST(Catalogue, RequestsPairWithTheirListedResponses) {
  EXPECT_EQ(appmgr::msg::kEnableServerCache.requestId, 0x34000061u);
  EXPECT_EQ(appmgr::msg::kEnableServerCache.responseId, 0x34000062u);
  for (const MessageRow* row : Catalogue::Rows()) {
    if (row->direction != Direction::kRequest) continue;
    const MessageRow* answer =
        Catalogue::Find(row->responseId, Direction::kResponse, row->responseRecord->size);
    ASSERT_NE(answer, nullptr) << row->name;
    EXPECT_EQ(answer->record, row->responseRecord) << row->name;
  }
}

}  // namespace
