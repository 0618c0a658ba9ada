// CACertificateInterface: certificate-authority certificates. Obtained from
// getLibraryInterface(15); the caller owns the object and deletes it through this class.
//
// This library does not manage certificates through the App Manager: every operation answers
// -1 with "Feature Not Supported" in `errorString`, sends nothing, and leaves every other
// argument as it was.
//
// The order of the declarations below is the order of the class's virtual table.
#pragma once

#include <string>
#include <vector>

#include "appmgr/CertificateTypes.h"

class CACertificateInterface {
 public:
  virtual ~CACertificateInterface() = default;

  virtual int lookup(_AppCACertificateInfo& info, std::string& errorString, void* context) = 0;
  virtual int create(_AppCACertificateInfo& info, std::string& errorString, void* context) = 0;
  virtual int update(_AppCACertificateInfo& info, std::string& errorString, void* context) = 0;
  virtual int remove(unsigned long id, std::string& errorString, void* context) = 0;
  virtual int setCACertificateInfo(const _AppCACertificateInfo& info, std::string& errorString,
                                   void* context) = 0;
  virtual int getCACertificateInfoList(const _AppCACertificateInfo& filter,
                                       std::vector<_AppCACertificateInfo>& list,
                                       std::string& errorString, void* context) = 0;
};
