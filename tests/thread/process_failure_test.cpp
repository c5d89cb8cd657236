// process_failure_test.cpp - system calls that fail on demand (through the library's system-call
// table) while a child is started or waited for: the result, and that nothing is left behind:
// no pipe end, no descriptor, no zombie, no entry in the set of children.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <vector>

#include "frame/global_data.h"
#include "platform/system_calls.h"
#include "qzcore/qzprocess.h"
#include "start/client_data.h"
#include "thread/process_child.h"
#include "thread/process_manager.h"

namespace {

std::atomic<int> g_pipesLeft{0};  // pipes the replacement still makes before it fails

int PipesThenEmfile(int* fds, int flags) {
  if (g_pipesLeft.fetch_sub(1) > 0) return pipe2(fds, flags);
  errno = EMFILE;
  return -1;
}

size_t Children() { return CQZGlobalData::m_clientData->m_processManager.ChildCount(); }

class ProcessFailure : public ::testing::Test {
 protected:
  void TearDown() override { qz::os::ResetSystemCalls(); }
};

TEST_F(ProcessFailure, FailedCreationLeavesNothingBehind) {
  struct Case {
    const char* what;
    const char* call;
    int error;
    int pipesFirst;  // for pipe2: pipes made before the failing one (-1: fail by injection)
    QZFileHandle streams[3];
    bool relativeInDirectory;  // start "sh" relative to /bin, in another directory
    QZRESULT result;
  };
  const Case cases[] = {
      {"first pipe", "pipe2", EMFILE, 0, {-1, -1, -1}, false, QZ_E_FAIL},
      {"second pipe", "pipe2", EMFILE, 1, {-1, -1, -1}, false, QZ_E_FAIL},
      {"third pipe", "pipe2", ENFILE, 2, {-1, -1, -1}, false, QZ_E_FAIL},
      {"spawn out of memory", "posix_spawn", ENOMEM, -1, {-1, -1, -1}, false, QZ_E_OUTOFMEMORY},
      {"spawn denied", "posix_spawn", EACCES, -1, {-1, -1, -1}, false, QZ_E_ACCESSDENIED},
      {"spawn out of processes", "posix_spawn", EAGAIN, -1, {-1, -1, -1}, false, QZ_E_FAIL},
      {"no handle for the child", "pidfd_open", EMFILE, -1, {-1, -1, -1}, false, QZ_E_FAIL},
      {"no copy of a low stream", "fcntl", EMFILE, -1, {-1, 2, 1}, false, QZ_E_FAIL},
      {"no current directory", "getcwd", ENOENT, -1, {-1, -1, -1}, true, QZ_E_FILE_NOT_FOUND},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::vector<int> before = qztest::OpenDescriptors();
    const size_t children = Children();
    if (c.pipesFirst >= 0) {
      g_pipesLeft = c.pipesFirst;
      ASSERT_TRUE(qz::os::SetSystemCall("pipe2", reinterpret_cast<qz::os::SystemCallPointer>(&PipesThenEmfile)));
    } else {
      ASSERT_TRUE(qz::os::FailSystemCall(c.call, c.error));
    }
    if (c.relativeInDirectory) {
      ASSERT_EQ(chdir("/bin"), 0);
    }
    QZFileHandle streams[3] = {c.streams[0], c.streams[1], c.streams[2]};
    QZProcessHandle process = 0;
    const QZRESULT result = QZProcessCreate(c.relativeInDirectory ? u"sh" : u"/bin/sh", u"-c \"exit 0\"",
                                            c.relativeInDirectory ? u"/" : nullptr, nullptr, 0, streams, &process);
    qz::os::ResetSystemCalls();
    EXPECT_EQ(result, c.result);
    EXPECT_EQ(process, -1);
    EXPECT_EQ(qztest::OpenDescriptors(), before);
    EXPECT_FALSE(qztest::HasZombieChild());
    EXPECT_EQ(Children(), children);
    // Entries rewritten before the failure name pipe ends that are closed again.
    for (int i = 0; i < 3; ++i) {
      if (streams[i] != c.streams[i]) {
        EXPECT_EQ(fcntl(static_cast<int>(streams[i]), F_GETFD), -1) << i;
      }
    }
  }
}

TEST_F(ProcessFailure, InterruptedWaitsAreResumed) {
  QZProcessHandle process;
  ASSERT_EQ(QZProcessCreate(u"/bin/sh", u"-c \"exit 9\"", nullptr, nullptr, 0, nullptr, &process), 0);
  qz::os::FailSystemCall("poll", EINTR);
  qz::os::FailSystemCall("waitid", EINTR, 2);
  uint32_t code = 0;
  EXPECT_EQ(QZProcessJoin(process, &code), 0);
  EXPECT_EQ(code, 9u);
}

TEST_F(ProcessFailure, FailedWaitOrCloseKeepsTheChildInTheSet) {
  const size_t children = Children();
  QZProcessHandle process;
  ASSERT_EQ(QZProcessCreate(u"/bin/sh", u"-c \"exit 3\"", nullptr, nullptr, 0, nullptr, &process), 0);
  QZProcessHandle joined = -1;
  qz::os::FailSystemCall("poll", ENOMEM);
  EXPECT_EQ(QZProcessJoinChild(&joined, nullptr), QZ_E_OUTOFMEMORY);
  EXPECT_EQ(Children(), children + 1);
  qz::os::FailSystemCall("close", EIO);
  EXPECT_EQ(QZProcessJoin(process, nullptr), QZ_E_FAIL);  // the close at its end failed
  EXPECT_EQ(Children(), children + 1);
  EXPECT_EQ(QZProcessDetach(process), 0);  // closes it for good
  EXPECT_EQ(Children(), children);
  EXPECT_EQ(fcntl(static_cast<int>(process), F_GETFD), -1);
  EXPECT_FALSE(qztest::HasZombieChild());
}

}  // namespace
