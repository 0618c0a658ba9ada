// What a message is to the catalogue: an id, a direction and the record it carries.
//
// A record is found by (message id, direction, record length), never by id alone: a few ids
// name two records (0x34000061 carries both the cache-fill request and the orbit-list request,
// told apart by length), and one id is both a request and a response with different headers.
// The frame carries all three, so a receiver always knows which record it holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "appmgr/records/AppMgrHeaders.h"
#include "protocol/WireSchema.h"

namespace appmgr::wire {

enum class Direction : uint8_t { kRequest = 0, kResponse = 1 };

// One row of the catalogue.
struct MessageRow {
  uint32_t id;
  Direction direction;
  const RecordSchema* record;
  const char* name;                     // printable name of this message
  uint32_t responseId;                  // request rows: the id that answers it; 0 otherwise
  const RecordSchema* responseRecord;   // request rows: the record that answers it
};

// A request/response pair as operations and handlers use it. The record types are part of the
// type, so an operation cannot send or decode the wrong record under an id.
template <class Req, class Resp>
struct Op {
  static_assert(std::is_same_v<decltype(Req::hdr), AppMgrReqHdr> && offsetof(Req, hdr) == 0,
                "a request record begins with AppMgrReqHdr");
  static_assert(std::is_same_v<decltype(Resp::hdr), AppMgrRespHdr> && offsetof(Resp, hdr) == 0,
                "a response record begins with AppMgrRespHdr");
  using Request = Req;
  using Response = Resp;

  uint32_t requestId;
  uint32_t responseId;  // fixed per message; never computed from the request id
  const char* requestName;
  const char* responseName;

  static constexpr const RecordSchema& requestSchema() { return Wire<Req>::schema; }
  static constexpr const RecordSchema& responseSchema() { return Wire<Resp>::schema; }
};

}  // namespace appmgr::wire
