// utf8.h - UTF-16 to UTF-8 and back for the platform layer's own needs (paths, report sinks).
//
// Portable code: used where 16-bit text must reach a byte interface of the system. Unpaired
// surrogates become U+FFFD on the way to UTF-8; malformed UTF-8 becomes U+FFFD on the way back.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qz::os {

// Named for what sets them apart from the strict conversions of the text family: they never fail.
std::string Utf16ToUtf8Replacing(std::u16string_view text);
std::u16string Utf8ToUtf16Replacing(std::string_view text);

// The same, except that an unpaired surrogate travels as its own three bytes and comes back as
// itself, so every 16-bit text survives the round trip (for stores of 16-bit names).
std::string Utf16ToUtf8KeepingSurrogates(std::u16string_view text);
std::u16string Utf8ToUtf16KeepingSurrogates(std::string_view text);

// Length of a NUL-terminated 16-bit string.
inline size_t Utf16Length(const char16_t* text) noexcept {
  size_t n = 0;
  while (text[n] != 0) ++n;
  return n;
}

}  // namespace qz::os
