// SCInterfaceNet: subclients over the App Manager protocol. Holds no state.
#pragma once

#include "appmgr/SCInterface.h"

class SCInterfaceNet : public SCInterface {
 public:
  int lookup(unsigned long subclientId, std::string& name, long& value, unsigned long& attr2,
             unsigned long& attr3, unsigned long& attr4, std::string& text,
             std::string& errorString, void* context) override;
  int lookup(std::string guid, std::string& name, long& value, unsigned long& attr2,
             unsigned long& attr3, unsigned long& attr4, unsigned long& subclientId,
             std::string& errorString, void* context) override;
  int update(unsigned long subclientId, const std::string& name, long& value, bool flag,
             unsigned long a, unsigned long b, std::string& errorString, void* context) override;
  int getProperties(unsigned long subclientId, long table, std::string& errorString,
                    PropCallBack* callback, void* context) override;
  int setProperties(unsigned long subclientId, const std::list<const ApplProperty*>& properties,
                    bool flag, std::string& errorString, void* context, int* reserved) override;
  int removeProperties(unsigned long subclientId,
                       const std::list<const ApplProperty*>& properties, bool flag,
                       std::string& errorString, void* context, int* reserved) override;
  int removeProperties(unsigned long subclientId, const std::list<std::string>& names, bool flag,
                       std::string& errorString, void* context, int* reserved) override;
  int initContent(unsigned long subclientId, long value, std::string& errorString,
                  ContentCallBack* callback, void* context, bool a, int b, bool c) override;
  int updateContent(unsigned long subclientId, int contentType,
                    const std::list<std::string*>& toAdd, const std::list<std::string*>& toRemove,
                    bool flag1, bool flag2, bool flag3, std::string& errorString, void* context,
                    int* reserved) override;
  int SetStoreAssociation(unsigned long subclientId, const std::list<std::string>& stores,
                          std::string& errorString, void* context) override;
  int SetActiveDirectoryAssociation(unsigned long subclientId, const std::list<std::string>& names,
                                    std::string& errorString, void* context) override;
  int getOverlappingSubclientList(unsigned long subclientId, std::list<unsigned long>& subclients,
                                  std::string& errorString, void* context) override;
  int getBackupHost(unsigned long subclientId, unsigned long& hostId, std::string& errorString,
                    void* context) override;
  int getFRPairData(unsigned long first, unsigned long second, unsigned long& value,
                    std::string& text, std::string& errorString, unsigned long sixth,
                    void* context) override;
  int setFRPairData(unsigned long first, unsigned long second, unsigned long third,
                    std::string& text, std::string& errorString, bool flag,
                    void* context) override;
  int updateSCdataPaths(unsigned long subclientId, std::list<AppToDataPathItem>& paths,
                        std::string& errorString, void* context) override;
  int getSCdataPaths(unsigned long subclientId, std::list<AppToDataPathItem>& paths,
                     std::string& errorString, void* context) override;
  int getFLRconflictGUIDS(unsigned long a, unsigned long b, std::list<DataPairConflict>& out,
                          std::string& errorString, void* context) override;
  int getCurrentSRMActionSubClient(unsigned long& a, unsigned long& b, std::string& errorString,
                                   void* context) override;
  int getExtensionForFileType(std::string& fileTypeInExtensionsOut, void* context) override;
  int getFSBackupsetContent(unsigned long n3, unsigned long n4, unsigned long n5,
                            unsigned long n6, unsigned long n7, unsigned long value, bool flag,
                            std::string& text1, std::string& text2,
                            std::vector<unsigned long>& ids, void* context) override;
  int getSmartCopySubclients(unsigned long subclientId, std::vector<RefCopySCInfo>& copies,
                             void* context) override;
  int setContentGroups(unsigned long subclientId, std::string& groups, void* context) override;
};
