#include "interfaces/CertificateInterfaceNet.h"

#include "interfaces/Exchange.h"

using appmgr::iface::FeatureNotSupported;

int CertificateInterfaceNet::lookup(_AppCertificateInfo&, std::string& errorString, void*) {
  return FeatureNotSupported("CertificateInterfaceNet::lookup", errorString);
}
int CertificateInterfaceNet::create(_AppCertificateInfo&, std::string& errorString, void*) {
  return FeatureNotSupported("CertificateInterfaceNet::create", errorString);
}
int CertificateInterfaceNet::update(_AppCertificateInfo&, std::string& errorString, void*) {
  return FeatureNotSupported("CertificateInterfaceNet::update", errorString);
}
int CertificateInterfaceNet::remove(unsigned long, std::string& errorString, void*) {
  return FeatureNotSupported("CertificateInterfaceNet::remove", errorString);
}
int CertificateInterfaceNet::getCertificateInfoList(const _AppCertificateInfo&,
                                                    std::vector<_AppCertificateInfo>&,
                                                    std::string& errorString, void*) {
  return FeatureNotSupported("CertificateInterfaceNet::getCertificateInfoList", errorString);
}
int CertificateInterfaceNet::pruneCertificates(std::string& errorString, void*) {
  return FeatureNotSupported("CertificateInterfaceNet::pruneCertificates", errorString);
}
// These two log under labels that differ from their names; callers' log filters know them so.
int CertificateInterfaceNet::revokeCertificates(const _AppCertificateInfo&,
                                                std::string& errorString, void*) {
  return FeatureNotSupported("CertificateInterfaceNet::revokeCertificate", errorString);
}
int CertificateInterfaceNet::markCertificatesUninstalled(const _AppCertificateInfo&,
                                                         std::string& errorString, void*) {
  return FeatureNotSupported("CertificateInterfaceNet::uninstallCertificates", errorString);
}
int CertificateInterfaceNet::countActiveCertificates(int, int, int*, void*) {
  EvDebug log(nullptr, "CertificateInterfaceNet::countActiveCertificates");
  log.Error("Feature Not Supported");
  return -1;
}
