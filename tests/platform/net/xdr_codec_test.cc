#include "platform/net/XdrCodec.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "platform/net/KpXdr.h"
#include "protocol/Schemas.h"
#include "tests/support/RecordSamples.h"

namespace {

using appmgr::wire::Arena;
using appmgr::wire::Wire;
using Bytes = std::vector<uint8_t>;

Bytes Be32(uint32_t v) { return {uint8_t(v >> 24), uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)}; }
Bytes Be64(uint64_t v) {
  Bytes b = Be32(uint32_t(v >> 32)), l = Be32(uint32_t(v));
  b.insert(b.end(), l.begin(), l.end());
  return b;
}
Bytes Cat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}
Bytes Str(const char* s) {  // optional data holding s
  Bytes b = Cat({Be32(1), Be32(uint32_t(strlen(s)))});
  b.insert(b.end(), s, s + strlen(s));
  while (b.size() % 4) b.push_back(0);
  return b;
}

// The response header of version 2 with no error, as encoded.
Bytes OkRespHdr() { return Cat({Be64(2), Be32(0), Be32(0), Be64(0)}); }

GenericGetPropsResp ThreeProps() {
  static AppMgrProps props[3] = {{"alpha", 1, "one"}, {"b", 2, nullptr}, {"gamma", 3, ""}};
  GenericGetPropsResp r;
  r.hdr.version = 2;
  r.count = 3;
  r.props = props;
  return r;
}

TEST(XdrEncoding, FollowsTheWireGrammarByteForByte) {
  GenericLookupResp4 r;
  r.hdr.version = 2;
  r.hdr.errorCode = -5;
  r.hdr.errorText = "bad";
  r.hdr.reserved = 0x0102030405060708;
  r.value = -2;
  r.name = "backupset1";
  r.text = nullptr;
  Bytes b;
  ASSERT_FALSE(appmgr::wire::EncodeRecord(r, b));
  Bytes expected = Cat({Be64(2), Be32(0xfffffffb), Str("bad"), Be64(0x0102030405060708),
                        Be64(0xfffffffffffffffe), Str("backupset1"), Be32(0)});
  EXPECT_EQ(b, expected);

  GenericStringListResp list;
  const char* texts[] = {"a", ""};
  list.count = 2;
  list.texts = texts;
  b.clear();
  ASSERT_FALSE(appmgr::wire::EncodeRecord(list, b));
  EXPECT_EQ(b, Cat({Be64(0), Be32(0), Be32(0), Be64(0), Be32(2), Str("a"), Str("")}));
}

TEST(XdrEncoding, StructPaddingDoesNotReachTheWire) {
  alignas(8) unsigned char garbage[sizeof(GenericSetPropsReq)];
  memset(garbage, 0xAB, sizeof garbage);
  auto* dirty = reinterpret_cast<GenericSetPropsReq*>(garbage);
  GenericSetPropsReq clean;
  for (GenericSetPropsReq* r : {dirty, &clean}) {
    r->hdr.version = 2;
    r->hdr.hostName = "h";
    r->hdr.pid = 1;
    r->hdr.threadId = 2;
    r->id = 3;
    r->count = 0;
    r->props = nullptr;
    r->flag = 1;
  }
  Bytes a, b;
  ASSERT_FALSE(appmgr::wire::EncodeRecord(*dirty, a));
  ASSERT_FALSE(appmgr::wire::EncodeRecord(clean, b));
  EXPECT_EQ(a, b);
}

TEST(XdrEncoding, MeasuresWithoutWritingPastTheRoom) {
  GenericGetPropsResp r = ThreeProps();
  size_t needed = 0;
  ASSERT_FALSE(appmgr::wire::Encode(Wire<GenericGetPropsResp>::schema, &r, nullptr, 0, &needed, "t"));
  Bytes room(needed + 8, 0xEE);
  size_t written = 0;
  ASSERT_FALSE(appmgr::wire::Encode(Wire<GenericGetPropsResp>::schema, &r, room.data(), needed - 1,
                                    &written, "t"));
  EXPECT_EQ(written, needed);
  for (size_t i = needed - 4; i < room.size(); ++i) EXPECT_EQ(room[i], 0xEE) << i;
}

TEST(XdrEncoding, RefusesACountWithoutElements) {
  GenericGetPropsResp r;
  r.count = 2;
  Bytes b;
  CLmError e = appmgr::wire::EncodeRecord(r, b, "BS_PROPS_RESP");
  ASSERT_TRUE(e);
  EXPECT_EQ(e.GetErrorCode(), kKpErrBadArgument);
  EXPECT_EQ(e.AsString(),
            "BS_PROPS_RESP GenericGetPropsResp.props: count 2 with a null element pointer");
  EXPECT_TRUE(b.empty());
}

TEST(XdrDecoding, EveryTruncatedPrefixFailsCleanly) {
  std::mt19937_64 rng(7);
  GenericGetPropsResp props = ThreeProps();
  GenericListPairResp pairs;
  uint64_t ids[] = {1, 2};
  const char* names[] = {"x", "yy"};
  pairs.idCount = 2;
  pairs.ids = ids;
  pairs.nameCount = 2;
  pairs.names = names;
  struct Case {
    const appmgr::wire::RecordSchema* schema;
    const void* record;
  } cases[] = {{&Wire<GenericGetPropsResp>::schema, &props},
               {&Wire<GenericListPairResp>::schema, &pairs}};
  for (const Case& c : cases) {
    Bytes full;
    ASSERT_FALSE(appmgr::wire::EncodeAppend(*c.schema, c.record, full, "t"));
    for (size_t n = 0; n < full.size(); ++n) {
      // A copy of exactly n bytes, so a read past the prefix is caught by the sanitizers.
      std::unique_ptr<uint8_t[]> prefix(new uint8_t[n ? n : 1]);
      memcpy(prefix.get(), full.data(), n);
      std::vector<char> rec(c.schema->size, 0);
      Arena arena;
      CLmError e = appmgr::wire::Decode(*c.schema, prefix.get(), n, rec.data(), arena, "t");
      ASSERT_TRUE(e) << c.schema->name << " prefix " << n;
      EXPECT_EQ(e.GetErrorCode(), kKpErrProtocol);
    }
  }
}

struct HostileCase {
  const char* name;
  Bytes bytes;
  const char* expected;  // the error text after "t GenericGetPropsResp"
};

TEST(XdrDecoding, RejectsHostileBytesNamingTheField) {
  Bytes propName = Str("n");
  HostileCase cases[] = {
      {"count beyond the bytes", Cat({OkRespHdr(), Be32(0xffffffff)}),
       ".props: count 4294967295 needs at least 68719476720 bytes, 0 left"},
      {"text longer than the frame",
       Cat({OkRespHdr(), Be32(1), Be32(1), Be32(4000000), Be64(0)}),
       ".props[0].name: text length 4000000 exceeds the 8 bytes left"},
      {"present flag 2", Cat({OkRespHdr(), Be32(1), Be32(2), Be64(0), Be32(0)}),
       ".props[0].name: present flag is 2, not 0 or 1"},
      {"NUL inside a text",
       Cat({OkRespHdr(), Be32(1), Be32(1), Be32(2), {'a', 0, 0, 0}, Be64(1), Be32(0)}),
       ".props[0].name: text holds a NUL byte"},
      {"non-zero padding",
       Cat({OkRespHdr(), Be32(1), Be32(1), Be32(1), {'a', 1, 0, 0}, Be64(1), Be32(0)}),
       ".props[0].name: padding bytes are not zero"},
      {"value text cut short",
       Cat({OkRespHdr(), Be32(1), Be32(0), Be64(1), Be32(1)}),
       ".props[0].value: needs 4 bytes, 0 left"},
      {"trailing bytes", Cat({OkRespHdr(), Be32(0), Be32(0)}), ": 4 bytes follow the record"},
      {"header text too long", Cat({Be64(2), Be32(0), Be32(1), Be32(0x7fffffff)}),
       ".hdr.errorText: text length 2147483647 exceeds the 0 bytes left"},
  };
  for (const HostileCase& c : cases) {
    GenericGetPropsResp r;
    Arena arena;
    CLmError e = appmgr::wire::DecodeRecord(c.bytes.data(), c.bytes.size(), r, arena, "t");
    ASSERT_TRUE(e) << c.name;
    EXPECT_EQ(e.GetErrorCode(), kKpErrProtocol) << c.name;
    EXPECT_EQ(e.AsString(), std::string("t GenericGetPropsResp") + c.expected) << c.name;
    EXPECT_LT(arena.BytesInUse(), 64u) << c.name << ": allocated before checking";
  }
}

// A list response is walked by its ids' count and reads names at the same indexes: names
// shorter than ids would be read past their end, so they are refused; longer ones are harmless.
TEST(XdrDecoding, AParallelArrayShorterThanItsDriverIsRefused) {
  struct Case {
    uint32_t ids, names;
    bool ok;
  } cases[] = {{3, 2, false}, {1, 0, false}, {2, 2, true}, {1, 3, true}, {0, 0, true}};
  for (const Case& c : cases) {
    Bytes b = Cat({OkRespHdr(), Be32(c.ids)});
    for (uint32_t i = 0; i < c.ids; ++i) b = Cat({b, Be64(100 + i)});
    b = Cat({b, Be32(c.names)});
    for (uint32_t i = 0; i < c.names; ++i) b = Cat({b, Str("n")});
    GenericListPairResp r;
    Arena arena;
    CLmError e = appmgr::wire::DecodeRecord(b.data(), b.size(), r, arena, "t");
    EXPECT_EQ(!e, c.ok) << c.ids << " ids, " << c.names << " names: " << e.AsString();
    if (!c.ok) {
      EXPECT_EQ(e.GetErrorCode(), kKpErrProtocol);
      EXPECT_EQ(e.AsString(), "t GenericListPairResp.names: holds " + std::to_string(c.names) +
                                  " elements, fewer than the " + std::to_string(c.ids) +
                                  " of ids, which it is read beside");
    }
  }
}

TEST(XdrDecoding, RandomBytesNeverCrashOrOverAllocate) {
  std::mt19937_64 rng(99);
  for (int i = 0; i < 3000; ++i) {
    Bytes b(rng() % 200);
    for (uint8_t& x : b) x = static_cast<uint8_t>(rng() % 4 == 0 ? rng() : rng() % 3);
    GenericListPairResp r;
    Arena arena;
    CLmError e = appmgr::wire::DecodeRecord(b.data(), b.size(), r, arena);
    EXPECT_LE(arena.BytesInUse(), 4 * b.size() + 64);
    if (!e) {  // what decodes must encode back to the same bytes
      Bytes again;
      ASSERT_FALSE(appmgr::wire::EncodeRecord(r, again));
      EXPECT_EQ(again, b);
    }
  }
}

TEST(XdrDecoding, TextsOfOneMessageShareTheArena) {
  std::mt19937_64 rng(3);
  Arena storage;
  GenericGetPropsResp big;
  FillRecord(Wire<GenericGetPropsResp>::schema, &big, rng, storage, {false, 0});
  std::vector<AppMgrProps> props(50);
  for (auto& p : props) {
    p.name = "property-name";
    p.value = "a property value of some length";
  }
  big.count = 50;
  big.props = props.data();
  Bytes b;
  ASSERT_FALSE(appmgr::wire::EncodeRecord(big, b));
  Arena arena;
  for (int round = 0; round < 3; ++round) {
    GenericGetPropsResp r;
    ASSERT_FALSE(appmgr::wire::DecodeRecord(b.data(), b.size(), r, arena));
    EXPECT_STREQ(r.props[49].value, "a property value of some length");
    arena.Reset();
  }
  EXPECT_EQ(arena.BlocksHeld(), 1u) << "a reused arena keeps one block and allocates no more";
}

TEST(ConvertXdr, ReportsTheRoomNeededAndDecodesByIdAndLength) {
  EnableServerCacheReq req;
  req.hdr.version = 2;
  req.hdr.hostName = "host";
  req.jobId = 77;
  kpsDatabuf_v2 in;
  in.setExternalBuffer(reinterpret_cast<char*>(&req), sizeof req);
  uint8_t small[8];
  int length = sizeof small;
  int code = 0;
  CLmError e = KpConvertXdr(KPNETWORK_XDR_ENCODE, 0x34000061, small, &in, &length, nullptr, code);
  ASSERT_TRUE(e);
  EXPECT_EQ(code, kKpErrLimit);
  ASSERT_EQ(length, 44);  // 8 + (4+4+4) + 8 + 8 + 8

  std::vector<uint8_t> room(length);
  ASSERT_FALSE(KpConvertXdr(KPNETWORK_XDR_ENCODE, 0x34000061, room.data(), &in, &length, nullptr, code));
  EXPECT_EQ(code, 0);

  EnableServerCacheReq back;
  kpsDatabuf_v2 out;
  out.setExternalBuffer(reinterpret_cast<char*>(&back), sizeof back);
  int dir = KPNETWORK_XDR_REQUEST;
  ASSERT_FALSE(KpConvertXdr(KPNETWORK_XDR_DECODE, 0x34000061, &out, room.data(), &length, &dir, code));
  EXPECT_EQ(back.jobId, 77u);
  EXPECT_STREQ(back.hdr.hostName, "host");

  dir = KPNETWORK_XDR_RESPONSE;
  e = KpConvertXdr(KPNETWORK_XDR_DECODE, 0x34000061, &out, room.data(), &length, &dir, code);
  ASSERT_TRUE(e);
  EXPECT_EQ(code, kKpErrNotSupported);
  e = KpConvertXdr(KPNETWORK_XDR_ENCODE, 0x35000001, room.data(), &in, &length, nullptr, code);
  EXPECT_EQ(e.AsString(), "message 0x35000001 (UNKNOWN_MESSAGE) has no record of 40 bytes in the catalogue");
}

TEST(KpsPrimString, NamesCataloguedIdsAndAdmitsUnknownOnes) {
  EXPECT_STREQ(KPS_PRIM_STRING(0x3400027f), "BS_LOOKUP_REQ");
  // One id, two records (told apart by length): both names.
  EXPECT_STREQ(KPS_PRIM_STRING(0x34000061), "ENABLE_SERVER_CACHE_REQ|GET_ORBIT_LIST_REQ");
  EXPECT_STREQ(KPS_PRIM_STRING(0x34000062), "ENABLE_SERVER_CACHE_RESP|GET_ORBIT_LIST_RESP");
  EXPECT_STREQ(KPS_PRIM_STRING(0x35000001), "UNKNOWN_MESSAGE");
  EXPECT_STREQ(KPS_PRIM_STRING(0x1234567890ul), "UNKNOWN_MESSAGE");
}

TEST(DebugString, ShowsEveryFieldReadably) {
  GenericGetPropsResp r = ThreeProps();
  EXPECT_EQ(appmgr::wire::DebugString(Wire<GenericGetPropsResp>::schema, &r),
            "{hdr={version=2 errorCode=0 errorText=null reserved=0} props=[{name=\"alpha\" type=1 "
            "value=\"one\"}, {name=\"b\" type=2 value=null}, {name=\"gamma\" type=3 value=\"\"}]}");
}

}  // namespace
