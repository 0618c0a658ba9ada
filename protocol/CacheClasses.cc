#include "protocol/CacheClasses.h"

#include <algorithm>

namespace appmgr::wire {
namespace {

// Requests that are never cached.
constexpr uint32_t gNoCacheMessagesData[] = {
    0x340000f0, 0x34000122, 0x34000150, 0x34000160, 0x3400023e,
    0x34000240, 0x34000261, 0x34000285, 0x49000068, 0x4900007a,
};

// Critical requests: their answer clears the cache.
constexpr uint32_t gResetCacheMessagesData[] = {
    0x34000003, 0x34000005, 0x34000007, 0x3400000d, 0x3400000f, 0x34000011, 0x34000015, 0x34000019,
    0x3400001b, 0x3400001d, 0x34000021, 0x34000025, 0x34000029, 0x3400002b, 0x3400002d, 0x34000031,
    0x34000035, 0x34000037, 0x34000039, 0x3400003d, 0x3400003f, 0x34000043, 0x34000045, 0x34000049,
    0x3400004b, 0x3400004d, 0x3400004f, 0x34000053, 0x34000055, 0x34000059, 0x3400005b, 0x3400005d,
    0x3400007d, 0x34000083, 0x34000085, 0x34000089, 0x3400008b, 0x34000095, 0x3400009b, 0x3400009d,
    0x340000a1, 0x340000a9, 0x340000ab, 0x340000b4, 0x340000ba, 0x340000be, 0x340000c0, 0x340000c4,
    0x340000c8, 0x340000ca, 0x340000cc, 0x340000d4, 0x340000d6, 0x340000d8, 0x340000e4, 0x340000ea,
    0x340000ec, 0x340000ee, 0x340000f8, 0x340000fe, 0x34000108, 0x34000112, 0x34000116, 0x3400011a,
    0x34000126, 0x34000134, 0x34000136, 0x34000140, 0x34000144, 0x34000152, 0x34000154, 0x34000156,
    0x3400015a, 0x3400015c, 0x3400015e, 0x34000164, 0x34000166, 0x3400016a, 0x3400016c, 0x3400016e,
    0x34000172, 0x34000174, 0x34000178, 0x34000182, 0x3400018a, 0x3400018c, 0x34000198, 0x3400019a,
    0x34000208, 0x3400020a, 0x3400020e, 0x34000216, 0x34000218, 0x34000220, 0x34000222, 0x34000250,
    0x34000255, 0x34000257, 0x34000265, 0x34000269, 0x3400026b, 0x3400027c, 0x34000283, 0x3400028f,
    0x34000295, 0x34000299, 0x34000303, 0x34000305, 0x34000307, 0x49000022, 0x49000028, 0x4900002a,
    0x4900002c, 0x49000034, 0x49000036, 0x49000048, 0x4900004a, 0x4900004c, 0x49000060, 0x49000062,
};

static_assert(std::size(gNoCacheMessagesData) == 10);
static_assert(std::size(gResetCacheMessagesData) == 120);
static_assert(std::is_sorted(std::begin(gNoCacheMessagesData), std::end(gNoCacheMessagesData)));
static_assert(std::is_sorted(std::begin(gResetCacheMessagesData), std::end(gResetCacheMessagesData)));

}  // namespace

std::span<const uint32_t> NoCacheMessageIds() { return gNoCacheMessagesData; }
std::span<const uint32_t> ResetCacheMessageIds() { return gResetCacheMessagesData; }

bool IsNoCacheMessage(uint32_t id) {
  return std::binary_search(std::begin(gNoCacheMessagesData), std::end(gNoCacheMessagesData), id);
}

bool IsResetCacheMessage(uint32_t id) {
  return std::binary_search(std::begin(gResetCacheMessagesData), std::end(gResetCacheMessagesData), id);
}

}  // namespace appmgr::wire
