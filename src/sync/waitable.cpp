// waitable.cpp - waits and posts of the waitable objects, with the platform's answers turned into
// results: a timeout answers false, a failure is thrown with its mapped code.
#include "sync/waitable.h"

#include "frame/core_exception.h"
#include "platform/last_error.h"
#include "platform/native_error.h"

namespace {

// kWaitObject0: true; kWaitFailed: thrown; anything else (a timeout): false.
bool Passed(uint32_t result) {
  if (result == qz::os::kWaitFailed) qz::core::ThrowLastError();
  return result == qz::os::kWaitObject0;
}

}  // namespace

void CQZCondition::Wait(uint32_t timeoutMs) {
  if (m_monitor.Sleep(timeoutMs)) return;
  const uint32_t error = qz::os::GetLastError();
  if (error == qz::os::kErrorTimeout) throw EQZCoreException(QZ_E_TIMEOUT);
  throw EQZCoreException(qz::core::ResultFromNative(error));
}

CQZEvent::CQZEvent(std::string name, uint32_t flags, bool manualReset)
    : m_handle(manualReset ? qz::os::WaitableObject::Kind::kManualReset : qz::os::WaitableObject::Kind::kAutoReset, 0),
      m_name(std::move(name)),
      m_flags(flags) {}

bool CQZEvent::Wait(uint32_t timeoutMs) { return Passed(m_handle.Wait(timeoutMs)); }

uint32_t CQZSemaphore::CheckedInitial(uint32_t initialCount) {
  if (initialCount > kMaxCount) throw EQZCoreException(qz::core::ResultFromNative(qz::os::kErrorInvalidParameter));
  return initialCount;
}

CQZSemaphore::CQZSemaphore(uint32_t initialCount, std::string name, uint32_t flags)
    : m_handle(qz::os::WaitableObject::Kind::kCounter, CheckedInitial(initialCount), kMaxCount),
      m_name(std::move(name)),
      m_flags(flags) {}

void CQZSemaphore::Post() {
  if (!m_handle.Set()) qz::core::ThrowLastError();
}

bool CQZSemaphore::Wait(uint32_t timeoutMs) { return Passed(m_handle.Wait(timeoutMs)); }
