#include "platform/net/Arena.h"

#include <algorithm>
#include <cstdint>

namespace appmgr::wire {

void* Arena::Allocate(size_t bytes, size_t align) {
  if (!blocks_.empty()) {
    Block& b = blocks_.back();
    auto base = reinterpret_cast<uintptr_t>(b.data.get());
    size_t start = ((base + used_ + align - 1) & ~(uintptr_t(align) - 1)) - base;
    if (start + bytes <= b.size) {
      used_ = start + bytes;
      inUse_ += bytes;
      return b.data.get() + start;
    }
  }
  size_t size = std::max(nextBlockSize_, bytes + align);
  blocks_.push_back({std::make_unique_for_overwrite<std::byte[]>(size), size});
  nextBlockSize_ = size * 2;
  Block& b = blocks_.back();
  auto base = reinterpret_cast<uintptr_t>(b.data.get());
  size_t start = ((base + align - 1) & ~(uintptr_t(align) - 1)) - base;
  used_ = start + bytes;
  inUse_ += bytes;
  return b.data.get() + start;
}

void Arena::Reset() {
  if (blocks_.size() > 1) {
    auto largest = std::max_element(blocks_.begin(), blocks_.end(),
                                    [](const Block& a, const Block& b) { return a.size < b.size; });
    Block keep = std::move(*largest);
    blocks_.clear();
    blocks_.push_back(std::move(keep));
  }
  used_ = 0;
  inUse_ = 0;
}

}  // namespace appmgr::wire
