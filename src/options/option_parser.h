// option_parser.h - GetOptionInternal, the option-parsing engine behind QZGetOption.
//
// One engine knows short options (a getopt-style option string) and long options (a table); the
// export uses it with an empty option string and the flags for permutation and long-only parsing.
// Its state is the exported data cells of qzgetopt.h plus a few private items in the .cpp.
#pragma once

#include <cstdint>

#include "qzcore/qzgetopt.h"

namespace qz::core {

// Flags of the engine.
inline constexpr uint32_t kOptionPermute = 1;   // move operands behind the options
inline constexpr uint32_t kOptionAllArgs = 2;   // return each operand as option 1
inline constexpr uint32_t kOptionLongOnly = 4;  // one dash is enough for a long option

// One step of the scan. `shortOptions` is a getopt option string ("ab:c::", a leading '+' or '-'
// changes the ordering, a leading ':' silences messages and returns ':' for a missing argument);
// NULL returns -1 at once. `longOptions` may be NULL; `longIndex` may be NULL.
int32_t GetOptionInternal(int32_t argc, char* const* argv, const char* shortOptions,
                          const QZLongOption* longOptions, int32_t* longIndex, uint32_t flags);

// Moves argv[end..optionEnd-1] in front of argv[start..end-1] in place, each block keeping its
// order. Requires start < end < optionEnd.
void PermuteArguments(int32_t start, int32_t end, int32_t optionEnd, char* const* argv) noexcept;

}  // namespace qz::core
