#include "platform/base/CLmError.h"

#include <gtest/gtest.h>

#include <cerrno>

TEST(CLmError, SuccessHasNoCodeAndFailuresKeepTheirText) {
  CLmError ok;
  EXPECT_FALSE(ok.IsError());
  EXPECT_EQ(ok.GetErrorCode(), 0);
  EXPECT_EQ(ok.AsString(), "Success");

  CLmError e = CLmError::Format(kKpErrTimeout, "receive of %s timed out after %d s", "X", 5);
  EXPECT_TRUE(e.IsError());
  EXPECT_EQ(e.GetErrorCode(), kKpErrTimeout);
  EXPECT_EQ(e.AsString(), "receive of X timed out after 5 s");

  CLmError sys = CLmError::FromErrno(kKpErrIo, ECONNREFUSED, "connect to h:1");
  EXPECT_EQ(sys.AsString(), "connect to h:1: Connection refused");
  EXPECT_STREQ(KpErrName(kKpErrProtocol), "protocol");
}
