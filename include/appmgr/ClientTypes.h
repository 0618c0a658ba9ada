// Caller-side types of the client interface: the client record and its platform descriptions.
//
// The library carries every member positionally; what each means is the App Manager's (appmgrd's
// meaning is in docs/server.md, and the member names below follow it where it gives one).
#pragma once

#include <string>

// One client. Default-constructible and copyable; every number starts at 0.
struct _AppClientInfo {
  unsigned long clientId = 0;      // integer 1
  unsigned long platformType = 0;  // integer 2
  unsigned long integer3 = 0;
  unsigned long integer4 = 0;
  // Integer 5. Requests carry it whole and cut to 32 bits; answers carry only the 32-bit value,
  // so what comes back is that value sign-extended.
  long integer5 = 0;
  unsigned long integer6 = 0;
  unsigned long integer7 = 0;
  unsigned long integer8 = 0;
  unsigned long integer9 = 0;
  unsigned long integer10 = 0;
  std::string clientName;  // text 1
  std::string hostName;    // text 2
  std::string text3;
  std::string text4;
  std::string text5;
  std::string text6;
  unsigned long integer11 = 0;
  unsigned long callerValue1 = 0;  // the caller's own; no operation carries it
  std::string text7;
  unsigned long callerValue2 = 0;  // the caller's own; no operation carries it
  unsigned long integer12 = 0;
  std::string text8;
};

// One platform description of a client. The client operations take an array of exactly three.
struct ClientPlatformInfo {
  unsigned long value = 0;
  std::string text;
};

// How many ClientPlatformInfo elements a client operation reads and writes.
inline constexpr int kClientPlatformCount = 3;
