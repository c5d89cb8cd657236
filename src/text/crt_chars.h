// crt_chars.h - the C library's locale-dependent character functions, as the text families use them.
//
// Every call into <cctype>, <cwctype>, <cwchar> and the C library's floating-point parsers made by
// the byte and 16-bit string families goes through this file, so the rest of the family reads
// without the C library's types. Everything here sees the process's current C locale. A 16-bit unit
// is handed to the wide functions as its own value: a surrogate is a character like any other, which
// no class contains and no case mapping changes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qz::text::crt {

// Byte classes and case of an int as the C library takes it: a char argument widened with its sign
// (so a byte of 0xE9 arrives as -23), or an unsigned byte value.
int IsAlpha(int c) noexcept;
int IsDigit(int c) noexcept;
int IsSpace(int c) noexcept;
int ToUpper(int c) noexcept;
int ToLower(int c) noexcept;

// Classes and case of one 16-bit unit.
int IsAlphaUnit(char16_t unit) noexcept;
int IsDigitUnit(char16_t unit) noexcept;
int IsSpaceUnit(char16_t unit) noexcept;
// The mapped character as a 32-bit value (the unit itself where the locale maps nothing).
int32_t ToUpperUnit(char16_t unit) noexcept;
int32_t ToLowerUnit(char16_t unit) noexcept;

// strtod on byte text; the end pointer is always stored.
double ParseDouble(const char* text, const char** end) noexcept;
// wcstod on 16-bit text read unit by unit; *consumed receives the number of units parsed (0 when
// no number was found). Sets errno as wcstod does, ENOMEM if the text could not be staged.
double ParseDoubleUnits(const char16_t* text, size_t* consumed) noexcept;

}  // namespace qz::text::crt
