#include "server/handlers/AlertHandlers.h"

#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/base/EvDebug.h"
#include "platform/xml/KPGuiMessages.h"
#include "protocol/Messages.h"
#include "server/handlers/HandlerSupport.h"
#include "server/store/AlertStore.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

// Ordered: the details keep the record's field order.
using json = nlohmann::ordered_json;

int64_t Now() {
  return static_cast<int64_t>(std::time(nullptr));
}

template <class T>
T Load(const uint8_t* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

json FieldsJson(const wire::RecordSchema& schema, const uint8_t* base);

// One value of a record, as JSON: numbers as numbers, a null text as null, a record as an object,
// an array as a list. An element of one field (a text, an id) stands for its value.
json ValueJson(const wire::FieldDesc& f, const uint8_t* base) {
  const uint8_t* p = base + f.offset;
  switch (f.kind) {
    case wire::FieldKind::kU32:
      return Load<uint32_t>(p);
    case wire::FieldKind::kI32:
      return Load<int32_t>(p);
    case wire::FieldKind::kU64:
      return Load<uint64_t>(p);
    case wire::FieldKind::kI64:
      return Load<int64_t>(p);
    case wire::FieldKind::kText: {
      const char* text = Load<const char*>(p);
      return text ? json(text) : json(nullptr);
    }
    case wire::FieldKind::kChars:
      return std::string(reinterpret_cast<const char*>(p),
                         strnlen(reinterpret_cast<const char*>(p), f.size));
    case wire::FieldKind::kStruct:
      return FieldsJson(*f.element, p);
    case wire::FieldKind::kArray: {
      const uint32_t count = Load<uint32_t>(base + f.countOffset);
      const uint8_t* items = Load<const uint8_t*>(p);
      json list = json::array();
      for (uint32_t i = 0; items != nullptr && i < count; ++i) {
        const uint8_t* item = items + size_t{i} * f.element->size;
        list.push_back(f.element->fieldCount == 1 ? ValueJson(f.element->fields[0], item)
                                                  : FieldsJson(*f.element, item));
      }
      return list;
    }
  }
  return nullptr;
}

json FieldsJson(const wire::RecordSchema& schema, const uint8_t* base) {
  json out = json::object();
  for (uint32_t i = 0; i < schema.fieldCount; ++i) {
    out[schema.fields[i].name] = ValueJson(schema.fields[i], base);
  }
  return out;
}

// Every field of the record after its header, by name; texts that are not UTF-8 are kept with
// the bad bytes replaced, so whatever an agent sends is stored.
std::string RecordDetails(const SendAlertExReq3& req) {
  json fields =
      FieldsJson(wire::Wire<SendAlertExReq3>::schema, reinterpret_cast<const uint8_t*>(&req));
  fields.erase("hdr");
  return fields.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string TextOf(const char* text) {
  return text ? std::string(text) : std::string();
}

// SEND_ALERT_EX: the record as one stored alert. It names no severity; its text is the
// description, or the failure reason when the description is empty.
CLmError SendAlertEx(Store& store, const SendAlertExReq3& req, GenericResp&, Exchange& x) {
  StoredAlert a;
  a.source = StoredAlert::kSourceRecord;
  a.receivedAt = Now();
  a.alertType = req.alertType;
  a.alertCriteria = req.alertCriteria;
  a.alertStatus = req.alertStatus;
  a.clientId = req.clientId;
  a.clientName = TextOf(req.clientName);
  a.backupSetId = req.backupsetId;
  a.jobId = req.jobId;
  a.text = TextOf(req.description);
  if (a.text.empty()) a.text = TextOf(req.failureReason);
  a.details = RecordDetails(req);
  std::vector<StoredAlert> one{a};
  if (CLmError e = AlertStore(store).Add(one)) return e;
  EvEventWrapper::DebugLvl("AlertHandlers", 3, "alert %llu (type %lld) of client %lld from [%s]",
                           static_cast<unsigned long long>(one[0].id),
                           static_cast<long long>(a.alertType), static_cast<long long>(a.clientId),
                           x.connection.client.c_str());
  return CLmError();
}

// KPGui::AlertEvAlertExList: each entry one stored alert, all or none. An entry's alert id is
// stored as its alert type and its time as the time it was raised.
CLmError AlertList(XmlCall& call, const CNMessageBase& request, std::unique_ptr<CNMessageBase>*) {
  std::unique_ptr<KPGui::AlertEvAlertExList> holder;
  CLmError error;
  const auto* list = As<KPGui::AlertEvAlertExList>(request, &holder, &error);
  if (list == nullptr) return error;
  std::vector<StoredAlert> alerts;
  const int64_t now = Now();
  for (const KPGui::AlertItem& item : list->GetAlerts()) {
    StoredAlert a;
    a.source = StoredAlert::kSourceXml;
    a.receivedAt = now;
    a.raisedAt = item.time;
    a.alertType = item.alertId;
    a.severity = item.severity;
    a.clientId = item.clientId;
    a.clientName = item.clientName;
    a.text = item.text;
    a.details = json{{"alertId", item.alertId},   {"severity", item.severity},
                     {"clientId", item.clientId}, {"clientName", item.clientName},
                     {"time", item.time},         {"text", item.text}}
                    .dump();
    alerts.push_back(std::move(a));
  }
  return AlertStore(call.store).Add(alerts);
}

// `text` with every byte sequence an XML message cannot carry (bytes that are not UTF-8, control
// characters other than tab, line feed and carriage return, U+FFFE and U+FFFF) replaced by U+FFFD.
// The binary record and a connection's hello bring any bytes, and one such alert must not make
// every later list fail.
std::string XmlSafe(const std::string& text) {
  static constexpr char kReplacement[] = "\xEF\xBF\xBD";
  std::string out;
  out.reserve(text.size());
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const size_t n = text.size();
  for (size_t i = 0; i < n;) {
    uint32_t c = p[i];
    size_t len = c < 0x80             ? 1
                 : (c & 0xE0) == 0xC0 ? 2
                 : (c & 0xF0) == 0xE0 ? 3
                 : (c & 0xF8) == 0xF0 ? 4
                                      : 0;
    bool wellFormed = len != 0 && i + len <= n;
    if (wellFormed && len > 1) {
      c &= 0x7F >> len;
      for (size_t k = 1; wellFormed && k < len; ++k) {
        wellFormed = (p[i + k] & 0xC0) == 0x80;
        c = (c << 6) | (p[i + k] & 0x3F);
      }
      // Shortest form only, and no surrogates.
      static constexpr uint32_t kMin[] = {0, 0, 0x80, 0x800, 0x10000};
      wellFormed = wellFormed && c >= kMin[len] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    }
    if (!wellFormed) {  // one byte at a time, so that a good character after it is kept
      out += kReplacement;
      ++i;
      continue;
    }
    if ((c >= 0x20 || c == '\t' || c == '\n' || c == '\r') && c != 0xFFFE && c != 0xFFFF) {
      out.append(text, i, len);
    } else {
      out += kReplacement;
    }
    i += len;
  }
  return out;
}

KPGui::AlertRecord RecordOf(const StoredAlert& a) {
  KPGui::AlertRecord r;
  r.alertId = static_cast<int64_t>(a.id);
  r.severity = a.severity;
  r.clientId = a.clientId;
  r.clientName = XmlSafe(a.clientName);
  r.received = a.receivedAt;
  r.text = XmlSafe(a.text);
  r.alertType = a.alertType;
  r.raised = a.raisedAt;
  r.acknowledged = a.acknowledgedAt;
  r.acknowledgedBy = XmlSafe(a.acknowledgedBy);
  r.source = a.source;
  r.details = XmlSafe(a.details);
  return r;
}

// KPGui::AlertListReq: the stored alerts the filter selects, oldest first; at most as many as one
// list of a message holds, the most recent.
CLmError ListAlerts(XmlCall& call, const CNMessageBase& request,
                    std::unique_ptr<CNMessageBase>* answer) {
  std::unique_ptr<KPGui::AlertListReq> holder;
  CLmError error;
  const auto* req = As<KPGui::AlertListReq>(request, &holder, &error);
  if (req == nullptr) return error;
  if (req->GetLimit() < 0) {
    return CLmError::Format(kStoreErrInvalidArgument, "a limit of %lld alerts is not a count",
                            static_cast<long long>(req->GetLimit()));
  }
  AlertFilter filter;
  filter.clientId = req->GetClientId();
  filter.unacknowledgedOnly = req->GetUnacknowledgedOnly();
  filter.limit = static_cast<uint64_t>(req->GetLimit());
  if (filter.limit == 0 || filter.limit > kCNMaxListEntries) filter.limit = kCNMaxListEntries;
  std::vector<StoredAlert> alerts;
  if (CLmError e = AlertStore(call.store).List(filter, &alerts)) return e;
  auto out = std::make_unique<KPGui::AlertListResp>();
  for (const StoredAlert& a : alerts) {
    if (int rc = out->AddAlert(RecordOf(a))) {
      return CLmError::Format(kKpErrInternal, "alert %llu cannot be written to the answer (%d)",
                              static_cast<unsigned long long>(a.id), rc);
    }
  }
  *answer = std::move(out);
  return CLmError();
}

// KPGui::AlertAckReq: acknowledged now, by the name the request gives or else by the client the
// connection says it is.
CLmError AcknowledgeAlerts(XmlCall& call, const CNMessageBase& request,
                           std::unique_ptr<CNMessageBase>*) {
  std::unique_ptr<KPGui::AlertAckReq> holder;
  CLmError error;
  const auto* req = As<KPGui::AlertAckReq>(request, &holder, &error);
  if (req == nullptr) return error;
  std::vector<uint64_t> ids;
  for (int64_t id : req->GetAlertIds()) {
    if (id <= 0) {
      return CLmError::Format(kStoreErrNotFound, "alert %lld does not exist",
                              static_cast<long long>(id));
    }
    ids.push_back(static_cast<uint64_t>(id));
  }
  const std::string& by = req->GetBy().empty() ? call.connection.client : req->GetBy();
  return AlertStore(call.store).Acknowledge(ids, by, Now());
}

}  // namespace

void RegisterAlertHandlers(Server& server, Store& store) {
  Register(server, store, msg::kSendAlertEx, SendAlertEx);
}

void AddAlertRoutes(XmlRouter& router) {
  router.Add(KPGui::AlertEvAlertExList::kTagId, AlertList);
  router.Add(KPGui::AlertListReq::kTagId, ListAlerts);
  router.Add(KPGui::AlertAckReq::kTagId, AcknowledgeAlerts);
}

}  // namespace appmgr::server
