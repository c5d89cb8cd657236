// critical_section.cpp - the out-of-line parts of the POSIX recursive lock: set-up, tear-down and
// the contended path (count, optional spin, then block).
#include "platform/critical_section.h"

#include "cpu_relax.h"

namespace qz::os {

CriticalSection::CriticalSection(uint32_t spinCount) noexcept : m_spinCount(spinCount) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&m_mutex, &attr);
  pthread_mutexattr_destroy(&attr);
}

CriticalSection::~CriticalSection() { pthread_mutex_destroy(&m_mutex); }

void CriticalSection::EnterContended() noexcept {
  m_contention.fetch_add(1, std::memory_order_relaxed);
  for (uint32_t i = 0; i < m_spinCount; ++i) {
    CpuRelax();
    if (pthread_mutex_trylock(&m_mutex) == 0) return;
  }
  pthread_mutex_lock(&m_mutex);
}

}  // namespace qz::os
