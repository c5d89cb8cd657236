// mutex_lifecycle.h - creating and destroying mutexes by handle, for the exports and for the
// library's own objects that own a mutex; and the scoped guard that holds one.
#pragma once

#include <cstdint>
#include <exception>

#include "frame/core_exception.h"
#include "sync/mutex.h"

namespace qz::core {

// The work of QZMutexCreate: the provider's mutex, registered for the statistics dump when its
// flags ask for it. Throws on failure; the export's frame turns that into its result. The library's
// own objects, which ignore the result, call the export instead.
QZMutexHandle CreateMutexHandle(const char* name, uint32_t flags);

// The work of QZMutexDestroy: retire a mutex with statistics (0), else drop the handle's reference
// and return the count left.
QZRESULT DestroyMutexHandle(QZMutexHandle mutex);

// The platform lock of a mutex the provider made, for the code that must lock it without the
// mutex's own bookkeeping (failure reporting). Null for a handle that names no mutex.
os::CriticalSection* PlatformLockOf(QZMutexHandle mutex) noexcept;

// Whether a handle names a mutex: not null, and not the -1 that a failed create leaves. The
// library's own objects ignore the result of creating their mutex, so they test with this.
inline bool IsMutexHandle(QZMutexHandle mutex) noexcept {
  return mutex != nullptr && reinterpret_cast<intptr_t>(mutex) != -1;
}

// Holds a mutex for a scope; a failure to acquire or release is thrown as EQZCoreException. A
// handle that names no mutex (null, or -1 after a failed create) makes the guard do nothing. A
// release that fails while another exception leaves the scope is dropped: that exception already
// carries the scope's result, and a second one would end the process.
class CQZMutexGuard {
 public:
  explicit CQZMutexGuard(QZMutexHandle mutex)
      : m_mutex(IsMutexHandle(mutex) ? mutex : nullptr), m_exceptionsAtEntry(std::uncaught_exceptions()) {
    if (m_mutex != nullptr) ThrowIfFailed(MutexFromHandle(m_mutex)->Acquire());
  }
  ~CQZMutexGuard() noexcept(false) {
    if (m_mutex == nullptr) return;
    const QZRESULT result = MutexFromHandle(m_mutex)->Release();
    if (std::uncaught_exceptions() == m_exceptionsAtEntry) ThrowIfFailed(result);
  }
  CQZMutexGuard(const CQZMutexGuard&) = delete;
  CQZMutexGuard& operator=(const CQZMutexGuard&) = delete;

 private:
  QZMutexHandle m_mutex;     // held, or null
  int m_exceptionsAtEntry;   // exceptions in flight when the guard was made
};

}  // namespace qz::core
