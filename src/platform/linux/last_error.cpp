// last_error.cpp - the per-thread last error of the POSIX layer and the errno translation table.
//
// One table maps errno values to the platform numbers that the logic understands; the few values
// whose meaning depends on the operation are settled by ErrnoContext.
#include "platform/last_error.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "errno_map.h"
#include "syscalls.h"
#include "platform/native_error.h"

namespace qz::os {
namespace {

thread_local uint32_t t_lastError = 0;  // this thread's last platform error

// errno value, platform number. A value not listed becomes kErrorInvalidFunction, which, like most
// numbers, the result translation turns into a general failure. Translation happens only on a
// failure path, so an errno of 0 (a call that failed without saying why) is not listed either: it
// must never read as success.
#define QZ_ERRNO_TABLE(X)                      \
  X(ENOENT, kErrorFileNotFound)                \
  X(ENOTDIR, kErrorPathNotFound)               \
  X(EACCES, kErrorAccessDenied)                \
  X(EPERM, kErrorAccessDenied)                 \
  X(EROFS, kErrorAccessDenied)                 \
  X(EISDIR, kErrorAccessDenied)                \
  X(ETXTBSY, kErrorSharingViolation)           \
  X(EBADF, kErrorInvalidHandle)                \
  X(ENOMEM, kErrorOutOfMemory)                 \
  X(EEXIST, kErrorAlreadyExists)               \
  X(ETIMEDOUT, kErrorWaitTimeout)              \
  X(EWOULDBLOCK, kErrorBusy)                   \
  X(EINVAL, kErrorInvalidParameter)            \
  X(ENOTEMPTY, kErrorDirNotEmpty)              \
  X(EMFILE, kErrorTooManyOpenFiles)            \
  X(ENFILE, kErrorTooManyOpenFiles)            \
  X(ENOSPC, kErrorDiskFull)                    \
  X(EDQUOT, kErrorDiskFull)                    \
  X(EXDEV, kErrorNotSameDevice)                \
  X(EPIPE, kErrorBrokenPipe)                   \
  X(ENAMETOOLONG, kErrorFilenameExcedRange)    \
  X(ENOSYS, kErrorNotSupported)                \
  X(EOPNOTSUPP, kErrorNotSupported)            \
  X(ERANGE, kErrorInsufficientBuffer)          \
  X(EOVERFLOW, kErrorArithmeticOverflow)       \
  X(EBUSY, kErrorBusy)                         \
  X(EFAULT, kErrorNoaccess)                    \
  X(ECANCELED, kErrorOperationAborted)         \
  X(ELOOP, kErrorCantResolveFilename)          \
  X(ENOEXEC, kErrorBadExeFormat)               \
  X(EFBIG, kErrorFileTooLarge)                 \
  X(ESRCH, kErrorInvalidHandle)                \
  X(ECHILD, kErrorInvalidHandle)               \
  X(EDEADLK, kErrorPossibleDeadlock)

}  // namespace

uint32_t GetLastError() noexcept { return t_lastError; }
void SetLastError(uint32_t error) noexcept { t_lastError = error; }

uint32_t TranslateErrno(int err, ErrnoContext context) noexcept {
  if (context == ErrnoContext::kExclusiveCreate && err == EEXIST) return kErrorFileExists;
  if (context == ErrnoContext::kByteRangeLock && (err == EWOULDBLOCK || err == EAGAIN || err == EACCES))
    return kErrorLockViolation;
  if (context == ErrnoContext::kThreadCreate && err == EAGAIN) return kErrorNotEnoughMemory;
  switch (err) {
#define QZ_ERRNO_CASE(e, n) \
  case e:                   \
    return n;
    QZ_ERRNO_TABLE(QZ_ERRNO_CASE)
#undef QZ_ERRNO_CASE
    default:
      return kErrorInvalidFunction;
  }
}

uint32_t SetLastErrorFromErrno(int err, ErrnoContext context) noexcept {
  const uint32_t native = TranslateErrno(err, context);
  t_lastError = native;
  return native;
}

uint32_t SetLastErrorFromPathErrno(int err, const char* path) noexcept {
  uint32_t native = TranslateErrno(err, ErrnoContext::kPath);
  if (err == ENOENT && path != nullptr) {
    // ENOENT covers both a missing leaf and a missing directory on the way; the platform tells
    // them apart (2 and 3), so look at the parent.
    std::string parent(path);
    while (parent.size() > 1 && parent.back() == '/') parent.pop_back();
    const size_t slash = parent.rfind('/');
    if (slash != std::string::npos) {
      parent.resize(slash == 0 ? 1 : slash);
      struct stat st;
      if (sys::stat(parent.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) native = kErrorPathNotFound;
    }
  }
  t_lastError = native;
  return native;
}

}  // namespace qz::os
