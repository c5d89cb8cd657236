// append_file.cpp - appending text files on Linux: open(O_APPEND | O_CREAT | O_CLOEXEC, 0666 less
// the umask), whole writes, close.
#include "platform/append_file.h"

#include <string>

#include "errno_map.h"
#include "io.h"
#include "platform/utf8.h"

namespace qz::os {

AppendFile::~AppendFile() {
  if (m_handle != -1) sys::close(static_cast<int>(m_handle));
}

bool AppendFile::Open(const char16_t* path) noexcept {
  try {
    const std::string utf8 = Utf16ToUtf8Replacing(std::u16string_view(path, Utf16Length(path)));
    const int fd = OpenCloexec(utf8.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0666);
    if (fd < 0) {
      SetLastErrorFromPathErrno(errno, utf8.c_str());
      return false;
    }
    m_handle = fd;
    return true;
  } catch (...) {
    SetLastErrorFromErrno(ENOMEM);
    return false;
  }
}

bool AppendFile::Write(std::string_view text) noexcept {
  if (WriteAll(static_cast<int>(m_handle), text.data(), text.size())) return true;
  SetLastErrorFromErrno(errno);
  return false;
}

bool AppendFile::Close() noexcept {
  const int fd = static_cast<int>(m_handle);
  m_handle = -1;
  if (sys::close(fd) == 0) return true;
  SetLastErrorFromErrno(errno);
  return false;
}

}  // namespace qz::os
