// lock_register_test.cpp - the register of mutexes with statistics: live and retired entries,
// their order, and who owns the reference when.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <thread>

#include "frame/global_data.h"
#include "qzcore/qzmutex.h"
#include "sync/lock_stat_manager.h"
#include "sync/mutex.h"
#include "platform/system_calls.h"
#include "support/test_support.h"

namespace {

CQZLockStatManager& Register() { return *CQZGlobalData::m_lockStatManager; }

int KindOf(QZMutexHandle m) {
  for (const auto& [key, mutex] : Register().Snapshot()) {
    if (mutex == MutexFromHandle(m)) return key.first;
  }
  return -1;
}

TEST(LockRegister, OnlyStatisticsMutexesEnterAndDestroyRetiresThem) {
  QZResetLockStats();
  QZMutexHandle stats, plain, excluded;
  ASSERT_EQ(QZMutexCreate("stats", QZ_MUTEX_STATS, &stats), 0);
  ASSERT_EQ(QZMutexCreate("plain", QZ_MUTEX_CHECKED, &plain), 0);
  ASSERT_EQ(QZMutexCreate("excluded", QZ_MUTEX_STATS | QZ_MUTEX_NOSTATS, &excluded), 0);
  EXPECT_EQ(KindOf(stats), CQZLockStatManager::kLive);
  EXPECT_EQ(KindOf(plain), -1);
  EXPECT_EQ(KindOf(excluded), -1);
  EXPECT_EQ(MutexFromHandle(excluded)->GetFlags() & QZ_MUTEX_STATS, 0u);
  EXPECT_EQ(MutexFromHandle(stats)->m_refCount.load(), 1u);  // the register borrows the reference

  // Destroyed, it lives on in the register with its figures and owns the reference.
  ASSERT_EQ(QZMutexAcquire(stats), 0);
  ASSERT_EQ(QZMutexRelease(stats), 0);
  EXPECT_EQ(QZMutexDestroy(stats), 0);
  EXPECT_EQ(KindOf(stats), CQZLockStatManager::kRetired);
  EXPECT_EQ(MutexFromHandle(stats)->m_refCount.load(), 1u);
  QZMutexStats figures;
  ASSERT_EQ(MutexFromHandle(stats)->GetStats(&figures), 0);
  EXPECT_EQ(figures.acquireCount, 1);

  EXPECT_EQ(QZMutexDestroy(plain), 0);
  EXPECT_EQ(QZMutexDestroy(excluded), 0);
  QZResetLockStats();
  EXPECT_EQ(KindOf(stats), -1);  // a reset ends the retired mutexes' lives
}

TEST(LockRegister, LiveEntriesComeFirstAndResetZeroesThem) {
  QZResetLockStats();
  QZMutexHandle a, b;
  ASSERT_EQ(QZMutexCreate("a", QZ_MUTEX_STATS, &a), 0);
  ASSERT_EQ(QZMutexCreate("b", QZ_MUTEX_STATS, &b), 0);
  QZMutexAcquire(b);
  QZMutexRelease(b);
  QZMutexDestroy(a);
  const auto entries = Register().Snapshot();
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries.begin()->first.first, CQZLockStatManager::kLive);
  EXPECT_EQ(entries.begin()->second->GetName(), "b");
  EXPECT_EQ(entries.rbegin()->first.first, CQZLockStatManager::kRetired);

  QZResetLockStats();
  ASSERT_EQ(Register().Snapshot().size(), 1u);
  QZMutexStats figures;
  ASSERT_EQ(QZGetLockStats(b, &figures), 0);
  EXPECT_EQ(figures.acquireCount + figures.heldCount + figures.totalHeldTime + figures.maxHeldTime, 0);
  QZMutexDestroy(b);
  QZResetLockStats();
}

std::atomic<int> g_writes{0};

// The system's write, except that the third call fails as a full disk would.
ssize_t ThirdWriteFails(int fd, const void* data, size_t size) {
  if (++g_writes == 3) {
    errno = ENOSPC;
    return -1;
  }
  return write(fd, data, size);
}

TEST(LockRegister, DumpThatBreaksOffKeepsWhatWasWritten) {
  QZResetLockStats();
  qztest::TempDir dir;
  const std::string file = dir.File("stats.csv");
  const std::u16string path(file.begin(), file.end());
  g_writes = 0;
  ASSERT_TRUE(qz::os::SetSystemCall("write", reinterpret_cast<qz::os::SystemCallPointer>(&ThirdWriteFails)));
  EXPECT_EQ(QZDumpLockStats("broken", path.c_str()), QZ_E_FAIL);
  qz::os::ResetSystemCalls();
  const std::string text = qztest::ReadFile(file);
  EXPECT_EQ(text.find("BeginLockStatistics: broken - "), 0u) << text;
  EXPECT_NE(text.find("\nCPU Frequency,1000000\n"), std::string::npos) << text;
  EXPECT_EQ(text.find("Name/Handle"), std::string::npos) << text;

  // A failed close fails the call, but the block is whole; the register's lock is free again.
  ASSERT_TRUE(qz::os::FailSystemCall("close", EIO));
  EXPECT_EQ(QZDumpLockStats("closing", path.c_str()), QZ_E_FAIL);
  qz::os::ResetSystemCalls();
  EXPECT_NE(qztest::ReadFile(file).find("EndLockStatistics: closing - "), std::string::npos);
  QZRESULT taken = QZ_E_FAIL;
  std::thread([&] {
    taken = QZMutexTryAcquire(Register().Mutex());
    if (taken == 0) QZMutexRelease(Register().Mutex());
  }).join();
  EXPECT_EQ(taken, 0);
}

}  // namespace
