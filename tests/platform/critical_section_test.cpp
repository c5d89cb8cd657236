// critical_section_test.cpp - the contract of the platform lock: recursion, a try that never
// blocks, the count of acquires that had to wait, and a release by a thread that holds nothing.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

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

// The lock stays the system's own recursive mutex, whatever path Enter and Leave take: they mix
// with the system's calls on NativeHandle in any order, the lock is free for others exactly when
// the depth is back at 0, and the destructor (which ends the process if the system finds the
// mutex still in use) passes.
TEST(CriticalSection, MixesWithTheSystemsCallsOnTheNativeLock) {
  enum Step { kEnter, kLeave, kTry, kSysLock, kSysUnlock, kSysTry };
  const std::vector<Step> sequences[] = {
      {kEnter, kSysUnlock},
      {kSysLock, kLeave},
      {kEnter, kSysLock, kLeave, kSysUnlock},
      {kSysLock, kEnter, kSysUnlock, kLeave},
      {kTry, kSysTry, kEnter, kLeave, kSysUnlock, kLeave},
  };
  for (size_t n = 0; n < std::size(sequences); ++n) {
    SCOPED_TRACE(n);
    CriticalSection lock;
    auto* native = static_cast<pthread_mutex_t*>(lock.NativeHandle());
    int depth = 0;
    for (Step step : sequences[n]) {
      switch (step) {
        case kEnter: lock.Enter(); ++depth; break;
        case kLeave: lock.Leave(); --depth; break;
        case kTry: ASSERT_TRUE(lock.TryEnter()); ++depth; break;
        case kSysLock: ASSERT_EQ(pthread_mutex_lock(native), 0); ++depth; break;
        case kSysUnlock: ASSERT_EQ(pthread_mutex_unlock(native), 0); --depth; break;
        case kSysTry: ASSERT_EQ(pthread_mutex_trylock(native), 0); ++depth; break;
      }
      EXPECT_EQ(FreeForOthers(lock), depth == 0) << "after step " << step;
    }
    EXPECT_EQ(depth, 0);
  }
}

TEST(CriticalSection, NativeHandleIsStableAndDistinct) {
  CriticalSection a;
  CriticalSection b;
  EXPECT_NE(a.NativeHandle(), nullptr);
  EXPECT_EQ(a.NativeHandle(), a.NativeHandle());
  EXPECT_NE(a.NativeHandle(), b.NativeHandle());
}

}  // namespace
