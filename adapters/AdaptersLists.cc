// The list queries of AdaptersInterfaceNet: one exchange each, the arguments into the request
// in the order the protocol gives, the answer's arrays appended to the caller's lists.
#include "adapters/AdaptersInterfaceNet.h"
#include "adapters/ListWalk.h"
#include "appmgr/records/ListRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::adapters::AppendRows;
using appmgr::adapters::Flags;
using appmgr::adapters::Ids;
using appmgr::adapters::Names;
using appmgr::iface::AppendPairs;
using appmgr::iface::Exchange;
namespace msg = appmgr::msg;

namespace {

uint32_t FlagOf(bool flag) {
  return flag ? 1 : 0;
}
// An int flag travels unchanged: its bits.
uint32_t FlagOf(int flag) {
  return static_cast<uint32_t>(flag);
}

// A GenericListPairReq list: [selector, flag] answered by ids and names.
template <class Flag>
int PairList(const appmgr::wire::Op<GenericListPairReq, GenericListPairResp>& op,
             unsigned long selector, Flag flag, AdaptersInterface::IdList& ids,
             AdaptersInterface::NameList& names, std::string& errorString) {
  Exchange x(op);
  x.request().selector = selector;
  x.request().option = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  AppendPairs(x.response(), ids, names);
  return 0;
}

int InstanceList(unsigned long id1, unsigned long id2, unsigned long id3, int flag,
                 AdaptersInterface::IdList& ids, AdaptersInterface::NameList& names,
                 std::string& errorString) {
  Exchange x(msg::kGetInstanceList);
  x.request().id1 = id1;
  x.request().id2 = id2;
  x.request().id3 = id3;
  x.request().flag = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  AppendPairs(x.response(), ids, names);
  return 0;
}

}  // namespace

int AdaptersInterfaceNet::getProvidersList(IdList& ids, NameList& names, NameList& texts,
                                           FlagList& flags, IdList& values,
                                           std::string& errorString, unsigned long selector,
                                           void*) {
  Exchange x(msg::kGetProvidersList);
  x.request().selector = selector;
  if (int status = x.Run(errorString)) return status;
  const GetProvidersListResp& r = x.response();
  AppendRows(r.idCount, Ids{r.ids, ids}, Names{r.names, names}, Ids{r.values, values},
             Flags{r.flags, flags}, Names{r.texts, texts});
  return 0;
}

int AdaptersInterfaceNet::getAppIdList(NameList& appIds, std::string& errorString, unsigned long a,
                                       unsigned long b, unsigned long c, unsigned long d,
                                       unsigned long e, void*, bool flag) {
  Exchange x(msg::kGetAppIdList);
  x.request().selector1 = a;
  x.request().selector2 = b;
  x.request().selector3 = c;
  x.request().selector4 = d;
  x.request().selector5 = e;
  x.request().flag = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  AppendRows(x.response().count, Names{x.response().texts, appIds});
  return 0;
}

int AdaptersInterfaceNet::getOrbitList(IdList& ids, NameList& names, std::string& errorString,
                                       unsigned long selector, void*, bool flag) {
  return PairList(msg::kGetOrbitList, selector, flag, ids, names, errorString);
}

int AdaptersInterfaceNet::getClientList(IdList& ids, NameList& names, std::string& errorString,
                                        unsigned long selector, void*, int flag) {
  return PairList(msg::kGetClientList, selector, flag, ids, names, errorString);
}

int AdaptersInterfaceNet::getClientListOfType(IdList& ids, NameList& names,
                                              std::string& errorString, unsigned long a,
                                              unsigned long b, void*, bool flag) {
  Exchange x(msg::kGetClientListOfType);
  x.request().selector1 = a;
  x.request().selector2 = b;
  x.request().flag = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  AppendPairs(x.response(), ids, names);
  return 0;
}

int AdaptersInterfaceNet::getApplicationTypes(IdList& ids, NameList& names,
                                              std::string& errorString, unsigned long selector,
                                              void*, int flag) {
  return PairList(msg::kGetApplicationTypes, selector, flag, ids, names, errorString);
}

int AdaptersInterfaceNet::getInstanceList(IdList& ids, NameList& names, std::string& errorString,
                                          unsigned long a, unsigned long b, unsigned long c, void*,
                                          int flag) {
  return InstanceList(a, b, c, flag, ids, names, errorString);
}

int AdaptersInterfaceNet::getInstanceList(IdList& ids, NameList& names, std::string& errorString,
                                          unsigned long a, unsigned long b, void*, int flag) {
  return InstanceList(a, 0, b, flag, ids, names, errorString);
}

int AdaptersInterfaceNet::getInstanceList(unsigned long a, unsigned long b, IdList& ids,
                                          NameList& names, std::string& errorString, void*,
                                          int flag) {
  return InstanceList(0, a, b, flag, ids, names, errorString);
}

int AdaptersInterfaceNet::getBackupSetList(IdList& ids, NameList& names, FlagList& flags,
                                           std::string& errorString, unsigned long a,
                                           unsigned long b, unsigned long c, void*, int flag) {
  Exchange x(msg::kGetBackupSetList);
  x.request().id1 = a;
  x.request().id2 = b;
  x.request().id3 = c;
  x.request().flag = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  const BackupsetListResp& r = x.response();
  AppendRows(r.idCount, Ids{r.ids, ids}, Names{r.names, names}, Flags{r.flags, flags});
  return 0;
}

int AdaptersInterfaceNet::getSubclientList(IdList& ids, NameList& names, FlagList& flags,
                                           std::string& errorString, unsigned long a,
                                           unsigned long b, void*, int flag) {
  Exchange x(msg::kGetSubclientList);
  x.request().id1 = a;
  x.request().id2 = b;
  x.request().flag = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  const SubclientListResp& r = x.response();
  AppendRows(r.idCount, Ids{r.ids, ids}, Names{r.names, names}, Flags{r.flags, flags});
  return 0;
}

int AdaptersInterfaceNet::getSubclientList(IdList& ids, NameList& names, std::string& errorString,
                                           unsigned long a, unsigned long b, unsigned long c,
                                           unsigned long d, void*, int flag) {
  Exchange x(msg::kGetAllSubclientList);
  x.request().id1 = a;
  x.request().id2 = b;
  x.request().id3 = c;
  x.request().id4 = d;
  x.request().flag = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  const GetAllSubclientListResp& r = x.response();
  AppendRows(r.idCount, Ids{r.ids, ids}, Names{r.names, names});
  return 0;
}

int AdaptersInterfaceNet::getSiblingSubclientList(unsigned long subclientId, IdList& ids,
                                                  NameList& names, unsigned long& value1,
                                                  unsigned long& value2, unsigned long& value3,
                                                  unsigned long& value4, unsigned long& value5,
                                                  std::string& errorString, void*, bool flag) {
  Exchange x(msg::kGetSiblingSubclientList);
  x.request().subclientId = subclientId;
  x.request().flag = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  const SiblingSCListResp& r = x.response();
  AppendRows(r.idCount, Ids{r.ids, ids}, Names{r.names, names});
  // Stored after the walk, and also when there is nothing to walk.
  value1 = r.value1;
  value2 = r.value2;
  value3 = r.value3;
  value4 = r.value4;
  value5 = r.value5;
  return 0;
}

int AdaptersInterfaceNet::getClientListByAppType(IdList& ids, NameList& names,
                                                 std::string& errorString, unsigned long a,
                                                 unsigned long b, void*) {
  Exchange x(msg::kGetClientListByAppType);
  x.request().selector1 = a;
  x.request().selector2 = b;
  if (int status = x.Run(errorString)) return status;
  AppendPairs(x.response(), ids, names);
  return 0;
}

int AdaptersInterfaceNet::getClientListByAppGroup(IdList& ids, NameList& names,
                                                  std::string& errorString, unsigned long a,
                                                  unsigned long b, void*) {
  Exchange x(msg::kGetClientListByAppGroup);
  x.request().selector1 = a;
  x.request().selector2 = b;
  if (int status = x.Run(errorString)) return status;
  AppendPairs(x.response(), ids, names);
  return 0;
}

int AdaptersInterfaceNet::getApplications(NameList& appIds, unsigned long a, unsigned long b,
                                          bool& /*reserved: never written*/,
                                          std::string& errorString, void*) {
  Exchange x(msg::kGetAppIdListByArchId);
  x.request().id1 = a;
  x.request().id2 = b;
  if (int status = x.Run(errorString)) return status;
  AppendRows(x.response().count, Names{x.response().texts, appIds});
  return 0;
}

int AdaptersInterfaceNet::getClientList(IdList& ids, NameList& names, std::string& errorString,
                                        unsigned long a, unsigned long b, void*, int flag) {
  Exchange x(msg::kGetClientsByClientGroup);
  x.request().id1 = a;
  x.request().id2 = b;
  x.request().flag = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  AppendPairs(x.response(), ids, names);
  return 0;
}

int AdaptersInterfaceNet::getClientGroupList(IdList& ids, NameList& names, std::string& errorString,
                                             unsigned long selector, void*, int flag) {
  return PairList(msg::kGetClientGroupList, selector, flag, ids, names, errorString);
}

int AdaptersInterfaceNet::getClientGroupList(IdList& ids, NameList& names, std::string& errorString,
                                             unsigned long a, unsigned long b, void*, int flag) {
  Exchange x(msg::kGetClientGroupsOfClient);
  x.request().id1 = a;
  x.request().id2 = b;
  x.request().flag = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  AppendPairs(x.response(), ids, names);
  return 0;
}

int AdaptersInterfaceNet::getClientList(IdList& ids, NameList& names, IdList& values,
                                        std::string& errorString, void*, bool flag) {
  // The selector of this list is always 2, whatever the caller wants.
  constexpr unsigned long kSelector = 2;
  Exchange x(msg::kGetClientListWithValues);
  x.request().selector = kSelector;
  x.request().option = FlagOf(flag);
  if (int status = x.Run(errorString)) return status;
  const ClientListWOSResp& r = x.response();
  AppendRows(r.idCount, Ids{r.ids, ids}, Names{r.names, names}, Ids{r.values, values});
  return 0;
}

int AdaptersInterfaceNet::getExDMClientDomainList(const std::string& domain, IdList& l1, IdList& l2,
                                                  IdList& l3, IdList& l4, NameList& s1,
                                                  NameList& s2, std::string& errorString, void*,
                                                  bool /*not sent*/) {
  Exchange x(msg::kGetExdmDomainList);
  x.request().domain = domain.c_str();
  if (int status = x.Run(errorString)) return status;
  const GetEXDMDomainListResp& r = x.response();
  AppendRows(r.idCount, Ids{r.ids, l1}, Ids{r.values1, l2}, Ids{r.values2, l3}, Ids{r.values3, l4},
             Names{r.texts1, s1}, Names{r.texts2, s2});
  return 0;
}

int AdaptersInterfaceNet::getCloudList(IdList& ids, NameList& names, unsigned long selector,
                                       std::string& errorString, void*) {
  Exchange x(msg::kGetCloudList);
  x.request().selector = selector;
  if (int status = x.Run(errorString)) return status;
  const GetCloudListResp& r = x.response();
  AppendRows(r.idCount, Ids{r.ids, ids}, Names{r.names, names});
  return 0;
}

int AdaptersInterfaceNet::getCloudClientList(IdList& ids1, IdList& ids2, unsigned long cloudId,
                                             std::string& errorString, void*) {
  Exchange x(msg::kGetCloudClientList);
  x.request().cloudId = cloudId;
  if (int status = x.Run(errorString)) return status;
  const GetCloudClientListResp& r = x.response();
  AppendRows(r.id1Count, Ids{r.ids1, ids1}, Ids{r.ids2, ids2});
  return 0;
}
