// lazy_mutex.h - a process-wide mutex that is made on first use, for state that must work before
// (and without) any start routine of its own.
//
// The handle starts as the invalid value; the first user takes a spin flag, checks again and
// creates the mutex, so that exactly one is made however many threads arrive at once.
#pragma once

#include <atomic>
#include <cstdint>

#include "qzcore/qzmutex.h"

namespace qz::core {

class CQZLazyMutex {
 public:
  explicit CQZLazyMutex(const char* name) noexcept : m_name(name) {}
  ~CQZLazyMutex();
  CQZLazyMutex(const CQZLazyMutex&) = delete;
  CQZLazyMutex& operator=(const CQZLazyMutex&) = delete;

  // The mutex, made now if it does not exist yet; null if it could not be made.
  QZMutexHandle Get() noexcept;

 private:
  const char* m_name;                         // the mutex's diagnostic name
  std::atomic<QZMutexHandle> m_handle{Invalid()};  // all bits set until made
  std::atomic<int32_t> m_spin{0};             // 1 while one thread creates the mutex

  static QZMutexHandle Invalid() noexcept { return QZ_INVALID_HANDLE_VALUE(QZMutexHandle); }
};

}  // namespace qz::core
