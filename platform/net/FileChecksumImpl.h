// The two builds of FileChecksum's hashing (FileChecksum.cc: SSE2, which every x86-64 has;
// FileChecksumAvx2.cc: AVX2). Both work on the same XXH3_state_t, passed untyped so that this
// header needs no xxHash.
#pragma once

#include <cstddef>
#include <cstdint>

namespace appmgr::net::checksum_avx2 {

void Reset(void* state);
void Update(void* state, const void* data, size_t length);
uint64_t Digest(const void* state);
uint64_t Of(const void* data, size_t length);

}  // namespace appmgr::net::checksum_avx2
