// InstInterface: instances, the level between an application type on a client and its backup
// sets. Obtained from getLibraryInterface(6); the caller owns the object and deletes it through
// this class. Objects hold no state, so one may serve many threads.
//
// Every operation is one request/response with the App Manager and returns 0 or the code of
// the step that failed, with `err` holding that step's text (the server's text for a server
// error). Outputs are written only on success. The trailing void* and int* are never read.
#pragma once

#include <list>
#include <string>

#include "appmgr/AppMgrTypes.h"

class InstInterface {
 public:
  virtual ~InstInterface() = default;

  // The instance's name, value, three further attributes and text. A name or text the server
  // leaves out keeps the caller's string as it was.
  virtual int lookup(unsigned long instanceId, std::string& name, long& value,
                     unsigned long& attr2, unsigned long& attr3, unsigned long& attr4,
                     std::string& text, std::string& err, void* context) = 0;
  // Renames the instance and sets its value (read, not written back); the bool and the two
  // numbers are not sent.
  virtual int update(unsigned long instanceId, const std::string& name, long& value, bool flag,
                     unsigned long a, unsigned long b, std::string& err, void* context) = 0;
  // Marks the instance and everything under it deleted, or not deleted.
  virtual int deleteAll(unsigned long instanceId, std::string& err, void* context) = 0;
  virtual int undeleteAll(unsigned long instanceId, std::string& err, void* context) = 0;
  virtual int getProperties(unsigned long instanceId, long table, std::string& err,
                            PropCallBack* callback, void* context) = 0;
  virtual int setProperties(unsigned long instanceId,
                            const std::list<const ApplProperty*>& properties, bool flag,
                            std::string& err, void* context, int* reserved) = 0;
  virtual int removeProperties(unsigned long instanceId,
                               const std::list<const ApplProperty*>& properties, bool flag,
                               std::string& err, void* context, int* reserved) = 0;
  virtual int removeProperties(unsigned long instanceId, const std::list<std::string>& names,
                               bool flag, std::string& err, void* context, int* reserved) = 0;
  // Each content entry to the callback's addContent, in the server's order; entries of a type
  // above KP_CONTENT_MAX_INDEX are skipped. setFlag is never called.
  virtual int initContent(unsigned long instanceId, long value, std::string& err,
                          ContentCallBack* callback, void* context) = 0;
  // Adds and removes content entries, all of `contentType`, in one request; the three bools
  // travel in argument order.
  virtual int updateContent(unsigned long instanceId, int contentType,
                            const std::list<std::string*>& toAdd,
                            const std::list<std::string*>& toRemove, bool flag1, bool flag2,
                            bool flag3, std::string& err, void* context, int* reserved) = 0;
  // Sets the properties of the instance's database availability group: setProperties under
  // its own message.
  virtual int setMSSQLAGProperties(unsigned long instanceId,
                                   const std::list<const ApplProperty*>& properties, bool flag,
                                   std::string& err, void* context, int* reserved) = 0;
};
