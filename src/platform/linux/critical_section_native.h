// critical_section_native.h - the POSIX recursive lock: a recursive pthread mutex plus a count of
// contended acquires and an optional spin before blocking.
//
// glibc's pthread_mutex_trylock on a recursive mutex costs nearly twice pthread_mutex_lock, so the
// uncontended Enter does not try first: it peeks at the lock word of glibc's mutex, and only a
// taken word (held by another thread, or by this one recursively) leads to the out-of-line path
// that tells the two apart, counts the contention and spins. A word that is taken between the peek
// and the lock blocks uncounted; the count is of acquires that found the lock taken.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace qz::os {

class CriticalSection {
 public:
  // spinCount: tries with a CPU pause before a contended Enter blocks (0: block at once).
  explicit CriticalSection(uint32_t spinCount = 0) noexcept;
  ~CriticalSection();
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  void Enter() noexcept {
    if (__atomic_load_n(&m_mutex.__data.__lock, __ATOMIC_RELAXED) == 0) {
      pthread_mutex_lock(&m_mutex);
    } else {
      EnterBusy();
    }
  }
  bool TryEnter() noexcept { return pthread_mutex_trylock(&m_mutex) == 0; }
  void Leave() noexcept { pthread_mutex_unlock(&m_mutex); }

  uint32_t ContentionCount() const noexcept { return m_contention.load(std::memory_order_relaxed); }
  void ResetContentionCount() noexcept { m_contention.store(0, std::memory_order_relaxed); }
  void* NativeHandle() noexcept { return &m_mutex; }

 private:
  void EnterBusy() noexcept;

  pthread_mutex_t m_mutex;                // recursive
  std::atomic<uint32_t> m_contention{0};  // acquires whose first try failed
  uint32_t m_spinCount;                   // tries before blocking on contention
};

}  // namespace qz::os
