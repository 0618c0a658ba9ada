// appmgrctl apptype ...: the application-type interface, one command per operation. An
// application type on a client is named by CLIENT and TYPE, in that order, for every command.
#include <list>
#include <string>
#include <vector>

#include "appmgr/AppTypeInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

template <class F>
Outcome WithTypes(Library& lib, F f) {
  return WithInterface<AppTypeInterface>(lib, APPMGR_INTERFACE_APP_TYPE, "application type", f);
}

Json Pair(const Args& a) {
  return {{"client", a.id}, {"appType", a.id2}};
}

// ---------------------------------------------------------------------------------------------
// Arguments

void PairArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "CLIENT", "the client's id");
  IdArg(cmd, a.id2, "TYPE", "the application type's id");
}

void UpdateArgs(CLI::App& cmd, Args& a) {
  PairArgs(cmd, a);
  cmd.add_option("--value", a.value, "the new value")->required()->transform(Number<long>());
}

void DeleteAllArgs(CLI::App& cmd, Args& a) {
  PairArgs(cmd, a);
  cmd.add_option("--option", a.number, "the option the request carries")
      ->transform(Number<int>())
      ->capture_default_str();
}

void PropsArgs(CLI::App& cmd, Args& a) {
  PairArgs(cmd, a);
  PropsTableOption(cmd, a);
}

void SetPropsArgs(CLI::App& cmd, Args& a) {
  PairArgs(cmd, a);
  SetPropsOptions(cmd, a, "the whole table");
}

void RemovePropsArgs(CLI::App& cmd, Args& a) {
  PairArgs(cmd, a);
  RemovePropsOptions(cmd, a);
}

void VolumePropArgs(CLI::App& cmd, Args& a) {
  PairArgs(cmd, a);
  IdArg(cmd, a.id3, "VOLUME", "the volume's id");
  cmd.add_option("--text", a.text, "the record's text (a volume GUID, a path)")->required();
  for (int i = 0; i < 5; ++i) {
    static const char* const kNames[] = {"--value1", "--value2", "--value3", "--value4",
                                         "--value5"};
    cmd.add_option(kNames[i], a.volumeValues[i], "one of the record's five unsigned values")
        ->transform(Number<unsigned long>())
        ->capture_default_str();
  }
  cmd.add_option("--signed", a.volumeSigned, "the record's signed value")
      ->transform(Number<long>())
      ->capture_default_str();
}

// The local operations take positional numbers only.
void ThreeNumbers(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "A", "first number");
  IdArg(cmd, a.id2, "B", "second number");
  IdArg(cmd, a.id3, "C", "third number");
}
void OneNumber(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "A", "the number");
}

// ---------------------------------------------------------------------------------------------
// Handlers: one library call each, the answer as a Result.

Outcome Lookup(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::string name, error;
    long value = 0;
    unsigned long unused1 = 0, unused2 = 0;
    int status = types.lookup(a.id, a.id2, name, value, unused1, unused2, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json j = Pair(a);
    j["name"] = name;
    j["value"] = value;
    return Outcome::Ok(Result::Record(std::move(j)));
  });
}

Outcome Create(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::string error;
    int status = types.create(a.id, a.id2, 0, 0, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json j = Pair(a);
    j["created"] = true;
    return Outcome::Ok(Result::Record(std::move(j)));
  });
}

Outcome Remove(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::string error;
    int status = types.remove(a.id, a.id2, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json j = Pair(a);
    j["removed"] = true;
    return Outcome::Ok(Result::Record(std::move(j)));
  });
}

Outcome Update(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::string error;
    long value = a.value;
    int status = types.update(a.id, a.id2, value, false, 0, 0, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json j = Pair(a);
    j["value"] = a.value;
    return Outcome::Ok(Result::Record(std::move(j)));
  });
}

Outcome SetContentsDeleted(Library& lib, const Args& a, bool deleted) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::string error;
    int status = deleted ? types.deleteAll(a.id, a.id2, error, nullptr, a.number)
                         : types.undeleteAll(a.id, a.id2, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json j = Pair(a);
    j["contentsDeleted"] = deleted;
    return Outcome::Ok(Result::Record(std::move(j)));
  });
}
Outcome DeleteAll(Library& lib, const Args& a) {
  return SetContentsDeleted(lib, a, true);
}
Outcome UndeleteAll(Library& lib, const Args& a) {
  return SetContentsDeleted(lib, a, false);
}

Outcome Props(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::string error;
    PropertyRows rows;
    int status = types.getProperties(a.id, a.id2, a.table, error, &rows, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"name", "type", "value"}, std::move(rows.rows)));
  });
}

Outcome SetProps(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    PropertyList list(a.words, a.type);
    std::string error;
    int status =
        types.setProperties(a.id, a.id2, list.pointers, a.replace, error, nullptr, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json names = Json::array();
    for (const ApplProperty& p : list.properties) names.push_back(p.getName());
    Json j = Pair(a);
    j["set"] = std::move(names);
    j["replace"] = a.replace;
    return Outcome::Ok(Result::Record(std::move(j)));
  });
}

Outcome RemoveProps(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::string error;
    int status = 0;
    if (a.asProperties) {
      std::vector<std::string> words;
      for (const std::string& name : a.words) words.push_back(name + "=");
      PropertyList list(words, 0);
      status =
          types.removeProperties(a.id, a.id2, list.pointers, a.strict, error, nullptr, nullptr);
    } else {
      std::list<std::string> names(a.words.begin(), a.words.end());
      status = types.removeProperties(a.id, a.id2, names, a.strict, error, nullptr, nullptr);
    }
    if (status != 0) return Outcome::Failed(status, error);
    Json j = Pair(a);
    j["removed"] = a.words;
    j["strict"] = a.strict;
    return Outcome::Ok(Result::Record(std::move(j)));
  });
}

Outcome VolumeProp(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::string error, text = a.text;
    unsigned long v[5] = {a.volumeValues[0], a.volumeValues[1], a.volumeValues[2],
                          a.volumeValues[3], a.volumeValues[4]};
    long signedValue = a.volumeSigned;
    int status = types.opDCvolProp(a.id, a.id2, a.id3, v[0], text, v[1], v[2], v[3], signedValue,
                                   v[4], error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json j = Pair(a);
    j["volume"] = a.id3;
    j["text"] = a.text;
    j["values"] = Json::array({v[0], v[1], v[2], v[3], v[4]});
    j["signed"] = signedValue;
    return Outcome::Ok(Result::Record(std::move(j)));
  });
}

Outcome SearchStrings(Library& lib, const Args& a, bool set) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::list<std::string> strings;
    std::string error;
    int status = set ? types.SetSearchString(a.id, a.id2, a.id3, strings, error, nullptr)
                     : types.GetSearchString(a.id, a.id2, a.id3, strings, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"string"}, Json(strings)));
  });
}
Outcome SetSearchStrings(Library& lib, const Args& a) {
  return SearchStrings(lib, a, true);
}
Outcome GetSearchStrings(Library& lib, const Args& a) {
  return SearchStrings(lib, a, false);
}

// The operations the library refuses as a whole: their status and text, as any failure.
Outcome VolMountPaths(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::list<DCVolAndMountPathData> out;
    std::string error;
    int status = types.getVolAndMountPathData(a.id, a.id2, out, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json rows = Json::array();
    for (const DCVolAndMountPathData& d : out) {
      rows.push_back({{"volume", d.volumeId}, {"guid", d.volumeGuid}, {"mountPath", d.mountPath}});
    }
    return Outcome::Ok(Result::List({"volume", "guid", "mountPath"}, std::move(rows)));
  });
}

Outcome DuplLogGuid(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    std::list<DataPairConflict> out;
    std::string error, guid = a.text;
    int status = types.checkForDuplLogGUID(a.id, a.id2, guid, out, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"conflicts", out.size()}}));
  });
}

Outcome NumberAnswer(int status, const std::string& error, const char* key, Json value) {
  if (status != 0) return Outcome::Failed(status, error);
  return Outcome::Ok(Result::Record({{key, std::move(value)}}));
}

Outcome SrmProxy(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    unsigned long out = 0;
    std::string error;
    int status = types.isSRMproxyAgent(a.id, out, error, nullptr);
    return NumberAnswer(status, error, "proxy", out);
  });
}

Outcome SrmActionSubclient(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    unsigned long out = 0;
    std::string error;
    int status = types.getCurrentSRMActionSubClient(a.id, a.id2, out, error, nullptr);
    return NumberAnswer(status, error, "subclient", out);
  });
}

Outcome FsNumber(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    unsigned long out = 0;
    std::string error;
    int status = types.getFSAppTypeNumber(a.id, out, error, nullptr);
    return NumberAnswer(status, error, "appType", out);
  });
}

Outcome Indexing(Library& lib, const Args& a) {
  return WithTypes(lib, [&](AppTypeInterface& types) {
    bool out = false;
    std::string error;
    int status = types.isIndexingAppType(a.id, out, error, nullptr);
    return NumberAnswer(status, error, "indexing", out);
  });
}

void DuplLogGuidArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "A", "first number");
  IdArg(cmd, a.id2, "B", "second number");
  cmd.add_option("GUID", a.text, "the log GUID")->required();
}
void TwoNumbers(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "A", "first number");
  IdArg(cmd, a.id2, "B", "second number");
}

constexpr CommandGroup kGroups[] = {
    {"apptype",
     "Application types on a client (CLIENT TYPE): create, look up, change, remove, properties"},
};

constexpr Command kCommands[] = {
    {"apptype", "lookup", "Show the name and value of an application type on a client", PairArgs,
     Lookup},
    {"apptype", "create", "Install an application type on a client", PairArgs, Create},
    {"apptype", "remove",
     "Remove an application type from a client (after a delete-all, with everything under it)",
     PairArgs, Remove},
    {"apptype", "update", "Set the value of an application type on a client", UpdateArgs, Update},
    {"apptype", "delete-all",
     "Mark an application type on a client and everything under it deleted", DeleteAllArgs,
     DeleteAll},
    {"apptype", "undelete-all",
     "Mark an application type on a client and everything under it not deleted", PairArgs,
     UndeleteAll},
    {"apptype", "props", "List the properties of an application type on a client", PropsArgs,
     Props},
    {"apptype", "set-props", "Set properties of an application type on a client", SetPropsArgs,
     SetProps},
    {"apptype", "remove-props", "Remove properties of an application type on a client by name",
     RemovePropsArgs, RemoveProps},
    {"apptype", "volume-prop", "Write the volume-property record of one volume", VolumePropArgs,
     VolumeProp},
    {"apptype", "set-search-strings", "Set search strings (answered by the library: nothing to do)",
     ThreeNumbers, SetSearchStrings},
    {"apptype", "search-strings", "List search strings (answered by the library: none)",
     ThreeNumbers, GetSearchStrings},
    {"apptype", "vol-mount-paths", "List volumes and mount paths (not supported)", TwoNumbers,
     VolMountPaths},
    {"apptype", "dupl-log-guid", "Check a log GUID for duplicates (not supported)", DuplLogGuidArgs,
     DuplLogGuid},
    {"apptype", "srm-proxy", "Ask whether a client is a proxy agent (not supported)", OneNumber,
     SrmProxy},
    {"apptype", "srm-action-subclient", "Show the current action subclient (not supported)",
     TwoNumbers, SrmActionSubclient},
    {"apptype", "fs-number", "Show the file-system application type number (not supported)",
     OneNumber, FsNumber},
    {"apptype", "indexing", "Ask whether an application type is indexed (not supported)", OneNumber,
     Indexing},
};

}  // namespace

CommandFamily AppTypeCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
