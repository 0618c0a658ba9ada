// CACertificateInterfaceNet: certificate-authority certificates. Every operation refuses
// without an exchange.
#pragma once

#include "appmgr/CACertificateInterface.h"

class CACertificateInterfaceNet : public CACertificateInterface {
 public:
  int lookup(_AppCACertificateInfo& info, std::string& errorString, void* context) override;
  int create(_AppCACertificateInfo& info, std::string& errorString, void* context) override;
  int update(_AppCACertificateInfo& info, std::string& errorString, void* context) override;
  int remove(unsigned long id, std::string& errorString, void* context) override;
  int setCACertificateInfo(const _AppCACertificateInfo& info, std::string& errorString,
                           void* context) override;
  int getCACertificateInfoList(const _AppCACertificateInfo& filter,
                               std::vector<_AppCACertificateInfo>& list, std::string& errorString,
                               void* context) override;
};
