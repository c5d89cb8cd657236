// exports.cpp - the exported byte (A) and 16-bit (W) string functions: each a line or two over the
// family's routines or the C library. None has a frame: no exception is caught, and the only one
// that can leave (memory exhaustion in the copies) passes to the caller.
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "qzcore/qzstring.h"
#include "qzcore/qzunicode.h"
#include "text/crt_case.h"
#include "text/crt_chars.h"
#include "text/crt_number.h"
#include "text/fast_case.h"
#include "text/unit_string.h"

namespace tx = qz::text;

// A signed byte as the C library receives a char argument: 0xE9 arrives as -23.
#define QZ_SIGNED_BYTE(c) static_cast<int>(static_cast<signed char>(c))

// Names that are one function under two names: the 32-bit length readers, and the two frees
// (the second name takes a different pointer type, which the calling convention does not see).
#pragma GCC diagnostic push
#if !defined(__clang__)  // clang has no such warning
#pragma GCC diagnostic ignored "-Wattribute-alias"
#endif

extern "C" {

// ---- Length and copy

QZ_API size_t QZStrLenA(const char* text) { return tx::Length(text); }
QZ_API int32_t QZStrLenA_32(const char* text) __attribute__((alias("QZStrLenA")));
QZ_API size_t QZStrLenW(const QZWCHAR* text) { return tx::Length(text); }
QZ_API int32_t QZStrLenW_32(const QZWCHAR* text) __attribute__((alias("QZStrLenW")));
QZ_API size_t QZStrNLenA(const char* text, size_t maximum) { return tx::BoundedLength(text, maximum); }
QZ_API size_t QZStrNLenW(const QZWCHAR* text, size_t maximum) { return tx::BoundedLength(text, maximum); }
// The bounded UTF-16 length is the same entry point under a second name.
QZ_API size_t QZStrNLenUTF16(const QZWCHAR* text, size_t maximum) __attribute__((alias("QZStrNLenW")));

QZ_API char* QZStrCpyA(char* destination, const char* source) { return tx::Copy(destination, source); }
QZ_API QZWCHAR* QZStrCpyW(QZWCHAR* destination, const QZWCHAR* source) { return tx::Copy(destination, source); }
QZ_API char* QZStrCatA(char* destination, const char* source) { return std::strcat(destination, source); }
QZ_API QZWCHAR* QZStrCatW(QZWCHAR* destination, const QZWCHAR* source) { return tx::Append(destination, source); }

QZ_API char* QZStrNCpyA(char* destination, const char* source, size_t count) {
  return tx::CopyPadded(destination, source, count);
}
QZ_API QZWCHAR* QZStrNCpyW(QZWCHAR* destination, const QZWCHAR* source, size_t count) {
  return tx::CopyPadded(destination, source, count);
}
QZ_API char* QZStrNCatA(char* destination, const char* source, size_t count) {
  return tx::AppendBounded(destination, source, count);
}
QZ_API QZWCHAR* QZStrNCatW(QZWCHAR* destination, const QZWCHAR* source, size_t count) {
  return tx::AppendBounded(destination, source, count);
}

QZ_API char* QZStrNZCpyA(char* destination, size_t size, const char* source, size_t maximum) {
  return tx::CopyTerminated(destination, size, source, maximum);
}
QZ_API QZWCHAR* QZStrNZCpyW(QZWCHAR* destination, size_t size, const QZWCHAR* source, size_t maximum) {
  return tx::CopyTerminated(destination, size, source, maximum);
}
QZ_API char* QZStrNZCatA(char* destination, size_t size, const char* source, size_t maximum) {
  return tx::AppendTerminated(destination, size, source, maximum);
}
QZ_API QZWCHAR* QZStrNZCatW(QZWCHAR* destination, size_t size, const QZWCHAR* source, size_t maximum) {
  return tx::AppendTerminated(destination, size, source, maximum);
}

QZ_API size_t QZStrCpyCatA(char* destination, int32_t count, ...) {
  va_list strings;
  va_start(strings, count);
  const size_t length = tx::ConcatList(destination, count, strings);
  va_end(strings);
  return length;
}

QZ_API char* QZStrDupA(const char* text) { return tx::Duplicate(text, SIZE_MAX); }
QZ_API QZWCHAR* QZStrDupW(const QZWCHAR* text) { return tx::Duplicate(text, SIZE_MAX); }
QZ_API char* QZStrNDupA(const char* text, uint32_t maximum) { return tx::Duplicate(text, maximum); }
QZ_API QZWCHAR* QZStrNDupW(const QZWCHAR* text, uint32_t maximum) { return tx::Duplicate(text, maximum); }
QZ_API void QZStrFreeA(char* copy) { std::free(copy); }
QZ_API void QZStrFreeW(QZWCHAR* copy) __attribute__((alias("QZStrFreeA")));

// ---- Compare and search

QZ_API int32_t QZStrCmpA(const char* first, const char* second) { return tx::CompareOrder(first, second); }
QZ_API int32_t QZStrCmpW(const QZWCHAR* first, const QZWCHAR* second) { return tx::CompareOrder(first, second); }
QZ_API int32_t QZStrNCmpA(const char* first, const char* second, size_t count) {
  return std::strncmp(first, second, count);
}
QZ_API int32_t QZStrNCmpW(const QZWCHAR* first, const QZWCHAR* second, size_t count) {
  return tx::CompareBounded(first, second, count);
}

QZ_API int32_t QZStrICmpA(const char* first, const char* second) { return tx::CompareNoCaseA(first, second); }
QZ_API int32_t QZStrNICmpA(const char* first, const char* second, size_t count) {
  return tx::CompareNoCaseNA(first, second, count);
}
QZ_API int32_t QZStrICmpW(const QZWCHAR* first, const QZWCHAR* second) {
  return tx::CrtCompareNoCase(first, second);
}
QZ_API int32_t QZStrNICmpW(const QZWCHAR* first, const QZWCHAR* second, size_t count) {
  return tx::CrtCompareNoCaseN(first, second, count);
}

QZ_API char* QZStrChrA(const char* text, char c) { return const_cast<char*>(std::strchr(text, QZ_SIGNED_BYTE(c))); }
QZ_API char* QZStrRChrA(const char* text, char c) { return const_cast<char*>(std::strrchr(text, QZ_SIGNED_BYTE(c))); }
QZ_API QZWCHAR* QZStrChrW(const QZWCHAR* text, QZWCHAR c) { return tx::FindUnit(text, c); }
QZ_API QZWCHAR* QZStrRChrW(const QZWCHAR* text, QZWCHAR c) { return tx::FindLastUnit(text, c); }
QZ_API char* QZStrStrA(const char* text, const char* sought) { return const_cast<char*>(std::strstr(text, sought)); }
QZ_API QZWCHAR* QZStrStrW(const QZWCHAR* text, const QZWCHAR* sought) { return tx::FindString(text, sought); }

QZ_API char* QZStrTokA(char** position, const char* delimiters) { return tx::NextToken(position, delimiters); }
QZ_API QZWCHAR* QZStrTokW(QZWCHAR** position, const QZWCHAR* delimiters) {
  return tx::NextToken(position, delimiters);
}

// ---- Characters and case

QZ_API int32_t QZIsAlphaA(char c) { return tx::crt::IsAlpha(QZ_SIGNED_BYTE(c)); }
QZ_API int32_t QZIsDigitA(char c) { return tx::crt::IsDigit(QZ_SIGNED_BYTE(c)); }
QZ_API int32_t QZIsAlphaW(QZWCHAR c) { return tx::crt::IsAlphaUnit(c); }
QZ_API int32_t QZIsDigitW(QZWCHAR c) { return tx::crt::IsDigitUnit(c); }
QZ_API int32_t QZIsSpaceA(char c) { return tx::IsSpaceByte(c); }
QZ_API int32_t QZIsSpaceW(QZWCHAR c) { return tx::IsSpaceUnit(c); }

QZ_API int32_t QZToUpperA(char c) { return tx::UpperByte(c); }
QZ_API int32_t QZToLowerA(char c) { return tx::LowerByte(c); }
QZ_API int32_t QZToUpperW(QZWCHAR c) { return tx::UpperUnit(c); }
QZ_API int32_t QZToLowerW(QZWCHAR c) { return tx::crt::ToLowerUnit(c); }

QZ_API char* QZStrToUpperA(char* text) { return tx::UpperInPlace(text); }
QZ_API char* QZStrToLowerA(char* text) { return tx::LowerInPlace(text); }
QZ_API QZWCHAR* QZStrToUpperW(QZWCHAR* text) { return tx::UpperInPlace(text); }
QZ_API QZWCHAR* QZStrToLowerW(QZWCHAR* text) { return tx::CrtLowerInPlace(text); }

// ---- Numbers

QZ_API int32_t QZStrToIA(const char* text) { return tx::ParseInt(text); }
QZ_API int32_t QZStrToIW(const QZWCHAR* text) { return tx::ParseInt(text); }
QZ_API int32_t QZStrToLA(const char* text, char** end, int32_t base) { return tx::ParseLong(text, end, base); }
QZ_API int32_t QZStrToLW(const QZWCHAR* text, QZWCHAR** end, int32_t base) { return tx::ParseLong(text, end, base); }
QZ_API uint32_t QZStrToULA(const char* text, char** end, int32_t base) { return tx::ParseULong(text, end, base); }
QZ_API uint32_t QZStrToULW(const QZWCHAR* text, QZWCHAR** end, int32_t base) {
  return tx::ParseULong(text, end, base);
}
QZ_API double QZStrToDA(const char* text, char** end) { return tx::ParseDouble(text, end); }
QZ_API double QZStrToDW(const QZWCHAR* text, QZWCHAR** end) { return tx::ParseDouble(text, end); }

QZ_API char* QZLToStrA(int32_t value, char* buffer, int32_t radix) { return tx::FormatLong(value, buffer, radix); }
QZ_API QZWCHAR* QZLToStrW(int32_t value, QZWCHAR* buffer, int32_t radix) {
  return tx::FormatLong(value, buffer, radix);
}
QZ_API char* QZInt64ToStrA(int64_t value, char* buffer, int32_t radix) {
  return tx::FormatInt64(value, buffer, radix);
}
QZ_API QZWCHAR* QZInt64ToStrW(int64_t value, QZWCHAR* buffer, int32_t radix) {
  return tx::FormatInt64(value, buffer, radix);
}

}  // extern "C"

#pragma GCC diagnostic pop
