// utf_conversion.h - UTF-8 to UTF-16 and back with the capacity-as-length contract, and byte text
// of the C locale to 16-bit units and back.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qzcore/qztypes.h"

namespace qz::text {

// Converts the NUL-terminated `source`. The result is the full length of the converted text without
// the terminator (in bytes, or in units), also when the output was cut at `capacity`; for invalid
// input or arguments it is `capacity` itself, truncated to 32 bits. No substitution character.
int32_t Utf16ToUtf8(char* dest, const QZWCHAR* source, uint64_t capacity) noexcept;
int32_t Utf8ToUtf16(QZWCHAR* dest, const char* source, uint64_t capacity) noexcept;

// Byte text of the current C locale to 16-bit units: ASCII by the library's own loop, the rest from
// the first byte at 0x80 or above by the C library. With `dest` null, the units needed.
size_t AnsiToUnicode(QZWCHAR* dest, const char* source, size_t max) noexcept;

}  // namespace qz::text
