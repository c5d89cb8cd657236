// rwlock_exports.cpp - the exports of the reader/writer lock: each a line or two over
// CQZRWLockImpl, in the export frame except destroy; the releases and tries turn false into
// QZ_E_FAIL.
#include <new>

#include "frame/export_frame.h"
#include "qzcore/qzrwlock.h"
#include "sync/rwlock.h"

namespace {

CQZRWLockImpl* LockOf(QZRWLockHandle handle) noexcept { return reinterpret_cast<CQZRWLockImpl*>(handle); }

template <class Body>
QZRESULT Answer(Body&& body) {
  return QZExportFrame([&]() -> QZRESULT { return body() ? QZ_S_OK : QZ_E_FAIL; });
}

}  // namespace

extern "C" {

QZ_API QZRESULT QZRWLockCreate(const char* name, uint32_t flags, QZRWLockHandle* out) {
  qz::core::StoreInvalidHandle(out);
  return QZExportFrame([&]() -> QZRESULT {
    *out = reinterpret_cast<QZRWLockHandle>(new CQZRWLockImpl(qz::core::NameOrEmpty(name), flags));
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZRWLockDestroy(QZRWLockHandle lock) {
  delete LockOf(lock);
  return QZ_S_OK;
}

QZ_API QZRESULT QZRWLockAcquireRead(QZRWLockHandle lock) {
  return Answer([&] { return LockOf(lock)->AcquireRead(), true; });
}
QZ_API QZRESULT QZRWLockAcquireWrite(QZRWLockHandle lock) {
  return Answer([&] { return LockOf(lock)->AcquireWrite(), true; });
}
QZ_API QZRESULT QZRWLockReleaseRead(QZRWLockHandle lock) { return Answer([&] { return LockOf(lock)->ReleaseRead(); }); }
QZ_API QZRESULT QZRWLockReleaseWrite(QZRWLockHandle lock) { return Answer([&] { return LockOf(lock)->ReleaseWrite(); }); }
QZ_API QZRESULT QZRWLockTryAcquireRead(QZRWLockHandle lock) {
  return Answer([&] { return LockOf(lock)->TryAcquireRead(); });
}
QZ_API QZRESULT QZRWLockTryAcquireWrite(QZRWLockHandle lock) {
  return Answer([&] { return LockOf(lock)->TryAcquireWrite(); });
}

}  // extern "C"
