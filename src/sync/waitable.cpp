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

CQZSemaphore::Native CQZSemaphore::MakeNative(uint32_t initialCount, const std::string& name, uint32_t flags) {
  if (initialCount > kMaxCount) throw EQZCoreException(qz::core::ResultFromNative(qz::os::kErrorInvalidParameter));
  if ((flags & kNamedFlag) != 0) return Native(std::in_place_type<CQZNamedSemaphore>, "SEM:" + name, initialCount);
  return Native(std::in_place_type<qz::os::WaitableObject>, qz::os::WaitableObject::Kind::kCounter, initialCount, kMaxCount);
}

// The name is read before it is moved: m_handle comes first.
CQZSemaphore::CQZSemaphore(uint32_t initialCount, std::string name, uint32_t flags)
    : m_handle(MakeNative(initialCount, name, flags)), m_name(std::move(name)), m_flags(flags) {}

void CQZSemaphore::Post() {
  if (auto* named = std::get_if<CQZNamedSemaphore>(&m_handle)) return named->Post();
  if (!std::get<qz::os::WaitableObject>(m_handle).Set()) qz::core::ThrowLastError();
}

bool CQZSemaphore::Wait(uint32_t timeoutMs) {
  if (auto* named = std::get_if<CQZNamedSemaphore>(&m_handle)) return named->Wait(timeoutMs);
  return Passed(std::get<qz::os::WaitableObject>(m_handle).Wait(timeoutMs));
}
