// locale_ids.h - the numbers by which the first platform names the user's locale and code page.
//
// The text family speaks in these numbers: a locale identifier (LCID) and the number of the ANSI
// code page. Each call reads the process's current locale afresh.
#pragma once

#include <cstdint>

namespace qz::os {

// The locale identifier of the user's locale; 0x007F for the invariant (C/POSIX) locale and
// 0x1000 for a locale that has no identifier.
uint32_t GetUserDefaultLCID() noexcept;

// The locale identifier of a locale name of the form language[_TERRITORY][.codeset][@modifier]: the
// row of the language, territory and modifier; else, for a modifier that is not listed (@euro), the
// row of the language and territory; else the language's default row; else 0x1000. "C" and
// "POSIX" give 0x007F.
uint32_t LcidFromLocaleName(const char* name) noexcept;

// The number of the ANSI code page (65001 for UTF-8, 20127 for ASCII, 28591 for ISO-8859-1, ...);
// 0 for a byte encoding that has no number.
uint32_t GetACP() noexcept;

}  // namespace qz::os
