// lock_register_test.cpp - the register of mutexes with statistics: live and retired entries,
// their order, and who owns the reference when.
#include <gtest/gtest.h>

#include "frame/global_data.h"
#include "qzcore/qzmutex.h"
#include "sync/lock_stat_manager.h"
#include "sync/mutex.h"

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

}  // namespace
