// CertificateInterface: client certificates. Obtained from getLibraryInterface(16); the caller
// owns the object and deletes it through this class.
//
// This library does not manage certificates through the App Manager: every operation answers
// -1, with "Feature Not Supported" in `errorString` where it has one, sends nothing, and leaves
// every other argument as it was.
//
// The order of the declarations below is the order of the class's virtual table.
#pragma once

#include <string>
#include <vector>

#include "appmgr/CertificateTypes.h"

class CertificateInterface {
 public:
  virtual ~CertificateInterface() = default;

  virtual int lookup(_AppCertificateInfo& info, std::string& errorString, void* context) = 0;
  virtual int create(_AppCertificateInfo& info, std::string& errorString, void* context) = 0;
  virtual int update(_AppCertificateInfo& info, std::string& errorString, void* context) = 0;
  virtual int remove(unsigned long id, std::string& errorString, void* context) = 0;
  virtual int getCertificateInfoList(const _AppCertificateInfo& filter,
                                     std::vector<_AppCertificateInfo>& list,
                                     std::string& errorString, void* context) = 0;
  virtual int pruneCertificates(std::string& errorString, void* context) = 0;
  virtual int revokeCertificates(const _AppCertificateInfo& info, std::string& errorString,
                                 void* context) = 0;
  virtual int markCertificatesUninstalled(const _AppCertificateInfo& info, std::string& errorString,
                                          void* context) = 0;
  // No error string: the status alone. `count` is left as it was.
  virtual int countActiveCertificates(int a, int b, int* count, void* context) = 0;
};
