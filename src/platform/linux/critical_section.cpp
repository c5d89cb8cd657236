// critical_section.cpp - the out-of-line parts of the POSIX recursive lock: set-up, tear-down and
// the contended path (count, optional spin, then block).
#include "platform/critical_section.h"

#include "cpu_relax.h"
#include "platform/process_info.h"

namespace qz::os {

CriticalSection::CriticalSection(uint32_t spinCount) noexcept : m_spinCount(spinCount) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&m_mutex, &attr);
  pthread_mutexattr_destroy(&attr);
}

CriticalSection::~CriticalSection() { pthread_mutex_destroy(&m_mutex); }

void CriticalSection::EnterBusy() noexcept {
  // The word is taken. By this thread: a recursive enter, which never waits.
  if (__atomic_load_n(&m_mutex.__data.__owner, __ATOMIC_RELAXED) == static_cast<int>(GetCurrentThreadId())) {
    pthread_mutex_lock(&m_mutex);
    return;
  }
  m_contention.fetch_add(1, std::memory_order_relaxed);
  for (uint32_t i = 0; i < m_spinCount; ++i) {
    CpuRelax();
    if (__atomic_load_n(&m_mutex.__data.__lock, __ATOMIC_RELAXED) == 0 && pthread_mutex_trylock(&m_mutex) == 0) return;
  }
  pthread_mutex_lock(&m_mutex);
}

}  // namespace qz::os
