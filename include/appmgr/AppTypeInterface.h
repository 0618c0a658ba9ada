// AppTypeInterface: an application type installed on a client, addressed by the pair (client
// id, application type id). Obtained from getLibraryInterface(5); the caller owns the object
// and deletes it through this class. Objects hold no state, so one may serve many threads.
//
// Every exchanging operation is one request/response with the App Manager and returns 0 or the
// code of the step that failed, with `err` holding that step's text (the server's text for a
// server error). Outputs are written only on success. Operations marked "local" send nothing.
// The trailing void* and int* are never read.
#pragma once

#include <list>
#include <string>

#include "appmgr/AppMgrTypes.h"
#include "appmgr/AppTypeTypes.h"

class AppTypeInterface {
 public:
  virtual ~AppTypeInterface() = default;

  virtual int remove(unsigned long clientId, unsigned long appTypeId, std::string& err,
                     void* context) = 0;
  // The third and fourth arguments are not sent.
  virtual int create(unsigned long clientId, unsigned long appTypeId, unsigned long a,
                     unsigned long b, std::string& err, void* context) = 0;
  // The application type's name and value; the two unsigned long& are not written.
  virtual int lookup(unsigned long clientId, unsigned long appTypeId, std::string& name,
                     long& value, unsigned long& out1, unsigned long& out2, std::string& err,
                     void* context) = 0;
  // Sets the value (read, not written back); the bool and the two numbers are not sent.
  virtual int update(unsigned long clientId, unsigned long appTypeId, long& value, bool flag,
                     unsigned long a, unsigned long b, std::string& err, void* context) = 0;
  // Marks the application type and everything under it deleted (`option` travels with it), or
  // not deleted.
  virtual int deleteAll(unsigned long clientId, unsigned long appTypeId, std::string& err,
                        void* context, int option) = 0;
  virtual int undeleteAll(unsigned long clientId, unsigned long appTypeId, std::string& err,
                          void* context) = 0;
  virtual int getProperties(unsigned long clientId, unsigned long appTypeId, long table,
                            std::string& err, PropCallBack* callback, void* context) = 0;
  virtual int setProperties(unsigned long clientId, unsigned long appTypeId,
                            const std::list<const ApplProperty*>& properties, bool flag,
                            std::string& err, void* context, int* reserved) = 0;
  virtual int removeProperties(unsigned long clientId, unsigned long appTypeId,
                               const std::list<const ApplProperty*>& properties, bool flag,
                               std::string& err, void* context, int* reserved) = 0;
  virtual int removeProperties(unsigned long clientId, unsigned long appTypeId,
                               const std::list<std::string>& names, bool flag, std::string& err,
                               void* context, int* reserved) = 0;
  // Local: 0, nothing touched.
  virtual int SetSearchString(unsigned long a, unsigned long b, unsigned long c,
                              std::list<std::string>& strings, std::string& err,
                              void* context) = 0;
  // Local: 0, the list untouched.
  virtual int GetSearchString(unsigned long a, unsigned long b, unsigned long c,
                              std::list<std::string>& strings, std::string& err,
                              void* context) = 0;
  // Writes one volume-property record from all ten values; every reference is an input and
  // none is written back.
  virtual int opDCvolProp(unsigned long clientId, unsigned long appTypeId,
                          unsigned long volumeId, unsigned long& value1, std::string& text,
                          unsigned long& value2, unsigned long& value3, unsigned long& value4,
                          long& signedValue, unsigned long& value5, std::string& err,
                          void* context) = 0;
  // Local: -1 with "Feature Not Supported".
  virtual int getVolAndMountPathData(unsigned long a, unsigned long b,
                                     std::list<DCVolAndMountPathData>& out, std::string& err,
                                     void* context) = 0;
  // Local: -1 with "Feature Not Supported".
  virtual int checkForDuplLogGUID(unsigned long a, unsigned long b, std::string& guid,
                                  std::list<DataPairConflict>& out, std::string& err,
                                  void* context) = 0;
  // Local: -1, the error string untouched.
  virtual int isSRMproxyAgent(unsigned long a, unsigned long& out, std::string& err,
                              void* context) = 0;
  // Local: -1 with "Feature Not Supported".
  virtual int getCurrentSRMActionSubClient(unsigned long a, unsigned long b, unsigned long& out,
                                           std::string& err, void* context) = 0;
  // Local: -1 with "Feature Not Supported".
  virtual int getFSAppTypeNumber(unsigned long a, unsigned long& out, std::string& err,
                                 void* context) = 0;
  // Local: -1 with "Feature Not Supported".
  virtual int isIndexingAppType(unsigned long a, bool& out, std::string& err, void* context) = 0;
};
