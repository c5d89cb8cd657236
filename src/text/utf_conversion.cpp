// utf_conversion.cpp - the UTF-8/UTF-16 conversions over ICU and the C-locale byte conversion with
// its ASCII fast path (utf_conversion.h).
#include "text/utf_conversion.h"

#include <unicode/ustring.h>

#include "platform/c_multibyte.h"

namespace qz::text {

int32_t Utf16ToUtf8(char* dest, const QZWCHAR* source, uint64_t capacity) noexcept {
  const auto room = static_cast<int32_t>(capacity);
  int32_t length = room;  // what comes back when ICU refuses the input and reports no length
  UErrorCode error = U_ZERO_ERROR;
  u_strToUTF8(dest, room, &length, source, -1, &error);
  return length;
}

int32_t Utf8ToUtf16(QZWCHAR* dest, const char* source, uint64_t capacity) noexcept {
  const auto room = static_cast<int32_t>(capacity);
  int32_t length = room;
  UErrorCode error = U_ZERO_ERROR;
  u_strFromUTF8(dest, room, &length, source, -1, &error);
  return length;
}

size_t AnsiToUnicode(QZWCHAR* dest, const char* source, size_t max) noexcept {
  const auto* bytes = reinterpret_cast<const unsigned char*>(source);
  size_t count = 0;
  if (dest == nullptr) {
    while (bytes[count] < 0x80) {
      if (bytes[count] == 0) return count;
      ++count;
    }
    return qz::os::MultiByteToUtf16(nullptr, source + count, 0) + count;
  }
  if (max == 0) return 0;
  for (;;) {
    if (count == max) return max;  // no room for a terminator
    const unsigned char byte = bytes[count];
    if (byte >= 0x80) break;
    dest[count] = byte;
    if (byte == 0) return count;
    ++count;
  }
  // An invalid sequence gives (size_t)-1 from the C library, and so the count less one.
  return qz::os::MultiByteToUtf16(dest + count, source + count, max - count) + count;
}

}  // namespace qz::text
