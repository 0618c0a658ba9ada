// ClientInterfaceNet: clients over the App Manager protocol. Holds no state.
#pragma once

#include "appmgr/ClientInterface.h"

class ClientInterfaceNet : public ClientInterface {
 public:
  int lookup(_AppClientInfo& info, ClientPlatformInfo* platforms, std::string& errorString,
             void* context) override;
  int create(_AppClientInfo& info, ClientPlatformInfo* platforms, std::string& errorString,
             void* context) override;
  int modify(_AppClientInfo& info, ClientPlatformInfo* platforms, std::string& errorString,
             void* context) override;
  int remove(unsigned long clientId, std::string& errorString, void* context) override;
  int getProperties(unsigned long id, long table, std::string& errorString, PropCallBack* callback,
                    void* context) override;
  int setProperties(unsigned long id, const std::list<const ApplProperty*>& properties, bool flag,
                    std::string& errorString, void* context, int* reserved) override;
  int removeProperties(unsigned long id, const std::list<const ApplProperty*>& properties, bool flag,
                       std::string& errorString, void* context, int* reserved) override;
  int removeProperties(unsigned long id, const std::list<std::string>& names, bool flag,
                       std::string& errorString, void* context, int* reserved) override;
  int getFLRpairListForDestinationVolumeGUID(std::string& volumeGuid, std::list<unsigned long>& pairIds,
                                             std::string& errorString, long option,
                                             void* context) override;
  int GetFRsetsWithDestClientId(unsigned long clientId, std::list<unsigned long>& list1,
                                std::list<unsigned long>& list2, std::list<unsigned long>& list3,
                                std::string& errorString, void* context) override;
  int getClientInfoWithProperty(std::list<_AppClientInfo>& clients, std::string propertyName,
                                std::string propertyValue, std::string& errorString,
                                void* context) override;
  int GetASMInstanceList(unsigned long id1, unsigned long id2, std::list<unsigned long>& instanceIds,
                         std::string& errorString, void* context) override;
  int getSRMAgentlessDaxType(unsigned long id, unsigned long& type, std::string& errorString,
                             void* context) override;
  int setClientPostInstallProperties(unsigned long id, unsigned long value, std::string text,
                                     std::string& errorString, void* context) override;
  int getClientOwnerAssignmentValue(unsigned long id, std::string& value, std::string& errorString,
                                    void* context) override;
  int setClientFSNodeData(unsigned int clientId, std::string data, int value, bool flag,
                          std::string& errorString, void* context) override;
};
