// option_parser_test.cpp - QZGetOption: permutation, abbreviations and ambiguity, argument forms,
// messages on standard error, and restarting a scan.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "qzcore/qzgetopt.h"
#include "support/test_support.h"

namespace {

using Words = std::vector<std::string>;

// An argument vector with its own storage and the terminating NULL.
class Args {
 public:
  Args(std::initializer_list<const char*> words) : m_text(words.begin(), words.end()) {
    for (auto& w : m_text) m_argv.push_back(w.data());
    m_argv.push_back(nullptr);
  }
  int32_t argc() const { return static_cast<int32_t>(m_text.size()); }
  char* const* argv() { return m_argv.data(); }
  Words Order() const { return Words(m_argv.begin(), m_argv.end() - 1); }

 private:
  std::vector<std::string> m_text;  // the words
  std::vector<char*> m_argv;        // the vector the parser permutes
};

const QZLongOption kVerboseVersion[] = {
    {"verbose", 0, 'v'}, {"version", 0, 'V'}, {"name", 1, 'n'}, {"level", 2, 'l'}, {nullptr, 0, 0}};

std::string Shown(int32_t value) {
  return value > 0x20 && value < 0x7F ? std::string(1, static_cast<char>(value)) : std::to_string(value);
}

class OptionParser : public ::testing::Test {
 protected:
  void SetUp() override {
    QZGetOptionIndex = 0;
    QZGetOptionError = 1;
    m_unrecognized = QZGetOptionMsgUnrecognized;
  }
  void TearDown() override { QZGetOptionMsgUnrecognized = m_unrecognized; }

  // Starts a scan (index 0) and calls until -1, describing each call: the result, "=argument" when
  // the argument cell is set, "!option" (the option cell) after a '?', "#n" when the caller's
  // index was written (only with `withIndex`), and "<text>" for what standard error got. The trace
  // ends with "| " and the final QZGetOptionIndex.
  static std::string Scan(Args& args, const QZLongOption* table = kVerboseVersion, bool withIndex = false) {
    QZGetOptionIndex = 0;
    std::string trace;
    for (int calls = 0; calls < 20; ++calls) {
      int32_t index = -5;
      QZGetOptionOption = 0x1234;  // a stale value would show
      ::testing::internal::CaptureStderr();
      const int32_t r = QZGetOption(args.argc(), args.argv(), table, withIndex ? &index : nullptr);
      const std::string err = ::testing::internal::GetCapturedStderr();
      if (r == -1 && err.empty()) break;
      trace += Shown(r);
      if (QZGetOptionArgument != nullptr) trace += "=" + std::string(QZGetOptionArgument);
      if (r == '?') trace += "!" + Shown(QZGetOptionOption);
      if (index != -5) trace += "#" + std::to_string(index);
      if (!err.empty()) trace += "<" + err + ">";
      trace += " ";
    }
    return trace + "| " + std::to_string(QZGetOptionIndex);
  }

  qztest::ScopedEnv m_posix{"POSIXLY_CORRECT", nullptr};  // permutation on unless a test asks
  const char* m_unrecognized = nullptr;                   // the message cell to put back
};

// First in the file, so that it sees the cells as the library starts them (CTest also runs each
// test in a process of its own). The other messages are pinned by the output they give below.
TEST(OptionParserCells, StartValues) {
  EXPECT_EQ(QZGetOptionIndex, 1);
  EXPECT_EQ(QZGetOptionArgument, nullptr);
  EXPECT_EQ(QZGetOptionOption, '?');
  EXPECT_EQ(QZGetOptionError, 1);
  EXPECT_EQ(QZGetOptionReset, 0);
  EXPECT_STREQ(QZGetOptionMsgCharacterRequiresArgument, "Usage: option requires an argument -- %c");
}

TEST_F(OptionParser, PermutesOperandsBehindOptionsAndStopsAtDoubleDash) {
  Args args{"prog", "a", "-verbose", "b", "--", "c"};
  EXPECT_EQ(Scan(args, kVerboseVersion, true), "v#0 | 3");
  EXPECT_EQ(args.Order(), (Words{"prog", "-verbose", "--", "a", "b", "c"}));
  // Once ended, the scan keeps answering -1.
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), -1);

  // Several operand blocks join in order at the end; a lone dash is an operand like any other.
  Args blocks{"prog", "a", "--name", "x", "b", "c", "-", "--verbose", "d"};
  EXPECT_EQ(Scan(blocks), "n=x v | 4");
  EXPECT_EQ(blocks.Order(), (Words{"prog", "--name", "x", "--verbose", "a", "b", "c", "-", "d"}));
  // Only operands: the index ends on the first of them, nothing moves.
  Args plain{"prog", "a", "b"};
  EXPECT_EQ(Scan(plain), "| 1");
  EXPECT_EQ(plain.Order(), (Words{"prog", "a", "b"}));
}

TEST_F(OptionParser, PosixlyCorrectStopsAtTheFirstOperand) {
  qztest::ScopedEnv posix("POSIXLY_CORRECT", "");
  Args args{"prog", "a", "-verbose", "b", "--", "c"};
  EXPECT_EQ(Scan(args), "| 1");
  EXPECT_EQ(args.Order(), (Words{"prog", "a", "-verbose", "b", "--", "c"}));
  // Options in front of the first operand are still found.
  Args leading{"prog", "--verbose", "a", "--version"};
  EXPECT_EQ(Scan(leading), "v | 2");
}

TEST_F(OptionParser, AbbreviationsAndAmbiguity) {
  // A prefix shared by two names is ambiguous (the caller's index untouched); a longer one picks.
  Args ambiguous{"prog", "--ver"};
  EXPECT_EQ(Scan(ambiguous, kVerboseVersion, true), "?!0<Usage: option '--ver' is ambiguous\n> | 2");
  Args unique{"prog", "-verb", "--vers"};
  EXPECT_EQ(Scan(unique, kVerboseVersion, true), "v#0 V#1 | 3");
  // Two names for one option (same has_arg and val) still make an abbreviation ambiguous.
  const QZLongOption aliases[] = {{"verbose", 0, 'v'}, {"verbatim", 0, 'v'}, {nullptr, 0, 0}};
  Args alias{"prog", "-verb"};
  EXPECT_EQ(Scan(alias, aliases), "?!0<Usage: option '-verb' is ambiguous\n> | 2");
  // An exact name wins over any number of partial matches, wherever it stands.
  const QZLongOption exactLast[] = {{"values", 0, 1}, {"valued", 0, 2}, {"value", 0, 3}, {nullptr, 0, 0}};
  Args exact{"prog", "--value"};
  EXPECT_EQ(Scan(exact, exactLast, true), "3#2 | 2");
  // A word longer than every name matches nothing.
  Args longer{"prog", "--verbosely"};
  EXPECT_EQ(Scan(longer), "?!0<Usage: unrecognized option '--verbosely'\n> | 2");
}

TEST_F(OptionParser, ArgumentForms) {
  // Attached, then the next word; "--name=" gives an empty argument. has_arg 2 takes no argument:
  // an attached value is dropped, the next word stays a word.
  Args args{"prog", "--name=value", "-name", "next", "--name=", "--level=5", "--level"};
  EXPECT_EQ(Scan(args), "n=value n=next n= l l | 7");
  // The next word is taken whatever it looks like; a failing call clears the last argument.
  Args greedy{"prog", "--name", "--verbose", "--nope"};
  EXPECT_EQ(Scan(greedy), "n=--verbose ?!0<Usage: unrecognized option '--nope'\n> | 4");
  // Required argument missing at the end of the vector.
  Args missing{"prog", "--name"};
  EXPECT_EQ(Scan(missing), "?!n<Usage: option '--name' requires an argument\n> | 2");
  // A value given to an option without argument: the message names the option only.
  Args refused{"prog", "--verb=yes"};
  EXPECT_EQ(Scan(refused), "?!v<Usage: option '--verb' doesn't allow an argument\n> | 2");
}

TEST_F(OptionParser, UnknownOptionsAndTheMessageCells) {
  Args unknown{"prog", "--unknown=1", "-other"};
  EXPECT_EQ(Scan(unknown), "?!0<Usage: unrecognized option '--unknown=1'\n> "
                           "?!0<Usage: unrecognized option '-other'\n> | 3");
  // An empty table knows nothing; a NULL table reads each character as an unknown short option.
  const QZLongOption empty[] = {{nullptr, 0, 0}};
  Args one{"prog", "--verbose"};
  EXPECT_EQ(Scan(one, empty), "?!0<Usage: unrecognized option '--verbose'\n> | 2");
  Args cluster{"prog", "-xy", "z"};
  EXPECT_EQ(Scan(cluster, nullptr), "?!x<Usage: invalid option -- x\n> ?!y<Usage: invalid option -- y\n> | 2");
  // A byte of 0x80 or above is stored as a signed char widens.
  Args high{"prog", "-\xE9"};
  EXPECT_EQ(Scan(high, nullptr), "?!-23<Usage: invalid option -- \xE9\n> | 2");
  {
    qztest::ScopedEnv posix("POSIXLY_CORRECT", "1");
    Args illegal{"prog", "-q"};
    EXPECT_EQ(Scan(illegal, nullptr), "?!q<Usage: illegal option -- q\n> | 2");
  }
  // A replaced format is used by the next message; printing off keeps the results.
  QZGetOptionMsgUnrecognized = "Unbekannte Option %s%s";
  Args again{"prog", "--nope"};
  EXPECT_EQ(Scan(again), "?!0<Unbekannte Option --nope\n> | 2");
  QZGetOptionError = 0;
  EXPECT_EQ(Scan(again), "?!0 | 2");
}

TEST_F(OptionParser, ASecondScanAfterAReset) {
  Args args{"prog", "x", "--verbose", "--name", "n"};
  EXPECT_EQ(Scan(args), "v n=n | 4");
  EXPECT_EQ(args.Order(), (Words{"prog", "--verbose", "--name", "n", "x"}));
  // Index 0 restarts at the first word.
  EXPECT_EQ(Scan(args), "v n=n | 4");
  // The reset cell restarts at the index the caller chose.
  QZGetOptionIndex = 2;
  QZGetOptionReset = 1;
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), 'n');
  EXPECT_STREQ(QZGetOptionArgument, "n");
  EXPECT_EQ(QZGetOptionReset, 0);
  EXPECT_EQ(QZGetOption(args.argc(), args.argv(), kVerboseVersion, nullptr), -1);
}

}  // namespace
