// named_objects_test.cpp - named semaphores and shared memory as callers see them: open-or-create
// and its status, the count's limits, access of handles and views, and their life across real
// second processes, including processes killed while they hold or wait.
#include <dirent.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "qzcore.h"
#include "support/test_support.h"

namespace {

constexpr char kNameVariable[] = "QZT_NAMED_OBJECT";

const QZSemaphoreHandle kNoSem = reinterpret_cast<QZSemaphoreHandle>(static_cast<intptr_t>(-1));

// Names in /dev/shm that contain `part`.
std::vector<std::string> ShmEntries(const std::string& part) {
  std::vector<std::string> found;
  if (DIR* dir = opendir("/dev/shm")) {
    while (dirent* entry = readdir(dir)) {
      if (std::strstr(entry->d_name, part.c_str()) != nullptr) found.emplace_back(entry->d_name);
    }
    closedir(dir);
  }
  return found;
}

// Takes one from `sem` within `seconds`, polling so that a lost wake-up fails instead of hanging.
bool TakeWithin(QZSemaphoreHandle sem, int seconds = 10) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (std::chrono::steady_clock::now() < deadline) {
    if (QZNamedSemTryWait(sem) == 0) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

// How many units the semaphore gives before it runs dry (it is left at 0).
int Drain(QZSemaphoreHandle sem) {
  int taken = 0;
  while (QZNamedSemTryWait(sem) == 0) ++taken;
  return taken;
}

// Each test gets its own name; afterwards nothing of it may be left in /dev/shm (and whatever
// was, is removed so that one failure does not leak into the next run).
class Named : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* inherited = std::getenv(kNameVariable);
    m_name = qztest::IsChild() && inherited != nullptr ? inherited : qztest::UniqueName("qzt");
  }
  void TearDown() override {
    if (qztest::IsChild() || m_name.empty()) return;
    const auto left = ShmEntries(m_name);
    EXPECT_TRUE(left.empty()) << left.front();
    for (const auto& entry : left) unlink(("/dev/shm/" + entry).c_str());
  }
  // Runs child test `test` on this test's name.
  qztest::ChildResult Child(const std::string& test) {
    return qztest::RunSelf(test, {std::string(kNameVariable) + "=" + m_name});
  }
  QZSemaphoreHandle OpenSem(uint32_t count) {
    QZSemaphoreHandle sem = nullptr;
    EXPECT_EQ(QZNamedSemOpen(m_name.c_str(), count, &sem), 0);
    return sem;
  }
  std::string m_name;
};

class NamedChild : public Named {
 protected:
  void SetUp() override {
    if (!qztest::IsChild()) GTEST_SKIP() << "runs as a child of the named-object tests";
    Named::SetUp();
  }
};

TEST_F(Named, SemaphoreOpenTakesTheFirstCountAndKeepsTheLimit) {
  QZSemaphoreHandle first = OpenSem(2);
  QZSemaphoreHandle second = OpenSem(5);  // joins: its count is ignored
  EXPECT_EQ(QZNamedSemTryWait(second), 0);
  EXPECT_EQ(QZNamedSemTryWait(first), 0);
  EXPECT_EQ(QZNamedSemTryWait(first), QZ_E_FAIL);
  int32_t value = 7;
  EXPECT_EQ(QZNamedSemGetValue(first, &value), 0);
  EXPECT_EQ(value, -1);
  EXPECT_EQ(QZNamedSemClose(second), 0);
  EXPECT_EQ(ShmEntries(m_name).size(), 1u);  // still held by `first`
  EXPECT_EQ(QZNamedSemClose(first), 0);
  EXPECT_TRUE(ShmEntries(m_name).empty());
  EXPECT_EQ(QZNamedSemClose(nullptr), 0);

  // The maximum: an initial count above it is refused; a post at it is refused, count unchanged.
  QZSemaphoreHandle sem = nullptr;
  EXPECT_EQ(QZNamedSemOpen(m_name.c_str(), 32768, &sem), QZ_E_FAIL);
  EXPECT_EQ(sem, kNoSem);
  EXPECT_TRUE(ShmEntries(m_name).empty());
  sem = OpenSem(32766);
  EXPECT_EQ(QZNamedSemPost(sem), 0);
  EXPECT_EQ(QZNamedSemPost(sem), QZ_E_FAIL);
  EXPECT_EQ(Drain(sem), 32767);
  EXPECT_EQ(QZNamedSemClose(sem), 0);
}

TEST_F(Named, NamesTheSystemCannotCarryAreRefused) {
  struct Case {
    std::string name;
    QZRESULT expected;
  };
  const Case cases[] = {
      {m_name + "/x", QZ_E_FAIL},                    // a separator
      {m_name + std::string(251, 'n'), QZ_E_FAIL},   // longer than 251 bytes
      {m_name + std::string(251 - m_name.size(), 'n'), 0},  // exactly 251
      {"", 0},                                       // the empty name is a name
  };
  for (const auto& c : cases) {
    QZSemaphoreHandle sem = nullptr;
    EXPECT_EQ(QZNamedSemOpen(c.name.c_str(), 0, &sem), c.expected) << c.name.size();
    QZSharedMemHandle shm = 0;
    const QZRESULT shmExpected = c.expected == 0 ? QZ_S_CREATED : c.expected;
    EXPECT_EQ(QZSharedMemOpen(c.name.c_str(), QZ_SHM_CREATE, 0, 64, &shm), shmExpected);
    if (c.expected == 0) {
      EXPECT_EQ(QZNamedSemClose(sem), 0);
      EXPECT_EQ(QZSharedMemClose(shm), 0);
    } else {
      EXPECT_EQ(sem, kNoSem);
      EXPECT_EQ(shm, -1);
    }
  }
}

TEST_F(Named, SharedMemoryReportsCreatedOrJoined) {
  struct Step {
    const char* what;
    uint32_t flags;
    uint32_t size;
    QZRESULT expected;
  };
  const Step steps[] = {
      {"open path, nobody holds it", QZ_SHM_READ, 0, QZ_E_FILE_NOT_FOUND},
      {"create path, size 0", QZ_SHM_CREATE, 0, QZ_E_FAIL},
      {"create: new", QZ_SHM_CREATE, 100, QZ_S_CREATED},
      {"create: joined", QZ_SHM_CREATE, 100, 0},
      {"exclusive alone is a create", QZ_SHM_EXCL, 100, 0},
      {"create and exclusive on an existing one", QZ_SHM_CREATE | QZ_SHM_EXCL, 100, QZ_E_FAIL},
      {"open path, read", QZ_SHM_READ, 0, QZ_S_CREATED},
      {"open path, write", QZ_SHM_WRITE, 0, QZ_S_CREATED},
      {"open path, no access bits", 0, 0, QZ_S_CREATED},
  };
  std::vector<QZSharedMemHandle> held;
  for (const auto& step : steps) {
    QZSharedMemHandle shm = 12345;
    EXPECT_EQ(QZSharedMemOpen(m_name.c_str(), step.flags, 0644, step.size, &shm), step.expected)
        << step.what;
    if (step.expected >= 0) {
      EXPECT_GE(shm, 0) << step.what;
      held.push_back(shm);
    } else {
      EXPECT_EQ(shm, -1) << step.what;
    }
  }
  for (QZSharedMemHandle shm : held) EXPECT_EQ(QZSharedMemClose(shm), 0);
  EXPECT_TRUE(ShmEntries(m_name).empty());
  QZSharedMemHandle shm = 0;
  EXPECT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_WRITE, 0, 0, &shm), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(QZSharedMemClose(-1), QZ_E_HANDLE);
}

TEST_F(Named, ViewsFollowTheAccessOfTheHandle) {
  QZSharedMemHandle writer = -1, reader = -1;
  ASSERT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_CREATE, 0, 5000, &writer), QZ_S_CREATED);
  ASSERT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_READ, 0, 0, &reader), QZ_S_CREATED);
  void* view = nullptr;
  ASSERT_EQ(QZSharedMemAttach(writer, QZ_SHM_READ | QZ_SHM_WRITE, &view), 0);
  std::strcpy(static_cast<char*>(view) + 4990, "seen");

  struct Case {
    uint32_t access;
    QZRESULT expected;
  };
  const Case cases[] = {
      {QZ_SHM_WRITE, QZ_E_ACCESSDENIED},
      {QZ_SHM_READ | QZ_SHM_WRITE, QZ_E_ACCESSDENIED},
      {0, QZ_E_FAIL},
      {0x1234, QZ_E_FAIL},
      {QZ_SHM_READ, 0},
  };
  for (const auto& c : cases) {
    void* readView = &view;  // left as it was on failure
    EXPECT_EQ(QZSharedMemAttach(reader, c.access, &readView), c.expected) << std::hex << c.access;
    if (c.expected != 0) {
      EXPECT_EQ(readView, &view);
      continue;
    }
    EXPECT_STREQ(static_cast<char*>(readView) + 4990, "seen");
    EXPECT_EQ(QZSharedMemDetach(readView), 0);
    EXPECT_EQ(QZSharedMemDetach(readView), QZ_E_FAIL);  // no longer a view
  }

  // A view keeps the object after its handle is closed: the name stays until the view goes.
  EXPECT_EQ(QZSharedMemClose(reader), 0);
  EXPECT_EQ(QZSharedMemClose(writer), 0);
  EXPECT_EQ(ShmEntries(m_name).size(), 1u);
  QZSharedMemHandle again = -1;
  EXPECT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_CREATE, 0, 10, &again), 0);
  EXPECT_EQ(QZSharedMemClose(again), 0);
  EXPECT_EQ(QZSharedMemDetach(view), 0);
  EXPECT_TRUE(ShmEntries(m_name).empty());
  EXPECT_EQ(QZSharedMemDetach(nullptr), QZ_E_FAIL);
}

// The child: joins the parent's semaphore and answers each ping with a pong.
TEST_F(NamedChild, PingPong) {
  QZSemaphoreHandle ping = nullptr, pong = nullptr;
  ASSERT_EQ(QZNamedSemOpen((m_name + "ping").c_str(), 99, &ping), 0);
  ASSERT_EQ(QZNamedSemOpen((m_name + "pong").c_str(), 99, &pong), 0);
  for (int round = 0; round < 200; ++round) {
    ASSERT_EQ(QZNamedSemWait(ping), 0);
    ASSERT_EQ(QZNamedSemPost(pong), 0);
  }
  QZNamedSemClose(ping);
  QZNamedSemClose(pong);
}

TEST_F(Named, PostAndWaitAcrossProcesses) {
  QZSemaphoreHandle ping = nullptr, pong = nullptr;
  ASSERT_EQ(QZNamedSemOpen((m_name + "ping").c_str(), 0, &ping), 0);
  ASSERT_EQ(QZNamedSemOpen((m_name + "pong").c_str(), 0, &pong), 0);
  qztest::ChildResult child;
  std::thread runner([&] { child = Child("NamedChild.PingPong"); });
  int answered = 0;
  for (int round = 0; round < 200; ++round) {
    ASSERT_EQ(QZNamedSemPost(ping), 0);
    if (!TakeWithin(pong)) break;
    ++answered;
  }
  runner.join();
  EXPECT_EQ(answered, 200);
  EXPECT_EQ(child.exitCode, 0) << child.out << child.err;
  EXPECT_EQ(QZNamedSemTryWait(ping), QZ_E_FAIL);  // the child took exactly what was posted
  QZNamedSemClose(ping);
  QZNamedSemClose(pong);
}

// The child: opens both objects, takes one unit, leaves a mark in the memory and dies by SIGKILL
// while it holds everything.
TEST_F(NamedChild, DieHolding) {
  QZSemaphoreHandle sem = nullptr;
  ASSERT_EQ(QZNamedSemOpen(m_name.c_str(), 3, &sem), 0);
  ASSERT_EQ(QZNamedSemTryWait(sem), 0);
  QZSharedMemHandle shm = -1;
  ASSERT_GE(QZSharedMemOpen(m_name.c_str(), QZ_SHM_CREATE, 0, 4096, &shm), 0);
  void* view = nullptr;
  ASSERT_EQ(QZSharedMemAttach(shm, QZ_SHM_WRITE, &view), 0);
  std::strcpy(static_cast<char*>(view), "left by the dead");
  raise(SIGKILL);
}

TEST_F(Named, ObjectsOfAKilledHolderAreNewToTheNextOpener) {
  // Nobody else held them: what the dead process left is a new object for the next opener.
  auto child = Child("NamedChild.DieHolding");
  ASSERT_EQ(child.signal, SIGKILL) << child.out << child.err;
  EXPECT_EQ(ShmEntries(m_name).size(), 2u);  // the names stay until someone opens them
  QZSharedMemHandle shm = -1;
  EXPECT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_READ, 0, 0, &shm), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_CREATE | QZ_SHM_EXCL, 0, 64, &shm),
            QZ_S_CREATED);
  void* view = nullptr;
  ASSERT_EQ(QZSharedMemAttach(shm, QZ_SHM_READ, &view), 0);
  EXPECT_EQ(static_cast<char*>(view)[0], 0);
  EXPECT_EQ(QZSharedMemDetach(view), 0);
  EXPECT_EQ(QZSharedMemClose(shm), 0);
  QZSemaphoreHandle sem = OpenSem(1);
  EXPECT_EQ(Drain(sem), 1);
  EXPECT_EQ(QZNamedSemClose(sem), 0);
  EXPECT_TRUE(ShmEntries(m_name).empty());

  // Held here meanwhile: the objects live on, with the unit the dead process took still taken.
  sem = OpenSem(3);
  ASSERT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_CREATE, 0, 64, &shm), QZ_S_CREATED);
  child = Child("NamedChild.DieHolding");
  ASSERT_EQ(child.signal, SIGKILL) << child.out << child.err;
  EXPECT_EQ(Drain(sem), 2);
  ASSERT_EQ(QZSharedMemAttach(shm, QZ_SHM_READ, &view), 0);
  EXPECT_STREQ(static_cast<char*>(view), "left by the dead");
  EXPECT_EQ(QZSharedMemDetach(view), 0);
  EXPECT_EQ(QZSharedMemClose(shm), 0);
  EXPECT_EQ(QZNamedSemClose(sem), 0);
}

// True once thread `tid` of this process sleeps in the futex call.
bool SleepsInFutex(pid_t tid) {
  std::ifstream file("/proc/self/task/" + std::to_string(tid) + "/syscall");
  long number = -1;
  return static_cast<bool>(file >> number) && number == SYS_futex;
}

// The child: a thread waits on the semaphore; once it sleeps, the process is killed.
TEST_F(NamedChild, DieWaiting) {
  QZSemaphoreHandle sem = nullptr;
  ASSERT_EQ(QZNamedSemOpen(m_name.c_str(), 0, &sem), 0);
  std::atomic<pid_t> tid{0};
  std::thread waiter([&] {
    tid = static_cast<pid_t>(syscall(SYS_gettid));
    QZNamedSemWait(sem);
    std::_Exit(3);  // a unit reached the dead: the parent sees exit 3 instead of SIGKILL
  });
  while (tid == 0 || !SleepsInFutex(tid)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  raise(SIGKILL);
  waiter.join();
}

TEST_F(Named, AWaiterKilledWhileWaitingWedgesNobody) {
  QZSemaphoreHandle sem = OpenSem(0);
  std::atomic<int> woken{0};
  std::thread before([&] {
    if (QZNamedSemWait(sem) == 0) ++woken;
  });
  const auto child = Child("NamedChild.DieWaiting");
  EXPECT_EQ(child.signal, SIGKILL) << child.out << child.err;
  // The waiter that was asleep before the death is woken by one post; a later post reaches a
  // later taker; nothing is left over.
  EXPECT_EQ(QZNamedSemPost(sem), 0);
  before.join();
  EXPECT_EQ(woken.load(), 1);
  EXPECT_EQ(QZNamedSemPost(sem), 0);
  EXPECT_TRUE(TakeWithin(sem));
  EXPECT_EQ(QZNamedSemTryWait(sem), QZ_E_FAIL);
  EXPECT_EQ(QZNamedSemClose(sem), 0);
}

// One semaphore object behind both sets of exports: whichever way it was made, the QZSemaphore*
// and QZNamedSem* operations act on the same count, either close ends it, and only the named
// kinds are the object another open of the name reaches.
TEST_F(Named, EitherWayMadeSemaphoreServesBothSetsOfExports) {
  struct Case {
    const char* way;
    int flags;      // for QZSemaphoreCreate; -1: QZNamedSemOpen
    bool nullName;  // a null name: the object is "SEM:" alone
    bool named;
  };
  const Case cases[] = {
      {"QZNamedSemOpen", -1, false, true},         {"create, flags 2", 2, false, true},
      {"create, flags 0xF2", 0xF2, false, true},   {"create, null name, flags 2", 2, true, true},
      {"create, flags 0", 0, false, false},         {"create, flags 0xFD", 0xFD, false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.way);
    const std::string name = c.nullName ? "" : m_name;
    auto make = [&](uint32_t count, QZSemaphoreHandle* out) {
      if (c.flags < 0) return QZNamedSemOpen(name.c_str(), count, out);
      return QZSemaphoreCreate(count, c.nullName ? nullptr : name.c_str(), c.flags, out);
    };
    auto exists = [&] { return access(("/dev/shm/SEM:" + name).c_str(), F_OK) == 0; };
    QZSemaphoreHandle sem = kNoSem, other = nullptr;
    ASSERT_EQ(make(1, &sem), 0);
    EXPECT_EQ(exists(), c.named);
    EXPECT_EQ(QZNamedSemTryWait(sem), 0);
    EXPECT_EQ(QZSemaphoreTryWait(sem), QZ_E_FAIL);
    EXPECT_EQ(QZSemaphorePost(sem), 0);
    EXPECT_EQ(QZNamedSemWait(sem), 0);
    EXPECT_EQ(QZNamedSemPost(sem), 0);
    EXPECT_EQ(QZSemaphoreWait(sem), 0);

    // A second open of the name, the other way, reaches this count only for the named kinds.
    ASSERT_EQ(QZNamedSemOpen(name.c_str(), 0, &other), 0);
    EXPECT_EQ(QZSemaphorePost(other), 0);
    EXPECT_EQ(QZNamedSemTryWait(sem), c.named ? 0 : QZ_E_FAIL);
    EXPECT_EQ(QZSemaphoreDestroy(other), 0);
    EXPECT_EQ(c.named ? QZSemaphoreDestroy(sem) : QZNamedSemClose(sem), 0);
    EXPECT_FALSE(exists());
  }
}

// The child: joins the parent's semaphore through the create export and posts three units.
TEST_F(NamedChild, PostThroughCreate) {
  QZSemaphoreHandle sem = nullptr;
  ASSERT_EQ(QZSemaphoreCreate(99, m_name.c_str(), 2, &sem), 0);  // joined: 99 is ignored
  for (int i = 0; i < 3; ++i) ASSERT_EQ(QZSemaphorePost(sem), 0);
  EXPECT_EQ(QZSemaphoreDestroy(sem), 0);
}

TEST_F(Named, CreatedWithTheNamedFlagCrossesProcesses) {
  QZSemaphoreHandle sem = nullptr;
  ASSERT_EQ(QZSemaphoreCreate(0, m_name.c_str(), 2, &sem), 0);
  const qztest::ChildResult child = Child("NamedChild.PostThroughCreate");
  EXPECT_EQ(child.exitCode, 0) << child.out << child.err;
  EXPECT_TRUE(TakeWithin(sem));
  EXPECT_EQ(QZNamedSemWait(sem), 0);
  EXPECT_EQ(QZSemaphoreTryWait(sem), 0);
  EXPECT_EQ(QZNamedSemTryWait(sem), QZ_E_FAIL);
  EXPECT_EQ(QZNamedSemClose(sem), 0);
}

// Shared memory closes as a file does: QZFileClose gives up a holder exactly as
// QZSharedMemClose, the last one removing the name, and a closed handle is refused by both.
TEST_F(Named, SharedMemoryClosesAsAFile) {
  QZSharedMemHandle first = -1, second = -1;
  ASSERT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_CREATE, 0, 64, &first), QZ_S_CREATED);
  ASSERT_EQ(QZSharedMemOpen(m_name.c_str(), QZ_SHM_CREATE, 0, 64, &second), 0);
  EXPECT_EQ(QZFileClose(first), 0);
  EXPECT_EQ(ShmEntries(m_name).size(), 1u);  // `second` still holds it
  EXPECT_EQ(QZSharedMemClose(first), QZ_E_HANDLE);
  EXPECT_EQ(QZFileClose(second), 0);
  EXPECT_TRUE(ShmEntries(m_name).empty());
  EXPECT_EQ(QZFileClose(second), QZ_E_HANDLE);
}

TEST(RestrictedDescriptor, OneEntryForAuthenticatedUsers) {
  QZSecurityDescriptor sd;
  std::memset(&sd, 0xAB, sizeof sd);
  void* acl = &sd;
  ASSERT_EQ(QZWinBuildRestrictedSD(&sd, 0x1F0003, &acl), 0);
  ASSERT_NE(acl, nullptr);
  EXPECT_EQ(sd.mode, 0666u);
  EXPECT_EQ(sd.entryCount, 1u);
  EXPECT_EQ(static_cast<void*>(sd.entries), acl);
  EXPECT_EQ(sd.entries->type, 0u);
  EXPECT_EQ(sd.entries->accessMask, 0x1F0003u);
  const uint8_t authenticatedUsers[12] = {1, 1, 0, 0, 0, 0, 0, 5, 11, 0, 0, 0};
  EXPECT_EQ(std::memcmp(sd.entries->sid, authenticatedUsers, 12), 0);
  EXPECT_EQ(sizeof sd, static_cast<size_t>(QZ_SECURITY_DESCRIPTOR_SIZE));
  QZWinFreeRestrictedSD(acl);
  QZWinFreeRestrictedSD(nullptr);
}

}  // namespace
