#include "session/SessionWrapper.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/info/KPPlatformInfo.h"
#include "platform/net/MangleHostName.h"
#include "session/AppMgrSessionPool.h"

SessionWrapper::SessionWrapper(const std::string& name, unsigned long value)
    : m_nHeaderWord(value), m_sName(name) {}

SessionWrapper::~SessionWrapper() { cleanUpRecvBuf(nullptr); }

int SessionWrapper::LastError(std::string* text) {
  unsigned long code = 0;
  std::string t;
  m_session.GetLastErrorGenericText(&code, t, 0);
  if (text) *text = t;
  return static_cast<int>(code);
}

int SessionWrapper::connectToCH(const std::string& host, const std::string& service,
                                std::string& errorString) {
  (void)getPlatformType();  // read as the platform reads it; nothing depends on it here
  char serviceName[256] = {};
  std::snprintf(serviceName, sizeof serviceName, "%s", service.c_str());
  char clientName[257], controlhostClient[257];
  getConnectionClientNames(clientName, controlhostClient);
  // The host is the caller's, used as it is.
  std::string connect = MangleHostName(host, controlhostClient, 8400, 8402);
  bool timedOut = false;
  CLmError error = m_session.Attach_RemoteService(connect, serviceName, clientName, 120, timedOut);
  if (!error.IsError()) return 0;
  int code = LastError(nullptr);
  debugMsg(&errorString, "[%s] Error attaching to svc [%s] on CH [%s]. [%s]", m_sName.c_str(),
           serviceName, host.c_str(), error.AsString().c_str());
  return code;
}

int SessionWrapper::send(unsigned long msgId, void* record, unsigned long length,
                         std::string& errorString) {
  m_sendBuffer.setExternalBuffer(static_cast<char*>(record), length);
  bool timedOut = false;
  CLmError error = m_session.SendMessageWithRetry(msgId, &m_sendBuffer, 0, -1, timedOut);
  if (!error.IsError()) return 0;
  std::string text;
  int code = LastError(&text);
  debugMsg(&errorString, "[%s] Error sending message. [%s]", m_sName.c_str(), text.c_str());
  return code;
}

int SessionWrapper::receive(unsigned long msgId, void* record, unsigned long length,
                            std::string& errorString) {
  cleanUpRecvBuf(nullptr);
  m_recvBuffer.setExternalBuffer(static_cast<char*>(record), length);
  kpsHostProtocolHeader header{};
  bool timedOut = false;
  CLmError error = m_session.ReceiveXDRMessage(&msgId, &m_recvBuffer, &header, 0, -1, timedOut);
  int code = 0;
  if (error.IsError()) {
    std::string text;
    code = LastError(&text);
    // The text has no opening bracket before the second placeholder; it is kept as it is.
    debugMsg(&errorString, "[%s] Error receiving message. %s]", m_sName.c_str(), text.c_str());
  } else {
    m_nReceivedMsgId = msgId;
    m_nHeaderWord = header.jobId;  // the header's third word
  }
  // Also after a failure: the next clean-up asks the session library to release whatever the
  // failed receive may have placed, under the id of the last successful receive.
  m_bRecvBufferFreed = false;
  return code;
}

void SessionWrapper::cleanUpRecvBuf(std::string* errorString) {
  if (m_bRecvBufferFreed) return;
  CLmError error = m_session.FreeReceivedMessage(m_nReceivedMsgId, &m_recvBuffer);
  if (!error.IsError()) {
    m_bRecvBufferFreed = true;
  } else {
    debugMsg(errorString, "[%s] Error cleaning up received message. [%s]", m_sName.c_str(),
             error.AsString().c_str());
  }
}

void SessionWrapper::debugMsg(std::string* errorString, const char* format, ...) {
  char buffer[4096];
  va_list ap;
  va_start(ap, format);
  std::vsnprintf(buffer, sizeof buffer, format, ap);
  va_end(ap);
  if (errorString) *errorString = buffer;
  EvEventWrapper::DebugLvl("SessionWrapper", 1, "%s", buffer);
}
