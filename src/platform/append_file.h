// append_file.h - a text file opened for appending lines: created when missing, its contents kept,
// shared with every other reader and writer. Each Write reaches the file at once (no buffer), so
// what was written survives a failure later on.
#pragma once

#include <cstdint>
#include <string_view>

namespace qz::os {

class AppendFile {
 public:
  AppendFile() noexcept = default;
  ~AppendFile();  // closes a file still open, ignoring the answer
  AppendFile(const AppendFile&) = delete;
  AppendFile& operator=(const AppendFile&) = delete;

  // Opens (creating) the 16-bit path; a relative path is taken from the current directory. False
  // with the last error set; then nothing was created.
  bool Open(const char16_t* path) noexcept;
  // Appends all of `text`. False with the last error set.
  bool Write(std::string_view text) noexcept;
  // Closes the file. False with the last error set (the file is closed all the same).
  bool Close() noexcept;

 private:
  intptr_t m_handle = -1;  // the platform's handle, -1 when closed
};

}  // namespace qz::os
