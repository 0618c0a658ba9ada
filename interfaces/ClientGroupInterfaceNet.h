// ClientGroupInterfaceNet: client groups over the App Manager protocol. Holds no state.
#pragma once

#include "appmgr/ClientGroupInterface.h"

class ClientGroupInterfaceNet : public ClientGroupInterface {
 public:
  int lookup(_AppClientGroupInfo& info, std::string& errorString, void* context) override;
  int create(_AppClientGroupInfo& info, std::string& errorString, void* context) override;
  int update(_AppClientGroupInfo& info, std::string& errorString, void* context) override;
  int remove(unsigned long id, std::string& errorString, void* context) override;
};
