// appmgrctl file ...: the client file content operations of the adapters interface. "file put"
// shows the transfer's progress on standard error: a bar redrawn in place on a terminal, plain
// lines otherwise (a log, a pipe), so the result on standard output stays clean either way.
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

#include "appmgr/AdaptersInterface.h"
#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

using Clock = std::chrono::steady_clock;

// "12.3 MiB" and the like.
std::string Bytes(double bytes) {
  const char* units[] = {"B", "KiB", "MiB", "GiB", "TiB"};
  int unit = 0;
  while (bytes >= 1024 && unit < 4) {
    bytes /= 1024;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
  return text;
}

// "1:05" or "1:02:03".
std::string Duration(double seconds) {
  long s = static_cast<long>(seconds + 0.5);
  char text[32];
  if (s >= 3600) {
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", s / 3600, s / 60 % 60, s % 60);
  } else {
    std::snprintf(text, sizeof text, "%ld:%02ld", s / 60, s % 60);
  }
  return text;
}

// The progress of one put, fed by the library's callback on this thread.
class Progress {
 public:
  Progress(FILE* out, bool terminal) : out_(out), terminal_(terminal) {}

  static void Report(void* self, const char* name, unsigned long long sent, unsigned long long total) {
    static_cast<Progress*>(self)->Update(name, sent, total);
  }

  void Update(const char* name, unsigned long long sent, unsigned long long total) {
    Clock::time_point now = Clock::now();
    if (sent == 0) start_ = now;
    name_ = name;
    sent_ = sent;
    total_ = total;
    // A terminal redraws at most ten times a second; plain lines come once a second, and for
    // the last byte.
    auto gap = terminal_ ? std::chrono::milliseconds(100) : std::chrono::milliseconds(1000);
    if (sent != total && drawn_ && now - last_ < gap) return;
    if (!terminal_ && sent == 0 && total != 0) return;  // a line saying nothing yet
    last_ = now;
    drawn_ = true;
    Draw(now);
  }

  // Ends the bar's line on a terminal.
  void Finish() {
    if (terminal_ && drawn_) std::fputc('\n', out_);
    std::fflush(out_);
  }

  double Seconds() const {
    return drawn_ ? std::chrono::duration<double>(Clock::now() - start_).count() : 0;
  }

 private:
  void Draw(Clock::time_point now) {
    double elapsed = std::chrono::duration<double>(now - start_).count();
    double rate = elapsed > 0 ? double(sent_) / elapsed : 0;
    double percent = total_ ? 100.0 * double(sent_) / double(total_) : 100.0;
    std::string left = rate > 0 ? Duration(double(total_ - sent_) / rate) + " left" : "--:-- left";
    std::string speed = Bytes(rate) + "/s";
    if (terminal_) {
      constexpr int kWidth = 30;
      int filled = static_cast<int>(percent / 100.0 * kWidth);
      std::string bar(filled, '#');
      bar.append(kWidth - filled, '.');
      std::fprintf(out_, "\r%s [%s] %3.0f%% %s of %s, %s, %s\033[K", name_.c_str(), bar.c_str(),
                   percent, Bytes(double(sent_)).c_str(), Bytes(double(total_)).c_str(),
                   speed.c_str(), left.c_str());
    } else {
      std::fprintf(out_, "put %s: %llu of %llu bytes (%.0f%%), %s, %s\n", name_.c_str(), sent_,
                   total_, percent, speed.c_str(), left.c_str());
    }
    std::fflush(out_);
  }

  FILE* out_;
  bool terminal_;
  std::string name_;
  unsigned long long sent_ = 0, total_ = 0;
  Clock::time_point start_ = Clock::now(), last_;
  bool drawn_ = false;
};

// ---------------------------------------------------------------------------------------------
// Arguments

void PutArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("LOCAL", a.file, "the file to put")->required()->check(CLI::ExistingFile);
  cmd.add_option("--client", a.id, "the client the file is registered for")
      ->required()
      ->transform(Number<unsigned long>());
  cmd.add_option("--text", a.text, "the text registered with the file");
  cmd.add_flag("--no-progress", a.noProgress, "show no progress on standard error");
}

void GetContentArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "CLIENT", "the client's id");
  cmd.add_option("TEXT1", a.name, "the first text (appmgrd: a registered path or file name)")
      ->required();
  cmd.add_option("TEXT2", a.text, "the second text");
}

void PushArgs(CLI::App& cmd, Args& a) {
  IdArg(cmd, a.id, "A", "the first value");
  IdArg(cmd, a.id2, "B", "the second value");
  IdArg(cmd, a.id3, "C", "the third value");
  IdArg(cmd, a.id4, "D", "the fourth value");
  cmd.add_option("TEXT", a.text, "the text")->required();
  cmd.add_option("NUMBER", a.number, "the number")->required()->transform(Number<int>());
}

template <class F>
Outcome WithAdapters(Library& lib, F f) {
  return WithInterface<AdaptersInterface>(lib, APPMGR_INTERFACE_ADAPTERS, "adapters", f);
}

// ---------------------------------------------------------------------------------------------
// Handlers

Outcome Put(Library& lib, const Args& a) {
  std::error_code ec;
  uint64_t size = std::filesystem::file_size(a.file, ec);
  if (ec) return Outcome::Failed(-1, "cannot read " + a.file + ": " + ec.message());
  return WithAdapters(lib, [&](AdaptersInterface& adapters) {
    Progress progress(stderr, ::isatty(STDERR_FILENO) == 1);
    bool reporting = !a.noProgress && lib.SetFileTransferProgress(&Progress::Report, &progress);
    Clock::time_point start = Clock::now();
    int status = adapters.setClientFileContent(a.id, a.file, a.text, nullptr);
    double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (reporting) {
      lib.SetFileTransferProgress(nullptr, nullptr);
      progress.Finish();
    }
    if (status != 0) {
      return Outcome::Failed(status, "the file was not put or not registered (the library's log "
                                     "has the cause)");
    }
    std::string name = std::filesystem::path(a.file).filename().string();
    return Outcome::Ok(Result::Record({{"file", name},
                                       {"bytes", size},
                                       {"client", a.id},
                                       {"text", a.text},
                                       {"seconds", std::round(seconds * 1000) / 1000},
                                       {"MBps", seconds > 0 ? std::round(size / seconds / 1e4) / 100 : 0.0}}));
  });
}

Outcome GetContent(Library& lib, const Args& a) {
  return WithAdapters(lib, [&](AdaptersInterface& adapters) {
    int status = adapters.getClientFileContent(a.id, a.name, a.text, nullptr);
    if (status != 0) return Outcome::Failed(status);
    return Outcome::Ok(Result::Record({{"client", a.id}, {"text1", a.name}, {"text2", a.text}, {"sent", true}}));
  });
}

Outcome Push(Library& lib, const Args& a) {
  return WithAdapters(lib, [&](AdaptersInterface& adapters) {
    int status = adapters.pushVSData(a.id, a.id2, a.id3, a.id4, a.text, a.number, nullptr);
    if (status != 0) return Outcome::Failed(status);
    return Outcome::Ok(Result::Record({{"values", {a.id, a.id2, a.id3, a.id4}},
                                       {"text", a.text},
                                       {"number", a.number},
                                       {"sent", true}}));
  });
}

constexpr CommandGroup kGroups[] = {
    {"file", "Client file content: put a file on the server and register it, and the two related requests"},
};

constexpr Command kCommands[] = {
    {"file", "put", "Put a local file into the server's Temp/ folder and register it for a client",
     PutArgs, Put},
    {"file", "get-content", "Send a client file content request (the answer is only whether it was sent)",
     GetContentArgs, GetContent},
    {"file", "push-vs-data", "Push four values, a text and a number (the answer is only whether they were sent)",
     PushArgs, Push},
};

}  // namespace

CommandFamily FileCommands() {
  return {kGroups, kCommands};
}

}  // namespace appmgrctl
