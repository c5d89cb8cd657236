// c_multibyte.h - the C library's multibyte conversions (mbstowcs, wcstombs) on 16-bit units.
//
// The library's wide text is 16-bit UTF-16 whatever the width of the system's wchar_t. These keep the
// documented contracts of mbstowcs and wcstombs under the current C locale, with the wide side in
// 16-bit units: a character above U+FFFF is two units (a surrogate pair), and is never split.
#pragma once

#include <cstddef>

namespace qz::os {

// mbstowcs: converts the NUL-terminated byte string `text` to at most `max` units at `out`,
// storing the terminator if it fits; a pair that does not fit whole ends the conversion. With `out`
// null, `max` is ignored and the full length is measured. Returns the units stored (or needed)
// without the terminator, or (size_t)-1 for a byte sequence that is invalid in the locale.
size_t MultiByteToUtf16(char16_t* out, const char* text, size_t max) noexcept;

// wcstombs: converts the NUL-terminated 16-bit string `text` to at most `max` bytes at `out`,
// storing the terminator if it fits; a character whose bytes do not all fit ends the conversion.
// With `out` null, `max` is ignored. Returns the bytes stored (or needed) without the terminator, or
// (size_t)-1 for a character that the locale cannot represent or an unpaired surrogate.
size_t Utf16ToMultiByte(char* out, const char16_t* text, size_t max) noexcept;

}  // namespace qz::os
