// Callers race on CNMessageBase::Initialize deliberately (a process-wide "initialised" flag read
// without a lock), so two threads entering it at once must both see success. Run under
// ThreadSanitizer as well.
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <string>
#include <thread>

#include "platform/xml/CNMessageBase.h"
#include "platform/xml/KPGuiMessages.h"

namespace {

TEST(CNMessageBaseConcurrency, TwoThreadsInitialisingAtOnceBothSucceed) {
  std::latch start(2);
  std::atomic<int> results[2] = {-1, -1};
  std::atomic<int> roundTrips{0};
  auto run = [&](int i) {
    start.arrive_and_wait();
    results[i] = CNMessageBase::Initialize();
    // Then use the library at once, as callers do right after the flag flips.
    KPGui::AlertResponse r;
    r.SetStatus(i);
    std::string text;
    int error = -1;
    if (r.serialize(text) == kCNOk) {
      auto m = CNMessageBase::FromXml(text.data(), text.size(), &error);
      if (m && m->getint64(1, 0x1000406, 10268693) == i) ++roundTrips;
    }
  };
  std::thread a(run, 0), b(run, 1);
  a.join();
  b.join();
  EXPECT_EQ(results[0], kCNOk);
  EXPECT_EQ(results[1], kCNOk);
  EXPECT_EQ(roundTrips, 2);
  EXPECT_EQ(CNMessageBase::Initialize(), kCNOk);  // and again, later
}

}  // namespace
