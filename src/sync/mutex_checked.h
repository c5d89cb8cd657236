// mutex_checked.h - CQZCoreMutexChecked: the mutex with owner and depth checks and statistics.
//
// The checks (QZ_MUTEX_CHECKED, QZ_MUTEX_NONRECURSIVE) and the timing (QZ_MUTEX_STATS) are chosen
// per object by its flags; statistics alone bring this class with its checks off. The fields
// change only while the platform lock is held; GetStats and ResetStats read them without it.
#pragma once

#include <atomic>

#include "sync/mutex.h"

class CQZCoreMutexChecked : public CQZCoreMutexImpl {
 public:
  CQZCoreMutexChecked(std::string name, uint32_t flags);

  QZRESULT Acquire() override;
  QZRESULT TryAcquire() override;
  QZRESULT Release() override;
  QZRESULT GetStats(QZMutexStats* stats) override;
  void ResetStats() override;
  int32_t AssertOwnership(QZBOOL16 expected) override;

 private:
  bool Checked() const noexcept { return (m_flags & QZ_MUTEX_CHECKED) != 0; }
  bool Stats() const noexcept { return (m_flags & QZ_MUTEX_STATS) != 0; }
  // True (after alerting) when the owner asks again for a checked non-recursive mutex.
  bool FailsRecursionCheck();
  // Bookkeeping of a successful acquire; `start` is 0 or the ticks when the wait began.
  void NoteAcquire(int64_t start);

  // Thread id of the holder, 0 when nobody holds it. Read before the lock is entered (only the
  // caller can have stored its own id), hence atomic, relaxed.
  std::atomic<uint32_t> m_owner{0};
  int64_t m_acquiredAt = 0;  // ticks when the outermost acquire succeeded
  // The figures change under the platform lock but are read (dump) and zeroed (reset) by other
  // threads without it: relaxed atomics, which cost plain loads and stores.
  std::atomic<int64_t> m_maxAcquireTime{0};    // longest wait to get the lock, ticks
  std::atomic<int64_t> m_totalAcquireTime{0};  // sum of waits, ticks
  std::atomic<uint64_t> m_acquireCount{0};     // acquires, recursive ones included
  std::atomic<int64_t> m_maxHeldTime{0};       // longest outermost hold, ticks
  std::atomic<int64_t> m_totalHeldTime{0};     // sum of outermost holds, ticks
  std::atomic<uint64_t> m_heldCount{0};        // releases, recursive ones included
  uint16_t m_lockDepth = 0;                    // recursion depth
};

// Ticks per second of the statistics clock (platform/stat_clock.h); 0 until the first checked
// mutex is built, then never changed.
extern std::atomic<int64_t> g_tickFrequency;
