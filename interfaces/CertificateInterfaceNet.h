// CertificateInterfaceNet: client certificates. Every operation refuses without an exchange.
#pragma once

#include "appmgr/CertificateInterface.h"

class CertificateInterfaceNet : public CertificateInterface {
 public:
  int lookup(_AppCertificateInfo& info, std::string& errorString, void* context) override;
  int create(_AppCertificateInfo& info, std::string& errorString, void* context) override;
  int update(_AppCertificateInfo& info, std::string& errorString, void* context) override;
  int remove(unsigned long id, std::string& errorString, void* context) override;
  int getCertificateInfoList(const _AppCertificateInfo& filter,
                             std::vector<_AppCertificateInfo>& list, std::string& errorString,
                             void* context) override;
  int pruneCertificates(std::string& errorString, void* context) override;
  int revokeCertificates(const _AppCertificateInfo& info, std::string& errorString,
                         void* context) override;
  int markCertificatesUninstalled(const _AppCertificateInfo& info, std::string& errorString,
                                  void* context) override;
  int countActiveCertificates(int a, int b, int* count, void* context) override;
};
