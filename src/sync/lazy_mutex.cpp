// lazy_mutex.cpp - creation of a mutex on first use, under a spin flag.
#include "sync/lazy_mutex.h"

#include <chrono>
#include <thread>

#include "sync/mutex_lifecycle.h"

namespace qz::core {

CQZLazyMutex::~CQZLazyMutex() {
  const QZMutexHandle handle = m_handle.load(std::memory_order_acquire);
  if (handle != Invalid()) QZMutexDestroy(handle);
}

QZMutexHandle CQZLazyMutex::Get() noexcept {
  QZMutexHandle handle = m_handle.load(std::memory_order_acquire);
  if (handle != Invalid()) return handle;
  while (m_spin.exchange(1, std::memory_order_acquire) != 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  handle = m_handle.load(std::memory_order_acquire);
  if (handle == Invalid()) {
    QZMutexHandle made = Invalid();
    if (QZMutexCreate(m_name, 0, &made) >= 0) {
      m_handle.store(made, std::memory_order_release);
      handle = made;
    }
  }
  m_spin.store(0, std::memory_order_release);
  return handle != Invalid() ? handle : nullptr;
}

}  // namespace qz::core
