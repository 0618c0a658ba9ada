// FileChecksum: the end-to-end checksum of a file put, XXH3 64-bit over the file's bytes in
// order. The sender feeds each chunk as it reads it and puts the digest in the file-end record;
// the receiver feeds each chunk as it writes it and compares. XXH3 runs at memory speed, so it
// costs a transfer little beside the copy itself.
//
// Thread-safety: an object is used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace appmgr::net {

// The checksum kinds a file-end record names. Numbers never change.
enum : uint32_t {
  kChecksumXxh3_64 = 1,
};

class FileChecksum {
 public:
  FileChecksum();
  ~FileChecksum();
  FileChecksum(const FileChecksum&) = delete;
  FileChecksum& operator=(const FileChecksum&) = delete;

  // Starts over, as for an empty file.
  void Reset();
  void Update(const void* data, size_t length);
  // The checksum of everything fed since the last Reset; feeding may go on.
  uint64_t Digest() const;

  // The checksum of one buffer.
  static uint64_t Of(const void* data, size_t length);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace appmgr::net
