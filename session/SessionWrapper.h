// SessionWrapper: the older transport object with one connection of its own.
//
// The caller attaches it explicitly to a service on a host it names; there is no pool, no
// cache and no re-attach: a failed send is reported, and the caller attaches again if it wants
// to go on (the send itself repeats on a lost connection, inside the session library). It
// exchanges the same records as ClientSessionWrapper.
//
// Results are 0 on success, else the session library's last error code, which may itself be 0.
// Thread-safety: one object per thread.
#pragma once

#include <string>

#include "platform/base/EvDebug.h"
#include "platform/net/CKpNetwork.h"

class SessionWrapper {
 public:
  // `name` labels every error text; `value` is the initial protocol header word (see
  // headerWord()).
  SessionWrapper(const std::string& name, unsigned long value);
  virtual ~SessionWrapper();
  SessionWrapper(const SessionWrapper&) = delete;
  SessionWrapper& operator=(const SessionWrapper&) = delete;

  virtual int connectToCH(const std::string& host, const std::string& service,
                          std::string& errorString);
  virtual int send(unsigned long msgId, void* record, unsigned long length, std::string& errorString);
  virtual int receive(unsigned long msgId, void* record, unsigned long length,
                      std::string& errorString);

  void cleanUpRecvBuf(std::string* errorString);
  // Formats into *errorString (when not null) and logs it as a debug line.
  void debugMsg(std::string* errorString, const char* format, ...) EV_PRINTF(3, 4);

  // The third word of the last received protocol header (the job id the server echoed); the
  // constructor's `value` until something was received.
  unsigned long headerWord() const { return m_nHeaderWord; }
  CKpNetwork& session() { return m_session; }

 private:
  int LastError(std::string* text);

  kpsDatabuf_v2 m_sendBuffer;
  kpsDatabuf_v2 m_recvBuffer;
  unsigned long m_nHeaderWord;
  CKpNetwork m_session;
  // Defined initial values: nothing is pending release, so destroying an object that never
  // received anything frees nothing.
  unsigned long m_nReceivedMsgId = 0;
  bool m_bRecvBufferFreed = true;
  std::string m_sName;
  std::string m_sUnused1;
  std::string m_sUnused2;
};
