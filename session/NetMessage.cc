#include "session/NetMessage.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>

#include "platform/base/EvDebug.h"

namespace {

int SystemHostName(char* buffer, size_t size) { return ::gethostname(buffer, size); }

std::atomic<NetMessage::HostNameReader> g_hostNameReader{SystemHostName};

}  // namespace

void NetMessage::SetHostNameReaderForTesting(HostNameReader reader) {
  g_hostNameReader.store(reader ? reader : SystemHostName);
}

void NetMessage::initRequestHeader(AppMgrReqHdr& hdr) {
  hdr.version = version;
  hdr.pid = static_cast<int64_t>(::getpid());
  hdr.threadId = static_cast<uint64_t>(::pthread_self());
  g_hostNameReader.load()(hostName_, sizeof hostName_);
  // An over-long name may fill the buffer without a terminator.
  hostName_[sizeof hostName_ - 1] = '\0';
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
