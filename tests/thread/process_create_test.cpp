// process_create_test.cpp - starting children: the words and environment a child sees, its
// working directory, its streams, the descriptors it inherits, and the creations that fail.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "qzcore/qzfile.h"
#include "qzcore/qzprocess.h"
#include "support/test_support.h"
#include "thread/process_child.h"

namespace {

using qztest::ChildReport;
using qztest::Wide;

struct ChildRun {
  QZRESULT result = 1;
  uint32_t exitCode = 0xFFFFFFFF;
  ChildReport report;
};

// Starts a reporting child with a pipe for each stream and collects its report.
ChildRun RunReporter(const std::string& program, const char16_t* arguments, const std::vector<std::string>* environment,
                const std::string* directory = nullptr) {
  ChildRun run;
  std::vector<std::u16string> wideEnvironment;
  if (environment != nullptr) {
    for (const auto& e : *environment) wideEnvironment.push_back(Wide(e));
  }
  const auto array = qztest::WideArray(wideEnvironment);
  const std::u16string wideDirectory = directory != nullptr ? Wide(*directory) : u"";
  QZFileHandle streams[3] = {-1, -1, -1};
  QZProcessHandle process;
  run.result = QZProcessCreate(Wide(program).c_str(), arguments, directory != nullptr ? wideDirectory.c_str() : nullptr,
                               environment != nullptr ? array.data() : nullptr, 0, streams, &process);
  if (run.result != 0) return run;
  QZFileClose(streams[0]);
  const std::string out = qztest::ReadToEnd(streams[1]);
  qztest::ReadToEnd(streams[2]);
  EXPECT_EQ(QZProcessJoin(process, &run.exitCode), 0);
  EXPECT_TRUE(qztest::ParseReport(out, &run.report)) << out;
  return run;
}

std::vector<std::string> Words(std::vector<std::string> words) { return words; }

TEST(ProcessCreate, ChildGetsTheWordsOfTheSplitCommandLine) {
  const std::string program = qztest::TestBinary();
  const std::vector<std::string> environment = qztest::ChildEnvironment("report");
  struct Case {
    const char16_t* arguments;
    std::vector<std::string> words;  // after the program's own
  };
  const Case cases[] = {
      {nullptr, {}},
      {u"", {}},  // the command line ends in a blank
      {u"a  b\tc", {"a", "b", "c"}},
      {u"  lead trail  ", {"lead", "trail"}},
      {u"\"a b\" c", {"a b", "c"}},
      {u"un\"quoted mid\"dle", {"unquoted middle"}},
      {uR"(a\b c\\d)", {R"(a\b)", R"(c\\d)"}},      // literal away from a quote
      {uR"(\"x\")", {R"("x")"}},                     // odd count: literal quote
      {uR"(a\\"b c")", {R"(a\b c)"}},                // even count: half, and the quote groups
      {uR"(a\\\"b)", {R"(a\"b)"}},                   // 3: one backslash and a literal quote
      {uR"("tail\\")", {R"(tail\)"}},
      {uR"("a""b" c)", {R"(a"b)", "c"}},             // "" inside a group
      {u"\"\" x", {"", "x"}},                        // an empty word
      {u"\u00e9 \"\u00fc x\"", {"\xc3\xa9", "\xc3\xbc x"}},
  };
  for (const auto& c : cases) {
    const ChildRun run = RunReporter(program, c.arguments, &environment);
    ASSERT_EQ(run.result, 0);
    std::vector<std::string> expected = {program};
    expected.insert(expected.end(), c.words.begin(), c.words.end());
    EXPECT_EQ(run.report.words, expected) << (c.arguments != nullptr ? qztest::Narrow(c.arguments) : "(null)");
    EXPECT_EQ(run.exitCode, 0u);
  }
}

TEST(ProcessCreate, ProgramPathWithBlanksIsNotProtected) {
  qztest::TempDir dir;
  const std::string folder = dir.File("dir with blank");
  std::filesystem::create_directory(folder);
  std::filesystem::create_symlink(qztest::TestBinary(), folder + "/child");
  const std::vector<std::string> environment = qztest::ChildEnvironment("report");
  const ChildRun run = RunReporter(folder + "/child", u"x", &environment);
  ASSERT_EQ(run.result, 0);
  EXPECT_EQ(run.report.words, Words({dir.File("dir"), "with", "blank/child", "x"}));
}

TEST(ProcessCreate, EnvironmentIsSortedWithoutRegardToCase) {
  const std::vector<std::string> environment = {"QZTEST_ROLE=report", "B=1", "a=2", "QZTEST_CHILD=1", "c=3",
                                                "GTEST_FILTER=ProcessChild.Role"};
  const ChildRun run = RunReporter(qztest::TestBinary(), nullptr, &environment);
  ASSERT_EQ(run.result, 0);
  EXPECT_EQ(run.report.environment, Words({"a=2", "B=1", "c=3", "GTEST_FILTER=ProcessChild.Role", "QZTEST_CHILD=1",
                                           "QZTEST_ROLE=report"}));
}

TEST(ProcessCreate, EnvironmentIsInheritedOrEmpty) {
  {
    qztest::ScopedEnv filter("GTEST_FILTER", "ProcessChild.Role");
    qztest::ScopedEnv child("QZTEST_CHILD", "1");
    qztest::ScopedEnv role("QZTEST_ROLE", "report");
    qztest::ScopedEnv mark("QZTEST_MARK", "inherited");
    const ChildRun run = RunReporter(qztest::TestBinary(), nullptr, nullptr);
    ASSERT_EQ(run.result, 0);
    EXPECT_NE(std::find(run.report.environment.begin(), run.report.environment.end(), "QZTEST_MARK=inherited"),
              run.report.environment.end());
  }
  // An array whose first entry is null: no environment at all (env prints nothing).
  const char16_t* empty[] = {nullptr};
  QZFileHandle streams[3] = {0, -1, 2};
  QZProcessHandle process;
  ASSERT_EQ(QZProcessCreate(u"/usr/bin/env", nullptr, nullptr, empty, 0, streams, &process), 0);
  EXPECT_EQ(qztest::ReadToEnd(streams[1]), "");
  uint32_t code = 1;
  EXPECT_EQ(QZProcessJoin(process, &code), 0);
  EXPECT_EQ(code, 0u);
}

TEST(ProcessCreate, RelativeProgramIsTakenFromTheCallersDirectory) {
  qztest::TempDir home;
  qztest::TempDir elsewhere;
  std::filesystem::create_symlink(qztest::TestBinary(), home.File("child"));
  const auto previous = std::filesystem::current_path();
  std::filesystem::current_path(home.path());
  const std::vector<std::string> environment = qztest::ChildEnvironment("report");
  const ChildRun run = RunReporter("child", u"x", &environment, &elsewhere.path());
  const ChildRun plain = RunReporter("./child", nullptr, &environment);
  std::filesystem::current_path(previous);
  ASSERT_EQ(run.result, 0);
  EXPECT_EQ(run.report.words, Words({"child", "x"}));
  EXPECT_EQ(run.report.directory, std::filesystem::canonical(elsewhere.path()).string());
  ASSERT_EQ(plain.result, 0);
  EXPECT_EQ(plain.report.directory, std::filesystem::canonical(home.path()).string());
}

TEST(ProcessCreate, PipesCarryAllThreeStreams) {
  std::vector<std::u16string> environment;
  for (const auto& e : qztest::ChildEnvironment("echo")) environment.push_back(Wide(e));
  const auto array = qztest::WideArray(environment);
  QZFileHandle streams[3] = {-1, -1, -1};
  QZProcessHandle process;
  ASSERT_EQ(QZProcessCreate(Wide(qztest::TestBinary()).c_str(), nullptr, nullptr, array.data(), 0, streams, &process), 0);
  for (QZFileHandle end : streams) {
    ASSERT_GE(end, 3);
    EXPECT_EQ(fcntl(static_cast<int>(end), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  }
  EXPECT_EQ(fcntl(static_cast<int>(streams[0]), F_GETFL) & O_ACCMODE, O_WRONLY);
  EXPECT_EQ(fcntl(static_cast<int>(streams[1]), F_GETFL) & O_ACCMODE, O_RDONLY);
  qztest::WriteAll(streams[0], "hello through a pipe");
  QZFileClose(streams[0]);
  const std::string out = qztest::ReadToEnd(streams[1]);
  const std::string err = qztest::ReadToEnd(streams[2]);
  EXPECT_TRUE(out.ends_with("hello through a pipe")) << out;
  EXPECT_TRUE(err.ends_with("err")) << err;
  uint32_t code = 0;
  EXPECT_EQ(QZProcessJoin(process, &code), 0);
  EXPECT_EQ(code, 7u);
}

TEST(ProcessCreate, OnlyEntriesAskingForPipesAreReplaced) {
  const int in = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const int err = open("/dev/null", O_WRONLY | O_CLOEXEC);
  QZFileHandle streams[3] = {in, -1, err};
  QZProcessHandle process;
  ASSERT_EQ(QZProcessCreate(u"/bin/sh", u"-c \"echo out; echo lost >&2\"", nullptr, nullptr, 0, streams, &process), 0);
  EXPECT_EQ(streams[0], in);
  EXPECT_EQ(streams[2], err);
  EXPECT_EQ(qztest::ReadToEnd(streams[1]), "out\n");
  EXPECT_EQ(QZProcessJoin(process, nullptr), 0);
  close(in);
  close(err);
}

// A caller's descriptor becomes the child's stream whatever its close-on-exec flag, and the
// caller's own standard streams may be swapped for the child.
TEST(ProcessCreate, CallerDescriptorsBecomeTheChildsStreams) {
  std::vector<std::u16string> environment;
  for (const auto& e : qztest::ChildEnvironment("echo")) environment.push_back(Wide(e));
  const auto array = qztest::WideArray(environment);
  const std::u16string program = Wide(qztest::TestBinary());

  int both[2];
  ASSERT_EQ(pipe2(both, O_CLOEXEC), 0);
  QZFileHandle streams[3] = {-1, both[1], both[1]};
  QZProcessHandle process;
  ASSERT_EQ(QZProcessCreate(program.c_str(), nullptr, nullptr, array.data(), 0, streams, &process), 0);
  close(both[1]);
  qztest::WriteAll(streams[0], "in");
  QZFileClose(streams[0]);
  EXPECT_TRUE(qztest::ReadToEnd(both[0]).ends_with("inerr"));
  EXPECT_EQ(QZProcessJoin(process, nullptr), 0);

  // Output to this process's descriptor 2 and error to its 1, both pipes for the while.
  int out[2];
  int errs[2];
  ASSERT_EQ(pipe2(out, O_CLOEXEC), 0);
  ASSERT_EQ(pipe2(errs, O_CLOEXEC), 0);
  const int savedOut = dup(1);
  const int savedErr = dup(2);
  dup2(out[1], 1);
  dup2(errs[1], 2);
  QZFileHandle swapped[3] = {-1, 2, 1};
  const QZRESULT created = QZProcessCreate(program.c_str(), nullptr, nullptr, array.data(), 0, swapped, &process);
  dup2(savedOut, 1);
  dup2(savedErr, 2);
  close(savedOut);
  close(savedErr);
  close(out[1]);
  close(errs[1]);
  ASSERT_EQ(created, 0);
  QZFileClose(swapped[0]);
  EXPECT_EQ(swapped[1], 2);
  EXPECT_EQ(qztest::ReadToEnd(out[0]), "err");                // the child's error
  EXPECT_TRUE(qztest::ReadToEnd(errs[0]).find("Role") != std::string::npos);  // its output
  EXPECT_EQ(QZProcessJoin(process, nullptr), 0);
}

TEST(ProcessCreate, ChildInheritsOnlyItsStreams) {
  std::vector<std::u16string> echoEnvironment;
  for (const auto& e : qztest::ChildEnvironment("echo")) echoEnvironment.push_back(Wide(e));
  const auto echoArray = qztest::WideArray(echoEnvironment);
  const std::u16string program = Wide(qztest::TestBinary());
  // A sibling with pipes kept open, and a descriptor of this process that is not close-on-exec.
  QZFileHandle sibling[3] = {-1, -1, -1};
  QZProcessHandle siblingProcess;
  ASSERT_EQ(QZProcessCreate(program.c_str(), nullptr, nullptr, echoArray.data(), 0, sibling, &siblingProcess), 0);
  const int inheritable = open("/dev/null", O_RDONLY);

  const std::vector<std::string> environment = qztest::ChildEnvironment("report");
  const ChildRun run = RunReporter(qztest::TestBinary(), nullptr, &environment);
  ASSERT_EQ(run.result, 0);
  EXPECT_EQ(run.report.descriptors, (std::vector<int>{0, 1, 2}));

  close(inheritable);
  QZFileClose(sibling[0]);
  qztest::ReadToEnd(sibling[1]);
  qztest::ReadToEnd(sibling[2]);
  EXPECT_EQ(QZProcessJoin(siblingProcess, nullptr), 0);
}

TEST(ProcessCreate, FailuresLeaveNothingBehind) {
  qztest::TempDir dir;
  { std::ofstream(dir.File("file")) << "not a program"; }
  chmod(dir.File("file").c_str(), 0644);
  const std::string binary = qztest::TestBinary();
  const int closed = 1000;  // above every pipe end the cases make
  ASSERT_EQ(fcntl(closed, F_GETFD), -1);
  struct Case {
    const char* what;
    std::string program;
    const char* directory;  // relative to the temporary directory
    QZFileHandle error;     // the standard-error entry
    QZRESULT result;
  };
  const Case cases[] = {
      {"missing program", dir.File("nothing"), nullptr, -1, QZ_E_FILE_NOT_FOUND},
      {"missing directory on the path", dir.File("no/dir/program"), nullptr, -1, QZ_E_FILE_NOT_FOUND},
      {"path through a file", dir.File("file/program"), nullptr, -1, QZ_E_FILE_NOT_FOUND},
      {"no search along PATH", "true", nullptr, -1, QZ_E_FILE_NOT_FOUND},
      {"program is a directory", dir.path(), nullptr, -1, QZ_E_ACCESSDENIED},
      {"program not executable", dir.File("file"), nullptr, -1, QZ_E_ACCESSDENIED},
      {"missing working directory", binary, "gone", -1, QZ_E_FAIL},
      {"working directory is a file", binary, "file", -1, QZ_E_FAIL},
      {"stream names no descriptor", binary, nullptr, closed, QZ_E_HANDLE},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::vector<int> before = qztest::OpenDescriptors();
    QZFileHandle streams[3] = {-1, -1, c.error};
    QZProcessHandle process = 0;
    const std::u16string directory = c.directory != nullptr ? Wide(dir.File(c.directory)) : u"";
    EXPECT_EQ(QZProcessCreate(Wide(c.program).c_str(), u"x", c.directory != nullptr ? directory.c_str() : nullptr,
                              nullptr, 0, streams, &process),
              c.result);
    EXPECT_EQ(process, -1);
    EXPECT_EQ(qztest::OpenDescriptors(), before);
    EXPECT_FALSE(qztest::HasZombieChild());
  }
  QZProcessHandle process = 0;
  EXPECT_EQ(QZProcessCreate(nullptr, nullptr, nullptr, nullptr, 0, nullptr, &process), QZ_E_FAIL);
  EXPECT_EQ(process, -1);
}

}  // namespace
