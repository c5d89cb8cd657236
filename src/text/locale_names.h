// locale_names.h - the table of locale names by locale identifier, and the two queries that name the
// user's locale and byte encoding.
#pragma once

#include <cstdint>
#include <span>

#include "qzcore/qztypes.h"

namespace qz::text {

// One row of the table: an identifier, compared whole, and its name.
struct LcidLocaleName {
  uint32_t lcid;     // locale identifier (sort identifier included)
  const char* name;  // ICU-style locale name
};

// The rows, in ascending order of identifier.
std::span<const LcidLocaleName> LcidLocaleNames() noexcept;

// The name of `lcid`, or "en_US" for an identifier without a row. Never null.
const char* LocaleNameFromLcid(uint32_t lcid) noexcept;

// The user's locale name in `buffer` of `size` units, padded with NUL to its end; QZ_E_BUFFER_TOO_SMALL
// (buffer untouched) when the name and its terminator do not fit. Throws std::bad_alloc.
QZRESULT GetDefaultLocale(QZWCHAR* buffer, int32_t size);

// "CP" and the ANSI code page number in decimal, terminated; QZ_E_BUFFER_TOO_SMALL (buffer untouched)
// for a size below 8.
QZRESULT GetDefaultCharEncoding(QZWCHAR* buffer, int32_t size) noexcept;

}  // namespace qz::text
