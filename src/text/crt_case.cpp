// crt_case.cpp - locale-aware case-insensitive compares and case conversions of the C run-time,
// rebuilt for byte text in the locale's encoding and for 16-bit units.
#include "text/crt_case.h"

#include <cstring>

#include "text/crt_chars.h"

namespace qz::text {
namespace {

// Bytes the decoder may look at: never past the terminator.
size_t DecodeLimit(const char* text, size_t count) noexcept {
  const size_t limit = count < crt::MaxCharBytes() ? count : crt::MaxCharBytes();
  return strnlen(text, limit);
}

char* MapInPlace(char* text, bool upper) noexcept {
  char* p = text;
  while (*p != 0) {
    uint32_t c = 0;
    const size_t n = crt::DecodeChar(p, DecodeLimit(p, crt::MaxCharBytes()), &c);
    if (n == 0) {
      // Not a character of the locale's encoding: the byte functions decide.
      const int b = static_cast<unsigned char>(*p);
      *p = static_cast<char>(upper ? crt::ToUpper(b) : crt::ToLower(b));
      ++p;
      continue;
    }
    const uint32_t mapped = upper ? crt::ToUpperChar(c) : crt::ToLowerChar(c);
    if (mapped != c) {
      char encoded[crt::MaxCharBytes()];
      if (crt::EncodeChar(mapped, encoded) == n) std::memcpy(p, encoded, n);
    }
    p += n;
  }
  return text;
}

}  // namespace

int32_t CrtCompareNoCaseN(const char* first, const char* second, size_t count) noexcept {
  while (count > 0) {
    const int a = static_cast<unsigned char>(*first);
    const int b = static_cast<unsigned char>(*second);
    if (a == 0 || b == 0) return crt::ToLower(a) - crt::ToLower(b);
    uint32_t ca = 0;
    uint32_t cb = 0;
    const size_t na = crt::DecodeChar(first, DecodeLimit(first, count), &ca);
    const size_t nb = crt::DecodeChar(second, DecodeLimit(second, count), &cb);
    if (na != 0 && nb != 0) {
      const int32_t fa = static_cast<int32_t>(crt::ToLowerChar(ca));
      const int32_t fb = static_cast<int32_t>(crt::ToLowerChar(cb));
      if (fa != fb) return fa - fb;
      first += na;
      second += nb;
      count -= na;
      continue;
    }
    // One side holds no whole character here: compare single bytes.
    const int fa = crt::ToLower(a);
    const int fb = crt::ToLower(b);
    if (fa != fb) return fa - fb;
    ++first;
    ++second;
    --count;
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
