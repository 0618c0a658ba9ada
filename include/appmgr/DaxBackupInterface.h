// DaxBackupInterface: the agent XML passthrough. Obtained from getLibraryInterface(14); the
// caller owns the object and deletes it through this class. Objects hold no state.
//
// The order of the declarations below is the order of the class's virtual table.
#pragma once

#include <string>

class DaxBackupInterface {
 public:
  virtual ~DaxBackupInterface() = default;

  // Hands an agent's XML request to the App Manager with the two ids, and replaces `xml` with
  // its answer. Returns the server's status for the request (0: served), and replaces `xml` even
  // when that status is not 0; on a transport failure, its status, and `xml` as it was.
  virtual int handleXMLRequest(unsigned long id1, unsigned long id2, std::string& xml) = 0;
};
