// exports.cpp - the exported functions of the synchronisation family.
//
// Each export is a line or two: create and destroy run in the export frame, the lock operations
// dispatch through the mutex's virtual table with no frame and no test of the handle.
#include "frame/export_frame.h"
#include "frame/global_data.h"
#include "qzcore/qzmutex.h"
#include "sync/lock_stat_manager.h"
#include "sync/mutex_lifecycle.h"

extern "C" {

QZ_API QZRESULT QZMutexCreate(const char* name, uint32_t flags, QZMutexHandle* out) {
  qz::core::StoreInvalidHandle(out);
  return QZExportFrame([&]() -> QZRESULT {
    *out = qz::core::CreateMutexHandle(name, flags);
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZMutexDestroy(QZMutexHandle mutex) {
  return QZExportFrame([&]() { return qz::core::DestroyMutexHandle(mutex); });
}

QZ_API QZRESULT QZMutexAcquire(QZMutexHandle mutex) { return MutexFromHandle(mutex)->Acquire(); }

QZ_API QZRESULT QZMutexTryAcquire(QZMutexHandle mutex) { return MutexFromHandle(mutex)->TryAcquire(); }

QZ_API QZRESULT QZMutexRelease(QZMutexHandle mutex) { return MutexFromHandle(mutex)->Release(); }

QZ_API int32_t QZMutexAssertOwnership(QZMutexHandle mutex, QZBOOL16 expected) {
  return MutexFromHandle(mutex)->AssertOwnership(expected);
}

QZ_API void* QZMutexGetOSMutex(QZMutexHandle mutex) { return MutexFromHandle(mutex)->GetOSMutex(); }

QZ_API QZRESULT QZGetLockStats(QZMutexHandle mutex, QZMutexStats* stats) {
  return MutexFromHandle(mutex)->GetStats(stats);
}

QZ_API QZRESULT QZDumpLockStats(const char* label, const QZWCHAR* path) {
  return QZExportFrame([&] { return CQZGlobalData::m_lockStatManager->Dump(label, path); });
}

QZ_API QZRESULT QZResetLockStats(void) {
  CQZGlobalData::m_lockStatManager->ResetAll();
  return QZ_S_OK;
}

}  // extern "C"
