// Arena: the memory of one received message's texts and arrays, released in one step.
//
// Allocation bumps a pointer through a block; a new block (at least twice the last) is taken
// only when one runs out, so decoding a message costs a handful of allocations however many
// texts it holds, and none at all once the arena has grown to the size of the messages it sees:
// Reset() keeps the largest block for the next message.
//
// Thread-safety: none; one arena belongs to one receive buffer.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace appmgr::wire {

class Arena {
 public:
  explicit Arena(size_t firstBlock = 4096) : nextBlockSize_(firstBlock) {}
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;
  Arena(Arena&&) = default;
  Arena& operator=(Arena&&) = default;

  // Memory for `bytes` bytes aligned to `align` (a power of two up to 16). Throws
  // std::bad_alloc when the system has none.
  void* Allocate(size_t bytes, size_t align);
  // Forgets everything allocated; keeps the largest block.
  void Reset();

  size_t BytesInUse() const { return inUse_; }
  size_t BlocksHeld() const { return blocks_.size(); }

 private:
  struct Block {
    std::unique_ptr<std::byte[]> data;
    size_t size;
  };
  std::vector<Block> blocks_;
  size_t used_ = 0;  // in the last block
  size_t inUse_ = 0;
  size_t nextBlockSize_;
};

}  // namespace appmgr::wire
