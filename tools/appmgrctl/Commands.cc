#include "tools/appmgrctl/Commands.h"

#include <utility>

namespace appmgrctl {

static_assert(sizeof(long) == 8 && sizeof(unsigned long) == 8,
              "ids and values of the library are 64-bit longs");

Outcome Outcome::Ok(Result result) {
  Outcome o;
  o.result = std::move(result);
  return o;
}

Outcome Outcome::Failed(int status, std::string error) {
  Outcome o;
  o.ok = false;
  o.status = status;
  o.error = std::move(error);
  return o;
}

// The families, each defined in its own source under commands/, in the order --help lists
// them. One line each, kept apart, so families added side by side touch different lines.
CommandFamily BackupSetCommands();
CommandFamily SubclientCommands();

CommandFamily ListCommands();
CommandFamily ClientCommands();
CommandFamily AppIdCommands();
CommandFamily ParamCommands();
CommandFamily GroupCommands();
CommandFamily DomainCommands();
CommandFamily InstanceCommands();
CommandFamily AppTypeCommands();

CommandFamily AlertCommands();

CommandFamily SnapshotCommands();
CommandFamily FileCommands();

CommandFamily GeneralCommands();

namespace {

struct Table {
  std::vector<CommandGroup> groups;
  std::vector<Command> commands;

  void Add(const CommandFamily& family) {
    groups.insert(groups.end(), family.groups.begin(), family.groups.end());
    commands.insert(commands.end(), family.commands.begin(), family.commands.end());
  }

  Table() {
    Add(BackupSetCommands());
    Add(SubclientCommands());

    Add(ListCommands());
    Add(ClientCommands());
    Add(AppIdCommands());
    Add(ParamCommands());
    Add(GroupCommands());
    Add(DomainCommands());
    Add(InstanceCommands());
    Add(AppTypeCommands());

    Add(AlertCommands());

    Add(SnapshotCommands());
    Add(FileCommands());

    Add(GeneralCommands());
  }
};

const Table& TheTable() {
  static const Table table;
  return table;
}

}  // namespace

std::span<const Command> CommandTable() {
  return TheTable().commands;
}

std::span<const CommandGroup> CommandGroups() {
  return TheTable().groups;
}

}  // namespace appmgrctl
