// critical_section.cpp - the POSIX recursive lock: a recursive pthread mutex in the opaque storage,
// plus a count of contended acquires and an optional spin before blocking.
//
// Where the build found glibc's mutex fields (QZ_HAVE_GLIBC_MUTEX_FIELDS, a configure-time check)
// the uncontended Enter and the Leave that finds no waiter do glibc's own steps for a recursive
// mutex in line, on its own fields (lock word, count, owner, user count), rather than calling
// pthread_mutex_lock/unlock: glibc's calls dispatch on the mutex kind and cost more than the rest of
// a library acquire. The mutex stays a valid glibc mutex throughout (conditions wait on it and
// QZMutexGetOSMutex hands it out), and any state the inline steps do not expect (another kind, a
// taken word, a count at its limit, a release by a thread that does not hold it) goes to glibc's
// calls. Only a taken word counts as contention: held by another thread, it is counted and spun
// on; held by this one, it is a recursive enter. A word taken between the peek and the exchange
// blocks uncounted. Under ThreadSanitizer, which must see every lock and unlock, and without
// those fields, Enter tries first and counts a failed try, and Leave calls glibc.
#include "platform/critical_section.h"

#include <linux/futex.h>
#include <pthread.h>

#include <cerrno>
#include <new>

#include "cpu_relax.h"
#include "syscalls.h"
#include "thread_id.h"
#include "platform/process_info.h"
#include "system_check.h"

static_assert(sizeof(pthread_mutex_t) <= QZ_NATIVE_LOCK_SIZE, "the lock's storage is too small");
static_assert(alignof(pthread_mutex_t) <= QZ_NATIVE_LOCK_ALIGN, "the lock's storage is misaligned");

#if defined(__SANITIZE_THREAD__)
#define QZ_LOCK_INLINE 0
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define QZ_LOCK_INLINE 0
#endif
#endif
#ifndef QZ_LOCK_INLINE
#define QZ_LOCK_INLINE QZ_HAVE_GLIBC_MUTEX_FIELDS
#endif

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

#if QZ_LOCK_INLINE
// Wakes one waiter of a glibc lock word (a process-private mutex), as glibc's release does.
__attribute__((noinline, cold)) void WakeOne(int* word) noexcept {
  const long result = sys::futex(reinterpret_cast<uint32_t*>(word), FUTEX_WAKE | FUTEX_PRIVATE_FLAG, 1, nullptr, nullptr, 0);
  if (result < 0) SystemCallFailed("futex", errno);
}
#endif

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

#if QZ_LOCK_INLINE

namespace {

// Relaxed reads and writes of glibc's plain fields: only the holder writes count and owner, and
// the lock word's acquire and release order them for the next holder.
template <typename T>
inline T Load(const T& field) noexcept {
  return __atomic_load_n(&field, __ATOMIC_RELAXED);
}
template <typename T>
inline void Store(T& field, T value) noexcept {
  __atomic_store_n(&field, value, __ATOMIC_RELAXED);
}

}  // namespace

void CriticalSection::Enter() noexcept {
  pthread_mutex_t* mutex = Native(m_native);
  auto& data = mutex->__data;
  const int self = static_cast<int>(CachedThreadId());
  if (__builtin_expect(Load(data.__kind) == PTHREAD_MUTEX_RECURSIVE_NP, 1)) {
    int expected = 0;
    if (__builtin_expect(Load(data.__lock) == 0, 1) &&
        __atomic_compare_exchange_n(&data.__lock, &expected, 1, false, __ATOMIC_ACQUIRE, __ATOMIC_RELAXED)) {
      // glibc's order: the count, the owner, then one more user.
      Store(data.__count, 1u);
      Store(data.__owner, self);
      Store(data.__nusers, Load(data.__nusers) + 1);
      return;
    }
    if (Load(data.__owner) == self && Load(data.__count) + 1 != 0) {
      Store(data.__count, Load(data.__count) + 1);
      return;
    }
  }
  EnterBusy();
}

__attribute__((noinline, cold)) void CriticalSection::EnterBusy() noexcept {
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

__attribute__((noinline, cold)) void CriticalSection::EnterBusy() noexcept {
  m_contention.fetch_add(1, std::memory_order_relaxed);
  for (uint32_t i = 0; i < m_spinCount; ++i) {
    CpuRelax();
    if (TryLock(Native(m_native))) return;
  }
  Lock(Native(m_native));
}

#endif

bool CriticalSection::TryEnter() noexcept { return TryLock(Native(m_native)); }

namespace {

// glibc's release, where the inline path cannot finish it: a release by a thread that holds
// nothing is the caller's error, which the first platform lets pass; glibc refuses it with EPERM
// and changes nothing. Anything else is a broken lock.
__attribute__((noinline, cold)) void Unlock(pthread_mutex_t* mutex) noexcept {
  const int result = pthread_mutex_unlock(mutex);
  if (result != EPERM) CheckSystemResult(result, "pthread_mutex_unlock");
}

}  // namespace

#if QZ_LOCK_INLINE

void CriticalSection::Leave() noexcept {
  pthread_mutex_t* mutex = Native(m_native);
  auto& data = mutex->__data;
  if (__builtin_expect(Load(data.__kind) != PTHREAD_MUTEX_RECURSIVE_NP ||
                           Load(data.__owner) != static_cast<int>(CachedThreadId()),
                       0)) {
    Unlock(mutex);
    return;
  }
  const unsigned count = Load(data.__count) - 1;
  Store(data.__count, count);
  if (count != 0) return;
  // glibc's order: no owner, one user less, then the word; a word that said "waiters" (2) wakes one.
  Store(data.__owner, 0);
  Store(data.__nusers, Load(data.__nusers) - 1);
  if (__builtin_expect(__atomic_exchange_n(&data.__lock, 0, __ATOMIC_RELEASE) > 1, 0)) WakeOne(&data.__lock);
}

#else

void CriticalSection::Leave() noexcept { Unlock(Native(m_native)); }

#endif

}  // namespace qz::os
