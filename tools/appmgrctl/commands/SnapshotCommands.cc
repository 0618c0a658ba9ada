// appmgrctl snapshot ... and delegate ...: the snapshot-info and mailbox-delegate interfaces, one
// command per operation. Records are carried positionally: fields are named after their number
// (f1 ... f15, g1 ... g7), and the record's id (F2, G7) is the command's ID.
#include <fstream>
#include <list>
#include <string>

#include "appmgr/MailBoxDelegateInterface.h"
#include "appmgr/SnapInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

// The snapshot fields that are numbers; the others (3, 4, 5, 6, 8, 9, 13, 14) are texts.
constexpr int kSnapNumbers[] = {1, 7, 10, 11, 12, 15};
constexpr int kSnapTexts[] = {3, 4, 5, 6, 8, 9, 13, 14};

// ---------------------------------------------------------------------------------------------
// Arguments

void SnapshotId(CLI::App& cmd, Args& a) { IdArg(cmd, a.id, "ID", "the snapshot record's id (F2)"); }
void DelegateId(CLI::App& cmd, Args& a) { IdArg(cmd, a.id, "ID", "the delegate's id (G7)"); }

void SnapshotFields(CLI::App& cmd, Args& a) {
  SnapshotId(cmd, a);
  for (int n : kSnapNumbers) {
    std::string name = "--f" + std::to_string(n);
    cmd.add_option(name, a.fieldNumbers[n], "field F" + std::to_string(n) + " (a number)")
        ->transform(Number<unsigned long>());
  }
  for (int n : kSnapTexts) {
    std::string name = "--f" + std::to_string(n);
    cmd.add_option(name, a.fieldTexts[n], "field F" + std::to_string(n) + " (a text)");
  }
}

void DelegateFields(CLI::App& cmd, Args& a) {
  DelegateId(cmd, a);
  cmd.add_option("--g1", a.fieldNumbers[1], "field G1 (a number; lists are selected by it)")
      ->transform(Number<unsigned long>());
  for (int n = 2; n <= 6; ++n) {
    cmd.add_option("--g" + std::to_string(n), a.fieldTexts[n],
                   "field G" + std::to_string(n) + " (a text)");
  }
}

void FromFile(CLI::App& cmd, Args& a) {
  cmd.add_option("FILE", a.file, "a JSON array of records, as list --json prints them")
      ->required()
      ->check(CLI::ExistingFile);
}

void DelegateListArgs(CLI::App& cmd, Args& a) {
  CLI::Option* selector =
      cmd.add_option("--selector", a.selector, "only the delegates whose G1 is this number")
          ->transform(Number<unsigned long>());
  cmd.callback([&a, selector] { a.selectorGiven = selector->count() > 0; });
}

void DelegateIds(CLI::App& cmd, Args& a) {
  cmd.add_option("ID", a.ids, "the delegates' ids (G7)")
      ->required()
      ->transform(Number<unsigned long>());
}

// ---------------------------------------------------------------------------------------------
// Records

_AppSnapInfo SnapshotFromArgs(const Args& a) {
  _AppSnapInfo r;
  r.F1 = a.fieldNumbers[1];
  r.F2 = a.id;
  r.F3 = a.fieldTexts[3];
  r.F4 = a.fieldTexts[4];
  r.F5 = a.fieldTexts[5];
  r.F6 = a.fieldTexts[6];
  r.F7 = a.fieldNumbers[7];
  r.F8 = a.fieldTexts[8];
  r.F9 = a.fieldTexts[9];
  r.F10 = a.fieldNumbers[10];
  r.F11 = a.fieldNumbers[11];
  r.F12 = a.fieldNumbers[12];
  r.F13 = a.fieldTexts[13];
  r.F14 = a.fieldTexts[14];
  r.F15 = a.fieldNumbers[15];
  return r;
}

// The fields an operation reads back: lookup leaves F3, F7 and F14 alone, the list F7 and F14.
Json SnapshotJson(const _AppSnapInfo& r, bool withF3) {
  Json j = {{"id", r.F2}, {"f1", r.F1}};
  if (withF3) j["f3"] = r.F3;
  j["f4"] = r.F4;
  j["f5"] = r.F5;
  j["f6"] = r.F6;
  j["f8"] = r.F8;
  j["f9"] = r.F9;
  j["f10"] = r.F10;
  j["f11"] = r.F11;
  j["f12"] = r.F12;
  j["f13"] = r.F13;
  j["f15"] = r.F15;
  return j;
}

_MailBoxDelegateInfo DelegateFromArgs(const Args& a) {
  return _MailBoxDelegateInfo{a.fieldNumbers[1], a.fieldTexts[2], a.fieldTexts[3], a.fieldTexts[4],
                              a.fieldTexts[5],   a.fieldTexts[6], a.id};
}

Json DelegateJson(const _MailBoxDelegateInfo& d) {
  return {{"id", d.G7}, {"g1", d.G1}, {"g2", d.G2}, {"g3", d.G3},
          {"g4", d.G4}, {"g5", d.G5}, {"g6", d.G6}};
}

// Reads `path`, a JSON array of objects, into records with `convert`; false with *error set.
template <class Record, class Convert>
bool ReadRecords(const std::string& path, Convert convert, std::list<Record>* out,
                 std::string* error) {
  try {
    std::ifstream in(path);
    Json all = Json::parse(in);
    if (!all.is_array()) throw std::runtime_error("not a JSON array of records");
    for (size_t i = 0; i < all.size(); ++i) {
      try {
        out->push_back(convert(all[i]));
      } catch (const std::exception& e) {
        throw std::runtime_error("record " + std::to_string(i + 1) + ": " + e.what());
      }
    }
    return true;
  } catch (const std::exception& e) {
    *error = path + ": " + e.what();
    return false;
  }
}

// A number or text member of a record in a file; absent members are 0 or empty.
unsigned long NumberAt(const Json& j, const char* key) {
  return j.contains(key) ? j.at(key).get<unsigned long>() : 0;
}
std::string TextAt(const Json& j, const char* key) {
  return j.contains(key) ? j.at(key).get<std::string>() : std::string();
}

_AppSnapInfo SnapshotFromJson(const Json& j) {
  if (!j.is_object() || !j.contains("id")) throw std::runtime_error("each record needs an \"id\"");
  _AppSnapInfo r;
  r.F1 = NumberAt(j, "f1");
  r.F2 = NumberAt(j, "id");
  r.F3 = TextAt(j, "f3");
  r.F4 = TextAt(j, "f4");
  r.F5 = TextAt(j, "f5");
  r.F6 = TextAt(j, "f6");
  r.F7 = NumberAt(j, "f7");
  r.F8 = TextAt(j, "f8");
  r.F9 = TextAt(j, "f9");
  r.F10 = NumberAt(j, "f10");
  r.F11 = NumberAt(j, "f11");
  r.F12 = NumberAt(j, "f12");
  r.F13 = TextAt(j, "f13");
  r.F14 = TextAt(j, "f14");
  r.F15 = NumberAt(j, "f15");
  return r;
}

_MailBoxDelegateInfo DelegateFromJson(const Json& j) {
  if (!j.is_object() || !j.contains("id")) throw std::runtime_error("each record needs an \"id\"");
  return _MailBoxDelegateInfo{NumberAt(j, "g1"), TextAt(j, "g2"), TextAt(j, "g3"),
                              TextAt(j, "g4"),   TextAt(j, "g5"), TextAt(j, "g6"),
                              NumberAt(j, "id")};
}

template <class F>
Outcome WithSnapshots(Library& lib, F f) {
  return WithInterface<SnapInterface>(lib, APPMGR_INTERFACE_SNAP_INFO, "snapshot-info", f);
}
template <class F>
Outcome WithDelegates(Library& lib, F f) {
  return WithInterface<MailBoxDelegateInterface>(lib, APPMGR_INTERFACE_MAILBOX_DELEGATE,
                                                 "mailbox-delegate", f);
}

// ---------------------------------------------------------------------------------------------
// Handlers: one library call each.

Outcome SnapLookup(Library& lib, const Args& a) {
  return WithSnapshots(lib, [&](SnapInterface& snap) {
    _AppSnapInfo r;
    r.F2 = a.id;
    std::string error;
    if (int status = snap.lookup(r, error, nullptr)) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(SnapshotJson(r, false)));
  });
}

Outcome SnapList(Library& lib, const Args&) {
  return WithSnapshots(lib, [&](SnapInterface& snap) {
    std::list<_AppSnapInfo> records;
    std::string error;
    if (int status = snap.getSnapInfoList(records, error, nullptr)) return Outcome::Failed(status, error);
    Json rows = Json::array();
    for (const _AppSnapInfo& r : records) rows.push_back(SnapshotJson(r, true));
    return Outcome::Ok(Result::List({"id", "f1", "f3", "f4", "f5", "f6", "f8", "f9", "f10", "f11",
                                     "f12", "f13", "f15"},
                                    std::move(rows)));
  });
}

// create, update and set: the record as given, and what the operation carried of it.
Outcome SnapWrite(Library& lib, const Args& a, const char* what) {
  return WithSnapshots(lib, [&](SnapInterface& snap) {
    _AppSnapInfo r = SnapshotFromArgs(a);
    std::string error;
    int status = std::string(what) == "create" ? snap.create(r, error, nullptr)
                 : std::string(what) == "update" ? snap.update(r, error, nullptr)
                                                 : snap.setSnapInfo(r, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {what, true}}));
  });
}
Outcome SnapCreate(Library& lib, const Args& a) { return SnapWrite(lib, a, "create"); }
Outcome SnapUpdate(Library& lib, const Args& a) { return SnapWrite(lib, a, "update"); }
Outcome SnapSet(Library& lib, const Args& a) { return SnapWrite(lib, a, "set"); }

Outcome SnapRemove(Library& lib, const Args& a) {
  return WithSnapshots(lib, [&](SnapInterface& snap) {
    std::string error;
    if (int status = snap.remove(a.id, error, nullptr)) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"removed", true}}));
  });
}

Outcome SnapSetList(Library& lib, const Args& a) {
  std::list<_AppSnapInfo> records;
  std::string error;
  if (!ReadRecords(a.file, SnapshotFromJson, &records, &error)) return Outcome::Failed(-1, error);
  return WithSnapshots(lib, [&](SnapInterface& snap) {
    if (int status = snap.setSnapInfoList(records, error, nullptr)) return Outcome::Failed(status, error);
    Json ids = Json::array();
    for (const _AppSnapInfo& r : records) ids.push_back(r.F2);
    return Outcome::Ok(Result::Record({{"set", std::move(ids)}}));
  });
}

Outcome DelegateLookup(Library& lib, const Args& a) {
  return WithDelegates(lib, [&](MailBoxDelegateInterface& delegates) {
    _MailBoxDelegateInfo d;
    d.G7 = a.id;
    std::string error;
    if (int status = delegates.lookup(d, error, nullptr)) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(DelegateJson(d)));
  });
}

Outcome DelegateList(Library& lib, const Args& a) {
  return WithDelegates(lib, [&](MailBoxDelegateInterface& delegates) {
    std::list<_MailBoxDelegateInfo> records;
    std::string error;
    int status = a.selectorGiven ? delegates.getMailBoxDelegateList(records, a.selector, error, nullptr)
                                 : delegates.getMailBoxDelegateList(records, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json rows = Json::array();
    for (const _MailBoxDelegateInfo& d : records) rows.push_back(DelegateJson(d));
    return Outcome::Ok(Result::List({"id", "g1", "g2", "g3", "g4", "g5", "g6"}, std::move(rows)));
  });
}

Outcome DelegateWrite(Library& lib, const Args& a, const char* what) {
  return WithDelegates(lib, [&](MailBoxDelegateInterface& delegates) {
    _MailBoxDelegateInfo d = DelegateFromArgs(a);
    std::string error;
    int status = std::string(what) == "create" ? delegates.create(d, error, nullptr)
                 : std::string(what) == "update" ? delegates.update(d, error, nullptr)
                                                 : delegates.setMailBoxDelegate(d, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {what, true}}));
  });
}
Outcome DelegateCreate(Library& lib, const Args& a) { return DelegateWrite(lib, a, "create"); }
Outcome DelegateUpdate(Library& lib, const Args& a) { return DelegateWrite(lib, a, "update"); }
Outcome DelegateSet(Library& lib, const Args& a) { return DelegateWrite(lib, a, "set"); }

Outcome DelegateRemove(Library& lib, const Args& a) {
  return WithDelegates(lib, [&](MailBoxDelegateInterface& delegates) {
    std::string error;
    if (int status = delegates.remove(a.id, error, nullptr)) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"removed", true}}));
  });
}

Outcome DelegateSetList(Library& lib, const Args& a) {
  std::list<_MailBoxDelegateInfo> records;
  std::string error;
  if (!ReadRecords(a.file, DelegateFromJson, &records, &error)) return Outcome::Failed(-1, error);
  return WithDelegates(lib, [&](MailBoxDelegateInterface& delegates) {
    if (int status = delegates.setMailBoxDelegateList(records, error, nullptr)) {
      return Outcome::Failed(status, error);
    }
    Json ids = Json::array();
    for (const _MailBoxDelegateInfo& d : records) ids.push_back(d.G7);
    return Outcome::Ok(Result::Record({{"set", std::move(ids)}}));
  });
}

Outcome DelegateRemoveList(Library& lib, const Args& a) {
  return WithDelegates(lib, [&](MailBoxDelegateInterface& delegates) {
    std::list<_MailBoxDelegateInfo> records;
    for (unsigned long id : a.ids) records.push_back(_MailBoxDelegateInfo{0, "", "", "", "", "", id});
    std::string error;
    if (int status = delegates.removeMailBoxDelegateList(records, error, nullptr)) {
      return Outcome::Failed(status, error);
    }
    return Outcome::Ok(Result::Record({{"removed", a.ids}}));
  });
}

constexpr CommandGroup kGroups[] = {
    {"snapshot", "Snapshot records: look up, list, create, change and remove"},
    {"delegate", "Mailbox delegates: look up, list, create, change and remove"},
};

constexpr Command kCommands[] = {
    {"snapshot", "lookup", "Show a snapshot record (all fields but F3, F7 and F14)", SnapshotId,
     SnapLookup},
    {"snapshot", "list", "List every snapshot record (all fields but F7 and F14)",
     [](CLI::App&, Args&) {}, SnapList},
    {"snapshot", "create", "Create a snapshot record (F3, F7 and F14 are not sent)", SnapshotFields,
     SnapCreate},
    {"snapshot", "update",
     "Replace a snapshot record's fields (fields not given are sent as 0 or empty; F3, F7 and F14 "
     "are not sent)",
     SnapshotFields, SnapUpdate},
    {"snapshot", "set", "Write a snapshot record, F3 included (F7 and F14 are not sent)",
     SnapshotFields, SnapSet},
    {"snapshot", "remove", "Remove a snapshot record", SnapshotId, SnapRemove},
    {"snapshot", "set-list", "Write every snapshot record of a JSON file in one request", FromFile,
     SnapSetList},
    {"delegate", "lookup", "Show a mailbox delegate", DelegateId, DelegateLookup},
    {"delegate", "list", "List mailbox delegates, all or those of one G1", DelegateListArgs,
     DelegateList},
    {"delegate", "create", "Create a mailbox delegate", DelegateFields, DelegateCreate},
    {"delegate", "update",
     "Replace a mailbox delegate's fields (fields not given are sent as 0 or empty)",
     DelegateFields, DelegateUpdate},
    {"delegate", "set", "Write a mailbox delegate, creating it when missing", DelegateFields,
     DelegateSet},
    {"delegate", "remove", "Remove a mailbox delegate", DelegateId, DelegateRemove},
    {"delegate", "set-list", "Write every delegate of a JSON file in one request", FromFile,
     DelegateSetList},
    {"delegate", "remove-list", "Remove mailbox delegates by id in one request (all or none)",
     DelegateIds, DelegateRemoveList},
};

}  // namespace

CommandFamily SnapshotCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
