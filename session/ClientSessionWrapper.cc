#include "session/ClientSessionWrapper.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/info/KPPlatformInfo.h"
#include "platform/net/MangleHostName.h"
#include "platform/xml/AppMessages.h"
#include "protocol/Messages.h"
#include "session/AppMgrSessionPool.h"
#include "session/MessageCache.h"
#include "session/NetMessage.h"

std::atomic<bool> ClientSessionWrapper::m_gbUseCacheMap{true};
std::atomic<unsigned long> ClientSessionWrapper::m_gnServiceCacheExpirationTime{5};
std::atomic<unsigned long> ClientSessionWrapper::m_nTotalMessageCalls{0};
std::atomic<unsigned long> ClientSessionWrapper::m_nSkippedMessageCalls{0};
std::atomic<unsigned long> ClientSessionWrapper::m_nMaxSendMessageSize{0};
std::atomic<long> ClientSessionWrapper::m_nJobId{0};

void ClientSessionWrapper::resetClassStateForTesting() {
  m_gbUseCacheMap = true;
  m_gnServiceCacheExpirationTime = 5;
  m_nTotalMessageCalls = 0;
  m_nSkippedMessageCalls = 0;
  m_nMaxSendMessageSize = 0;
  m_nJobId = 0;
}

ClientSessionWrapper::ClientSessionWrapper(unsigned long serviceCode, bool skipLitePool)
    : m_nServiceCode(serviceCode), m_bSkipLitePool(skipLitePool) {
  static constexpr const char* kLabel = "ClientSessionWrapper::ClientSessionWrapper";
  CLmError error = initSessionPool();
  m_event.setLabel(kLabel);
  if (error.IsError()) {
    m_event.Debug(1, "Could not get session from pool. Error:[%s]", error.AsString().c_str());
    m_pPool = nullptr;
    m_pSession = nullptr;
    m_bPooledSession = false;
  } else {
    m_bPooledSession = true;
  }
  if (m_pSession == nullptr) m_bPooledSession = false;
  if (!m_bPooledSession) m_pSession = new CKpNetwork();  // private; send() connects it

  m_bFoundInCache = m_bCriticalMessage = m_bNoCacheMessage = false;
  m_pCache = CMessageCacheSingleton::Instance();
  m_event.setLabel(kLabel);
  if (m_pCache && CMessageCacheSingleton::m_nDisableMessageCacheRegistry) {
    m_gbUseCacheMap = false;
    m_event.Debug(4, "App message cache disabled as nDisableAppMessageCache set.");
  }
  // The first wrapper of a process settles caching for every later one. The switch is only
  // ever written with its final value: other threads read it at any moment, and a moment in
  // which it read "off" would let a critical answer skip clearing the cache.
  if (m_gbUseCacheMap && KPPI_Focus::AmIAService()) {
    if (m_pCache && CMessageCacheSingleton::m_nIsLaptop) {
      unsigned long minutes = m_gnServiceCacheExpirationTime;
      KPPlatformInfo(KPPI_Focus::getFocus())
          .getNumber("EventManager", "nServiceCacheExpirationTimeMinutes", &minutes);
      m_gnServiceCacheExpirationTime = minutes;
      m_event.Debug(4, "App message cache is enabled with expiration time [%d]minutes as this is a "
                       "service process on a laptop.",
                    static_cast<int>(minutes));
    } else {
      m_gbUseCacheMap = false;
      m_event.Debug(4, "App message cache is disabled as this is a service process and not a laptop.");
    }
  }
}

ClientSessionWrapper::~ClientSessionWrapper() {
  cleanUpRecvBuf(nullptr);
  if (m_bPooledSession) {
    m_pPool->releaseSessionObject(m_pSession);
  } else if (m_pSession) {
    bool timedOut = false;
    m_pSession->Disconnect(120, timedOut);
    delete m_pSession;
    m_pSession = nullptr;
  }
}

CLmError ClientSessionWrapper::initSessionPool() {
  m_event.setLabel("ClientSessionWrapper::initSessionPool");
  CLmError result;
  if (m_bSkipLitePool) {
    m_event.Debug(10, "Skipping app manager lite session pool and getting CH app manager connection pool");
  } else {
    m_pPool = AppMgrSessionPoolSingleton::getAppMgrLiteSessionPoolInstance();
    if (m_pPool) result = m_pPool->getSessionObject(m_pSession);
  }
  if (m_pPool == nullptr || result.IsError()) {
    static const std::string kService(kAppMgrServiceName);  // not a string built per call
    m_pPool = AppMgrSessionPoolSingleton::getSessionPoolInstance(kService);
    if (m_pPool) {
      result = m_pPool->getSessionObject(m_pSession);
    } else {
      result = CLmError(774, "Could not create session pool object");
    }
  }
  return result;
}

int ClientSessionWrapper::LastError(std::string* text) {
  unsigned long code = 0;
  std::string t;
  m_pSession->GetLastErrorGenericText(&code, t, 0);
  if (text) *text = t;
  return code ? static_cast<int>(code) : -1;
}

int ClientSessionWrapper::connectToCH(const std::string& service, std::string& errorString) {
  static constexpr const char* kLabel = "ClientSessionWrapper::connectToCH";
  m_event.setLabel(kLabel);
  char serviceName[256] = {};
  std::snprintf(serviceName, sizeof serviceName, "%s", service.c_str());

  const std::string focus = KPPI_Focus::getFocus();
  KPPI_Fleetmember platform;
  platform.setFocus(focus);
  const char* controlhost = nullptr;
  if (!platform.invalidKPPlatform()) controlhost = platform.getControlhosterHostName();

  char clientName[257], controlhostClient[257];
  getConnectionClientNames(clientName, controlhostClient);

  std::string connect = MangleHostName(controlhost ? controlhost : "", controlhostClient, 8400, 8402);
  m_event.Debug(1, "[%s] Connnecting to [%s] service on Controlhoster.", kLabel, serviceName);
  bool timedOut = false;
  CLmError error = m_pSession->Attach_RemoteService(connect, serviceName, clientName, 120, timedOut);
  if (!error.IsError()) return 0;
  int code = LastError(nullptr);
  errorMsg(&errorString, "[%s] Error connecting to svc [%s] on CH. [%s]", kLabel, serviceName,
           error.AsString().c_str());
  return code;
}

namespace {

// A failed send that a new connection could cure: the connection broke, closed or timed out.
bool IsConnectionError(int code) {
  return code == kKpErrDisconnected || code == kKpErrIo || code == kKpErrTimeout;
}

}  // namespace

int ClientSessionWrapper::Resend(std::string& errorString) {
  static constexpr const char* kLabel = "ClientSessionWrapper::send";
  m_event.setLabel(kLabel);
  m_bResent = true;
  bool timedOut = false;
  kpsStatus status = 0;
  m_pSession->AbortConnection(status, 120, timedOut);
  m_event.Debug(4, "Lost connnection to server. Re-attaching to controlhoster");
  int code = connectToCH(kAppMgrServiceName, errorString);
  m_event.setLabel(kLabel);
  std::string text;
  if (code != 0) {
    code = LastError(&text);
    errorMsg(&errorString, "[%s] Re-attach failed. Connection error [%s]", kLabel, text.c_str());
    return code;
  }
  m_event.Debug(4, " Re-attach succeeded. re-sending request to server.");
  CLmError error = m_pSession->SendXDRMessage(m_nSentMsgId, &m_sendBuffer, 0, -1, timedOut);
  if (error.IsError()) {
    code = LastError(&text);
    errorMsg(&errorString, "Error [%s] re-sending request to server.", text.c_str());
    return code;
  }
  m_event.Debug(4, "Re-send to server successful.");
  return 0;
}

int ClientSessionWrapper::send(unsigned long msgId, void* record, unsigned long length,
                               std::string& errorString) {
  static constexpr const char* kLabel = "ClientSessionWrapper::send";
  m_event.setLabel(kLabel);
  m_sendBuffer.setExternalBuffer(static_cast<char*>(record), length);
  m_nSentMsgId = msgId;
  m_bResent = false;
  if (EvLog::On(4)) m_event.Debug(4, "Entry(msgId=%d(%s))", static_cast<int>(msgId), KPS_PRIM_STRING(msgId));
  m_nTotalMessageCalls.fetch_add(1, std::memory_order_relaxed);
  m_pSession->setJobId(m_nJobId.load(std::memory_order_relaxed));

  int result = 0;
  if (!checkMessageInCache()) {
    m_event.setLabel(kLabel);
    if (!m_bPooledSession) {
      int code = connectToCH(kAppMgrServiceName, errorString);
      m_event.setLabel(kLabel);
      if (code != 0) {
        m_event.Error("Cannot connect to [%s], errorString[%s], errorCode[%d]", kAppMgrServiceName,
                      errorString.c_str(), code);
        return code;
      }
    }
    bool timedOut = false;
    CLmError error = m_pSession->SendXDRMessage(msgId, &m_sendBuffer, 0, -1, timedOut);
    if (error.IsError() && !IsConnectionError(error.GetErrorCode())) {
      // A request that cannot be encoded (too large for a frame, no record of its length) is
      // the caller's: a new connection would refuse it again, so nothing is retried.
      std::string text;
      result = LastError(&text);
      errorMsg(&errorString, "[%s] Request not sent. [%s]", kLabel, text.c_str());
    } else if (error.IsError()) {
      result = Resend(errorString);
    }
  }
  m_event.setLabel(kLabel);
  if (EvLog::On(4)) {
    m_event.Debug(4, "Exit(msgId=%d(%s)), errorCode[%d]", static_cast<int>(msgId),
                  KPS_PRIM_STRING(msgId), result);
  }
  return result;
}

int ClientSessionWrapper::receive(unsigned long msgId, void* record, unsigned long length,
                                  std::string& errorString) {
  static constexpr const char* kLabel = "ClientSessionWrapper::receive";
  m_event.setLabel(kLabel);
  if (EvLog::On(4)) m_event.Debug(4, "Entry(msgId=%d(%s))", static_cast<int>(msgId), KPS_PRIM_STRING(msgId));
  cleanUpRecvBuf(nullptr);
  m_event.setLabel(kLabel);
  m_recvBuffer.setExternalBuffer(static_cast<char*>(record), length);

  int result = 0;
  if (m_bFoundInCache) {
    if (!getMessageFromCache(msgId)) {
      m_event.setLabel(kLabel);
      result = -1;
      errorMsg(&errorString, "[%s] Failed to get message from cache.", kLabel);
      m_event.Debug(1, "%s", errorString.c_str());
    }
  } else {
    bool timedOut = false;
    const unsigned long expected = msgId;
    CLmError error = m_pSession->ReceiveXDRMessage(&msgId, &m_recvBuffer, nullptr, 0, -1, timedOut);
    if (error.IsError() && !m_bResent && m_pSession->RequestNeverReachedPeer()) {
      // The request went out on a connection the server had already closed (a restart while the
      // session sat in the pool) and no server read it: this is the lost connection of send(),
      // found one step later, and it gets the same one re-attach and re-send.
      result = Resend(errorString);
      m_event.setLabel(kLabel);
      if (result == 0) {
        msgId = expected;
        error = m_pSession->ReceiveXDRMessage(&msgId, &m_recvBuffer, nullptr, 0, -1, timedOut);
      }
    }
    if (result == 0 && error.IsError()) {  // (a failed recovery has filled errorString)
      std::string text;
      result = LastError(&text);
      errorMsg(&errorString, "[%s] Error receiving message. [%s]", kLabel, text.c_str());
      m_event.Debug(1, "%s", errorString.c_str());
    } else if (result == 0) {
      m_nReceivedMsgId = msgId;
      m_bRecvBufferFreed = false;
      setMessageInCache();
    }
  }
  m_event.setLabel(kLabel);
  // The id as the session may have updated it: the one actually received.
  if (EvLog::On(4)) {
    m_event.Debug(4, "Exit(msgId=%d(%s)), error(%d)", static_cast<int>(msgId), KPS_PRIM_STRING(msgId),
                  result);
  }
  return result;
}

void ClientSessionWrapper::cleanUpRecvBuf(std::string* errorString) {
  static constexpr const char* kLabel = "ClientSessionWrapper::cleanUpRecvBuf";
  if (m_bRecvBufferFreed) return;
  CLmError error = m_pSession->FreeReceivedMessage(m_nReceivedMsgId, &m_recvBuffer);
  if (!error.IsError()) {
    m_bRecvBufferFreed = true;
  } else {
    m_event.setLabel(kLabel);
    errorMsg(errorString, "[%s] Error cleaning up received message. [%s]", kLabel,
             error.AsString().c_str());
  }
}

void ClientSessionWrapper::errorMsg(std::string* errorString, const char* format, ...) {
  char buffer[4096];
  va_list ap;
  va_start(ap, format);
  std::vsnprintf(buffer, sizeof buffer, format, ap);
  va_end(ap);
  if (errorString) *errorString = buffer;
  m_event.Error("%s", buffer);
}

namespace {

constexpr int kEncodeRoom = 65536;

// The encoding room of the calling thread: 64 KiB, taken once per thread and only enlarged for
// larger messages. nullptr when memory is short (the request is then simply not cached).
unsigned char* EncodeRoom() {
  thread_local std::unique_ptr<unsigned char[]> room(new (std::nothrow) unsigned char[kEncodeRoom]);
  return room.get();
}

// Encodes the record `buffer` describes; the bytes are in *out (the thread's room or `big`).
// False when it cannot be encoded or memory is short; a needed length of 0 is also false.
bool EncodeForCache(unsigned long msgId, kpsDatabuf_v2& buffer, int direction,
                    std::unique_ptr<unsigned char[]>& big, const unsigned char** out, int* length) {
  unsigned char* room = EncodeRoom();
  if (room == nullptr) return false;
  unsigned long valid = buffer.length();
  int n = kEncodeRoom;
  int code = 0;
  CLmError e = CKpNetwork::ConvertXdr(KPNETWORK_XDR_ENCODE, msgId, room, &buffer, &n, &direction, code);
  buffer.setLength(valid);
  if (!e.IsError()) {
    *out = room;
    *length = n;
    return n > 0;
  }
  if (code != kKpErrLimit || n <= kEncodeRoom) return false;
  big.reset(new (std::nothrow) unsigned char[static_cast<size_t>(n)]);
  if (!big) return false;
  e = CKpNetwork::ConvertXdr(KPNETWORK_XDR_ENCODE, msgId, big.get(), &buffer, &n, &direction, code);
  buffer.setLength(valid);
  if (e.IsError() || n == 0) return false;
  *out = big.get();
  *length = n;
  return true;
}

}  // namespace

bool ClientSessionWrapper::checkMessageInCache() {
  static constexpr const char* kLabel = "ClientSessionWrapper::checkMessageInCache";
  m_bFoundInCache = false;
  m_pRequestData.reset();
  m_pResponseData.reset();
  if (!m_gbUseCacheMap || m_pCache == nullptr) return false;
  m_event.setLabel(kLabel);
  auto* record = reinterpret_cast<AppMgrReqHdr*>(m_sendBuffer.data());
  if (record == nullptr) {
    m_bNoCacheMessage = true;
    m_event.Debug(0, "Message (msgId=%d(%s)) doesn't pass request data. Please validate code with "
                     "that message. Skipping cache check.",
                  static_cast<int>(m_nSentMsgId), KPS_PRIM_STRING(m_nSentMsgId));
    return false;
  }
  m_pCache->CheckMessageType(m_nSentMsgId, m_bCriticalMessage, m_bNoCacheMessage);
  if (m_bNoCacheMessage) {
    if (EvLog::On(4)) {
      m_event.Debug(4, "No cache message detected (msgId=%d(%s)). Skipping cache check.",
                    static_cast<int>(m_nSentMsgId), KPS_PRIM_STRING(m_nSentMsgId));
    }
    return false;
  }
  // The same request from another process or thread must find the same key.
  int64_t pid = record->pid;
  uint64_t threadId = record->threadId;
  record->pid = 0;
  record->threadId = 0;
  std::unique_ptr<unsigned char[]> big;
  const unsigned char* bytes = nullptr;
  int length = 0;
  if (EncodeForCache(m_nSentMsgId, m_sendBuffer, KPNETWORK_XDR_REQUEST, big, &bytes, &length)) {
    long stamp = KPPI_Focus::AmIAService() ? CMessageCacheSingleton::Now() : 0;
    m_pRequestData = std::make_shared<CMessageData>(m_nSentMsgId, bytes, static_cast<unsigned long>(length), stamp);
    if (m_pCache->CheckMessage(m_pRequestData, m_pResponseData)) {
      m_bFoundInCache = true;
      unsigned long skipped = m_nSkippedMessageCalls.fetch_add(1, std::memory_order_relaxed) + 1;
      if (EvLog::On(4)) {
        m_event.Debug(4, "Message found in cache (msgId=%d(%s)), skipping server call (total skipped "
                         "calls [%d] out of [%d])",
                      static_cast<int>(m_nSentMsgId), KPS_PRIM_STRING(m_nSentMsgId),
                      static_cast<int>(skipped), static_cast<int>(m_nTotalMessageCalls.load()));
      }
    } else {
      m_pResponseData.reset();
    }
  }
  record->pid = pid;
  record->threadId = threadId;
  return m_bFoundInCache;
}

void ClientSessionWrapper::setMessageInCache() {
  static constexpr const char* kLabel = "ClientSessionWrapper::setMessageInCache";
  if (!m_gbUseCacheMap || m_pCache == nullptr) return;
  m_event.setLabel(kLabel);
  if (m_bCriticalMessage) {
    m_event.Debug(8, "Critical message detected (msgId=%d(%s)). Existing cache will be cleared.",
                  static_cast<int>(m_nSentMsgId), KPS_PRIM_STRING(m_nSentMsgId));
    m_pCache->ClearMessageCache();
    return;
  }
  if (m_bFoundInCache || m_bNoCacheMessage || !m_pRequestData) return;
  std::unique_ptr<unsigned char[]> big;
  const unsigned char* bytes = nullptr;
  int length = 0;
  if (!EncodeForCache(m_nReceivedMsgId, m_recvBuffer, KPNETWORK_XDR_RESPONSE, big, &bytes, &length)) return;
  auto response = std::make_shared<CMessageData>(m_nReceivedMsgId, bytes, static_cast<unsigned long>(length), 0);
  std::shared_ptr<CMessageData> existing;
  if (m_pCache->CheckMessage(m_pRequestData, existing)) return;
  m_event.setLabel(kLabel);
  if (!m_pCache->InsertMessage(m_pRequestData, response)) {
    m_event.Error("Failed to insert messages in the cache [%d(%s)][%d(%s)].", static_cast<int>(m_nSentMsgId),
                  KPS_PRIM_STRING(m_nSentMsgId), static_cast<int>(m_nReceivedMsgId),
                  KPS_PRIM_STRING(m_nReceivedMsgId));
    return;
  }
  unsigned long size = m_pRequestData->m_nlength;
  unsigned long largest = m_nMaxSendMessageSize.load(std::memory_order_relaxed);
  while (size > largest && !m_nMaxSendMessageSize.compare_exchange_weak(largest, size)) {
  }
  if (EvLog::On(4)) {
    m_event.Debug(4, "Messages in the cache [%d], total cache size [%d]Kb. Max send message size [%d]bytes.",
                  static_cast<int>(m_pCache->GetMessageNumberInCache()),
                  static_cast<int>(m_pCache->GetMessageCacheSize() / 1024),
                  static_cast<int>(m_nMaxSendMessageSize.load()));
  }
}

bool ClientSessionWrapper::getMessageFromCache(unsigned long msgId) {
  static constexpr const char* kLabel = "ClientSessionWrapper::getMessageFromCache";
  if (!m_gbUseCacheMap) return false;
  m_event.setLabel(kLabel);
  char text[512];
  if (!m_bFoundInCache || !m_pRequestData || !m_pResponseData) {
    std::snprintf(text, sizeof text, "Warning. Message [%d(%s)] not found in the cache.",
                  static_cast<int>(m_nSentMsgId), KPS_PRIM_STRING(m_nSentMsgId));
    m_event.Debug(1, "%s", text);
    return false;
  }
  if (msgId != m_pResponseData->m_nMsgId) {
    std::snprintf(text, sizeof text,
                  "Incorrect message id [%d(%s)] found in the cache for requested message [%d(%s)].",
                  static_cast<int>(m_pResponseData->m_nMsgId), KPS_PRIM_STRING(m_pResponseData->m_nMsgId),
                  static_cast<int>(msgId), KPS_PRIM_STRING(msgId));
    m_event.Debug(1, "%s", text);
    return false;
  }
  if (EvLog::On(4)) {
    m_event.Debug(4, "Get message (msgId=%d(%s)) from cache.", static_cast<int>(msgId), KPS_PRIM_STRING(msgId));
  }
  m_nReceivedMsgId = m_pResponseData->m_nMsgId;
  unsigned long valid = m_recvBuffer.length();
  int length = static_cast<int>(m_pResponseData->m_nlength);
  int direction = KPNETWORK_XDR_RESPONSE;
  int code = 0;
  CLmError e = CKpNetwork::ConvertXdr(KPNETWORK_XDR_DECODE, m_nReceivedMsgId, &m_recvBuffer,
                                      m_pResponseData->m_pData.get(), &length, &direction, code);
  m_recvBuffer.setLength(valid);
  if (!e.IsError()) {
    m_bRecvBufferFreed = false;  // the record now holds memory that cleanUpRecvBuf releases
    return true;
  }
  std::snprintf(text, sizeof text,
                "Warning. Failed to convert message [%d(%s)] from cache. newlength = [%d], "
                "pOutputMessage->m_nlength = [%d], recvBuffer.len = [%d].",
                static_cast<int>(m_nSentMsgId), KPS_PRIM_STRING(m_nSentMsgId), length,
                static_cast<int>(m_pResponseData->m_nlength), static_cast<int>(m_recvBuffer.length()));
  m_event.Debug(1, "%s", text);
  return false;
}

void ClientSessionWrapper::enableMessageCache(bool enable) {
  EvEvent event("ClientSessionWrapper::enableMessageCache");
  // Whether this is a laptop is known once the cache singleton has read the settings, which the
  // first wrapper does: before that a service is taken as not on a laptop, and refused.
  bool on = enable;
  if (!CMessageCacheSingleton::m_nIsLaptop && on && KPPI_Focus::AmIAService()) {
    on = false;
    event.Debug(1, "EnableAppMgrMessageCache is not valid for client service.");
  }
  m_gbUseCacheMap = on;  // written once: no other thread sees a value that does not stand
  // A cache that was never made holds nothing to clear.
  CMessageCacheSingleton* cache = CMessageCacheSingleton::m_pInstance.load(std::memory_order_acquire);
  if (!on && cache) cache->ClearMessageCache();
  event.Debug(1, "Message cache %s.", on ? "enabled" : "disabled");
}

bool ClientSessionWrapper::enableServerMessageCache(unsigned long jobId) {
  static constexpr const char* kLabel = "ClientSessionWrapper::enableServerMessageCache";
  if (!m_gbUseCacheMap) return false;
  m_nJobId = static_cast<long>(jobId);  // from now on every send tags its session with it

  EnableServerCacheReq request;
  EnableServerCacheResp response;
  std::memset(static_cast<void*>(&request), 0, sizeof request);
  std::memset(static_cast<void*>(&response), 0, sizeof response);
  NetMessage message;
  message.initRequestHeader(request.hdr);
  request.jobId = jobId;
  std::string errorString;
  const auto& op = appmgr::msg::kEnableServerCache;
  int code = send(op.requestId, &request, sizeof request, errorString);
  m_event.setLabel(kLabel);
  if (code != 0) {
    m_event.Error("Failed to send request to Enable Server Message Cache. Error: %d, %s.", code,
                  errorString.c_str());
    return false;
  }
  bool ok = false;
  code = receive(op.responseId, &response, sizeof response, errorString);
  m_event.setLabel(kLabel);
  if (code != 0) {
    m_event.Error("Failed to receive request to Enable Server Message Cache. Error: %d, %s.", code,
                  errorString.c_str());
  } else if (message.verifyResponseHeader(response.hdr) != 0) {
    m_event.Error("Failed to verify header to Enable Server Message Cache.");
  } else {
    App::EnableAppServerCacheResp xml;
    if (response.xmlText == nullptr || xml.unserialize(response.xmlText) != 0) {
      m_event.Error("Failed to unserialize App::EnableAppServerCacheResp.");
    } else {
      ok = true;
      for (const App::ServerMessageCacheEntity& entity : xml.GetCacheEntities()) {
        auto reqId = static_cast<unsigned long>(entity.requestId);
        auto respId = static_cast<unsigned long>(entity.responseId);
        auto key = std::make_shared<CMessageData>(reqId, entity.request.data(), entity.request.size(), 0);
        std::shared_ptr<CMessageData> existing;
        if (m_pCache == nullptr || m_pCache->CheckMessage(key, existing)) continue;
        auto value = std::make_shared<CMessageData>(respId, entity.response.data(), entity.response.size(), 0);
        m_event.setLabel(kLabel);
        if (!m_pCache->InsertMessage(key, value)) {
          m_event.Error("Failed to insert messages in the cache [%d(%s)][%d(%s)].", static_cast<int>(reqId),
                        KPS_PRIM_STRING(reqId), static_cast<int>(respId), KPS_PRIM_STRING(respId));
          continue;
        }
        // Here it is the response that is measured.
        unsigned long size = value->m_nlength;
        unsigned long largest = m_nMaxSendMessageSize.load();
        while (size > largest && !m_nMaxSendMessageSize.compare_exchange_weak(largest, size)) {
        }
        m_event.Debug(4, "Message [%d(%s)][%d(%s)] inserted successfully in the cache.", static_cast<int>(reqId),
                      KPS_PRIM_STRING(reqId), static_cast<int>(respId), KPS_PRIM_STRING(respId));
      }
      if (m_pCache) {
        m_event.Debug(4, "Messages in the cache [%d], total cache size [%d]Kb. Max send message size [%d]bytes.",
                      static_cast<int>(m_pCache->GetMessageNumberInCache()),
                      static_cast<int>(m_pCache->GetMessageCacheSize() / 1024),
                      static_cast<int>(m_nMaxSendMessageSize.load()));
      }
    }
  }
  cleanUpRecvBuf(nullptr);
  m_event.setLabel(kLabel);
  if (ok) {
    m_event.Debug(4, "Message cache enabled and populated successfully.");
  } else {
    m_event.Error("Failed to Enable Server Message Cache.");
  }
  return ok;
}
