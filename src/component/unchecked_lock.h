// unchecked_lock.h - CQZUncheckedLock: holds one of the component model's mutexes for a scope
// without looking at what acquire and release answer, as the module set and the class cache do.
#pragma once

#include "sync/mutex_lifecycle.h"

namespace qz::core {

class CQZUncheckedLock {
 public:
  // A handle that names no mutex (a create that failed) is passed over.
  explicit CQZUncheckedLock(QZMutexHandle mutex) noexcept : m_mutex(IsMutexHandle(mutex) ? mutex : nullptr) {
    if (m_mutex != nullptr) MutexFromHandle(m_mutex)->Acquire();
  }
  ~CQZUncheckedLock() {
    if (m_mutex != nullptr) MutexFromHandle(m_mutex)->Release();
  }
  CQZUncheckedLock(const CQZUncheckedLock&) = delete;
  CQZUncheckedLock& operator=(const CQZUncheckedLock&) = delete;

 private:
  QZMutexHandle m_mutex;  // held, or null
};

}  // namespace qz::core
