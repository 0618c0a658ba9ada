#include "interfaces/ClientInterfaceNet.h"

#include <algorithm>
#include <array>

#include "appmgr/records/ClientRecords.h"
#include "interfaces/Exchange.h"
#include "interfaces/PropertyOps.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::NotImplemented;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

namespace {

using ClientOp = appmgr::wire::Op<ClientInfoReq7, ClientInfoResp7>;

void FillRequest(ClientInfoReq7& r, const _AppClientInfo& info) {
  r.integer1 = info.clientId;
  r.integer2 = info.platformType;
  r.integer3 = info.integer3;
  r.integer4 = info.integer4;
  r.integer5 = static_cast<int32_t>(info.integer5);  // cut to 32 bits here, whole below
  r.integer5Whole = info.integer5;
  r.integer6 = info.integer6;
  r.integer7 = info.integer7;
  r.integer8 = info.integer8;
  r.integer9 = info.integer9;
  r.integer10 = info.integer10;
  r.integer11 = info.integer11;
  r.integer12 = info.integer12;
  r.text1 = info.clientName.c_str();
  r.text2 = info.hostName.c_str();
  r.text3 = info.text3.c_str();
  r.text4 = info.text4.c_str();
  r.text5 = info.text5.c_str();
  r.text6 = info.text6.c_str();
  r.text7 = info.text7.c_str();
  r.text8 = info.text8.c_str();
}

// A null text empties the caller's.
void Assign(std::string& to, const char* from) {
  to = Text(from);
}

// A null text leaves the caller's as it was.
void AssignKeeping(std::string& to, const char* from) {
  if (from != nullptr) {
    to = from;
  } else {
    (void)to.empty();  // deliberately nothing: the caller's text stays
  }
}

void CopyBack(const ClientInfoResp7& r, bool isLookup, _AppClientInfo& info,
              ClientPlatformInfo* platforms) {
  info.clientId = r.integer1;
  info.platformType = r.integer2;
  info.integer3 = r.integer3;
  info.integer4 = r.integer4;
  info.integer5 = r.integer5;  // the 32-bit field, sign-extended; the whole one is not read
  info.integer6 = r.integer6;
  info.integer7 = r.integer7;
  info.integer8 = r.integer8;
  info.integer9 = r.integer9;
  info.integer10 = r.integer10;
  info.integer11 = r.integer11;
  info.integer12 = r.integer12;
  Assign(info.clientName, r.text1);
  Assign(info.hostName, r.text2);
  Assign(info.text3, r.text3);
  // Texts 4 to 6 of a look-up answer are optional: one the server leaves out keeps the
  // caller's. Create and modify answer all of them (a null one reads as empty).
  auto middle = isLookup ? AssignKeeping : Assign;
  middle(info.text4, r.text4);
  middle(info.text5, r.text5);
  middle(info.text6, r.text6);
  Assign(info.text7, r.text7);
  Assign(info.text8, r.text8);
  if (platforms == nullptr) return;
  // The caller's array holds three; a server that sends more does not write past it.
  const uint32_t n = std::min<uint32_t>(r.platformCount, kClientPlatformCount);
  for (uint32_t i = 0; i < n; ++i) {
    platforms[i].value = r.platforms[i].value;
    if (r.platforms[i].text != nullptr) platforms[i].text = r.platforms[i].text;
  }
}

// lookup, create and modify: the whole record and three platforms out, the server's record
// back. Throwing style.
int RecordCall(const ClientOp& op, const char* label, bool isLookup, bool sendPlatformTexts,
               _AppClientInfo& info, ClientPlatformInfo* platforms, std::string& errorString) {
  EvEvent log(label);
  std::array<ClientPlatInfo, kClientPlatformCount> elements{};
  for (size_t i = 0; platforms != nullptr && i < elements.size(); ++i) {
    elements[i].value = platforms[i].value;
    elements[i].text = sendPlatformTexts ? platforms[i].text.c_str() : nullptr;
  }
  return appmgr::iface::RunThrowing(log, [&] {
    Exchange x(op);
    FillRequest(x.request(), info);
    x.request().platformCount = static_cast<uint32_t>(elements.size());
    x.request().platforms = elements.data();
    x.RunOrThrow(errorString);
    CopyBack(x.response(), isLookup, info, platforms);
  });
}

void AppendIds(const uint64_t* ids, uint32_t count, std::list<unsigned long>& out) {
  for (uint32_t i = 0; i < count; ++i) out.push_back(ids[i]);
}

}  // namespace

int ClientInterfaceNet::lookup(_AppClientInfo& info, ClientPlatformInfo* platforms,
                               std::string& errorString, void*) {
  return RecordCall(msg::kClientLookup, "ClientInterfaceNet::lookup", true, false, info, platforms,
                    errorString);
}

int ClientInterfaceNet::create(_AppClientInfo& info, ClientPlatformInfo* platforms,
                               std::string& errorString, void*) {
  return RecordCall(msg::kClientCreate, "ClientInterfaceNet::create", false, false, info, platforms,
                    errorString);
}

int ClientInterfaceNet::modify(_AppClientInfo& info, ClientPlatformInfo* platforms,
                               std::string& errorString, void*) {
  return RecordCall(msg::kClientModify, "ClientInterfaceNet::modify", false, true, info, platforms,
                    errorString);
}

int ClientInterfaceNet::remove(unsigned long clientId, std::string& errorString, void*) {
  Exchange x(msg::kClientRemove);
  x.request().clientId = clientId;
  return x.Run(errorString);
}

int ClientInterfaceNet::getProperties(unsigned long id, long table, std::string& errorString,
                                      PropCallBack* callback, void*) {
  return appmgr::iface::GetProperties(msg::kClientGetProperties, id, table, errorString, callback);
}

int ClientInterfaceNet::setProperties(unsigned long id, const std::list<const ApplProperty*>& properties,
                                      bool flag, std::string& errorString, void*, int*) {
  return appmgr::iface::SendProperties(msg::kClientSetProperties, "ClientInterfaceNet::setProperties",
                                       id, properties, flag, errorString);
}

int ClientInterfaceNet::removeProperties(unsigned long id,
                                         const std::list<const ApplProperty*>& properties, bool flag,
                                         std::string& errorString, void*, int*) {
  return appmgr::iface::SendProperties(msg::kClientRemoveProperties,
                                       "ClientInterfaceNet::removeProperties", id, properties, flag,
                                       errorString);
}

int ClientInterfaceNet::removeProperties(unsigned long id, const std::list<std::string>& names,
                                         bool flag, std::string& errorString, void*, int*) {
  return appmgr::iface::SendPropertyNames(msg::kClientRemovePropertyNames,
                                          "ClientInterfaceNet::removeProperties", id, names, flag,
                                          errorString);
}

int ClientInterfaceNet::getFLRpairListForDestinationVolumeGUID(std::string& volumeGuid,
                                                               std::list<unsigned long>& pairIds,
                                                               std::string& errorString, long option,
                                                               void*) {
  Exchange x(msg::kClientVolumeGuidPairs);
  x.request().volumeGuid = volumeGuid.c_str();
  x.request().option = option;
  if (int status = x.Run(errorString)) return status;
  AppendIds(x.response().pairIds, x.response().count, pairIds);
  return 0;
}

int ClientInterfaceNet::GetFRsetsWithDestClientId(unsigned long clientId, std::list<unsigned long>& list1,
                                                  std::list<unsigned long>& list2,
                                                  std::list<unsigned long>& list3,
                                                  std::string& errorString, void*) {
  Exchange x(msg::kClientReplicationSets);
  x.request().clientId = clientId;
  if (int status = x.Run(errorString)) return status;
  const GetFRSetsWithDestinationClientResp& r = x.response();
  AppendIds(r.ids1, r.count1, list1);
  AppendIds(r.ids2, r.count2, list2);
  AppendIds(r.ids3, r.count3, list3);
  return 0;
}

int ClientInterfaceNet::getClientInfoWithProperty(std::list<_AppClientInfo>& clients,
                                                  std::string propertyName, std::string propertyValue,
                                                  std::string& errorString, void*) {
  Exchange x(msg::kClientsWithProperty);
  x.request().propertyName = propertyName.c_str();
  x.request().propertyValue = propertyValue.c_str();
  if (int status = x.Run(errorString)) return status;
  const GetClientInfoResp& r = x.response();
  for (uint32_t i = 0; i < r.count; ++i) {
    _AppClientInfo info;
    info.clientId = r.clients[i].integer1;
    info.clientName = Text(r.clients[i].text1);
    info.hostName = Text(r.clients[i].text2);
    info.text3 = Text(r.clients[i].text3);
    clients.push_back(std::move(info));
  }
  return 0;
}

int ClientInterfaceNet::GetASMInstanceList(unsigned long id1, unsigned long id2,
                                           std::list<unsigned long>& instanceIds,
                                           std::string& errorString, void*) {
  Exchange x(msg::kClientAsmInstances);
  x.request().id1 = id1;
  x.request().id2 = id2;
  if (int status = x.Run(errorString)) return status;
  AppendIds(x.response().instanceIds, x.response().count, instanceIds);
  return 0;
}

int ClientInterfaceNet::getSRMAgentlessDaxType(unsigned long, unsigned long&, std::string& errorString,
                                               void*) {
  return NotImplemented(errorString);
}

int ClientInterfaceNet::setClientPostInstallProperties(unsigned long, unsigned long, std::string,
                                                       std::string& errorString, void*) {
  return NotImplemented(errorString);
}

int ClientInterfaceNet::getClientOwnerAssignmentValue(unsigned long, std::string&,
                                                      std::string& errorString, void*) {
  return NotImplemented(errorString);
}

int ClientInterfaceNet::setClientFSNodeData(unsigned int clientId, std::string data, int value, bool flag,
                                            std::string& errorString, void*) {
  Exchange x(msg::kClientFsNodeActivity);
  x.request().clientId = clientId;
  x.request().data = data.c_str();
  x.request().flag = flag ? 1 : 0;
  x.request().value = value;
  if (int status = x.SendReceive(errorString)) return status;
  // Unlike the other operations, a server error without a text leaves errorString alone.
  AppMgrRespHdr hdr = x.response().hdr;  // the verifier takes a mutable header
  int status = x.message().verifyResponseHeader(hdr);
  if (status != 0 && hdr.errorText != nullptr) errorString = hdr.errorText;
  return status;
}
