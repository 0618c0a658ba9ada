// The certificate records of the certificate interfaces, as callers describe certificates.
#pragma once

#include <string>

// A client certificate as callers describe it. No operation of this library reads or writes it.
struct _AppCertificateInfo {
  unsigned long id = 0;
  unsigned long clientId = 0;
  std::string serialNumber;
  std::string subject;
  std::string issuer;
  long notBefore = 0;  // seconds since 1970-01-01 UTC
  long notAfter = 0;
  int status = 0;
  std::string certificate;  // PEM
};

// A certificate authority's certificate as callers describe it. No operation of this library
// reads or writes it.
struct _AppCACertificateInfo {
  unsigned long id = 0;
  std::string name;
  std::string subject;
  long notBefore = 0;  // seconds since 1970-01-01 UTC
  long notAfter = 0;
  int status = 0;
  std::string certificate;  // PEM
};
