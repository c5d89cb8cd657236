// start_stop_test.cpp - the library's start and stop, the export frame, and what a failed start
// leaves behind (allocation failures injected through this binary's operator new).
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <stdexcept>

#include "frame/export_frame.h"
#include "frame/global_data.h"
#include "start/start.h"
#include "qzcore/qzmutex.h"
#include "sync/mutex_lifecycle.h"

namespace {
thread_local long t_allocationsLeft = -1;  // -1: never fail; else fail once this reaches 0
}

void* operator new(size_t size) {
  if (t_allocationsLeft == 0) throw std::bad_alloc();
  if (t_allocationsLeft > 0) --t_allocationsLeft;
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }

namespace {

struct Built {
  bool provider, stats, debug, modules, client, allocator;
};

Built Snapshot() {
  return {CQZGlobalData::m_mutexProvider != nullptr, CQZGlobalData::m_lockStatManager != nullptr,
          CQZGlobalData::m_debugMutex != nullptr,    CQZGlobalData::m_moduleManager != nullptr,
          CQZGlobalData::m_clientData != nullptr,    g_comMalloc != nullptr};
}

TEST(LibraryStart, NestedStartsAndStopsOnlyCount) {
  ASSERT_EQ(g_initCount, 1);  // the load hook ran
  EXPECT_EQ(g_platformReady, 1u);
  auto* const provider = CQZGlobalData::m_mutexProvider;
  EXPECT_EQ(QZLibraryStart(), 0);
  EXPECT_EQ(g_initCount, 2);
  EXPECT_EQ(CQZGlobalData::m_mutexProvider, provider);  // nothing built again
  EXPECT_EQ(QZLibraryStop(), 0);
  EXPECT_EQ(g_initCount, 1);
  EXPECT_EQ(CQZGlobalData::m_mutexProvider, provider);  // nothing destroyed
}

TEST(LibraryStart, StopTearsDownAndASecondStopFails) {
  QZMutexHandle survivor;
  ASSERT_EQ(QZMutexCreate("survivor", 0, &survivor), 0);
  ASSERT_EQ(QZLibraryStop(), 0);
  const Built gone = Snapshot();
  EXPECT_FALSE(gone.provider || gone.stats || gone.debug || gone.client || gone.allocator);
  EXPECT_EQ(g_platformReady, 1u);  // never cleared
  EXPECT_EQ(QZLibraryStop(), QZ_E_FAIL);
  EXPECT_EQ(g_initCount, 0);
  // A plain mutex is not touched by the stop and still works.
  EXPECT_EQ(QZMutexAcquire(survivor), 0);
  EXPECT_EQ(QZMutexRelease(survivor), 0);
  ASSERT_EQ(QZLibraryStart(), 0);
  const Built back = Snapshot();
  EXPECT_TRUE(back.provider && back.stats && back.debug && back.client && back.allocator);
  EXPECT_EQ(QZMutexDestroy(survivor), 0);
}

TEST(LibraryStart, AllocationFailureLeavesAPrefixOfTheObjects) {
  bool sawDebugMutexFailure = false;
  for (long n = 0;; ++n) {
    ASSERT_EQ(QZLibraryStop(), 0);
    t_allocationsLeft = n;
    const QZRESULT result = QZLibraryStart();
    t_allocationsLeft = -1;
    const Built b = Snapshot();
    if (result == 0) {
      EXPECT_TRUE(b.provider && b.stats && b.debug && b.client && b.allocator);
      break;
    }
    ASSERT_EQ(result, QZ_E_OUTOFMEMORY) << n;
    EXPECT_EQ(g_initCount, 1);
    EXPECT_FALSE(b.allocator);
    // Objects are built in order: a later one never exists without the earlier ones.
    EXPECT_TRUE(!b.stats || b.provider);
    EXPECT_TRUE(!b.debug || b.stats);
    EXPECT_TRUE(!b.client || b.debug);
    if (b.provider && b.stats && !b.debug) {
      sawDebugMutexFailure = true;
      EXPECT_FALSE(b.client);
    }
    ASSERT_LT(n, 1000);
  }
  EXPECT_TRUE(sawDebugMutexFailure);
}

TEST(ExportFrame, TurnsExceptionsIntoResults) {
  EXPECT_EQ(QZExportFrame([]() -> QZRESULT { throw EQZCoreException(QZ_E_ACCESSDENIED); }), QZ_E_ACCESSDENIED);
  // A code of 0 or more passes through unchanged.
  EXPECT_EQ(QZExportFrame([]() -> QZRESULT { throw EQZCoreException(2); }), 2);
  EXPECT_EQ(QZExportFrame([]() -> QZRESULT { throw std::bad_alloc(); }), QZ_E_OUTOFMEMORY);
  EXPECT_EQ(QZExportFrame([]() -> QZRESULT { throw std::runtime_error("x"); }), QZ_E_FAIL);
  EXPECT_EQ(QZExportFrame([]() -> QZRESULT { throw 7; }), QZ_E_FAIL);
}

TEST(ExportFrame, FailedCreateLeavesMinusOne) {
  QZMutexHandle mutex = nullptr;
  t_allocationsLeft = 0;
  const QZRESULT result = QZMutexCreate("never", QZ_MUTEX_CHECKED, &mutex);
  t_allocationsLeft = -1;
  EXPECT_EQ(result, QZ_E_OUTOFMEMORY);
  EXPECT_EQ(reinterpret_cast<intptr_t>(mutex), -1);
}

}  // namespace
