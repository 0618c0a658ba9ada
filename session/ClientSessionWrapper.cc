#include "session/ClientSessionWrapper.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/info/KPPlatformInfo.h"
#include "platform/net/MangleHostName.h"
#include "session/AppMgrSessionPool.h"

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
  m_event.setLabel("ClientSessionWrapper::ClientSessionWrapper");
  CLmError error = initSessionPool();
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
    m_pPool = AppMgrSessionPoolSingleton::getSessionPoolInstance(kAppMgrServiceName);
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

  KPPlatformInfo info;
  info.setFocus(focus);
  char clientName[257] = {};
  if (info.getKPPlatformType() & 1) {
    info.getControlhosterClientName(clientName, 256);
  } else {
    std::strncpy(clientName, info.getPhysicalMachine().c_str(), 255);
  }
  char controlhostClient[257] = {};
  info.findControlhosterClientName(controlhostClient, 256);

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

int ClientSessionWrapper::send(unsigned long msgId, void* record, unsigned long length,
                               std::string& errorString) {
  static constexpr const char* kLabel = "ClientSessionWrapper::send";
  m_event.setLabel(kLabel);
  m_sendBuffer.setExternalBuffer(static_cast<char*>(record), length);
  m_nSentMsgId = msgId;
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
    if (error.IsError()) {
      // The connection is taken as lost: exactly one recovery attempt.
      kpsStatus status = 0;
      m_pSession->AbortConnection(status, 120, timedOut);
      m_event.Debug(4, "Lost connnection to server. Re-attaching to controlhoster");
      int code = connectToCH(kAppMgrServiceName, errorString);
      m_event.setLabel(kLabel);
      if (code == 0) {
        m_event.Debug(4, " Re-attach succeeded. re-sending request to server.");
        error = m_pSession->SendXDRMessage(msgId, &m_sendBuffer, 0, -1, timedOut);
        if (!error.IsError()) {
          m_event.Debug(4, "Re-send to server successful.");
        } else {
          std::string text;
          result = LastError(&text);
          errorMsg(&errorString, "Error [%s] re-sending request to server.", text.c_str());
        }
      } else {
        std::string text;
        result = LastError(&text);
        errorMsg(&errorString, "[%s] Re-attach failed. Connection error [%s]", kLabel, text.c_str());
      }
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
    CLmError error = m_pSession->ReceiveXDRMessage(&msgId, &m_recvBuffer, nullptr, 0, -1, timedOut);
    if (error.IsError()) {
      std::string text;
      result = LastError(&text);
      errorMsg(&errorString, "[%s] Error receiving message. [%s]", kLabel, text.c_str());
      m_event.Debug(1, "%s", errorString.c_str());
    } else {
      m_nReceivedMsgId = msgId;
      m_bRecvBufferFreed = false;
      setMessageInCache();
      result = 0;
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

// The message cache is switched off in this build: every request goes to the server.
bool ClientSessionWrapper::checkMessageInCache() {
  m_bFoundInCache = false;
  return false;
}

void ClientSessionWrapper::setMessageInCache() {}

bool ClientSessionWrapper::getMessageFromCache(unsigned long) { return false; }

void ClientSessionWrapper::enableMessageCache(bool enable) { m_gbUseCacheMap = enable; }

bool ClientSessionWrapper::enableServerMessageCache(unsigned long) { return false; }
