// crt_chars.cpp - the C library's character classes, case mappings, multi-byte decoding and
// floating-point parsing, the one place the text families reach them.
//
// Platform `wchar_t` is 32 bits here; 16-bit units are widened by value on the way in and results
// are handed back as plain integers, so no `wchar_t` leaves this file.
#include "text/crt_chars.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>

namespace qz::text::crt {

int IsAlpha(int c) noexcept { return std::isalpha(c); }
int IsDigit(int c) noexcept { return std::isdigit(c); }
int IsSpace(int c) noexcept { return std::isspace(c); }
int ToUpper(int c) noexcept { return std::toupper(c); }
int ToLower(int c) noexcept { return std::tolower(c); }

int IsAlphaUnit(char16_t unit) noexcept { return std::iswalpha(static_cast<wint_t>(unit)); }
int IsDigitUnit(char16_t unit) noexcept { return std::iswdigit(static_cast<wint_t>(unit)); }
int IsSpaceUnit(char16_t unit) noexcept { return std::iswspace(static_cast<wint_t>(unit)); }
int32_t ToUpperUnit(char16_t unit) noexcept {
  return static_cast<int32_t>(std::towupper(static_cast<wint_t>(unit)));
}
int32_t ToLowerUnit(char16_t unit) noexcept {
  return static_cast<int32_t>(std::towlower(static_cast<wint_t>(unit)));
}

double ParseDouble(const char* text, const char** end) noexcept {
  char* stop = nullptr;
  const double value = std::strtod(text, &stop);
  *end = stop;
  return value;
}

double ParseDoubleUnits(const char16_t* text, size_t* consumed) noexcept {
  // The units are widened one to one, so an index into the copy is an index into the text.
  size_t length = 0;
  while (text[length] != 0) ++length;
  wchar_t local[256];
  wchar_t* wide = local;
  if (length >= sizeof local / sizeof local[0]) {
    wide = static_cast<wchar_t*>(std::malloc((length + 1) * sizeof(wchar_t)));
    if (wide == nullptr) {
      *consumed = 0;
      errno = ENOMEM;
      return 0.0;
    }
  }
  for (size_t i = 0; i <= length; ++i) wide[i] = static_cast<wchar_t>(text[i]);
  wchar_t* stop = nullptr;
  const double value = std::wcstod(wide, &stop);
  *consumed = static_cast<size_t>(stop - wide);
  if (wide != local) std::free(wide);
  return value;
}

}  // namespace qz::text::crt
