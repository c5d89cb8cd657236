// process_join_test.cpp - waiting for children: exit codes and signals, joins by handle and of
// whichever child ends first in every order and beyond 64 children, polling, detaching without
// zombies, the lock held across a join of any child, and the process queries.
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <csignal>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "qzcore/qzfile.h"
#include "qzcore/qzprocess.h"
#include "support/test_support.h"
#include "thread/process_child.h"

namespace {

using qztest::Wide;

// /bin/sh running `script`, with standard input a pipe when `input` is not null.
QZProcessHandle Shell(const std::string& script, QZFileHandle* input = nullptr) {
  QZFileHandle streams[3] = {-1, 1, 2};
  QZProcessHandle process = -1;
  const std::u16string arguments = Wide("-c \"" + script + "\"");
  EXPECT_EQ(QZProcessCreate(u"/bin/sh", arguments.c_str(), nullptr, nullptr, 0, input != nullptr ? streams : nullptr,
                            &process),
            0);
  if (input != nullptr) *input = streams[0];
  return process;
}

// Blocks until the process has ended, without consuming anything (the handle is a pidfd).
void AwaitEnd(QZProcessHandle process) {
  struct pollfd entry = {static_cast<int>(process), POLLIN, 0};
  ASSERT_EQ(poll(&entry, 1, 60000), 1);
}

// A child starts with every signal at its default action, even those this process ignores.
TEST(ProcessJoin, ExitCodesAndSignals) {
  struct sigaction ignore = {};
  ignore.sa_handler = SIG_IGN;
  struct sigaction oldTerm;
  struct sigaction oldPipe;
  sigaction(SIGTERM, &ignore, &oldTerm);
  sigaction(SIGPIPE, &ignore, &oldPipe);
  struct Case {
    const char* script;
    uint32_t code;
  };
  const Case cases[] = {
      {"exit 0", 0},   {"exit 1", 1},   {"exit 7", 7},   {"exit 255", 255},
      {"kill -TERM $$", 128 + 15},  {"kill -KILL $$", 128 + 9},  {"kill -PIPE $$", 128 + 13},
  };
  for (const auto& c : cases) {
    uint32_t code = 0xFFFFFFFF;
    EXPECT_EQ(QZProcessJoin(Shell(c.script), &code), 0) << c.script;
    EXPECT_EQ(code, c.code) << c.script;
  }
  sigaction(SIGTERM, &oldTerm, nullptr);
  sigaction(SIGPIPE, &oldPipe, nullptr);
}

TEST(ProcessJoin, ReadingTheExitCodePollsAndClosesTheHandle) {
  QZFileHandle input;
  const QZProcessHandle process = Shell("read line; exit 5", &input);
  uint32_t code = 1234;
  EXPECT_EQ(QZProcessGetExitCode(process, &code), QZ_E_FAIL);  // still running: the handle stays
  EXPECT_EQ(QZProcessGetExitCode(process, &code), QZ_E_FAIL);
  QZFileClose(input);
  AwaitEnd(process);
  EXPECT_EQ(QZProcessGetExitCode(process, &code), 0);
  EXPECT_EQ(code, 5u);
  // The handle is closed now, whichever way it is used again.
  EXPECT_EQ(QZProcessGetExitCode(process, &code), QZ_E_HANDLE);
  EXPECT_EQ(QZProcessJoin(process, &code), QZ_E_HANDLE);
  EXPECT_EQ(QZProcessDetach(process), QZ_E_HANDLE);

  const QZProcessHandle second = Shell("exit 3");
  EXPECT_EQ(QZProcessJoin(second, nullptr), 0);  // no code wanted
  EXPECT_EQ(QZProcessJoin(second, nullptr), QZ_E_HANDLE);
}

TEST(ProcessJoin, JoinOfAnyChildWithNoneFailsAtOnce) {
  QZProcessHandle process = 77;
  uint32_t code = 77;
  EXPECT_EQ(QZProcessJoinChild(&process, &code), QZ_E_FAIL);
  EXPECT_EQ(code, 77u);
}

// Three children released one by one, in every order: a join of any child returns the one that
// ended, and joins by handle work in any order too.
TEST(ProcessJoin, JoinsInEveryOrder) {
  std::array<int, 3> order = {0, 1, 2};
  do {
    std::array<QZFileHandle, 3> inputs;
    std::array<QZProcessHandle, 3> children;
    for (int i = 0; i < 3; ++i) children[i] = Shell("read line; exit " + std::to_string(10 + i), &inputs[i]);
    for (int i : order) {
      QZFileClose(inputs[i]);
      QZProcessHandle ended = -1;
      uint32_t code = 0;
      ASSERT_EQ(QZProcessJoinChild(&ended, &code), 0);
      EXPECT_EQ(ended, children[i]);
      EXPECT_EQ(code, 10u + i);
    }
    QZProcessHandle none;
    EXPECT_EQ(QZProcessJoinChild(&none, nullptr), QZ_E_FAIL);

    for (int i = 0; i < 3; ++i) children[i] = Shell("read line; exit " + std::to_string(20 + i), &inputs[i]);
    for (int i = 0; i < 3; ++i) QZFileClose(inputs[i]);
    for (int i : order) {
      uint32_t code = 0;
      EXPECT_EQ(QZProcessJoin(children[i], &code), 0);
      EXPECT_EQ(code, 20u + i);
    }
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST(ProcessJoin, JoinOfAnyChildHasNoLimitOf64) {
  constexpr int kChildren = 70;
  std::map<QZProcessHandle, uint32_t> expected;
  for (int i = 0; i < kChildren; ++i) expected[Shell("exit " + std::to_string(i + 1))] = static_cast<uint32_t>(i + 1);
  ASSERT_EQ(expected.size(), static_cast<size_t>(kChildren));
  std::set<QZProcessHandle> joined;
  for (int i = 0; i < kChildren; ++i) {
    QZProcessHandle process = -1;
    uint32_t code = 0;
    ASSERT_EQ(QZProcessJoinChild(&process, &code), 0);
    ASSERT_TRUE(expected.count(process));
    EXPECT_EQ(code, expected[process]);
    EXPECT_TRUE(joined.insert(process).second);  // each child once
  }
  QZProcessHandle none;
  EXPECT_EQ(QZProcessJoinChild(&none, nullptr), QZ_E_FAIL);
}

TEST(ProcessJoin, JoinOfAnyChildTakesTheLowestHandleAmongEnded) {
  QZFileHandle input;
  const QZProcessHandle running = Shell("read line", &input);
  std::vector<QZProcessHandle> ended = {Shell("exit 1"), Shell("exit 2"), Shell("exit 3")};
  for (QZProcessHandle p : ended) AwaitEnd(p);
  std::sort(ended.begin(), ended.end());
  for (QZProcessHandle expected : ended) {
    QZProcessHandle process = -1;
    ASSERT_EQ(QZProcessJoinChild(&process, nullptr), 0);
    EXPECT_EQ(process, expected);
  }
  QZFileClose(input);
  QZProcessHandle last = -1;
  EXPECT_EQ(QZProcessJoinChild(&last, nullptr), 0);
  EXPECT_EQ(last, running);
}

// While one thread waits for any child, a creation in another thread cannot enter its child in
// the set, and does not return, until that wait is over.
TEST(ProcessJoin, CreationWaitsForAJoinOfAnyChild) {
  QZFileHandle input;
  const QZProcessHandle blocker = Shell("read line; exit 4", &input);
  std::atomic<bool> waiting{false};
  QZProcessHandle joined = -1;
  uint32_t joinedCode = 0;
  std::thread joiner([&] {
    waiting = true;
    EXPECT_EQ(QZProcessJoinChild(&joined, &joinedCode), 0);
  });
  while (!waiting) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // let it reach the wait
  std::atomic<bool> created{false};
  QZProcessHandle late = -1;
  std::thread creator([&] {
    late = Shell("exit 6");
    created = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_FALSE(created.load());  // held behind the wait
  QZFileClose(input);
  joiner.join();
  creator.join();
  EXPECT_EQ(joined, blocker);
  EXPECT_EQ(joinedCode, 4u);
  uint32_t code = 0;
  EXPECT_EQ(QZProcessJoin(late, &code), 0);
  EXPECT_EQ(code, 6u);
}

// Joins from many threads at once, by handle and of any child, each child joined exactly once.
TEST(ProcessJoin, ConcurrentJoinsTakeEachChildOnce) {
  constexpr int kThreads = 4;
  constexpr int kPerThread = 5;
  std::atomic<int> joinedAny{0};
  std::vector<std::thread> threads;
  std::vector<uint32_t> byHandle(kThreads * kPerThread, 0);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kPerThread; ++i) {
        const int n = t * kPerThread + i;
        const QZProcessHandle process = Shell("exit " + std::to_string(n));
        if (n % 2 == 0) {
          EXPECT_EQ(QZProcessJoin(process, &byHandle[n]), 0);
          EXPECT_EQ(byHandle[n], static_cast<uint32_t>(n));
        }
      }
    });
  }
  for (auto& t : threads) t.join();
  // The odd ones are left in the set: joined now from two threads.
  std::vector<std::thread> joiners;
  std::mutex lock;
  std::set<uint32_t> codes;
  for (int t = 0; t < 2; ++t) {
    joiners.emplace_back([&] {
      for (int i = 0; i < kThreads * kPerThread / 4; ++i) {
        QZProcessHandle process;
        uint32_t code = 0;
        EXPECT_EQ(QZProcessJoinChild(&process, &code), 0);
        std::lock_guard<std::mutex> guard(lock);
        codes.insert(code);
        ++joinedAny;
      }
    });
  }
  for (auto& t : joiners) t.join();
  std::set<uint32_t> odd;
  for (int n = 1; n < kThreads * kPerThread; n += 2) odd.insert(static_cast<uint32_t>(n));
  EXPECT_EQ(codes, odd);
}

// A child detached while it runs is reaped by the library once it has ended: no zombie is left.
TEST(ProcessJoin, DetachedChildLeavesNoZombie) {
  QZFileHandle input;
  const QZProcessHandle process = Shell("read line", &input);
  const std::string info = qztest::ReadFile("/proc/self/fdinfo/" + std::to_string(process));
  const size_t at = info.find("Pid:");
  ASSERT_NE(at, std::string::npos);
  const int pid = std::atoi(info.c_str() + at + 4);
  ASSERT_EQ(QZProcessDetach(process), 0);
  QZProcessHandle none;
  EXPECT_EQ(QZProcessJoinChild(&none, nullptr), QZ_E_FAIL);  // out of the set
  QZFileClose(input);
  const std::string stat = "/proc/" + std::to_string(pid) + "/stat";
  auto state = [&] {
    const std::string text = qztest::ReadFile(stat);
    const size_t paren = text.rfind(')');
    return paren == std::string::npos || paren + 2 >= text.size() ? '-' : text[paren + 2];
  };
  for (int i = 0; i < 6000 && state() != 'Z'; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  ASSERT_EQ(state(), 'Z');
  EXPECT_EQ(QZProcessJoin(Shell("exit 0"), nullptr), 0);  // a later start reaps it
  EXPECT_FALSE(std::filesystem::exists(stat));
}

TEST(ProcessQueries, HandleIdAndName) {
  const QZProcessHandle self = QZProcessGetHandle();
  EXPECT_EQ(self, -1);
  uint32_t code = 0;
  EXPECT_EQ(QZProcessGetExitCode(self, &code), QZ_E_FAIL);  // this process is running
  EXPECT_EQ(QZProcessDetach(self), 0);
  EXPECT_EQ(QZProcessGetID(), static_cast<uint32_t>(getpid()));

  const std::string name = std::filesystem::read_symlink("/proc/self/exe").filename().string();
  struct Case {
    uint32_t pid;
    uint32_t size;
    uint16_t answer;
    std::string text;  // what the buffer holds afterwards
  };
  const Case cases[] = {
      {QZProcessGetID(), 256, 1, name},
      {QZProcessGetID(), 5, 1, name.substr(0, 4)},   // cut, and terminated in the last byte
      {QZProcessGetID(), 1, 1, ""},
      {0x7FFFFFF0u, 256, 0, "untouched"},           // no such process
      {0, 256, 0, "untouched"},
  };
  for (const auto& c : cases) {
    char buffer[256] = "untouched";
    EXPECT_EQ(QZProcessGetName(c.pid, buffer, c.size), c.answer);
    EXPECT_EQ(std::string(buffer), c.text);
  }
}

}  // namespace
