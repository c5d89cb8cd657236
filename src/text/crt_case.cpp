// crt_case.cpp - the C run-time's case-insensitive compares and case conversions, rebuilt byte by
// byte on the locale's single-byte tables and unit by unit on its wide tables.
#include "text/crt_case.h"

#include "text/crt_chars.h"

namespace qz::text {
namespace {

char* MapInPlace(char* text, bool upper) noexcept {
  for (char* p = text; *p != 0; ++p) {
    const int b = static_cast<unsigned char>(*p);
    *p = static_cast<char>(upper ? crt::ToUpper(b) : crt::ToLower(b));
  }
  return text;
}

}  // namespace

int32_t CrtCompareNoCaseN(const char* first, const char* second, size_t count) noexcept {
  for (; count > 0; --count, ++first, ++second) {
    const int a = crt::ToLower(static_cast<unsigned char>(*first));
    const int b = crt::ToLower(static_cast<unsigned char>(*second));
    if (a != b || *first == 0) return a - b;
  }
  return 0;
}

int32_t CrtCompareNoCase(const char* first, const char* second) noexcept {
  return CrtCompareNoCaseN(first, second, static_cast<size_t>(-1));
}

char* CrtLowerInPlace(char* text) noexcept { return MapInPlace(text, false); }
char* CrtUpperInPlace(char* text) noexcept { return MapInPlace(text, true); }

int32_t CrtCompareNoCaseN(const char16_t* first, const char16_t* second, size_t count) noexcept {
  for (; count > 0; --count, ++first, ++second) {
    const int32_t a = crt::ToLowerUnit(*first);
    const int32_t b = crt::ToLowerUnit(*second);
    if (a != b || *first == 0) return a - b;
  }
  return 0;
}

int32_t CrtCompareNoCase(const char16_t* first, const char16_t* second) noexcept {
  return CrtCompareNoCaseN(first, second, static_cast<size_t>(-1));
}

char16_t* CrtLowerInPlace(char16_t* text) noexcept {
  for (char16_t* p = text; *p != 0; ++p) {
    const int32_t mapped = crt::ToLowerUnit(*p);
    if (mapped <= 0xFFFF) *p = static_cast<char16_t>(mapped);
  }
  return text;
}

char16_t* CrtUpperInPlace(char16_t* text) noexcept {
  for (char16_t* p = text; *p != 0; ++p) {
    const int32_t mapped = crt::ToUpperUnit(*p);
    if (mapped <= 0xFFFF) *p = static_cast<char16_t>(mapped);
  }
  return text;
}

}  // namespace qz::text
