// mutex_test.cpp - the mutex family as callers see it: the class chosen by the flags, recursion,
// owner and depth checks with their alerts, statistics, and contention between threads.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "qzcore.h"
#include "support/test_support.h"

namespace {

using qztest::ReadFile;
using qztest::ScopedEnv;
using qztest::TempDir;

constexpr char kTitle[] = "QZCore Critical Error\t";

QZMutexHandle Make(uint32_t flags, const char* name = "test") {
  QZMutexHandle mutex = nullptr;
  EXPECT_EQ(QZMutexCreate(name, flags, &mutex), 0);
  return mutex;
}

bool IsPlainClass(QZMutexHandle mutex) {
  QZMutexStats stats;
  return QZGetLockStats(mutex, &stats) == QZ_E_NOTIMPL;
}

// Runs `fn` on another thread and returns its result.
template <class Fn>
auto OnOtherThread(Fn fn) {
  decltype(fn()) result{};
  std::thread([&] { result = fn(); }).join();
  return result;
}

// Alerts of the checked mutex go to an event-log file while a test runs.
class CheckedMutex : public ::testing::Test {
 protected:
  void SetUp() override { QZErrorAlertSetMethod(QZ_ALERT_EVENT_LOG); }
  void TearDown() override { QZErrorAlertSetMethod(0); }
  std::string Alerts() const { return ReadFile(m_log); }
  TempDir m_dir;
  std::string m_log = m_dir.File("alerts.log");
  ScopedEnv m_env{"QZCORE_EVENT_LOG", m_log.c_str()};
};

TEST(Mutex, FlagsChooseTheClass) {
  // Plain: flags 0, and the bits that mean something only with CHECKED.
  for (uint32_t flags : {0u, QZ_MUTEX_NONRECURSIVE, QZ_MUTEX_SPIN, QZ_MUTEX_NOSTATS | QZ_MUTEX_STATS, 0x00001234u}) {
    QZMutexHandle m = Make(flags);
    EXPECT_TRUE(IsPlainClass(m)) << std::hex << flags;
    EXPECT_EQ(QZMutexAssertOwnership(m, 0), 1);
    EXPECT_EQ(QZMutexAssertOwnership(m, 1), 1);
    EXPECT_EQ(QZMutexDestroy(m), 0);
  }
  // Checked or statistics bring the checked class.
  for (uint32_t flags : {QZ_MUTEX_CHECKED, QZ_MUTEX_STATS, QZ_MUTEX_CHECKED | QZ_MUTEX_STATS | QZ_MUTEX_NOSTATS}) {
    QZMutexHandle m = Make(flags);
    EXPECT_FALSE(IsPlainClass(m)) << std::hex << flags;
    EXPECT_EQ(QZMutexDestroy(m), 0);
  }
  QZResetLockStats();
}

TEST(Mutex, PlainMutexIsRecursiveAndTryAcquireNeedsItsOwnRelease) {
  QZMutexHandle m = Make(0, nullptr);  // a null name is the empty name
  EXPECT_EQ(QZMutexAcquire(m), 0);
  EXPECT_EQ(QZMutexAcquire(m), 0);
  EXPECT_EQ(QZMutexTryAcquire(m), 0);
  EXPECT_EQ(OnOtherThread([&] { return QZMutexTryAcquire(m); }), QZ_E_FAIL);
  EXPECT_EQ(QZMutexRelease(m), 0);
  EXPECT_EQ(QZMutexRelease(m), 0);
  EXPECT_EQ(OnOtherThread([&] { return QZMutexTryAcquire(m); }), QZ_E_FAIL);  // one hold left
  EXPECT_EQ(QZMutexRelease(m), 0);
  EXPECT_EQ(OnOtherThread([&] {
              const QZRESULT r = QZMutexTryAcquire(m);
              if (r == 0) QZMutexRelease(m);
              return r;
            }),
            0);
  EXPECT_EQ(QZMutexDestroy(m), 0);
}

TEST(Mutex, OsMutexIsTheRecursivePthreadLock) {
  QZMutexHandle m = Make(QZ_MUTEX_CHECKED);
  auto* os = static_cast<pthread_mutex_t*>(QZMutexGetOSMutex(m));
  ASSERT_EQ(pthread_mutex_lock(os), 0);
  ASSERT_EQ(pthread_mutex_lock(os), 0);  // recursive
  EXPECT_EQ(OnOtherThread([&] { return QZMutexTryAcquire(m); }), QZ_E_FAIL);
  // Taken behind the mutex's back: its owner is unknown to the checks.
  EXPECT_EQ(QZMutexAssertOwnership(m, 1), 0);
  pthread_mutex_unlock(os);
  pthread_mutex_unlock(os);
  QZMutexDestroy(m);
}

TEST_F(CheckedMutex, NonRecursiveOwnerReacquireAlertsAndKeepsTheLock) {
  QZMutexHandle m = Make(QZ_MUTEX_CHECKED | QZ_MUTEX_NONRECURSIVE);
  ASSERT_EQ(QZMutexAcquire(m), 0);
  EXPECT_EQ(QZMutexAcquire(m), QZ_E_FAIL);
  EXPECT_EQ(QZMutexTryAcquire(m), QZ_E_FAIL);
  const std::string acquireText = std::string(kTitle) + "CQZCoreMutexChecked::preAcquire m_owner check failed\n";
  EXPECT_EQ(Alerts(), acquireText + acquireText);
  // Another thread's try fails silently.
  EXPECT_EQ(OnOtherThread([&] { return QZMutexTryAcquire(m); }), QZ_E_FAIL);
  EXPECT_EQ(Alerts(), acquireText + acquireText);
  EXPECT_EQ(QZMutexAssertOwnership(m, 1), 1);
  EXPECT_EQ(QZMutexAssertOwnership(m, 0), 0);
  EXPECT_EQ(QZMutexAssertOwnership(m, -1), -1);  // the owner gets its belief back, sign-extended
  EXPECT_EQ(OnOtherThread([&] { return QZMutexAssertOwnership(m, -1); }), 0);
  EXPECT_EQ(QZMutexRelease(m), 0);  // depth was 1: the failed acquires left no trace
  EXPECT_EQ(QZMutexAssertOwnership(m, 0), 1);
  EXPECT_EQ(QZMutexAssertOwnership(m, 1), 0);
  QZMutexDestroy(m);
}

TEST_F(CheckedMutex, ReleaseChecksOwnerThenDepth) {
  QZMutexHandle m = Make(QZ_MUTEX_CHECKED);
  // Nobody holds it: the owner text, not the depth text, since the owner is 0.
  EXPECT_EQ(QZMutexRelease(m), QZ_E_FAIL);
  EXPECT_EQ(Alerts(), std::string(kTitle) + "CQZCoreMutexChecked::preRelease m_owner check failed\n");
  // Held here, released by another thread: refused, and the lock stays held.
  ASSERT_EQ(QZMutexAcquire(m), 0);
  EXPECT_EQ(OnOtherThread([&] { return QZMutexRelease(m); }), QZ_E_FAIL);
  EXPECT_EQ(OnOtherThread([&] { return QZMutexTryAcquire(m); }), QZ_E_FAIL);
  EXPECT_EQ(OnOtherThread([&] { return QZMutexAssertOwnership(m, 1); }), 0);
  EXPECT_EQ(OnOtherThread([&] { return QZMutexAssertOwnership(m, 0); }), 1);
  EXPECT_EQ(QZMutexRelease(m), 0);
  // 65536 holds wrap the 16-bit depth to 0 under the right owner: the depth check fires, and
  // the lock stays held.
  for (int i = 0; i < 65536; ++i) ASSERT_EQ(QZMutexAcquire(m), 0);
  EXPECT_EQ(QZMutexRelease(m), QZ_E_FAIL);
  const std::string ownerText = std::string(kTitle) + "CQZCoreMutexChecked::preRelease m_owner check failed\n";
  EXPECT_EQ(Alerts(), ownerText + ownerText + kTitle + "CQZCoreMutexChecked::preRelease m_lockDepth check failed\n");
  EXPECT_EQ(OnOtherThread([&] { return QZMutexTryAcquire(m); }), QZ_E_FAIL);
  auto* os = static_cast<pthread_mutex_t*>(QZMutexGetOSMutex(m));
  for (int i = 0; i < 65536; ++i) pthread_mutex_unlock(os);
  QZMutexDestroy(m);
}

TEST_F(CheckedMutex, StatisticsAloneCheckNothing) {
  QZMutexHandle m = Make(QZ_MUTEX_STATS);
  EXPECT_EQ(QZMutexAssertOwnership(m, 1), 1);  // no owner checks
  ASSERT_EQ(QZMutexAcquire(m), 0);
  EXPECT_EQ(QZMutexAcquire(m), 0);  // recursion is fine
  EXPECT_EQ(QZMutexRelease(m), 0);
  EXPECT_EQ(QZMutexRelease(m), 0);
  EXPECT_EQ(Alerts(), "");
  // A release by a thread that holds nothing goes ahead: the depth wraps, so the next pair's
  // release is no outermost one and its hold is not timed. ThreadSanitizer rightly stops at such
  // an unlock, so that half runs without it.
  if (qztest::kThreadSanitizer) {
    QZMutexDestroy(m);
    QZResetLockStats();
    return;
  }
  ASSERT_EQ(QZMutexRelease(m), 0);
  ASSERT_EQ(QZMutexAcquire(m), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  ASSERT_EQ(QZMutexRelease(m), 0);
  EXPECT_EQ(Alerts(), "");
  QZMutexStats s;
  ASSERT_EQ(QZGetLockStats(m, &s), 0);
  EXPECT_EQ(s.acquireCount, 3);
  EXPECT_EQ(s.heldCount, 4);
  EXPECT_LT(s.totalHeldTime, 30000);  // only the first, immediate hold was timed
  QZMutexDestroy(m);
  QZResetLockStats();
}

TEST(MutexStatistics, RecursiveHoldCountsTwiceAndTimesOnce) {
  QZMutexHandle m = Make(QZ_MUTEX_STATS | QZ_MUTEX_CHECKED);
  ASSERT_EQ(QZMutexAcquire(m), 0);
  ASSERT_EQ(QZMutexAcquire(m), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  ASSERT_EQ(QZMutexRelease(m), 0);
  ASSERT_EQ(QZMutexRelease(m), 0);
  QZMutexStats s;
  ASSERT_EQ(QZGetLockStats(m, &s), 0);
  EXPECT_EQ(s.acquireCount, 2);
  EXPECT_EQ(s.heldCount, 2);
  EXPECT_GE(s.totalHeldTime, 20000);  // microseconds
  EXPECT_EQ(s.maxHeldTime, s.totalHeldTime);  // one outermost hold
  EXPECT_EQ(s.contentionCount, 0);
  // A try-acquire counts and is held, but never waits.
  ASSERT_EQ(QZMutexTryAcquire(m), 0);
  ASSERT_EQ(QZMutexRelease(m), 0);
  ASSERT_EQ(QZGetLockStats(m, &s), 0);
  EXPECT_EQ(s.acquireCount, 3);
  EXPECT_EQ(s.totalAcquireTime, s.maxAcquireTime);
  // A hold that spans a reset is counted and timed when it ends.
  ASSERT_EQ(QZMutexAcquire(m), 0);
  QZResetLockStats();
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  ASSERT_EQ(QZMutexRelease(m), 0);
  ASSERT_EQ(QZGetLockStats(m, &s), 0);
  EXPECT_EQ(s.acquireCount, 0);
  EXPECT_EQ(s.heldCount, 1);
  EXPECT_GE(s.totalHeldTime, 5000);
  QZMutexDestroy(m);
  QZResetLockStats();
}

TEST(MutexStatistics, NoStatsWithStatsAndCheckedChecksWithoutTiming) {
  QZMutexHandle m = Make(QZ_MUTEX_NOSTATS | QZ_MUTEX_STATS | QZ_MUTEX_CHECKED);
  ASSERT_EQ(QZMutexAcquire(m), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  ASSERT_EQ(QZMutexRelease(m), 0);
  QZMutexStats s{1, 1, 1, 1, 1, 1, 1};
  ASSERT_EQ(QZGetLockStats(m, &s), 0);
  EXPECT_EQ(s.acquireCount, 0);
  EXPECT_EQ(s.totalHeldTime, 0);
  EXPECT_EQ(QZMutexRelease(m), QZ_E_FAIL);  // the checks are on
  QZMutexDestroy(m);
}

TEST(MutexStatistics, WaitsAreCountedAndTimedAcrossThreads) {
  for (uint32_t spin : {0u, QZ_MUTEX_SPIN}) {
    QZMutexHandle m = Make(QZ_MUTEX_STATS | spin);
    ASSERT_EQ(QZMutexAcquire(m), 0);
    std::atomic<bool> started{false};
    std::thread waiter([&] {
      started = true;
      QZMutexAcquire(m);  // blocks until the main thread lets go
      QZMutexRelease(m);
    });
    while (!started) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    ASSERT_EQ(QZMutexRelease(m), 0);
    waiter.join();
    QZMutexStats s;
    ASSERT_EQ(QZGetLockStats(m, &s), 0);
    EXPECT_EQ(s.contentionCount, 1) << "spin " << spin;
    EXPECT_EQ(s.acquireCount, 2);
    EXPECT_GE(s.maxAcquireTime, 10000);
    EXPECT_GE(s.totalAcquireTime, s.maxAcquireTime);
    // A reset clears the figures and the platform lock's count.
    QZResetLockStats();
    ASSERT_EQ(QZGetLockStats(m, &s), 0);
    EXPECT_EQ(s.contentionCount + s.acquireCount + s.heldCount + s.totalHeldTime + s.maxAcquireTime, 0);
    QZMutexDestroy(m);
  }
  QZResetLockStats();
}

TEST(MutexStatistics, ManyThreadsKeepCountsExact) {
  QZMutexHandle m = Make(QZ_MUTEX_STATS | QZ_MUTEX_CHECKED | QZ_MUTEX_SPIN);
  long counter = 0;
  std::thread threads[4];
  for (auto& t : threads) {
    t = std::thread([&] {
      for (int i = 0; i < 20000; ++i) {
        QZMutexAcquire(m);
        ++counter;
        QZMutexRelease(m);
      }
    });
  }
  for (auto& t : threads) t.join();
  QZMutexStats s;
  ASSERT_EQ(QZGetLockStats(m, &s), 0);
  EXPECT_EQ(counter, 80000);
  EXPECT_EQ(s.acquireCount, 80000);
  EXPECT_EQ(s.heldCount, 80000);
  EXPECT_LE(s.contentionCount, 80000);
  QZMutexDestroy(m);
  QZResetLockStats();
}

}  // namespace
