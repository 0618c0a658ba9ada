// AppIdInterfaceNet: application ids over the App Manager protocol. Holds no state.
#pragma once

#include "appmgr/AppIdInterface.h"

class AppIdInterfaceNet : public AppIdInterface {
 public:
  int createApplicationId(AppIdInfo& info, std::string& err, AppIdCallBack* callback,
                          void* context) override;
  int getApplicationId(AppIdInfo& info, std::string& err, void* context) override;
  int removeApplicationId(AppIdInfo& info, std::string& err, void* context) override;
  int updateArchiveGroups(unsigned long first, unsigned long second, unsigned long third,
                          std::string& err, void* context, int* reserved) override;
  int getIncrArchiveGroup(unsigned long& archiveGroupId, unsigned long id, std::string& err,
                          void* context) override;
};
