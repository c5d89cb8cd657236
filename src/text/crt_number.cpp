// crt_number.cpp - integer parsing and formatting written once over the unit type; floating
// point goes to the C library's own parser.
#include "text/crt_number.h"

#include <cerrno>
#include <cstddef>
#include <type_traits>

#include "text/crt_chars.h"

namespace qz::text {
namespace {

bool IsSpaceOf(char c) noexcept { return crt::IsSpace(static_cast<unsigned char>(c)) != 0; }
bool IsSpaceOf(char16_t c) noexcept { return crt::IsSpaceUnit(c) != 0; }

// Value of a digit in any radix up to 36, or 36 for a unit that is none.
template <class T>
uint32_t DigitValue(T unit) noexcept {
  const uint32_t c = static_cast<std::make_unsigned_t<T>>(unit);
  if (c - '0' <= 9u) return c - '0';
  if (c - 'a' <= 25u) return c - 'a' + 10;
  if (c - 'A' <= 25u) return c - 'A' + 10;
  return 36;
}

// What the integer parsers share: the sign, the magnitude (saturated above 32 bits) and where the
// digits ended.
template <class T>
struct ParsedInteger {
  bool valid = false;     // a digit was read and the base was usable
  bool negative = false;  // a '-' stood before the digits
  bool overflow = false;  // the magnitude does not fit in 32 bits
  uint32_t magnitude = 0; // the value of the digits, valid when !overflow
  const T* end = nullptr; // behind the last digit, or the start when nothing was read
};

template <class T>
ParsedInteger<T> ParseInteger(const T* text, int32_t base) noexcept {
  ParsedInteger<T> result;
  result.end = text;
  if (base < 0 || base == 1 || base > 36) {
    errno = EINVAL;
    return result;
  }
  const T* p = text;
  while (IsSpaceOf(*p)) ++p;
  if (*p == '-' || *p == '+') result.negative = *p++ == '-';
  // "0x" or "0X" is the hexadecimal prefix (base 0 or 16), never a digit: with no hexadecimal
  // digit behind it nothing is converted, and the end stays at the start of the text.
  const bool hexPrefix = p[0] == '0' && (p[1] == 'x' || p[1] == 'X');
  if (base == 0) base = hexPrefix ? 16 : (p[0] == '0' ? 8 : 10);
  if (base == 16 && hexPrefix) p += 2;
  const uint32_t radix = static_cast<uint32_t>(base);
  uint64_t value = 0;
  const T* digits = p;
  for (uint32_t d; (d = DigitValue(*p)) < radix; ++p) {
    if (!result.overflow) {
      value = value * radix + d;
      result.overflow = value > UINT32_MAX;
    }
  }
  if (p == digits) return result;
  result.valid = true;
  result.magnitude = static_cast<uint32_t>(value);
  result.end = p;
  return result;
}

template <class T>
void StoreEnd(const ParsedInteger<T>& parsed, T** end) noexcept {
  if (end != nullptr) *end = const_cast<T*>(parsed.end);
}

template <class T>
int32_t ParseLongOf(const T* text, T** end, int32_t base) noexcept {
  const ParsedInteger<T> parsed = ParseInteger(text, base);
  StoreEnd(parsed, end);
  if (!parsed.valid) return 0;
  const uint32_t limit = parsed.negative ? 0x80000000u : 0x7FFFFFFFu;
  if (parsed.overflow || parsed.magnitude > limit) {
    errno = ERANGE;
    return parsed.negative ? INT32_MIN : INT32_MAX;
  }
  return static_cast<int32_t>(parsed.negative ? 0u - parsed.magnitude : parsed.magnitude);
}

template <class T>
uint32_t ParseULongOf(const T* text, T** end, int32_t base) noexcept {
  const ParsedInteger<T> parsed = ParseInteger(text, base);
  StoreEnd(parsed, end);
  if (!parsed.valid) return 0;
  if (parsed.overflow) {
    errno = ERANGE;
    return UINT32_MAX;
  }
  // A minus sign negates in unsigned arithmetic: "-1" is all bits set.
  return parsed.negative ? 0u - parsed.magnitude : parsed.magnitude;
}

template <class T>
T* FormatInteger(uint64_t magnitude, bool negative, T* buffer, int32_t radix) noexcept {
  if (radix < 2 || radix > 36) {
    errno = EINVAL;
    buffer[0] = 0;
    return buffer;
  }
  T digits[64];
  size_t n = 0;
  do {
    const uint32_t d = static_cast<uint32_t>(magnitude % static_cast<uint32_t>(radix));
    digits[n++] = static_cast<T>(d < 10 ? '0' + d : 'a' + d - 10);
    magnitude /= static_cast<uint32_t>(radix);
  } while (magnitude != 0);
  T* out = buffer;
  if (negative) *out++ = '-';
  while (n > 0) *out++ = digits[--n];
  *out = 0;
  return buffer;
}

template <class T>
T* FormatLongOf(int32_t value, T* buffer, int32_t radix) noexcept {
  const bool negative = radix == 10 && value < 0;
  const uint32_t bits = static_cast<uint32_t>(value);
  return FormatInteger(negative ? 0u - bits : bits, negative, buffer, radix);
}

template <class T>
T* FormatInt64Of(int64_t value, T* buffer, int32_t radix) noexcept {
  const bool negative = radix == 10 && value < 0;
  const uint64_t bits = static_cast<uint64_t>(value);
  return FormatInteger(negative ? 0u - bits : bits, negative, buffer, radix);
}

}  // namespace

int32_t ParseLong(const char* text, char** end, int32_t base) noexcept { return ParseLongOf(text, end, base); }
int32_t ParseLong(const char16_t* text, char16_t** end, int32_t base) noexcept {
  return ParseLongOf(text, end, base);
}
uint32_t ParseULong(const char* text, char** end, int32_t base) noexcept { return ParseULongOf(text, end, base); }
uint32_t ParseULong(const char16_t* text, char16_t** end, int32_t base) noexcept {
  return ParseULongOf(text, end, base);
}
int32_t ParseInt(const char* text) noexcept { return ParseLongOf<char>(text, nullptr, 10); }
int32_t ParseInt(const char16_t* text) noexcept { return ParseLongOf<char16_t>(text, nullptr, 10); }

double ParseDouble(const char* text, char** end) noexcept {
  const char* stop = nullptr;
  const double value = crt::ParseDouble(text, &stop);
  if (end != nullptr) *end = const_cast<char*>(stop);
  return value;
}

double ParseDouble(const char16_t* text, char16_t** end) noexcept {
  size_t consumed = 0;
  const double value = crt::ParseDoubleUnits(text, &consumed);
  if (end != nullptr) *end = const_cast<char16_t*>(text + consumed);
  return value;
}

char* FormatLong(int32_t value, char* buffer, int32_t radix) noexcept { return FormatLongOf(value, buffer, radix); }
char16_t* FormatLong(int32_t value, char16_t* buffer, int32_t radix) noexcept {
  return FormatLongOf(value, buffer, radix);
}
char* FormatInt64(int64_t value, char* buffer, int32_t radix) noexcept { return FormatInt64Of(value, buffer, radix); }
char16_t* FormatInt64(int64_t value, char16_t* buffer, int32_t radix) noexcept {
  return FormatInt64Of(value, buffer, radix);
}

}  // namespace qz::text
