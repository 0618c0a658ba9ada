// ClientSessionWrapper: the transport of one App Manager exchange.
//
// An operation makes one on its stack, sends one request record through it, receives the
// response record, and lets it go. The constructor borrows a session: from the lite pool when
// one is configured and not skipped, else from the full pool, else it makes a private session
// that send() connects. send() asks the message cache first; a send that fails is followed by
// exactly one abort, one re-attach and one re-send. A request found by receive() never to have
// reached a server (written into a connection the server had closed) gets that same recovery,
// unless send() used it already: an exchange sends its request at most twice. receive()
// decodes the answer straight into the caller's record (or takes it from the cache); its texts
// and arrays stay valid until the next receive or the wrapper's destruction, which releases
// them and gives the session back (or disconnects a private one).
//
// Thread-safety: a wrapper belongs to one thread. The class-wide counters and switches are
// shared by every wrapper of the process; they take no lock (relaxed atomics: a rare lost
// update of a statistic is accepted, a data race is not).
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "platform/base/CLmError.h"
#include "platform/base/EvDebug.h"
#include "platform/net/CKpNetwork.h"
#include "platform/net/KpNetworkPool.h"

class CMessageData;
class CMessageCacheSingleton;

class ClientSessionWrapper {
 public:
  // Every operation passes 0x1a000000 (stored, never read) and false.
  ClientSessionWrapper(unsigned long serviceCode, bool skipLitePool);
  virtual ~ClientSessionWrapper();
  ClientSessionWrapper(const ClientSessionWrapper&) = delete;
  ClientSessionWrapper& operator=(const ClientSessionWrapper&) = delete;

  // Borrows a pooled session (lite pool first unless skipped, then the full pool).
  virtual CLmError initSessionPool();
  // Attaches the wrapper's session to `service` on the Controlhost; 0 or the attach's code.
  virtual int connectToCH(const std::string& service, std::string& errorString);
  // Sends the request record of `length` bytes at `record` (it begins with AppMgrReqHdr).
  virtual int send(unsigned long msgId, void* record, unsigned long length, std::string& errorString);
  // Receives into the zeroed response record of `length` bytes at `record`. The caller still
  // verifies its header (NetMessage::verifyResponseHeader).
  virtual int receive(unsigned long msgId, void* record, unsigned long length,
                      std::string& errorString);

  // Releases what decoding the last response allocated. `errorString` may be null.
  void cleanUpRecvBuf(std::string* errorString);
  // Formats a message into *errorString (when not null) and logs it as an error.
  void errorMsg(std::string* errorString, const char* format, ...) EV_PRINTF(3, 4);
  // The session of this wrapper (XML messages travel on it directly).
  CKpNetwork* getKpSessionObj() { return m_pSession; }

  // The client-side message cache.
  bool checkMessageInCache();
  void setMessageInCache();
  bool getMessageFromCache(unsigned long msgId);
  static void enableMessageCache(bool enable);
  bool enableServerMessageCache(unsigned long jobId);

  // Class-wide state, shared by all wrappers of the process.
  static std::atomic<bool> m_gbUseCacheMap;                        // the cache serves this process
  static std::atomic<unsigned long> m_gnServiceCacheExpirationTime;  // minutes
  static std::atomic<unsigned long> m_nTotalMessageCalls;
  static std::atomic<unsigned long> m_nSkippedMessageCalls;
  static std::atomic<unsigned long> m_nMaxSendMessageSize;
  static std::atomic<long> m_nJobId;

  // Puts the class-wide state back to its values at load (tests).
  static void resetClassStateForTesting();

 private:
  // Code and text of the session's last failure; a code of 0 becomes -1.
  int LastError(std::string* text);
  // The one recovery of an exchange whose connection was lost: abort, re-attach, send the same
  // request again. 0, or the failing step's code with errorString filled.
  int Resend(std::string& errorString);

  KpNetworkPool* m_pPool = nullptr;
  CKpNetwork* m_pSession = nullptr;
  bool m_bPooledSession = false;
  unsigned long m_nServiceCode;
  bool m_bSkipLitePool;
  kpsDatabuf_v2 m_sendBuffer;
  kpsDatabuf_v2 m_recvBuffer;
  EvEvent m_event;
  unsigned long m_nSentMsgId = 0;
  unsigned long m_nReceivedMsgId = 0;
  bool m_bFoundInCache = false;
  bool m_bCriticalMessage = false;
  bool m_bNoCacheMessage = false;
  bool m_bRecvBufferFreed = true;
  bool m_bResent = false;  // this exchange has had its one recovery
  std::shared_ptr<CMessageData> m_pRequestData;
  std::shared_ptr<CMessageData> m_pResponseData;
  CMessageCacheSingleton* m_pCache = nullptr;
};
