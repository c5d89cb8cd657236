// named_internal_test.cpp - the named objects from inside: the timed wait of the semaphore, system
// failures on the way to an object, and the two races of the open (a name that changes under an
// opener, an opener that arrives while another gives up its exclusive lock).
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "platform/system_calls.h"
#include "qzcore.h"
#include "support/test_support.h"
#include "sync/named_semaphore.h"

namespace {

bool Exists(const std::string& objectName) {
  return access(("/dev/shm/" + objectName).c_str(), F_OK) == 0;
}

class NamedInternal : public ::testing::Test {
 protected:
  void TearDown() override {
    qz::os::ResetSystemCalls();
    for (const char* prefix : {"SEM:", "SHM:"}) {
      EXPECT_FALSE(Exists(prefix + m_name)) << prefix << m_name;
      unlink(("/dev/shm/" + std::string(prefix) + m_name).c_str());
    }
  }
  int Drain(QZSemaphoreHandle sem) {
    int taken = 0;
    while (QZNamedSemTryWait(sem) == 0) ++taken;
    return taken;
  }
  std::string m_name = qztest::UniqueName("qzti");
};

TEST_F(NamedInternal, TimedWaitRunsOutOrIsWokenByAPost) {
  CQZNamedSemaphore sem("SEM:" + m_name, 0);
  EXPECT_TRUE(sem.Created());
  EXPECT_FALSE(sem.Wait(0));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(sem.Wait(60));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(55));

  std::thread poster([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    sem.Post();
  });
  EXPECT_TRUE(sem.Wait(60000));
  poster.join();
  EXPECT_FALSE(sem.Wait(0));  // the one unit was taken once
}

TEST_F(NamedInternal, SystemFailuresComeBackMappedAndLeaveNoName) {
  struct Case {
    const char* call;
    int error;
    QZRESULT semaphore;  // what QZNamedSemOpen answers
    QZRESULT memory;     // what QZSharedMemOpen (create path) answers
  };
  const Case cases[] = {
      {"shm_open", EACCES, QZ_E_ACCESSDENIED, QZ_E_ACCESSDENIED},
      {"shm_open", EMFILE, QZ_E_FAIL, QZ_E_FAIL},
      {"flock", ENOLCK, QZ_E_FAIL, QZ_E_FAIL},
      {"ftruncate", ENOSPC, QZ_E_FAIL, QZ_E_FAIL},
      {"mmap", ENOMEM, QZ_E_OUTOFMEMORY, QZ_S_CREATED},  // the memory maps only on attach
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.call) + " " + std::to_string(c.error));
    ASSERT_TRUE(qz::os::FailSystemCall(c.call, c.error));
    QZSemaphoreHandle sem = nullptr;
    EXPECT_EQ(QZNamedSemOpen(m_name.c_str(), 1, &sem), c.semaphore);
    EXPECT_EQ(sem, reinterpret_cast<QZSemaphoreHandle>(static_cast<intptr_t>(-1)));
    EXPECT_FALSE(Exists("SEM:" + m_name));
    qz::os::ResetSystemCalls();

    ASSERT_TRUE(qz::os::FailSystemCall(c.call, c.error));
    QZSharedMemHandle shm = 0;
    EXPECT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_CREATE, 0, 64, &shm), c.memory);
    qz::os::ResetSystemCalls();
    if (c.memory >= 0) {
      void* view = &shm;
      ASSERT_TRUE(qz::os::FailSystemCall(c.call, c.error));
      EXPECT_EQ(QZSharedMemAttach(shm, QZ_SHM_READ, &view), QZ_E_OUTOFMEMORY);
      EXPECT_EQ(view, &shm);
      qz::os::ResetSystemCalls();
      EXPECT_EQ(QZSharedMemClose(shm), 0);
    } else {
      EXPECT_EQ(shm, -1);
    }
    EXPECT_FALSE(Exists("SHM:" + m_name));
  }
}

// flock replacements that play one of the races on the calling thread, once.
std::string g_raceName;
thread_local bool t_armed = false;

int FlockAfterTheNameWasReplaced(int fd, int operation) {
  if (t_armed) {
    t_armed = false;
    // Another process removed the name and made a new object under it before this lock.
    unlink(("/dev/shm/SEM:" + g_raceName).c_str());
    QZSemaphoreHandle other = nullptr;
    EXPECT_EQ(QZNamedSemOpen(g_raceName.c_str(), 9, &other), 0);
    // ... and gave it up again: its name is gone, so the opener must start over.
    EXPECT_EQ(QZNamedSemClose(other), 0);
  }
  return ::flock(fd, operation);
}

TEST_F(NamedInternal, AnOpenerWhoseNameChangedStartsAgain) {
  g_raceName = m_name;
  qz::os::SetSystemCall("flock", reinterpret_cast<qz::os::SystemCallPointer>(&FlockAfterTheNameWasReplaced));
  t_armed = true;
  QZSemaphoreHandle first = nullptr;
  ASSERT_EQ(QZNamedSemOpen(m_name.c_str(), 2, &first), 0);
  qz::os::ResetSystemCalls();
  // A second opener must reach the same object: the first one's count, not its own.
  QZSemaphoreHandle second = nullptr;
  ASSERT_EQ(QZNamedSemOpen(m_name.c_str(), 5, &second), 0);
  EXPECT_EQ(Drain(second), 2);
  EXPECT_EQ(QZNamedSemClose(second), 0);
  EXPECT_EQ(QZNamedSemClose(first), 0);
}

QZRESULT g_lateStatus = 0;
QZSharedMemHandle g_lateHandle = -1;

int FlockWithALateOpenerInTheGap(int fd, int operation) {
  if (t_armed && operation == LOCK_SH) {
    t_armed = false;
    // The exclusive lock is given up before the shared one is taken; another opener comes in.
    ::flock(fd, LOCK_UN);
    std::thread late([] {
      g_lateStatus = QZSharedMemOpen(g_raceName.c_str(), QZ_SHM_CREATE, 0, 8192, &g_lateHandle);
    });
    late.join();
  }
  return ::flock(fd, operation);
}

TEST_F(NamedInternal, AnOpenerInTheInitialisersGapJoinsIt) {
  g_raceName = m_name;
  qz::os::SetSystemCall("flock", reinterpret_cast<qz::os::SystemCallPointer>(&FlockWithALateOpenerInTheGap));
  t_armed = true;
  QZSharedMemHandle first = -1;
  EXPECT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_CREATE, 0, 100, &first), QZ_S_CREATED);
  qz::os::ResetSystemCalls();
  EXPECT_EQ(g_lateStatus, 0);  // joined, not created a second time
  void* view = nullptr;
  ASSERT_EQ(QZSharedMemAttach(g_lateHandle, QZ_SHM_READ, &view), 0);
  EXPECT_EQ(QZSharedMemDetach(view), 0);
  EXPECT_EQ(QZSharedMemClose(g_lateHandle), 0);
  EXPECT_TRUE(Exists("SHM:" + m_name));  // `first` still holds it
  EXPECT_EQ(QZSharedMemClose(first), 0);
}

}  // namespace
