#include "interfaces/InstInterfaceNet.h"

#include <cstdint>

#include "appmgr/AppMgrDefs.h"
#include "appmgr/records/InstRecords.h"
#include "interfaces/Exchange.h"
#include "interfaces/PropertyOps.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

// lookup, update, deleteAll and undeleteAll keep a log object under their label, as every
// operation does, but write no line: their failures are reported by the status alone.

int InstInterfaceNet::lookup(unsigned long instanceId, std::string& name, long& value,
                             unsigned long& attr2, unsigned long& attr3, unsigned long& attr4,
                             std::string& text, std::string& err, void*) {
  EvDebug log(nullptr, "InstInterfaceNet::lookup");
  Exchange x(msg::kInstLookup);
  x.request().id = instanceId;
  if (int status = x.Run(err)) return status;
  const GenericLookupResp3& r = x.response();
  // An absent name or text leaves the caller's string as it was.
  if (r.name != nullptr) name = r.name;
  value = r.value;
  attr2 = r.attr2;
  attr3 = r.attr3;
  attr4 = r.attr4;
  if (r.text != nullptr) text = r.text;
  return 0;
}

int InstInterfaceNet::update(unsigned long instanceId, const std::string& name, long& value, bool,
                             unsigned long, unsigned long, std::string& err, void*) {
  EvDebug log(nullptr, "InstInterfaceNet::update");
  Exchange x(msg::kInstUpdate);
  x.request().id = instanceId;
  x.request().value = value;  // read, never written back
  x.request().name = name.c_str();
  return x.Run(err);
}

namespace {

// Both tree operations name the instance alone: second id 0, level 3, whatever the instance.
template <class Req>
int MarkSubtree(const appmgr::wire::Op<Req, GenericResp>& op, unsigned long instanceId,
                std::string& err) {
  Exchange x(op);
  x.request().id = instanceId;
  x.request().secondId = 0;
  x.request().level = kEntityLevelInstance;
  return x.Run(err);
}

}  // namespace

int InstInterfaceNet::deleteAll(unsigned long instanceId, std::string& err, void*) {
  EvDebug log(nullptr, "InstInterfaceNet::deleteAll");
  return MarkSubtree(msg::kDeleteAll, instanceId, err);
}

int InstInterfaceNet::undeleteAll(unsigned long instanceId, std::string& err, void*) {
  // The undelete shares the delete's label on purpose.
  EvDebug log(nullptr, "InstInterfaceNet::deleteAll");
  return MarkSubtree(msg::kUndeleteAll, instanceId, err);
}

int InstInterfaceNet::getProperties(unsigned long instanceId, long table, std::string& err,
                                    PropCallBack* callback, void*) {
  return appmgr::iface::GetProperties(msg::kInstGetProperties, instanceId, table, err, callback);
}

int InstInterfaceNet::setProperties(unsigned long instanceId,
                                    const std::list<const ApplProperty*>& properties, bool flag,
                                    std::string& err, void*, int*) {
  return appmgr::iface::SendProperties(msg::kInstSetProperties, "InstInterfaceNet::setProperties",
                                       instanceId, properties, flag, err);
}

int InstInterfaceNet::removeProperties(unsigned long instanceId,
                                       const std::list<const ApplProperty*>& properties, bool flag,
                                       std::string& err, void*, int*) {
  return appmgr::iface::SendProperties(msg::kInstRemoveProperties,
                                       "InstInterfaceNet::removeProperties", instanceId, properties,
                                       flag, err);
}

int InstInterfaceNet::removeProperties(unsigned long instanceId,
                                       const std::list<std::string>& names, bool flag,
                                       std::string& err, void*, int*) {
  return appmgr::iface::SendPropertyNames(msg::kInstRemovePropertyNames,
                                          "InstInterfaceNet::removeProperties", instanceId, names,
                                          flag, err);
}

int InstInterfaceNet::setMSSQLAGProperties(unsigned long instanceId,
                                           const std::list<const ApplProperty*>& properties,
                                           bool flag, std::string& err, void*, int*) {
  return appmgr::iface::SendProperties(msg::kInstSetAgProperties,
                                       "InstInterfaceNet::setMSSQLAGProperties", instanceId,
                                       properties, flag, err);
}

int InstInterfaceNet::initContent(unsigned long instanceId, long value, std::string& err,
                                  ContentCallBack* callback, void*) {
  EvEvent log("InstInterfaceNet::initContent");
  Exchange x(msg::kInstInitContent);
  x.request().id = instanceId;
  x.request().value = value;
  if (int status = x.Run(err)) return status;
  const GenericInitContentResp& r = x.response();
  appmgr::iface::DeliverContent(callback, r.count, r.content);
  return 0;
}

int InstInterfaceNet::updateContent(unsigned long instanceId, int contentType,
                                    const std::list<std::string*>& toAdd,
                                    const std::list<std::string*>& toRemove, bool flag1, bool flag2,
                                    bool flag3, std::string& err, void*, int*) {
  return appmgr::iface::UpdateContent(msg::kInstUpdateContent, "InstInterfaceNet::updateContent",
                                      instanceId, contentType, toAdd, toRemove, flag1, flag2, flag3,
                                      err);
}
