// io.cpp - the I/O helpers of the Linux layer over the system-call table.
#include "io.h"

namespace qz::os {

int OpenCloexec(const char* path, int flags, mode_t mode) noexcept {
  return RetryOnEintr([&] { return sys::open(path, flags | O_CLOEXEC, mode); });
}

bool WriteAll(int fd, const void* data, size_t size) noexcept {
  const auto* bytes = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = RetryOnEintr([&] { return sys::write(fd, bytes, size); });
    if (written < 0) return false;
    if (written == 0) {
      errno = ENOSPC;
      return false;
    }
    bytes += written;
    size -= static_cast<size_t>(written);
  }
  return true;
}

ssize_t ReadAll(int fd, void* data, size_t size) noexcept {
  auto* bytes = static_cast<char*>(data);
  size_t done = 0;
  while (done < size) {
    const ssize_t got = RetryOnEintr([&] { return sys::read(fd, bytes + done, size - done); });
    if (got < 0) return -1;
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
  return static_cast<ssize_t>(done);
}

}  // namespace qz::os
