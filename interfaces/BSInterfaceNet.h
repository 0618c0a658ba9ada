// BSInterfaceNet: backup sets over the App Manager protocol. Holds no state.
#pragma once

#include "appmgr/BSInterface.h"

class BSInterfaceNet : public BSInterface {
 public:
  int lookup(unsigned long id, std::string& name, long& value, unsigned long& out1,
             unsigned long& out2, unsigned long& out3, std::string& text, unsigned long& out4,
             std::string& errorString, void* context) override;
  int update(unsigned long id, const std::string& name, long& value, bool flag, unsigned long a,
             unsigned long b, unsigned long c, std::string text, std::string& errorString,
             void* context) override;
  int create(const std::string& name, unsigned long& id, unsigned long a, unsigned long b,
             unsigned long c, std::string text, std::string& errorString, void* context) override;
  int remove(unsigned long id, std::string& errorString, void* context) override;
  int setSubclientPolicyId(unsigned long id, unsigned long policyId, std::string& errorString,
                           void* context) override;
  int reassociateSubclientPolicy(unsigned long id, std::string& errorString, void* context) override;
  int UpdateAssocBackupset(unsigned long id, std::string& errorString, void* context) override;
  int cloneSubclientPolicy(unsigned long id, std::string& errorString, unsigned long& newId,
                           std::string& newName, void* context) override;
  int deleteAll(unsigned long id, std::string& errorString, void* context) override;
  int undeleteAll(unsigned long id, std::string& errorString, void* context) override;
  int getProperties(unsigned long id, long table, std::string& errorString, PropCallBack* callback,
                    void* context) override;
  int setProperties(unsigned long id, const std::list<const ApplProperty*>& properties, bool flag,
                    std::string& errorString, void* context, int* reserved) override;
  int removeProperties(unsigned long id, const std::list<const ApplProperty*>& properties, bool flag,
                       std::string& errorString, void* context, int* reserved) override;
  int removeProperties(unsigned long id, const std::list<std::string>& names, bool flag,
                       std::string& errorString, void* context, int* reserved) override;
  int getDefaultSubclientForStore(unsigned long& subclientId, unsigned long backupSetId,
                                  const std::string& storeName, std::string& errorString,
                                  void* context) override;
  int getStoreList(unsigned long id, std::list<std::string>& stores, std::string& errorString,
                   void* context) override;
  int getWildcardExpressionList(unsigned long id, std::list<std::string>& expressions,
                                std::string& errorString, void* context) override;
  int doesNewPairConflict(unsigned long id, bool& conflict, const std::string& text1,
                          const std::string& text2, DataPairConflict& pair1, DataPairConflict& pair2,
                          void* context) override;
  int getLastSetXferUTC(unsigned long id, int& utc, void* context) override;
  int getFRdataInterfacePair(unsigned long id, unsigned long pairId, unsigned long& selector,
                             std::string& first, std::string& second, std::string& errorString,
                             void* context) override;
  int getFLRconflictGUIDS(unsigned long id, unsigned long pairId, std::wstring a, std::wstring b,
                          std::list<DataPairConflict>& out, std::string& errorString,
                          void* context) override;
  int getClientIdForBackupSet(unsigned long backupSetId, unsigned long& clientId,
                              std::string& errorString, void* context) override;
  int getFLRSystemStateInfo(unsigned long id, std::string name, std::list<FLRSystemStateInfo>& out,
                            void* context) override;
};
