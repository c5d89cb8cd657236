// process_command_line_test.cpp - the command-line splitter on the lines a child never gets to
// see whole (its program word, NULs, an empty line), and the sorting of a child's environment
// under more than one locale.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/text_locale.h"
#include "thread/process_command_line.h"
#include "thread/process_environment.h"

namespace {

using Words = std::vector<std::string>;

TEST(ProcessCommandLine, SplitsByTheRunTimeRules) {
  struct Case {
    std::string line;
    Words words;
  };
  const Case cases[] = {
      // The program's word: quotes group and vanish, backslashes stay.
      {R"("C:\Program Files\x" a)", {R"(C:\Program Files\x)", "a"}},
      {R"(a\"b c)", {R"(a\b c)"}},
      {R"(p\\ "a\\\\")", {R"(p\\)", R"(a\\)"}},
      {"", {""}},
      {" x", {"", "x"}},
      {"\tp\tq", {"", "p", "q"}},
      // The words after it.
      {R"(p "unterminated)", {"p", "unterminated"}},
      {R"(p "open ended\")", {"p", R"(open ended")"}},
      {R"(p "a"" b")", {"p", R"(a" b)"}},
      {R"(p a"b"""c)", {"p", R"(ab"c)"}},
      {R"(p """")", {"p", R"(")"}},
      {R"(p \\\\)", {"p", R"(\\\\)"}},
      {R"(p \\\\\"x)", {"p", R"(\\"x)"}},
      {std::string("p a\0b", 5), {"p", "a"}},  // a NUL ends the line
      {"p   ", {"p"}},
  };
  for (const auto& c : cases) EXPECT_EQ(qz::core::SplitCommandLine(c.line), c.words) << c.line;
}

TEST(ProcessCommandLine, BuildsProgramBlankArguments) {
  EXPECT_EQ(qz::core::BuildCommandLine(u"my prog", nullptr), u"my prog");
  EXPECT_EQ(qz::core::BuildCommandLine(u"my prog", u""), u"my prog ");
  EXPECT_EQ(qz::core::BuildCommandLine(u"p", u"\"a b\""), u"p \"a b\"");
}

TEST(ProcessEnvironment, SortsByCollationWithoutCase) {
  struct Case {
    const char* locale;
    std::vector<std::u16string> input;
    std::vector<std::u16string> sorted;
  };
  const Case cases[] = {
      {"C", {u"B=1", u"a=2", u"_x=3", u"Z=4"}, {u"_x=3", u"a=2", u"B=1", u"Z=4"}},
      {"C", {u"Z=1", u"\u00e4=2", u"b=3"}, {u"b=3", u"Z=1", u"\u00e4=2"}},         // code order
      {"de_DE.UTF-8", {u"Z=1", u"\u00e4=2", u"b=3"}, {u"\u00e4=2", u"b=3", u"Z=1"}},  // a-umlaut with a
      {"de_DE.UTF-8", {u"\u00c4B=1", u"\u00e4a=2"}, {u"\u00e4a=2", u"\u00c4B=1"}},    // upper case lowered
      {"C", {}, {}},
  };
  for (const auto& c : cases) {
    qztest::ScopedLocale locale(c.locale);
    if (!locale.ok()) continue;
    std::vector<const char16_t*> array;
    for (const auto& s : c.input) array.push_back(s.c_str());
    array.push_back(nullptr);
    EXPECT_EQ(qz::core::SortedEnvironment(array.data()), c.sorted) << c.locale;
  }
}

}  // namespace
