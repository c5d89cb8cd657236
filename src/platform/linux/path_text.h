// path_text.h - a 16-bit path as the UTF-8 bytes the Linux kernel takes.
//
// Only files of the platform folder include this. A null path is the empty path. The conversion
// allocates; when no memory is left, ok() is false and the last error says so (14), so that callers
// in noexcept platform calls report it like any other failure.
#pragma once

#include <new>
#include <string>

#include "platform/last_error.h"
#include "platform/native_error.h"
#include "platform/utf8.h"

namespace qz::os {

class PathText {
 public:
  explicit PathText(const char16_t* path) noexcept {
    try {
      if (path != nullptr) m_text = Utf16ToUtf8Replacing(std::u16string_view(path, Utf16Length(path)));
      m_ok = true;
    } catch (const std::bad_alloc&) {
      SetLastError(kErrorOutOfMemory);
    }
  }
  bool ok() const noexcept { return m_ok; }
  const char* c_str() const noexcept { return m_text.c_str(); }
  const std::string& text() const noexcept { return m_text; }

 private:
  std::string m_text;  // the UTF-8 bytes
  bool m_ok = false;   // false when the conversion ran out of memory
};

}  // namespace qz::os
