// getopt_fuzz.cpp - libFuzzer target for the option-parsing engine.
//
// The input is: one byte of engine flags and table choice, then NUL-separated words: the short-
// option string first, the argument vector after it. Each input is scanned to the end; a scan must
// end, must never read outside the vector, and must leave the vector a reordering of itself.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "options/option_parser.h"

namespace {

const QZLongOption kTable[] = {{"verbose", 0, 'v'}, {"version", 0, 'V'}, {"name", 1, 'n'},
                               {"level", 2, 'l'},   {"n", 1, 'N'},       {"verbatim", 0, 'v'},
                               {nullptr, 0, 0}};
const QZLongOption kEmptyTable[] = {{nullptr, 0, 0}};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const uint8_t control = data[0];
  std::vector<std::string> words;
  std::string current;
  for (size_t i = 1; i < size; ++i) {
    if (data[i] == 0) {
      words.push_back(current);
      current.clear();
    } else {
      current.push_back(static_cast<char>(data[i]));
    }
  }
  words.push_back(current);
  if (words.size() > 64) return 0;

  const std::string shortOptions = words.front();
  std::vector<std::string> text(words.begin() + 1, words.end());
  std::vector<char*> argv;
  for (auto& w : text) argv.push_back(w.data());
  argv.push_back(nullptr);
  const std::vector<char*> original = argv;
  const int32_t argc = static_cast<int32_t>(text.size());

  const QZLongOption* table = (control & 0x18) == 0 ? nullptr : (control & 0x10) != 0 ? kTable : kEmptyTable;
  QZGetOptionError = 0;
  QZGetOptionIndex = 0;
  int32_t index = -1;
  int32_t result;
  size_t calls = 0;
  do {
    result = qz::core::GetOptionInternal(argc, argv.data(), shortOptions.c_str(), table, &index, control & 7u);
    if (result != '?' && result != ':' && result != -1 && index >= 0 && table == kTable) {
      if (index > 5) __builtin_trap();
    }
    if (++calls > 4 * size + 16) __builtin_trap();  // every call must make progress
  } while (result != -1);

  std::vector<char*> before(original.begin(), original.end() - 1);
  std::vector<char*> after(argv.begin(), argv.end() - 1);
  std::sort(before.begin(), before.end());
  std::sort(after.begin(), after.end());
  if (before != after || argv.back() != nullptr) __builtin_trap();
  return 0;
}
