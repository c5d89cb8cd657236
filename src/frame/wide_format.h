// wide_format.h - printf-style formatting into 16-bit text, by the first platform's rules.
//
// In a 16-bit format, %s, %ls, %ws, %c and %lc take 16-bit text; %hs, %S, %hc and %C take byte text
// (decoded by the current C locale). Integer sizes follow the first platform: %ld and %lu are 32
// bits, %lld, %I64d and %zd 64 bits, %I32d 32 bits, %Id pointer-sized; %p prints 16 upper-case hex
// digits. The 0 flag pads strings, characters and pointers with zeros too. Other conversions are
// as in printf; %n writes nothing.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>

namespace qz::core {

// How a plain %s (and %c) reads its argument: 16-bit text by the first platform's rule, or byte
// text as the C library's own wide formatter reads it.
enum class PlainString { kWide, kBytes };

std::u16string FormatWideV(const char16_t* format, va_list args, PlainString plain = PlainString::kWide);

// Formats into `buffer` of `capacity` units (capacity > 0), cutting the text at capacity - 1 units
// and always terminating it. Returns the number of units stored before the terminator.
size_t FormatWideToBuffer(char16_t* buffer, size_t capacity, const char16_t* format, va_list args,
                          PlainString plain = PlainString::kWide);
size_t FormatWideToBuffer(char16_t* buffer, size_t capacity, const char16_t* format, ...);

}  // namespace qz::core
