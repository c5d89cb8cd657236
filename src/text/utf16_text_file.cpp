// utf16_text_file.cpp - UTF-16 text files over ICU ustdio (utf16_text_file.h).
//
// ICU's line writer ends a line the way the system does (LF here), and the file format is CR LF on
// every system. So a line goes out with a CR added at its end, and ICU's LF completes the pair.
#include "text/utf16_text_file.h"

#include <unicode/ustdio.h>

#include <algorithm>
#include <memory>
#include <new>

#include "text/utf16_string.h"

namespace qz::text {
namespace {

constexpr QZWCHAR kCr = 0x000D;
constexpr QZWCHAR kLf = 0x000A;

}  // namespace

UFILE* OpenUtf16File(const char* path, const char* mode) noexcept { return u_fopen(path, mode, nullptr, "UTF-16"); }

void CloseUtf16File(UFILE* file) noexcept {
  if (file != nullptr) u_fclose(file);
}

QZWCHAR* ReadLine(QZWCHAR* buffer, int32_t size, UFILE* file) noexcept {
  if (u_fgets(buffer, size, file) == nullptr) return nullptr;
  for (QZWCHAR* p = buffer;; ++p) {
    if (*p == kCr || *p == kLf || *p == 0) {
      *p = 0;
      break;
    }
  }
  return buffer;
}

int32_t WriteLine(const QZWCHAR* text, UFILE* file) noexcept {
  const auto length = static_cast<size_t>(static_cast<uint32_t>(Length32(text)));
  QZWCHAR local[256];
  std::unique_ptr<QZWCHAR[]> heap;
  QZWCHAR* line = local;
  if (length + 2 > std::size(local)) {
    heap.reset(new (std::nothrow) QZWCHAR[length + 2]);
    if (!heap) return 0;
    line = heap.get();
  }
  std::copy_n(text, length, line);
  line[length] = kCr;
  line[length + 1] = 0;
  return u_fputs(line, file);
}

}  // namespace qz::text
