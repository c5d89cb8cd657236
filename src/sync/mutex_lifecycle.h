// mutex_lifecycle.h - creating and destroying mutexes by handle, for the exports and for the
// library's own objects that own a mutex; and the scoped guard that holds one.
#pragma once

#include <cstdint>

#include "frame/core_exception.h"
#include "sync/mutex.h"

namespace qz::core {

// The work of QZMutexCreate: -1 in *out first, then the provider's mutex, registered for the
// statistics dump when its flags ask for it. 0 or a failure.
QZRESULT MutexCreate(const char* name, uint32_t flags, QZMutexHandle* out) noexcept;

// The work of QZMutexDestroy: retire a mutex with statistics (0), else drop the handle's reference
// and return the count left.
QZRESULT MutexDestroy(QZMutexHandle mutex) noexcept;

// Whether a handle names a mutex: not null, and not the -1 that a failed create leaves. The
// library's own objects ignore the result of creating their mutex, so they test with this.
inline bool IsMutexHandle(QZMutexHandle mutex) noexcept {
  return mutex != nullptr && reinterpret_cast<intptr_t>(mutex) != -1;
}

// Holds a mutex for a scope; a failure to acquire or release is thrown as EQZCoreException. A
// handle that names no mutex (null, or -1 after a failed create) makes the guard do nothing.
class CQZMutexGuard {
 public:
  explicit CQZMutexGuard(QZMutexHandle mutex) : m_mutex(IsMutexHandle(mutex) ? mutex : nullptr) {
    if (m_mutex != nullptr) ThrowIfFailed(MutexFromHandle(m_mutex)->Acquire());
  }
  ~CQZMutexGuard() noexcept(false) {
    if (m_mutex != nullptr) ThrowIfFailed(MutexFromHandle(m_mutex)->Release());
  }
  CQZMutexGuard(const CQZMutexGuard&) = delete;
  CQZMutexGuard& operator=(const CQZMutexGuard&) = delete;

 private:
  QZMutexHandle m_mutex;  // held, or null
};

}  // namespace qz::core
