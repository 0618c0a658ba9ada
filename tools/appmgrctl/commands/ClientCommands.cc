// appmgrctl client ...: the client interface, one command per operation.
#include <array>
#include <list>
#include <string>
#include <vector>

#include "appmgr/ClientInterface.h"
#include "tools/appmgrctl/CommandSupport.h"
#include "tools/appmgrctl/RecordFields.h"

namespace appmgrctl {
namespace {

using Platforms = std::array<ClientPlatformInfo, kClientPlatformCount>;

// ---------------------------------------------------------------------------------------------
// The client record as appmgrctl prints and reads it. Names follow appmgrd's meaning of the
// record where it gives one (docs/server.md); the others are the record's own numbering.

struct ClientField {
  RecordField field;
  unsigned long _AppClientInfo::*number = nullptr;
  std::string _AppClientInfo::*text = nullptr;
  int platform = -1;  // platformN.value and platformN.text: N - 1
};

ClientField NumberField(std::string_view name, unsigned long _AppClientInfo::*member) {
  return {{name, FieldKind::kUnsigned}, member, nullptr, -1};
}
ClientField TextField(std::string_view name, std::string _AppClientInfo::*member) {
  return {{name, FieldKind::kText}, nullptr, member, -1};
}
ClientField PlatformField(std::string_view name, FieldKind kind, int platform) {
  return {{name, kind}, nullptr, nullptr, platform};
}

const std::vector<ClientField>& ClientFields() {
  using C = _AppClientInfo;
  static const std::vector<ClientField> fields = {
      NumberField("id", &C::clientId),
      TextField("name", &C::clientName),
      TextField("hostName", &C::hostName),
      NumberField("platformType", &C::platformType),
      NumberField("integer3", &C::integer3),
      NumberField("integer4", &C::integer4),
      {{"integer5", FieldKind::kSigned}, nullptr, nullptr, -1},  // signed: set by name below
      NumberField("integer6", &C::integer6),
      NumberField("integer7", &C::integer7),
      NumberField("integer8", &C::integer8),
      NumberField("integer9", &C::integer9),
      NumberField("integer10", &C::integer10),
      NumberField("integer11", &C::integer11),
      NumberField("integer12", &C::integer12),
      TextField("text3", &C::text3),
      TextField("text4", &C::text4),
      TextField("text5", &C::text5),
      TextField("text6", &C::text6),
      TextField("text7", &C::text7),
      TextField("text8", &C::text8),
      PlatformField("platform1.value", FieldKind::kUnsigned, 0),
      PlatformField("platform1.text", FieldKind::kText, 0),
      PlatformField("platform2.value", FieldKind::kUnsigned, 1),
      PlatformField("platform2.text", FieldKind::kText, 1),
      PlatformField("platform3.value", FieldKind::kUnsigned, 2),
      PlatformField("platform3.text", FieldKind::kText, 2),
  };
  return fields;
}

const std::vector<RecordField>& KnownClientFields() {
  static const std::vector<RecordField> known = [] {
    std::vector<RecordField> out;
    for (const ClientField& f : ClientFields()) out.push_back(f.field);
    return out;
  }();
  return known;
}

// Lays checked fields (RecordFields.h) over a client record.
void Apply(const Json& fields, _AppClientInfo& info, Platforms& platforms) {
  for (const ClientField& f : ClientFields()) {
    auto it = fields.find(std::string(f.field.name));
    if (it == fields.end()) continue;
    if (f.number) {
      info.*f.number = it->get<unsigned long>();
    } else if (f.text) {
      info.*f.text = it->get<std::string>();
    } else if (f.platform >= 0) {
      ClientPlatformInfo& p = platforms[static_cast<size_t>(f.platform)];
      if (f.field.kind == FieldKind::kText) {
        p.text = it->get<std::string>();
      } else {
        p.value = it->get<unsigned long>();
      }
    } else {
      info.integer5 = it->get<long>();
    }
  }
}

Json ClientJson(const _AppClientInfo& c, const Platforms& p) {
  Json j = {{"id", c.clientId},         {"name", c.clientName},
            {"hostName", c.hostName},   {"platformType", c.platformType},
            {"integer3", c.integer3},   {"integer4", c.integer4},
            {"integer5", c.integer5},   {"integer6", c.integer6},
            {"integer7", c.integer7},   {"integer8", c.integer8},
            {"integer9", c.integer9},   {"integer10", c.integer10},
            {"integer11", c.integer11}, {"integer12", c.integer12},
            {"text3", c.text3},         {"text4", c.text4},
            {"text5", c.text5},         {"text6", c.text6},
            {"text7", c.text7},         {"text8", c.text8}};
  for (size_t i = 0; i < p.size(); ++i) {
    j["platform" + std::to_string(i + 1)] = {{"value", p[i].value}, {"text", p[i].text}};
  }
  return j;
}

// ---------------------------------------------------------------------------------------------
// Arguments

void SetId(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ID", "the client's id");
}

void OnlyId(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
}

void LookupArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("ID", a.id, "the client's id")->transform(Number<unsigned long>());
  cmd.add_option("--name", a.name, "look the client up by its name instead");
  cmd.callback([&a] {
    if ((a.id == 0) == a.name.empty()) {
      throw CLI::ValidationError("give the client's ID or its --name, one of the two");
    }
  });
}

// The record options of create and modify: --from-file first, then --set, then --name and
// --host, each replacing what came before.
void RecordArgs(CLI::App& cmd, Args& a, bool create) {
  cmd.add_option("--name", a.name, "the client's name");
  cmd.add_option("--host", a.host, "the client's host name");
  cmd.add_option("--set", a.sets,
                 "FIELD=VALUE: any field of the record, named as the command prints it "
                 "(platformType, integer3, text5, platform1.value, ...)");
  cmd.add_option("--from-file", a.file,
                 "a JSON record, as `client lookup --json` prints one; its fields come first");
  cmd.callback([&a, &cmd, create] {
    a.fields = Json::object();
    if (!a.file.empty()) AddRecordFile(KnownClientFields(), a.file, a.fields);
    AddSetWords(KnownClientFields(), a.sets, a.fields);
    if (cmd.count("--name")) a.fields["name"] = a.name;
    if (cmd.count("--host")) a.fields["hostName"] = a.host;
    if (create && !a.fields.contains("name")) {
      throw CLI::ValidationError(
          "give the new client's name: --name, --set name=... or --from-file");
    }
    if (!create) {
      if (a.fields.empty()) {
        throw CLI::ValidationError("nothing to change: give --name, --host, --set or --from-file");
      }
      if (a.fields.contains("id") && a.fields["id"].get<unsigned long>() != a.id) {
        throw CLI::ValidationError("the record names client " + a.fields["id"].dump() + ", not " +
                                   std::to_string(a.id));
      }
    }
  });
}

void CreateArgs(CLI::App& cmd, Args& a) {
  RecordArgs(cmd, a, true);
}

void ModifyArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  RecordArgs(cmd, a, false);
}

void PropsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  PropsTableOption(cmd, a);
}

void SetPropsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  SetPropsOptions(cmd, a, "the client's properties");
}

void RemovePropsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  RemovePropsOptions(cmd, a);
}

void VolumePairsArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("GUID", a.text, "the destination volume's GUID")->required();
  cmd.add_option("--state", a.value, "only pairs in this state (0: every pair)")
      ->transform(Number<long>())
      ->capture_default_str();
}

void WithPropertyArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("NAME", a.name, "the property's name")->required();
  cmd.add_option("VALUE", a.text, "the property's value")->required();
}

void AsmArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("--app-type", a.id2, "only instances of this application type (0: every type)")
      ->transform(Number<unsigned long>())
      ->capture_default_str();
}

void FsNodeArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("ID", a.id, "the client's id")->required()->transform(Number<unsigned int>());
  cmd.add_option("DATA", a.text, "the node data to report")->required();
  cmd.add_option("--value", a.number, "the report's value")
      ->transform(Number<int>())
      ->capture_default_str();
  cmd.add_flag("--flag", a.flag, "set the report's flag");
}

// ---------------------------------------------------------------------------------------------
// Handlers: one library call each (modify: a look-up, then the modify), the answer as a Result.

template <class F>
Outcome WithClients(Library& lib, F f) {
  return WithInterface<ClientInterface>(lib, APPMGR_INTERFACE_CLIENT, "client", f);
}

Outcome Lookup(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    _AppClientInfo info;
    info.clientId = a.id;
    info.clientName = a.name;
    Platforms platforms;
    std::string error;
    int status = clients.lookup(info, platforms.data(), error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(ClientJson(info, platforms)));
  });
}

// A create carries no platform texts; when the record gives some, a modify right after the
// create sets them, so nothing the user gave is dropped.
Outcome Create(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    _AppClientInfo info;
    Platforms platforms;
    Apply(a.fields, info, platforms);
    const Platforms given = platforms;
    std::string error;
    int status = clients.create(info, platforms.data(), error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    bool texts = false;
    for (size_t i = 0; i < given.size(); ++i) {
      texts = texts || !given[i].text.empty();
      platforms[i].text = given[i].text;
    }
    if (texts) {
      status = clients.modify(info, platforms.data(), error, nullptr);
      if (status != 0) {
        return Outcome::Failed(status,
                               "client " + std::to_string(info.clientId) +
                                   " was created, but its platform texts were not set: " + error);
      }
    }
    return Outcome::Ok(Result::Record(ClientJson(info, platforms)));
  });
}

// The record carries every field, so the fields not given are read first. The read may be
// answered by the library's message cache (docs/cli.md says when that matters).
Outcome Modify(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    _AppClientInfo info;
    info.clientId = a.id;
    Platforms platforms;
    std::string error;
    int status = clients.lookup(info, platforms.data(), error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Apply(a.fields, info, platforms);
    status = clients.modify(info, platforms.data(), error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(ClientJson(info, platforms)));
  });
}

Outcome Remove(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    std::string error;
    int status = clients.remove(a.id, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"removed", true}}));
  });
}

Outcome Props(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    std::string error;
    PropertyRows rows;
    int status = clients.getProperties(a.id, a.table, error, &rows, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"name", "type", "value"}, std::move(rows.rows)));
  });
}

Outcome SetProps(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    PropertyList list(a.words, a.type);
    std::string error;
    int status = clients.setProperties(a.id, list.pointers, a.replace, error, nullptr, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json names = Json::array();
    for (const ApplProperty& p : list.properties) names.push_back(p.getName());
    return Outcome::Ok(
        Result::Record({{"id", a.id}, {"set", std::move(names)}, {"replace", a.replace}}));
  });
}

Outcome RemoveProps(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    std::string error;
    int status = 0;
    if (a.asProperties) {
      std::vector<std::string> words;
      for (const std::string& name : a.words) words.push_back(name + "=");
      PropertyList list(words, 0);
      status = clients.removeProperties(a.id, list.pointers, a.strict, error, nullptr, nullptr);
    } else {
      std::list<std::string> names(a.words.begin(), a.words.end());
      status = clients.removeProperties(a.id, names, a.strict, error, nullptr, nullptr);
    }
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"removed", a.words}, {"strict", a.strict}}));
  });
}

Outcome VolumePairs(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    std::string guid = a.text, error;
    std::list<unsigned long> pairs;
    int status =
        clients.getFLRpairListForDestinationVolumeGUID(guid, pairs, error, a.value, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"pair"}, Json(pairs)));
  });
}

Outcome ReplicationSets(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    std::list<unsigned long> sets, owners, pairs;
    std::string error;
    int status = clients.GetFRsetsWithDestClientId(a.id, sets, owners, pairs, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    // Named after appmgrd's meaning of the three lists (docs/server.md).
    return Outcome::Ok(Result::Record({{"id", a.id},
                                       {"backupSets", Json(sets)},
                                       {"sourceClients", Json(owners)},
                                       {"pairs", Json(pairs)}}));
  });
}

Outcome WithProperty(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    std::list<_AppClientInfo> found;
    std::string error;
    int status = clients.getClientInfoWithProperty(found, a.name, a.text, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json rows = Json::array();
    for (const _AppClientInfo& c : found) {
      rows.push_back({{"id", c.clientId},
                      {"name", c.clientName},
                      {"hostName", c.hostName},
                      {"text3", c.text3}});
    }
    return Outcome::Ok(Result::List({"id", "name", "hostName", "text3"}, std::move(rows)));
  });
}

Outcome AsmInstances(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    std::list<unsigned long> ids;
    std::string error;
    int status = clients.GetASMInstanceList(a.id, a.id2, ids, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"instance"}, Json(ids)));
  });
}

Outcome FsNodeData(Library& lib, const Args& a) {
  return WithClients(lib, [&](ClientInterface& clients) {
    std::string error;
    int status = clients.setClientFSNodeData(static_cast<unsigned int>(a.id), a.text, a.number,
                                             a.flag, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(
        Result::Record({{"id", a.id}, {"data", a.text}, {"value", a.number}, {"flag", a.flag}}));
  });
}

constexpr CommandGroup kGroups[] = {
    {"client",
     "Clients: look one up, create, change and remove them, read their properties, "
     "and ask what replicates to them"},
};

constexpr Command kCommands[] = {
    {"client", "lookup", "Show a client's record, by id or by name", LookupArgs, Lookup},
    {"client", "create", "Create a client from options or a JSON record", CreateArgs, Create},
    {"client", "modify", "Change fields of a client's record", ModifyArgs, Modify},
    {"client", "remove", "Remove a client that owns nothing", OnlyId, Remove},
    {"client", "props", "List a client's properties", PropsArgs, Props},
    {"client", "set-props", "Set properties of a client", SetPropsArgs, SetProps},
    {"client", "remove-props", "Remove properties of a client by name", RemovePropsArgs,
     RemoveProps},
    {"client", "volume-pairs", "List the replication pairs that write to a volume", VolumePairsArgs,
     VolumePairs},
    {"client", "replication-sets", "Show the replication that writes to a client", OnlyId,
     ReplicationSets},
    {"client", "with-property", "List the clients whose property has a value", WithPropertyArgs,
     WithProperty},
    {"client", "asm-instances", "List a client's ASM instances", AsmArgs, AsmInstances},
    {"client", "fs-node-data", "Report file-system node activity of a client", FsNodeArgs,
     FsNodeData},
};

}  // namespace

CommandFamily ClientCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
