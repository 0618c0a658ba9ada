// The commands that belong to no interface: the library's counters, the pre-install look-up,
// the cache fill and batch files.
#include <filesystem>
#include <string>

#include "tools/appmgrctl/CommandSupport.h"

namespace appmgrctl {
namespace {

void NoArgs(CLI::App&, Args&) {}

void PreInstallArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("HOST", a.host, "the Controlhost (host or host:port)")->required();
  cmd.add_option("--host-client", a.hostClient,
                 "the client name the Controlhost is known by (default: HOST)");
}

void FillCacheArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("JOBID", a.jobId, "the job whose prepared answers to load")
      ->required()
      ->transform(Number<unsigned long>());
}

void BatchArgs(CLI::App& cmd, Args& a) {
  cmd.add_option("FILE", a.file, "the file of commands, or - for standard input")
      ->required()
      ->check(CLI::Validator(
          [](std::string& text) -> std::string {
            std::error_code ec;
            if (text != "-" && !std::filesystem::is_regular_file(text, ec)) {
              return "no such file: " + text;
            }
            return {};
          },
          ""));
  cmd.add_flag("--keep-going", a.keepGoing, "run the remaining lines after a failed one");
}

Json PoolJson(uint32_t exists, uint64_t open, uint64_t lent, uint64_t attached, uint64_t replaced) {
  return {{"exists", exists != 0},
          {"open", open},
          {"lent", lent},
          {"attached", attached},
          {"replaced", replaced}};
}

Outcome Stats(Library& lib, const Args&) {
  AppMgrNetStatistics s{};
  if (int status = lib.GetClientLibraryStatistics(&s); status != 0) {
    return Outcome::Failed(status);
  }
  return Outcome::Ok(
      Result::Record({{"cacheInUse", s.cacheInUse != 0},
                      {"totalCalls", s.totalMessageCalls},
                      {"skippedCalls", s.skippedMessageCalls},
                      {"cacheEntries", s.messagesInCache},
                      {"cacheBytes", s.cacheBytes},
                      {"maxCachedRequestBytes", s.maxSendMessageSize},
                      {"fullPool", PoolJson(s.fullPoolExists, s.fullPoolOpen, s.fullPoolLent,
                                            s.fullPoolAttached, s.fullPoolReplaced)},
                      {"litePool", PoolJson(s.litePoolExists, s.litePoolOpen, s.litePoolLent,
                                            s.litePoolAttached, s.litePoolReplaced)}}));
}

// GetDataInPreInstallMode and EnableServerSideMessageCache pass on a success flag, not a
// status: non-zero is success and 0 failure, with no text. The library logs the cause, so the
// failure line says where to look.
Outcome PreInstallUrl(Library& lib, const Args& a) {
  std::string url;
  int result = lib.GetDataInPreInstallMode(a.host, url, a.hostClient);
  if (result == 0) {
    return Outcome::Failed(
        result, "no web console address from " + a.host + " (the library's log has the cause)");
  }
  return Outcome::Ok(Result::Record({{"host", a.host}, {"url", url}}));
}

Outcome FillCache(Library& lib, const Args& a) {
  if (int result = lib.EnableServerSideMessageCache(a.jobId); result == 0) {
    return Outcome::Failed(result,
                           "the message cache was not filled for job " + std::to_string(a.jobId) +
                               " (it may be switched off; the library's log has the cause)");
  }
  return Outcome::Ok(Result::Record({{"jobId", a.jobId}, {"loaded", true}}));
}

constexpr Command kCommands[] = {
    {"", "stats", "Show the library's call, cache and session-pool counters", NoArgs, Stats},
    {"", "preinstall-url", "Ask a Controlhost for its web console address before installation",
     PreInstallArgs, PreInstallUrl},
    {"", "fill-cache", "Load the answers the server prepared for a job into the message cache",
     FillCacheArgs, FillCache},
    {"", "batch",
     "Run one command per line of FILE in this one process, so repeated reads can be answered "
     "from the message cache",
     BatchArgs, nullptr},
};

}  // namespace

CommandFamily GeneralCommands() {
  return {{}, kCommands};
}

}  // namespace appmgrctl
