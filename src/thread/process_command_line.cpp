// process_command_line.cpp - building a child's command line and splitting it into words.
#include "thread/process_command_line.h"

namespace qz::core {
namespace {

bool IsBlank(char c) noexcept { return c == ' ' || c == '\t'; }

}  // namespace

std::u16string BuildCommandLine(const char16_t* program, const char16_t* arguments) {
  std::u16string line(program);
  if (arguments != nullptr) {
    line += u' ';
    line += arguments;
  }
  return line;
}

std::vector<std::string> SplitCommandLine(std::string_view line) {
  const size_t nul = line.find('\0');
  if (nul != std::string_view::npos) line = line.substr(0, nul);
  std::vector<std::string> words;
  size_t at = 0;
  const size_t end = line.size();

  // The program's name: quotes only group, backslashes are path separators.
  std::string word;
  bool quoted = false;
  for (; at < end && (quoted || !IsBlank(line[at])); ++at) {
    if (line[at] == '"')
      quoted = !quoted;
    else
      word += line[at];
  }
  words.push_back(std::move(word));

  for (;;) {
    while (at < end && IsBlank(line[at])) ++at;
    if (at == end) break;
    word.clear();
    quoted = false;
    while (at < end) {
      size_t backslashes = 0;
      while (at < end && line[at] == '\\') {
        ++backslashes;
        ++at;
      }
      if (at < end && line[at] == '"') {
        word.append(backslashes / 2, '\\');
        if (backslashes % 2 == 1) {
          word += '"';  // escaped
        } else if (quoted && at + 1 < end && line[at + 1] == '"') {
          word += '"';  // "" inside a group
          ++at;
        } else {
          quoted = !quoted;
        }
        ++at;
        continue;
      }
      word.append(backslashes, '\\');
      if (at == end || (!quoted && IsBlank(line[at]))) break;
      word += line[at++];
    }
    words.push_back(word);
  }
  return words;
}

}  // namespace qz::core
