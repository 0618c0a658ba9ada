// XmlRouter: the XML requests appmgrd serves, by tag id, whichever way they travel.
//
// An XML request reaches the server in one of several carriers: an XML frame on the session,
// the XML text of HandleXMLReq (routed by its message type), the serialised message of
// SendKpAlertXML_Req (one tag per request id), the log-monitoring passthrough and the agent XML
// passthrough. Each carrier reads the document and hands the message to the router, which calls
// the route registered for its tag. A route returns an answer message, or nothing for the generic
// response with status 0; a failure becomes the generic response (KPGui::AlertResponse) with the
// error's code as its status and its text as its error text: the XML error answer. So every XML
// request gets an XML answer, and the carriers differ only in how they frame it.
//
// Thread-safety: a router is filled once, then only read; routes run on many connection threads
// at once and reach the store only through its typed operations.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "platform/base/CLmError.h"
#include "platform/xml/CNMessageBase.h"
#include "server/core/Server.h"
#include "server/store/Store.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {

// What a route knows beyond the message.
struct XmlCall {
  Store& store;
  const ConnectionInfo& connection;
  // The log-monitoring passthrough's two ids, which stand in for an entity and a type that the
  // document leaves out; 0 in every other carrier.
  uint64_t defaultEntity = 0;
  uint64_t defaultType = 0;
};

// A route fills *answer, or leaves it null for the generic response with status 0.
using XmlRoute = CLmError (*)(XmlCall& call, const CNMessageBase& request,
                              std::unique_ptr<CNMessageBase>* answer);

class XmlRouter {
 public:
  void Add(unsigned long tagId, XmlRoute route) { routes_[tagId] = route; }
  bool Has(unsigned long tagId) const { return routes_.count(tagId) != 0; }

  // The answer to `request`: its route's, or the XML error answer (code 1008, "no handler for
  // XML message KPGui::X (tag 0x...) here", for a tag without a route). Never null.
  std::unique_ptr<CNMessageBase> Route(XmlCall& call, const CNMessageBase& request) const;

  // Reads the document at `xml` (NUL-terminated) and routes it. `tagId` not 0: the document
  // must carry that tag (its message type, for the carriers that name one), and a tag without a
  // route is refused before the document is read. Never null; a document that is missing or does
  // not read, or carries another tag, is code 3 with what is wrong.
  std::unique_ptr<CNMessageBase> RouteText(XmlCall& call, const char* xml,
                                           unsigned long tagId) const;

 private:
  std::map<unsigned long, XmlRoute> routes_;
};

// The generic response: status 0 and no text, or the error's code and text.
std::unique_ptr<CNMessageBase> GenericAnswer(const CLmError& error = CLmError());

// The status an answer carries: the generic response's status, 0 for any other message.
int32_t StatusOf(const CNMessageBase& answer);
// The generic response's error text; empty for any other message.
std::string ErrorTextOf(const CNMessageBase& answer);

// The answer as text, to go into a binary record: the compact document, or, when it cannot be
// written (too large), the XML error answer saying so.
std::string AnswerText(const CNMessageBase& answer);

// Puts the answer into a binary response record: its text at *xml and, when it is the XML error
// answer, its status and error text in the header as well, for the carriers whose clients read
// the header rather than the XML.
void AnswerInto(const CNMessageBase& answer, AppMgrRespHdr& hdr, const char** xml, Exchange& x);

// The request as the class registered for its tag: `request` itself, or, when it is a plain
// message of that tag, a copy read into the class. Null when it does not read as T (*error
// says why).
template <class T>
const T* As(const CNMessageBase& request, std::unique_ptr<T>* holder, CLmError* error) {
  if (const T* typed = dynamic_cast<const T*>(&request)) return typed;
  std::string text;
  auto copy = std::make_unique<T>();
  int rc = request.serialize(text);
  if (rc == 0) rc = copy->unserialize(text);
  if (rc != 0) {
    *error = CLmError::Format(kStoreErrInvalidArgument, "the XML document is not a %s (%d): %s",
                              T::kTagName, rc, copy->GetReadError().c_str());
    return nullptr;
  }
  *holder = std::move(copy);
  return holder->get();
}

}  // namespace appmgr::server
