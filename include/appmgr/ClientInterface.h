// ClientInterface: clients. Obtained from getLibraryInterface(4); the caller owns the object and
// deletes it through this class. Objects hold no state, so one may serve many threads.
//
// Every operation is one request/response with the App Manager and returns 0 or the code of the
// step that failed, with `errorString` holding that step's text (the server's text for a server
// error). Outputs are written only on success; lists are appended to, never cleared. Operations
// marked "not provided" return 0xa0010 with "Api not implemented." and send nothing. The
// trailing void* (and int*) are never read.
#pragma once

#include <list>
#include <string>

#include "appmgr/AppMgrTypes.h"
#include "appmgr/ClientTypes.h"

class ClientInterface {
 public:
  virtual ~ClientInterface() = default;

  // lookup, create and modify send the whole record and three platforms, and on success copy
  // the server's record back into `info` and `platforms` (an array of three; the platforms the
  // server returns beyond three are not copied). A platform text the server leaves null keeps
  // the caller's. Look-up: a null text 1, 2, 3, 7 or 8 empties that text, a null text 4, 5 or 6
  // keeps the caller's. lookup and create send null platform texts; modify sends them.
  virtual int lookup(_AppClientInfo& info, ClientPlatformInfo* platforms, std::string& errorString,
                     void* context) = 0;
  virtual int create(_AppClientInfo& info, ClientPlatformInfo* platforms, std::string& errorString,
                     void* context) = 0;
  virtual int modify(_AppClientInfo& info, ClientPlatformInfo* platforms, std::string& errorString,
                     void* context) = 0;
  virtual int remove(unsigned long clientId, std::string& errorString, void* context) = 0;
  virtual int getProperties(unsigned long id, long table, std::string& errorString,
                            PropCallBack* callback, void* context) = 0;
  virtual int setProperties(unsigned long id, const std::list<const ApplProperty*>& properties,
                            bool flag, std::string& errorString, void* context, int* reserved) = 0;
  virtual int removeProperties(unsigned long id, const std::list<const ApplProperty*>& properties,
                               bool flag, std::string& errorString, void* context,
                               int* reserved) = 0;
  virtual int removeProperties(unsigned long id, const std::list<std::string>& names, bool flag,
                               std::string& errorString, void* context, int* reserved) = 0;
  // The replication pairs whose destination is the volume `volumeGuid`, appended to `pairIds`.
  virtual int getFLRpairListForDestinationVolumeGUID(std::string& volumeGuid,
                                                     std::list<unsigned long>& pairIds,
                                                     std::string& errorString, long option,
                                                     void* context) = 0;
  // The replication sets that use `clientId` as their destination: three id lists, appended.
  virtual int GetFRsetsWithDestClientId(unsigned long clientId, std::list<unsigned long>& list1,
                                        std::list<unsigned long>& list2,
                                        std::list<unsigned long>& list3, std::string& errorString,
                                        void* context) = 0;
  // The clients carrying the property `propertyName` with `propertyValue`, appended to `clients`
  // with clientId, clientName, hostName and text3 set (everything else default).
  virtual int getClientInfoWithProperty(std::list<_AppClientInfo>& clients, std::string propertyName,
                                        std::string propertyValue, std::string& errorString,
                                        void* context) = 0;
  // ASM instance ids, appended to `instanceIds`.
  virtual int GetASMInstanceList(unsigned long id1, unsigned long id2,
                                 std::list<unsigned long>& instanceIds, std::string& errorString,
                                 void* context) = 0;
  virtual int getSRMAgentlessDaxType(unsigned long id, unsigned long& type,
                                     std::string& errorString, void* context) = 0;  // not provided
  virtual int setClientPostInstallProperties(unsigned long id, unsigned long value,
                                             std::string text, std::string& errorString,
                                             void* context) = 0;  // not provided
  virtual int getClientOwnerAssignmentValue(unsigned long id, std::string& value,
                                            std::string& errorString,
                                            void* context) = 0;  // not provided
  // Reports file-system node activity of a client. On a server error `errorString` takes the
  // server's text only when it sent one.
  virtual int setClientFSNodeData(unsigned int clientId, std::string data, int value, bool flag,
                                  std::string& errorString, void* context) = 0;
};
