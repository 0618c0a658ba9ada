// BSInterface: backup sets. Obtained from getLibraryInterface(7); the caller owns the object
// and deletes it through this class. Objects hold no state, so one may serve many threads.
//
// Every operation is one request/response with the App Manager and returns 0 or the code of
// the step that failed, with `errorString` holding that step's text (the server's text for a
// server error). Outputs are written only on success. Lists are appended to, except
// getFLRSystemStateInfo, which replaces its list. Operations marked "not provided" return
// 0xa0010 with "Api not implemented." and send nothing. The trailing void* is never read.
#pragma once

#include <list>
#include <string>

#include "appmgr/AppMgrTypes.h"

class BSInterface {
 public:
  virtual ~BSInterface() = default;

  // Name, 64-bit value and description of a backup set. A null name leaves `name` as it was;
  // out1..out3 become 0; out4 is not touched.
  virtual int lookup(unsigned long id, std::string& name, long& value, unsigned long& out1,
                     unsigned long& out2, unsigned long& out3, std::string& text,
                     unsigned long& out4, std::string& errorString, void* context) = 0;
  // Renames a backup set and sets its value; the bool, the three numbers and the last text are
  // not sent.
  virtual int update(unsigned long id, const std::string& name, long& value, bool flag,
                     unsigned long a, unsigned long b, unsigned long c, std::string text,
                     std::string& errorString, void* context) = 0;
  virtual int create(const std::string& name, unsigned long& id, unsigned long a, unsigned long b,
                     unsigned long c, std::string text, std::string& errorString,
                     void* context) = 0;  // not provided
  virtual int remove(unsigned long id, std::string& errorString, void* context) = 0;  // not provided
  virtual int setSubclientPolicyId(unsigned long id, unsigned long policyId,
                                   std::string& errorString, void* context) = 0;  // not provided
  virtual int reassociateSubclientPolicy(unsigned long id, std::string& errorString,
                                         void* context) = 0;  // not provided
  virtual int UpdateAssocBackupset(unsigned long id, std::string& errorString,
                                   void* context) = 0;  // not provided
  virtual int cloneSubclientPolicy(unsigned long id, std::string& errorString,
                                   unsigned long& newId, std::string& newName,
                                   void* context) = 0;  // not provided
  // Marks every content of the backup set deleted, or not deleted.
  virtual int deleteAll(unsigned long id, std::string& errorString, void* context) = 0;
  virtual int undeleteAll(unsigned long id, std::string& errorString, void* context) = 0;
  virtual int getProperties(unsigned long id, long table, std::string& errorString,
                            PropCallBack* callback, void* context) = 0;
  virtual int setProperties(unsigned long id, const std::list<const ApplProperty*>& properties,
                            bool flag, std::string& errorString, void* context, int* reserved) = 0;
  virtual int removeProperties(unsigned long id, const std::list<const ApplProperty*>& properties,
                               bool flag, std::string& errorString, void* context,
                               int* reserved) = 0;
  virtual int removeProperties(unsigned long id, const std::list<std::string>& names, bool flag,
                               std::string& errorString, void* context, int* reserved) = 0;
  virtual int getDefaultSubclientForStore(unsigned long& subclientId, unsigned long backupSetId,
                                          const std::string& storeName, std::string& errorString,
                                          void* context) = 0;
  virtual int getStoreList(unsigned long id, std::list<std::string>& stores,
                           std::string& errorString, void* context) = 0;
  virtual int getWildcardExpressionList(unsigned long id, std::list<std::string>& expressions,
                                        std::string& errorString, void* context) = 0;
  // No error string: failures are reported by the status alone.
  virtual int doesNewPairConflict(unsigned long id, bool& conflict, const std::string& text1,
                                  const std::string& text2, DataPairConflict& pair1,
                                  DataPairConflict& pair2, void* context) = 0;
  virtual int getLastSetXferUTC(unsigned long id, int& utc, void* context) = 0;  // not provided
  virtual int getFRdataInterfacePair(unsigned long id, unsigned long pairId,
                                     unsigned long& selector, std::string& first,
                                     std::string& second, std::string& errorString,
                                     void* context) = 0;
  virtual int getFLRconflictGUIDS(unsigned long id, unsigned long pairId, std::wstring a,
                                  std::wstring b, std::list<DataPairConflict>& out,
                                  std::string& errorString, void* context) = 0;  // not provided
  virtual int getClientIdForBackupSet(unsigned long backupSetId, unsigned long& clientId,
                                      std::string& errorString, void* context) = 0;
  // No error string. Replaces `out`.
  virtual int getFLRSystemStateInfo(unsigned long id, std::string name,
                                    std::list<FLRSystemStateInfo>& out, void* context) = 0;
};
