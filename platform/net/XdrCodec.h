// The record codec: App Manager records to XDR bytes and back, by their field lists.
//
// Encoding (big-endian, 4-byte units, as XDR defines them):
//   kU32, kI32   4 bytes (unsigned int / int)
//   kU64, kI64   8 bytes (unsigned hyper / hyper)
//   kText        optional data: a 4-byte present flag (0 or 1), then, when present, the string:
//                a 4-byte length, the bytes, zero padding to a multiple of 4
//   kChars[N]    fixed opaque: the N bytes, zero padding to a multiple of 4
//   kStruct      the nested record's fields in place
//   kArray       variable-length array: a 4-byte count, then each element record
// Struct padding is not sent, so equal records give equal bytes.
//
// Decoding writes straight into the caller's record. Texts and arrays go to the caller's Arena.
// Every length and count is checked against the bytes that remain before anything is
// allocated, so decoding allocates at most a small multiple of its input; texts must not hold
// NUL bytes, padding must be zero, present flags 0 or 1, no byte may follow the record, and an
// array read beside another (WIRE_PARALLEL_ARRAY) may not be shorter than it.
// A failure names the message, the field path and what was wrong, e.g.
//   "BS_STORE_LIST_RESP GenericStringListResp.texts[2]: text length 900 exceeds the 12 bytes left"
//
// Thread-safety: the functions are pure; distinct calls may run at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/CLmError.h"
#include "platform/net/Arena.h"
#include "protocol/WireSchema.h"

namespace appmgr::wire {

// Encodes `record`. Always sets *length to the bytes the encoding takes; writes them to `out`
// only when they fit in `capacity` (which may be 0 with a null `out`, to measure). A record
// that cannot be encoded (an array count with a null pointer) is an error. `what` names the
// message in error texts.
CLmError Encode(const RecordSchema& schema, const void* record, uint8_t* out, size_t capacity,
                size_t* length, const char* what);

// Encodes `record` and appends the bytes to `out`.
CLmError EncodeAppend(const RecordSchema& schema, const void* record, std::vector<uint8_t>& out,
                      const char* what);

// Decodes exactly `length` bytes into `record` (which should be zeroed; fields are written,
// padding is left alone). Texts and arrays are placed in `arena`.
CLmError Decode(const RecordSchema& schema, const uint8_t* data, size_t length, void* record,
                Arena& arena, const char* what);

// A readable rendering of a record, for logs, tests and tools:
//   {hdr={version=2 errorCode=0 errorText=null reserved=0} value=7 name="x" text=null}
std::string DebugString(const RecordSchema& schema, const void* record);

template <class T>
CLmError EncodeRecord(const T& record, std::vector<uint8_t>& out, const char* what = nullptr) {
  return EncodeAppend(Wire<T>::schema, &record, out, what ? what : Wire<T>::schema.name);
}

template <class T>
CLmError DecodeRecord(const uint8_t* data, size_t length, T& record, Arena& arena,
                      const char* what = nullptr) {
  return Decode(Wire<T>::schema, data, length, &record, arena, what ? what : Wire<T>::schema.name);
}

}  // namespace appmgr::wire
