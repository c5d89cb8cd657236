// waitable_exports.cpp - the exported functions of conditions, events, gates and semaphores: each
// a line or two over the classes of waitable.h, in the export frame except the destroy operations.
#include <new>

#include "frame/export_frame.h"
#include "qzcore/qzwaitable.h"
#include "sync/waitable.h"

namespace {

CQZCondition* ConditionOf(QZConditionHandle handle) { return reinterpret_cast<CQZCondition*>(handle); }
CQZEvent* EventOf(QZEventHandle handle) { return reinterpret_cast<CQZEvent*>(handle); }
CQZGate* GateOf(QZGateHandle handle) { return static_cast<CQZGate*>(EventOf(reinterpret_cast<QZEventHandle>(handle))); }
CQZSemaphore* SemaphoreOf(QZSemaphoreHandle handle) { return reinterpret_cast<CQZSemaphore*>(handle); }

// The three readings of a wait: an infinite wait answers 0 for whatever returns, a timed wait
// QZ_E_TIMEOUT and a try-wait QZ_E_FAIL when the wait did not pass. Failures were thrown.
QZRESULT Infinite(bool) { return QZ_S_OK; }
QZRESULT Timed(bool passed) { return passed ? QZ_S_OK : QZ_E_TIMEOUT; }
QZRESULT Try(bool passed) { return passed ? QZ_S_OK : QZ_E_FAIL; }

template <class Body>
QZRESULT Framed(Body&& body) {
  return QZExportFrame([&]() -> QZRESULT {
    body();
    return QZ_S_OK;
  });
}

}  // namespace

extern "C" {

// Conditions.
QZ_API QZRESULT QZConditionCreate(const char* name, uint32_t flags, QZConditionHandle* out) {
  qz::core::StoreInvalidHandle(out);
  return QZExportFrame([&]() -> QZRESULT {
    *out = reinterpret_cast<QZConditionHandle>(new CQZCondition(qz::core::NameOrEmpty(name), flags));
    return QZ_S_OK;
  });
}
QZ_API QZRESULT QZConditionDestroy(QZConditionHandle condition) {
  delete ConditionOf(condition);
  return QZ_S_OK;
}
QZ_API QZRESULT QZConditionAcquire(QZConditionHandle condition) {
  return Framed([&] {
    try {
      ConditionOf(condition)->Acquire();
    } catch (...) {
      throw EQZCoreException(QZ_E_FAIL);  // whatever entering the lock throws
    }
  });
}
QZ_API QZRESULT QZConditionRelease(QZConditionHandle condition) { return Framed([&] { ConditionOf(condition)->Release(); }); }
QZ_API QZRESULT QZConditionWait(QZConditionHandle condition) {
  return Framed([&] { ConditionOf(condition)->Wait(qz::os::kInfinite); });
}
QZ_API QZRESULT QZConditionTimedWait(QZConditionHandle condition, uint32_t timeoutMs) {
  return Framed([&] { ConditionOf(condition)->Wait(timeoutMs); });
}
QZ_API QZRESULT QZConditionSignal(QZConditionHandle condition) { return Framed([&] { ConditionOf(condition)->Signal(); }); }
QZ_API QZRESULT QZConditionBroadcast(QZConditionHandle condition) {
  return Framed([&] { ConditionOf(condition)->Broadcast(); });
}

// Events.
QZ_API QZRESULT QZEventCreate(const char* name, uint32_t flags, QZEventHandle* out) {
  qz::core::StoreInvalidHandle(out);
  return QZExportFrame([&]() -> QZRESULT {
    *out = reinterpret_cast<QZEventHandle>(new CQZEvent(qz::core::NameOrEmpty(name), flags));
    return QZ_S_OK;
  });
}
QZ_API QZRESULT QZEventDestroy(QZEventHandle event) {
  delete EventOf(event);
  return QZ_S_OK;
}
QZ_API QZRESULT QZEventSignal(QZEventHandle event) { return Framed([&] { EventOf(event)->Signal(); }); }
QZ_API QZRESULT QZEventReset(QZEventHandle event) { return Framed([&] { EventOf(event)->Reset(); }); }
QZ_API QZRESULT QZEventWait(QZEventHandle event) {
  return QZExportFrame([&] { return Infinite(EventOf(event)->Wait(qz::os::kInfinite)); });
}
QZ_API QZRESULT QZEventTimedWait(QZEventHandle event, uint32_t timeoutMs) {
  return QZExportFrame([&] { return Timed(EventOf(event)->Wait(timeoutMs)); });
}

// Gates: the same native object as a manual-reset event, so destroy is the event's.
QZ_API QZRESULT QZGateCreate(const char* name, uint32_t flags, QZGateHandle* out) {
  qz::core::StoreInvalidHandle(out);
  return QZExportFrame([&]() -> QZRESULT {
    *out = reinterpret_cast<QZGateHandle>(static_cast<CQZEvent*>(new CQZGate(qz::core::NameOrEmpty(name), flags)));
    return QZ_S_OK;
  });
}
QZ_API QZRESULT QZGateDestroy(QZGateHandle gate) { return QZEventDestroy(reinterpret_cast<QZEventHandle>(gate)); }
QZ_API QZRESULT QZGateOpen(QZGateHandle gate) { return Framed([&] { GateOf(gate)->Open(); }); }
QZ_API QZRESULT QZGateClose(QZGateHandle gate) { return Framed([&] { GateOf(gate)->Close(); }); }
QZ_API QZRESULT QZGateWait(QZGateHandle gate) {
  return QZExportFrame([&] { return Infinite(GateOf(gate)->Wait(qz::os::kInfinite)); });
}
QZ_API QZRESULT QZGateTimedWait(QZGateHandle gate, uint32_t timeoutMs) {
  return QZExportFrame([&] { return Timed(GateOf(gate)->Wait(timeoutMs)); });
}
QZ_API QZRESULT QZGateTryWait(QZGateHandle gate) { return QZExportFrame([&] { return Try(GateOf(gate)->TryWait()); }); }

// Semaphores.
QZ_API QZRESULT QZSemaphoreCreate(uint32_t initialCount, const char* name, uint32_t flags, QZSemaphoreHandle* out) {
  qz::core::StoreInvalidHandle(out);
  return QZExportFrame([&]() -> QZRESULT {
    *out = reinterpret_cast<QZSemaphoreHandle>(new CQZSemaphore(initialCount, qz::core::NameOrEmpty(name), flags));
    return QZ_S_OK;
  });
}
QZ_API QZRESULT QZSemaphoreDestroy(QZSemaphoreHandle semaphore) {
  delete SemaphoreOf(semaphore);
  return QZ_S_OK;
}
QZ_API QZRESULT QZSemaphorePost(QZSemaphoreHandle semaphore) { return Framed([&] { SemaphoreOf(semaphore)->Post(); }); }
QZ_API QZRESULT QZSemaphoreWait(QZSemaphoreHandle semaphore) {
  return QZExportFrame([&] { return Infinite(SemaphoreOf(semaphore)->Wait(qz::os::kInfinite)); });
}
QZ_API QZRESULT QZSemaphoreTryWait(QZSemaphoreHandle semaphore) {
  return QZExportFrame([&] { return Try(SemaphoreOf(semaphore)->Wait(0)); });
}
QZ_API QZRESULT QZSemaphoreGetValue(QZSemaphoreHandle, int32_t* value) {
  return QZExportFrame([&]() -> QZRESULT {
    *value = -1;
    return QZ_S_OK;
  });
}

}  // extern "C"
