#include "tools/appmgrctl/Program.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <thread>
#include <utility>

#include <CLI/CLI.hpp>

#include "tools/appmgrctl/CommandSupport.h"
#include "tools/appmgrctl/Commands.h"
#include "tools/appmgrctl/Library.h"
#include "tools/appmgrctl/Output.h"

#ifndef APPMGRCTL_VERSION
#define APPMGRCTL_VERSION "unknown"
#endif

namespace appmgrctl {

namespace {

constexpr const char* kSettingsVariable = "APPMGR_SETTINGS";
constexpr const char* kDefaultSettings = "/etc/appmgrnet/appmgrnet.ini";
constexpr const char* kOverlayVariable = "APPMGR_SETTINGS_OVERLAY";
// Global options that take a value, for finding the command word in a command line that did
// not parse.
constexpr const char* kValueOptions[] = {"--lib", "--settings", "--host", "--client-name",
                                         "--timeout"};

struct Globals {
  std::string lib;
  std::string settings;
  std::string host;        // --host HOST[:PORT]
  std::string clientName;  // --client-name
  unsigned long timeout = 0;
  bool json = false;
  bool noCache = false;
  bool version = false;
};

// One parsed command: its row, its arguments, and (in a batch) its line.
struct Invocation {
  const Command* command = nullptr;
  Args args;
  std::string text;
  int line = 0;  // in a batch
};

enum class Parsed { kOk, kDone, kVersion, kUsage };

std::string Trim(std::string_view text) {
  size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  size_t end = text.find_last_not_of(" \t");
  return std::string(text.substr(begin, end - begin + 1));
}

// A value handed to the library inside INI text must stay one value on one line.
CLI::Validator SettingText(const char* what, const char* refused) {
  return CLI::Validator(
      [what, refused](std::string& text) -> std::string {
        if (text.empty()) return std::string(what) + " is empty";
        if (text != Trim(text)) return std::string(what) + " begins or ends with a blank";
        for (char c : text) {
          unsigned char u = static_cast<unsigned char>(c);
          if (u < 0x20 || u == 0x7f || std::strchr(refused, c) != nullptr) {
            std::string bad = u < 0x20 || u == 0x7f ? "control characters"
                              : c == ' '            ? "blanks"
                                                    : "'" + std::string(1, c) + "'";
            return std::string(what) + " may not hold " + bad;
          }
        }
        return {};
      },
      "");
}

// The words that are not options or option values, in order (the command words).
std::vector<std::string> CommandWords(const std::vector<std::string>& words) {
  std::vector<std::string> out;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& w = words[i];
    if (w == "--") break;
    if (!w.empty() && w[0] == '-') {
      bool takesValue = std::find(std::begin(kValueOptions), std::end(kValueOptions), w) !=
                        std::end(kValueOptions);
      if (takesValue) ++i;
      continue;
    }
    out.push_back(w);
  }
  return out;
}

// A plain message for the mistakes CLI11 words obscurely ("A subcommand is required" for an
// unknown command); empty when CLI11's own message is the better one.
std::string DiagnoseCommand(const std::vector<std::string>& words) {
  std::vector<std::string> command = CommandWords(words);
  if (command.empty()) return "no command given (appmgrctl --help lists the commands)";
  const std::string& first = command[0];
  const bool isGroup = std::any_of(CommandGroups().begin(), CommandGroups().end(),
                                   [&](const CommandGroup& g) { return g.name == first; });
  if (!isGroup) {
    const bool known =
        std::any_of(CommandTable().begin(), CommandTable().end(),
                    [&](const Command& c) { return c.group.empty() && c.name == first; });
    return known ? std::string()
                 : "unknown command \"" + first + "\" (appmgrctl --help lists the commands)";
  }
  std::string members;
  bool member = false;
  for (const Command& c : CommandTable()) {
    if (c.group != first) continue;
    members += (members.empty() ? "" : ", ") + std::string(c.name);
    member |= command.size() > 1 && c.name == command[1];
  }
  if (command.size() == 1) return first + " needs a command: " + members;
  if (!member) {
    return "unknown " + first + " command \"" + command[1] + "\" (" + first + " takes " + members +
           ")";
  }
  return {};
}

// Parses `words` (without the program name). `globals` is null for a batch line, which takes
// only a command. kDone: help was printed on `out`; kVersion: --version was asked for.
Parsed Parse(const std::vector<std::string>& words, Globals* globals, Invocation* inv,
             std::ostream& out, std::string* error) {
  CLI::App app("Reads and changes the App Manager's configuration through libappmgrnet.so.",
               "appmgrctl");
  // Global options may also follow the subcommand: appmgrctl bs lookup 101 --json.
  app.fallthrough();
  app.require_subcommand(0, 1);  // none only with --version; checked below
  if (globals) {
    app.add_option("--lib", globals->lib,
                   "the library to load (default: $APPMGR_LIBRARY, then the one beside the "
                   "program's install prefix, then the loader's search for " APPMGRNET_SONAME ")")
        ->type_name("PATH");
    app.add_option("--settings", globals->settings,
                   "the settings file; sets APPMGR_SETTINGS before the library is loaded")
        ->check(CLI::ExistingFile.description(""))
        ->type_name("FILE");
    app.add_option("--host", globals->host,
                   "the App Manager to use, HOST or HOST:PORT ([v6addr]:PORT), instead of the "
                   "settings file's Controlhost; no settings file is needed then")
        ->check(SettingText("the host", " @,\"'"))
        ->type_name("HOST[:PORT]");
    app.add_option("--client-name", globals->clientName,
                   "the client name the App Manager's host is known by (default with --host: "
                   "the host name)")
        ->check(SettingText("the client name", "\"'"))
        ->type_name("NAME");
    app.add_option("--timeout", globals->timeout,
                   "give up on a call that has no answer after SECONDS (0: no bound, the "
                   "library's own time-outs)")
        ->transform(Number<unsigned long>())
        ->check(CLI::Range(0ul, 86400ul).description(""))
        ->type_name("SECONDS");
    app.add_flag("--json", globals->json, "print one JSON document per command");
    app.add_flag("--no-cache", globals->noCache,
                 "switch the library's message cache off before the first call");
    app.add_flag("--version", globals->version,
                 "print the version of appmgrctl and of the library it loads");
    app.set_help_all_flag("--help-all", "print the help of every command");
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
    if (e.get_exit_code() == 0 && globals) {  // --help, --help-all
      std::ostringstream ignored;
      app.exit(e, out, ignored);
      return Parsed::kDone;
    }
    if (e.get_exit_code() == 0) {
      *error = "help is not available in a batch";
    } else if (std::string plain = DiagnoseCommand(words); !plain.empty()) {
      *error = plain;
    } else {
      *error = std::string(e.what()) + "\nRun with --help for more information.";
    }
    return Parsed::kUsage;
  }
  if (globals && globals->version) return Parsed::kVersion;
  for (const auto& [sub, command] : subcommands) {
    if (sub->parsed()) inv->command = command;
  }
  if (!inv->command) {
    *error = DiagnoseCommand(words);
    if (error->empty()) *error = "no command given (appmgrctl --help lists the commands)";
    return Parsed::kUsage;
  }
  if (!globals && !inv->command->call) {
    *error = "a batch cannot run another batch";
    return Parsed::kUsage;
  }
  return Parsed::kOk;
}

// The "error" member of a failure's JSON: the library's status and text, or (status null) a
// failure of appmgrctl itself.
Json ErrorJson(const int* status, const std::string& text) {
  Json e = Json::object();
  if (status) e["status"] = *status;
  if (!text.empty()) e["text"] = text;
  return e;
}

// A failure that is not the library's: one line on stderr and, under --json, a JSON error
// object on stdout, so a script reading stdout always gets a document.
void ReportFailure(bool json, const std::string& text, std::ostream& out, std::ostream& err) {
  err << "appmgrctl: " << text << '\n';
  if (json) out << JsonLine(Json{{"error", ErrorJson(nullptr, text)}}) << '\n';
}

class Printer {
 public:
  Printer(bool json, std::ostream& out, std::ostream& err) : json_(json), out_(out), err_(err) {}

  // A single command's outcome: the bare result, or the error line (and its JSON).
  void Single(const Outcome& o) {
    if (!o.ok) {
      err_ << "appmgrctl: " << ErrorLine(o.status, o.error) << '\n';
      if (json_) out_ << JsonLine(Json{{"error", ErrorJson(&o.status, o.error)}}) << '\n';
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
        doc["error"] = ErrorJson(&o.status, o.error);
      }
      out_ << JsonLine(doc) << '\n';
    } else {
      if (printed_++ > 0) out_ << '\n';
      out_ << "> " << inv.text << '\n';
      if (o.ok) PrintTable(o.result, out_);
    }
    out_.flush();
    if (!o.ok) {
      err_ << "appmgrctl: line " << inv.line << ": " << ErrorLine(o.status, o.error) << '\n';
    }
  }

  bool json() const { return json_; }

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

// The bound of --timeout on each call. A call that has no answer within it ends the program:
// the failure is printed (as the call's own would be) and the exit status is 1. A change that
// ran out of time may still have been made by the server.
//
// The library is handed the same bound as settings and should fail the call itself by then;
// this watch, a second later, makes the bound hold whatever the library does.
//
// Thread-safety: Arm and Disarm from the main thread; the watch thread prints only while the
// main thread is inside an armed call, and holds the lock from its check to the exit, so a call
// that returns at the last moment never prints beside it.
class CallDeadline {
 public:
  CallDeadline(unsigned long seconds, std::ostream& out, std::ostream& err)
      : seconds_(seconds), out_(out), err_(err), thread_([this] { Watch(); }) {}
  ~CallDeadline() {
    {
      std::lock_guard lock(mutex_);
      stop_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }
  CallDeadline(const CallDeadline&) = delete;
  CallDeadline& operator=(const CallDeadline&) = delete;

  // The text of the failure, and the JSON of it (empty: none), for the call about to start.
  void Arm(std::string errLine, std::string outLine) {
    std::lock_guard lock(mutex_);
    armed_ = true;
    deadline_ = std::chrono::steady_clock::now() + std::chrono::seconds(seconds_ + kGraceSeconds);
    errLine_ = std::move(errLine);
    outLine_ = std::move(outLine);
    changed_.notify_all();
  }
  void Disarm() {
    std::lock_guard lock(mutex_);
    armed_ = false;
    changed_.notify_all();
  }
  std::string Text() const {
    return "no answer within " + std::to_string(seconds_) + " s (--timeout)";
  }

 private:
  // The library's own failure at the bound comes first when it applies the bound itself.
  static constexpr unsigned long kGraceSeconds = 1;

  void Watch() {
    std::unique_lock lock(mutex_);
    while (!stop_) {
      if (!armed_) {
        changed_.wait(lock);
        continue;
      }
      if (changed_.wait_until(lock, deadline_) == std::cv_status::timeout && armed_ &&
          std::chrono::steady_clock::now() >= deadline_) {
        if (!outLine_.empty()) out_ << outLine_ << '\n';
        out_.flush();
        err_ << errLine_ << '\n';
        err_.flush();
        std::_Exit(kExitFailed);  // the call is still running inside the library
      }
    }
  }

  const unsigned long seconds_;
  std::ostream& out_;
  std::ostream& err_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool armed_ = false;
  bool stop_ = false;
  std::chrono::steady_clock::time_point deadline_;
  std::string errLine_, outLine_;
  std::thread thread_;
};

// Runs one call, under the deadline when there is one.
Outcome Call(Library& lib, const Invocation& inv, CallDeadline* deadline, bool json) {
  if (deadline) {
    const std::string text = deadline->Text();
    if (inv.line > 0) {
      deadline->Arm("appmgrctl: line " + std::to_string(inv.line) + ": " + text,
                    json ? JsonLine(Json{{"line", inv.line},
                                         {"command", inv.text},
                                         {"error", ErrorJson(nullptr, text)}})
                         : std::string());
    } else {
      deadline->Arm("appmgrctl: " + text,
                    json ? JsonLine(Json{{"error", ErrorJson(nullptr, text)}}) : std::string());
    }
  }
  Outcome o = inv.command->call(lib, inv.args);
  if (deadline) deadline->Disarm();
  return o;
}

int RunBatch(Library& lib, const std::vector<Invocation>& batch, bool keepGoing, Printer& printer,
             CallDeadline* deadline) {
  int status = kExitOk;
  for (const Invocation& inv : batch) {
    Outcome o = Call(lib, inv, deadline, printer.json());
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

namespace {

// Commands that never ask the settings' Controlhost: the counters, and the pre-install look-up,
// which asks the host it is given.
bool UsesTheControlhost(const Command& c) {
  return !(c.group.empty() && (c.name == "stats" || c.name == "preinstall-url"));
}

// The library would read a missing settings file as an empty one and fail with a connect
// string that names no host. Said plainly instead, before anything is loaded; empty when the
// file is there, or when --host or an overlay in the environment may make it unnecessary (the
// library then names what is missing itself).
std::string MissingSettings(const Globals& g) {
  if (!g.host.empty()) return {};
  if (const char* overlay = std::getenv(kOverlayVariable); overlay && *overlay) return {};
  std::string path = g.settings;
  std::string from = "--settings";
  if (path.empty()) {
    const char* env = std::getenv(kSettingsVariable);
    path = env && *env ? env : kDefaultSettings;
    from = env && *env ? std::string("$") + kSettingsVariable : "the default";
  }
  if (::access(path.c_str(), R_OK) == 0) return {};
  const int error = errno;
  return "no settings to find the App Manager: " + path + " (" + from + ") " +
         (error == ENOENT ? std::string("does not exist")
                          : "cannot be read: " + std::string(std::strerror(error))) +
         "; name the server with --host HOST[:PORT], or a settings file with --settings FILE or " +
         kSettingsVariable;
}

// The settings appmgrctl hands the library for --host, --client-name and --timeout, as INI text
// for the overlay (docs/settings.md); empty when there are none.
std::string SettingsOverlay(const Globals& g) {
  std::string ini;
  if (!g.host.empty() || !g.clientName.empty()) {
    ini += "[Controlhost]\n";
    if (!g.host.empty()) {
      // The host named is the one used: a lite App Manager of the settings file would be
      // preferred to it, so the overlay hides that one.
      ini += "sHOSTNAME = " + g.host + "\nsAPPMGRHOSTNAME =\nsAPPMGRCLIENTNAME =\n";
    }
    std::string client = g.clientName;
    if (client.empty()) {  // the host name itself, without a port or brackets
      client = g.host;
      if (!client.empty() && client[0] == '[') {
        client = client.substr(1, client.find(']') - 1);
      } else if (std::count(client.begin(), client.end(), ':') == 1) {
        client = client.substr(0, client.find(':'));
      }
    }
    ini += "sCLIENTNAME = " + client + "\n";
  }
  if (g.timeout > 0) {
    // The overall bound, and the waits the library bounds separately today (docs/settings.md).
    const std::string n = std::to_string(g.timeout);
    ini += "[Network]\nnCallTimeoutSeconds = " + n + "\nnIoTimeoutSeconds = " + n +
           "\nnAttachTimeoutSeconds = " + n + "\n";
  }
  return ini;
}

int PrintVersion(const Globals& g, std::ostream& out, std::ostream& err) {
  out << "appmgrctl " APPMGRCTL_VERSION "\n";
  std::string error;
  std::unique_ptr<Library> lib = Library::Load(Library::Candidates(g.lib), &error);
  if (!lib) {
    out.flush();
    err << "appmgrctl: " << error << '\n';
    return kExitNoLibrary;
  }
  out << "library " << lib->file() << " ("
      << (lib->version().empty() ? "it does not tell its version"
                                 : "libappmgrnet " + lib->version())
      << ")\n";
  return kExitOk;
}

}  // namespace

int Run(int argc, char** argv, std::ostream& out, std::ostream& err) {
  std::vector<std::string> words(argv + 1, argv + argc);
  Globals globals;
  Invocation inv;
  std::string error;
  switch (Parse(words, &globals, &inv, out, &error)) {
    case Parsed::kDone:
      return kExitOk;
    case Parsed::kVersion:
      return PrintVersion(globals, out, err);
    case Parsed::kUsage:
      // --json may not have been read when the line did not parse: look for it.
      ReportFailure(std::find(words.begin(), words.end(), "--json") != words.end(), error, out,
                    err);
      return kExitUsage;
    case Parsed::kOk:
      break;
  }
  std::vector<Invocation> batch;
  const bool isBatch = inv.command->call == nullptr;
  if (isBatch && !ReadBatch(inv.args.file, &batch, err)) {
    if (globals.json)
      out << JsonLine(Json{{"error", ErrorJson(nullptr, "the batch has errors")}}) << '\n';
    return kExitUsage;
  }

  const bool needsControlhost =
      isBatch ? std::any_of(batch.begin(), batch.end(),
                            [](const Invocation& i) { return UsesTheControlhost(*i.command); })
              : UsesTheControlhost(*inv.command);
  if (std::string missing = needsControlhost ? MissingSettings(globals) : ""; !missing.empty()) {
    ReportFailure(globals.json, missing, out, err);
    return kExitUsage;
  }
  if (!globals.settings.empty()) setenv(kSettingsVariable, globals.settings.c_str(), 1);
  if (std::string overlay = SettingsOverlay(globals); !overlay.empty()) {
    // Added to an overlay the caller's environment may hold; the later keys win.
    const char* existing = std::getenv(kOverlayVariable);
    if (existing && *existing) overlay = std::string(existing) + "\n" + overlay;
    setenv(kOverlayVariable, overlay.c_str(), 1);
  }
  std::unique_ptr<Library> lib = Library::Load(Library::Candidates(globals.lib), &error);
  if (!lib) {
    ReportFailure(globals.json, error, out, err);
    return kExitNoLibrary;
  }
  if (globals.noCache) lib->EnableClientMessageCache(false);

  std::unique_ptr<CallDeadline> deadline;
  if (globals.timeout > 0) deadline = std::make_unique<CallDeadline>(globals.timeout, out, err);
  Printer printer(globals.json, out, err);
  if (isBatch) return RunBatch(*lib, batch, inv.args.keepGoing, printer, deadline.get());
  Outcome o = Call(*lib, inv, deadline.get(), globals.json);
  printer.Single(o);
  return o.ok ? kExitOk : kExitFailed;
}

}  // namespace appmgrctl
