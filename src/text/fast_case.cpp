// fast_case.cpp - ASCII by plain comparisons; the first non-ASCII byte or unit goes to the C
// run-time functions with the rest of the string.
#include "text/fast_case.h"

#include "text/crt_case.h"
#include "text/crt_chars.h"

namespace qz::text {
namespace {

constexpr bool IsAsciiByte(char c) noexcept { return static_cast<signed char>(c) >= 0; }
constexpr int SignedByte(char c) noexcept { return static_cast<signed char>(c); }
constexpr bool IsAsciiSpace(uint32_t c) noexcept { return c == 0x20 || (c >= 0x09 && c <= 0x0D); }

// Upper case for ASCII `a` to `z`, in place, up to the first non-ASCII byte; returns that byte's
// address, or null at the end of the string.
char* UpperAsciiPrefix(char* p) noexcept {
  for (;; ++p) {
    const char c = *p;
    if (c == 0) return nullptr;
    if (!IsAsciiByte(c)) return p;
    *p = static_cast<char>(AsciiUpper(static_cast<unsigned char>(c)));
  }
}

}  // namespace

int32_t CompareNoCaseA(const char* first, const char* second) noexcept {
  for (;; ++first, ++second) {
    const char a = *first;
    const char b = *second;
    if (!IsAsciiByte(a) || !IsAsciiByte(b)) return CrtCompareNoCase(first, second);
    const int32_t fa = static_cast<int32_t>(AsciiUpper(static_cast<unsigned char>(a)));
    const int32_t fb = static_cast<int32_t>(AsciiUpper(static_cast<unsigned char>(b)));
    if (fa != fb) return fa - fb;
    if (fa == 0) return 0;
  }
}

int32_t CompareNoCaseNA(const char* first, const char* second, size_t count) noexcept {
  if (count == 0) return 0;
  for (;; ++first, ++second, --count) {
    const char a = *first;
    const char b = *second;
    if (!IsAsciiByte(a) || !IsAsciiByte(b)) return CrtCompareNoCaseN(first, second, count);
    const int32_t fa = static_cast<int32_t>(AsciiUpper(static_cast<unsigned char>(a)));
    const int32_t fb = static_cast<int32_t>(AsciiUpper(static_cast<unsigned char>(b)));
    if (fa != fb) return fa - fb;
    if (fa == 0 || count == 1) return 0;
  }
}

int32_t UpperByte(char c) noexcept {
  if (IsAsciiByte(c)) return static_cast<int32_t>(AsciiUpper(static_cast<unsigned char>(c)));
  return crt::ToUpper(SignedByte(c));
}

int32_t LowerByte(char c) noexcept {
  if (IsAsciiByte(c)) return static_cast<int32_t>(AsciiUpper(static_cast<unsigned char>(c)));
  return crt::ToLower(SignedByte(c));
}

int32_t IsSpaceByte(char c) noexcept {
  if (IsAsciiByte(c)) return IsAsciiSpace(static_cast<unsigned char>(c)) ? 1 : 0;
  return crt::IsSpace(SignedByte(c));
}

char* UpperInPlace(char* text) noexcept {
  if (char* rest = UpperAsciiPrefix(text)) CrtUpperInPlace(rest);
  return text;
}

char* LowerInPlace(char* text) noexcept {
  if (char* rest = UpperAsciiPrefix(text)) CrtLowerInPlace(rest);
  return text;
}

int32_t UpperUnit(char16_t unit) noexcept {
  if (unit <= 0x7F) return static_cast<int32_t>(AsciiUpper(unit));
  return crt::ToUpperUnit(unit);
}

int32_t IsSpaceUnit(char16_t unit) noexcept {
  if (unit <= 0x7F) return IsAsciiSpace(unit) ? 1 : 0;
  return crt::IsSpaceUnit(unit);
}

char16_t* UpperInPlace(char16_t* text) noexcept {
  for (char16_t* p = text; *p != 0; ++p) {
    if (*p > 0x7F) {
      CrtUpperInPlace(p);
      break;
    }
    *p = static_cast<char16_t>(AsciiUpper(*p));
  }
  return text;
}

}  // namespace qz::text
