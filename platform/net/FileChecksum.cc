#include "platform/net/FileChecksum.h"

// Header-only use of the library: nothing to link into the shared library that carries this.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace appmgr::net {

struct FileChecksum::State {
  XXH3_state_t xxh;
};

FileChecksum::FileChecksum() : state_(std::make_unique<State>()) {
  XXH3_INITSTATE(&state_->xxh);
  Reset();
}
FileChecksum::~FileChecksum() = default;

void FileChecksum::Reset() { XXH3_64bits_reset(&state_->xxh); }

void FileChecksum::Update(const void* data, size_t length) {
  if (length != 0) XXH3_64bits_update(&state_->xxh, data, length);
}

uint64_t FileChecksum::Digest() const { return XXH3_64bits_digest(&state_->xxh); }

uint64_t FileChecksum::Of(const void* data, size_t length) { return XXH3_64bits(data, length); }

}  // namespace appmgr::net
