// appmgrctl subclient ...: the subclient interface, one command per operation.
#include <list>
#include <string>
#include <vector>

#include "appmgr/SCInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

// ---------------------------------------------------------------------------------------------
// Arguments

void SetId(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "ID", "the subclient's id");
}

void OnlyId(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
}

void NoArgs(CLI::App&, Args&) {}

void GuidArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("GUID", a.guid, "the subclient's GUID")->required();
}

void UpdateArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("--name", a.name, "the new name")->required();
  // Required, not looked up: the server sets name and value together, and a read first could be
  // answered by the message cache with a stale value.
  cmd.add_option("--value", a.value, "the new value")->required()->transform(Number<long>());
}

void PropsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  PropsTableOption(cmd, a);
}

void SetPropsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  SetPropsOptions(cmd, a, "the subclient's properties");
}

void RemovePropsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  RemovePropsOptions(cmd, a);
}

void ContentArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_flag("--detail", a.detail, "show the content flag and each entry's type too");
}

void ChangeContentArgs(CLI::App& cmd, Args& a, bool adding) {
  SetId(cmd, a);
  cmd.add_option("PATH", a.words, adding ? "entries to add" : "entries to remove")->required();
  cmd.add_option("--type", a.contentType, "the content type of every entry given")
      ->transform(Number<int>())
      ->capture_default_str();
  if (adding) {
    cmd.add_flag("--replace", a.replace, "first remove every stored entry of the type given");
  }
}
void AddContentArgs(CLI::App& cmd, Args& a) {
  ChangeContentArgs(cmd, a, true);
}
void RemoveContentArgs(CLI::App& cmd, Args& a) {
  ChangeContentArgs(cmd, a, false);
}

void AssociationArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("NAME", a.words, "the whole list of names (none clears it)");
}

void PairDataArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("PAIR", a.pair, "the replication pair's id")
      ->required()
      ->transform(Number<unsigned long>());
  cmd.add_option("--selector", a.selector, "which data of the pair")
      ->transform(Number<unsigned long>())
      ->capture_default_str();
}

void SetPairDataArgs(CLI::App& cmd, Args& a) {
  PairDataArgs(cmd, a);
  cmd.add_option("TEXT", a.text, "the data to keep")->required();
  cmd.add_flag("--replace", a.replace, "replace data already kept under the same selector");
}

void ExtensionsArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("FILETYPE", a.name, "the file type")->required();
}

void FsContentArgs(CLI::App& cmd, Args& a) {
  auto id = [&cmd](const char* name, unsigned long& out, const char* what) {
    return cmd.add_option(name, out, what)->transform(Number<unsigned long>());
  };
  id("--backupset", a.scBackupSet, "the backup set")->required();
  id("--client", a.scClient, "the backup set's client (checked when given)");
  id("--app-type", a.scAppType, "the backup set's application type (checked when given)");
  id("--instance", a.scInstance, "the backup set's instance (checked when given)");
  id("--subclient", a.scSubclient, "only this subclient of the backup set");
  id("--type", a.scContentType, "only entries of this content type (0: every type)")
      ->capture_default_str();
  cmd.add_flag("--deleted", a.scWithDeleted,
               "count subclients whose contents are marked deleted too");
}

void DataPathsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("PATH", a.words, "the data paths");
}

void FlrConflictArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("PAIR", a.pair, "the replication pair's id")
      ->required()
      ->transform(Number<unsigned long>());
}

void ContentGroupsArgs(CLI::App& cmd, Args& a) {
  SetId(cmd, a);
  cmd.add_option("GROUPS", a.text, "the content groups");
}

// ---------------------------------------------------------------------------------------------
// Handlers: one library call each, the answer as a Result.

template <class F>
Outcome WithSubclients(Library& lib, F f) {
  return WithInterface<SCInterface>(lib, APPMGR_INTERFACE_SUBCLIENT, "subclient", f);
}

Outcome Lookup(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string name, text, error;
    long value = 0;
    unsigned long attr2 = 0, attr3 = 0, attr4 = 0;
    int status = sc.lookup(a.id, name, value, attr2, attr3, attr4, text, error, nullptr);
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

Outcome LookupGuid(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string name, error;
    long value = 0;
    unsigned long attr2 = 0, attr3 = 0, attr4 = 0, id = 0;
    int status = sc.lookup(a.guid, name, value, attr2, attr3, attr4, id, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", id},
                                       {"guid", a.guid},
                                       {"name", name},
                                       {"value", value},
                                       {"attr2", attr2},
                                       {"attr3", attr3},
                                       {"attr4", attr4}}));
  });
}

Outcome Update(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string error;
    long value = a.value;
    int status = sc.update(a.id, a.name, value, false, 0, 0, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"name", a.name}, {"value", a.value}}));
  });
}

Outcome Props(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string error;
    PropertyRows rows;
    int status = sc.getProperties(a.id, a.table, error, &rows, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"name", "type", "value"}, std::move(rows.rows)));
  });
}

Outcome SetProps(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    PropertyList list(a.words, a.type);
    std::string error;
    int status = sc.setProperties(a.id, list.pointers, a.replace, error, nullptr, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json names = Json::array();
    for (const ApplProperty& p : list.properties) names.push_back(p.getName());
    return Outcome::Ok(
        Result::Record({{"id", a.id}, {"set", std::move(names)}, {"replace", a.replace}}));
  });
}

Outcome RemoveProps(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::list<std::string> names(a.words.begin(), a.words.end());
    std::string error;
    int status = sc.removeProperties(a.id, names, a.strict, error, nullptr, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"removed", a.words}, {"strict", a.strict}}));
  });
}

// Keeps what a content read-out delivers, in its order.
class ContentRows : public ContentCallBack {
 public:
  void setFlag(bool flag) override { flag_ = flag; }
  void addContent(unsigned long type, const std::string& text) override {
    entries_.push_back({type, text});
  }
  bool flag() const { return flag_; }
  Json Paths() const {
    Json rows = Json::array();
    for (const auto& [type, text] : entries_) rows.push_back(text);
    return rows;
  }
  Json Detailed() const {
    Json rows = Json::array();
    for (const auto& [type, text] : entries_) rows.push_back({{"type", type}, {"path", text}});
    return rows;
  }

 private:
  bool flag_ = false;
  std::vector<std::pair<unsigned long, std::string>> entries_;
};

Outcome Content(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string error;
    ContentRows rows;
    int status = sc.initContent(a.id, 0, error, &rows, nullptr, false, 0, false);
    if (status != 0) return Outcome::Failed(status, error);
    if (!a.detail) return Outcome::Ok(Result::List({"path"}, rows.Paths()));
    return Outcome::Ok(
        Result::Record({{"id", a.id}, {"contentFlag", rows.flag()}, {"entries", rows.Detailed()}}));
  });
}

Outcome ChangeContent(Library& lib, const Args& a, bool adding) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::vector<std::string> paths(a.words);
    std::list<std::string*> given, none;
    for (std::string& p : paths) given.push_back(&p);
    std::string error;
    int status = adding ? sc.updateContent(a.id, a.contentType, given, none, a.replace, false,
                                           false, error, nullptr, nullptr)
                        : sc.updateContent(a.id, a.contentType, none, given, false, false, false,
                                           error, nullptr, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(
        {{"id", a.id}, {adding ? "added" : "removed", a.words}, {"type", a.contentType}}));
  });
}
Outcome AddContent(Library& lib, const Args& a) {
  return ChangeContent(lib, a, true);
}
Outcome RemoveContent(Library& lib, const Args& a) {
  return ChangeContent(lib, a, false);
}

Outcome SetAssociations(Library& lib, const Args& a, bool stores) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::list<std::string> names(a.words.begin(), a.words.end());
    std::string error;
    int status = stores ? sc.SetStoreAssociation(a.id, names, error, nullptr)
                        : sc.SetActiveDirectoryAssociation(a.id, names, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(
        Result::Record({{"id", a.id}, {stores ? "stores" : "directories", a.words}}));
  });
}
Outcome SetStores(Library& lib, const Args& a) {
  return SetAssociations(lib, a, true);
}
Outcome SetDirectories(Library& lib, const Args& a) {
  return SetAssociations(lib, a, false);
}

Outcome Overlapping(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string error;
    std::list<unsigned long> ids;
    int status = sc.getOverlappingSubclientList(a.id, ids, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::List({"subclient"}, Json(ids)));
  });
}

Outcome BackupHost(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string error;
    unsigned long host = 0;
    int status = sc.getBackupHost(a.id, host, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"backupHost", host}}));
  });
}

Outcome PairData(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string text, error;
    unsigned long state = 0;
    int status = sc.getFRPairData(a.id, a.pair, state, text, error, a.selector, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id},
                                       {"pair", a.pair},
                                       {"selector", a.selector},
                                       {"state", state},
                                       {"text", text}}));
  });
}

Outcome SetPairData(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string text = a.text, error;
    int status = sc.setFRPairData(a.id, a.pair, a.selector, text, error, a.replace, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record(
        {{"id", a.id}, {"pair", a.pair}, {"selector", a.selector}, {"text", a.text}}));
  });
}

Outcome Extensions(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string inOut = a.name;
    int status = sc.getExtensionForFileType(inOut, nullptr);
    if (status != 0) return Outcome::Failed(status);
    return Outcome::Ok(Result::Record({{"fileType", a.name}, {"extensions", inOut}}));
  });
}

Outcome FsContent(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string name, entries;
    std::vector<unsigned long> ids;
    int status = sc.getFSBackupsetContent(a.scClient, a.scAppType, a.scInstance, a.scBackupSet,
                                          a.scSubclient, a.scContentType, a.scWithDeleted, name,
                                          entries, ids, nullptr);
    if (status != 0) return Outcome::Failed(status);
    // The server sends the entries as one text, one per line.
    Json paths = Json::array();
    for (size_t start = 0; start < entries.size();) {
      size_t end = entries.find('\n', start);
      if (end == std::string::npos) end = entries.size();
      paths.push_back(entries.substr(start, end - start));
      start = end + 1;
    }
    return Outcome::Ok(Result::Record({{"backupSet", a.scBackupSet},
                                       {"name", name},
                                       {"subclients", Json(ids)},
                                       {"entries", std::move(paths)}}));
  });
}

Outcome ReferenceCopies(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::vector<RefCopySCInfo> copies;
    int status = sc.getSmartCopySubclients(a.id, copies, nullptr);
    if (status != 0) return Outcome::Failed(status);
    Json ids = Json::array();
    for (const RefCopySCInfo& c : copies) ids.push_back(c.subclientId);
    return Outcome::Ok(Result::List({"subclient"}, std::move(ids)));
  });
}

// The operations the library answers without asking the server.
Outcome DataPaths(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::list<AppToDataPathItem> paths;
    std::string error;
    int status = sc.getSCdataPaths(a.id, paths, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    Json rows = Json::array();
    for (const AppToDataPathItem& p : paths) rows.push_back({{"id", p.id}, {"path", p.path}});
    return Outcome::Ok(Result::List({"id", "path"}, std::move(rows)));
  });
}

Outcome UpdateDataPaths(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::list<AppToDataPathItem> paths;
    for (const std::string& w : a.words) paths.push_back({0, w});
    std::string error;
    int status = sc.updateSCdataPaths(a.id, paths, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"paths", a.words}}));
  });
}

Outcome FlrConflicts(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::list<DataPairConflict> conflicts;
    std::string error;
    int status = sc.getFLRconflictGUIDS(a.id, a.pair, conflicts, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"conflicts", conflicts.size()}}));
  });
}

Outcome SrmAction(Library& lib, const Args&) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    unsigned long first = 0, second = 0;
    std::string error;
    int status = sc.getCurrentSRMActionSubClient(first, second, error, nullptr);
    if (status != 0) return Outcome::Failed(status, error);
    return Outcome::Ok(Result::Record({{"first", first}, {"second", second}}));
  });
}

Outcome SetContentGroups(Library& lib, const Args& a) {
  return WithSubclients(lib, [&](SCInterface& sc) {
    std::string groups = a.text;
    int status = sc.setContentGroups(a.id, groups, nullptr);
    if (status != 0) return Outcome::Failed(status);
    return Outcome::Ok(Result::Record({{"id", a.id}, {"groups", a.text}}));
  });
}

constexpr CommandGroup kGroups[] = {
    {"subclient", "Subclients: look one up, change it, read and change its content and settings"},
};

constexpr Command kCommands[] = {
    {"subclient", "lookup", "Show a subclient's name, value, attributes and text", OnlyId, Lookup},
    {"subclient", "lookup-guid", "Show the subclient that has a GUID", GuidArgs, LookupGuid},
    {"subclient", "update", "Rename a subclient and set its value", UpdateArgs, Update},
    {"subclient", "props", "List a subclient's properties", PropsArgs, Props},
    {"subclient", "set-props", "Set properties of a subclient", SetPropsArgs, SetProps},
    {"subclient", "remove-props", "Remove properties of a subclient by name", RemovePropsArgs,
     RemoveProps},
    {"subclient", "content", "List a subclient's content, one path per line", ContentArgs, Content},
    {"subclient", "add-content", "Add paths to a subclient's content", AddContentArgs, AddContent},
    {"subclient", "remove-content", "Remove paths from a subclient's content", RemoveContentArgs,
     RemoveContent},
    {"subclient", "set-stores", "Set the stores a subclient is associated with", AssociationArgs,
     SetStores},
    {"subclient", "set-directories", "Set the directory objects a subclient is associated with",
     AssociationArgs, SetDirectories},
    {"subclient", "overlapping",
     "List the subclients of the same client whose content overlaps this one's", OnlyId,
     Overlapping},
    {"subclient", "backup-host", "Show the client that backs a subclient up", OnlyId, BackupHost},
    {"subclient", "pair-data", "Show the data a subclient keeps for a replication pair",
     PairDataArgs, PairData},
    {"subclient", "set-pair-data", "Keep data for a replication pair of a subclient",
     SetPairDataArgs, SetPairData},
    {"subclient", "extensions", "Show the extensions of a file type", ExtensionsArgs, Extensions},
    {"subclient", "fs-content", "Show the subclients and content of a file-system backup set",
     FsContentArgs, FsContent},
    {"subclient", "reference-copies", "List a subclient's reference-copy subclients", OnlyId,
     ReferenceCopies},
    {"subclient", "data-paths", "List a subclient's data paths (not supported by the library)",
     OnlyId, DataPaths},
    {"subclient", "update-data-paths",
     "Set a subclient's data paths (not supported by the library)", DataPathsArgs, UpdateDataPaths},
    {"subclient", "flr-conflicts",
     "List the GUID conflicts of a replication pair (not supported by the library)",
     FlrConflictArgs, FlrConflicts},
    {"subclient", "srm-action", "Show the current SRM action subclient (not supported)", NoArgs,
     SrmAction},
    {"subclient", "set-content-groups", "Set a subclient's content groups (not provided)",
     ContentGroupsArgs, SetContentGroups},
};

}  // namespace

CommandFamily SubclientCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
