// process_failure_test.cpp - system calls failed on demand (through the library's system-call
// table) while a child is started or waited for: the result, and that nothing is left behind: no
// pipe end, no descriptor, no zombie, no entry in the set of children.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "frame/global_data.h"
#include "platform/system_calls.h"
#include "qzcore/qzprocess.h"
#include "start/client_data.h"
#include "thread/process_child.h"

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
  const struct {
    const char* call;
    int error;
    int pipesFirst;         // pipe2 only: pipes made before the failing one
    QZFileHandle out, err;  // the stream entries 1 and 2
    QZRESULT result;
  } cases[] = {
      {"pipe2", EMFILE, 0, -1, -1, QZ_E_FAIL},
      {"pipe2", EMFILE, 1, -1, -1, QZ_E_FAIL},
      {"pipe2", EMFILE, 2, -1, -1, QZ_E_FAIL},
      {"posix_spawn", ENOMEM, 0, -1, -1, QZ_E_OUTOFMEMORY},
      {"posix_spawn", EACCES, 0, -1, -1, QZ_E_ACCESSDENIED},
      {"posix_spawn", EAGAIN, 0, -1, -1, QZ_E_FAIL},
      {"pidfd_open", EMFILE, 0, -1, -1, QZ_E_FAIL},  // the child is started, then ended and reaped
      {"fcntl", EMFILE, 0, 2, 1, QZ_E_FAIL},         // no copy of a low stream above 2
      {"getcwd", ENOENT, 0, -1, -1, QZ_E_FILE_NOT_FOUND},  // a relative program with a directory
  };
  ASSERT_EQ(chdir("/bin"), 0);
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.call) + " " + std::to_string(c.pipesFirst));
    const auto before = qztest::OpenDescriptors();
    const size_t children = Children();
    g_pipesLeft = c.pipesFirst;
    if (std::string(c.call) == "pipe2") {
      qz::os::SetSystemCall("pipe2", reinterpret_cast<qz::os::SystemCallPointer>(&PipesThenEmfile));
    } else {
      qz::os::FailSystemCall(c.call, c.error);
    }
    QZFileHandle streams[3] = {-1, c.out, c.err};
    QZProcessHandle process = 0;
    EXPECT_EQ(QZProcessCreate(u"sh", u"-c \"exit 0\"", u"/", nullptr, 0, streams, &process),
              c.result);
    qz::os::ResetSystemCalls();
    EXPECT_EQ(process, -1);
    EXPECT_EQ(qztest::OpenDescriptors(), before);
    EXPECT_FALSE(qztest::HasZombieChild());
    EXPECT_EQ(Children(), children);
    for (int i = 0; i < c.pipesFirst; ++i) {
      EXPECT_EQ(fcntl(static_cast<int>(streams[i]), F_GETFD), -1);  // rewritten, and closed again
    }
  }
}

TEST_F(ProcessFailure, InterruptedWaitsAreResumed) {
  QZProcessHandle process;
  ASSERT_EQ(QZProcessCreate(u"/bin/sh", u"-c \"exit 9\"", nullptr, nullptr, 0, nullptr, &process),
            0);
  qz::os::FailSystemCall("poll", EINTR);
  qz::os::FailSystemCall("waitid", EINTR, 2);
  uint32_t code = 0;
  EXPECT_EQ(QZProcessJoin(process, &code), 0);
  EXPECT_EQ(code, 9u);
}

TEST_F(ProcessFailure, FailedWaitOrCloseKeepsTheChildInTheSet) {
  const size_t children = Children();
  QZProcessHandle process;
  ASSERT_EQ(QZProcessCreate(u"/bin/sh", u"-c \"exit 3\"", nullptr, nullptr, 0, nullptr, &process),
            0);
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
