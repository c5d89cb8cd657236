// result.cpp - translation of platform error numbers into result codes.
#include "frame/core_exception.h"
#include "platform/last_error.h"
#include "platform/native_error.h"

namespace qz::core {

QZRESULT ResultFromNative(uint32_t nativeError) noexcept {
  switch (nativeError) {
    case os::kErrorSuccess: return QZ_S_OK;
    case os::kErrorFileNotFound:
    case os::kErrorPathNotFound: return QZ_E_FILE_NOT_FOUND;
    case os::kErrorAccessDenied: return QZ_E_ACCESSDENIED;
    case os::kErrorInvalidHandle: return QZ_E_HANDLE;
    case os::kErrorOutOfMemory: return QZ_E_OUTOFMEMORY;
    case os::kErrorAlreadyExists: return QZ_E_ALREADY_EXISTS;
    case os::kErrorWaitTimeout: return QZ_E_TIMEOUT;
    default: return QZ_E_FAIL;
  }
}

void ThrowLastError() { throw EQZCoreException(ResultFromNative(os::GetLastError())); }

}  // namespace qz::core
