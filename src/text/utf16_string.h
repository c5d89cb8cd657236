// utf16_string.h - the UCS2 and UTF16 string operations that carry logic of their own: stepping by
// code point, the unit compares with their ASCII fold, the bounded copy and append, and case mapping
// in place.
//
// The operations that are plain forwards to ICU stand in the exports themselves.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qzcore/qztypes.h"

namespace qz::text {

// The unit count of a NUL-terminated string, narrowed to 32 bits.
int32_t Length32(const QZWCHAR* text) noexcept;

// The code point at *cursor, reading at most `count` units (0xFFFFFFFF: unknown, taken as 2); moves
// *cursor past it. A count below 1 returns 0 and leaves *cursor. An unpaired surrogate is returned
// as it stands; a NUL is returned as 0 and stepped over like any unit.
int32_t NextChar(const QZWCHAR** cursor, uint32_t count) noexcept;

// The difference of the first differing units, 0 when equal.
int32_t CompareUnits(const QZWCHAR* a, const QZWCHAR* b) noexcept;
// The same after folding differing units A-Z to a-z; no other fold.
int32_t CompareUnitsAsciiNoCase(const QZWCHAR* a, const QZWCHAR* b) noexcept;

// Copies at most min(size - 1, max) units (stopping after a copied NUL) and stores a NUL at that
// index; returns `dest`. Units between a copied NUL and that index are left as they were.
QZWCHAR* CopyBounded(QZWCHAR* dest, size_t size, const QZWCHAR* source, size_t max) noexcept;
// Appends at the terminator among the first `size` units (or over the last unit when there is none)
// at most min(room, max) units and a NUL; returns the start of the appended text.
QZWCHAR* AppendBounded(QZWCHAR* dest, size_t size, const QZWCHAR* source, size_t max) noexcept;

enum class CaseMapping { kLower, kUpper };
// Maps the 2L units starting at `text` (L its length: the text, its terminator and the L - 1 units
// behind it) by Unicode's full case mapping under ICU's default locale and writes back the first 2L
// units of the result, terminated if it is shorter. Left unchanged if no working memory is left.
QZWCHAR* MapCaseInPlace(QZWCHAR* text, CaseMapping mapping) noexcept;

}  // namespace qz::text
