// SnapInfoInterfaceNet: snapshot-information records over the App Manager protocol. Holds no
// state.
#pragma once

#include "appmgr/SnapInterface.h"

class SnapInfoInterfaceNet : public SnapInterface {
 public:
  int lookup(_AppSnapInfo& info, std::string& errorString, void* context) override;
  int create(_AppSnapInfo& info, std::string& errorString, void* context) override;
  int update(_AppSnapInfo& info, std::string& errorString, void* context) override;
  int remove(unsigned long id, std::string& errorString, void* context) override;
  int setSnapInfo(_AppSnapInfo info, std::string& errorString, void* context) override;
  int getSnapInfoList(std::list<_AppSnapInfo>& infos, std::string& errorString,
                      void* context) override;
  int setSnapInfoList(std::list<_AppSnapInfo> infos, std::string& errorString,
                      void* context) override;
};
