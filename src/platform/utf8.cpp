// utf8.cpp - the platform layer's UTF-16/UTF-8 conversions (see utf8.h).
#include "platform/utf8.h"

#include <cstdint>

namespace qz::os {
namespace {

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD, or with `keepSurrogates` its own three
// bytes.
std::string Encode(std::u16string_view text, bool keepSurrogates) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t cp = text[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (cp >= 0xD800 && cp <= 0xDFFF && !keepSurrogates) {
      cp = 0xFFFD;
    }
    AppendUtf8(out, cp);
  }
  return out;
}

// UTF-8 to UTF-16; malformed bytes become U+FFFD, and so do encoded surrogates unless
// `keepSurrogates`.
std::u16string Decode(std::string_view text, bool keepSurrogates) {
  std::u16string out;
  out.reserve(text.size());
  const auto* s = reinterpret_cast<const uint8_t*>(text.data());
  const size_t n = text.size();
  for (size_t i = 0; i < n;) {
    const uint8_t b = s[i];
    char32_t cp = 0xFFFD;
    size_t len = 1;
    size_t need = b < 0x80 ? 0 : (b & 0xE0) == 0xC0 ? 1 : (b & 0xF0) == 0xE0 ? 2 : (b & 0xF8) == 0xF0 ? 3 : 9;
    if (need == 0) {
      cp = b;
    } else if (need <= 3) {
      char32_t v = b & (0x3F >> need);
      size_t k = 1;
      for (; k <= need && i + k < n && (s[i + k] & 0xC0) == 0x80; ++k) v = (v << 6) | (s[i + k] & 0x3F);
      if (k == need + 1) {
        static constexpr char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
        if (v >= kMin[need] && v <= 0x10FFFF && (keepSurrogates || !(v >= 0xD800 && v <= 0xDFFF))) cp = v;
        len = need + 1;
      } else {
        len = k;
      }
    }
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out += static_cast<char16_t>(0xD800 + (cp >> 10));
      out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
    } else {
      out += static_cast<char16_t>(cp);
    }
    i += len;
  }
  return out;
}

}  // namespace

std::string Utf16ToUtf8Replacing(std::u16string_view text) { return Encode(text, false); }
std::u16string Utf8ToUtf16Replacing(std::string_view text) { return Decode(text, false); }
std::string Utf16ToUtf8KeepingSurrogates(std::u16string_view text) { return Encode(text, true); }
std::u16string Utf8ToUtf16KeepingSurrogates(std::string_view text) { return Decode(text, true); }

}  // namespace qz::os
