// appmgrctl alert|advisory|xml|logmon ...: alerts, security advisories, XML requests, log
// monitoring and the agent XML passthrough.
//
// The alert record goes through SendAlert; everything else of these families is XML. appmgrctl
// has no message classes (they are not part of the public headers), so it writes each request
// in the documented XML form (XmlForm.h, docs/xml.md) and sends it with handleXMLReq under its
// tag as the message type, or with the log-monitoring or agent passthrough; the server routes
// XML by tag whichever way it comes. A generic answer with a non-zero status is a failure with
// the server's code and text.
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "appmgr/AdaptersInterface.h"
#include "appmgr/DaxBackupInterface.h"
#include "appmgr/EvAlertEx.h"
#include "appmgr/LogMonitorInterface.h"
#include "tools/appmgrctl/CommandSupport.h"
#include "tools/appmgrctl/XmlForm.h"

namespace appmgrctl {
namespace {

// The messages these commands write and read (docs/xml.md).
struct Tag {
  unsigned long id;
  const char* name;
};
constexpr Tag kAlertListReq{0x01000020, "KPGui::AlertListReq"};
constexpr Tag kAlertListResp{0x01000021, "KPGui::AlertListResp"};
constexpr Tag kAlertAckReq{0x01000022, "KPGui::AlertAckReq"};
constexpr Tag kTypeListReq{0x010003f6, "KPGui::AlertSRMAdvisoryTypeListReq"};
constexpr Tag kTypeListResp{0x010003f7, "KPGui::AlertSRMAdvisoryTypeListResp"};
constexpr Tag kAdvisoryListReq{0x010003f8, "KPGui::SRMAdvisoryListReq"};
constexpr Tag kAdvisoryListResp{0x010003f9, "KPGui::SRMAdvisoryListResp"};
constexpr Tag kSyncClient{0x010003fc, "KPGui::SyncSRMClientAdvisories"};
constexpr Tag kSyncSource{0x010003fd, "KPGui::SyncSRMSourceAdvisories"};
constexpr Tag kControl{0x010003fe, "KPGui::ControlSRMAdvisories"};
constexpr Tag kLogParamsReq{0x1e5b0a01, "App::LogMonitoringParamsReq"};
constexpr Tag kLogParams{0x1e5b0a02, "App::LogMonitoringParams"};
constexpr Tag kSetLogParams{0x1e5b0a03, "App::SetLogMonitoringParams"};

constexpr const char* kSeverities[] = {"none", "info", "warning", "error", "critical"};
constexpr const char* kStates[] = {"", "enabled", "disabled", "acknowledged"};
constexpr const char* kActions[] = {"enable", "disable", "acknowledge", "remove"};

std::string Hex(unsigned long id) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%08lx", id);
  return text;
}

// Seconds since 1970 as "2023-11-14T22:13:20Z"; 0 as "".
std::string Time(int64_t seconds) {
  if (seconds == 0) return "";
  std::time_t t = static_cast<std::time_t>(seconds);
  std::tm tm{};
  if (gmtime_r(&t, &tm) == nullptr) return std::to_string(seconds);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &tm);
  return text;
}

template <size_t N>
std::string NameOf(const char* const (&names)[N], int64_t value) {
  return value >= 0 && static_cast<size_t>(value) < N && names[value][0] != '\0'
             ? names[value]
             : std::to_string(value);
}

// The contents of FILE, or of standard input for "-".
bool ReadInput(const std::string& path, std::string* text, std::string* error) {
  if (path == "-") {
    text->assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    return true;
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = "cannot read " + path;
    return false;
  }
  std::ostringstream all;
  all << in.rdbuf();
  *text = all.str();
  return true;
}

// Reads an answer `expected` (0: any message) or the generic response: a failed Outcome for an
// unreadable answer, a generic response with a non-zero status, or another message.
bool ReadAnswer(const std::string& xml, unsigned long expected, XmlAnswer* answer,
                Outcome* failure) {
  std::string why;
  if (!ReadXmlAnswer(xml, answer, &why)) {
    *failure = Outcome::Failed(-1, "the server's answer does not read: " + why);
    return false;
  }
  if (answer->generic && answer->status != 0) {
    *failure = Outcome::Failed(static_cast<int>(answer->status), answer->errorText);
    return false;
  }
  if (expected != 0 && answer->tag != expected) {
    *failure = Outcome::Failed(-1, "the server answered " + answer->root + " (tag " +
                                       Hex(answer->tag) + "), not tag " + Hex(expected));
    return false;
  }
  return true;
}

// Sends a request with handleXMLReq under its tag and reads the answer as ReadAnswer does.
bool AskXml(Library& lib, const Tag& tag, const XmlRecord& fields, unsigned long expected,
            XmlAnswer* answer, Outcome* failure) {
  AdaptersInterface* adapters = lib.Object<AdaptersInterface>(APPMGR_INTERFACE_ADAPTERS);
  if (adapters == nullptr) {
    *failure = Outcome::Failed(-1, lib.path() + " makes no adapters interface");
    return false;
  }
  std::string xml = XmlDocument(tag.name, tag.id, fields);
  std::string error;
  if (int status = adapters->handleXMLReq(1, tag.id, xml, error, std::string(), 0)) {
    *failure = Outcome::Failed(status, error);
    return false;
  }
  return ReadAnswer(xml, expected, answer, failure);
}

// ---------------------------------------------------------------------------------------------
// Arguments

CLI::Option* Option(CLI::App& cmd, const char* name, unsigned long& out, const char* what) {
  return cmd.add_option(name, out, what)->transform(Number<unsigned long>());
}

void FileArg(CLI::App& cmd, Args& a, const char* what) {
  cmd.add_option("FILE", a.file, what)->required();
}

void AlertSendArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("TEXT", a.text, "the alert's description");
  cmd.add_option("--type", a.alertType, "the alert type")->transform(Number<int>());
  cmd.add_option("--criteria", a.alertCriteria, "the alert criteria")->transform(Number<int>());
  cmd.add_option("--status", a.alertStatus, "the alert status")->transform(Number<int>());
  cmd.add_option("--client", a.alertClientId, "the client's id (0: none)")
      ->transform(Number<long>());
  cmd.add_option("--client-name", a.alertClientName, "the client's name (default: the server's)");
  Option(cmd, "--job", a.alertJob, "the job the alert is about");
  Option(cmd, "--backup-set", a.alertBackupSet, "the backup set the alert is about");
  cmd.add_option("--failure-reason", a.alertFailureReason, "why the job failed");
}

void AlertListArgs(CLI::App& cmd, Args& a) {
  Option(cmd, "--client", a.alertListClient, "only this client's alerts");
  cmd.add_flag("--unacknowledged", a.alertUnacknowledged, "only alerts not yet acknowledged");
  Option(cmd, "--limit", a.alertLimit, "only the most recent so many");
}

void AlertAckArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("ID", a.ids, "the alerts to acknowledge")
      ->required()
      ->transform(Number<unsigned long>());
  cmd.add_option("--by", a.alertBy, "who acknowledges (default: this program's client name)");
}

void XmlSendArgs(CLI::App& cmd, Args& a) {
  FileArg(cmd, a, "the XML request, or - for standard input");
  Option(cmd, "--type", a.xmlType, "the XML message type (default: the document's tag)");
  Option(cmd, "--route", a.xmlRoute, "the route value sent with it")->capture_default_str();
  Option(cmd, "--value", a.xmlValue, "the extra value sent with it");
  cmd.add_option("--extra", a.xmlExtra, "the extra text sent with it");
}

void XmlAgentArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "CLIENT", "the client the agent acts for (0: none)");
  IdArg(cmd, a.id2, "JOB", "the job id (0: none)");
  FileArg(cmd, a, "the XML request, or - for standard input");
}

void AdvisoryListArgs(CLI::App& cmd, Args& a) {
  Option(cmd, "--client", a.advisoryClient, "the advisories that apply to this client");
  cmd.add_option("--source", a.advisorySource, "the advisories this source publishes instead");
}

void AdvisoryTypesArgs(CLI::App& cmd, Args& a) {
  Option(cmd, "--client", a.advisoryClient, "only the types of this client's advisories");
}

// ID:TYPE:TITLE words.
CLI::Validator AdvisoryWord() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        size_t first = text.find(':');
        size_t second = first == std::string::npos ? first : text.find(':', first + 1);
        long id = 0, type = 0;
        if (second == std::string::npos || !ParseNumber(text.substr(0, first), &id) ||
            !ParseNumber(text.substr(first + 1, second - first - 1), &type)) {
          return "not ID:TYPE:TITLE: " + text;
        }
        return {};
      },
      "");
}

void SyncArgs(CLI::App& cmd, Args& a, bool client) {
  if (client) {
    IdArg(cmd, a.id, "CLIENT", "the client whose advisories these are");
  } else {
    cmd.add_option("SOURCE", a.advisorySource, "the source that publishes them")->required();
  }
  cmd.add_option("ID:TYPE:TITLE", a.words, "the whole set of advisories")->check(AdvisoryWord());
  cmd.add_flag("--clear", a.advisoryClear, "with no advisories: remove them all");
  cmd.callback([&a] {
    if (a.words.empty() && !a.advisoryClear) {
      throw CLI::ValidationError("give ID:TYPE:TITLE advisories, or --clear to remove them all");
    }
  });
}
void SyncClientArgs(CLI::App& cmd, Args& a) {
  SyncArgs(cmd, a, true);
}
void SyncSourceArgs(CLI::App& cmd, Args& a) {
  SyncArgs(cmd, a, false);
}

void ControlArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("ACTION", a.advisoryAction, "enable, disable, acknowledge or remove")
      ->required()
      ->check(CLI::IsMember({"enable", "disable", "acknowledge", "remove"}));
  cmd.add_option("ADVISORY", a.ids, "the advisories to act on")
      ->required()
      ->transform(Number<unsigned long>());
  Option(cmd, "--client", a.advisoryClient, "on this client only (default: every client)");
}

void LogGetArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ENTITY", "whom the parameter belongs to");
  cmd.add_option("TYPE", a.logType, "the parameter's type")
      ->required()
      ->transform(Number<unsigned>());
  cmd.add_option("NAME", a.name, "the parameter's name")->required();
}

void LogListArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ENTITY", "whose parameters");
  cmd.add_option("--type", a.logType, "only this type (default: every type)")
      ->transform(Number<unsigned>());
}

void LogSetArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ENTITY", "whose parameters");
  cmd.add_option("TYPE", a.logType, "the type of every parameter given")
      ->required()
      ->transform(Number<unsigned>());
  cmd.add_option("NAME=VALUE", a.words, "parameters to set")->check(NameEqualsValue());
  cmd.add_flag("--replace", a.replace, "make them the entity's whole set (of every type)");
  cmd.callback([&a] {
    if (a.words.empty() && !a.replace) {
      throw CLI::ValidationError("give NAME=VALUE parameters, or --replace to remove them all");
    }
  });
}

void LogRemoveArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ENTITY", "whose parameters");
  cmd.add_option("TYPE", a.logType, "the type of every parameter named")
      ->required()
      ->transform(Number<unsigned>());
  cmd.add_option("NAME", a.words, "the parameters to remove")->required();
}

void LogXmlArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ID1", "the first id sent with it (the entity a document leaves out)");
  IdArg(cmd, a.id2, "ID2", "the second id sent with it (the type a document leaves out)");
  FileArg(cmd, a, "the XML request, or - for standard input");
}

// ---------------------------------------------------------------------------------------------
// Alerts

Outcome AlertSend(Library& lib, const Args& a) {
  return WithInterface<AdaptersInterface>(
      lib, APPMGR_INTERFACE_ADAPTERS, "adapters", [&](AdaptersInterface& adapters) {
        EvAlertEx alert;
        alert.setAlertType(a.alertType);
        alert.setAlertCriteria(a.alertCriteria);
        alert.setAlertStatus(a.alertStatus);
        alert.setClientId(a.alertClientId);
        alert.setClientName(a.alertClientName);
        alert.setJobId(static_cast<long>(a.alertJob));
        alert.setBackupsetId(static_cast<long>(a.alertBackupSet));
        alert.setDescription(a.text);
        alert.setFailureReason(a.alertFailureReason);
        std::string error;
        if (int status = adapters.SendAlert(alert, error)) return Outcome::Failed(status, error);
        return Outcome::Ok(
            Result::Record({{"sent", true}, {"type", a.alertType}, {"client", a.alertClientId}}));
      });
}

Outcome AlertList(Library& lib, const Args& a) {
  XmlRecord fields;
  if (a.alertListClient) fields.Int(1, static_cast<int64_t>(a.alertListClient));
  if (a.alertUnacknowledged) fields.Int(2, 1);
  if (a.alertLimit) fields.Int(3, static_cast<int64_t>(a.alertLimit));
  XmlAnswer answer;
  Outcome failure;
  if (!AskXml(lib, kAlertListReq, fields, kAlertListResp.id, &answer, &failure)) return failure;
  Json rows = Json::array();
  for (const XmlNode& r : answer.content.List(1)) {
    rows.push_back({{"id", r.Int(1)},
                    {"received", Time(r.Int(5))},
                    {"severity", NameOf(kSeverities, r.Int(2))},
                    {"client", r.Int(3)},
                    {"clientName", r.Text(4)},
                    {"type", r.Int(7)},
                    {"text", r.Text(6)},
                    {"acknowledged", Time(r.Int(9))},
                    {"by", r.Text(10)}});
  }
  return Outcome::Ok(Result::List(
      {"id", "received", "severity", "client", "clientName", "type", "text", "acknowledged", "by"},
      std::move(rows)));
}

Outcome AlertAck(Library& lib, const Args& a) {
  std::vector<XmlRecord> alerts;
  for (unsigned long id : a.ids) alerts.push_back(XmlRecord().Int(1, static_cast<int64_t>(id)));
  XmlRecord fields;
  fields.List(1, alerts);
  if (!a.alertBy.empty()) fields.Str(2, a.alertBy);
  XmlAnswer answer;
  Outcome failure;
  if (!AskXml(lib, kAlertAckReq, fields, 0, &answer, &failure)) return failure;
  return Outcome::Ok(Result::Record({{"acknowledged", a.ids}}));
}

// ---------------------------------------------------------------------------------------------
// XML

Outcome XmlSend(Library& lib, const Args& a) {
  std::string xml, error;
  if (!ReadInput(a.file, &xml, &error)) return Outcome::Failed(-1, error);
  unsigned long type = a.xmlType;
  if (type == 0 && !XmlTagOf(xml, &type)) {
    return Outcome::Failed(-1, a.file + " names no tag on its root; give --type");
  }
  return WithInterface<AdaptersInterface>(
      lib, APPMGR_INTERFACE_ADAPTERS, "adapters", [&](AdaptersInterface& adapters) {
        if (int status =
                adapters.handleXMLReq(a.xmlRoute, type, xml, error, a.xmlExtra, a.xmlValue)) {
          return Outcome::Failed(status, error);
        }
        // The XML error answer is a failure like any other; every other answer is printed.
        XmlAnswer answer;
        std::string why;
        if (ReadXmlAnswer(xml, &answer, &why) && answer.generic && answer.status != 0) {
          return Outcome::Failed(static_cast<int>(answer.status), answer.errorText);
        }
        return Outcome::Ok(Result::Record({{"type", Hex(type)}, {"answer", xml}}));
      });
}

Outcome XmlAgent(Library& lib, const Args& a) {
  std::string xml, error;
  if (!ReadInput(a.file, &xml, &error)) return Outcome::Failed(-1, error);
  return WithInterface<DaxBackupInterface>(
      lib, APPMGR_INTERFACE_DAX_BACKUP, "agent passthrough", [&](DaxBackupInterface& dax) {
        const std::string sent = xml;
        int status = dax.handleXMLRequest(a.id, a.id2, xml);
        // The passthrough gives no error text; the server's is in its answer when it has one.
        XmlAnswer answer;
        std::string why;
        if (status != 0) {
          bool readable = xml != sent && ReadXmlAnswer(xml, &answer, &why) && answer.generic;
          return Outcome::Failed(status, readable ? answer.errorText : std::string());
        }
        return Outcome::Ok(Result::Record({{"status", status}, {"answer", xml}}));
      });
}

// ---------------------------------------------------------------------------------------------
// Advisories

Outcome AdvisoryList(Library& lib, const Args& a) {
  XmlRecord fields;
  if (a.advisoryClient) fields.Int(1, static_cast<int64_t>(a.advisoryClient));
  if (!a.advisorySource.empty()) fields.Str(2, a.advisorySource);
  XmlAnswer answer;
  Outcome failure;
  if (!AskXml(lib, kAdvisoryListReq, fields, kAdvisoryListResp.id, &answer, &failure)) {
    return failure;
  }
  Json rows = Json::array();
  for (const XmlNode& r : answer.content.List(1)) {
    rows.push_back({{"id", r.Int(1)},
                    {"type", r.Int(2)},
                    {"title", r.Text(3)},
                    {"client", r.Int(4)},
                    {"state", r.Int(5) == 0 ? std::string() : NameOf(kStates, r.Int(5))},
                    {"source", r.Text(6)}});
  }
  return Outcome::Ok(
      Result::List({"id", "type", "title", "client", "state", "source"}, std::move(rows)));
}

Outcome AdvisoryTypes(Library& lib, const Args& a) {
  XmlRecord fields;
  if (a.advisoryClient) fields.Int(1, static_cast<int64_t>(a.advisoryClient));
  XmlAnswer answer;
  Outcome failure;
  if (!AskXml(lib, kTypeListReq, fields, kTypeListResp.id, &answer, &failure)) return failure;
  Json rows = Json::array();
  for (const XmlNode& r : answer.content.List(1)) {
    rows.push_back({{"id", r.Int(1)}, {"name", r.Text(2)}, {"description", r.Text(3)}});
  }
  return Outcome::Ok(Result::List({"id", "name", "description"}, std::move(rows)));
}

std::vector<XmlRecord> AdvisoryRecords(const std::vector<std::string>& words) {
  std::vector<XmlRecord> out;
  for (const std::string& w : words) {
    size_t first = w.find(':');
    size_t second = w.find(':', first + 1);
    long id = 0, type = 0;
    ParseNumber(w.substr(0, first), &id);
    ParseNumber(w.substr(first + 1, second - first - 1), &type);
    out.push_back(XmlRecord().Int(1, id).Int(2, type).Str(3, w.substr(second + 1)));
  }
  return out;
}

Outcome SyncClient(Library& lib, const Args& a) {
  XmlRecord fields;
  fields.Int(1, static_cast<int64_t>(a.id)).List(2, AdvisoryRecords(a.words));
  XmlAnswer answer;
  Outcome failure;
  if (!AskXml(lib, kSyncClient, fields, 0, &answer, &failure)) return failure;
  return Outcome::Ok(Result::Record({{"client", a.id}, {"advisories", a.words.size()}}));
}

Outcome SyncSource(Library& lib, const Args& a) {
  XmlRecord fields;
  fields.Str(1, a.advisorySource).List(2, AdvisoryRecords(a.words));
  XmlAnswer answer;
  Outcome failure;
  if (!AskXml(lib, kSyncSource, fields, 0, &answer, &failure)) return failure;
  return Outcome::Ok(
      Result::Record({{"source", a.advisorySource}, {"advisories", a.words.size()}}));
}

Outcome Control(Library& lib, const Args& a) {
  int64_t action = 0;
  for (size_t i = 0; i < std::size(kActions); ++i) {
    if (a.advisoryAction == kActions[i]) action = static_cast<int64_t>(i) + 1;
  }
  std::vector<XmlRecord> targets;
  for (unsigned long id : a.ids) {
    targets.push_back(XmlRecord()
                          .Int(1, static_cast<int64_t>(id))
                          .Int(2, static_cast<int64_t>(a.advisoryClient)));
  }
  XmlRecord fields;
  fields.Int(1, action).List(2, targets);
  XmlAnswer answer;
  Outcome failure;
  if (!AskXml(lib, kControl, fields, 0, &answer, &failure)) return failure;
  return Outcome::Ok(Result::Record(
      {{"action", a.advisoryAction}, {"advisories", a.ids}, {"client", a.advisoryClient}}));
}

// ---------------------------------------------------------------------------------------------
// Log monitoring

Outcome LogGet(Library& lib, const Args& a) {
  return WithInterface<LogMonitorInterface>(
      lib, APPMGR_INTERFACE_LOG_MONITOR, "log-monitoring", [&](LogMonitorInterface& logmon) {
        std::string value, unused;
        // The operation writes no error text: the status alone says what failed.
        if (int status = logmon.getProperties(a.id, a.logType, a.name, value, unused, nullptr)) {
          return Outcome::Failed(status);
        }
        return Outcome::Ok(Result::Record(
            {{"entity", a.id}, {"type", a.logType}, {"name", a.name}, {"value", value}}));
      });
}

// Carries a document through the log-monitoring passthrough with the two ids, and reads the
// answer as ReadAnswer does.
bool LogOperation(Library& lib, unsigned long id1, unsigned long id2, std::string xml,
                  unsigned long expected, XmlAnswer* answer, Outcome* failure) {
  LogMonitorInterface* logmon = lib.Object<LogMonitorInterface>(APPMGR_INTERFACE_LOG_MONITOR);
  if (logmon == nullptr) {
    *failure = Outcome::Failed(-1, lib.path() + " makes no log-monitoring interface");
    return false;
  }
  if (int status = logmon->logMonitoringOperation(id1, id2, xml)) {
    *failure = Outcome::Failed(status);
    return false;
  }
  return ReadAnswer(xml, expected, answer, failure);
}

Outcome LogList(Library& lib, const Args& a) {
  // Entity and type travel as the passthrough's ids.
  XmlAnswer answer;
  Outcome failure;
  if (!LogOperation(lib, a.id, a.logType, XmlDocument(kLogParamsReq.name, kLogParamsReq.id, {}),
                    kLogParams.id, &answer, &failure)) {
    return failure;
  }
  Json rows = Json::array();
  for (const XmlNode& p : answer.content.List(2)) {
    rows.push_back({{"type", p.Int(1)}, {"name", p.Text(2)}, {"value", p.Text(3)}});
  }
  return Outcome::Ok(Result::List({"type", "name", "value"}, std::move(rows)));
}

Outcome LogChange(Library& lib, const Args& a, int64_t action, bool withValues) {
  std::vector<XmlRecord> params;
  for (const std::string& w : a.words) {
    size_t eq = withValues ? w.find('=') : std::string::npos;
    XmlRecord p;
    p.Int(1, a.logType).Str(2, w.substr(0, eq));
    if (withValues) p.Str(3, w.substr(eq + 1));
    params.push_back(std::move(p));
  }
  XmlRecord fields;
  fields.Int(1, static_cast<int64_t>(a.id)).Int(2, action).List(3, params);
  XmlAnswer answer;
  Outcome failure;
  if (!LogOperation(lib, a.id, a.logType, XmlDocument(kSetLogParams.name, kSetLogParams.id, fields),
                    0, &answer, &failure)) {
    return failure;
  }
  return Outcome::Ok(Result::Record({{"entity", a.id}, {"type", a.logType}, {"changed", a.words}}));
}

Outcome LogSet(Library& lib, const Args& a) {
  return LogChange(lib, a, a.replace ? 3 : 1, true);
}

Outcome LogRemove(Library& lib, const Args& a) {
  return LogChange(lib, a, 2, false);
}

Outcome LogXml(Library& lib, const Args& a) {
  std::string xml, error;
  if (!ReadInput(a.file, &xml, &error)) return Outcome::Failed(-1, error);
  return WithInterface<LogMonitorInterface>(
      lib, APPMGR_INTERFACE_LOG_MONITOR, "log-monitoring", [&](LogMonitorInterface& logmon) {
        if (int status = logmon.logMonitoringOperation(a.id, a.id2, xml)) {
          return Outcome::Failed(status);
        }
        return Outcome::Ok(Result::Record({{"answer", xml}}));
      });
}

constexpr CommandGroup kGroups[] = {
    {"alert", "Alerts: raise one, list those received, acknowledge them"},
    {"advisory", "Security advisories: list them and their types, sync and control them"},
    {"xml", "Send an XML request and print the answer"},
    {"logmon", "Log-monitoring parameters"},
};

constexpr Command kCommands[] = {
    {"alert", "send", "Raise an alert (the binary alert record)", AlertSendArgs, AlertSend},
    {"alert", "list", "List the alerts the server received, oldest first", AlertListArgs,
     AlertList},
    {"alert", "ack", "Acknowledge alerts", AlertAckArgs, AlertAck},
    {"advisory", "list", "List the advisories of a client, of every client, or of a source",
     AdvisoryListArgs, AdvisoryList},
    {"advisory", "types", "List the advisory types", AdvisoryTypesArgs, AdvisoryTypes},
    {"advisory", "sync-client", "Replace the advisories that apply to a client", SyncClientArgs,
     SyncClient},
    {"advisory", "sync-source", "Replace the advisories a source publishes", SyncSourceArgs,
     SyncSource},
    {"advisory", "control", "Enable, disable, acknowledge or remove advisories", ControlArgs,
     Control},
    {"xml", "send", "Send an XML request under its message type and print the answer", XmlSendArgs,
     XmlSend},
    {"xml", "agent", "Send an XML request through the agent passthrough and print the answer",
     XmlAgentArgs, XmlAgent},
    {"logmon", "get", "Show one log-monitoring parameter", LogGetArgs, LogGet},
    {"logmon", "list", "List an entity's log-monitoring parameters", LogListArgs, LogList},
    {"logmon", "set", "Set log-monitoring parameters of an entity", LogSetArgs, LogSet},
    {"logmon", "remove", "Remove log-monitoring parameters of an entity", LogRemoveArgs, LogRemove},
    {"logmon", "xml", "Send a document through the log-monitoring passthrough and print the answer",
     LogXmlArgs, LogXml},
};

}  // namespace

CommandFamily AlertCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
