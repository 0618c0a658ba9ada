// appmgrctl domain ...: the domain record, of which an installation has one.
#include <string>

#include "appmgr/OrbitInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

// The record as the commands handle it, in the order the interface takes it. Names follow
// appmgrd's meaning of each field (docs/server.md).
struct DomainRecord {
  unsigned long id = 0, controlhostClient = 0, id3 = 0, id4 = 0;
  std::string name, controlhostHost, description, version, text5, text6;
  int number = 0;
};

using Call = int (OrbitInterface::*)(unsigned long&, unsigned long&, unsigned long&, unsigned long&,
                                     std::string&, std::string&, std::string&, std::string&,
                                     std::string&, int&, std::string&, std::string&, void*);

int Run(OrbitInterface& orbit, Call call, DomainRecord& d, std::string& error) {
  return (orbit.*call)(d.id, d.controlhostClient, d.id3, d.id4, d.name, d.controlhostHost,
                       d.description, d.version, d.text5, d.number, d.text6, error, nullptr);
}

// The number is left out: the library hands back the caller's own value, never the server's.
Json DomainJson(const DomainRecord& d) {
  return {{"id", d.id},
          {"controlhostClient", d.controlhostClient},
          {"id3", d.id3},
          {"id4", d.id4},
          {"name", d.name},
          {"controlhostHost", d.controlhostHost},
          {"description", d.description},
          {"version", d.version},
          {"text5", d.text5},
          {"text6", d.text6}};
}

// ---------------------------------------------------------------------------------------------
// Arguments

// An option that also records, in a.given, that the command line gave it.
template <class T>
CLI::Option* Field(CLI::App& cmd, Args& a, const std::string& flag, T& out, const char* help) {
  CLI::Option* o = cmd.add_option(flag, out, help);
  o->each([&a, flag](const std::string&) { a.given.insert(flag); });
  return o;
}

// The fields create and modify share.
void RecordOptions(CLI::App& cmd, Args& a) {
  Field(cmd, a, "--controlhost-client", a.id2, "the Controlhost's client id")
      ->transform(Number<unsigned long>());
  Field(cmd, a, "--id3", a.id3, "a further id, kept as given")->transform(Number<unsigned long>());
  Field(cmd, a, "--id4", a.id4, "a further id, kept as given")->transform(Number<unsigned long>());
  Field(cmd, a, "--controlhost-host", a.controlhostHost, "the Controlhost's host name");
  Field(cmd, a, "--description", a.description, "what the domain is");
  Field(cmd, a, "--version", a.version, "the domain's version");
  Field(cmd, a, "--text5", a.text5, "a further text, kept as given");
  Field(cmd, a, "--text6", a.text6, "a further text, kept as given");
}

void LookupArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("ID", a.id, "the domain's id (default 0: the installation's domain)")
      ->transform(Number<unsigned long>());
}

void CreateArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("--name", a.name, "the domain's name")->required();
  cmd.add_option("--id", a.id, "the domain's id (default 0: the server takes 1)")
      ->transform(Number<unsigned long>());
  cmd.add_option("--number", a.number, "the domain's number, fixed at creation")
      ->transform(Number<int>());
  RecordOptions(cmd, a);
}

void ModifyArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("--id", a.id, "the domain's id (default 0: the installation's domain)")
      ->transform(Number<unsigned long>());
  Field(cmd, a, "--name", a.name, "the new name");
  RecordOptions(cmd, a);
  cmd.callback([&a] {
    if (a.given.empty()) throw CLI::ValidationError("give at least one field to change");
  });
}

void RemoveArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ID", "the domain's id");
}

// ---------------------------------------------------------------------------------------------
// Handlers

template <class F>
Outcome WithOrbit(Library& lib, F f) {
  return WithInterface<OrbitInterface>(lib, APPMGR_INTERFACE_ORBIT, "domain", f);
}

Outcome Lookup(Library& lib, const Args& a) {
  return WithOrbit(lib, [&](OrbitInterface& orbit) {
    DomainRecord d;
    d.id = a.id;
    std::string error;
    if (int status = Run(orbit, &OrbitInterface::lookup, d, error)) {
      return Outcome::Failed(status, error);
    }
    return Outcome::Ok(Result::Record(DomainJson(d)));
  });
}

Outcome Create(Library& lib, const Args& a) {
  return WithOrbit(lib, [&](OrbitInterface& orbit) {
    DomainRecord d{a.id,          a.id2,     a.id3,   a.id4,   a.name,  a.controlhostHost,
                   a.description, a.version, a.text5, a.text6, a.number};
    std::string error;
    if (int status = Run(orbit, &OrbitInterface::create, d, error)) {
      return Outcome::Failed(status, error);
    }
    return Outcome::Ok(Result::Record(DomainJson(d)));
  });
}

// A modify replaces the whole record, so the fields the command line leaves out are read first
// and sent back unchanged. The read must see the server's record, not an answer the message
// cache kept from earlier in a batch (another process may have changed the domain since), so
// the cache is emptied before it.
Outcome Modify(Library& lib, const Args& a) {
  return WithOrbit(lib, [&](OrbitInterface& orbit) {
    AppMgrNetStatistics stats{};
    if (lib.GetClientLibraryStatistics(&stats) == 0 && stats.cacheInUse != 0) {
      lib.EnableClientMessageCache(false);  // empties it
      lib.EnableClientMessageCache(true);
    }
    DomainRecord d;
    d.id = a.id;
    std::string error;
    if (int status = Run(orbit, &OrbitInterface::lookup, d, error)) {
      return Outcome::Failed(status, error);
    }
    auto given = [&a](const char* flag) { return a.given.count(flag) != 0; };
    if (given("--name")) d.name = a.name;
    if (given("--controlhost-client")) d.controlhostClient = a.id2;
    if (given("--id3")) d.id3 = a.id3;
    if (given("--id4")) d.id4 = a.id4;
    if (given("--controlhost-host")) d.controlhostHost = a.controlhostHost;
    if (given("--description")) d.description = a.description;
    if (given("--version")) d.version = a.version;
    if (given("--text5")) d.text5 = a.text5;
    if (given("--text6")) d.text6 = a.text6;
    if (int status = Run(orbit, &OrbitInterface::modify, d, error)) {
      return Outcome::Failed(status, error);
    }
    return Outcome::Ok(Result::Record(DomainJson(d)));
  });
}

Outcome Remove(Library& lib, const Args& a) {
  return WithOrbit(lib, [&](OrbitInterface& orbit) {
    std::string error;
    if (int status = orbit.remove(a.id, error, nullptr)) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"removed", true}}));
  });
}

constexpr CommandGroup kGroups[] = {
    {"domain", "The domain: look it up, create, change or remove it"},
};

constexpr Command kCommands[] = {
    {"domain", "lookup", "Show the domain", LookupArgs, Lookup},
    {"domain", "create", "Create the domain (refused while one exists)", CreateArgs, Create},
    {"domain", "modify", "Change fields of the domain; the others keep their values", ModifyArgs,
     Modify},
    {"domain", "remove", "Remove the domain", RemoveArgs, Remove},
};

}  // namespace

CommandFamily DomainCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
