// option_parser_test.cpp - QZGetOption: permutation, abbreviations and ambiguity, argument forms,
// messages on standard error, and restarting a scan.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "qzcore/qzgetopt.h"
#include "support/test_support.h"

namespace {

// An argument vector with its own storage and the terminating NULL.
class Args {
 public:
  Args(std::initializer_list<const char*> words) : m_text(words.begin(), words.end()) {
    for (auto& w : m_text) m_argv.push_back(w.data());
    m_argv.push_back(nullptr);
  }
  int32_t argc() const { return static_cast<int32_t>(m_text.size()); }
  char* const* argv() { return m_argv.data(); }
  std::vector<std::string> Order() const {
    std::vector<std::string> order;
    for (size_t i = 0; i + 1 < m_argv.size(); ++i) order.emplace_back(m_argv[i]);
    return order;
  }

 private:
  std::vector<std::string> m_text;
  std::vector<char*> m_argv;
};

using Words = std::vector<std::string>;

class OptionParser : public ::testing::Test {
 protected:
  void SetUp() override {
    QZGetOptionIndex = 0;
    QZGetOptionError = 1;
    QZGetOptionOption = 0;
    m_unrecognized = QZGetOptionMsgUnrecognized;
  }
  void TearDown() override { QZGetOptionMsgUnrecognized = m_unrecognized; }

  // Runs one call and returns what it wrote to standard error.
  std::string Call(Args& args, const QZLongOption* table, int32_t* result, int32_t* index = nullptr) {
    ::testing::internal::CaptureStderr();
    *result = QZGetOption(args.argc(), args.argv(), table, index);
    return ::testing::internal::GetCapturedStderr();
  }

  qztest::ScopedEnv m_posix{"POSIXLY_CORRECT", nullptr};
  const char* m_unrecognized = nullptr;
};

// First in the file, so that it sees the cells as the library starts them (CTest also runs each
// test in a process of its own).
TEST(OptionParserCells, StartValues) {
  EXPECT_EQ(QZGetOptionIndex, 1);
  EXPECT_EQ(QZGetOptionArgument, nullptr);
  EXPECT_EQ(QZGetOptionOption, '?');
  EXPECT_EQ(QZGetOptionError, 1);
  EXPECT_EQ(QZGetOptionReset, 0);
  EXPECT_STREQ(QZGetOptionMsgCharacterRequiresArgument, "Usage: option requires an argument -- %c");
  EXPECT_STREQ(QZGetOptionMsgIllegal, "Usage: illegal option -- %c");
  EXPECT_STREQ(QZGetOptionMsgInvalid, "Usage: invalid option -- %c");
  EXPECT_STREQ(QZGetOptionMsgStringRequiresArgument, "Usage: option '%s%s' requires an argument");
  EXPECT_STREQ(QZGetOptionMsgAmbiguous, "Usage: option '%s%.*s' is ambiguous");
  EXPECT_STREQ(QZGetOptionMsgNoArgumentAllowed, "Usage: option '%s%.*s' doesn't allow an argument");
  EXPECT_STREQ(QZGetOptionMsgUnrecognized, "Usage: unrecognized option '%s%s'");
}

const QZLongOption kVerboseVersion[] = {
    {"verbose", 0, 'v'}, {"version", 0, 'V'}, {"name", 1, 'n'}, {"level", 2, 'l'}, {nullptr, 0, 0}};

TEST_F(OptionParser, PermutesOperandsBehindOptionsAndStopsAtDoubleDash) {
  Args args{"prog", "a", "-verbose", "b", "--", "c"};
  int32_t index = -5;
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, &index), 'v');
  EXPECT_EQ(index, 0);
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, &index), -1);
  EXPECT_EQ(QZGetOptionIndex, 3);
  EXPECT_EQ(args.Order(), (Words{"prog", "-verbose", "--", "a", "b", "c"}));
  // Once ended, the scan keeps answering -1.
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), -1);
}

TEST_F(OptionParser, JoinsSeveralOperandBlocksInOrderAtTheEnd) {
  Args args{"prog", "a", "--name", "x", "b", "c", "-", "--verbose", "d"};
  int32_t r;
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), 'n');
  EXPECT_STREQ(QZGetOptionArgument, "x");
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), 'v');
  EXPECT_EQ(QZGetOptionArgument, nullptr);
  r = QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr);
  EXPECT_EQ(r, -1);
  // A lone dash is an operand like any other.
  EXPECT_EQ(args.Order(), (Words{"prog", "--name", "x", "--verbose", "a", "b", "c", "-", "d"}));
  EXPECT_EQ(QZGetOptionIndex, 4);
  // Only operands: the index ends on the first of them, nothing moves.
  Args plain{"prog", "a", "b"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(QZGetOption(plain.argc(), plain.argv(), kVerboseVersion, nullptr), -1);
  EXPECT_EQ(QZGetOptionIndex, 1);
  EXPECT_EQ(plain.Order(), (Words{"prog", "a", "b"}));
}

TEST_F(OptionParser, PosixlyCorrectStopsAtTheFirstOperand) {
  qztest::ScopedEnv posix("POSIXLY_CORRECT", "");
  Args args{"prog", "a", "-verbose", "b", "--", "c"};
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), -1);
  EXPECT_EQ(QZGetOptionIndex, 1);
  EXPECT_EQ(args.Order(), (Words{"prog", "a", "-verbose", "b", "--", "c"}));
  // Options in front of the first operand are still found.
  Args leading{"prog", "--verbose", "a", "--version"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(QZGetOption(leading.argc(), leading.argv(), kVerboseVersion, nullptr), 'v');
  EXPECT_EQ(QZGetOption(leading.argc(), leading.argv(), kVerboseVersion, nullptr), -1);
  EXPECT_EQ(QZGetOptionIndex, 2);
}

TEST_F(OptionParser, AbbreviationsAndAmbiguity) {
  int32_t r;
  int32_t index = -5;
  // A prefix shared by two names is ambiguous; a longer one picks its entry.
  Args ambiguous{"prog", "--ver"};
  EXPECT_EQ(Call(ambiguous, kVerboseVersion, &r, &index), "Usage: option '--ver' is ambiguous\n");
  EXPECT_EQ(r, '?');
  EXPECT_EQ(QZGetOptionOption, 0);
  EXPECT_EQ(index, -5);
  EXPECT_EQ(QZGetOptionIndex, 2);
  Args unique{"prog", "-verb", "--vers"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(QZGetOption(unique.argc(), unique.argv(), kVerboseVersion, &index), 'v');
  EXPECT_EQ(index, 0);
  EXPECT_EQ(QZGetOption(unique.argc(), unique.argv(), kVerboseVersion, &index), 'V');
  EXPECT_EQ(index, 1);

  // Two names for one option (same has_arg and val) still make an abbreviation ambiguous.
  const QZLongOption aliases[] = {{"verbose", 0, 'v'}, {"verbatim", 0, 'v'}, {nullptr, 0, 0}};
  Args alias{"prog", "-verb"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(Call(alias, aliases, &r), "Usage: option '-verb' is ambiguous\n");
  EXPECT_EQ(r, '?');

  // An exact name wins over any number of partial matches, wherever it stands.
  const QZLongOption exactLast[] = {{"values", 0, 1}, {"valued", 0, 2}, {"value", 0, 3}, {nullptr, 0, 0}};
  Args exact{"prog", "--value"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(QZGetOption(exact.argc(), exact.argv(), exactLast, &index), 3);
  EXPECT_EQ(index, 2);

  // A word longer than every name matches nothing.
  Args longer{"prog", "--verbosely"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(Call(longer, kVerboseVersion, &r), "Usage: unrecognized option '--verbosely'\n");
  EXPECT_EQ(r, '?');
}

TEST_F(OptionParser, ArgumentForms) {
  int32_t r;
  // Attached, then the next word; "--name=" gives an empty argument.
  Args args{"prog", "--name=value", "-name", "next", "--name=", "--level=5", "--level"};
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), 'n');
  EXPECT_STREQ(QZGetOptionArgument, "value");
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), 'n');
  EXPECT_STREQ(QZGetOptionArgument, "next");
  EXPECT_EQ(QZGetOptionIndex, 4);
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), 'n');
  EXPECT_STREQ(QZGetOptionArgument, "");
  // has_arg 2 takes no argument: an attached value is dropped, the next word stays a word.
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), 'l');
  EXPECT_EQ(QZGetOptionArgument, nullptr);
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), 'l');
  EXPECT_EQ(QZGetOptionArgument, nullptr);
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), -1);

  // The next word is taken whatever it looks like; a failing call clears the last argument.
  Args greedy{"prog", "--name", "--verbose", "--nope"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(QZGetOption(greedy.argc(), greedy.argv(), kVerboseVersion, nullptr), 'n');
  EXPECT_STREQ(QZGetOptionArgument, "--verbose");
  QZGetOptionError = 0;
  EXPECT_EQ(QZGetOption(greedy.argc(), greedy.argv(), kVerboseVersion, nullptr), '?');
  EXPECT_EQ(QZGetOptionArgument, nullptr);
  QZGetOptionError = 1;

  // Required argument missing at the end of the vector.
  Args missing{"prog", "--name"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(Call(missing, kVerboseVersion, &r), "Usage: option '--name' requires an argument\n");
  EXPECT_EQ(r, '?');
  EXPECT_EQ(QZGetOptionOption, 'n');
  EXPECT_EQ(QZGetOptionIndex, 2);

  // A value given to an option without argument: the message names the option only.
  Args refused{"prog", "--verb=yes"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(Call(refused, kVerboseVersion, &r), "Usage: option '--verb' doesn't allow an argument\n");
  EXPECT_EQ(r, '?');
  EXPECT_EQ(QZGetOptionOption, 'v');
}

TEST_F(OptionParser, UnknownOptionsAndTheMessageCells) {
  int32_t r;
  Args unknown{"prog", "--unknown=1", "-other"};
  EXPECT_EQ(Call(unknown, kVerboseVersion, &r), "Usage: unrecognized option '--unknown=1'\n");
  EXPECT_EQ(r, '?');
  EXPECT_EQ(QZGetOptionOption, 0);
  EXPECT_EQ(Call(unknown, kVerboseVersion, &r), "Usage: unrecognized option '-other'\n");

  // An empty table knows nothing; a NULL table reads each character as an unknown short option.
  const QZLongOption empty[] = {{nullptr, 0, 0}};
  Args one{"prog", "--verbose"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(Call(one, empty, &r), "Usage: unrecognized option '--verbose'\n");
  Args cluster{"prog", "-xy", "z"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(Call(cluster, nullptr, &r), "Usage: invalid option -- x\n");
  EXPECT_EQ(QZGetOptionOption, 'x');
  EXPECT_EQ(Call(cluster, nullptr, &r), "Usage: invalid option -- y\n");
  EXPECT_EQ(r, '?');
  EXPECT_EQ(QZGetOptionIndex, 2);
  // A byte of 0x80 or above is stored as a signed char widens.
  Args high{"prog", "-\xE9"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(Call(high, nullptr, &r), "Usage: invalid option -- \xE9\n");
  EXPECT_EQ(QZGetOptionOption, -0x17);
  {
    qztest::ScopedEnv posix("POSIXLY_CORRECT", "1");
    Args illegal{"prog", "-q"};
    QZGetOptionIndex = 0;
    EXPECT_EQ(Call(illegal, nullptr, &r), "Usage: illegal option -- q\n");
  }

  // A replaced format is used by the next message; printing off keeps the results.
  QZGetOptionMsgUnrecognized = "Unbekannte Option %s%s";
  Args again{"prog", "--nope", "--nope"};
  QZGetOptionIndex = 0;
  EXPECT_EQ(Call(again, kVerboseVersion, &r), "Unbekannte Option --nope\n");
  QZGetOptionError = 0;
  EXPECT_EQ(Call(again, kVerboseVersion, &r), "");
  EXPECT_EQ(r, '?');
}

TEST_F(OptionParser, ASecondScanAfterAReset) {
  Args args{"prog", "x", "--verbose", "--name", "n"};
  std::vector<int32_t> first;
  for (int32_t r; (r = QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr)) != -1;) first.push_back(r);
  EXPECT_EQ(first, (std::vector<int32_t>{'v', 'n'}));
  EXPECT_EQ(args.Order(), (Words{"prog", "--verbose", "--name", "n", "x"}));

  // Index 0 restarts at the first word.
  QZGetOptionIndex = 0;
  std::vector<int32_t> second;
  for (int32_t r; (r = QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr)) != -1;) second.push_back(r);
  EXPECT_EQ(second, first);
  EXPECT_EQ(QZGetOptionIndex, 4);

  // The reset cell restarts at the index the caller chose.
  QZGetOptionIndex = 2;
  QZGetOptionReset = 1;
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), 'n');
  EXPECT_STREQ(QZGetOptionArgument, "n");
  EXPECT_EQ(QZGetOptionReset, 0);
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), -1);
}

}  // namespace
