// named_shared_memory.h - shared memory by name: open (create or join), views, close, and the
// restricted security descriptor. The handle is the platform's own, with no object around it, and
// it is closed as a file is (QZFileClose).
#pragma once

#include <cstdint>

#include "qzcore/qznamed.h"

namespace qz::core {

// Opens "SHM:" + name as QZSharedMemOpen describes: stores the handle or -1 in *out and returns
// QZ_S_CREATED, 0 or the failure. Throws std::bad_alloc when the object name cannot be formed.
QZRESULT SharedMemOpen(const char* name, uint32_t flags, uint32_t size, QZSharedMemHandle* out);

// Maps the whole object with the view `access` asks for; *address untouched on failure.
QZRESULT SharedMemAttach(QZSharedMemHandle shm, uint32_t access, void** address) noexcept;

QZRESULT SharedMemDetach(void* address) noexcept;

// The descriptor of QZWinBuildRestrictedSD: one allowed entry for Authenticated Users.
QZRESULT BuildRestrictedSD(QZSecurityDescriptor* sd, uint32_t accessMask, void** aclOut) noexcept;

}  // namespace qz::core
