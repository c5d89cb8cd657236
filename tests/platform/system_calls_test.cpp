// system_calls_test.cpp - the contract of the system-call table: replacing one call by name,
// injecting a counted failure from any thread, walking the names, and putting everything back.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/io.h"
#include "platform/system_calls.h"

namespace {

using qz::os::SystemCallPointer;

std::atomic<int> g_getpidCalls{0};
pid_t CountingGetpid() noexcept {
  ++g_getpidCalls;
  return 4242;
}

class SystemCalls : public ::testing::Test {
 protected:
  void TearDown() override { qz::os::ResetSystemCalls(); }
};

TEST_F(SystemCalls, UnknownNamesAreRefusedAndChangeNothing) {
  for (const char* name : {"", "no_such_call", "OPEN", "open "}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(qz::os::SetSystemCall(name, reinterpret_cast<SystemCallPointer>(&CountingGetpid)));
    EXPECT_FALSE(qz::os::FailSystemCall(name, EIO));
    EXPECT_EQ(qz::os::GetSystemCall(name), nullptr);
  }
}

TEST_F(SystemCalls, TheWalkNamesEveryEntryOnce) {
  std::set<std::string> names;
  int steps = 0;
  for (const char* name = qz::os::NextSystemCall(nullptr); name != nullptr; name = qz::os::NextSystemCall(name)) {
    names.insert(name);
    ASSERT_NE(qz::os::GetSystemCall(name), nullptr) << name;
    ASSERT_LT(++steps, 1000);
  }
  EXPECT_EQ(static_cast<size_t>(steps), names.size());
  for (const char* expected : {"open", "read", "write", "close", "stat", "gethostname", "getaddrinfo",
                               "freeaddrinfo", "getifaddrs", "freeifaddrs", "getpid", "socket"}) {
    EXPECT_EQ(names.count(expected), 1u) << expected;
  }
}

TEST_F(SystemCalls, AReplacementIsCalledUntilPutBack) {
  const SystemCallPointer system = qz::os::GetSystemCall("getpid");
  ASSERT_TRUE(qz::os::SetSystemCall("getpid", reinterpret_cast<SystemCallPointer>(&CountingGetpid)));
  EXPECT_EQ(qz::os::GetSystemCall("getpid"), reinterpret_cast<SystemCallPointer>(&CountingGetpid));
  g_getpidCalls = 0;
  EXPECT_EQ(qz::os::sys::getpid(), 4242);
  EXPECT_EQ(g_getpidCalls.load(), 1);
  ASSERT_TRUE(qz::os::SetSystemCall("getpid", nullptr));
  EXPECT_EQ(qz::os::GetSystemCall("getpid"), system);
  EXPECT_EQ(qz::os::sys::getpid(), getpid());
  EXPECT_EQ(g_getpidCalls.load(), 1);
}

TEST_F(SystemCalls, InjectedFailuresAreCountedAcrossThreadsThenTheSystemAnswers) {
  ASSERT_TRUE(qz::os::FailSystemCall("open", EMFILE, 3));
  std::atomic<int> failures{0};
  std::atomic<int> opened{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 2; ++i) {
        const int fd = qz::os::OpenCloexec("/dev/null", O_RDONLY);
        if (fd >= 0) {
          ++opened;
          qz::os::sys::close(fd);
        } else if (errno == EMFILE) {
          ++failures;
        }
      }
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(failures.load(), 3);
  EXPECT_EQ(opened.load(), 3);
}

TEST_F(SystemCalls, TheFailureValueIsWhereEachCallPutsIt) {
  // -1 with errno; the error number itself (getaddrinfo answers its own codes).
  ASSERT_TRUE(qz::os::FailSystemCall("write", ENOSPC));
  errno = 0;
  EXPECT_EQ(qz::os::sys::write(1, "", 0), -1);
  EXPECT_EQ(errno, ENOSPC);
  ASSERT_TRUE(qz::os::FailSystemCall("getaddrinfo", EAI_AGAIN));
  addrinfo* list = nullptr;
  EXPECT_EQ(qz::os::sys::getaddrinfo("127.0.0.1", nullptr, nullptr, &list), EAI_AGAIN);
  EXPECT_EQ(list, nullptr);
  // A count of 0 ends an injection before it is used.
  ASSERT_TRUE(qz::os::FailSystemCall("write", EIO, 5));
  ASSERT_TRUE(qz::os::FailSystemCall("write", EIO, 0));
  EXPECT_EQ(qz::os::sys::write(1, "", 0), 0);
}

TEST_F(SystemCalls, WriteAllGoesOnAfterShortWritesAndInterruptions) {
  static std::atomic<int> calls{0};
  calls = 0;
  // Every write takes at most 3 bytes, and every other one is interrupted first.
  auto shortWrite = +[](int fd, const void* data, size_t size) noexcept -> ssize_t {
    if (++calls % 2 == 0) {
      errno = EINTR;
      return -1;
    }
    return ::write(fd, data, size < 3 ? size : 3);
  };
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  ASSERT_TRUE(qz::os::SetSystemCall("write", reinterpret_cast<SystemCallPointer>(shortWrite)));
  const std::string text = "sixteen bytes..!";
  EXPECT_TRUE(qz::os::WriteAll(fds[1], text.data(), text.size()));
  qz::os::ResetSystemCalls();
  close(fds[1]);
  std::string got(64, '\0');
  const ssize_t n = qz::os::ReadAll(fds[0], got.data(), got.size());
  close(fds[0]);
  got.resize(n < 0 ? 0 : static_cast<size_t>(n));
  EXPECT_EQ(got, text);
  EXPECT_GE(calls.load(), 11);  // 6 short writes and the interruptions between them
}

}  // namespace
