// process_environment.h - the environment a child is given: the caller's strings, in the order
// of the current locale's collation without regard to case.
//
// Portable code over the C library's wide collation (wcscoll) and case mapping (towlower).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qz::core {

// Compares as the C run-time's case-insensitive collation does: both texts lowered character by
// character, then collated in the current locale's order. Negative, 0 or positive. A surrogate
// pair is one character; an unpaired surrogate stands for itself.
int CompareCollatedIgnoringCase(std::u16string_view first, std::u16string_view second);

// The strings of `environment` up to its first null, sorted by CompareCollatedIgnoringCase.
// Strings that compare as equal may come out in either order.
std::vector<std::u16string> SortedEnvironment(const char16_t* const* environment);

}  // namespace qz::core
