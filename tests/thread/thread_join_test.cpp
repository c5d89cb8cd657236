// thread_join_test.cpp - threads as callers see them: exit codes cut to 32 bits, the requested
// stack, joins the library refuses, the detach of an unknown id, and the calls on the calling
// thread. (Join and detach against the end of the function: thread_record_test.cpp.)
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>
#include <vector>

#include "qzcore.h"
#include "support/test_support.h"

namespace {

uintptr_t ReturnArgument(void* argument) { return reinterpret_cast<uintptr_t>(argument); }

uintptr_t StackSize(void*) {
  pthread_attr_t attributes;
  size_t size = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
  }
  return size;
}

QZThreadHandle Start(QZThreadFunction function, void* argument, uint32_t stackSize = 0) {
  QZThreadHandle handle = 0;
  uint32_t id = 0;
  EXPECT_EQ(QZThreadCreate(function, argument, nullptr, stackSize, &handle, &id), 0);
  EXPECT_NE(id, 0u);
  EXPECT_EQ(handle, static_cast<QZThreadHandle>(id));
  return handle;
}

TEST(Thread, ExitCodeIsTheLowHalfOfTheResult) {
  const uint64_t results[] = {0, 7, 0x100000007ull, 0xFFFFFFFFull, 0xFFFFFFFF00000000ull};
  for (uint64_t result : results) {
    SCOPED_TRACE(result);
    const QZThreadHandle thread = Start(&ReturnArgument, reinterpret_cast<void*>(result));
    uint64_t code = 0xDEADBEEFDEADBEEFull;
    EXPECT_EQ(QZThreadJoin(thread, &code), 0);
    EXPECT_EQ(code, result & 0xFFFFFFFFull);
    EXPECT_EQ(QZThreadJoin(thread, &code), QZ_E_HANDLE);  // the record went with the join
    EXPECT_EQ(code, 0u);
  }
}

// glibc may hand a cached stack of up to four times the size asked for, so only the floor is sure.
TEST(Thread, StackIsAtLeastTheRequestedSize) {
  const struct {
    uint32_t requested;
    size_t atLeast;
  } cases[] = {
      {0, 64 * 1024}, {1, 16 * 1024}, {1u << 20, 1u << 20}, {(3u << 20) + 5, (3u << 20) + 5}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.requested);
    uint64_t size = 0;
    ASSERT_EQ(QZThreadJoin(Start(&StackSize, nullptr, c.requested), &size), 0);
    EXPECT_GE(size, c.atLeast);
  }
}

std::atomic<int> g_joinsReturned{0};

uintptr_t JoinAndCount(void* id) {
  const uint32_t which =
      id == nullptr ? QZThreadGetID() : static_cast<uint32_t>(reinterpret_cast<uintptr_t>(id));
  QZThreadJoin(which, nullptr);
  ++g_joinsReturned;
  return 0;
}

// A wait for oneself cannot end: neither a thread's join of itself nor any join of the loading
// thread (whose record means "the caller") may come back with a result.
TEST(Thread, JoinOfItselfOrOfTheLoadingThreadNeverReturns) {
  if (qztest::IsChild()) {
    void* loader = reinterpret_cast<void*>(static_cast<uintptr_t>(QZThreadGetID()));
    QZThreadHandle own, ofLoader;
    uint32_t id;
    if (QZThreadCreate(&JoinAndCount, nullptr, nullptr, 0, &own, &id) != 0) _exit(2);
    if (QZThreadCreate(&JoinAndCount, loader, nullptr, 0, &ofLoader, &id) != 0) _exit(2);
    QZSleep(300);
    _exit(g_joinsReturned.load() == 0 ? 0 : 1);
  }
  const qztest::ChildResult child =
      qztest::RunSelf("Thread.JoinOfItselfOrOfTheLoadingThreadNeverReturns");
  EXPECT_EQ(child.signal, 0);
  EXPECT_EQ(child.exitCode, 0) << "a join that waits for its own caller came back";
}

TEST(Thread, DetachOfAnUnknownThreadEndsTheProcess) {
  if (qztest::IsChild()) {
    QZThreadDetach(0xFFFFFFF0u);
    _exit(0);
  }
  const qztest::ChildResult child = qztest::RunSelf("Thread.DetachOfAnUnknownThreadEndsTheProcess");
  EXPECT_EQ(child.signal, SIGABRT);
  EXPECT_NE(child.err.find("QZThreadDetach of thread 4294967280, which the library does not know"),
            std::string::npos)
      << child.err;
}

TEST(Thread, CallsOnTheCallingThread) {
  EXPECT_EQ(QZThreadGetID(), static_cast<uint32_t>(gettid()));
  EXPECT_EQ(QZThreadGetHandle(), reinterpret_cast<void*>(static_cast<intptr_t>(-2)));
  EXPECT_EQ(QZThreadYield(), 0);
  const auto start = std::chrono::steady_clock::now();
  QZSleep(30);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(29));
  uint32_t other = 0;
  std::thread([&] { other = QZThreadGetID(); }).join();
  EXPECT_NE(other, 0u);
  EXPECT_NE(other, QZThreadGetID());
}

uint64_t AffinityNow() {
  cpu_set_t set;
  CPU_ZERO(&set);
  sched_getaffinity(0, sizeof set, &set);
  uint64_t mask = 0;
  for (int cpu = 0; cpu < 64; ++cpu) {
    if (CPU_ISSET(cpu, &set)) mask |= uint64_t{1} << cpu;
  }
  return mask;
}

TEST(Thread, AffinityOfTheCallingThreadOnly) {
  std::thread([] {
    const uint64_t original = AffinityNow();
    ASSERT_NE(original, 0u);
    const uint64_t lowest = original & (~original + 1);
    const uint64_t unusable = ~original & (uint64_t{1} << 63);  // 0 on a machine that has CPU 63
    const struct {
      uint64_t mask;
      QZRESULT result;
      uint64_t previous, after;
    } steps[] = {
        {lowest, 0, original, lowest},
        {0, QZ_E_FAIL, 0, lowest},         // no processor at all: the affinity stays
        {unusable, QZ_E_FAIL, 0, lowest},  // only a processor this thread may not use
        {original, 0, lowest, original},
    };
    for (const auto& step : steps) {
      SCOPED_TRACE(step.mask);
      uint64_t previous = 0xABCDEF;
      EXPECT_EQ(QZGetSetCpuAffinity(&previous, &step.mask), step.result);
      EXPECT_EQ(previous, step.previous);
      EXPECT_EQ(AffinityNow(), step.after);
    }
    EXPECT_EQ(QZSetCpuAffinity(&lowest), 0);
    EXPECT_EQ(AffinityNow(), lowest);
    EXPECT_EQ(QZSetCpuAffinity(&original), 0);
  }).join();
  EXPECT_NE(AffinityNow(), 0u);
}

}  // namespace
