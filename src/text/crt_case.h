// crt_case.h - the C run-time's case-insensitive compares and in-place case conversions, for byte
// text and for 16-bit text, under the current C locale.
//
// These are the functions the fast paths hand the non-ASCII rest of a string to. As the run-time's
// single-byte functions do, byte text is read byte by byte: each byte is folded or mapped by the
// locale's `tolower`/`toupper` (in a UTF-8 locale the bytes of a multi-byte character are no
// letters and stay as they are). 16-bit text is read unit by unit.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qz::text {

// Compares case-insensitively (both sides folded to lower case): negative, 0 or positive, the
// difference of the first folded bytes that differ.
int32_t CrtCompareNoCase(const char* first, const char* second) noexcept;
// The same over at most `count` bytes of the first string; a count of 0 gives 0.
int32_t CrtCompareNoCaseN(const char* first, const char* second, size_t count) noexcept;
// Maps every byte to lower or upper case in place.
char* CrtLowerInPlace(char* text) noexcept;
char* CrtUpperInPlace(char* text) noexcept;

// The same on 16-bit units, each folded or mapped as a character of its own.
int32_t CrtCompareNoCase(const char16_t* first, const char16_t* second) noexcept;
int32_t CrtCompareNoCaseN(const char16_t* first, const char16_t* second, size_t count) noexcept;
char16_t* CrtLowerInPlace(char16_t* text) noexcept;
char16_t* CrtUpperInPlace(char16_t* text) noexcept;

}  // namespace qz::text
