// wide_format.cpp - the 16-bit printf-style formatter (see wide_format.h for the rules).
//
// The parser reads one conversion at a time; strings and characters are handled here, numbers are
// handed to the C library's snprintf with a rebuilt byte format, and the bytes are widened.
#include "frame/wide_format.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string_view>

namespace qz::core {
namespace {

enum class Length { kNone, kChar, kShort, kLong32, kInt32, kInt64, kSize, kLongDouble, kWide };

void AppendCodePoint(std::u16string& out, char32_t cp) {
  if (cp >= 0x10000 && cp <= 0x10FFFF) {
    cp -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (cp >> 10));
    out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
  } else if (cp > 0x10FFFF) {
    out += u'\xFFFD';
  } else {
    out += static_cast<char16_t>(cp);
  }
}

// Byte text in the current C locale's encoding to 16-bit text, at most `maxUnits` units.
std::u16string DecodeBytes(std::string_view bytes, size_t maxUnits = SIZE_MAX) {
  std::u16string out;
  std::mbstate_t state{};
  size_t i = 0;
  while (i < bytes.size() && out.size() < maxUnits) {
    wchar_t wc;
    const size_t n = std::mbrtowc(&wc, bytes.data() + i, bytes.size() - i, &state);
    if (n == static_cast<size_t>(-1) || n == static_cast<size_t>(-2)) {
      out += u'\xFFFD';
      state = std::mbstate_t{};
      ++i;
      continue;
    }
    AppendCodePoint(out, static_cast<char32_t>(wc));
    i += n == 0 ? 1 : n;
  }
  if (out.size() > maxUnits) out.resize(maxUnits);
  return out;
}

// Pads text (a string, a character or a pointer) to `width`. As with numbers, the 0 flag pads on
// the left with zeros: the first platform's formatter makes no exception for text.
void AppendPadded(std::u16string& out, std::u16string_view text, int width, bool leftAlign, bool zeroPad) {
  const size_t pad = width > 0 && static_cast<size_t>(width) > text.size() ? static_cast<size_t>(width) - text.size() : 0;
  if (!leftAlign) out.append(pad, zeroPad ? u'0' : u' ');
  out.append(text);
  if (leftAlign) out.append(pad, u' ');
}

bool IsFlag(char16_t c) { return c == u'-' || c == u'+' || c == u' ' || c == u'#' || c == u'0'; }

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// Runs snprintf with `conversion` (a complete byte format for one conversion) and widens the result.
template <class T>
void AppendNumber(std::u16string& out, const std::string& conversion, T value) {
  char small[128];
  const int n = std::snprintf(small, sizeof small, conversion.c_str(), value);
  if (n < 0) return;
  if (static_cast<size_t>(n) < sizeof small) {
    out += DecodeBytes(std::string_view(small, static_cast<size_t>(n)));
    return;
  }
  std::string big(static_cast<size_t>(n) + 1, '\0');
  std::snprintf(big.data(), big.size(), conversion.c_str(), value);
  big.resize(static_cast<size_t>(n));
  out += DecodeBytes(big);
}

}  // namespace

std::u16string FormatWideV(const char16_t* format, va_list args, PlainString plain) {
  va_list ap;
  va_copy(ap, args);
  std::u16string out;
  const char16_t* p = format;
  while (*p != 0) {
    if (*p != u'%') {
      out += *p++;
      continue;
    }
    const char16_t* const specStart = p++;
    if (*p == u'%') {
      out += u'%';
      ++p;
      continue;
    }
    std::string flags;
    while (IsFlag(*p)) flags += static_cast<char>(*p++);
    int width = -1;
    if (*p == u'*') {
      width = va_arg(ap, int);
      if (width < 0) {
        flags += '-';
        width = -width;
      }
      ++p;
    } else if (IsDigit(*p)) {
      width = 0;
      while (IsDigit(*p)) width = width * 10 + (*p++ - u'0');
    }
    int precision = -1;
    if (*p == u'.') {
      ++p;
      precision = 0;
      if (*p == u'*') {
        precision = va_arg(ap, int);
        ++p;
      } else {
        while (IsDigit(*p)) precision = precision * 10 + (*p++ - u'0');
      }
    }
    Length length = Length::kNone;
    if (p[0] == u'h' && p[1] == u'h') { length = Length::kChar; p += 2; }
    else if (p[0] == u'h') { length = Length::kShort; ++p; }
    else if (p[0] == u'l' && p[1] == u'l') { length = Length::kInt64; p += 2; }
    else if (p[0] == u'l') { length = Length::kLong32; ++p; }
    else if (p[0] == u'w') { length = Length::kWide; ++p; }
    else if (p[0] == u'L') { length = Length::kLongDouble; ++p; }
    else if (p[0] == u'z' || p[0] == u't' || p[0] == u'j') { length = Length::kSize; ++p; }
    else if (p[0] == u'I' && p[1] == u'6' && p[2] == u'4') { length = Length::kInt64; p += 3; }
    else if (p[0] == u'I' && p[1] == u'3' && p[2] == u'2') { length = Length::kInt32; p += 3; }
    else if (p[0] == u'I') { length = Length::kSize; ++p; }

    const char16_t conv = *p;
    if (conv == 0) {  // a format that ends inside a conversion is copied as it stands
      out.append(specStart, p);
      break;
    }
    ++p;
    const bool leftAlign = flags.find('-') != std::string::npos;
    const bool zeroPad = flags.find('0') != std::string::npos;
    std::string conversion(1, '%');
    conversion += flags;
    if (width >= 0) conversion += std::to_string(width);
    if (precision >= 0) {
      conversion += '.';
      conversion += std::to_string(precision);
    }

    switch (conv) {
      case u's':
      case u'S': {
        const bool wide = conv == u's' ? (plain == PlainString::kWide ? length != Length::kShort : length == Length::kLong32 || length == Length::kWide)
                                        : (length == Length::kLong32 || length == Length::kWide);
        std::u16string text;
        if (wide) {
          const char16_t* s = va_arg(ap, const char16_t*);
          if (s == nullptr) s = u"(null)";
          size_t n = 0;
          while (s[n] != 0 && (precision < 0 || n < static_cast<size_t>(precision))) ++n;
          text.assign(s, n);
        } else {
          const char* s = va_arg(ap, const char*);
          if (s == nullptr) s = "(null)";
          text = DecodeBytes(s, precision < 0 ? SIZE_MAX : static_cast<size_t>(precision));
        }
        AppendPadded(out, text, width, leftAlign, zeroPad);
        break;
      }
      case u'c':
      case u'C': {
        const bool wide = conv == u'c' ? (plain == PlainString::kWide ? length != Length::kShort : length == Length::kLong32 || length == Length::kWide)
                                        : (length == Length::kLong32 || length == Length::kWide);
        const int value = va_arg(ap, int);
        std::u16string text;
        if (wide) {
          text = std::u16string(1, static_cast<char16_t>(value));
        } else {
          const char byte = static_cast<char>(value);
          text = DecodeBytes(std::string_view(&byte, 1));
        }
        AppendPadded(out, text, width, leftAlign, zeroPad);
        break;
      }
      case u'd':
      case u'i': {
        long long value;
        switch (length) {
          case Length::kChar: value = static_cast<signed char>(va_arg(ap, int)); break;
          case Length::kShort: value = static_cast<short>(va_arg(ap, int)); break;
          case Length::kLong32: value = static_cast<int32_t>(va_arg(ap, long)); break;
          case Length::kInt64:
          case Length::kSize: value = va_arg(ap, long long); break;
          default: value = va_arg(ap, int); break;
        }
        AppendNumber(out, conversion + "lld", value);
        break;
      }
      case u'u':
      case u'o':
      case u'x':
      case u'X': {
        unsigned long long value;
        switch (length) {
          case Length::kChar: value = static_cast<unsigned char>(va_arg(ap, unsigned)); break;
          case Length::kShort: value = static_cast<unsigned short>(va_arg(ap, unsigned)); break;
          case Length::kLong32: value = static_cast<uint32_t>(va_arg(ap, unsigned long)); break;
          case Length::kInt64:
          case Length::kSize: value = va_arg(ap, unsigned long long); break;
          default: value = va_arg(ap, unsigned); break;
        }
        AppendNumber(out, conversion + "ll" + static_cast<char>(conv), value);
        break;
      }
      case u'e': case u'E': case u'f': case u'F': case u'g': case u'G': case u'a': case u'A': {
        if (length == Length::kLongDouble) {
          AppendNumber(out, conversion + "L" + static_cast<char>(conv), va_arg(ap, long double));
        } else {
          AppendNumber(out, conversion + static_cast<char>(conv), va_arg(ap, double));
        }
        break;
      }
      case u'p': {
        const auto value = reinterpret_cast<uintptr_t>(va_arg(ap, void*));
        char digits[32];
        std::snprintf(digits, sizeof digits, "%016llX", static_cast<unsigned long long>(value));
        AppendPadded(out, DecodeBytes(digits), width, leftAlign, zeroPad);
        break;
      }
      case u'n':
        (void)va_arg(ap, void*);  // never written: a format cannot store into the caller's memory
        break;
      default:
        out.append(specStart, p);  // unknown conversion: copied as it stands
        break;
    }
  }
  va_end(ap);
  return out;
}

size_t FormatWideToBuffer(char16_t* buffer, size_t capacity, const char16_t* format, va_list args,
                          PlainString plain) {
  std::u16string text;
  try {
    text = FormatWideV(format, args, plain);
  } catch (...) {
    text.clear();  // a formatting failure leaves what could not be made out
  }
  const size_t n = text.size() < capacity - 1 ? text.size() : capacity - 1;
  std::memcpy(buffer, text.data(), n * sizeof(char16_t));
  buffer[n] = 0;
  return n;
}

size_t FormatWideToBuffer(char16_t* buffer, size_t capacity, const char16_t* format, ...) {
  va_list args;
  va_start(args, format);
  const size_t n = FormatWideToBuffer(buffer, capacity, format, args);
  va_end(args);
  return n;
}

}  // namespace qz::core
