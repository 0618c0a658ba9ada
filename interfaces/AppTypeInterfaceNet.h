// AppTypeInterfaceNet: application types on a client over the App Manager protocol. Holds no
// state.
#pragma once

#include "appmgr/AppTypeInterface.h"

class AppTypeInterfaceNet : public AppTypeInterface {
 public:
  int remove(unsigned long clientId, unsigned long appTypeId, std::string& err,
             void* context) override;
  int create(unsigned long clientId, unsigned long appTypeId, unsigned long a, unsigned long b,
             std::string& err, void* context) override;
  int lookup(unsigned long clientId, unsigned long appTypeId, std::string& name, long& value,
             unsigned long& out1, unsigned long& out2, std::string& err, void* context) override;
  int update(unsigned long clientId, unsigned long appTypeId, long& value, bool flag,
             unsigned long a, unsigned long b, std::string& err, void* context) override;
  int deleteAll(unsigned long clientId, unsigned long appTypeId, std::string& err, void* context,
                int option) override;
  int undeleteAll(unsigned long clientId, unsigned long appTypeId, std::string& err,
                  void* context) override;
  int getProperties(unsigned long clientId, unsigned long appTypeId, long table, std::string& err,
                    PropCallBack* callback, void* context) override;
  int setProperties(unsigned long clientId, unsigned long appTypeId,
                    const std::list<const ApplProperty*>& properties, bool flag, std::string& err,
                    void* context, int* reserved) override;
  int removeProperties(unsigned long clientId, unsigned long appTypeId,
                       const std::list<const ApplProperty*>& properties, bool flag,
                       std::string& err, void* context, int* reserved) override;
  int removeProperties(unsigned long clientId, unsigned long appTypeId,
                       const std::list<std::string>& names, bool flag, std::string& err,
                       void* context, int* reserved) override;
  int SetSearchString(unsigned long a, unsigned long b, unsigned long c,
                      std::list<std::string>& strings, std::string& err, void* context) override;
  int GetSearchString(unsigned long a, unsigned long b, unsigned long c,
                      std::list<std::string>& strings, std::string& err, void* context) override;
  int opDCvolProp(unsigned long clientId, unsigned long appTypeId, unsigned long volumeId,
                  unsigned long& value1, std::string& text, unsigned long& value2,
                  unsigned long& value3, unsigned long& value4, long& signedValue,
                  unsigned long& value5, std::string& err, void* context) override;
  int getVolAndMountPathData(unsigned long a, unsigned long b, std::list<DCVolAndMountPathData>& out,
                             std::string& err, void* context) override;
  int checkForDuplLogGUID(unsigned long a, unsigned long b, std::string& guid,
                          std::list<DataPairConflict>& out, std::string& err,
                          void* context) override;
  int isSRMproxyAgent(unsigned long a, unsigned long& out, std::string& err, void* context) override;
  int getCurrentSRMActionSubClient(unsigned long a, unsigned long b, unsigned long& out,
                                   std::string& err, void* context) override;
  int getFSAppTypeNumber(unsigned long a, unsigned long& out, std::string& err,
                         void* context) override;
  int isIndexingAppType(unsigned long a, bool& out, std::string& err, void* context) override;
};
