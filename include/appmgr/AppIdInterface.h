// AppIdInterface: application ids. Obtained from getLibraryInterface(2); the caller owns the
// object and deletes it through this class. Objects hold no state, so one may serve many threads.
//
// Every operation is one request/response with the App Manager and returns 0 or the code of the
// step that failed, with `err` holding that step's text (the server's text for a server error).
// The AppIdInfo is updated only on success. The trailing void* and int* are never read.
#pragma once

#include <string>

#include "appmgr/AppIdTypes.h"

class AppIdInterface {
 public:
  virtual ~AppIdInterface() = default;

  // Creates the application id `info` describes; on success `info` takes the server's numbers
  // and texts. `callback` is never called.
  virtual int createApplicationId(AppIdInfo& info, std::string& err, AppIdCallBack* callback,
                                  void* context) = 0;
  // Finds the application id `info` describes; on success `info` takes the server's numbers and
  // texts (a text the server leaves out keeps the caller's). Traced in the log, entry and exit.
  virtual int getApplicationId(AppIdInfo& info, std::string& err, void* context) = 0;
  virtual int removeApplicationId(AppIdInfo& info, std::string& err, void* context) = 0;
  // Sends the three values in this order; appmgrd reads them as the application id, its
  // archive group and its incremental archive group.
  virtual int updateArchiveGroups(unsigned long first, unsigned long second, unsigned long third,
                                  std::string& err, void* context, int* reserved) = 0;
  // The incremental archive group of the application id `id`.
  virtual int getIncrArchiveGroup(unsigned long& archiveGroupId, unsigned long id,
                                  std::string& err, void* context) = 0;
};
