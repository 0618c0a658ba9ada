// appmgrctl group ...: client groups.
#include <string>

#include "appmgr/ClientGroupInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

// ---------------------------------------------------------------------------------------------
// Arguments

void NameArg(CLI::App& cmd, Args& a) {
  cmd.add_option("NAME", a.name, "the group's name (any case)")->required();
}

void CreateArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("NAME", a.name, "the new group's name")->required();
  cmd.add_option("--description", a.description, "what the group is for");
  cmd.add_option("--text3", a.text3, "a further text, kept as given");
  unsigned long* ints[] = {&a.int2, &a.int3, &a.int4, &a.int5, &a.int6};
  for (int i = 0; i < 5; ++i) {
    cmd.add_option("--int" + std::to_string(i + 2), *ints[i], "a number kept as given")
        ->transform(Number<unsigned long>())
        ->capture_default_str();
  }
}

void RemoveArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ID", "the group's id");
}

// ---------------------------------------------------------------------------------------------
// Handlers

template <class F>
Outcome WithGroups(Library& lib, F f) {
  return WithInterface<ClientGroupInterface>(lib, APPMGR_INTERFACE_CLIENT_GROUP, "client-group", f);
}

// Field names follow appmgrd's meaning of the record (docs/server.md).
Json GroupJson(const _AppClientGroupInfo& g) {
  return {{"id", g.int1},     {"name", g.text1}, {"description", g.text2},
          {"text3", g.text3}, {"int2", g.int2},  {"int3", g.int3},
          {"int4", g.int4},   {"int5", g.int5},  {"int6", g.int6}};
}

Outcome Lookup(Library& lib, const Args& a) {
  return WithGroups(lib, [&](ClientGroupInterface& groups) {
    _AppClientGroupInfo info;
    info.text1 = a.name;
    std::string error;
    int status = groups.lookup(info, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(GroupJson(info)));
  });
}

Outcome Create(Library& lib, const Args& a) {
  return WithGroups(lib, [&](ClientGroupInterface& groups) {
    _AppClientGroupInfo info;
    info.text1 = a.name;
    info.text2 = a.description;
    info.text3 = a.text3;
    info.int2 = a.int2;
    info.int3 = a.int3;
    info.int4 = a.int4;
    info.int5 = a.int5;
    info.int6 = a.int6;
    std::string error;
    int status = groups.create(info, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(GroupJson(info)));
  });
}

// The library declares these two but does not provide them over the network: they report
// that, and send nothing.
Outcome Update(Library& lib, const Args& a) {
  return WithGroups(lib, [&](ClientGroupInterface& groups) {
    _AppClientGroupInfo info;
    info.text1 = a.name;
    std::string error;
    int status = groups.update(info, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(GroupJson(info)));
  });
}

Outcome Remove(Library& lib, const Args& a) {
  return WithGroups(lib, [&](ClientGroupInterface& groups) {
    std::string error;
    int status = groups.remove(a.id, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"removed", true}}));
  });
}

constexpr CommandGroup kGroups[] = {
    {"group", "Client groups: look one up by name, create one"},
};

constexpr Command kCommands[] = {
    {"group", "lookup", "Show a client group found by its name", NameArg, Lookup},
    {"group", "create", "Create a client group (the server gives its id)", CreateArgs, Create},
    {"group", "update", "Change a client group (not provided by the library: always fails)",
     NameArg, Update},
    {"group", "remove", "Remove a client group (not provided by the library: always fails)",
     RemoveArgs, Remove},
};

}  // namespace

CommandFamily GroupCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
