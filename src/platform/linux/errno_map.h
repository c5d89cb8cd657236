// errno_map.h - errno to the platform error numbers: the POSIX layer's one translation table.
//
// Only files of the POSIX layer include this. Each call site says what kind of operation failed,
// because a few errno values mean different platform errors in different places.
#pragma once

#include <cstdint>

namespace qz::os {

enum class ErrnoContext {
  kGeneral,        // any operation
  kPath,           // an operation on a path; telling a missing directory (3) from a missing
                   // file (2) needs the path: SetLastErrorFromPathErrno
  kExclusiveCreate,// O_CREAT|O_EXCL: EEXIST becomes 80
  kByteRangeLock,  // a non-blocking byte-range lock: EWOULDBLOCK/EAGAIN become 33
  kThreadCreate,   // starting a thread: EAGAIN (no room for another thread) becomes 8
};

// The platform number for `err` in `context`.
uint32_t TranslateErrno(int err, ErrnoContext context = ErrnoContext::kGeneral) noexcept;

// Translates `err`, stores it as the last error and returns it.
uint32_t SetLastErrorFromErrno(int err, ErrnoContext context = ErrnoContext::kGeneral) noexcept;

// As SetLastErrorFromErrno, for a path operation: tells a missing file (2) from a missing
// directory on the way to it (3) by looking at the parent.
uint32_t SetLastErrorFromPathErrno(int err, const char* path) noexcept;

}  // namespace qz::os
