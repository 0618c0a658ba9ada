#include "interfaces/SCInterfaceNet.h"

#include <cstring>
#include <memory>

#include "appmgr/records/SCRecords.h"
#include "interfaces/Exchange.h"
#include "interfaces/PropertyOps.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::RequestArray;
using appmgr::iface::RunThrowing;
namespace msg = appmgr::msg;

namespace {

// Several operations log under the look-up's label, although they are not look-ups; callers'
// log filters know them by it.
constexpr char kLookupLabel[] = "SCInterfaceNet::lookup";

// An operation refused as a whole: no exchange, the text logged under its own label.
int NotSupported(const char* label, std::string& errorString) {
  errorString = "Feature Not Supported";
  EvEvent(label).Error("%s", errorString.c_str());
  return -1;
}

// A heap copy of a caller's text, terminated, for the requests that carry a copy rather than a
// pointer into the caller's string; freed when the operation returns.
std::unique_ptr<char[]> HeapCopy(const std::string& text) {
  auto copy = std::make_unique<char[]>(text.size() + 1);
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  return copy;
}

// A null text leaves the caller's string as it was: only empty() is asked of it.
void AssignUnlessNull(std::string& to, const char* text) {
  if (text != nullptr) {
    to = text;
  } else {
    (void)to.empty();
  }
}

// SetStoreAssociation and SetActiveDirectoryAssociation: one shape under two ids. Throwing
// style: a failing step is logged under the operation's label.
template <class Req>
int SendAssociations(const appmgr::wire::Op<Req, GenericResp>& op, const char* label,
                     unsigned long subclientId, const std::list<std::string>& names,
                     std::string& errorString) {
  EvEvent log(label);
  RequestArray<AppStringList> list(
      names, [](AppStringList& e, const std::string& name) { e.text = name.c_str(); });
  return RunThrowing(log, [&] {
    Exchange x(op);
    x.request().id = subclientId;
    x.request().count = list.count();
    x.request().names = list.data();
    x.RunOrThrow(errorString);
  });
}

}  // namespace

int SCInterfaceNet::lookup(unsigned long subclientId, std::string& name, long& value,
                           unsigned long& attr2, unsigned long& attr3, unsigned long& attr4,
                           std::string& text, std::string& errorString, void*) {
  EvEvent log(kLookupLabel);
  Exchange x(msg::kScLookup);
  x.request().id = subclientId;
  if (int status = x.Run(errorString)) return status;
  const AppGetSubClientPropertiesResp& r = x.response();
  AssignUnlessNull(name, r.name);
  value = r.value;
  attr2 = r.attr2;
  attr3 = r.attr3;
  attr4 = r.attr4;
  AssignUnlessNull(text, r.text);
  return 0;
}

int SCInterfaceNet::lookup(std::string guid, std::string& name, long& value, unsigned long& attr2,
                           unsigned long& attr3, unsigned long& attr4, unsigned long& subclientId,
                           std::string& errorString, void*) {
  EvEvent log(kLookupLabel);
  std::unique_ptr<char[]> copy = HeapCopy(guid);
  Exchange x(msg::kScLookupByGuid);
  x.request().guid = copy.get();
  if (int status = x.Run(errorString)) return status;
  const AppGetSubClientPropertiesResp& r = x.response();
  AssignUnlessNull(name, r.name);
  value = r.value;
  attr2 = r.attr2;
  attr3 = r.attr3;
  attr4 = r.attr4;
  subclientId = r.subclientId;
  return 0;
}

int SCInterfaceNet::update(unsigned long subclientId, const std::string& name, long& value, bool,
                           unsigned long, unsigned long, std::string& errorString, void*) {
  EvEvent log(kLookupLabel);
  Exchange x(msg::kScUpdate);
  x.request().id = subclientId;
  x.request().value = value;  // read, never written back
  x.request().name = name.c_str();
  return x.Run(errorString);
}

int SCInterfaceNet::getProperties(unsigned long subclientId, long table, std::string& errorString,
                                  PropCallBack* callback, void*) {
  EvEvent log(kLookupLabel);
  return appmgr::iface::GetProperties(msg::kScGetProperties, subclientId, table, errorString,
                                      callback);
}

int SCInterfaceNet::setProperties(unsigned long subclientId,
                                  const std::list<const ApplProperty*>& properties, bool flag,
                                  std::string& errorString, void*, int*) {
  return appmgr::iface::SendProperties(msg::kScSetProperties, "SCInterfaceNet::setProperties",
                                       subclientId, properties, flag, errorString);
}

int SCInterfaceNet::removeProperties(unsigned long subclientId,
                                     const std::list<const ApplProperty*>& properties, bool flag,
                                     std::string& errorString, void*, int*) {
  return appmgr::iface::SendProperties(msg::kScRemoveProperties, "SCInterfaceNet::removeProperties",
                                       subclientId, properties, flag, errorString);
}

int SCInterfaceNet::removeProperties(unsigned long subclientId, const std::list<std::string>& names,
                                     bool flag, std::string& errorString, void*, int*) {
  return appmgr::iface::SendPropertyNames(msg::kScRemovePropertyNames,
                                          "SCInterfaceNet::removeProperties", subclientId, names,
                                          flag, errorString);
}

int SCInterfaceNet::initContent(unsigned long subclientId, long value, std::string& errorString,
                                ContentCallBack* callback, void*, bool, int, bool) {
  EvEvent log(kLookupLabel);
  Exchange x(msg::kScInitContent);
  x.request().id = subclientId;
  x.request().value = value;
  if (int status = x.Run(errorString)) return status;
  const GenericInitContentResp2& r = x.response();
  if (callback != nullptr) callback->setFlag(r.contentFlag == 1);
  appmgr::iface::DeliverContent(callback, r.count, r.entries);
  return 0;
}

int SCInterfaceNet::updateContent(unsigned long subclientId, int contentType,
                                  const std::list<std::string*>& toAdd,
                                  const std::list<std::string*>& toRemove, bool flag1, bool flag2,
                                  bool flag3, std::string& errorString, void*, int*) {
  return appmgr::iface::UpdateContent(msg::kScUpdateContent, "SCInterfaceNet::updateContent",
                                      subclientId, contentType, toAdd, toRemove, flag1, flag2,
                                      flag3, errorString);
}

int SCInterfaceNet::SetStoreAssociation(unsigned long subclientId,
                                        const std::list<std::string>& stores,
                                        std::string& errorString, void*) {
  return SendAssociations(msg::kScSetStoreAssociation, "SCInterfaceNet::SetStoreAssociation",
                          subclientId, stores, errorString);
}

int SCInterfaceNet::SetActiveDirectoryAssociation(unsigned long subclientId,
                                                  const std::list<std::string>& names,
                                                  std::string& errorString, void*) {
  return SendAssociations(msg::kScSetDirectoryAssociation,
                          "SCInterfaceNet::SetActiveDirectoryAssociation", subclientId, names,
                          errorString);
}

int SCInterfaceNet::getOverlappingSubclientList(unsigned long subclientId,
                                                std::list<unsigned long>& subclients,
                                                std::string& errorString, void*) {
  EvEvent log(kLookupLabel);
  Exchange x(msg::kScOverlapping);
  x.request().id = subclientId;
  if (int status = x.Run(errorString)) return status;
  const GetOverlappingSCListResp& r = x.response();
  for (uint32_t i = 0; i < r.count; ++i) subclients.push_back(r.ids[i]);
  return 0;
}

int SCInterfaceNet::getBackupHost(unsigned long subclientId, unsigned long& hostId,
                                  std::string& errorString, void*) {
  EvEvent log(kLookupLabel);
  Exchange x(msg::kScBackupHost);
  x.request().id = subclientId;
  if (int status = x.Run(errorString)) return status;
  hostId = x.response().hostId;
  return 0;
}

int SCInterfaceNet::getFRPairData(unsigned long first, unsigned long second, unsigned long& value,
                                  std::string& text, std::string& errorString, unsigned long sixth,
                                  void*) {
  EvEvent log(kLookupLabel);
  Exchange x(msg::kScGetPairData);
  x.request().first = first;
  x.request().second = second;
  x.request().third = sixth;
  if (int status = x.Run(errorString)) return status;
  value = x.response().value;
  text = appmgr::iface::Text(x.response().text);
  return 0;
}

int SCInterfaceNet::setFRPairData(unsigned long first, unsigned long second, unsigned long third,
                                  std::string& text, std::string& errorString, bool flag, void*) {
  EvEvent log(kLookupLabel);
  Exchange x(msg::kScSetPairData);
  x.request().first = first;
  x.request().second = second;
  x.request().third = third;
  x.request().text = text.c_str();
  x.request().flag = flag ? 1 : 0;
  return x.Run(errorString);
}

int SCInterfaceNet::updateSCdataPaths(unsigned long, std::list<AppToDataPathItem>&,
                                      std::string& errorString, void*) {
  return NotSupported("SCInterfaceNet::updateSCdataPaths", errorString);
}

int SCInterfaceNet::getSCdataPaths(unsigned long, std::list<AppToDataPathItem>&,
                                   std::string& errorString, void*) {
  return NotSupported("SCInterfaceNet::getSCdataPaths", errorString);
}

int SCInterfaceNet::getFLRconflictGUIDS(unsigned long, unsigned long, std::list<DataPairConflict>&,
                                        std::string& errorString, void*) {
  return NotSupported("SCInterfaceNet::getFLRconflictGUIDS", errorString);
}

int SCInterfaceNet::getCurrentSRMActionSubClient(unsigned long&, unsigned long&,
                                                 std::string& errorString, void*) {
  return NotSupported("SCInterfaceNet::getCurrentSRMActionSubClient", errorString);
}

int SCInterfaceNet::getExtensionForFileType(std::string& fileTypeInExtensionsOut, void*) {
  EvEvent log("SCInterfaceNet::getExtensionForFileType");
  std::string dropped;  // no error string: failures are reported by the status alone
  std::unique_ptr<char[]> copy = HeapCopy(fileTypeInExtensionsOut);
  Exchange x(msg::kScFileTypeExtensions);
  x.request().fileType = copy.get();
  if (int status = x.Run(dropped)) return status;
  fileTypeInExtensionsOut = appmgr::iface::Text(x.response().extensions);
  return 0;
}

int SCInterfaceNet::getFSBackupsetContent(unsigned long n3, unsigned long n4, unsigned long n5,
                                          unsigned long n6, unsigned long n7, unsigned long value,
                                          bool flag, std::string& text1, std::string& text2,
                                          std::vector<unsigned long>& ids, void*) {
  EvEvent log("SCInterfaceNet::getBackupsetContent");
  std::string dropped;
  Exchange x(msg::kScBackupSetContent);
  // The embedded application id keeps an all-zero header and zero in every other field.
  AppIdInfoReq& appId = x.request().appId;
  appId.number3 = n3;
  appId.number4 = n4;
  appId.number5 = n5;
  appId.number6 = n6;
  appId.number7 = n7;
  x.request().value = value;
  x.request().flag = flag ? 1 : 0;
  if (int status = x.Run(dropped)) return status;
  const GetBackupsetContentResp& r = x.response();
  for (uint32_t i = 0; i < r.count; ++i) ids.push_back(r.ids[i]);
  text1 = appmgr::iface::Text(r.text1);
  text2 = appmgr::iface::Text(r.text2);
  return 0;
}

int SCInterfaceNet::getSmartCopySubclients(unsigned long subclientId,
                                           std::vector<RefCopySCInfo>& copies, void*) {
  EvEvent log("SCInterfaceNet::getSmartCopySubclients");
  std::string dropped;
  Exchange x(msg::kScReferenceCopies);
  x.request().id = subclientId;
  if (int status = x.Run(dropped)) return status;
  const GetReferenceCopySCResp& r = x.response();
  for (uint32_t i = 0; i < r.count; ++i) copies.push_back(r.copies[i]);
  return 0;
}

int SCInterfaceNet::setContentGroups(unsigned long, std::string&, void*) {
  return appmgr::iface::kNotImplemented;
}
