// The AVX2 build of the checksum's inner loop, chosen at run time by FileChecksum on processors
// that have AVX2 (about three times the SSE2 rate). This file alone is compiled with -mavx2, and
// it includes nothing but xxHash, whose functions are all static here: no inline function of a
// shared header can be emitted with AVX2 instructions and picked by the linker for code that
// runs on processors without them.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include "platform/net/FileChecksumImpl.h"

namespace appmgr::net::checksum_avx2 {

void Reset(void* state) { XXH3_64bits_reset(static_cast<XXH3_state_t*>(state)); }
void Update(void* state, const void* data, size_t length) {
  XXH3_64bits_update(static_cast<XXH3_state_t*>(state), data, length);
}
uint64_t Digest(const void* state) { return XXH3_64bits_digest(static_cast<const XXH3_state_t*>(state)); }
uint64_t Of(const void* data, size_t length) { return XXH3_64bits(data, length); }

}  // namespace appmgr::net::checksum_avx2
