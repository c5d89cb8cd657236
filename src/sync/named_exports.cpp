// named_exports.cpp - the exported functions of the named objects: named semaphores, shared
// memory and the restricted security descriptor.
//
// The opens and the semaphore operations run in the export frame (an open stores -1 first); the
// handle is not tested. The other exports are a line over their operations.
#include <cstdlib>
#include <memory>

#include "frame/export_frame.h"
#include "qzcore/qznamed.h"
#include "sync/named_semaphore.h"
#include "sync/named_shared_memory.h"

namespace {

CQZNamedSemaphore* SemaphoreFromHandle(QZSemaphoreHandle sem) {
  return reinterpret_cast<CQZNamedSemaphore*>(sem);
}

constexpr uint32_t kNamedSemFlags = 3;

}  // namespace

extern "C" {

QZ_API QZRESULT QZNamedSemOpen(const char* name, uint32_t initialCount, QZSemaphoreHandle* out) {
  qz::core::StoreInvalidHandle(out);
  return QZExportFrame([&] {
    auto sem = std::make_unique<CQZNamedSemaphore>(name, initialCount, kNamedSemFlags);
    *out = reinterpret_cast<QZSemaphoreHandle>(sem.release());
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZNamedSemClose(QZSemaphoreHandle sem) {
  delete SemaphoreFromHandle(sem);
  return QZ_S_OK;
}

QZ_API QZRESULT QZNamedSemWait(QZSemaphoreHandle sem) {
  return QZExportFrame([&] { return SemaphoreFromHandle(sem)->Wait(0xFFFFFFFFu); });
}

QZ_API QZRESULT QZNamedSemTryWait(QZSemaphoreHandle sem) {
  return QZExportFrame([&] { return SemaphoreFromHandle(sem)->Wait(0); });
}

QZ_API QZRESULT QZNamedSemPost(QZSemaphoreHandle sem) {
  return QZExportFrame([&] {
    SemaphoreFromHandle(sem)->Post();
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZNamedSemGetValue(QZSemaphoreHandle, int32_t* value) {
  *value = -1;
  return QZ_S_OK;
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

QZ_API QZRESULT QZSharedMemClose(QZSharedMemHandle shm) { return qz::core::SharedMemClose(shm); }

QZ_API QZRESULT QZWinBuildRestrictedSD(QZSecurityDescriptor* sd, uint32_t accessMask,
                                       void** aclOut) {
  return qz::core::BuildRestrictedSD(sd, accessMask, aclOut);
}

QZ_API void QZWinFreeRestrictedSD(void* acl) { std::free(acl); }

}  // extern "C"
