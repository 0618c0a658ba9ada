// The commands of appmgrctl: one table, one row per subcommand.
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

// Every value a command line can carry; each row binds the members it takes.
struct Args {
  unsigned long id = 0;  // the backup set
  std::string name;
  long value = 0;
  long table = 0;
  unsigned long type = 0;
  std::vector<std::string> words;  // NAME=VALUE pairs, or property names
  bool replace = false;
  bool strict = false;
  std::string store;
  std::string source;
  std::string destination;
  unsigned long pair = 0;
  unsigned long selector = 0;
  unsigned long jobId = 0;
  std::string host;
  std::string hostClient;
  std::string file;
  bool keepGoing = false;
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

std::span<const Command> CommandTable();
std::span<const CommandGroup> CommandGroups();

}  // namespace appmgrctl
