// crt_number.h - the C run-time's number conversions with a 32-bit `long`, for byte text and for
// 16-bit text: strtol, strtoul, atoi, strtod and their wide forms, _ltoa, _i64toa and theirs.
//
// Parsing follows the documented contract: leading white space of the current C locale, an
// optional sign, then digits in the base (2 to 36, or 0 to take 0x/0 prefixes), letters in either
// case. A magnitude out of range gives the limit and sets errno to ERANGE; an invalid base gives 0
// and sets errno to EINVAL; text without digits gives 0 with the end at the start, and a 0x prefix
// is no digit ("0xg" in base 16 converts nothing). `long` is 32 bits here whatever the platform's
// `long` is.
#pragma once

#include <cstdint>

namespace qz::text {

int32_t ParseLong(const char* text, char** end, int32_t base) noexcept;
int32_t ParseLong(const char16_t* text, char16_t** end, int32_t base) noexcept;
uint32_t ParseULong(const char* text, char** end, int32_t base) noexcept;
uint32_t ParseULong(const char16_t* text, char16_t** end, int32_t base) noexcept;
// atoi and _wtoi: base 10, clamped to the 32-bit limits with ERANGE like ParseLong.
int32_t ParseInt(const char* text) noexcept;
int32_t ParseInt(const char16_t* text) noexcept;
// strtod and wcstod; `end` may be null.
double ParseDouble(const char* text, char** end) noexcept;
double ParseDouble(const char16_t* text, char16_t** end) noexcept;

// _ltoa, _i64toa and their wide forms: digits in the radix, lower-case letters, a minus sign only
// in radix 10 (other radices show the two's complement bits). No buffer bound: the caller provides
// room for 33 (32-bit) or 65 (64-bit) units and the terminator. An invalid radix stores an empty
// string and sets errno to EINVAL.
char* FormatLong(int32_t value, char* buffer, int32_t radix) noexcept;
char16_t* FormatLong(int32_t value, char16_t* buffer, int32_t radix) noexcept;
char* FormatInt64(int64_t value, char* buffer, int32_t radix) noexcept;
char16_t* FormatInt64(int64_t value, char16_t* buffer, int32_t radix) noexcept;

}  // namespace qz::text
