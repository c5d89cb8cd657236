// fast_case.h - the ASCII fast paths of the byte and 16-bit case functions and compares.
//
// A byte is ASCII when it is not negative as a signed byte; a 16-bit unit when it is at most 0x7F.
// ASCII is handled here by plain comparisons, without the C library's locale machinery; the first
// non-ASCII byte or unit hands the rest of the work to the C run-time functions (crt_case.h,
// crt_chars.h). The ASCII mapping of the byte "lower-case" functions is the upper-case one, and
// callers of the library rely on it: see LowerByte and LowerInPlace.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qz::text {

// `a` to `z`: the unsigned value of c - 0x61 is at most 25.
constexpr bool IsAsciiLower(uint32_t c) noexcept { return c - 0x61u <= 25u; }
constexpr uint32_t AsciiUpper(uint32_t c) noexcept { return IsAsciiLower(c) ? c - 0x20u : c; }

// Case-insensitive compare, ASCII folded to upper case, non-ASCII rest to the C run-time.
int32_t CompareNoCaseA(const char* first, const char* second) noexcept;
// The same over at most `count` bytes; a count of 0 gives 0.
int32_t CompareNoCaseNA(const char* first, const char* second, size_t count) noexcept;

// Case of one byte: ASCII `a` to `z` to upper case; other bytes to the C library as signed bytes.
int32_t UpperByte(char c) noexcept;
// The same ASCII mapping (to upper case); non-ASCII bytes to the C library's lower-case mapping.
int32_t LowerByte(char c) noexcept;
// White space: 0x20 and 0x09 to 0x0D for ASCII, the C library's test otherwise.
int32_t IsSpaceByte(char c) noexcept;

// In place: ASCII `a` to `z` to upper case, up to the first non-ASCII byte, whose rest goes to the
// C run-time's upper- or lower-case conversion. LowerInPlace delivers upper case on ASCII text.
char* UpperInPlace(char* text) noexcept;
char* LowerInPlace(char* text) noexcept;

// 16-bit units: the same fast paths, up to 0x7F.
int32_t UpperUnit(char16_t unit) noexcept;
int32_t IsSpaceUnit(char16_t unit) noexcept;
char16_t* UpperInPlace(char16_t* text) noexcept;

}  // namespace qz::text
