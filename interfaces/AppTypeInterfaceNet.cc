#include "interfaces/AppTypeInterfaceNet.h"

#include "appmgr/records/AppTypeRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::RequestArray;
using appmgr::iface::RunThrowing;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

namespace {

// Operations this class declares and refuses as a whole: the text, logged under the label.
int FeatureNotSupported(const char* label, std::string& err) {
  err = "Feature Not Supported";
  EvEvent log(label);
  log.Error("%s", err.c_str());
  return -1;
}

// The application type's property requests name the pair (client, application type) instead of
// one entity id; otherwise they are the generic property exchange.
template <class Req>
int SendProperties(const appmgr::wire::Op<Req, GenericResp>& op, const char* label,
                   unsigned long clientId, unsigned long appTypeId,
                   const std::list<const ApplProperty*>& properties, bool flag, std::string& err) {
  EvEvent log(label);
  RequestArray<AppMgrProps> props(properties, [](AppMgrProps& p, const ApplProperty* property) {
    p.name = property->getName().c_str();
    p.type = property->getType();
    p.value = property->getValue().c_str();
  });
  return RunThrowing(log, [&] {
    Exchange x(op);
    x.request().clientId = clientId;
    x.request().appTypeId = appTypeId;
    x.request().count = props.count();
    x.request().props = props.data();
    x.request().flag = flag ? 1 : 0;
    x.RunOrThrow(err);
  });
}

}  // namespace

int AppTypeInterfaceNet::remove(unsigned long clientId, unsigned long appTypeId, std::string& err,
                                void*) {
  Exchange x(msg::kAppTypeRemove);
  x.request().id1 = clientId;
  x.request().id2 = appTypeId;
  return x.Run(err);
}

int AppTypeInterfaceNet::create(unsigned long clientId, unsigned long appTypeId, unsigned long,
                                unsigned long, std::string& err, void*) {
  Exchange x(msg::kAppTypeCreate);
  x.request().id1 = clientId;
  x.request().id2 = appTypeId;
  return x.Run(err);
}

int AppTypeInterfaceNet::lookup(unsigned long clientId, unsigned long appTypeId, std::string& name,
                                long& value, unsigned long&, unsigned long&, std::string& err,
                                void*) {
  Exchange x(msg::kAppTypeLookup);
  // The lookup names the application type first and the client second, the reverse of create
  // and remove; the server reads them in this order.
  x.request().id1 = appTypeId;
  x.request().id2 = clientId;
  if (int status = x.Run(err)) return status;
  name = Text(x.response().name);
  value = static_cast<long>(x.response().value);
  return 0;
}

int AppTypeInterfaceNet::update(unsigned long clientId, unsigned long appTypeId, long& value, bool,
                                unsigned long, unsigned long, std::string& err, void*) {
  Exchange x(msg::kAppTypeUpdate);
  x.request().id1 = appTypeId;  // the lookup's order
  x.request().id2 = clientId;
  x.request().value = value;  // read, never written back
  return x.Run(err);
}

int AppTypeInterfaceNet::deleteAll(unsigned long clientId, unsigned long appTypeId,
                                   std::string& err, void*, int option) {
  // Its own request, answered under the instance delete-all's response id (the catalogue row).
  Exchange x(msg::kAppTypeDeleteAll);
  x.request().id = clientId;
  x.request().secondId = appTypeId;
  x.request().level = kEntityLevelAppType;
  x.request().option = static_cast<uint32_t>(option);
  return x.Run(err);
}

int AppTypeInterfaceNet::undeleteAll(unsigned long clientId, unsigned long appTypeId,
                                     std::string& err, void*) {
  Exchange x(msg::kUndeleteAll);
  x.request().id = clientId;
  x.request().secondId = appTypeId;
  x.request().level = kEntityLevelAppType;
  return x.Run(err);
}

int AppTypeInterfaceNet::getProperties(unsigned long clientId, unsigned long appTypeId, long table,
                                       std::string& err, PropCallBack* callback, void*) {
  Exchange x(msg::kAppTypeGetProperties);
  x.request().clientId = clientId;
  x.request().appTypeId = appTypeId;
  x.request().table = table;
  if (int status = x.Run(err)) return status;
  const GenericGetPropsResp& r = x.response();
  for (uint32_t i = 0; i < r.count && callback != nullptr; ++i) {
    callback->addProperty(Text(r.props[i].name), r.props[i].type, Text(r.props[i].value), 0);
  }
  return 0;
}

int AppTypeInterfaceNet::setProperties(unsigned long clientId, unsigned long appTypeId,
                                       const std::list<const ApplProperty*>& properties, bool flag,
                                       std::string& err, void*, int*) {
  return SendProperties(msg::kAppTypeSetProperties, "AppTypeInterfaceNet::setProperties", clientId,
                        appTypeId, properties, flag, err);
}

int AppTypeInterfaceNet::removeProperties(unsigned long clientId, unsigned long appTypeId,
                                          const std::list<const ApplProperty*>& properties,
                                          bool flag, std::string& err, void*, int*) {
  return SendProperties(msg::kAppTypeRemoveProperties, "AppTypeInterfaceNet::removeProperties",
                        clientId, appTypeId, properties, flag, err);
}

int AppTypeInterfaceNet::removeProperties(unsigned long clientId, unsigned long appTypeId,
                                          const std::list<std::string>& names, bool flag,
                                          std::string& err, void*, int*) {
  EvEvent log("AppTypeInterfaceNet::removeProperties");
  RequestArray<AppStringList> list(names, [](AppStringList& e, const std::string& name) {
    e.text = name.c_str();
  });
  return RunThrowing(log, [&] {
    Exchange x(msg::kAppTypeRemovePropertyNames);
    x.request().clientId = clientId;
    x.request().appTypeId = appTypeId;
    x.request().count = list.count();
    x.request().names = list.data();
    x.request().flag = flag ? 1 : 0;
    x.RunOrThrow(err);
  });
}

int AppTypeInterfaceNet::SetSearchString(unsigned long, unsigned long, unsigned long,
                                         std::list<std::string>&, std::string&, void*) {
  return 0;
}

int AppTypeInterfaceNet::GetSearchString(unsigned long, unsigned long, unsigned long,
                                         std::list<std::string>&, std::string&, void*) {
  return 0;
}

int AppTypeInterfaceNet::opDCvolProp(unsigned long clientId, unsigned long appTypeId,
                                     unsigned long volumeId, unsigned long& value1,
                                     std::string& text, unsigned long& value2,
                                     unsigned long& value3, unsigned long& value4,
                                     long& signedValue, unsigned long& value5, std::string& err,
                                     void*) {
  // Every reference is an input: nothing is written back, on success or failure.
  Exchange x(msg::kAppTypeDcVolProp);
  UpdateDCVolPropReq& req = x.request();
  req.volumeId = volumeId;
  req.value1 = value1;
  req.clientId = clientId;
  req.appTypeId = appTypeId;
  req.text = text.c_str();
  req.value2 = value2;
  req.value3 = value3;
  req.value4 = value4;
  req.signedValue = signedValue;
  req.value5 = value5;
  return x.Run(err);
}

int AppTypeInterfaceNet::getVolAndMountPathData(unsigned long, unsigned long,
                                                std::list<DCVolAndMountPathData>&,
                                                std::string& err, void*) {
  return FeatureNotSupported("AppTypeInterfaceNet::getVolAndMountPathData", err);
}

int AppTypeInterfaceNet::checkForDuplLogGUID(unsigned long, unsigned long, std::string&,
                                             std::list<DataPairConflict>&, std::string& err,
                                             void*) {
  return FeatureNotSupported("AppTypeInterfaceNet::checkForDuplLogGUID", err);
}

int AppTypeInterfaceNet::isSRMproxyAgent(unsigned long, unsigned long&, std::string&, void*) {
  return -1;  // no text, no log line
}

int AppTypeInterfaceNet::getCurrentSRMActionSubClient(unsigned long, unsigned long,
                                                      unsigned long&, std::string& err, void*) {
  return FeatureNotSupported("AppTypeInterfaceNet::getCurrentSRMActionSubClient", err);
}

int AppTypeInterfaceNet::getFSAppTypeNumber(unsigned long, unsigned long&, std::string& err,
                                            void*) {
  return FeatureNotSupported("AppTypeInterfaceNet::getFSAppTypeNumber", err);
}

int AppTypeInterfaceNet::isIndexingAppType(unsigned long, bool&, std::string& err, void*) {
  return FeatureNotSupported("AppTypeInterfaceNet::isIndexingAppType", err);
}
