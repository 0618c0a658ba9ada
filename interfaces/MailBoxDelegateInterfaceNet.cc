#include "interfaces/MailBoxDelegateInterfaceNet.h"

#include "appmgr/records/MailBoxDelegateRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::RequestArray;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

namespace {

void ToWire(const _MailBoxDelegateInfo& from, MailBoxDelegate& to) {
  to.g1 = from.G1;
  to.g2 = from.G2.c_str();
  to.g3 = from.G3.c_str();
  to.g4 = from.G4.c_str();
  to.g5 = from.G5.c_str();
  to.g6 = from.G6.c_str();
  to.g7 = from.G7;
}

void FromWire(const MailBoxDelegate& from, _MailBoxDelegateInfo& to) {
  to.G1 = from.g1;
  to.G2 = Text(from.g2);
  to.G3 = Text(from.g3);
  to.G4 = Text(from.g4);
  to.G5 = Text(from.g5);
  to.G6 = Text(from.g6);
  to.G7 = from.g7;
}

// Both list reads: the records appended in the answer's order.
int GetList(unsigned long selector, std::list<_MailBoxDelegateInfo>& infos,
            std::string& errorString) {
  Exchange x(msg::kDelegateGetList);
  x.request().selector = selector;
  if (int status = x.Run(errorString)) return status;
  const GetMailBoxDelegateListResp& r = x.response();
  _MailBoxDelegateInfo work;
  for (uint32_t i = 0; i < r.count; ++i) {
    FromWire(r.infos[i], work);
    infos.push_back(work);
  }
  return 0;
}

// The list writes: one block per record, in list order, sent in one request.
template <class Req>
int SendList(const appmgr::wire::Op<Req, GenericResp>& op,
             const std::list<_MailBoxDelegateInfo>& infos, std::string& errorString) {
  RequestArray<MailBoxDelegate> blocks(
      infos, [](MailBoxDelegate& to, const _MailBoxDelegateInfo& from) { ToWire(from, to); });
  Exchange x(op);
  x.request().count = blocks.count();
  x.request().infos = blocks.data();
  return x.Run(errorString);
}

}  // namespace

int MailBoxDelegateInterfaceNet::lookup(_MailBoxDelegateInfo& info, std::string& errorString,
                                        void*) {
  Exchange x(msg::kDelegateLookup);
  ToWire(info, x.request().info);
  if (int status = x.Run(errorString)) return status;
  FromWire(x.response().info, info);
  return 0;
}

int MailBoxDelegateInterfaceNet::create(_MailBoxDelegateInfo& info, std::string& errorString,
                                        void*) {
  Exchange x(msg::kDelegateCreate);
  ToWire(info, x.request().info);
  return x.Run(errorString);
}

int MailBoxDelegateInterfaceNet::update(_MailBoxDelegateInfo& info, std::string& errorString,
                                        void*) {
  Exchange x(msg::kDelegateUpdate);
  ToWire(info, x.request().info);
  return x.Run(errorString);
}

int MailBoxDelegateInterfaceNet::remove(unsigned long id, std::string& errorString, void*) {
  // The id, G1 = 0 and five empty texts (not null ones).
  static const char kEmpty[] = "";
  Exchange x(msg::kDelegateRemove);
  MailBoxDelegate& r = x.request().info;
  r.g2 = r.g3 = r.g4 = r.g5 = r.g6 = kEmpty;
  r.g7 = id;
  return x.Run(errorString);
}

int MailBoxDelegateInterfaceNet::setMailBoxDelegate(_MailBoxDelegateInfo info,
                                                    std::string& errorString, void*) {
  Exchange x(msg::kDelegateSet);
  ToWire(info, x.request().info);
  return x.Run(errorString);
}

int MailBoxDelegateInterfaceNet::getMailBoxDelegateList(std::list<_MailBoxDelegateInfo>& infos,
                                                        std::string& errorString, void*) {
  return GetList(0, infos, errorString);
}

int MailBoxDelegateInterfaceNet::setMailBoxDelegateList(
    const std::list<_MailBoxDelegateInfo>& infos, std::string& errorString, void*) {
  return SendList(msg::kDelegateSetList, infos, errorString);
}

int MailBoxDelegateInterfaceNet::getMailBoxDelegateList(std::list<_MailBoxDelegateInfo>& infos,
                                                        unsigned long id,
                                                        std::string& errorString, void*) {
  return GetList(id, infos, errorString);
}

int MailBoxDelegateInterfaceNet::removeMailBoxDelegateList(
    const std::list<_MailBoxDelegateInfo>& infos, std::string& errorString, void*) {
  return SendList(msg::kDelegateRemoveList, infos, errorString);
}
