// The commands of appmgrctl: one table, one row per subcommand, gathered from one source per
// family of commands (commands/*.cc).
//
// A row names the subcommand, gives its help text, declares its arguments on the CLI11
// subcommand (binding them into an Args), and names the handler that makes the library call.
// A handler returns an Outcome: the Result to print, or the library's status and error text.
// It never prints; Output.h renders the Result as a table or as JSON. The command-line parser,
// --help and batch files (Program.h) are all derived from the table, so a new command is a new
// row.
//
// Thread-safety: the table is constant; a handler uses the Library it is given.
#pragma once

#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/appmgrctl/Output.h"

namespace CLI {
class App;
}

namespace appmgrctl {

class Library;

// Every value a command line can carry; each row binds the members it takes. The first block
// serves every family; a family that needs more adds its own block below.
struct Args {
  unsigned long id = 0;   // the entity the command names
  unsigned long id2 = 0;  // a second id (a client with an application type, a pair, ...)
  unsigned long id3 = 0;
  unsigned long id4 = 0;
  std::string name;
  std::string text;
  long value = 0;
  long table = 0;
  unsigned long type = 0;
  int number = 0;
  bool flag = false;
  std::vector<std::string> words;  // NAME=VALUE pairs, names, paths
  std::vector<unsigned long> ids;
  bool replace = false;
  bool strict = false;
  std::string file;        // an input file (batch, --from-file, a file to put)
  bool keepGoing = false;  // batch

  // Backup sets.
  std::string store;
  std::string source;
  std::string destination;
  unsigned long pair = 0;
  unsigned long selector = 0;

  // Session and cache.
  unsigned long jobId = 0;
  std::string host;
  std::string hostClient;

  // Clients and application ids.
  std::vector<std::string> sets;  // FIELD=VALUE words of --set
  Json fields = Json::object();   // a record's fields from --from-file and --set, checked
  bool asProperties = false;      // remove-props: send property records instead of names

  // Global parameters, client groups, the domain.
  std::string paramValue;  // a parameter's or an application property's value
  std::string description;
  std::string text3;
  std::string controlhostHost;
  std::string version;
  std::string text5;
  std::string text6;
  unsigned long int2 = 0, int3 = 0, int4 = 0, int5 = 0, int6 = 0;
  std::set<std::string> given;  // the options the command line gave (domain modify keeps the rest)

  // Lists: the filters of "list ..." (0: any).
  unsigned long listClient = 0;
  unsigned long listSecondClient = 0;
  unsigned long listAppType = 0;
  unsigned long listInstance = 0;
  unsigned long listBackupSet = 0;
  unsigned long listSubclient = 0;
  unsigned long listGroup = 0;
  unsigned long listCloud = 0;
  unsigned long listDomainId = 0;
  unsigned long listPlatformBits = 0;
  unsigned long listType = 0;
  unsigned long listArchiveGroup = 0;
  unsigned long listIncrArchiveGroup = 0;
  unsigned long listAppIdNumbers[5] = {};
  std::string listDomainName;
  bool listDeleted = false;
  bool listHostNames = false;
  bool listWithPlatform = false;

  // Subclients.
  std::string guid;
  int contentType = 1;              // the type every path of a content change carries
  bool detail = false;              // content: the flag and each entry's type too
  unsigned long scClient = 0;       // fs-content: numbers 3 to 7 of an application id
  unsigned long scAppType = 0;
  unsigned long scInstance = 0;
  unsigned long scBackupSet = 0;
  unsigned long scSubclient = 0;
  unsigned long scContentType = 0;  // fs-content: 0 for every type
  bool scWithDeleted = false;

  // Instances and application types.
  std::vector<std::string> contentAdd;     // instance update-content --add
  std::vector<std::string> contentRemove;  // instance update-content --remove
  unsigned long volumeValues[5] = {};      // apptype volume-prop --value1 .. --value5
  long volumeSigned = 0;                   // apptype volume-prop --signed

  // Alerts, XML, log monitoring.
  int alertType = 0;
  int alertCriteria = 0;
  int alertStatus = 0;
  long alertClientId = 0;
  std::string alertClientName;
  unsigned long alertJob = 0;
  unsigned long alertBackupSet = 0;
  std::string alertFailureReason;
  unsigned long alertListClient = 0;
  bool alertUnacknowledged = false;
  unsigned long alertLimit = 0;
  std::string alertBy;
  unsigned long xmlType = 0;   // 0: the document's own tag
  unsigned long xmlRoute = 1;
  unsigned long xmlValue = 0;
  std::string xmlExtra;
  unsigned long advisoryClient = 0;
  std::string advisorySource;
  std::string advisoryAction;
  bool advisoryClear = false;
  unsigned logType = 0;

  // Snapshots, mailbox delegates, file transfer.
  // The fields given as --f1 ... --f15 (a snapshot record) or --g1 ... --g6 (a delegate), by
  // field number; the record's id (F2, G7) is the command's ID.
  unsigned long fieldNumbers[16] = {};
  std::string fieldTexts[16];
  bool selectorGiven = false;  // delegate list --selector
  bool noProgress = false;     // file put
};

// What a handler returns.
struct Outcome {
  bool ok = true;
  int status = 0;     // what the library returned
  std::string error;  // the library's error text; empty when the operation gives none
  Result result;      // set when ok

  static Outcome Ok(Result result);
  static Outcome Failed(int status, std::string error = {});
};

// A subcommand that holds subcommands ("bs").
struct CommandGroup {
  std::string_view name;
  std::string_view help;
};

struct Command {
  std::string_view group;  // a CommandGroup's name, or empty for a top-level command
  std::string_view name;
  std::string_view help;
  // Adds the positional arguments and options to `cmd`, bound into `args`. A check that spans
  // several arguments throws CLI::ValidationError from a callback, so it is a usage error.
  void (*declare)(CLI::App& cmd, Args& args);
  // The library call. Null only for "batch", which the program runs itself: it runs other rows.
  Outcome (*call)(Library& lib, const Args& args);
};

// The rows of one family: its groups (each once) and its commands, in help order.
struct CommandFamily {
  std::span<const CommandGroup> groups;
  std::span<const Command> commands;
};

// Every row of every family, in the order of the families above.
std::span<const Command> CommandTable();
std::span<const CommandGroup> CommandGroups();

}  // namespace appmgrctl
