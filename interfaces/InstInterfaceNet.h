// InstInterfaceNet: instances over the App Manager protocol. Holds no state.
#pragma once

#include "appmgr/InstInterface.h"

class InstInterfaceNet : public InstInterface {
 public:
  int lookup(unsigned long instanceId, std::string& name, long& value, unsigned long& attr2,
             unsigned long& attr3, unsigned long& attr4, std::string& text, std::string& err,
             void* context) override;
  int update(unsigned long instanceId, const std::string& name, long& value, bool flag,
             unsigned long a, unsigned long b, std::string& err, void* context) override;
  int deleteAll(unsigned long instanceId, std::string& err, void* context) override;
  int undeleteAll(unsigned long instanceId, std::string& err, void* context) override;
  int getProperties(unsigned long instanceId, long table, std::string& err,
                    PropCallBack* callback, void* context) override;
  int setProperties(unsigned long instanceId, const std::list<const ApplProperty*>& properties,
                    bool flag, std::string& err, void* context, int* reserved) override;
  int removeProperties(unsigned long instanceId, const std::list<const ApplProperty*>& properties,
                       bool flag, std::string& err, void* context, int* reserved) override;
  int removeProperties(unsigned long instanceId, const std::list<std::string>& names, bool flag,
                       std::string& err, void* context, int* reserved) override;
  int initContent(unsigned long instanceId, long value, std::string& err,
                  ContentCallBack* callback, void* context) override;
  int updateContent(unsigned long instanceId, int contentType, const std::list<std::string*>& toAdd,
                    const std::list<std::string*>& toRemove, bool flag1, bool flag2, bool flag3,
                    std::string& err, void* context, int* reserved) override;
  int setMSSQLAGProperties(unsigned long instanceId,
                           const std::list<const ApplProperty*>& properties, bool flag,
                           std::string& err, void* context, int* reserved) override;
};
