// kpsDatabuf_v2: a description of a record in the caller's memory, and the arena that holds
// what decoding placed into that record (its texts and arrays).
//
// The buffer never owns the record memory: setExternalBuffer() points it at the caller's
// record for one exchange. The arena is the buffer's own and is released by
// CKpNetwork::FreeReceivedMessage (or Release()) in one step.
//
// Thread-safety: none; a buffer belongs to one wrapper on one thread.
#pragma once

#include "platform/net/Arena.h"

class kpsDatabuf_v2 {
 public:
  kpsDatabuf_v2() = default;
  kpsDatabuf_v2(const kpsDatabuf_v2&) = delete;
  kpsDatabuf_v2& operator=(const kpsDatabuf_v2&) = delete;

  // Describes `length` bytes of caller memory at `data`; both the room and the valid length.
  void setExternalBuffer(char* data, unsigned long length) {
    data_ = data;
    size_ = length;
    length_ = length;
  }

  char* data() const { return data_; }
  unsigned long size() const { return size_; }        // room
  unsigned long length() const { return length_; }    // valid bytes
  void setLength(unsigned long length) { length_ = length; }

  appmgr::wire::Arena& arena() { return arena_; }
  // Forgets what decoding placed (the record's text and array pointers become dangling).
  void Release() { arena_.Reset(); }

 private:
  char* data_ = nullptr;
  unsigned long size_ = 0;
  unsigned long length_ = 0;
  appmgr::wire::Arena arena_;
};
