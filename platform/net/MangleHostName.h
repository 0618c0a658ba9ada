// Connect strings: how a host, the client name it is known by, and its ports travel to
// CKpNetwork::Attach_RemoteService as one text.
//
// Form: "<client>@<host>:<port1>,<port2>", for example "ch01@ch01.example.com:8400,8402" or
// "ch01@[::1]:41000,41000". port1 is tried first; port2 when port1 refuses the connection.
// A host may carry an explicit port ("name:port", "[v6addr]:port"); that port then replaces
// both, so tests and side-by-side servers run on free ports.
#pragma once

#include <string>

std::string MangleHostName(const std::string& host, const std::string& clientName,
                           unsigned int port1, unsigned int port2);

struct KpConnectTarget {
  std::string host;    // without brackets for IPv6
  std::string client;  // may be empty
  unsigned int port1 = 0;
  unsigned int port2 = 0;
};

// Parses a connect string made by MangleHostName. A bare "host" or "host:port" is accepted too,
// with the default ports 8400 and 8402 where none is given. False for an empty host or a port
// that is not a number from 1 to 65535.
bool ParseConnectString(const std::string& connect, KpConnectTarget* out);

// Splits "host", "host:port", "[v6]" or "[v6]:port"; a bare IPv6 address (two or more colons,
// no brackets) has no port. *port is 0 when none is given. False when a given port is invalid.
bool SplitHostPort(const std::string& text, std::string* host, unsigned int* port);
