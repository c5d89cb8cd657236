// ansi_codepage.h - conversion between 16-bit text and the system's ANSI code page.
//
// The ANSI code page is the byte encoding that the process's text is in. These are the two
// conversions of the first platform for "code page 0", flags 0 and no default character: a byte
// sequence that is not valid in the code page becomes U+FFFD on the way to 16-bit text, and a
// character that the code page cannot represent (an unpaired surrogate included) becomes "?" on the
// way to bytes. The length is explicit, so a terminator is converted only if it is counted.
#pragma once

#include <cstdint>

namespace qz::os {

// Converts `length` (>= 1) bytes to UTF-16. With `out` null and `outSize` 0 it only measures.
// Returns the units written (or needed), or 0 on failure with the last error set: 122 when `out` is
// too small, 87 for bad arguments or a code page that cannot be converted.
int32_t MultiByteToWideChar(const char* text, int32_t length, char16_t* out, int32_t outSize) noexcept;

// Converts `length` (>= 1) units of UTF-16 to bytes of the ANSI code page; results as above, in bytes.
int32_t WideCharToMultiByte(const char16_t* text, int32_t length, char* out, int32_t outSize) noexcept;

}  // namespace qz::os
