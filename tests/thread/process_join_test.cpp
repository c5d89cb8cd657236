// process_join_test.cpp - waiting for children: exit codes and signals, joins by handle and of
// whichever child ends first (in every order, beyond 64 children, while a creation waits),
// polling, detaching without zombies, and the process queries.
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <thread>

#include "qzcore/qzfile.h"
#include "qzcore/qzprocess.h"
#include "support/test_support.h"

namespace {

// /bin/sh running `script`; its standard input a pipe whose write end goes to *input if wanted.
QZProcessHandle Shell(const std::string& script, QZFileHandle* input = nullptr) {
  QZFileHandle streams[3] = {-1, 1, 2};
  QZProcessHandle process = -1;
  const std::string arguments = "-c \"" + script + "\"";
  EXPECT_EQ(QZProcessCreate(u"/bin/sh", std::u16string(arguments.begin(), arguments.end()).c_str(),
                            nullptr, nullptr, 0, input != nullptr ? streams : nullptr, &process),
            0);
  if (input != nullptr) *input = streams[0];
  return process;
}

void AwaitEnd(QZProcessHandle process) {  // without reaping: the handle is a pidfd
  struct pollfd entry = {static_cast<int>(process), POLLIN, 0};
  ASSERT_EQ(poll(&entry, 1, 60000), 1);
}

// A child starts with every signal at its default action, even those this process ignores.
TEST(ProcessJoin, ExitCodesAndSignals) {
  signal(SIGTERM, SIG_IGN);
  signal(SIGPIPE, SIG_IGN);
  const std::pair<const char*, uint32_t> cases[] = {{"exit 0", 0},          {"exit 7", 7},
                                                    {"exit 255", 255},      {"kill -TERM $$", 143},
                                                    {"kill -KILL $$", 137}, {"kill -PIPE $$", 141}};
  for (const auto& [script, expected] : cases) {
    uint32_t code = 0xFFFFFFFF;
    EXPECT_EQ(QZProcessJoin(Shell(script), &code), 0) << script;
    EXPECT_EQ(code, expected) << script;
  }
  signal(SIGTERM, SIG_DFL);
  signal(SIGPIPE, SIG_DFL);
}

TEST(ProcessJoin, ReadingTheExitCodePollsAndClosesTheHandle) {
  QZFileHandle input;
  const QZProcessHandle process = Shell("read line; exit 5", &input);
  uint32_t code = 1234;
  EXPECT_EQ(QZProcessGetExitCode(process, &code), QZ_E_FAIL);  // running: the handle stays
  EXPECT_EQ(QZProcessGetExitCode(process, &code), QZ_E_FAIL);
  QZFileClose(input);
  AwaitEnd(process);
  EXPECT_EQ(QZProcessGetExitCode(process, &code), 0);
  EXPECT_EQ(code, 5u);
  EXPECT_EQ(QZProcessGetExitCode(process, &code), QZ_E_HANDLE);  // closed, whatever comes next
  EXPECT_EQ(QZProcessJoin(process, &code), QZ_E_HANDLE);
  EXPECT_EQ(QZProcessDetach(process), QZ_E_HANDLE);
  const QZProcessHandle second = Shell("exit 3");
  EXPECT_EQ(QZProcessJoin(second, nullptr), 0);  // no code wanted, and closed as well
  EXPECT_EQ(QZProcessJoin(second, nullptr), QZ_E_HANDLE);
}

// Three children released one at a time, in every order: a join of any child gives the one that
// ended; then joins by handle, in the same orders.
TEST(ProcessJoin, JoinsInEveryOrder) {
  int order[3] = {0, 1, 2};
  do {
    for (bool byHandle : {false, true}) {
      QZFileHandle inputs[3];
      QZProcessHandle children[3];
      for (int i = 0; i < 3; ++i)
        children[i] = Shell("read line; exit " + std::to_string(10 + i), &inputs[i]);
      for (int i : order) {
        QZFileClose(inputs[i]);
        QZProcessHandle ended = children[i];
        uint32_t code = 0;
        ASSERT_EQ(byHandle ? QZProcessJoin(ended, &code) : QZProcessJoinChild(&ended, &code), 0);
        EXPECT_EQ(ended, children[i]);
        EXPECT_EQ(code, 10u + i);
      }
    }
  } while (std::next_permutation(order, order + 3));
}

TEST(ProcessJoin, JoinOfAnyChildHasNoLimitOf64) {
  std::map<QZProcessHandle, uint32_t> left;
  for (uint32_t i = 1; i <= 70; ++i) left[Shell("exit " + std::to_string(i))] = i;
  while (!left.empty()) {
    QZProcessHandle process = -1;
    uint32_t code = 0;
    ASSERT_EQ(QZProcessJoinChild(&process, &code), 0);
    ASSERT_EQ(left.count(process), 1u);  // each child once
    EXPECT_EQ(code, left[process]);
    left.erase(process);
  }
  QZProcessHandle none = 5;
  uint32_t code = 5;
  EXPECT_EQ(QZProcessJoinChild(&none, &code), QZ_E_FAIL);  // at once, with nothing written
  EXPECT_EQ(code, 5u);
}

TEST(ProcessJoin, JoinOfAnyChildTakesTheLowestHandleAmongEnded) {
  QZFileHandle input;
  const QZProcessHandle running = Shell("read line", &input);
  std::vector<QZProcessHandle> ended = {Shell("exit 1"), Shell("exit 2"), Shell("exit 3")};
  for (QZProcessHandle p : ended) AwaitEnd(p);
  std::sort(ended.begin(), ended.end());
  ended.push_back(running);
  for (QZProcessHandle expected : ended) {
    if (expected == running) QZFileClose(input);
    QZProcessHandle process = -1;
    ASSERT_EQ(QZProcessJoinChild(&process, nullptr), 0);
    EXPECT_EQ(process, expected);
  }
}

// While one thread waits for any child, a creation in another cannot enter its child in the set
// and does not return until that wait is over.
TEST(ProcessJoin, CreationWaitsForAJoinOfAnyChild) {
  QZFileHandle input;
  const QZProcessHandle blocker = Shell("read line; exit 4", &input);
  QZProcessHandle joined = -1;
  std::thread joiner([&] { EXPECT_EQ(QZProcessJoinChild(&joined, nullptr), 0); });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // let it reach its wait
  std::atomic<QZProcessHandle> late{-1};
  std::thread creator([&] { late = Shell("exit 6"); });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(late.load(), -1);  // held behind the wait
  QZFileClose(input);
  joiner.join();
  creator.join();
  EXPECT_EQ(joined, blocker);
  uint32_t code = 0;
  EXPECT_EQ(QZProcessJoin(late, &code), 0);
  EXPECT_EQ(code, 6u);
}

// Detaching a running child closes the caller's handle at once, as it does for an ended one.
TEST(ProcessJoin, HandleDetachedWhileTheChildRunsIsClosed) {
  QZFileHandle input;
  const QZProcessHandle process = Shell("read line", &input);
  ASSERT_EQ(QZProcessDetach(process), 0);
  uint32_t code = 1234;
  const std::pair<const char*, std::function<QZRESULT()>> uses[] = {
      {"exit code", [&] { return QZProcessGetExitCode(process, &code); }},
      {"detach", [&] { return QZProcessDetach(process); }},
      {"join", [&] { return QZProcessJoin(process, &code); }},
  };
  for (const auto& [use, call] : uses) EXPECT_EQ(call(), QZ_E_HANDLE) << use;
  EXPECT_EQ(code, 1234u);
  QZFileClose(input);
}

// A child detached while it runs is reaped by the library once it has ended: no zombie is left.
TEST(ProcessJoin, DetachedChildLeavesNoZombie) {
  QZFileHandle input;
  const QZProcessHandle process = Shell("read line", &input);
  const std::string info = qztest::ReadFile("/proc/self/fdinfo/" + std::to_string(process));
  const std::string stat =
      "/proc/" + std::to_string(std::atoi(info.c_str() + info.find("Pid:") + 4)) + "/stat";
  ASSERT_EQ(QZProcessDetach(process), 0);
  QZProcessHandle none;
  EXPECT_EQ(QZProcessJoinChild(&none, nullptr), QZ_E_FAIL);  // out of the set
  QZFileClose(input);
  auto state = [&] {
    const std::string text = qztest::ReadFile(stat);
    return text.size() > text.rfind(')') + 2 ? text[text.rfind(')') + 2] : '-';
  };
  for (int i = 0; i < 6000 && state() != 'Z'; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  ASSERT_EQ(state(), 'Z');
  EXPECT_EQ(QZProcessJoin(Shell("exit 0"), nullptr), 0);  // a later start reaps it
  EXPECT_FALSE(std::filesystem::exists(stat));
}

TEST(ProcessQueries, HandleIdAndName) {
  uint32_t code = 0;
  EXPECT_EQ(QZProcessGetHandle(), -1);
  EXPECT_EQ(QZProcessGetExitCode(QZProcessGetHandle(), &code), QZ_E_FAIL);  // this process runs
  EXPECT_EQ(QZProcessDetach(QZProcessGetHandle()), 0);
  EXPECT_EQ(QZProcessGetID(), static_cast<uint32_t>(getpid()));
  const std::string name = std::filesystem::read_symlink("/proc/self/exe").filename().string();
  const struct {
    uint32_t pid, size;
    uint16_t answer;
    std::string text;  // the buffer afterwards
  } cases[] = {
      {QZProcessGetID(), 256, 1, name},
      {QZProcessGetID(), 5, 1, name.substr(0, 4)},  // cut, the last byte a terminator
      {QZProcessGetID(), 1, 1, ""},
      {0x7FFFFFF0u, 256, 0, "untouched"},  // no such process
      {0, 256, 0, "untouched"},
  };
  for (const auto& c : cases) {
    char buffer[256] = "untouched";
    EXPECT_EQ(QZProcessGetName(c.pid, buffer, c.size), c.answer);
    EXPECT_EQ(std::string(buffer), c.text);
  }
}

// The program's full path must fit the 260-byte buffer with its terminator, or no name comes back.
TEST(ProcessQueries, NameOfAProgramByTheLengthOfItsPath) {
  const qztest::TempDir dir;
  const struct {
    size_t length;  // of the program's full path
    uint16_t answer;
  } cases[] = {{259, 1}, {260, 0}, {300, 0}};
  for (const auto& c : cases) {
    if (dir.path().size() + 4 > c.length) GTEST_SKIP() << "temporary path too long";
    std::string path = dir.path();
    for (size_t rest = c.length - path.size() - 2; rest > 0;) {  // folders of up to 150, then /c
      const size_t folder = rest > 151 ? 150 : rest - 1;
      path += "/" + std::string(folder, static_cast<char>('d' + c.length % 7));
      rest -= folder + 1;
    }
    std::filesystem::create_directories(path);
    path += "/c";
    std::filesystem::copy_file("/bin/cat", path);
    ASSERT_EQ(path.size(), c.length);
    QZFileHandle streams[3] = {-1, 1, 2};
    QZProcessHandle process = -1;
    ASSERT_EQ(QZProcessCreate(std::u16string(path.begin(), path.end()).c_str(), nullptr, nullptr,
                              nullptr, 0, streams, &process),
              0);
    const std::string info = qztest::ReadFile("/proc/self/fdinfo/" + std::to_string(process));
    const uint32_t pid = static_cast<uint32_t>(std::atoi(info.c_str() + info.find("Pid:") + 4));
    char buffer[16] = "untouched";
    EXPECT_EQ(QZProcessGetName(pid, buffer, sizeof buffer), c.answer) << c.length;
    EXPECT_STREQ(buffer, c.answer == 1 ? "c" : "untouched") << c.length;
    QZFileClose(streams[0]);
    EXPECT_EQ(QZProcessJoin(process, nullptr), 0);
  }
}

}  // namespace
