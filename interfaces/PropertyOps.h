// The operations many interface classes share, written once over the generic records:
// properties read through a PropCallBack, properties set or removed (throwing style), and
// string lists appended to the caller's list.
#pragma once

#include <list>
#include <string>

#include "appmgr/AppMgrTypes.h"
#include "appmgr/records/GenericRecords.h"
#include "interfaces/Exchange.h"

namespace appmgr::iface {

// Each returned property to the callback, in the server's order, with a fourth argument of 0.
template <class Req>
int GetProperties(const wire::Op<Req, GenericGetPropsResp>& op, unsigned long id, long table,
                  std::string& errorString, PropCallBack* callback) {
  Exchange x(op);
  x.request().id = id;
  x.request().table = table;
  if (int status = x.Run(errorString)) return status;
  const GenericGetPropsResp& r = x.response();
  for (uint32_t i = 0; i < r.count && callback != nullptr; ++i) {
    callback->addProperty(Text(r.props[i].name), r.props[i].type, Text(r.props[i].value), 0);
  }
  return 0;
}

// setProperties and removeProperties by properties: each property's name, type and value, in
// list order; the bool as 0 or 1. Throwing style.
template <class Req>
int SendProperties(const wire::Op<Req, GenericResp>& op, const char* label, unsigned long id,
                   const std::list<const ApplProperty*>& properties, bool flag,
                   std::string& errorString) {
  EvEvent log(label);
  RequestArray<AppMgrProps> props(properties, [](AppMgrProps& p, const ApplProperty* property) {
    p.name = property->getName().c_str();
    p.type = property->getType();
    p.value = property->getValue().c_str();
  });
  return RunThrowing(log, [&] {
    Exchange x(op);
    x.request().id = id;
    x.request().count = props.count();
    x.request().props = props.data();
    x.request().flag = flag ? 1 : 0;
    x.RunOrThrow(errorString);
  });
}

// updateContent: the add and the remove list in one request (no chunks, no limit on the
// entries), each entry carrying the call's one content type; the flags as 0 or 1. Throwing style.
inline int UpdateContent(const wire::Op<GenericUpdateContentReq, GenericResp>& op,
                         const char* label, unsigned long id, int contentType,
                         const std::list<std::string*>& toAdd,
                         const std::list<std::string*>& toRemove, bool flag1, bool flag2,
                         bool flag3, std::string& errorString) {
  EvEvent log(label);
  ContentArray add(toAdd, contentType);
  ContentArray remove(toRemove, contentType);
  return RunThrowing(log, [&] {
    Exchange x(op);
    GenericUpdateContentReq& req = x.request();
    req.id = id;
    req.count1 = add.count();
    req.content1 = add.data();
    req.count2 = remove.count();
    req.content2 = remove.data();
    req.flag1 = flag1 ? 1 : 0;
    req.flag2 = flag2 ? 1 : 0;
    req.flag3 = flag3 ? 1 : 0;
    x.RunOrThrow(errorString);
  });
}

// removeProperties by names. Throwing style.
template <class Req>
int SendPropertyNames(const wire::Op<Req, GenericResp>& op, const char* label, unsigned long id,
                      const std::list<std::string>& names, bool flag, std::string& errorString) {
  EvEvent log(label);
  RequestArray<AppStringList> list(
      names, [](AppStringList& e, const std::string& name) { e.text = name.c_str(); });
  return RunThrowing(log, [&] {
    Exchange x(op);
    x.request().id = id;
    x.request().count = list.count();
    x.request().names = list.data();
    x.request().flag = flag ? 1 : 0;
    x.RunOrThrow(errorString);
  });
}

// Appends each returned text to the caller's list (which is not cleared first).
template <class Req>
int GetStringList(const wire::Op<Req, GenericStringListResp>& op, unsigned long id,
                  std::list<std::string>& out, std::string& errorString) {
  Exchange x(op);
  x.request().id = id;
  if (int status = x.Run(errorString)) return status;
  const GenericStringListResp& r = x.response();
  for (uint32_t i = 0; i < r.count; ++i) out.push_back(Text(r.texts[i]));
  return 0;
}

}  // namespace appmgr::iface
