// The walk of a list response, written once: for each index below the driving array's count,
// element i of each named array is appended to its out-list, in the order the columns are
// given. The out-lists are not cleared first, and a count of 0 touches none of them.
//
//   AppendRows(r.idCount, Ids(r.ids, ids), Names(r.names, names), Flags(r.flags, flags));
//
// Only the driver's count bounds the walk. The decoder has already refused a response whose
// other arrays are shorter than the driver (their fields are declared parallel to it), so
// element i is always there; nothing here reads a count of its own.
//
// Thread-safety: works on the caller's records and lists only.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "interfaces/Exchange.h"

namespace appmgr::adapters {

// 64-bit ids or values, as they are.
struct Ids {
  const uint64_t* items;
  std::list<unsigned long>& out;
  void Append(uint32_t i) const { out.push_back(items[i]); }
};

// Texts; a null text appends an empty string.
struct Names {
  const char* const* items;
  std::list<std::string>& out;
  void Append(uint32_t i) const { out.push_back(iface::Text(items[i])); }
};

// 64-bit flags: true when not zero.
struct Flags {
  const uint64_t* items;
  std::list<bool>& out;
  void Append(uint32_t i) const { out.push_back(items[i] != 0); }
};

template <class... Columns>
void AppendRows(uint32_t count, const Columns&... columns) {
  for (uint32_t i = 0; i < count; ++i) (columns.Append(i), ...);
}

}  // namespace appmgr::adapters
