// thread_join_test.cpp - threads as callers see them: exit codes cut to 32 bits, join and detach
// in either order against the end of the function, from several threads at once, the requested
// stack, the unknown and given-up ids, and the calls on the calling thread.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <chrono>
#include <thread>
#include <vector>

#include "qzcore.h"
#include "support/test_support.h"

namespace {

// Polls `done` for up to five seconds: waiting for other threads without a timed assertion.
template <class Done>
bool Eventually(Done done) {
  for (int i = 0; i < 5000; ++i) {
    if (done()) return true;
    QZSleep(1);
  }
  return done();
}

uintptr_t ReturnArgument(void* argument) { return reinterpret_cast<uintptr_t>(argument); }

// Waits until *gate is set, then returns 5.
uintptr_t WaitForGate(void* gate) {
  while (!static_cast<std::atomic<bool>*>(gate)->load()) std::this_thread::yield();
  return 5;
}

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

TEST(Thread, JoinAndDetachInEitherOrderAgainstTheEnd) {
  enum Claim { kJoin, kJoinNullCode, kDetach };
  const struct {
    Claim claim;
    bool endFirst;  // the function returns before the claim is made
  } cases[] = {{kJoin, true}, {kJoin, false}, {kJoinNullCode, true}, {kJoinNullCode, false},
               {kDetach, true}, {kDetach, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << "claim " << c.claim << " end first " << c.endFirst);
    std::atomic<bool> gate{c.endFirst};
    const QZThreadHandle thread = Start(&WaitForGate, &gate);
    if (c.endFirst) QZSleep(20);  // most likely ended; either way the outcome is the same
    uint64_t code = 0;
    if (c.claim == kDetach) {
      EXPECT_EQ(QZThreadDetach(thread), 0);
      gate = true;
    } else {
      std::thread opener([&] {
        QZSleep(c.endFirst ? 0 : 20);
        gate = true;
      });
      EXPECT_EQ(QZThreadJoin(thread, c.claim == kJoin ? &code : nullptr), 0);
      opener.join();
      EXPECT_EQ(code, c.claim == kJoin ? 5u : 0u);
    }
    // Once both have happened the id is unknown; a detached thread is never joined.
    ASSERT_TRUE(Eventually([&] { return QZThreadJoin(thread, &code) == QZ_E_HANDLE; }));
  }
}

TEST(Thread, GivenUpThreadIsNeverJoined) {
  std::atomic<bool> gate{false};
  const QZThreadHandle thread = Start(&WaitForGate, &gate);
  EXPECT_EQ(QZThreadDetach(thread), 0);
  uint64_t code = 9;
  EXPECT_EQ(QZThreadJoin(thread, &code), QZ_E_HANDLE);  // running, detached: the record stays
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(QZThreadDetach(thread), QZ_E_HANDLE);       // nothing left to give up
  gate = true;
  ASSERT_TRUE(Eventually([&] { return QZThreadJoin(thread, &code) == QZ_E_HANDLE; }));
  EXPECT_EQ(QZThreadJoin(0xFFFFFFF0u, &code), QZ_E_HANDLE);  // never made here
}

TEST(Thread, ManyThreadsCreateJoinAndDetachAtOnce) {
  constexpr int kCreators = 6, kEach = 25;
  std::atomic<int> wrongCodes{0}, failures{0};
  std::vector<std::thread> creators;
  for (int t = 0; t < kCreators; ++t) {
    creators.emplace_back([&, t] {
      for (int i = 0; i < kEach; ++i) {
        const uintptr_t value = (uintptr_t{1} << 40) + t * 1000 + i;
        QZThreadHandle thread;
        uint32_t id;
        if (QZThreadCreate(&ReturnArgument, reinterpret_cast<void*>(value), nullptr, 0, &thread, &id) != 0) {
          ++failures;
          continue;
        }
        uint64_t code = 0;
        if ((i % 3) == 0) {
          if (QZThreadDetach(thread) != 0) ++failures;
        } else if (QZThreadJoin(thread, &code) != 0) {
          ++failures;
        } else if (code != (value & 0xFFFFFFFF)) {
          ++wrongCodes;
        }
      }
    });
  }
  for (auto& creator : creators) creator.join();
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(wrongCodes.load(), 0);
}

// glibc may hand a cached stack of up to four times the size asked for, so only the floor is sure.
TEST(Thread, StackIsAtLeastTheRequestedSize) {
  const struct {
    uint32_t requested;
    size_t atLeast;
  } cases[] = {{0, 64 * 1024}, {1, 16 * 1024}, {1u << 20, 1u << 20}, {(3u << 20) + 5, (3u << 20) + 5}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.requested);
    uint64_t size = 0;
    ASSERT_EQ(QZThreadJoin(Start(&StackSize, nullptr, c.requested), &size), 0);
    EXPECT_GE(size, c.atLeast);
  }
}

struct JoinResults {
  uint32_t loader;                   // the thread that loaded the library
  std::atomic<QZRESULT> own{0};      // a created thread's join of itself
  std::atomic<QZRESULT> ofLoader{0}; // its join of the loading thread
};

uintptr_t JoinItselfAndTheLoader(void* pointer) {
  auto* results = static_cast<JoinResults*>(pointer);
  results->own = QZThreadJoin(QZThreadGetID(), nullptr);
  results->ofLoader = QZThreadJoin(results->loader, nullptr);
  return 0;
}

TEST(Thread, NoThreadJoinsItselfOrTheLoadingThread) {
  JoinResults results;
  results.loader = QZThreadGetID();  // gtest runs the tests on the thread that loaded the library
  ASSERT_EQ(QZThreadJoin(Start(&JoinItselfAndTheLoader, &results), nullptr), 0);
  EXPECT_EQ(results.own.load(), QZ_E_FAIL);
  EXPECT_EQ(results.ofLoader.load(), QZ_E_FAIL);
  EXPECT_EQ(QZThreadJoin(results.loader, nullptr), QZ_E_FAIL);  // the loader's record stays
}

TEST(Thread, DetachOfAnUnknownThreadEndsTheProcess) {
  if (qztest::IsChild()) {
    QZThreadDetach(0xFFFFFFF0u);
    _exit(0);
  }
  const qztest::ChildResult child = qztest::RunSelf("Thread.DetachOfAnUnknownThreadEndsTheProcess");
  EXPECT_EQ(child.signal, SIGABRT);
  EXPECT_NE(child.err.find("QZThreadDetach of thread 4294967280, which the library does not know"),
            std::string::npos) << child.err;
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
        {0, QZ_E_FAIL, 0, lowest},           // no processor at all: the affinity stays
        {unusable, QZ_E_FAIL, 0, lowest},    // only a processor this thread may not use
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
