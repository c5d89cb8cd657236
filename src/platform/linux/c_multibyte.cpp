// c_multibyte.cpp - mbstowcs and wcstombs on 16-bit units over the C library's mbrtowc and wcrtomb.
//
// glibc's wchar_t holds a whole code point (UTF-32), so a character is one mbrtowc or wcrtomb call
// and becomes one or two 16-bit units here.
#include "platform/c_multibyte.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace qz::os {
namespace {

constexpr size_t kInvalid = static_cast<size_t>(-1);

bool IsLead(char16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool IsTrail(char16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

}  // namespace

size_t MultiByteToUtf16(char16_t* out, const char* text, size_t max) noexcept {
  mbstate_t state{};
  size_t count = 0;
  for (;;) {
    if (out != nullptr && count >= max) return count;
    wchar_t wc = 0;
    const size_t n = mbrtowc(&wc, text, MB_LEN_MAX, &state);
    // An incomplete sequence (-2) can only end at the terminator: invalid, as for mbstowcs.
    if (n == kInvalid || n == static_cast<size_t>(-2)) return kInvalid;
    if (n == 0) {
      if (out != nullptr) out[count] = 0;
      return count;
    }
    text += n;
    const auto cp = static_cast<uint32_t>(wc);
    if (cp < 0x10000) {
      if (out != nullptr) out[count] = static_cast<char16_t>(cp);
      ++count;
    } else if (cp <= 0x10FFFF) {
      if (out != nullptr) {
        if (max - count < 2) return count;
        out[count] = static_cast<char16_t>(0xD7C0 + (cp >> 10));
        out[count + 1] = static_cast<char16_t>(0xDC00 | (cp & 0x3FF));
      }
      count += 2;
    } else {
      return kInvalid;
    }
  }
}

size_t Utf16ToMultiByte(char* out, const char16_t* text, size_t max) noexcept {
  mbstate_t state{};
  size_t count = 0;
  char bytes[MB_LEN_MAX];
  for (size_t i = 0;;) {
    const char16_t unit = text[i];
    if (unit == 0) {
      if (out != nullptr && count < max) out[count] = 0;
      return count;
    }
    uint32_t cp = unit;
    size_t units = 1;
    if (IsLead(unit) && IsTrail(text[i + 1])) {
      cp = (static_cast<uint32_t>(unit) << 10) + text[i + 1] - 0x35FDC00;
      units = 2;
    } else if (IsLead(unit) || IsTrail(unit)) {
      return kInvalid;
    }
    const size_t n = wcrtomb(bytes, static_cast<wchar_t>(cp), &state);
    if (n == kInvalid) return kInvalid;
    if (out != nullptr) {
      if (max - count < n) return count;
      memcpy(out + count, bytes, n);
    }
    count += n;
    i += units;
  }
}

}  // namespace qz::os
