// The appmgrctl program: command line in, exit status out.
//
// Run parses the command line against the command table (a mistake exits 2 before the library
// is touched), checks that a command which needs the settings file has one (or --host), sets
// APPMGR_SETTINGS from --settings and hands --host, --client-name and --timeout to the library
// in the settings overlay (APPMGR_SETTINGS_OVERLAY), loads the library (exit 3 when it cannot),
// switches the message cache off for --no-cache, runs the command (bounded by --timeout) and
// prints its Outcome: the Result on `out` as a table or one JSON line, or the error line
// "appmgrctl: ..." on `err` and, under --json, a JSON error object on `out` (exit 1).
//
// A batch reads its whole file and parses every line before it loads the library, so a
// mistake on any line runs nothing. The lines then run in order in this one process, sharing
// the library's message cache; the first failure stops it unless --keep-going.
//
// Thread-safety: single-threaded, as a command-line program is.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace appmgrctl {

// Exit statuses.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;     // the library reported a failure
inline constexpr int kExitUsage = 2;      // the command line (or a batch line) is wrong
inline constexpr int kExitNoLibrary = 3;  // the library could not be loaded

int Run(int argc, char** argv, std::ostream& out, std::ostream& err);

// Splits one batch line into words the way a shell does for simple cases: blanks separate
// words; '...' is literal; "..." allows \" and \\; a backslash outside quotes takes the next
// character literally; an unquoted '#' at the start of a word starts a comment. False with
// *error on an unterminated quote or a trailing backslash.
bool SplitWords(std::string_view line, std::vector<std::string>* words, std::string* error);

}  // namespace appmgrctl
