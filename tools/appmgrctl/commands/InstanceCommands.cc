// appmgrctl instance ...: the instance interface, one command per operation.
#include <list>
#include <string>
#include <vector>

#include "appmgr/InstInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

template <class F>
Outcome WithInstances(Library& lib, F f) {
  return WithInterface<InstInterface>(lib, APPMGR_INTERFACE_INSTANCE, "instance", f);
}

// ---------------------------------------------------------------------------------------------
// Arguments

void OnlyId(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ID", "the instance's id");
}

void UpdateArgs(CLI::App& cmd, Args& a) {
  OnlyId(cmd, a);
  cmd.add_option("--name", a.name, "the new name")->required();
  // Required, not looked up and written back: the server sets name and value together.
  cmd.add_option("--value", a.value, "the new value")->required()->transform(Number<long>());
}

void PropsArgs(CLI::App& cmd, Args& a) {
  OnlyId(cmd, a);
  PropsTableOption(cmd, a,
                   "the property table to read (appmgrd keeps availability-group properties in 2)");
}

void SetPropsArgs(CLI::App& cmd, Args& a) {
  OnlyId(cmd, a);
  SetPropsOptions(cmd, a, "the whole table");
}

void RemovePropsArgs(CLI::App& cmd, Args& a) {
  OnlyId(cmd, a);
  RemovePropsOptions(cmd, a);
}

void ContentArgs(CLI::App& cmd, Args& a) {
  OnlyId(cmd, a);
  cmd.add_option("--value", a.value, "the value the read-out request carries")
      ->transform(Number<long>())
      ->capture_default_str();
}

void UpdateContentArgs(CLI::App& cmd, Args& a) {
  OnlyId(cmd, a);
  cmd.add_option("--type", a.number, "the content type of every entry given")
      ->required()
      ->transform(Number<int>());
  cmd.add_option("--add", a.contentAdd, "an entry to add (repeatable)");
  cmd.add_option("--remove", a.contentRemove, "an entry to remove (repeatable)");
  cmd.add_flag("--replace", a.replace,
               "first remove every stored entry of the type the added entries carry");
  cmd.callback([&a] {
    if (a.contentAdd.empty() && a.contentRemove.empty()) {
      throw CLI::ValidationError("give --add or --remove entries");
    }
  });
}

// ---------------------------------------------------------------------------------------------
// Handlers: one library call each, the answer as a Result.

Outcome Lookup(Library& lib, const Args& a) {
  return WithInstances(lib, [&](InstInterface& inst) {
    std::string name, text, error;
    long value = 0;
    unsigned long attr2 = 0, attr3 = 0, attr4 = 0;
    int status = inst.lookup(a.id, name, value, attr2, attr3, attr4, text, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id},
                                       {"name", name},
                                       {"value", value},
                                       {"attr2", attr2},
                                       {"attr3", attr3},
                                       {"attr4", attr4},
                                       {"text", text}}));
  });
}

Outcome Update(Library& lib, const Args& a) {
  return WithInstances(lib, [&](InstInterface& inst) {
    std::string error;
    long value = a.value;
    int status = inst.update(a.id, a.name, value, false, 0, 0, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"name", a.name}, {"value", a.value}}));
  });
}

Outcome SetContentsDeleted(Library& lib, const Args& a, bool deleted) {
  return WithInstances(lib, [&](InstInterface& inst) {
    std::string error;
    int status =
        deleted ? inst.deleteAll(a.id, error, nullptr) : inst.undeleteAll(a.id, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"contentsDeleted", deleted}}));
  });
}
Outcome DeleteAll(Library& lib, const Args& a) {
  return SetContentsDeleted(lib, a, true);
}
Outcome UndeleteAll(Library& lib, const Args& a) {
  return SetContentsDeleted(lib, a, false);
}

Outcome Props(Library& lib, const Args& a) {
  return WithInstances(lib, [&](InstInterface& inst) {
    std::string error;
    PropertyRows rows;
    int status = inst.getProperties(a.id, a.table, error, &rows, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"name", "type", "value"}, std::move(rows.rows)));
  });
}

Outcome SetPropsWith(Library& lib, const Args& a, bool availabilityGroup) {
  return WithInstances(lib, [&](InstInterface& inst) {
    PropertyList list(a.words, a.type);
    std::string error;
    int status =
        availabilityGroup
            ? inst.setMSSQLAGProperties(a.id, list.pointers, a.replace, error, nullptr, nullptr)
            : inst.setProperties(a.id, list.pointers, a.replace, error, nullptr, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json names = Json::array();
    for (const ApplProperty& p : list.properties) names.push_back(p.getName());
    return Outcome::Ok(
        Result::Record({{"id", a.id}, {"set", std::move(names)}, {"replace", a.replace}}));
  });
}
Outcome SetProps(Library& lib, const Args& a) {
  return SetPropsWith(lib, a, false);
}
Outcome SetAgProps(Library& lib, const Args& a) {
  return SetPropsWith(lib, a, true);
}

Outcome RemoveProps(Library& lib, const Args& a) {
  return WithInstances(lib, [&](InstInterface& inst) {
    std::string error;
    int status = 0;
    if (a.asProperties) {
      std::vector<std::string> words;
      for (const std::string& name : a.words) words.push_back(name + "=");
      PropertyList list(words, 0);
      status = inst.removeProperties(a.id, list.pointers, a.strict, error, nullptr, nullptr);
    } else {
      std::list<std::string> names(a.words.begin(), a.words.end());
      status = inst.removeProperties(a.id, names, a.strict, error, nullptr, nullptr);
    }
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"removed", a.words}, {"strict", a.strict}}));
  });
}

// Content entries as list rows {type, entry}.
struct ContentRows : ContentCallBack {
  void addContent(unsigned long type, const std::string& text) override {
    rows.push_back({{"type", type}, {"entry", text}});
  }
  void setFlag(bool) override {}
  Json rows = Json::array();
};

Outcome ContentList(Library& lib, const Args& a) {
  return WithInstances(lib, [&](InstInterface& inst) {
    std::string error;
    ContentRows rows;
    int status = inst.initContent(a.id, a.value, error, &rows, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"type", "entry"}, std::move(rows.rows)));
  });
}

Outcome UpdateContent(Library& lib, const Args& a) {
  return WithInstances(lib, [&](InstInterface& inst) {
    std::vector<std::string> add(a.contentAdd), remove(a.contentRemove);
    std::list<std::string*> addList, removeList;
    for (std::string& e : add) addList.push_back(&e);
    for (std::string& e : remove) removeList.push_back(&e);
    std::string error;
    int status = inst.updateContent(a.id, a.number, addList, removeList, a.replace, false, false,
                                    error, nullptr, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id},
                                       {"type", a.number},
                                       {"added", a.contentAdd},
                                       {"removed", a.contentRemove},
                                       {"replace", a.replace}}));
  });
}

constexpr CommandGroup kGroups[] = {
    {"instance", "Instances: look one up, rename it, read and change its properties and content"},
};

constexpr Command kCommands[] = {
    {"instance", "lookup", "Show an instance's name, value, attributes and text", OnlyId, Lookup},
    {"instance", "update", "Rename an instance and set its value", UpdateArgs, Update},
    {"instance", "delete-all", "Mark an instance and everything under it deleted", OnlyId,
     DeleteAll},
    {"instance", "undelete-all", "Mark an instance and everything under it not deleted", OnlyId,
     UndeleteAll},
    {"instance", "props", "List an instance's properties", PropsArgs, Props},
    {"instance", "set-props", "Set properties of an instance", SetPropsArgs, SetProps},
    {"instance", "remove-props", "Remove properties of an instance by name", RemovePropsArgs,
     RemoveProps},
    {"instance", "content", "List an instance's content entries", ContentArgs, ContentList},
    {"instance", "update-content", "Add and remove content entries of an instance",
     UpdateContentArgs, UpdateContent},
    {"instance", "set-ag-props", "Set the properties of an instance's availability group",
     SetPropsArgs, SetAgProps},
};

}  // namespace

CommandFamily InstanceCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
