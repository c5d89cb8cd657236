// guid.cpp - the identifier's text form, its comparisons and its generation.
//
// The reader walks a fixed table of steps (four-digit words and hyphens) over the caller's text
// and assembles the record only once every step matched.
#include "component/guid.h"

#include <cstdio>
#include <cstring>

#include "platform/library.h"
#include "text/utf_conversion.h"

namespace qz::core {
namespace {

enum class Step : uint8_t { kWord, kHyphen };

// XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX as words of four digits and hyphens: 36 characters.
constexpr Step kPattern[] = {Step::kWord,   Step::kWord, Step::kHyphen, Step::kWord,
                             Step::kHyphen, Step::kWord, Step::kHyphen, Step::kWord,
                             Step::kHyphen, Step::kWord, Step::kWord,   Step::kWord};
constexpr int kWordCount = 8;
constexpr size_t kPatternLength = 36;

// Byte positions in the order the comparison visits them.
constexpr uint8_t kCompareOrder[16] = {10, 11, 12, 13, 14, 15, 8, 9, 6, 7, 4, 5, 0, 1, 2, 3};

int HexValue(QZWCHAR unit) noexcept {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
  return -1;
}

// The length of `text`, counted no further than `limit`: all the reader needs to know of it.
size_t LengthUpTo(const QZWCHAR* text, size_t limit) noexcept {
  size_t n = 0;
  while (n < limit && text[n] != 0) ++n;
  return n;
}

}  // namespace

QZRESULT GuidFromString(const QZWCHAR* text, QZGUID* result) noexcept {
  const size_t length = LengthUpTo(text, kPatternLength + 2);
  if (length < kPatternLength) return QZ_E_INVALIDARG;
  const QZWCHAR* at = text;
  if (text[0] == u'{') {
    if (length < kPatternLength + 2 || text[kPatternLength + 1] != u'}') return QZ_E_INVALIDARG;
    ++at;
  }
  uint16_t words[kWordCount];
  int word = 0;
  for (const Step step : kPattern) {
    if (step == Step::kHyphen) {
      if (*at++ != u'-') return QZ_E_INVALIDARG;
      continue;
    }
    unsigned value = 0;
    for (int digit = 0; digit < 4; ++digit) {
      const int v = HexValue(*at++);
      if (v < 0) return QZ_E_INVALIDARG;
      value = value << 4 | static_cast<unsigned>(v);
    }
    words[word++] = static_cast<uint16_t>(value);
  }
  result->Data1 = static_cast<uint32_t>(words[0]) << 16 | words[1];
  result->Data2 = words[2];
  result->Data3 = words[3];
  for (int i = 0; i < 4; ++i) {
    result->Data4[2 * i] = static_cast<uint8_t>(words[4 + i] >> 8);
    result->Data4[2 * i + 1] = static_cast<uint8_t>(words[4 + i]);
  }
  return QZ_S_OK;
}

void StringFromGuid(const QZGUID& guid, QZWCHAR* buffer, int32_t size) noexcept {
  char text[40];
  std::snprintf(text, sizeof text, "{%08X-%04hX-%04hX-%02hhX%02hhX-%02hhX%02hhX%02hhX%02hhX%02hhX%02hhX}",
                guid.Data1, guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2],
                guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
  qz::text::AnsiToUnicode(buffer, text, static_cast<size_t>(size));
}

int32_t CompareGuid(const QZGUID& first, const QZGUID& second) noexcept {
  const auto* a = reinterpret_cast<const uint8_t*>(&first);
  const auto* b = reinterpret_cast<const uint8_t*>(&second);
  for (const uint8_t position : kCompareOrder) {
    if (a[position] != b[position]) return a[position] > b[position] ? 1 : -1;
  }
  return 0;
}

bool IsEqualGuid(const QZGUID& first, const QZGUID& second) noexcept {
  uint64_t a[2];
  uint64_t b[2];
  std::memcpy(a, &first, sizeof a);
  std::memcpy(b, &second, sizeof b);
  return a[0] == b[0] && a[1] == b[1];
}

uint32_t UuidCreate(QZGUID* result) noexcept {
  QZGUID fresh;
  if (!qz::os::FillRandom(&fresh, sizeof fresh)) return kRpcUuidNoAddress;
  fresh.Data3 = static_cast<uint16_t>((fresh.Data3 & 0x0FFF) | 0x4000);        // version 4
  fresh.Data4[0] = static_cast<uint8_t>((fresh.Data4[0] & 0x3F) | 0x80);        // the standard variant
  *result = fresh;
  return 0;
}

bool GuidBytesLess::operator()(const QZGUID& first, const QZGUID& second) const noexcept {
  return std::memcmp(&first, &second, sizeof first) < 0;
}

}  // namespace qz::core
