// DaxBackupInterfaceNet: the agent XML passthrough over the App Manager protocol. Holds no
// state.
#pragma once

#include "appmgr/DaxBackupInterface.h"

class DaxBackupInterfaceNet : public DaxBackupInterface {
 public:
  int handleXMLRequest(unsigned long id1, unsigned long id2, std::string& xml) override;
};
