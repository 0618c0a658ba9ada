// Caller-side types of the subclient interface.
#pragma once

#include <string>

#include "appmgr/records/SCRecords.h"  // RefCopySCInfo: callers receive the wire element as it is

// One data path of a subclient's application. No operation of this library fills or reads it:
// the operations that take it answer "Feature Not Supported".
struct AppToDataPathItem {
  unsigned long id = 0;
  std::string path;
};
