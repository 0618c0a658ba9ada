// appmgrctl appid ...: the application-id interface, one command per operation.
#include <string>
#include <vector>

#include "appmgr/AppIdInterface.h"
#include "tools/appmgrctl/CommandSupport.h"
#include "tools/appmgrctl/RecordFields.h"

namespace appmgrctl {
namespace {

// The application id as appmgrctl prints and reads it: the record's own numbering, and its text
// form, which is printed only.
const std::vector<RecordField>& KnownAppIdFields() {
  static const std::vector<RecordField> known = [] {
    static const char* const kNumbers[] = {"number0", "number1", "number2", "number3", "number4",
                                           "number5", "number6", "number7", "number8"};
    std::vector<RecordField> out;
    for (const char* n : kNumbers) out.push_back({n, FieldKind::kUnsigned});
    for (const char* t : {"text0", "text1", "text2"}) out.push_back({t, FieldKind::kText});
    out.push_back({"option", FieldKind::kUnsigned32});
    out.push_back({"textForm", FieldKind::kOutputOnly});
    return out;
  }();
  return known;
}

AppIdInfo FromFields(const Json& fields) {
  AppIdInfo info;
  for (int i = 0; i < 9; ++i) {
    auto it = fields.find("number" + std::to_string(i));
    if (it != fields.end()) info.number[i] = it->get<unsigned long>();
  }
  for (int i = 0; i < 3; ++i) {
    auto it = fields.find("text" + std::to_string(i));
    if (it != fields.end()) info.text[i] = it->get<std::string>();
  }
  if (auto it = fields.find("option"); it != fields.end()) info.option = it->get<unsigned int>();
  return info;
}

Json AppIdJson(const AppIdInfo& info) {
  Json j = Json::object();
  for (int i = 0; i < 9; ++i) j["number" + std::to_string(i)] = info.number[i];
  for (int i = 0; i < 3; ++i) j["text" + std::to_string(i)] = info.text[i];
  j["option"] = info.option;
  std::string text;
  info.dump(text);
  j["textForm"] = text;
  return j;
}

// ---------------------------------------------------------------------------------------------
// Arguments

// The id's fields: --from-file first, then --set, then the ID argument (number 0) when the
// command takes one.
void RecordArgs(CLI::App& cmd, Args& a, bool withId) {
  if (withId) {
    cmd.add_option("ID", a.id, "the application id (number 0); 0 or none: found by its object")
        ->transform(Number<unsigned long>());
  }
  cmd.add_option("--set", a.sets,
                 "FIELD=VALUE: number0 ... number8, text0 ... text2 or option");
  cmd.add_option("--from-file", a.file,
                 "a JSON record, as `appid lookup --json` prints one; its fields come first");
  cmd.callback([&a, &cmd, withId] {
    a.fields = Json::object();
    if (!a.file.empty()) AddRecordFile(KnownAppIdFields(), a.file, a.fields);
    AddSetWords(KnownAppIdFields(), a.sets, a.fields);
    if (withId && cmd.count("ID")) a.fields["number0"] = a.id;
  });
}

void CreateArgs(CLI::App& cmd, Args& a) {
  RecordArgs(cmd, a, false);
}

void FindArgs(CLI::App& cmd, Args& a) {
  RecordArgs(cmd, a, true);
}

void ArchiveGroupsArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ID", "the application id");
  IdArg(cmd, a.id2, "ARCHIVE_GROUP", "its archive group");
  IdArg(cmd, a.id3, "INCR_ARCHIVE_GROUP", "its incremental archive group");
}

void OnlyId(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ID", "the application id");
}

// ---------------------------------------------------------------------------------------------
// Handlers: one library call each, the answer as a Result.

template <class F>
Outcome WithAppIds(Library& lib, F f) {
  return WithInterface<AppIdInterface>(lib, APPMGR_INTERFACE_APP_ID, "application id", f);
}

Outcome Create(Library& lib, const Args& a) {
  return WithAppIds(lib, [&](AppIdInterface& ids) {
    AppIdInfo info = FromFields(a.fields);
    std::string error;
    int status = ids.createApplicationId(info, error, nullptr, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(AppIdJson(info)));
  });
}

Outcome Lookup(Library& lib, const Args& a) {
  return WithAppIds(lib, [&](AppIdInterface& ids) {
    AppIdInfo info = FromFields(a.fields);
    std::string error;
    int status = ids.getApplicationId(info, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(AppIdJson(info)));
  });
}

Outcome Remove(Library& lib, const Args& a) {
  return WithAppIds(lib, [&](AppIdInterface& ids) {
    AppIdInfo info = FromFields(a.fields);
    std::string error;
    int status = ids.removeApplicationId(info, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"removed", AppIdJson(info)}}));
  });
}

Outcome SetArchiveGroups(Library& lib, const Args& a) {
  return WithAppIds(lib, [&](AppIdInterface& ids) {
    std::string error;
    int status = ids.updateArchiveGroups(a.id, a.id2, a.id3, error, nullptr, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(
        {{"id", a.id}, {"archiveGroup", a.id2}, {"incrArchiveGroup", a.id3}}));
  });
}

Outcome IncrArchiveGroup(Library& lib, const Args& a) {
  return WithAppIds(lib, [&](AppIdInterface& ids) {
    std::string error;
    unsigned long group = 0;
    int status = ids.getIncrArchiveGroup(group, a.id, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"incrArchiveGroup", group}}));
  });
}

constexpr CommandGroup kGroups[] = {
    {"appid", "Application ids: create, find and remove them, and set their archive groups"},
};

constexpr Command kCommands[] = {
    {"appid", "create", "Create an application id from --set fields or a JSON record",
     CreateArgs, Create},
    {"appid", "lookup", "Find an application id by its id or by the object it stands for",
     FindArgs, Lookup},
    {"appid", "remove", "Remove an application id, named by its id or its object", FindArgs,
     Remove},
    {"appid", "set-archive-groups", "Set the archive groups of an application id",
     ArchiveGroupsArgs, SetArchiveGroups},
    {"appid", "incr-archive-group", "Show the incremental archive group of an application id",
     OnlyId, IncrArchiveGroup},
};

}  // namespace

CommandFamily AppIdCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
