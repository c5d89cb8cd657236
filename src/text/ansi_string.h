// ansi_string.h - AnsiToWideString and WideToAnsiString: byte text in the system's ANSI code page
// to and from 16-bit text, as string objects.
//
// The internal conversions that the ini store, the locale names and the symbol lookup use. Bytes
// that are not valid in the code page become U+FFFD; characters that it cannot hold become "?".
#pragma once

#include <string>

#include "qzcore/qztypes.h"

namespace qz::text {

// The 16-bit form of the NUL-terminated byte string `text`. Empty for an empty string, for a string
// of 0x7FFFFFFF bytes or more, and when the platform cannot convert. Throws std::bad_alloc.
std::u16string AnsiToWideString(const char* text);

// The byte form of the NUL-terminated 16-bit string `text`; the same rules.
std::string WideToAnsiString(const QZWCHAR* text);

}  // namespace qz::text
