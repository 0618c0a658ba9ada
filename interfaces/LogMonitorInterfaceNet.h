// LogMonitorInterfaceNet: log monitoring over the App Manager protocol. Holds no state.
#pragma once

#include "appmgr/LogMonitorInterface.h"

class LogMonitorInterfaceNet : public LogMonitorInterface {
 public:
  int logMonitoringOperation(unsigned long id1, unsigned long id2, std::string& xml) override;
  int getProperties(unsigned long id, unsigned int type, const std::string& name,
                    std::string& value, std::string& errorString, void* context) override;
};
