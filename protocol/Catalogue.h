// The message catalogue: every message the App Manager protocol knows, its record, its
// printable name and, for a request, the message that answers it.
//
// The rows come from protocol/messages/*.def; nothing else in the project lists message ids.
// KPS_PRIM_STRING, ConvertXdr, the server's dispatch, the fuzzers and the tests read it.
//
// Thread-safety: immutable after its first use (which builds the index under a magic static).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "protocol/Message.h"

namespace appmgr::wire {

class Catalogue {
 public:
  // All rows, requests and responses, with a response shared by several requests listed once.
  static std::span<const MessageRow* const> Rows();
  // Every catalogued record schema, each once.
  static std::span<const RecordSchema* const> Records();

  // The row for a message id, direction and record length; null when none matches.
  static const MessageRow* Find(uint32_t id, Direction direction, uint32_t recordLength);
  // The row for an id and a record length in either direction; null when none or when the
  // pair is ambiguous (the same id and length in both directions with different records).
  static const MessageRow* FindAnyDirection(uint32_t id, uint32_t recordLength);
  // All rows of one id.
  static std::vector<const MessageRow*> RowsOf(uint32_t id);
  // The printable name of an id: its row's name, the names of its rows joined by "|" when
  // several records share it, or "UNKNOWN_MESSAGE".
  static const char* Name(uint32_t id);

  // Problems in the catalogue itself (an id and length listed twice with different records, a
  // request whose answer is not listed, ...); empty when sound.
  static std::vector<std::string> Validate();
};

}  // namespace appmgr::wire
