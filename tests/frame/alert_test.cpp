// alert_test.cpp - QZErrorAlert, QZAssert and QZTrace as a caller and an operator see them:
// the event-log entry, the debugger text, the question on the terminal and what each answer does.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "qzcore.h"
#include "support/test_support.h"

namespace {

using qztest::ReadFile;
using qztest::ScopedEnv;
using qztest::TempDir;

// Keeps the stored method at 0 around each test, as a fresh process has it.
class Alert : public ::testing::Test {
 protected:
  void SetUp() override { QZErrorAlertSetMethod(0); }
  void TearDown() override { QZErrorAlertSetMethod(0); }
  TempDir m_dir;
  std::string m_events = m_dir.File("events.log");
  std::string m_debug = m_dir.File("debug.txt");
  ScopedEnv m_eventEnv{"QZCORE_EVENT_LOG", m_events.c_str()};
  ScopedEnv m_debugEnv{"QZCORE_DEBUG_OUTPUT", m_debug.c_str()};
};

TEST_F(Alert, NothingHappensWithoutAMethod) {
  // Method 0 with no stored method reads no argument: a bad format pointer is never touched.
  QZErrorAlert(0, nullptr, reinterpret_cast<const QZWCHAR*>(1));
  // 0x10 has none of the four bits, and a non-zero argument does not consult the stored method.
  QZErrorAlertSetMethod(QZ_ALERT_EVENT_LOG);
  QZErrorAlert(0x10, u"t", u"text");
  EXPECT_EQ(ReadFile(m_events), "");
  // Method 0 now takes the stored method.
  QZErrorAlert(0, u"t", u"text");
  EXPECT_EQ(ReadFile(m_events), "t\ttext\n");
}

TEST_F(Alert, EventEntryHoldsTitleAndFormattedTextEscaped) {
  QZErrorAlert(QZ_ALERT_EVENT_LOG, u"Disk \\ check", u"%ls is %d%% full\r\n(%hs)", u"/var", 97, "bytes");
  EXPECT_EQ(ReadFile(m_events), "Disk \\\\ check\t/var is 97% full\\r\\n(bytes)\n");
  // A null title is an absent first string.
  QZErrorAlert(QZ_ALERT_EVENT_LOG, nullptr, u"second");
  EXPECT_EQ(ReadFile(m_events), "Disk \\\\ check\t/var is 97% full\\r\\n(bytes)\n\tsecond\n");
}

TEST_F(Alert, TextIsCutAt511Units) {
  const std::u16string longText(600, u'x');
  QZErrorAlert(QZ_ALERT_EVENT_LOG, u"T", u"%ls", longText.c_str());
  EXPECT_EQ(ReadFile(m_events), "T\t" + std::string(511, 'x') + "\n");
}

TEST_F(Alert, AssertWithEventLogMethodTracesLogsAndReturns) {
  QZErrorAlertSetMethod(QZ_ALERT_EVENT_LOG);
  QZAssert("n > 0", "widget.c", 42);
  const std::string events = ReadFile(m_events);
  EXPECT_EQ(events,
            "Morvalent Services\tMorvalent Services Debug Assertion Failed!\\n\\nFile: widget.c\\nLine: 42\\n\\n"
            "Expression: n > 0\n");
  const std::string trace = ReadFile(m_debug);
  const std::string prefix = "[0x" + [] {
    char hex[16];
    std::snprintf(hex, sizeof hex, "%lx", static_cast<long>(syscall(SYS_gettid)));
    return std::string(hex);
  }() + "]";
  EXPECT_EQ(trace, prefix + "\nQZ_ASSERT(n > 0)\n widget.c:42\n");
}

TEST_F(Alert, TraceWritesPrefixAndTextAndCutsLongText) {
  QZTrace(u"%hs=%d %ls", "count", -3, u"\u00e9t\u00e9");
  const std::string text = ReadFile(m_debug);
  ASSERT_EQ(text.rfind("[0x", 0), 0u) << text;
  EXPECT_NE(text.find("]count=-3 \u00e9t\u00e9"), std::string::npos) << text;
  std::remove(m_debug.c_str());
  const std::u16string longText(700, u'y');
  QZTrace(u"%ls", longText.c_str());
  const std::string cut = ReadFile(m_debug);
  EXPECT_EQ(cut.substr(cut.find(']') + 1), std::string(511, 'y'));
}

TEST_F(Alert, TracePrefixOfAForkedChildIsItsOwnThread) {
  QZTrace(u"parent");  // this thread's id is known to the library now
  std::remove(m_debug.c_str());
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    QZTrace(u"child");
    _exit(0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  char expected[32];
  std::snprintf(expected, sizeof expected, "[%#x]child", static_cast<unsigned>(child));
  EXPECT_EQ(ReadFile(m_debug), expected);
}

// --- The operator question, on a pseudo-terminal, in a child process -----------------------------

constexpr char kPrompt[] = "[A]bort, [R]etry, [I]gnore? ";

// Child side: alerts with the console method and the title/text from the environment, then
// prints a marker so the parent knows the call returned.
TEST(AlertChild, ConsoleMessage) {
  if (!qztest::IsChild()) GTEST_SKIP() << "runs as a child of the operator tests";
  const char* title = getenv("QZTEST_TITLE");
  std::u16string title16;
  if (title != nullptr) for (const char* p = title; *p; ++p) title16 += static_cast<char16_t>(*p);
  const std::u16string text(static_cast<size_t>(atoi(getenv("QZTEST_TEXT_LEN"))), u'z');
  QZErrorAlert(QZ_ALERT_CONSOLE_MESSAGE, title != nullptr ? title16.c_str() : nullptr, u"%ls", text.c_str());
  std::printf("ALERT-RETURNED\n");
  std::fflush(stdout);
}

qztest::ChildResult AskOperator(const std::vector<std::string>& answers, const char* title, int textLength) {
  std::vector<std::string> env = {"QZTEST_TEXT_LEN=" + std::to_string(textLength)};
  if (title != nullptr) env.push_back(std::string("QZTEST_TITLE=") + title);
  return qztest::RunSelfOnTerminal("AlertChild.ConsoleMessage", env, kPrompt, answers);
}

TEST(OperatorQuestion, IgnoreGoesOnAndOtherAnswersAskAgain) {
  const auto r = AskOperator({"maybe", "  I"}, "Widget", 5);
  EXPECT_EQ(r.exitCode, 0);
  EXPECT_NE(r.out.find("Widget [Process ID "), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("zzzzz\r\n\r\nPress retry to debug the application."), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("ALERT-RETURNED"), std::string::npos);
}

TEST(OperatorQuestion, AbortEndsTheProcess) {
  const auto r = AskOperator({"abort"}, "Widget", 5);
  EXPECT_EQ(r.signal, SIGABRT);
  EXPECT_EQ(r.out.find("ALERT-RETURNED"), std::string::npos);
}

TEST(OperatorQuestion, RetryWithoutDebuggerEndsInTheTrap) {
  const auto r = AskOperator({"r"}, "Widget", 5);
  EXPECT_EQ(r.signal, SIGTRAP);
}

TEST(OperatorQuestion, NullTitleAndCutsOfCaptionAndBody) {
  // A closed terminal is an undeliverable question: answer 0, and the alert returns.
  auto r = AskOperator({}, nullptr, 5);
  EXPECT_NE(r.out.find("QZErrorAlert [Process ID "), std::string::npos) << r.out;
  // A 70-character title fills the 64-unit caption: the process number is lost.
  const std::string title(70, 'T');
  r = AskOperator({"i"}, title.c_str(), 5);
  EXPECT_NE(r.out.find(std::string(63, 'T')), std::string::npos);
  EXPECT_EQ(r.out.find(std::string(64, 'T')), std::string::npos);
  EXPECT_EQ(r.out.find("Process ID"), std::string::npos);
  // A 511-unit text leaves no room for the sentence about the retry button.
  r = AskOperator({"i"}, "W", 600);
  EXPECT_NE(r.out.find(std::string(511, 'z')), std::string::npos);
  EXPECT_EQ(r.out.find("Press retry"), std::string::npos);
  EXPECT_NE(r.out.find("ALERT-RETURNED"), std::string::npos);
}

TEST(AlertChild, AssertWithoutMethod) {
  if (!qztest::IsChild()) GTEST_SKIP() << "runs as a child";
  QZAssert("false", "f.c", 1);
  std::printf("ASSERT-RETURNED\n");
}

TEST(Assertion, WithoutAStoredMethodStopsAtTheTrap) {
  const auto r = qztest::RunSelf("AlertChild.AssertWithoutMethod", {"QZCORE_DEBUG_OUTPUT=stderr"});
  EXPECT_EQ(r.signal, SIGTRAP);
  EXPECT_NE(r.err.find("QZ_ASSERT(false)\n f.c:1\n"), std::string::npos) << r.err;
}

}  // namespace
