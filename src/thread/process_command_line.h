// process_command_line.h - the command line of a child process: how it is put together from the
// program path and the argument string, and how it is split into the child's words.
//
// Portable code with no system calls, so that the splitter can be fuzzed on its own. The split
// follows the first platform's C run-time rules, so that a child on Linux sees the words a child
// there would see for the same command line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qz::core {

// The program path, then one blank and the arguments if there are any (null: none). Neither part
// is quoted or escaped.
std::u16string BuildCommandLine(const char16_t* program, const char16_t* arguments);

// Splits a command line into words:
// - the first word (the program's name) runs to the first blank or tab outside double quotes; its
//   quotes are dropped and its backslashes are plain characters;
// - after it, blanks and tabs separate words, and a word may mix quoted and unquoted pieces;
// - 2N backslashes before a double quote give N backslashes, and the quote opens or closes a group;
//   2N+1 backslashes before one give N backslashes and a literal quote;
// - backslashes not before a double quote are literal;
// - inside a group, two double quotes give one literal quote and the group goes on;
// - a NUL ends the line.
// There is always a first word, which may be empty. Works on any text whose blanks, tabs,
// quotes and backslashes are single ASCII units, so UTF-8 splits as it stands.
std::vector<std::string> SplitCommandLine(std::string_view line);

}  // namespace qz::core
