#include "interfaces/ClientGroupInterfaceNet.h"

#include "appmgr/records/ClientGroupRecords.h"
#include "interfaces/Exchange.h"
#include "protocol/Messages.h"

using appmgr::iface::Exchange;
using appmgr::iface::NotImplemented;
using appmgr::iface::RunThrowing;
using appmgr::iface::Text;
namespace msg = appmgr::msg;

namespace {

// The members both operations send. int1 never travels; int3 is create's alone.
void Fill(ClientGroupInfoReq& req, const _AppClientGroupInfo& info) {
  req.int2 = info.int2;
  req.int4 = info.int4;
  req.text1 = info.text1.c_str();
  req.int5 = info.int5;
  req.text3 = info.text3.c_str();
  req.text2 = info.text2.c_str();
  req.int6 = info.int6;
}

void CopyIntegers(_AppClientGroupInfo& info, const ClientGroupInfoResp& r) {
  info.int1 = r.int1;
  info.int2 = r.int2;
  info.int3 = r.int3;
  info.int4 = r.int4;
  info.int5 = r.int5;
  info.int6 = r.int6;
}

}  // namespace

int ClientGroupInterfaceNet::lookup(_AppClientGroupInfo& info, std::string& errorString, void*) {
  EvEvent log("ClientGroupInterfaceNet::lookup");
  return RunThrowing(log, [&] {
    Exchange x(msg::kClientGroupLookup);
    Fill(x.request(), info);
    x.RunOrThrow(errorString);
    const ClientGroupInfoResp& r = x.response();
    CopyIntegers(info, r);
    // A null text empties its member.
    info.text1 = Text(r.text1);
    info.text2 = Text(r.text2);
    info.text3 = Text(r.text3);
  });
}

int ClientGroupInterfaceNet::create(_AppClientGroupInfo& info, std::string& errorString, void*) {
  EvEvent log("ClientGroupInterfaceNet::create");
  return RunThrowing(log, [&] {
    Exchange x(msg::kClientGroupCreate);
    Fill(x.request(), info);
    x.request().int3 = info.int3;
    x.RunOrThrow(errorString);
    const ClientGroupInfoResp& r = x.response();
    CopyIntegers(info, r);
    // The server answers every text of a group it created; a null one would be its fault, and
    // reads as empty rather than crashing the caller.
    info.text1 = Text(r.text1);
    info.text2 = Text(r.text2);
    info.text3 = Text(r.text3);
  });
}

int ClientGroupInterfaceNet::update(_AppClientGroupInfo&, std::string& errorString, void*) {
  return NotImplemented(errorString);
}

int ClientGroupInterfaceNet::remove(unsigned long, std::string& errorString, void*) {
  return NotImplemented(errorString);
}
