#include "session/NetMessage.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <vector>

#include "platform/base/EvDebug.h"
#include "platform/base/KpSettings.h"

namespace {

int SystemHostName(char* buffer, size_t size) { return ::gethostname(buffer, size); }

std::atomic<NetMessage::HostNameReader> g_hostNameReader{SystemHostName};

// Every request carries the process id and the host name; asking the kernel for them on each
// call would cost two system calls a call. The process id is kept here and renewed in the child
// after fork(); the host name is read again whenever the settings are re-read.

std::atomic<int64_t> g_pid{0};  // 0: not read yet
// Set while one thread reads the host name anew (see CurrentHostName).
std::atomic_flag g_hostNameRefreshing = ATOMIC_FLAG_INIT;

// The child of fork() has a process id of its own, and only the thread that forked: a host name
// refresh that another thread had begun will never end there, so its flag is let go.
void RenewInChild() {
  g_pid.store(static_cast<int64_t>(::getpid()), std::memory_order_relaxed);
  g_hostNameRefreshing.clear(std::memory_order_relaxed);
}

int64_t ProcessId() {
  int64_t pid = g_pid.load(std::memory_order_relaxed);
  if (pid != 0) return pid;
  static std::once_flag registered;
  std::call_once(registered, [] { pthread_atfork(nullptr, nullptr, RenewInChild); });
  pid = static_cast<int64_t>(::getpid());
  g_pid.store(pid, std::memory_order_relaxed);
  return pid;
}

// A host name as read, never changed once published: a reader may still be copying an older
// one when a newer one replaces it, so replaced names are kept (on a list that is never freed)
// rather than deleted. A new one is published only when the name really changed.
struct HostName {
  char text[1024];
};
std::atomic<const HostName*> g_hostName{nullptr};
std::atomic<uint64_t> g_hostNameGeneration{UINT64_MAX};  // settings generation it was read for

void ReadHostName(char (&buffer)[1024]) {
  g_hostNameReader.load()(buffer, sizeof buffer);
  // An over-long name may fill the buffer without a terminator.
  buffer[sizeof buffer - 1] = '\0';
}

// The current host name, read again when the settings generation moved; null while another
// thread is reading it (the caller then reads its own).
const HostName* CurrentHostName() {
  const uint64_t generation = KpSettings::Instance().Generation();
  const HostName* name = g_hostName.load(std::memory_order_acquire);
  if (name != nullptr && g_hostNameGeneration.load(std::memory_order_acquire) == generation) return name;
  // Never waits: a refresh interrupted by fork() in another thread must not block the child.
  if (g_hostNameRefreshing.test_and_set(std::memory_order_acquire)) return nullptr;
  auto* fresh = new HostName;
  ReadHostName(fresh->text);
  if (name != nullptr && std::strcmp(name->text, fresh->text) == 0) {
    delete fresh;
  } else {
    static auto* replaced = new std::vector<const HostName*>();  // guarded by the flag
    if (name != nullptr) replaced->push_back(name);
    g_hostName.store(fresh, std::memory_order_release);
    name = fresh;
  }
  g_hostNameGeneration.store(generation, std::memory_order_release);
  g_hostNameRefreshing.clear(std::memory_order_release);
  return name;
}

}  // namespace

void NetMessage::SetHostNameReaderForTesting(HostNameReader reader) {
  g_hostNameReader.store(reader ? reader : SystemHostName);
  g_hostNameGeneration.store(UINT64_MAX, std::memory_order_release);
}

void NetMessage::initRequestHeader(AppMgrReqHdr& hdr) {
  hdr.version = version;
  hdr.pid = ProcessId();
  hdr.threadId = static_cast<uint64_t>(::pthread_self());
  if (const HostName* name = CurrentHostName()) {
    std::memcpy(hostName_, name->text, std::strlen(name->text) + 1);
  } else {
    ReadHostName(hostName_);
  }
  hdr.hostName = hostName_;
}

int NetMessage::verifyRequestHeader(AppMgrReqHdr&) { return 0; }

void NetMessage::initResponseHeader(AppMgrRespHdr&) {}

int NetMessage::verifyResponseHeader(AppMgrRespHdr& hdr) {
  static constexpr const char* kLabel = "NetMessage::verifyResponseHeader";
  if (hdr.version != version) {
    EvEventWrapper::Error(kLabel, "Msg version mismatch [%lx-%lx].",
                          static_cast<unsigned long>(hdr.version), version);
    return -1;
  }
  // 100 is a status the server reports without it being an error: returned, not logged.
  if (hdr.errorCode != 0 && hdr.errorCode != 100) {
    if (hdr.errorText != nullptr) {
      EvEventWrapper::Error(kLabel, "Error Code [%d] returned - [%s].", hdr.errorCode, hdr.errorText);
    } else {
      EvEventWrapper::Error(kLabel, "Error Code [%d] returned.", hdr.errorCode);
    }
  }
  return hdr.errorCode;
}
