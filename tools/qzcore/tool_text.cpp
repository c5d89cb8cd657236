// tool_text.cpp - text helpers the qzcore commands share (see tool_text.h).
#include "tool_text.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <cstdio>

#include "qzcore.h"

namespace qztool {
namespace {

// Ranges of code points that take two columns (East Asian wide and full-width forms, emoji) and
// that take none (combining marks, zero-width joiners). Sorted; a small table is enough for the
// texts the tour shows.
struct Range {
  char32_t first, last;
};
constexpr Range kWide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},
                           {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},
                           {0xFE30, 0xFE4F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x1F300, 0x1F64F},
                           {0x1F900, 0x1F9FF}, {0x20000, 0x2FFFD}, {0x30000, 0x3FFFD}};
constexpr Range kZero[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A},
                           {0x064B, 0x065F}, {0x200B, 0x200F}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F},
                           {0xFE20, 0xFE2F}};

template <size_t N>
bool In(const Range (&table)[N], char32_t c) {
  for (const auto& r : table) {
    if (c >= r.first && c <= r.last) return true;
  }
  return false;
}

struct Name {
  int32_t code;
  const char* text;
};
constexpr Name kResults[] = {
    {QZ_S_OK, "S_OK"},
    {QZ_S_CREATED, "QZ_S_CREATED"},
    {QZ_E_NOTIMPL, "QZ_E_NOTIMPL"},
    {QZ_E_POINTER, "QZ_E_POINTER"},
    {QZ_E_FAIL, "QZ_E_FAIL"},
    {QZ_E_MODULE_NOT_INITIALIZED, "QZ_E_MODULE_NOT_INITIALIZED"},
    {QZ_E_BAD_KEY_KIND, "QZ_E_BAD_KEY_KIND"},
    {QZ_E_BUFFER_TOO_SMALL, "QZ_E_BUFFER_TOO_SMALL"},
    {QZ_E_CLASSNOTREG, "QZ_E_CLASSNOTREG"},
    {QZ_E_FILE_NOT_FOUND, "QZ_E_FILE_NOT_FOUND"},
    {QZ_E_ACCESSDENIED, "QZ_E_ACCESSDENIED"},
    {QZ_E_HANDLE, "QZ_E_HANDLE"},
    {QZ_E_OUTOFMEMORY, "QZ_E_OUTOFMEMORY"},
    {QZ_E_HANDLE_EOF, "QZ_E_HANDLE_EOF"},
    {QZ_E_INVALIDARG, "QZ_E_INVALIDARG"},
    {QZ_E_ALREADY_EXISTS, "QZ_E_ALREADY_EXISTS"},
    {QZ_E_TIMEOUT, "QZ_E_TIMEOUT"},
};

}  // namespace

std::string Hex(unsigned long value) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%08lX", value);
  return text;
}

std::string Result(int32_t code) {
  const std::string hex = Hex(static_cast<uint32_t>(code));
  for (const auto& name : kResults) {
    if (name.code == code) return code == QZ_S_OK ? std::string(name.text) : std::string(name.text) + " (" + hex + ")";
  }
  return hex;
}

std::string Utf8(const char16_t* text) {
  const int64_t length = QZUTF16ToUTF8(nullptr, text, 0);
  if (length < 0) return "?";
  std::string out(static_cast<size_t>(length) + 1, '\0');
  if (QZUTF16ToUTF8(out.data(), text, out.size()) != length) return "?";
  out.resize(static_cast<size_t>(length));
  return out;
}

size_t DisplayWidth(const std::string& text) {
  size_t width = 0;
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
    char32_t c = lead;
    bool wellFormed = length != 0 && i + length <= text.size();
    if (wellFormed && length > 1) {
      c = lead & (0x7F >> length);
      for (size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(text[i + k]);
        wellFormed = wellFormed && (next & 0xC0) == 0x80;
        c = (c << 6) | (next & 0x3F);
      }
    }
    if (!wellFormed) {
      ++width;
      ++i;
      continue;
    }
    width += In(kZero, c) ? 0 : In(kWide, c) ? 2 : 1;
    i += length;
  }
  return width;
}

std::string PadToWidth(const std::string& text, size_t width) {
  const size_t have = DisplayWidth(text);
  return have >= width ? text : text + std::string(width - have, ' ');
}

std::string AddressText(const addrinfo* record) {
  char text[INET6_ADDRSTRLEN] = "?";
  if (record->ai_family == AF_INET) {
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(record->ai_addr)->sin_addr, text, sizeof text);
  } else if (record->ai_family == AF_INET6) {
    inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(record->ai_addr)->sin6_addr, text, sizeof text);
  }
  return text;
}

std::string AddressTexts(const addrinfo* list) {
  std::string all;
  for (const addrinfo* r = list; r != nullptr; r = r->ai_next) all += (all.empty() ? "" : ", ") + AddressText(r);
  return all.empty() ? "(empty)" : all;
}

}  // namespace qztool
