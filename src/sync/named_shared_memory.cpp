// named_shared_memory.cpp - the shared-memory operations over the platform's named objects: the
// create and open paths with their access and status rules, views, and the restricted descriptor.
#include "sync/named_shared_memory.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "frame/core_exception.h"
#include "platform/last_error.h"
#include "platform/named_objects.h"
#include "platform/native_error.h"

namespace qz::core {
namespace {

constexpr uint32_t kCreatePath = QZ_SHM_CREATE | QZ_SHM_EXCL;
constexpr uint32_t kAccessBits = QZ_SHM_WRITE | QZ_SHM_READ;

QZRESULT LastResult() noexcept { return ResultFromNative(qz::os::GetLastError()); }

}  // namespace

QZRESULT SharedMemOpen(const char* name, uint32_t flags, uint32_t size, QZSharedMemHandle* out) {
  *out = -1;
  qz::os::NamedObjectRequest request;
  request.create = (flags & kCreatePath) != 0;
  // The create path always gets a read-write handle; the open path the access its flags ask.
  request.writable = request.create || (flags & QZ_SHM_WRITE) != 0;
  request.size = size;
  if (request.create && size == 0) return ResultFromNative(qz::os::kErrorInvalidParameter);
  qz::os::NamedObjectOpen opened;
  if (!qz::os::OpenNamedObject("SHM:" + std::string(name != nullptr ? name : ""), request,
                               &opened)) {
    return LastResult();
  }
  const bool existed = request.create && !opened.created;
  if (existed && (flags & kCreatePath) == kCreatePath) {
    qz::os::CloseNamedObject(opened.handle);
    return QZ_E_FAIL;
  }
  *out = opened.handle;
  return existed ? QZ_S_OK : QZ_S_CREATED;
}

QZRESULT SharedMemAttach(QZSharedMemHandle shm, uint32_t access, void** address) noexcept {
  const uint32_t asked = access & kAccessBits;
  if (access != asked || asked == 0) return ResultFromNative(qz::os::kErrorInvalidParameter);
  void* view = qz::os::MapNamedObject(shm, (asked & QZ_SHM_WRITE) != 0);
  if (view == nullptr) return LastResult();
  *address = view;
  return QZ_S_OK;
}

QZRESULT SharedMemDetach(void* address) noexcept {
  return qz::os::UnmapNamedObject(address) ? QZ_S_OK : LastResult();
}

static_assert(sizeof(QZSecurityDescriptor) == QZ_SECURITY_DESCRIPTOR_SIZE);

QZRESULT BuildRestrictedSD(QZSecurityDescriptor* sd, uint32_t accessMask, void** aclOut) noexcept {
  // S-1-5-11: revision 1, one sub-authority, the NT authority (5), Authenticated Users (11).
  static constexpr uint8_t kAuthenticatedUsers[12] = {1, 1, 0, 0, 0, 0, 0, 5, 11, 0, 0, 0};
  std::memset(sd, 0, sizeof *sd);
  sd->revision = 1;
  sd->mode = 0666;
  auto* entry = static_cast<QZAccessEntry*>(std::calloc(1, sizeof(QZAccessEntry)));
  if (entry == nullptr) {
    *aclOut = nullptr;
    return QZ_E_OUTOFMEMORY;
  }
  entry->type = 0;
  entry->accessMask = accessMask;
  std::memcpy(entry->sid, kAuthenticatedUsers, sizeof kAuthenticatedUsers);
  sd->entries = entry;
  sd->entryCount = 1;
  *aclOut = entry;
  return QZ_S_OK;
}

}  // namespace qz::core
