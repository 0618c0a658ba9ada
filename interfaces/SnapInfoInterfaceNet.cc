#include "interfaces/SnapInfoInterfaceNet.h"

#include "appmgr/records/SnapInfoRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::RequestArray;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

namespace {

// F3 (slot 2) travels only in the operations that write or list whole records; F7 and F14
// (slots 6 and 13) never travel and stay zero on the way out.
enum class F3 : bool { kSkip = false, kCarry = true };

void ToWire(const _AppSnapInfo& from, F3 f3, SnapInfo& to) {
  to.f1 = from.F1;
  to.f2 = from.F2;
  if (f3 == F3::kCarry) to.f3 = from.F3.c_str();
  to.f5 = from.F5.c_str();
  to.f6 = from.F6.c_str();
  to.f4 = from.F4.c_str();
  to.f8 = from.F8.c_str();
  to.f9 = from.F9.c_str();
  to.f10 = from.F10;
  to.f11 = from.F11;
  to.f12 = from.F12;
  to.f13 = from.F13.c_str();
  to.f15 = from.F15;
}

// F7 and F14 keep what `to` held; F3 too unless it is carried.
void FromWire(const SnapInfo& from, F3 f3, _AppSnapInfo& to) {
  to.F1 = from.f1;
  to.F2 = from.f2;
  if (f3 == F3::kCarry) to.F3 = Text(from.f3);
  to.F5 = Text(from.f5);
  to.F6 = Text(from.f6);
  to.F4 = Text(from.f4);
  to.F8 = Text(from.f8);
  to.F9 = Text(from.f9);
  to.F10 = from.f10;
  to.F11 = from.f11;
  to.F12 = from.f12;
  to.F13 = Text(from.f13);
  to.F15 = from.f15;
}

}  // namespace

int SnapInfoInterfaceNet::lookup(_AppSnapInfo& info, std::string& errorString, void*) {
  Exchange x(msg::kSnapLookup);
  ToWire(info, F3::kSkip, x.request().info);
  if (int status = x.Run(errorString)) return status;
  FromWire(x.response().info, F3::kSkip, info);
  return 0;
}

int SnapInfoInterfaceNet::create(_AppSnapInfo& info, std::string& errorString, void*) {
  Exchange x(msg::kSnapCreate);
  ToWire(info, F3::kSkip, x.request().info);
  return x.Run(errorString);
}

int SnapInfoInterfaceNet::update(_AppSnapInfo& info, std::string& errorString, void*) {
  Exchange x(msg::kSnapUpdate);
  ToWire(info, F3::kSkip, x.request().info);
  return x.Run(errorString);
}

int SnapInfoInterfaceNet::remove(unsigned long id, std::string& errorString, void*) {
  Exchange x(msg::kSnapRemove);
  x.request().info.f2 = id;  // every other slot stays zero
  return x.Run(errorString);
}

int SnapInfoInterfaceNet::setSnapInfo(_AppSnapInfo info, std::string& errorString, void*) {
  Exchange x(msg::kSnapSet);
  ToWire(info, F3::kCarry, x.request().info);
  return x.Run(errorString);
}

int SnapInfoInterfaceNet::getSnapInfoList(std::list<_AppSnapInfo>& infos, std::string& errorString,
                                          void*) {
  Exchange x(msg::kSnapGetList);
  if (int status = x.Run(errorString)) return status;
  const GetSnapInfoListResp& r = x.response();
  // One working value for every entry: F7 and F14 of each appended record keep their defaults.
  _AppSnapInfo work;
  for (uint32_t i = 0; i < r.count; ++i) {
    FromWire(r.infos[i], F3::kCarry, work);
    infos.push_back(work);
  }
  return 0;
}

int SnapInfoInterfaceNet::setSnapInfoList(std::list<_AppSnapInfo> infos, std::string& errorString,
                                          void*) {
  RequestArray<SnapInfo> blocks(
      infos, [](SnapInfo& to, const _AppSnapInfo& from) { ToWire(from, F3::kCarry, to); });
  Exchange x(msg::kSnapSetList);
  x.request().count = blocks.count();
  x.request().infos = blocks.data();
  return x.Run(errorString);
}
