// Caller-side record of the client-group operations.
#pragma once

#include <string>

// A client group as it travels to and from the App Manager: six 64-bit integers and three
// texts. Their meaning is the server's (appmgrd: int1 is the group's id, text1 its name, text2
// its description; the others are kept as given). Which members each operation sends is told
// in ClientGroupInterface.h; every member is filled from the answer.
struct _AppClientGroupInfo {
  unsigned long int1 = 0;
  unsigned long int2 = 0;
  unsigned long int3 = 0;
  unsigned long int4 = 0;
  unsigned long int5 = 0;
  std::string text1;
  std::string text2;
  std::string text3;
  unsigned long int6 = 0;
};
