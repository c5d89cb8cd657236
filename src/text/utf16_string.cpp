// utf16_string.cpp - code-point stepping, unit compares, bounded copies and case mapping of 16-bit
// text (utf16_string.h).
#include "text/utf16_string.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <memory>
#include <new>

namespace qz::text {
namespace {

constexpr QZWCHAR kNul = 0;

bool IsLead(QZWCHAR u) { return u >= 0xD800 && u <= 0xDBFF; }
bool IsTrail(QZWCHAR u) { return u >= 0xDC00 && u <= 0xDFFF; }

QZWCHAR FoldAscii(QZWCHAR u) { return (u >= u'A' && u <= u'Z') ? static_cast<QZWCHAR>(u + 32) : u; }

// Index arithmetic of the bounded operations is unsigned 64-bit and may wrap below the buffer (a
// size of 0); the pointer is formed from the signed view of the index.
QZWCHAR* At(QZWCHAR* base, size_t index) { return base + static_cast<ptrdiff_t>(index); }

}  // namespace

int32_t Length32(const QZWCHAR* text) noexcept {
  size_t n = 0;
  while (text[n] != kNul) ++n;
  return static_cast<int32_t>(n);
}

int32_t NextChar(const QZWCHAR** cursor, uint32_t count) noexcept {
  const int32_t limit = count == 0xFFFFFFFFu ? 2 : static_cast<int32_t>(count);
  if (limit < 1) return 0;
  const QZWCHAR* p = *cursor;
  const QZWCHAR lead = p[0];
  if (!IsLead(lead) || limit == 1) {
    *cursor = p + 1;
    return lead;
  }
  const QZWCHAR trail = p[1];
  if (IsTrail(trail)) {
    *cursor = p + 2;
    return (static_cast<int32_t>(lead) << 10) + trail - 0x35FDC00;
  }
  *cursor = p + 1;
  return lead;
}

int32_t CompareUnits(const QZWCHAR* a, const QZWCHAR* b) noexcept {
  for (;; ++a, ++b) {
    if (*a != *b) return static_cast<int32_t>(*a) - static_cast<int32_t>(*b);
    if (*a == kNul) return 0;
  }
}

int32_t CompareUnitsAsciiNoCase(const QZWCHAR* a, const QZWCHAR* b) noexcept {
  for (;; ++a, ++b) {
    if (*a != *b) {
      const int32_t diff = static_cast<int32_t>(FoldAscii(*a)) - static_cast<int32_t>(FoldAscii(*b));
      if (diff != 0) return diff;
    } else if (*a == kNul) {
      return 0;
    }
  }
}

QZWCHAR* CopyBounded(QZWCHAR* dest, size_t size, const QZWCHAR* source, size_t max) noexcept {
  const size_t n = std::min(size - 1, max);
  u_strncpy(dest, source, static_cast<int32_t>(n));
  *At(dest, n) = kNul;
  return dest;
}

QZWCHAR* AppendBounded(QZWCHAR* dest, size_t size, const QZWCHAR* source, size_t max) noexcept {
  size_t end = 0;
  while (end < size && dest[end] != kNul) ++end;
  if (end == size) end = size - 1;  // full and unterminated: the last unit gives way
  const size_t n = std::min(size - end - 1, max);
  QZWCHAR* appended = At(dest, end);
  u_strncpy(appended, source, static_cast<int32_t>(n));
  *At(appended, n) = kNul;
  return appended;
}

QZWCHAR* MapCaseInPlace(QZWCHAR* text, CaseMapping mapping) noexcept {
  const int32_t length = Length32(text);
  if (length == 0) return text;
  const auto span = static_cast<int32_t>(static_cast<uint32_t>(length) * 2u);
  // Mapped in place, the ICU we build on discards the whole result once it outgrows the span, which
  // a lengthening mapping always does (the span is mapped through to its end). So the mapping goes
  // to an area with room for the longest expansion (three units per unit), and the span's worth of
  // it comes back: a lengthened text is kept and only what exceeds the span is dropped.
  const int64_t room64 = std::min<int64_t>(static_cast<int64_t>(span) * 3, INT32_MAX);
  const auto room = static_cast<int32_t>(room64);
  QZWCHAR local[768];
  std::unique_ptr<QZWCHAR[]> heap;
  QZWCHAR* area = local;
  if (room > static_cast<int32_t>(std::size(local))) {
    heap.reset(new (std::nothrow) QZWCHAR[static_cast<size_t>(room)]);
    if (!heap) return text;
    area = heap.get();
  }
  UErrorCode error = U_ZERO_ERROR;
  const int32_t mapped = mapping == CaseMapping::kLower ? u_strToLower(area, room, text, span, nullptr, &error)
                                                        : u_strToUpper(area, room, text, span, nullptr, &error);
  if (U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR) return text;
  std::copy_n(area, std::min(mapped, span), text);
  if (mapped < span) text[mapped] = kNul;
  return text;
}

}  // namespace qz::text
