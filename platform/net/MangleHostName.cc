#include "platform/net/MangleHostName.h"

#include <algorithm>
#include <cstdlib>

namespace {

bool ParsePort(const std::string& s, unsigned int* port) {
  if (s.empty() || s.size() > 5 || !std::all_of(s.begin(), s.end(), ::isdigit)) return false;
  unsigned long v = std::strtoul(s.c_str(), nullptr, 10);
  if (v == 0 || v > 65535) return false;
  *port = static_cast<unsigned int>(v);
  return true;
}

std::string Bracketed(const std::string& host) {
  return host.find(':') != std::string::npos ? "[" + host + "]" : host;
}

}  // namespace

bool SplitHostPort(const std::string& text, std::string* host, unsigned int* port) {
  *port = 0;
  if (!text.empty() && text[0] == '[') {
    size_t close = text.find(']');
    if (close == std::string::npos) return false;
    *host = text.substr(1, close - 1);
    std::string rest = text.substr(close + 1);
    if (rest.empty()) return true;
    return rest[0] == ':' && ParsePort(rest.substr(1), port);
  }
  size_t colon = text.find(':');
  if (colon == std::string::npos || text.find(':', colon + 1) != std::string::npos) {
    *host = text;  // no port, or a bare IPv6 address
    return true;
  }
  *host = text.substr(0, colon);
  return ParsePort(text.substr(colon + 1), port);
}

std::string MangleHostName(const std::string& host, const std::string& clientName,
                           unsigned int port1, unsigned int port2) {
  std::string bare;
  unsigned int explicitPort = 0;
  if (!SplitHostPort(host, &bare, &explicitPort)) bare = host;
  if (explicitPort != 0) port1 = port2 = explicitPort;
  return clientName + "@" + Bracketed(bare) + ":" + std::to_string(port1) + "," +
         std::to_string(port2);
}

bool ParseConnectString(const std::string& connect, KpConnectTarget* out) {
  KpConnectTarget t;
  std::string rest = connect;
  size_t at = rest.rfind('@');
  if (at != std::string::npos) {
    t.client = rest.substr(0, at);
    rest = rest.substr(at + 1);
  }
  std::string ports;
  size_t comma = rest.rfind(',');
  if (comma != std::string::npos) {
    ports = rest.substr(comma + 1);
    rest = rest.substr(0, comma);
  }
  unsigned int p1 = 0;
  if (!SplitHostPort(rest, &t.host, &p1) || t.host.empty()) return false;
  t.port1 = p1 ? p1 : 8400;
  t.port2 = p1 ? p1 : 8402;
  if (!ports.empty() && !ParsePort(ports, &t.port2)) return false;
  *out = t;
  return true;
}
