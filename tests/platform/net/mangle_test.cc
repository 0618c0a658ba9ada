#include "platform/net/MangleHostName.h"

#include <gtest/gtest.h>

TEST(MangleHostName, KeepsTheFixedPortsUnlessTheHostCarriesOne) {
  struct {
    const char* host;
    const char* expected;
  } cases[] = {
      {"ch01.example.com", "cl@ch01.example.com:8400,8402"},
      {"127.0.0.1:41000", "cl@127.0.0.1:41000,41000"},
      {"[::1]:41000", "cl@[::1]:41000,41000"},
      {"::1", "cl@[::1]:8400,8402"},
      {"[fe80::1]", "cl@[fe80::1]:8400,8402"},
  };
  for (const auto& c : cases) EXPECT_EQ(MangleHostName(c.host, "cl", 8400, 8402), c.expected);
}

TEST(ParseConnectString, ReadsWhatMangleWritesAndRejectsBadPorts) {
  struct {
    const char* text;
    bool ok;
    const char* host;
    const char* client;
    unsigned p1, p2;
  } cases[] = {
      {"cl@ch01:8400,8402", true, "ch01", "cl", 8400, 8402},
      {"cl@[::1]:41000,41000", true, "::1", "cl", 41000, 41000},
      {"a@b@host:1,2", true, "host", "a@b", 1, 2},
      {"host", true, "host", "", 8400, 8402},
      {"host:5000", true, "host", "", 5000, 5000},
      {"cl@:8400,8402", false, "", "", 0, 0},
      {"cl@host:0,8402", false, "", "", 0, 0},
      {"cl@host:8400,99999", false, "", "", 0, 0},
      {"cl@host:x,1", false, "", "", 0, 0},
      {"cl@[::1:8400,8402", false, "", "", 0, 0},
  };
  for (const auto& c : cases) {
    KpConnectTarget t;
    ASSERT_EQ(ParseConnectString(c.text, &t), c.ok) << c.text;
    if (!c.ok) continue;
    EXPECT_EQ(t.host, c.host) << c.text;
    EXPECT_EQ(t.client, c.client) << c.text;
    EXPECT_EQ(t.port1, c.p1) << c.text;
    EXPECT_EQ(t.port2, c.p2) << c.text;
  }
}
