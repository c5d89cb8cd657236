// process_create_test.cpp - starting children: the words and environment a child sees, where it
// runs, its streams, the descriptors it inherits, and the creations that fail.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "qzcore/qzfile.h"
#include "qzcore/qzprocess.h"
#include "support/test_support.h"
#include "thread/process_child.h"

namespace {

using qztest::Wide;
using Strings = std::vector<std::string>;

// Starts `program` with pipes for all three streams and collects what it reports.
qztest::ChildReport Report(const std::u16string& program, const char16_t* arguments,
                           const std::vector<std::u16string>* environment,
                           const char16_t* directory = nullptr) {
  const auto array =
      environment != nullptr ? qztest::WideArray(*environment) : std::vector<const char16_t*>();
  QZFileHandle streams[3] = {-1, -1, -1};
  QZProcessHandle process;
  qztest::ChildReport report;
  EXPECT_EQ(QZProcessCreate(program.c_str(), arguments, directory,
                            environment != nullptr ? array.data() : nullptr, 0, streams, &process),
            0);
  if (process == -1) return report;
  QZFileClose(streams[0]);
  const std::string out = qztest::ReadToEnd(streams[1]);
  qztest::ReadToEnd(streams[2]);
  EXPECT_EQ(QZProcessJoin(process, nullptr), 0);
  EXPECT_TRUE(qztest::ParseReport(out, &report)) << out;
  return report;
}

// Starts the echo role with `streams`, feeds it `input` and joins it; its exit code.
uint32_t Echo(QZFileHandle* streams, const std::string& input) {
  const auto environment = qztest::ChildEnvironment("echo");
  const auto array = qztest::WideArray(environment);
  QZProcessHandle process;
  EXPECT_EQ(QZProcessCreate(Wide(qztest::TestBinary()).c_str(), nullptr, nullptr, array.data(), 0,
                            streams, &process),
            0);
  uint32_t written = 0;
  EXPECT_EQ(QZFileWrite(streams[0], input.data(), static_cast<uint32_t>(input.size()), &written),
            0);
  QZFileClose(streams[0]);
  uint32_t code = 0;
  EXPECT_EQ(QZProcessJoin(process, &code), 0);
  return code;
}

TEST(ProcessCreate, ChildGetsTheWordsOfTheSplitCommandLine) {
  const std::string program = qztest::TestBinary();
  const auto environment = qztest::ChildEnvironment("report");
  const std::pair<const char16_t*, Strings> cases[] = {
      {nullptr, {}},
      {u"", {}},  // the command line ends in a blank
      {u"  a  b\tc  ", {"a", "b", "c"}},
      {u"\"a b\" un\"quoted mid\"dle", {"a b", "unquoted middle"}},
      {uR"(a\b c\\d)", {R"(a\b)", R"(c\\d)"}},      // literal away from a quote
      {uR"(\"x\" a\\\"b)", {R"("x")", R"(a\"b)"}},  // odd count: half, and a literal quote
      {uR"(a\\"b c" "tail\\")",
       {R"(a\b c)", R"(tail\)"}},                // even count: half, and the quote groups
      {uR"("a""b" "" x)", {R"(a"b)", "", "x"}},  // "" inside a group; an empty word
      {u"\u00e9 \"\u00fc x\"", {"\xc3\xa9", "\xc3\xbc x"}},
  };
  for (const auto& [arguments, words] : cases) {
    Strings expected = {program};
    expected.insert(expected.end(), words.begin(), words.end());
    EXPECT_EQ(Report(Wide(program), arguments, &environment).words, expected);
  }
}

TEST(ProcessCreate, ProgramPathIsTakenAsGiven) {
  qztest::TempDir home;
  qztest::TempDir elsewhere;
  std::filesystem::create_directory(home.File("dir with blank"));
  std::filesystem::create_symlink(qztest::TestBinary(), home.File("dir with blank/child"));
  const auto environment = qztest::ChildEnvironment("report");
  // Blanks in the program path are not protected.
  EXPECT_EQ(Report(Wide(home.File("dir with blank/child")), u"x", &environment).words,
            (Strings{home.File("dir"), "with", "blank/child", "x"}));
  // A relative path is taken from the caller's directory, even when the child starts elsewhere.
  const auto previous = std::filesystem::current_path();
  std::filesystem::current_path(home.path());
  const auto report =
      Report(u"dir with blank/child", nullptr, &environment, Wide(elsewhere.path()).c_str());
  std::filesystem::current_path(previous);
  EXPECT_EQ(report.words, (Strings{"dir", "with", "blank/child"}));
  EXPECT_EQ(report.directory, std::filesystem::canonical(elsewhere.path()).string());
}

TEST(ProcessCreate, EnvironmentIsSortedInheritedOrEmpty) {
  const auto program = Wide(qztest::TestBinary());
  const auto sorted = qztest::ChildEnvironment("report", {"c=3", "B=1", "a=2"});
  EXPECT_EQ(Report(program, nullptr, &sorted).environment,
            (Strings{"a=2", "B=1", "c=3", "GTEST_FILTER=ProcessChild.Role", "QZTEST_CHILD=1",
                     "QZTEST_ROLE=report"}));
  {
    qztest::ScopedEnv filter("GTEST_FILTER", "ProcessChild.Role");
    qztest::ScopedEnv child("QZTEST_CHILD", "1");
    qztest::ScopedEnv role("QZTEST_ROLE", "report");
    qztest::ScopedEnv mark("QZTEST_MARK", "inherited");
    const Strings inherited = Report(program, nullptr, nullptr).environment;
    EXPECT_NE(std::find(inherited.begin(), inherited.end(), "QZTEST_MARK=inherited"),
              inherited.end());
  }
  const std::vector<std::u16string> none;
  const auto array = qztest::WideArray(none);
  QZFileHandle streams[3] = {0, -1, 2};
  QZProcessHandle process;
  ASSERT_EQ(QZProcessCreate(u"/usr/bin/env", nullptr, nullptr, array.data(), 0, streams, &process),
            0);
  EXPECT_EQ(qztest::ReadToEnd(streams[1]), "");  // env printed nothing
  EXPECT_EQ(QZProcessJoin(process, nullptr), 0);
}

TEST(ProcessCreate, PipesCarryAllThreeStreams) {
  QZFileHandle streams[3] = {-1, -1, -1};
  EXPECT_EQ(Echo(streams, "through a pipe"), 7u);
  for (int i : {1, 2}) {  // the caller's read ends; the write end was checked by the write
    EXPECT_EQ(fcntl(static_cast<int>(streams[i]), F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(fcntl(static_cast<int>(streams[i]), F_GETFL) & O_ACCMODE, O_RDONLY);
  }
  EXPECT_TRUE(qztest::ReadToEnd(streams[1]).ends_with("through a pipe"));
  EXPECT_TRUE(qztest::ReadToEnd(streams[2]).ends_with("err"));
}

// A caller's descriptor becomes the child's stream whatever its close-on-exec flag, stays as it
// is in the array, and the caller's own standard streams may be swapped for the child.
TEST(ProcessCreate, CallerDescriptorsBecomeTheChildsStreams) {
  int both[2];
  ASSERT_EQ(pipe2(both, O_CLOEXEC), 0);
  QZFileHandle streams[3] = {-1, both[1], both[1]};
  EXPECT_EQ(Echo(streams, "in"), 7u);
  EXPECT_EQ(streams[1], both[1]);
  EXPECT_EQ(streams[2], both[1]);
  close(both[1]);
  EXPECT_TRUE(qztest::ReadToEnd(both[0]).ends_with("errin"));

  int out[2];
  int err[2];
  ASSERT_EQ(pipe2(out, O_CLOEXEC) | pipe2(err, O_CLOEXEC), 0);
  const int saved[2] = {dup(1), dup(2)};
  dup2(out[1], 1);
  dup2(err[1], 2);
  QZFileHandle swapped[3] = {-1, 2, 1};  // output to this process's 2, error to its 1
  const uint32_t code = Echo(swapped, "");
  dup2(saved[0], 1);
  dup2(saved[1], 2);
  for (int fd : {saved[0], saved[1], out[1], err[1]}) close(fd);
  EXPECT_EQ(code, 7u);
  EXPECT_EQ(qztest::ReadToEnd(out[0]), "err");
  EXPECT_NE(qztest::ReadToEnd(err[0]).find("ProcessChild.Role"), std::string::npos);
}

TEST(ProcessCreate, ChildInheritsOnlyItsStreams) {
  // A sibling's pipes and a descriptor of this process without close-on-exec, both open meanwhile.
  const auto echo = qztest::ChildEnvironment("echo");
  const auto echoArray = qztest::WideArray(echo);
  QZFileHandle sibling[3] = {-1, -1, -1};
  QZProcessHandle siblingProcess;
  ASSERT_EQ(QZProcessCreate(Wide(qztest::TestBinary()).c_str(), nullptr, nullptr, echoArray.data(),
                            0, sibling, &siblingProcess),
            0);
  const int inheritable = open("/dev/null", O_RDONLY);
  const auto environment = qztest::ChildEnvironment("report");
  EXPECT_EQ(Report(Wide(qztest::TestBinary()), nullptr, &environment).descriptors,
            (Strings{"0", "1", "2"}));
  close(inheritable);
  QZFileClose(sibling[0]);
  qztest::ReadToEnd(sibling[1]);
  qztest::ReadToEnd(sibling[2]);
  EXPECT_EQ(QZProcessJoin(siblingProcess, nullptr), 0);
}

TEST(ProcessCreate, FailuresLeaveNothingBehind) {
  qztest::TempDir dir;
  std::ofstream(dir.File("file")) << "not a program";
  chmod(dir.File("file").c_str(), 0644);
  const std::string binary = qztest::TestBinary();
  const int closed = 1000;  // above every pipe end the cases make
  ASSERT_EQ(fcntl(closed, F_GETFD), -1);
  struct Case {
    std::string program;
    const char* directory;  // in the temporary directory
    QZFileHandle error;     // the standard-error entry
    QZRESULT result;
  };
  const Case cases[] = {
      {dir.File("nothing"), nullptr, -1, QZ_E_FILE_NOT_FOUND},
      {dir.File("no/dir/program"), nullptr, -1, QZ_E_FILE_NOT_FOUND},
      {dir.File("file/program"), nullptr, -1, QZ_E_FILE_NOT_FOUND},  // a path through a file
      {"true", nullptr, -1, QZ_E_FILE_NOT_FOUND},                    // no search along PATH
      {dir.path(), nullptr, -1, QZ_E_ACCESSDENIED},                  // a directory
      {dir.File("file"), nullptr, -1, QZ_E_ACCESSDENIED},            // not executable
      {binary, "gone", -1, QZ_E_FAIL},                               // missing working directory
      {binary, "file", -1, QZ_E_FAIL},                               // working directory a file
      {binary, nullptr, closed, QZ_E_HANDLE},                        // a stream that names nothing
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.program + (c.directory != nullptr ? std::string(" in ") + c.directory : ""));
    const auto before = qztest::OpenDescriptors();
    QZFileHandle streams[3] = {-1, -1, c.error};
    QZProcessHandle process = 0;
    const std::u16string directory = c.directory != nullptr ? Wide(dir.File(c.directory)) : u"";
    EXPECT_EQ(QZProcessCreate(Wide(c.program).c_str(), u"x",
                              c.directory != nullptr ? directory.c_str() : nullptr, nullptr, 0,
                              streams, &process),
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
