// io.h - the small I/O helpers of the Linux layer: retry on EINTR, write all, read all, open
// close-on-exec. Every descriptor the library opens is close-on-exec, so a child inherits only
// the streams it is given.
#pragma once

#include <cerrno>
#include <cstddef>

#include "syscalls.h"

namespace qz::os {

// Calls `call` until it answers anything but -1 with errno EINTR.
template <class Call>
inline auto RetryOnEintr(Call&& call) noexcept -> decltype(call()) {
  for (;;) {
    auto result = call();
    if (!(result == -1 && errno == EINTR)) return result;
  }
}

// open(2) with O_CLOEXEC added, retried on EINTR: the descriptor, or -1 with errno.
int OpenCloexec(const char* path, int flags, mode_t mode = 0) noexcept;

// Writes all `size` bytes, retrying short writes and EINTR: true, or false with errno (a write
// that makes no progress answers ENOSPC).
bool WriteAll(int fd, const void* data, size_t size) noexcept;

// Reads until `size` bytes or the end of the file: the count read, or -1 with errno.
ssize_t ReadAll(int fd, void* data, size_t size) noexcept;

}  // namespace qz::os
