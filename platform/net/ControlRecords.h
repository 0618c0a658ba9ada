// The session library's own records: the hello that opens a connection, its answers, and the
// file-transfer frames. They travel XDR-encoded like App Manager records but are not App
// Manager messages, so they are not in the message catalogue.
#pragma once

#include <cstdint>

#include "protocol/WireSchema.h"

namespace appmgr::net {

// Client -> server, first frame of every connection.
struct HelloRecord {
  uint32_t frameVersion = 0;
  uint32_t authMethod = 0;       // SetAuthenticationMethod()
  uint32_t flags = 0;            // kHelloIgnoreAntiChatter
  int64_t pid = 0;               // the client's process id, for the server's log
  const char* service = nullptr;  // the service asked for
  const char* client = nullptr;   // the client name the caller attaches as
  const char* target = nullptr;   // the client name the caller believes the server has
  const char* facility = nullptr;  // remote facility (file transfer): its two names
  const char* entry = nullptr;
};
constexpr uint32_t kHelloIgnoreAntiChatter = 1;

struct HelloAcceptRecord {
  const char* server = nullptr;  // the server's name for itself
  uint64_t connectionId = 0;     // the server's number for this connection, for logs
};

// Why a hello was refused, a request not served, or a file not stored.
struct ReasonRecord {
  const char* text = nullptr;
};

// Client -> server, before the bytes of one file.
struct FileBeginRecord {
  const char* directory = nullptr;  // where the client asks for the file to go
  const char* fileName = nullptr;   // a plain file name
  uint32_t overwrite = 0;
  uint32_t binary = 0;
  uint64_t size = 0;                // bytes that follow in file-data frames
};

// Client -> server, after the last file-data frame: what the client sent, to check what arrived.
struct FileEndRecord {
  uint64_t size = 0;          // bytes sent in file-data frames
  uint32_t checksumKind = 0;  // kChecksumXxh3_64 (FileChecksum.h)
  uint64_t checksum = 0;      // of those bytes, in order
};

}  // namespace appmgr::net

APPMGR_WIRE_RECORD(appmgr::net::HelloRecord, WIRE_F(appmgr::net::HelloRecord, frameVersion),
                   WIRE_F(appmgr::net::HelloRecord, authMethod),
                   WIRE_F(appmgr::net::HelloRecord, flags), WIRE_F(appmgr::net::HelloRecord, pid),
                   WIRE_F(appmgr::net::HelloRecord, service),
                   WIRE_F(appmgr::net::HelloRecord, client),
                   WIRE_F(appmgr::net::HelloRecord, target),
                   WIRE_F(appmgr::net::HelloRecord, facility),
                   WIRE_F(appmgr::net::HelloRecord, entry));
APPMGR_WIRE_RECORD(appmgr::net::HelloAcceptRecord,
                   WIRE_F(appmgr::net::HelloAcceptRecord, server),
                   WIRE_F(appmgr::net::HelloAcceptRecord, connectionId));
APPMGR_WIRE_RECORD(appmgr::net::ReasonRecord, WIRE_F(appmgr::net::ReasonRecord, text));
APPMGR_WIRE_RECORD(appmgr::net::FileBeginRecord,
                   WIRE_F(appmgr::net::FileBeginRecord, directory),
                   WIRE_F(appmgr::net::FileBeginRecord, fileName),
                   WIRE_F(appmgr::net::FileBeginRecord, overwrite),
                   WIRE_F(appmgr::net::FileBeginRecord, binary),
                   WIRE_F(appmgr::net::FileBeginRecord, size));
APPMGR_WIRE_RECORD(appmgr::net::FileEndRecord, WIRE_F(appmgr::net::FileEndRecord, size),
                   WIRE_F(appmgr::net::FileEndRecord, checksumKind),
                   WIRE_F(appmgr::net::FileEndRecord, checksum));
