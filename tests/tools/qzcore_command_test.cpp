// qzcore_command_test.cpp - the qzcore command line: help and version on standard output with exit
// 0; every usage error said once on standard error, with the pointer to the help, exit 2.
#include <gtest/gtest.h>

#include "support/test_support.h"
#include "tool_run.h"

namespace {

using qztest::CountOf;
using qztest::RunTool;

TEST(QzcoreCommand, HelpAndVersionGoToStandardOutputAndSucceed) {
  const qztest::TempDir dir;
  struct Case {
    const char* arguments;
    const char* shows;
  } cases[] = {
      {"--help", "Usage: qzcore [--help | --version] COMMAND"},
      {"-h", "Usage: qzcore [--help | --version] COMMAND"},
      {"help", "Usage: qzcore [--help | --version] COMMAND"},
      {"help host", "Usage: qzcore host NAME"},
      {"host --help", "Usage: qzcore host NAME"},
      {"help lockstats", "-o, --output FILE"},
      {"lockstats report x.csv --help", "Usage: qzcore lockstats report FILE.csv"},
      {"--version", "qzcore 5."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    const auto run = RunTool(c.arguments, dir.path());
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.out.find(c.shows), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "");
  }
  // The usage lists every command once.
  const auto usage = RunTool("--help", dir.path()).out;
  for (const char* name : {"\n  help ", "\n  host ", "\n  lockstats ", "\n  tour "}) {
    EXPECT_EQ(CountOf(usage, name), 1u) << name;
  }
}

TEST(QzcoreCommand, UsageErrorsAreToldOnceWithExit2) {
  const qztest::TempDir dir;
  struct Case {
    const char* arguments;
    const char* message;  // the whole first line of standard error
    const char* helpFor;  // the command whose help the second line points to
  } cases[] = {
      {"", "qzcore: no command given", "qzcore"},
      {"frobnicate", "qzcore: unknown command 'frobnicate'", "qzcore"},
      {"--frobnicate", "qzcore: unknown option '--frobnicate'", "qzcore"},
      {"help frobnicate", "qzcore: unknown command 'frobnicate'", "qzcore"},
      {"tour extra", "qzcore tour: unexpected argument 'extra'", "qzcore tour"},
      {"host", "qzcore host: missing operand (qzcore host NAME)", "qzcore host"},
      {"host a b", "qzcore host: unexpected argument 'b'", "qzcore host"},
      {"host --bogus localhost", "qzcore host: unknown or ambiguous option '--bogus'", "qzcore host"},
      {"host --help=yes", "qzcore host: option '--help' takes no argument", "qzcore host"},
      {"lockstats report", "qzcore lockstats: missing operand (qzcore lockstats report FILE.csv [-o report.html])",
       "qzcore lockstats"},
      {"lockstats report a.csv -o", "qzcore lockstats: option '--output' needs an argument", "qzcore lockstats"},
      {"lockstats chart a.csv", "qzcore lockstats: unknown action 'chart' (report)", "qzcore lockstats"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    const auto run = RunTool(c.arguments, dir.path());
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, std::string(c.message) + "\nTry '" + c.helpFor + " --help' for more information.\n");
  }
}

TEST(QzcoreCommand, HostSaysWhyANameIsNotThisComputer) {
  const qztest::TempDir dir;
  const auto mine = RunTool("host localhost", dir.path());
  EXPECT_EQ(mine.exitCode, 0);
  EXPECT_EQ(mine.out, "localhost: this computer\n");
  // A documentation address resolves to itself without any network, and belongs to no one here.
  const auto elsewhere = RunTool("host 192.0.2.44", dir.path());
  EXPECT_EQ(elsewhere.exitCode, 1);
  EXPECT_EQ(elsewhere.out, "192.0.2.44: not this computer (it resolves to 192.0.2.44, none of them an address of this computer)\n");
  // The reserved .invalid domain never resolves.
  const auto nowhere = RunTool("host no-such-host.invalid", dir.path());
  EXPECT_EQ(nowhere.exitCode, 1);
  EXPECT_EQ(nowhere.out.rfind("no-such-host.invalid: not this computer (the name did not resolve: ", 0), 0u) << nowhere.out;
}

}  // namespace

namespace {

// Terminal columns of UTF-8 text as the tour's texts need it: a four-byte character (the emoji the
// tour shows) takes two columns, every other character one.
size_t Columns(const std::string& text) {
  size_t columns = 0;
  for (unsigned char c : text) {
    if ((c & 0xC0) != 0x80) columns += c >= 0xF0 ? 2 : 1;
  }
  return columns;
}

TEST(QzcoreTour, ArrowsAlignByDisplayWidthAndResultsReadAsResults) {
  const qztest::TempDir dir;
  const auto run = RunTool("tour", dir.path());
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.out.find("\nTour complete: "), std::string::npos);
  size_t lines = 0, wide = 0;
  for (size_t at = 0, end; at < run.out.size(); at = end + 1) {
    end = run.out.find('\n', at);
    if (end == std::string::npos) end = run.out.size();
    const std::string line = run.out.substr(at, end - at);
    const size_t arrow = line.find(" -> ");
    if (line.rfind("  ", 0) != 0 || arrow == std::string::npos) continue;
    ++lines;
    const std::string call = line.substr(0, arrow);
    if (call.size() != Columns(call)) ++wide;
    // The call is padded to 54 columns (two of indent), unless it is longer.
    if (Columns(call) > 54) continue;
    EXPECT_EQ(Columns(call), 54u) << line;
    // A failure code is shown by name with its value: "QZ_E_FAIL (0x80004005)". A trace line's
    // "[0x...]" is a thread id, whatever its digits.
    for (size_t hex = line.find("0x8"); hex != std::string::npos; hex = line.find("0x8", hex + 1)) {
      EXPECT_TRUE(hex > 0 && (line[hex - 1] == '(' || line[hex - 1] == '[')) << line;
    }
  }
  EXPECT_GT(lines, 50u);
  EXPECT_GT(wide, 0u) << "no call with characters beyond ASCII: the width check saw nothing";
  EXPECT_NE(run.out.find("sample alert"), std::string::npos);
}

}  // namespace
