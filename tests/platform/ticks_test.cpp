// ticks_test.cpp - the contract of the tick source: a known frequency, a clock that never runs
// backwards on any thread, and a millisecond counter that agrees with it.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "platform/ticks.h"

namespace {

TEST(Ticks, ElapsedTicksMatchASleepAtTheStatedFrequency) {
  int64_t frequency = 0;
  ASSERT_TRUE(qz::os::QueryPerformanceFrequency(&frequency));
  ASSERT_GT(frequency, 0);
  int64_t before = 0;
  int64_t after = 0;
  const uint32_t msBefore = qz::os::GetTickCount();
  ASSERT_TRUE(qz::os::QueryPerformanceCounter(&before));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  ASSERT_TRUE(qz::os::QueryPerformanceCounter(&after));
  const uint32_t msAfter = qz::os::GetTickCount();
  const double seconds = static_cast<double>(after - before) / static_cast<double>(frequency);
  // Generous bounds: a loaded machine may sleep far longer, never shorter.
  EXPECT_GE(seconds, 0.045);
  EXPECT_LT(seconds, 30.0);
  EXPECT_GE(static_cast<uint32_t>(msAfter - msBefore), 40u);
}

TEST(Ticks, NeverRunBackwardsOnAnyThread) {
  std::vector<std::thread> threads;
  std::vector<int> backwards(4, 0);
  for (size_t t = 0; t < backwards.size(); ++t) {
    threads.emplace_back([&backwards, t] {
      int64_t last = 0;
      qz::os::QueryPerformanceCounter(&last);
      for (int i = 0; i < 20000; ++i) {
        int64_t now = 0;
        qz::os::QueryPerformanceCounter(&now);
        if (now < last) ++backwards[t];
        last = now;
      }
    });
  }
  for (auto& t : threads) t.join();
  for (int count : backwards) EXPECT_EQ(count, 0);
}

}  // namespace
