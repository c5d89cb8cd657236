// critical_section_test.cpp - the contract of the platform lock: recursion, a try that never
// blocks, the count of acquires that had to wait, and a release by a thread that holds nothing.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/critical_section.h"
#include "support/test_support.h"

namespace {

using qz::os::CriticalSection;

// Whether another thread can take the lock right now.
bool FreeForOthers(CriticalSection& lock) {
  bool taken = false;
  std::thread([&] {
    taken = lock.TryEnter();
    if (taken) lock.Leave();
  }).join();
  return taken;
}

class CriticalSectionContract : public ::testing::TestWithParam<uint32_t> {};

TEST_P(CriticalSectionContract, RecursionHoldsUntilTheLastLeave) {
  CriticalSection lock(GetParam());
  lock.Enter();
  ASSERT_TRUE(lock.TryEnter());
  lock.Enter();
  EXPECT_FALSE(FreeForOthers(lock));
  lock.Leave();
  lock.Leave();
  EXPECT_FALSE(FreeForOthers(lock));
  lock.Leave();
  EXPECT_TRUE(FreeForOthers(lock));
  // Recursive and uncontended acquires never count as waits.
  EXPECT_EQ(lock.ContentionCount(), 0u);
}

TEST_P(CriticalSectionContract, AnAcquireThatFindsTheLockTakenIsCountedOnce) {
  CriticalSection lock(GetParam());
  std::atomic<int> stage{0};
  lock.Enter();
  std::thread other([&] {
    stage = 1;
    lock.Enter();  // waits for the main thread
    stage = 2;
    lock.Leave();
  });
  while (stage.load() != 1) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(stage.load(), 1);
  lock.Leave();
  other.join();
  EXPECT_EQ(stage.load(), 2);
  EXPECT_EQ(lock.ContentionCount(), 1u);
  lock.ResetContentionCount();
  EXPECT_EQ(lock.ContentionCount(), 0u);
  // A try that fails does not wait, and is no acquire.
  lock.Enter();
  EXPECT_FALSE(FreeForOthers(lock));
  lock.Leave();
  EXPECT_EQ(lock.ContentionCount(), 0u);
}

TEST_P(CriticalSectionContract, ManyThreadsExcludeOneAnother) {
  CriticalSection lock(GetParam());
  int64_t counter = 0;  // guarded by the lock alone
  constexpr int kThreads = 4;
  constexpr int kRounds = 5000;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        lock.Enter();
        ++counter;
        lock.Leave();
      }
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(counter, int64_t{kThreads} * kRounds);
}

INSTANTIATE_TEST_SUITE_P(SpinCounts, CriticalSectionContract, ::testing::Values(0u, 4000u));

TEST(CriticalSection, ReleaseByAThreadThatHoldsNothingChangesNothing) {
  if (qztest::kThreadSanitizer) GTEST_SKIP() << "ThreadSanitizer stops at such an unlock by design";
  CriticalSection lock;
  lock.Enter();
  std::thread([&] { lock.Leave(); }).join();  // not the holder: the caller's error, passed over
  EXPECT_FALSE(FreeForOthers(lock));
  lock.Leave();
  EXPECT_TRUE(FreeForOthers(lock));
}

TEST(CriticalSection, NativeHandleIsStableAndDistinct) {
  CriticalSection a;
  CriticalSection b;
  EXPECT_NE(a.NativeHandle(), nullptr);
  EXPECT_EQ(a.NativeHandle(), a.NativeHandle());
  EXPECT_NE(a.NativeHandle(), b.NativeHandle());
}

}  // namespace
