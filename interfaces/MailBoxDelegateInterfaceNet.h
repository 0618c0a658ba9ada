// MailBoxDelegateInterfaceNet: mailbox-delegate records over the App Manager protocol. Holds no
// state.
#pragma once

#include "appmgr/MailBoxDelegateInterface.h"

class MailBoxDelegateInterfaceNet : public MailBoxDelegateInterface {
 public:
  int lookup(_MailBoxDelegateInfo& info, std::string& errorString, void* context) override;
  int create(_MailBoxDelegateInfo& info, std::string& errorString, void* context) override;
  int update(_MailBoxDelegateInfo& info, std::string& errorString, void* context) override;
  int remove(unsigned long id, std::string& errorString, void* context) override;
  int setMailBoxDelegate(_MailBoxDelegateInfo info, std::string& errorString,
                         void* context) override;
  int getMailBoxDelegateList(std::list<_MailBoxDelegateInfo>& infos, std::string& errorString,
                             void* context) override;
  int setMailBoxDelegateList(const std::list<_MailBoxDelegateInfo>& infos,
                             std::string& errorString, void* context) override;
  int getMailBoxDelegateList(std::list<_MailBoxDelegateInfo>& infos, unsigned long id,
                             std::string& errorString, void* context) override;
  int removeMailBoxDelegateList(const std::list<_MailBoxDelegateInfo>& infos,
                                std::string& errorString, void* context) override;
};
