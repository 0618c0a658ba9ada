#include "interfaces/GlobalParamInterfaceNet.h"

#include "appmgr/records/GlobalParamRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::RunThrowing;
namespace msg = appmgr::msg;

namespace {

// Both removals send the same request: the name alone. Throwing style.
int RemoveByName(const char* name, const char* label, std::string& errorString) {
  EvEvent log(label);
  return RunThrowing(log, [&] {
    Exchange x(msg::kGlobalParamRemove);
    x.request().name = name;
    x.RunOrThrow(errorString);
  });
}

}  // namespace

int GlobalParamInterfaceNet::getProperty(const std::string& name, std::string& value,
                                         std::string& errorString, long /*reserved*/, void*) {
  // Only the name travels; the long has no field.
  Exchange x(msg::kGlobalParamGet);
  x.request().name = name.c_str();
  if (int status = x.Run(errorString)) return status;
  if (x.response().value != nullptr) {
    value = x.response().value;
  } else {
    (void)value.empty();  // a null value leaves the caller's value as it was
  }
  return 0;
}

int GlobalParamInterfaceNet::setProperty(const ApplProperty& property, std::string& errorString,
                                         bool /*flag*/, void*) {
  // Name and value only: the property's type and the bool are not sent.
  EvEvent log("GlobalParamInterfaceNet::setProperty");
  return RunThrowing(log, [&] {
    Exchange x(msg::kGlobalParamSet);
    x.request().name = property.getName().c_str();
    x.request().value = property.getValue().c_str();
    x.RunOrThrow(errorString);
  });
}

int GlobalParamInterfaceNet::removeProperty(const ApplProperty& property, std::string& errorString,
                                            void*) {
  return RemoveByName(property.getName().c_str(), "GlobalParamInterfaceNet::removeProperty",
                      errorString);
}

int GlobalParamInterfaceNet::removeProperty(const std::string& name, std::string& errorString,
                                            void*) {
  return RemoveByName(name.c_str(), "GlobalParamInterfaceNet::removeProperty", errorString);
}

int GlobalParamInterfaceNet::getAppProperty(unsigned long id1, unsigned long id2,
                                            std::string& value, std::string& errorString, void*) {
  Exchange x(msg::kAppPropertyGet);
  x.request().id1 = id1;
  x.request().id2 = id2;
  if (int status = x.Run(errorString)) return status;
  if (x.response().value != nullptr) {
    value = x.response().value;
  } else {
    (void)value.empty();  // a null value leaves the caller's value as it was
  }
  return 0;
}

int GlobalParamInterfaceNet::setAppProperty(unsigned long id1, unsigned long id2,
                                            const std::string& value, std::string& errorString,
                                            void*) {
  Exchange x(msg::kAppPropertySet);
  x.request().id1 = id1;
  x.request().id2 = id2;
  x.request().value = value.c_str();
  return x.Run(errorString);
}
