// The two headers every App Manager record begins with.
//
// Records are plain structures whose layout is a contract with the session library, which
// encodes them by message id; sizes and offsets are locked below. Constructors zero every
// field. Text fields point at NUL-terminated characters owned by someone else: the caller's
// strings in a request, the session's receive buffer in a received response.
#pragma once

#include <cstddef>
#include <cstdint>

// First member of every request record.
struct AppMgrReqHdr {
  uint64_t version = 0;              // protocol version of the sender; always 2
  const char* hostName = nullptr;    // the sender's host name
  int64_t pid = 0;                   // process id of the sender, sign-extended
  uint64_t threadId = 0;             // the sending thread's identifier
};
static_assert(sizeof(AppMgrReqHdr) == 32);
static_assert(offsetof(AppMgrReqHdr, hostName) == 8);
static_assert(offsetof(AppMgrReqHdr, pid) == 16);
static_assert(offsetof(AppMgrReqHdr, threadId) == 24);

// First member of every response record.
struct AppMgrRespHdr {
  uint64_t version = 0;              // protocol version of the reply; must be 2
  int32_t errorCode = 0;             // 0 success; 100 a status not logged as an error
  const char* errorText = nullptr;   // the server's text for a non-zero code; may be null
  uint64_t reserved = 0;             // carried unchanged, never interpreted
};
static_assert(sizeof(AppMgrRespHdr) == 32);
static_assert(offsetof(AppMgrRespHdr, errorCode) == 8);
static_assert(offsetof(AppMgrRespHdr, errorText) == 16);
static_assert(offsetof(AppMgrRespHdr, reserved) == 24);
