// exports.cpp - the exported byte (A) and 16-bit (W) string functions: each a line or two over the
// family's routines or the C library. None has a frame: no exception is caught, and the only one
// that can leave (memory exhaustion in the copies) passes to the caller.
#include <cstring>

#include "qzcore/qzstring.h"
#include "text/fast_case.h"

extern "C" {

QZ_API char* QZStrNCpyA(char* destination, const char* source, size_t count) {
  return std::strncpy(destination, source, count);
}

QZ_API char* QZStrStrA(const char* text, const char* sought) {
  return const_cast<char*>(std::strstr(text, sought));
}

QZ_API char* QZStrToLowerA(char* text) { return qz::text::LowerInPlace(text); }

}  // extern "C"
