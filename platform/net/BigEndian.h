// Network byte order (big-endian) loads and stores of 32- and 64-bit words at any alignment,
// shared by the frame header and the record codec.
#pragma once

#include <cstdint>
#include <cstring>

namespace appmgr::net {

inline void PutU32(uint8_t* p, uint32_t v) {
  v = __builtin_bswap32(v);
  std::memcpy(p, &v, 4);
}
inline void PutU64(uint8_t* p, uint64_t v) {
  v = __builtin_bswap64(v);
  std::memcpy(p, &v, 8);
}
inline uint32_t GetU32(const uint8_t* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  return __builtin_bswap32(v);
}
inline uint64_t GetU64(const uint8_t* p) {
  uint64_t v;
  std::memcpy(&v, p, 8);
  return __builtin_bswap64(v);
}

}  // namespace appmgr::net
