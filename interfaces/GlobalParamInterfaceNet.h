// GlobalParamInterfaceNet: global parameters and application properties over the App Manager
// protocol. Holds no state.
#pragma once

#include "appmgr/GlobalParamInterface.h"

class GlobalParamInterfaceNet : public GlobalParamInterface {
 public:
  int getProperty(const std::string& name, std::string& value, std::string& errorString,
                  long reserved, void* context) override;
  int setProperty(const ApplProperty& property, std::string& errorString, bool flag,
                  void* context) override;
  int removeProperty(const ApplProperty& property, std::string& errorString,
                     void* context) override;
  int removeProperty(const std::string& name, std::string& errorString, void* context) override;
  int getAppProperty(unsigned long id1, unsigned long id2, std::string& value,
                     std::string& errorString, void* context) override;
  int setAppProperty(unsigned long id1, unsigned long id2, const std::string& value,
                     std::string& errorString, void* context) override;
};
