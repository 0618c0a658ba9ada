#include "interfaces/BSInterfaceNet.h"

#include "appmgr/AppMgrDefs.h"
#include "appmgr/records/BSRecords.h"
#include "interfaces/Exchange.h"
#include "interfaces/PropertyOps.h"
#include "protocol/Messages.h"

using appmgr::iface::CopyChars;
using appmgr::iface::Exchange;
using appmgr::iface::NotImplemented;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

int BSInterfaceNet::lookup(unsigned long id, std::string& name, long& value, unsigned long& out1,
                           unsigned long& out2, unsigned long& out3, std::string& text,
                           unsigned long& /*out4*/, std::string& errorString, void*) {
  Exchange x(msg::kBsLookup);
  x.request().id = id;
  if (int status = x.Run(errorString)) return status;
  const GenericLookupResp4& r = x.response();
  if (r.name != nullptr) {
    name = r.name;
  } else {
    (void)name.empty();  // a null name leaves the caller's name as it was
  }
  value = r.value;
  out1 = out2 = out3 = 0;
  text = Text(r.text);
  return 0;
}

int BSInterfaceNet::update(unsigned long id, const std::string& name, long& value, bool, unsigned long,
                           unsigned long, unsigned long, std::string, std::string& errorString, void*) {
  Exchange x(msg::kBsUpdate);
  x.request().id = id;
  x.request().value = value;
  x.request().name = name.c_str();
  return x.Run(errorString);
}

int BSInterfaceNet::create(const std::string&, unsigned long&, unsigned long, unsigned long,
                           unsigned long, std::string, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int BSInterfaceNet::remove(unsigned long, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int BSInterfaceNet::setSubclientPolicyId(unsigned long, unsigned long, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int BSInterfaceNet::reassociateSubclientPolicy(unsigned long, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int BSInterfaceNet::UpdateAssocBackupset(unsigned long, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
int BSInterfaceNet::cloneSubclientPolicy(unsigned long, std::string& errorString, unsigned long&,
                                         std::string&, void*) {
  return NotImplemented(errorString);
}
int BSInterfaceNet::getLastSetXferUTC(unsigned long, int&, void*) {
  return appmgr::iface::kNotImplemented;
}
int BSInterfaceNet::getFLRconflictGUIDS(unsigned long, unsigned long, std::wstring, std::wstring,
                                        std::list<DataPairConflict>&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}

int BSInterfaceNet::deleteAll(unsigned long id, std::string& errorString, void*) {
  Exchange x(msg::kDeleteAll);
  x.request().id = id;
  x.request().secondId = 0;
  x.request().level = kEntityLevelBackupSet;
  return x.Run(errorString);
}

int BSInterfaceNet::undeleteAll(unsigned long id, std::string& errorString, void*) {
  Exchange x(msg::kUndeleteAll);
  x.request().id = id;
  x.request().secondId = 0;
  x.request().level = kEntityLevelBackupSet;
  return x.Run(errorString);
}

int BSInterfaceNet::getProperties(unsigned long id, long table, std::string& errorString,
                                  PropCallBack* callback, void*) {
  return appmgr::iface::GetProperties(msg::kBsGetProperties, id, table, errorString, callback);
}

int BSInterfaceNet::setProperties(unsigned long id, const std::list<const ApplProperty*>& properties,
                                  bool flag, std::string& errorString, void*, int*) {
  return appmgr::iface::SendProperties(msg::kBsSetProperties, "BSInterfaceNet::setProperties", id,
                                       properties, flag, errorString);
}

int BSInterfaceNet::removeProperties(unsigned long id, const std::list<const ApplProperty*>& properties,
                                     bool flag, std::string& errorString, void*, int*) {
  return appmgr::iface::SendProperties(msg::kBsRemoveProperties, "BSInterfaceNet::removeProperties", id,
                                       properties, flag, errorString);
}

int BSInterfaceNet::removeProperties(unsigned long id, const std::list<std::string>& names, bool flag,
                                     std::string& errorString, void*, int*) {
  return appmgr::iface::SendPropertyNames(msg::kBsRemovePropertyNames, "BSInterfaceNet::removeProperties",
                                          id, names, flag, errorString);
}

int BSInterfaceNet::getDefaultSubclientForStore(unsigned long& subclientId, unsigned long backupSetId,
                                                const std::string& storeName, std::string& errorString,
                                                void*) {
  Exchange x(msg::kBsDefaultSubclientForStore);
  x.request().id = backupSetId;
  x.request().storeName = storeName.c_str();
  if (int status = x.Run(errorString)) return status;
  subclientId = x.response().subclientId;
  return 0;
}

int BSInterfaceNet::getStoreList(unsigned long id, std::list<std::string>& stores, std::string& errorString,
                                 void*) {
  return appmgr::iface::GetStringList(msg::kBsStoreList, id, stores, errorString);
}

int BSInterfaceNet::getWildcardExpressionList(unsigned long id, std::list<std::string>& expressions,
                                              std::string& errorString, void*) {
  return appmgr::iface::GetStringList(msg::kBsWildcardList, id, expressions, errorString);
}

namespace {

void CopyPair(DataPairConflict& to, const DataPairConflict_1& from) {
  to.id1 = from.id1;
  to.id2 = from.id2;
  to.id3 = from.id3;
  to.id4 = from.id4;
  CopyChars(to.text1, from.text1);
  CopyChars(to.text2, from.text2);
  CopyChars(to.text3, from.text3);
  CopyChars(to.text4, from.text4);
  to.value = from.value;
}

}  // namespace

int BSInterfaceNet::doesNewPairConflict(unsigned long id, bool& conflict, const std::string& text1,
                                        const std::string& text2, DataPairConflict& pair1,
                                        DataPairConflict& pair2, void*) {
  std::string dropped;  // no error string: failures are reported by the status alone
  Exchange x(msg::kBsPairConflict);
  x.request().id = id;
  x.request().text1 = text1.c_str();
  x.request().text2 = text2.c_str();
  if (int status = x.Run(dropped)) return status;
  const CheckPairConflictResp& r = x.response();
  conflict = r.conflict != 0;
  CopyPair(pair1, r.pair1);
  CopyPair(pair2, r.pair2);
  return 0;
}

int BSInterfaceNet::getFRdataInterfacePair(unsigned long id, unsigned long pairId, unsigned long& selector,
                                           std::string& first, std::string& second,
                                           std::string& errorString, void*) {
  Exchange x(msg::kBsFrInterfacePair);
  x.request().id = id;
  x.request().pairId = pairId;
  x.request().selector = selector;  // read, never written back
  if (int status = x.Run(errorString)) return status;
  first = Text(x.response().first);
  second = Text(x.response().second);
  return 0;
}

int BSInterfaceNet::getClientIdForBackupSet(unsigned long backupSetId, unsigned long& clientId,
                                            std::string& errorString, void*) {
  Exchange x(msg::kBsClientId);
  x.request().id = backupSetId;
  if (int status = x.Run(errorString)) return status;
  clientId = x.response().clientId;
  return 0;
}

int BSInterfaceNet::getFLRSystemStateInfo(unsigned long id, std::string name,
                                          std::list<FLRSystemStateInfo>& out, void*) {
  std::string dropped;
  Exchange x(msg::kBsFlrSystemState);
  x.request().id = id;
  x.request().name = name.c_str();
  if (int status = x.Run(dropped)) return status;
  // Unlike the string lists, this result replaces the caller's list.
  out.clear();
  const APPFLRSystemStateInfoResp& r = x.response();
  for (uint32_t i = 0; i < r.count; ++i) {
    const APPFLRSystemStateInfo& e = r.infos[i];
    FLRSystemStateInfo info;
    info.id = e.id;
    info.value = e.value;
    info.text1 = Text(e.text1);
    info.text2 = Text(e.text2);
    info.pairs.clear();
    for (uint32_t j = 0; j != e.pairCount; ++j) {
      info.pairs.push_back(PairData{e.pairs[j].id, Text(e.pairs[j].name)});
    }
    out.push_back(std::move(info));
  }
  return 0;
}
