#include "interfaces/CACertificateInterfaceNet.h"

#include "interfaces/Exchange.h"

using appmgr::iface::FeatureNotSupported;

int CACertificateInterfaceNet::lookup(_AppCACertificateInfo&, std::string& errorString, void*) {
  return FeatureNotSupported("CACertificateInterfaceNet::lookup", errorString);
}
int CACertificateInterfaceNet::create(_AppCACertificateInfo&, std::string& errorString, void*) {
  return FeatureNotSupported("CACertificateInterfaceNet::create", errorString);
}
int CACertificateInterfaceNet::update(_AppCACertificateInfo&, std::string& errorString, void*) {
  return FeatureNotSupported("CACertificateInterfaceNet::update", errorString);
}
int CACertificateInterfaceNet::remove(unsigned long, std::string& errorString, void*) {
  return FeatureNotSupported("CACertificateInterfaceNet::remove", errorString);
}
int CACertificateInterfaceNet::setCACertificateInfo(const _AppCACertificateInfo&,
                                                    std::string& errorString, void*) {
  return FeatureNotSupported("CACertificateInterfaceNet::setCACertificateInfo", errorString);
}
int CACertificateInterfaceNet::getCACertificateInfoList(const _AppCACertificateInfo&,
                                                        std::vector<_AppCACertificateInfo>&,
                                                        std::string& errorString, void*) {
  return FeatureNotSupported("CACertificateInterfaceNet::getCACertificateInfoList", errorString);
}
