// named_exports.cpp - the exported functions of the named objects: named semaphores, shared
// memory and the restricted security descriptor.
//
// A named semaphore is the semaphore of waitable_exports.cpp made with the named flag: the open
// runs in the export frame (storing -1 first), and close, wait, try-wait, post and get-value are
// the semaphore exports themselves. Shared memory is closed as a file is, by QZFileClose. The
// other exports are a line over their operations.
#include <cstdlib>
#include <memory>

#include "frame/export_frame.h"
#include "qzcore/qzfile.h"
#include "qzcore/qznamed.h"
#include "qzcore/qzwaitable.h"
#include "sync/named_shared_memory.h"
#include "sync/waitable.h"

namespace {

constexpr uint32_t kNamedSemFlags = 3;

}  // namespace

extern "C" {

QZ_API QZRESULT QZNamedSemOpen(const char* name, uint32_t initialCount, QZSemaphoreHandle* out) {
  qz::core::StoreInvalidHandle(out);
  return QZExportFrame([&] {
    auto sem = std::make_unique<CQZSemaphore>(initialCount, qz::core::NameOrEmpty(name), kNamedSemFlags);
    *out = reinterpret_cast<QZSemaphoreHandle>(sem.release());
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZNamedSemClose(QZSemaphoreHandle sem) { return QZSemaphoreDestroy(sem); }
QZ_API QZRESULT QZNamedSemWait(QZSemaphoreHandle sem) { return QZSemaphoreWait(sem); }
QZ_API QZRESULT QZNamedSemTryWait(QZSemaphoreHandle sem) { return QZSemaphoreTryWait(sem); }
QZ_API QZRESULT QZNamedSemPost(QZSemaphoreHandle sem) { return QZSemaphorePost(sem); }
QZ_API QZRESULT QZNamedSemGetValue(QZSemaphoreHandle sem, int32_t* value) {
  return QZSemaphoreGetValue(sem, value);
}

QZ_API QZRESULT QZSharedMemOpen(const char* name, uint32_t flags, uint32_t, uint32_t size,
                                QZSharedMemHandle* out) {
  qz::core::StoreInvalidHandle(out);
  return QZExportFrame([&] { return qz::core::SharedMemOpen(name, flags, size, out); });
}

QZ_API QZRESULT QZSharedMemAttach(QZSharedMemHandle shm, uint32_t access, void** address) {
  return qz::core::SharedMemAttach(shm, access, address);
}

QZ_API QZRESULT QZSharedMemDetach(void* address) { return qz::core::SharedMemDetach(address); }

QZ_API QZRESULT QZSharedMemClose(QZSharedMemHandle shm) { return QZFileClose(shm); }

QZ_API QZRESULT QZWinBuildRestrictedSD(QZSecurityDescriptor* sd, uint32_t accessMask,
                                       void** aclOut) {
  return qz::core::BuildRestrictedSD(sd, accessMask, aclOut);
}

QZ_API void QZWinFreeRestrictedSD(void* acl) { std::free(acl); }

}  // extern "C"
