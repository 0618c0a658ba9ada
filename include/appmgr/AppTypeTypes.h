// Caller-side types of the application-type interface.
#pragma once

#include <string>

// A volume of a client and the path it is mounted at, as callers keep it. The library declares
// the list operation that would fill it and never fills one (it answers "Feature Not
// Supported").
struct DCVolAndMountPathData {
  unsigned long volumeId = 0;
  std::string volumeGuid;
  std::string mountPath;
};
