// process_command_line_test.cpp - the splitter on lines a child never sees whole (the program's
// own word, a NUL, an empty line), and a child's environment sorted under more than one locale.
#include "thread/process_command_line.h"

#include <gtest/gtest.h>

#include "text/text_locale.h"
#include "thread/process_environment.h"

namespace {

TEST(ProcessCommandLine, SplitsByTheRunTimeRules) {
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      // The program's word: quotes group and vanish, backslashes stay.
      {R"("C:\Program Files\x" a)", {R"(C:\Program Files\x)", "a"}},
      {R"(a\"b c)", {R"(a\b c)"}},
      {R"(p\\ "a\\\\")", {R"(p\\)", R"(a\\)"}},
      {"", {""}},
      {"\tp\tq", {"", "p", "q"}},
      // The words after it.
      {R"(p "open ended\")", {"p", R"(open ended")"}},
      {R"(p a"b"""c """")", {"p", R"(ab"c)", R"(")"}},
      {R"(p \\\\ \\\\\"x)", {"p", R"(\\\\)", R"(\\"x)"}},
      {std::string("p a\0b", 5), {"p", "a"}},  // a NUL ends the line
  };
  for (const auto& [line, words] : cases)
    EXPECT_EQ(qz::core::SplitCommandLine(line), words) << line;
}

TEST(ProcessEnvironment, SortsByCollationWithoutCase) {
  using Strings = std::vector<std::u16string>;
  const std::tuple<const char*, Strings, Strings> cases[] = {
      {"C", {u"B=1", u"a=2", u"_x=3", u"Z=4"}, {u"_x=3", u"a=2", u"B=1", u"Z=4"}},
      {"C", {u"Z=1", u"\u00e4=2", u"b=3"}, {u"b=3", u"Z=1", u"\u00e4=2"}},            // code order
      {"de_DE.UTF-8", {u"Z=1", u"\u00e4=2", u"b=3"}, {u"\u00e4=2", u"b=3", u"Z=1"}},  // with the a
      {"de_DE.UTF-8", {u"\u00c4B=1", u"\u00e4a=2"}, {u"\u00e4a=2", u"\u00c4B=1"}},    // lowered
      {"C", {}, {}},
  };
  for (const auto& [name, input, sorted] : cases) {
    qztest::ScopedLocale locale(name);
    if (!locale.ok()) continue;
    std::vector<const char16_t*> array;
    for (const auto& s : input) array.push_back(s.c_str());
    array.push_back(nullptr);
    EXPECT_EQ(qz::core::SortedEnvironment(array.data()), sorted) << name;
  }
}

}  // namespace
