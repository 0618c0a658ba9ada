// ClientGroupInterface: client groups. Obtained from getLibraryInterface(10); the caller owns the
// object and deletes it through this class. Objects hold no state, so one may serve many
// threads.
//
// lookup and create send a group record and fill it from the answer: on success all nine
// members are overwritten, on failure none is. Each returns 0 or the code of the step that
// failed, with `errorString` holding that step's text (the server's text for a server error).
// update and remove are not provided: they return 0xa0010 with "Api not implemented." and send
// nothing. The trailing void* is never read.
#pragma once

#include <string>

#include "appmgr/ClientGroupTypes.h"

class ClientGroupInterface {
 public:
  virtual ~ClientGroupInterface() = default;

  // Sends int2, int4, int5, int6 and the three texts (never int1 or int3). A null text in the
  // answer makes that member empty.
  virtual int lookup(_AppClientGroupInfo& info, std::string& errorString, void* context) = 0;
  // Sends int2 to int6 and the three texts (never int1).
  virtual int create(_AppClientGroupInfo& info, std::string& errorString, void* context) = 0;
  virtual int update(_AppClientGroupInfo& info, std::string& errorString,
                     void* context) = 0;  // not provided
  virtual int remove(unsigned long id, std::string& errorString,
                     void* context) = 0;  // not provided
};
