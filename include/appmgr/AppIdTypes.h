// Caller-side types of the application-id interface: the application id and its text form.
//
// The library carries the nine numbers, three texts and the option positionally; what each
// means is the App Manager's (appmgrd's meaning is in docs/server.md).
#pragma once

#include <string>

#include "appmgr/AppMgrDefs.h"

// One application id. The caller owns it; operations update it in place.
struct AppIdInfo {
  unsigned long number[9] = {};
  std::string text[3];
  unsigned int option = 0;

  // Writes the text form into `out` (replacing what it held): number 3, number 0, numbers 4 to
  // 8 in decimal, then texts 0 to 2, with KP_STRING_APPLICATIONID_DELIMITER between neighbours.
  // Numbers 1 and 2 and the option are not part of it; number 3 comes first on purpose.
  void dump(std::string& out) const {
    static constexpr int kOrder[] = {3, 0, 4, 5, 6, 7, 8};
    out.clear();
    for (int n : kOrder) {
      if (!out.empty()) out += KP_STRING_APPLICATIONID_DELIMITER;
      out += std::to_string(number[n]);
    }
    for (const std::string& t : text) {
      out += KP_STRING_APPLICATIONID_DELIMITER;
      out += t;
    }
  }
};

// Given to createApplicationId, which never calls it; kept for callers that pass one.
class AppIdCallBack {
 public:
  virtual ~AppIdCallBack() = default;
};
