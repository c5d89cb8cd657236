// cmdline_fuzz.cpp - libFuzzer target for the command-line splitter of child processes.
//
// The input is one command line. Splitting must end, give at least the program's word, never
// give more text than it was given, and never a NUL; and the words, quoted again as the run-time
// rules demand, must split back to exactly the same words.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "thread/process_command_line.h"

namespace {

// The program's word: backslashes are plain there and it never holds a quote, so quotes around
// it are all it can need.
std::string QuoteProgram(const std::string& word) {
  if (!word.empty() && word.find_first_of(" \t") == std::string::npos) return word;
  return '"' + word + '"';
}

// Any later word: quoted, with the backslashes before a quote (or before the closing quote)
// doubled and each quote escaped.
std::string QuoteArgument(const std::string& word) {
  if (!word.empty() && word.find_first_of(" \t\"") == std::string::npos) return word;
  std::string quoted = "\"";
  size_t backslashes = 0;
  for (char c : word) {
    if (c == '\\') {
      ++backslashes;
      continue;
    }
    if (c == '"') {
      quoted.append(2 * backslashes + 1, '\\');
    } else {
      quoted.append(backslashes, '\\');
    }
    backslashes = 0;
    quoted += c;
  }
  quoted.append(2 * backslashes, '\\');
  return quoted + '"';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view line(reinterpret_cast<const char*>(data), size);
  const std::vector<std::string> words = qz::core::SplitCommandLine(line);
  if (words.empty()) __builtin_trap();
  size_t total = 0;
  for (const auto& word : words) {
    if (word.find('\0') != std::string::npos) __builtin_trap();
    total += word.size();
  }
  if (total > size) __builtin_trap();
  if (words.front().find('"') != std::string::npos) __builtin_trap();

  std::string again = QuoteProgram(words.front());
  for (size_t i = 1; i < words.size(); ++i) again += ' ' + QuoteArgument(words[i]);
  if (qz::core::SplitCommandLine(again) != words) __builtin_trap();
  return 0;
}
