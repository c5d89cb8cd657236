// ansi_string.cpp - the string-object conversions to and from the ANSI code page (ansi_string.h).
//
// The two-call shape of the platform conversion: measure with no output, size the object, convert
// with the explicit length so that no terminator goes through the platform.
#include "text/ansi_string.h"

#include <cstring>
#include <string>

#include "platform/ansi_codepage.h"

namespace qz::text {
namespace {

// True when a length cannot go to the platform: empty, or beyond its 32-bit signed count.
bool OutOfRange(size_t length) { return static_cast<uint64_t>(length) - 1 > 0x7FFFFFFD; }

}  // namespace

std::u16string AnsiToWideString(const char* text) {
  std::u16string result;
  const size_t length = strlen(text);
  if (OutOfRange(length)) return result;
  const auto count = static_cast<int32_t>(length);
  const int32_t size = qz::os::MultiByteToWideChar(text, count, nullptr, 0);
  result.resize(static_cast<size_t>(size));
  if (size > 0) qz::os::MultiByteToWideChar(text, count, result.data(), size);
  return result;
}

std::string WideToAnsiString(const QZWCHAR* text) {
  std::string result;
  const size_t length = std::char_traits<char16_t>::length(text);
  if (OutOfRange(length)) return result;
  const auto count = static_cast<int32_t>(length);
  const int32_t size = qz::os::WideCharToMultiByte(text, count, nullptr, 0);
  result.resize(static_cast<size_t>(size));
  if (size > 0) qz::os::WideCharToMultiByte(text, count, result.data(), size);
  return result;
}

}  // namespace qz::text
