// appmgrctl param ...: global parameters and application properties, read and set like a
// configuration tool (appmgrctl param set NAME VALUE).
#include <string>
#include <utility>

#include "appmgr/GlobalParamInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

// ---------------------------------------------------------------------------------------------
// Arguments

void NameArg(CLI::App& cmd, Args& a) {
  cmd.add_option("NAME", a.name, "the parameter's name")->required();
}

void SetArgs(CLI::App& cmd, Args& a) {
  NameArg(cmd, a);
  cmd.add_option("VALUE", a.paramValue, "the new value (may be empty: '')")->required();
}

void AppArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "APP", "the application: a client application type's id");
  IdArg(cmd, a.id2, "NUMBER", "the property's number");
}

void AppSetArgs(CLI::App& cmd, Args& a) {
  AppArgs(cmd, a);
  cmd.add_option("VALUE", a.paramValue, "the new value (may be empty: '')")->required();
}

// ---------------------------------------------------------------------------------------------
// Handlers: one library call each, the answer as a Result.

template <class F>
Outcome WithParams(Library& lib, F f) {
  return WithInterface<GlobalParamInterface>(lib, APPMGR_INTERFACE_GLOBAL_PARAM, "global-parameter",
                                             f);
}

Outcome Get(Library& lib, const Args& a) {
  return WithParams(lib, [&](GlobalParamInterface& params) {
    std::string value, error;
    int status = params.getProperty(a.name, value, error, 0, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"name", a.name}, {"value", value}}));
  });
}

// The server keeps a value in its canonical form ("007" as "7", "yes" as "1"), so a set
// reads the value back and shows what is now stored. The set has emptied the message cache, so
// the read reaches the server.
Outcome ReadBack(int status, const std::string& error, Json record) {
  if (status != 0) {
    return Outcome::Failed(status, "the value was set, but reading it back failed: " + error);
  }
  return Outcome::Ok(Result::Record(std::move(record)));
}

Outcome Set(Library& lib, const Args& a) {
  return WithParams(lib, [&](GlobalParamInterface& params) {
    std::string error;
    // The type is not sent; the server knows the type of each parameter it has built in.
    int status = params.setProperty(ApplProperty(a.name, 0, a.paramValue), error, false, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    std::string stored;
    status = params.getProperty(a.name, stored, error, 0, nullptr);
    return ReadBack(status, error, {{"name", a.name}, {"value", stored}});
  });
}

Outcome Remove(Library& lib, const Args& a) {
  // Both removals of the interface send the same request; this is the one by name.
  return WithParams(lib, [&](GlobalParamInterface& params) {
    std::string error;
    int status = params.removeProperty(a.name, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"name", a.name}, {"removed", true}}));
  });
}

Outcome AppGet(Library& lib, const Args& a) {
  return WithParams(lib, [&](GlobalParamInterface& params) {
    std::string value, error;
    int status = params.getAppProperty(a.id, a.id2, value, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"app", a.id}, {"number", a.id2}, {"value", value}}));
  });
}

Outcome AppSet(Library& lib, const Args& a) {
  return WithParams(lib, [&](GlobalParamInterface& params) {
    std::string error;
    int status = params.setAppProperty(a.id, a.id2, a.paramValue, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    std::string stored;
    status = params.getAppProperty(a.id, a.id2, stored, error, nullptr);
    return ReadBack(status, error, {{"app", a.id}, {"number", a.id2}, {"value", stored}});
  });
}

constexpr CommandGroup kGroups[] = {
    {"param", "Global parameters and application properties: read, set and remove them"},
};

constexpr Command kCommands[] = {
    {"param", "get", "Show a global parameter's value (its default when never set)", NameArg, Get},
    {"param", "set", "Set a global parameter", SetArgs, Set},
    {"param", "remove", "Remove a global parameter (a built-in one returns to its default)",
     NameArg, Remove},
    {"param", "app-get", "Show an application property of an application on a client", AppArgs,
     AppGet},
    {"param", "app-set", "Set an application property of an application on a client", AppSetArgs,
     AppSet},
};

}  // namespace

CommandFamily ParamCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
