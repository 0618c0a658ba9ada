#include "tools/appmgrctl/Program.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>

#include "tools/appmgrctl/Commands.h"
#include "tools/appmgrctl/Library.h"
#include "tools/appmgrctl/Output.h"

#ifndef APPMGRCTL_VERSION
#define APPMGRCTL_VERSION "unknown"
#endif

namespace appmgrctl {

namespace {

struct Globals {
  std::string lib;
  std::string settings;
  bool json = false;
  bool noCache = false;
};

// One parsed command: its row, its arguments, and (in a batch) its line.
struct Invocation {
  const Command* command = nullptr;
  Args args;
  std::string text;
  int line = 0;  // in a batch
};

enum class Parsed { kOk, kDone, kUsage };

std::string Trim(std::string_view text) {
  size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  size_t end = text.find_last_not_of(" \t");
  return std::string(text.substr(begin, end - begin + 1));
}

// Parses `words` (without the program name). `globals` is null for a batch line, which takes
// only a command. kDone: help or the version was printed on `out`.
Parsed Parse(const std::vector<std::string>& words, Globals* globals, Invocation* inv,
             std::ostream& out, std::string* error) {
  CLI::App app("Reads and changes the App Manager's configuration through libappmgrnet.so.",
               "appmgrctl");
  // Global options may also follow the subcommand: appmgrctl bs lookup 101 --json.
  app.fallthrough();
  app.require_subcommand(1);
  if (globals) {
    app.add_option("--lib", globals->lib,
                   "the library to load (default: $APPMGRNET_LIB, then "
                   "<program folder>/../interfaces/libappmgrnet.so, then the loader's path)");
    app.add_option("--settings", globals->settings,
                   "the settings file; sets APPMGR_SETTINGS before the library is loaded")
        ->check(CLI::ExistingFile);
    app.add_flag("--json", globals->json, "print one JSON document per command");
    app.add_flag("--no-cache", globals->noCache,
                 "switch the library's message cache off before the first call");
    app.set_version_flag("--version", "appmgrctl " APPMGRCTL_VERSION);
  }
  app.footer(
      "Exit status: 0 success, 1 the operation failed, 2 usage error, "
      "3 the library could not be loaded.");

  std::map<std::string_view, CLI::App*> groups;
  for (const CommandGroup& g : CommandGroups()) {
    CLI::App* sub = app.add_subcommand(std::string(g.name), std::string(g.help));
    sub->require_subcommand(1);
    groups[g.name] = sub;
  }
  std::vector<std::pair<CLI::App*, const Command*>> subcommands;
  for (const Command& c : CommandTable()) {
    CLI::App* parent = c.group.empty() ? &app : groups.at(c.group);
    CLI::App* sub = parent->add_subcommand(std::string(c.name), std::string(c.help));
    c.declare(*sub, inv->args);
    subcommands.emplace_back(sub, &c);
  }

  std::vector<std::string> reversed(words.rbegin(), words.rend());  // CLI11 pops from the back
  try {
    app.parse(reversed);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0 && globals) {  // --help, --version
      std::ostringstream ignored;
      app.exit(e, out, ignored);
      return Parsed::kDone;
    }
    *error = e.get_exit_code() == 0 ? "help is not available in a batch" : e.what();
    return Parsed::kUsage;
  }
  for (const auto& [sub, command] : subcommands) {
    if (sub->parsed()) inv->command = command;
  }
  if (!inv->command) {  // require_subcommand makes this unreachable; kept as a usage error
    *error = "no command given";
    return Parsed::kUsage;
  }
  if (!globals && !inv->command->call) {
    *error = "a batch cannot run another batch";
    return Parsed::kUsage;
  }
  return Parsed::kOk;
}

class Printer {
 public:
  Printer(bool json, std::ostream& out, std::ostream& err) : json_(json), out_(out), err_(err) {}

  // A single command's outcome: the bare result, or the error line.
  void Single(const Outcome& o) {
    if (!o.ok) {
      err_ << ErrorLine(o.status, o.error) << '\n';
    } else if (json_) {
      out_ << JsonLine(o.result.data) << '\n';
    } else {
      PrintTable(o.result, out_);
    }
  }

  // A batch line's outcome. JSON lines carry the line and the command, so a reader can match
  // them up when --keep-going ran past a failure; failures are a JSON line too, and the error
  // line on stderr.
  void Batch(const Invocation& inv, const Outcome& o) {
    if (json_) {
      Json doc = {{"line", inv.line}, {"command", inv.text}};
      if (o.ok) {
        doc["result"] = o.result.data;
      } else {
        doc["error"] = {{"status", o.status}};
        if (!o.error.empty()) doc["error"]["text"] = o.error;
      }
      out_ << JsonLine(doc) << '\n';
    } else {
      if (printed_++ > 0) out_ << '\n';
      out_ << "> " << inv.text << '\n';
      if (o.ok) PrintTable(o.result, out_);
    }
    out_.flush();
    if (!o.ok) {
      err_ << "line " << inv.line << ": " << ErrorLine(o.status, o.error) << '\n';
    }
  }

 private:
  bool json_;
  std::ostream& out_;
  std::ostream& err_;
  int printed_ = 0;
};

// Reads and parses every line before anything runs, so a mistake on line 40 does not leave
// lines 1 to 39 applied. False after printing every bad line on `err`.
bool ReadBatch(const std::string& file, std::vector<Invocation>* batch, std::ostream& err) {
  std::ifstream in;
  std::istream* source = &std::cin;
  if (file != "-") {
    in.open(file);
    if (!in) {
      err << "appmgrctl: cannot read " << file << ": " << std::strerror(errno) << '\n';
      return false;
    }
    source = &in;
  }
  bool ok = true;
  std::string line;
  std::ostringstream ignored;
  for (int number = 1; std::getline(*source, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::vector<std::string> words;
    std::string error;
    Invocation inv;
    if (!SplitWords(line, &words, &error)) {
      ok = false;
    } else if (words.empty()) {
      continue;
    } else if (Parse(words, nullptr, &inv, ignored, &error) == Parsed::kOk) {
      inv.line = number;
      inv.text = Trim(line);
      batch->push_back(std::move(inv));
      continue;
    } else {
      ok = false;
    }
    err << "appmgrctl: line " << number << ": " << error << '\n';
  }
  if (source->bad()) {
    err << "appmgrctl: cannot read " << file << '\n';
    ok = false;
  }
  return ok;
}

int RunBatch(Library& lib, const std::vector<Invocation>& batch, bool keepGoing, Printer& printer) {
  int status = kExitOk;
  for (const Invocation& inv : batch) {
    Outcome o = inv.command->call(lib, inv.args);
    printer.Batch(inv, o);
    if (!o.ok) {
      status = kExitFailed;
      if (!keepGoing) break;
    }
  }
  return status;
}

}  // namespace

bool SplitWords(std::string_view line, std::vector<std::string>* words, std::string* error) {
  words->clear();
  std::string word;
  bool inWord = false;
  size_t i = 0;
  while (i < line.size()) {
    char c = line[i];
    if (c == ' ' || c == '\t') {
      if (inWord) words->push_back(std::move(word));
      word.clear();
      inWord = false;
      ++i;
    } else if (c == '#' && !inWord) {
      break;
    } else if (c == '\'') {
      size_t end = line.find('\'', i + 1);
      if (end == std::string_view::npos) {
        *error = "unterminated ' quote";
        return false;
      }
      word.append(line.substr(i + 1, end - i - 1));
      inWord = true;
      i = end + 1;
    } else if (c == '"') {
      inWord = true;
      for (++i;; ++i) {
        if (i >= line.size()) {
          *error = "unterminated \" quote";
          return false;
        }
        if (line[i] == '"') break;
        if (line[i] == '\\' && i + 1 < line.size() && (line[i + 1] == '"' || line[i + 1] == '\\')) {
          ++i;
        }
        word += line[i];
      }
      ++i;
    } else if (c == '\\') {
      if (i + 1 >= line.size()) {
        *error = "a backslash ends the line";
        return false;
      }
      word += line[i + 1];
      inWord = true;
      i += 2;
    } else {
      word += c;
      inWord = true;
      ++i;
    }
  }
  if (inWord) words->push_back(std::move(word));
  return true;
}

int Run(int argc, char** argv, std::ostream& out, std::ostream& err) {
  std::vector<std::string> words(argv + 1, argv + argc);
  Globals globals;
  Invocation inv;
  std::string error;
  switch (Parse(words, &globals, &inv, out, &error)) {
    case Parsed::kDone:
      return kExitOk;
    case Parsed::kUsage:
      err << "appmgrctl: " << error << "\nRun with --help for more information.\n";
      return kExitUsage;
    case Parsed::kOk:
      break;
  }
  std::vector<Invocation> batch;
  const bool isBatch = inv.command->call == nullptr;
  if (isBatch && !ReadBatch(inv.args.file, &batch, err)) return kExitUsage;

  if (!globals.settings.empty()) setenv("APPMGR_SETTINGS", globals.settings.c_str(), 1);
  std::unique_ptr<Library> lib = Library::Load(Library::Candidates(globals.lib), &error);
  if (!lib) {
    err << "appmgrctl: " << error << '\n';
    return kExitNoLibrary;
  }
  if (globals.noCache) lib->EnableClientMessageCache(false);

  Printer printer(globals.json, out, err);
  if (isBatch) return RunBatch(*lib, batch, inv.args.keepGoing, printer);
  Outcome o = inv.command->call(*lib, inv.args);
  printer.Single(o);
  return o.ok ? kExitOk : kExitFailed;
}

}  // namespace appmgrctl
