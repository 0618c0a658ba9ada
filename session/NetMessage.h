// NetMessage: stamps the request header of every App Manager exchange and checks the response
// header; Exception and NetException: how operations written in the throwing style carry a
// failed step's code and text to their own handler.
//
// A NetMessage is a stack object of one call on one thread: the request header's hostName
// points into it, so it must live until the request has been sent, and the header records the
// calling thread, so it is filled on the thread that sends it.
#pragma once

#include <string>

#include "appmgr/records/AppMgrHeaders.h"

class MessageBase {
 public:
  explicit MessageBase(unsigned long version) : version(version) {}
  virtual void initRequestHeader(AppMgrReqHdr& hdr) = 0;
  virtual int verifyRequestHeader(AppMgrReqHdr& hdr) = 0;
  virtual void initResponseHeader(AppMgrRespHdr& hdr) = 0;
  virtual int verifyResponseHeader(AppMgrRespHdr& hdr) = 0;
  virtual ~MessageBase() = default;

  unsigned long version;
};

class NetMessage : public MessageBase {
 public:
  // The protocol version this library speaks.
  static constexpr unsigned long kVersion = 2;

  NetMessage() : MessageBase(kVersion) {}

  // version 2, the process id (sign-extended), the calling thread, and the host name (copied into
  // this object, cut to 1023 characters). Neither id nor name costs a system call: the process
  // id is kept for the process (and renewed in a child after fork()), the host name is read
  // once and again whenever the settings are re-read (KpSettings Load or Reload).
  void initRequestHeader(AppMgrReqHdr& hdr) override;
  // Accepts everything.
  int verifyRequestHeader(AppMgrReqHdr& hdr) override;
  // Nothing to do: the record's constructor zeroed the header.
  void initResponseHeader(AppMgrRespHdr& hdr) override;
  // -1 on a version mismatch (logged); otherwise the header's error code, logged as an error
  // unless it is 0 or 100.
  int verifyResponseHeader(AppMgrRespHdr& hdr) override;

  // Where host names come from; tests replace it to try names of any length. Setting it makes
  // the next header read the name again.
  using HostNameReader = int (*)(char* buffer, size_t size);
  static void SetHostNameReaderForTesting(HostNameReader reader);

 private:
  char hostName_[1024] = {};
};

// A failed step of an operation: its code and text. Thrown and caught inside one operation,
// never across the library's boundary.
class Exception {
 public:
  Exception(int errorCode, const std::string& message, int type, const std::string& prefix)
      : type(type), errorCode(errorCode), message(message), prefix(prefix) {}

  // The prefix followed directly by the message.
  virtual std::string toString() const { return prefix + message; }
  virtual int getErrorCode() const { return errorCode; }
  virtual int getType() const { return type; }

  int type;
  int errorCode;
  std::string message;
  std::string prefix;
};

class NetException : public Exception {
 public:
  static constexpr int kType = 0x4001;
  NetException(int errorCode, const std::string& message)
      : Exception(errorCode, message, kType, "") {}
};
