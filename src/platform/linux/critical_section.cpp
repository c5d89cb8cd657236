// critical_section.cpp - the POSIX recursive lock: a recursive pthread mutex in the opaque storage,
// plus a count of contended acquires and an optional spin before blocking.
//
// glibc's pthread_mutex_trylock on a recursive mutex costs nearly twice pthread_mutex_lock, so
// where the build found glibc's mutex fields (QZ_HAVE_GLIBC_MUTEX_FIELDS, a configure-time check)
// the uncontended Enter does not try first: it peeks at the lock word, and only a taken word (held
// by another thread, or by this one recursively) leads to the path that tells the two apart, counts
// the contention and spins. A word taken between the peek and the lock blocks uncounted; the count
// is of acquires that found the lock taken. Without those fields Enter tries first and counts a
// failed try.
#include "platform/critical_section.h"

#include <pthread.h>

#include <cerrno>
#include <new>

#include "cpu_relax.h"
#include "platform/process_info.h"
#include "system_check.h"

static_assert(sizeof(pthread_mutex_t) <= QZ_NATIVE_LOCK_SIZE, "the lock's storage is too small");
static_assert(alignof(pthread_mutex_t) <= QZ_NATIVE_LOCK_ALIGN, "the lock's storage is misaligned");

namespace qz::os {
namespace {

inline pthread_mutex_t* Native(unsigned char* storage) noexcept {
  return reinterpret_cast<pthread_mutex_t*>(storage);
}

inline void Lock(pthread_mutex_t* mutex) noexcept {
  CheckSystemResult(pthread_mutex_lock(mutex), "pthread_mutex_lock");
}

// 0 when taken; EBUSY when held elsewhere; anything else is a broken invariant.
inline bool TryLock(pthread_mutex_t* mutex) noexcept {
  const int result = pthread_mutex_trylock(mutex);
  if (result == EBUSY) return false;
  CheckSystemResult(result, "pthread_mutex_trylock");
  return true;
}

}  // namespace

CriticalSection::CriticalSection(uint32_t spinCount) noexcept : m_spinCount(spinCount) {
  pthread_mutexattr_t attr;
  CheckSystemResult(pthread_mutexattr_init(&attr), "pthread_mutexattr_init");
  CheckSystemResult(pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE), "pthread_mutexattr_settype");
  CheckSystemResult(pthread_mutex_init(new (m_native) pthread_mutex_t, &attr), "pthread_mutex_init");
  pthread_mutexattr_destroy(&attr);
}

CriticalSection::~CriticalSection() {
  // A lock destroyed while held (a retired statistics mutex its holder never released, a mutex
  // still held at the stop) is let go, as the first platform lets it go: glibc answers EBUSY and
  // holds nothing outside the storage that is freed next.
  const int result = pthread_mutex_destroy(Native(m_native));
  if (result != EBUSY) CheckSystemResult(result, "pthread_mutex_destroy");
}

#if QZ_HAVE_GLIBC_MUTEX_FIELDS

void CriticalSection::Enter() noexcept {
  pthread_mutex_t* mutex = Native(m_native);
  if (__builtin_expect(__atomic_load_n(&mutex->__data.__lock, __ATOMIC_RELAXED) == 0, 1)) {
    Lock(mutex);
  } else {
    EnterBusy();
  }
}

__attribute__((noinline)) void CriticalSection::EnterBusy() noexcept {
  pthread_mutex_t* mutex = Native(m_native);
  // The word is taken. By this thread: a recursive enter, which never waits.
  if (__atomic_load_n(&mutex->__data.__owner, __ATOMIC_RELAXED) == static_cast<int>(GetCurrentThreadId())) {
    Lock(mutex);
    return;
  }
  m_contention.fetch_add(1, std::memory_order_relaxed);
  for (uint32_t i = 0; i < m_spinCount; ++i) {
    CpuRelax();
    if (__atomic_load_n(&mutex->__data.__lock, __ATOMIC_RELAXED) == 0 && TryLock(mutex)) return;
  }
  Lock(mutex);
}

#else  // the portable path: try first, count a failed try

void CriticalSection::Enter() noexcept {
  if (__builtin_expect(!TryLock(Native(m_native)), 0)) EnterBusy();
}

__attribute__((noinline)) void CriticalSection::EnterBusy() noexcept {
  m_contention.fetch_add(1, std::memory_order_relaxed);
  for (uint32_t i = 0; i < m_spinCount; ++i) {
    CpuRelax();
    if (TryLock(Native(m_native))) return;
  }
  Lock(Native(m_native));
}

#endif

bool CriticalSection::TryEnter() noexcept { return TryLock(Native(m_native)); }

void CriticalSection::Leave() noexcept {
  // A release by a thread that holds nothing is the caller's error, which the first platform lets
  // pass; glibc refuses it with EPERM and changes nothing. Anything else is a broken lock.
  const int result = pthread_mutex_unlock(Native(m_native));
  if (result != EPERM) CheckSystemResult(result, "pthread_mutex_unlock");
}

}  // namespace qz::os
