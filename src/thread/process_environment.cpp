// process_environment.cpp - sorting a child's environment by case-insensitive collation.
#include "thread/process_environment.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <numeric>

namespace qz::core {
namespace {

// The collation key of a text: its characters lowered, as the C library's wide text.
std::wstring LoweredWide(std::u16string_view text) {
  std::wstring wide;
  wide.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    }
    wide += static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
  }
  return wide;
}

}  // namespace

int CompareCollatedIgnoringCase(std::u16string_view first, std::u16string_view second) {
  return std::wcscoll(LoweredWide(first).c_str(), LoweredWide(second).c_str());
}

std::vector<std::u16string> SortedEnvironment(const char16_t* const* environment) {
  std::vector<std::u16string> strings;
  for (; *environment != nullptr; ++environment) strings.emplace_back(*environment);
  // Lower each string once, then sort positions by the lowered keys.
  std::vector<std::wstring> keys;
  keys.reserve(strings.size());
  for (const auto& s : strings) keys.push_back(LoweredWide(s));
  std::vector<size_t> order(strings.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(),
            [&](size_t a, size_t b) { return std::wcscoll(keys[a].c_str(), keys[b].c_str()) < 0; });
  std::vector<std::u16string> sorted;
  sorted.reserve(strings.size());
  for (size_t i : order) sorted.push_back(std::move(strings[i]));
  return sorted;
}

}  // namespace qz::core
