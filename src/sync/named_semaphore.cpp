// named_semaphore.cpp - the named semaphore over a shared word: take and give by compare-and-swap,
// sleep and wake through the platform's shared-word wait.
#include "sync/named_semaphore.h"

#include <chrono>

#include "frame/core_exception.h"
#include "platform/last_error.h"
#include "platform/named_objects.h"
#include "platform/native_error.h"

namespace {

constexpr uint32_t kInfinite = 0xFFFFFFFFu;

[[noreturn]] void ThrowNative(uint32_t error) {
  qz::os::SetLastError(error);
  qz::core::ThrowLastError();
}

}  // namespace

CQZNamedSemaphore::CQZNamedSemaphore(const std::string& objectName, uint32_t initialCount) {
  QZNamedSemaphoreShared initial{};
  initial.count.store(initialCount, std::memory_order_relaxed);
  qz::os::NamedObjectRequest request;
  request.size = sizeof(QZNamedSemaphoreShared);
  request.initial = &initial;
  request.initialLength = sizeof initial;
  qz::os::NamedObjectOpen opened;
  if (!qz::os::OpenNamedObject(objectName, request, &opened)) qz::core::ThrowLastError();
  m_handle = opened.handle;
  m_created = opened.created;
  m_shared = static_cast<QZNamedSemaphoreShared*>(qz::os::MapNamedObject(m_handle, true));
  if (m_shared == nullptr) {
    const uint32_t error = qz::os::GetLastError();
    qz::os::CloseNamedObject(m_handle);
    ThrowNative(error);
  }
}

CQZNamedSemaphore::~CQZNamedSemaphore() {
  if (m_shared != nullptr) qz::os::UnmapNamedObject(m_shared);
  if (m_handle >= 0) qz::os::CloseNamedObject(m_handle);
}

bool CQZNamedSemaphore::TryTake() {
  uint32_t count = m_shared->count.load(std::memory_order_relaxed);
  while (count > 0) {
    if (m_shared->count.compare_exchange_weak(count, count - 1, std::memory_order_acquire,
                                              std::memory_order_relaxed)) {
      return true;
    }
  }
  return false;
}

bool CQZNamedSemaphore::Wait(uint32_t timeoutMs) {
  if (TryTake()) return true;
  if (timeoutMs == 0) return false;
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    uint32_t left = kInfinite;
    if (timeoutMs != kInfinite) {
      const auto remaining =
          std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
      if (remaining <= 0) return false;
      left = static_cast<uint32_t>(remaining);
    }
    // Counted as a sleeper before the last look at the count, so a post either sees the sleeper
    // or the wait sees the count (both sequentially consistent).
    m_shared->sleepers.fetch_add(1, std::memory_order_seq_cst);
    bool woken = true;
    if (m_shared->count.load(std::memory_order_seq_cst) == 0) {
      woken = qz::os::WaitOnSharedWord(&m_shared->count, 0, left);
    }
    m_shared->sleepers.fetch_sub(1, std::memory_order_relaxed);
    if (TryTake()) return true;
    if (!woken) {
      if (qz::os::GetLastError() == qz::os::kErrorWaitTimeout) return false;
      qz::core::ThrowLastError();
    }
  }
}

void CQZNamedSemaphore::Post() {
  uint32_t count = m_shared->count.load(std::memory_order_relaxed);
  do {
    if (count >= kMaxCount) ThrowNative(qz::os::kErrorTooManyPosts);
  } while (!m_shared->count.compare_exchange_weak(count, count + 1, std::memory_order_seq_cst,
                                                  std::memory_order_relaxed));
  if (m_shared->sleepers.load(std::memory_order_seq_cst) != 0) {
    qz::os::WakeSharedWord(&m_shared->count, 1);
  }
}
