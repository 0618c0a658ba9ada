#include "platform/net/FileChecksum.h"

// Header-only use of the library: nothing to link into the shared library that carries this.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include "platform/net/FileChecksumImpl.h"

namespace appmgr::net {
namespace {

// AVX2 when the processor has it, decided once per process.
bool UseAvx2() {
#if defined(__x86_64__) && defined(APPMGR_CHECKSUM_AVX2)
  static const bool avx2 = __builtin_cpu_supports("avx2");
  return avx2;
#else
  return false;
#endif
}

}  // namespace

struct FileChecksum::State {
  XXH3_state_t xxh;
};

FileChecksum::FileChecksum() : state_(std::make_unique<State>()) {
  XXH3_INITSTATE(&state_->xxh);
  Reset();
}
FileChecksum::~FileChecksum() = default;

void FileChecksum::Reset() {
  if (UseAvx2()) {
    checksum_avx2::Reset(&state_->xxh);
  } else {
    XXH3_64bits_reset(&state_->xxh);
  }
}

void FileChecksum::Update(const void* data, size_t length) {
  if (length == 0) return;
  if (UseAvx2()) {
    checksum_avx2::Update(&state_->xxh, data, length);
  } else {
    XXH3_64bits_update(&state_->xxh, data, length);
  }
}

uint64_t FileChecksum::Digest() const {
  return UseAvx2() ? checksum_avx2::Digest(&state_->xxh) : XXH3_64bits_digest(&state_->xxh);
}

uint64_t FileChecksum::Of(const void* data, size_t length) {
  return UseAvx2() ? checksum_avx2::Of(data, length) : XXH3_64bits(data, length);
}

}  // namespace appmgr::net
