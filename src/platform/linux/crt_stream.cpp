// crt_stream.cpp - close-on-exec C streams and modification times on Linux.
#include "platform/crt_stream.h"

#include "io.h"

namespace qz::os {

std::FILE* OpenStream(const char* path, bool write) noexcept {
  const int fd = OpenCloexec(path, write ? (O_WRONLY | O_CREAT | O_TRUNC) : O_RDONLY, 0666);
  if (fd < 0) return nullptr;
  std::FILE* stream = ::fdopen(fd, write ? "w" : "r");
  if (stream == nullptr) {
    const int saved = errno;
    sys::close(fd);
    errno = saved;
  }
  return stream;
}

bool PathModifiedTime(const char* path, int64_t* seconds) noexcept {
  struct stat st;
  if (sys::stat(path, &st) != 0) return false;
  *seconds = static_cast<int64_t>(st.st_mtime);
  return true;
}

bool StreamModifiedTime(std::FILE* stream, int64_t* seconds) noexcept {
  struct stat st;
  if (sys::fstat(::fileno(stream), &st) != 0) return false;
  *seconds = static_cast<int64_t>(st.st_mtime);
  return true;
}

}  // namespace qz::os
