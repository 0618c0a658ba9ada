// LogMonitorInterface: log monitoring. Obtained from getLibraryInterface(13); the caller owns
// the object and deletes it through this class. Objects hold no state, so one may serve many
// threads at once.
//
// Both operations carry a text to the App Manager; neither writes a caller-visible error text,
// so callers learn of a failure from the status alone.
//
// The order of the declarations below is the order of the class's virtual table.
#pragma once

#include <string>

class LogMonitorInterface {
 public:
  virtual ~LogMonitorInterface() = default;

  // Sends `xml` (a log-monitoring request document) with the two ids, and replaces it with the
  // server's answer. 0 whenever the exchange itself succeeded: the server's outcome is inside the
  // answer. On a transport failure, its status, and `xml` as it was.
  virtual int logMonitoringOperation(unsigned long id1, unsigned long id2, std::string& xml) = 0;
  // The log-monitoring parameter `name` of `type` that belongs to `id`. On success `value` gets
  // it (a null answer leaves it as it was). `errorString` is never written.
  virtual int getProperties(unsigned long id, unsigned int type, const std::string& name,
                            std::string& value, std::string& errorString, void* context) = 0;
};
