// GlobalParamInterface: the App Manager's global parameters and application properties.
// Obtained from getLibraryInterface(9); the caller owns the object and deletes it through this
// class. Objects hold no state, so one may serve many threads.
//
// A global parameter is a named text value; an application property is a text value addressed
// by two ids. Every operation is one request/response with the App Manager and returns 0 or the
// code of the step that failed, with `errorString` holding that step's text (the server's text
// for a server error). `value` is written only on success. The trailing void* is never read.
#pragma once

#include <string>

#include "appmgr/AppMgrTypes.h"

class GlobalParamInterface {
 public:
  virtual ~GlobalParamInterface() = default;

  // The value of the parameter `name`. A null value in the answer leaves `value` as it was.
  // The long is not sent.
  virtual int getProperty(const std::string& name, std::string& value, std::string& errorString,
                          long reserved, void* context) = 0;
  // Sets the parameter named by the property to its value; the property's type and the bool are
  // not sent.
  virtual int setProperty(const ApplProperty& property, std::string& errorString, bool flag,
                          void* context) = 0;
  // Removes the parameter the property names (only its name is sent); the same request as the
  // overload below.
  virtual int removeProperty(const ApplProperty& property, std::string& errorString,
                             void* context) = 0;
  virtual int removeProperty(const std::string& name, std::string& errorString, void* context) = 0;
  // The application property (id1, id2). A null value in the answer leaves `value` as it was.
  virtual int getAppProperty(unsigned long id1, unsigned long id2, std::string& value,
                             std::string& errorString, void* context) = 0;
  virtual int setAppProperty(unsigned long id1, unsigned long id2, const std::string& value,
                             std::string& errorString, void* context) = 0;
};
