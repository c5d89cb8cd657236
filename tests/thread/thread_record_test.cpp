// thread_record_test.cpp - the thread records from inside: the record exists before the thread
// function runs; join and detach in either order against the end, from several threads at once,
// each leaving the map only when both the end and the claim have happened; a recycled id replaces
// its record; a thread the system refuses (failures injected through the system-call table) leaves
// no record, semaphore or thread behind. Tests that detach wait for the records to go, so that no
// detached thread is still inside the library when the process stops.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>
#include <vector>

#include "frame/global_data.h"
#include "platform/last_error.h"
#include "platform/system_calls.h"
#include "qzcore.h"
#include "start/client_data.h"
#include "thread/thread_manager.h"

namespace {

CQZThreadManager& Manager() { return CQZGlobalData::m_clientData->m_threadManager; }

bool Known(uint32_t id) {
  CQZThreadData* record = Manager().FindThread(id);
  if (record != nullptr) qz::core::Release(record);
  return record != nullptr;
}

// The thread function looks itself up: the creator must have put the record in the map first.
uintptr_t FindOwnRecord(void*) { return Known(QZThreadGetID()) ? 1 : 0; }

// Waits until *gate is set, then returns 5.
uintptr_t WaitForGate(void* gate) {
  while (!static_cast<std::atomic<bool>*>(gate)->load()) QZThreadYield();
  return 5;
}

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

QZThreadHandle Start(QZThreadFunction function, void* argument) {
  QZThreadHandle handle = 0;
  uint32_t id = 0;
  EXPECT_EQ(QZThreadCreate(function, argument, nullptr, 0, &handle, &id), 0);
  return handle;
}

class ThreadRecords : public ::testing::Test {
 protected:
  void TearDown() override { qz::os::ResetSystemCalls(); }
};

TEST_F(ThreadRecords, RecordExistsBeforeTheFunctionRuns) {
  for (int i = 0; i < 50; ++i) {
    QZThreadHandle thread;
    uint32_t id;
    ASSERT_EQ(QZThreadCreate(&FindOwnRecord, nullptr, nullptr, 0, &thread, &id), 0);
    uint64_t found = 0;
    ASSERT_EQ(QZThreadJoin(thread, &found), 0);
    ASSERT_EQ(found, 1u) << "iteration " << i;
  }
}

TEST_F(ThreadRecords, RecordLeavesWhenBothEndAndClaimHaveHappened) {
  const size_t before = Manager().ThreadCount();
  for (bool detach : {false, true}) {
    SCOPED_TRACE(detach ? "detach" : "join");
    std::atomic<bool> gate{false};
    QZThreadHandle thread;
    uint32_t id;
    ASSERT_EQ(QZThreadCreate(&WaitForGate, &gate, nullptr, 0, &thread, &id), 0);
    if (detach) {
      ASSERT_EQ(QZThreadDetach(thread), 0);
      EXPECT_TRUE(Known(id));  // claimed, still running
      gate = true;
      for (int i = 0; i < 5000 && Known(id); ++i) QZSleep(1);
    } else {
      gate = true;
      for (int i = 0; i < 5000 && !Manager().HasFinished(id); ++i) QZSleep(1);
      EXPECT_TRUE(Manager().HasFinished(id));  // ended, not claimed: the record waits for the join
      ASSERT_EQ(QZThreadJoin(thread, nullptr), 0);
    }
    EXPECT_FALSE(Known(id));
    EXPECT_EQ(Manager().ThreadCount(), before);
  }
}

TEST_F(ThreadRecords, RecycledIdReplacesTheRecord) {
  const uint32_t id = 0xFFFFFFF1u;  // no kernel gives this id
  const size_t before = Manager().ThreadCount();
  Manager().AddThread(id, 111);
  Manager().AddThread(id, 222);
  EXPECT_EQ(Manager().ThreadCount(), before + 1);
  CQZThreadData* record = Manager().FindThread(id);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->m_handle, 222u);
  EXPECT_FALSE(record->m_detached || record->m_finished);
  Manager().MarkFinished(id);
  Manager().MarkDetached(id);
  EXPECT_FALSE(Known(id));
  EXPECT_EQ(record->m_refCount.load(), 1u);  // the lookup's reference outlives the map's
  qz::core::Release(record);
}

TEST_F(ThreadRecords, RefusedThreadLeavesNothingBehind) {
  const struct {
    const char* call;
    int error;
    uint32_t stackSize;
    uint32_t lastError;
    QZRESULT result;
  } cases[] = {
      {"pthread_create", EAGAIN, 0, 8, QZ_E_FAIL},  // no room for another thread
      {"pthread_create", EPERM, 0, 5, QZ_E_ACCESSDENIED},
      {"pthread_attr_setstacksize", EINVAL, 1u << 20, 87, QZ_E_FAIL},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.call);
    const size_t before = Manager().ThreadCount();
    ASSERT_TRUE(qz::os::FailSystemCall(c.call, c.error));
    QZThreadHandle thread = 0;
    uint32_t id = 77;
    EXPECT_EQ(QZThreadCreate(&FindOwnRecord, nullptr, nullptr, c.stackSize, &thread, &id), c.result);
    EXPECT_EQ(qz::os::GetLastError(), c.lastError);
    qz::os::ResetSystemCalls();
    EXPECT_EQ(thread, static_cast<QZThreadHandle>(-1));
    EXPECT_EQ(id, 0u);
    EXPECT_EQ(Manager().ThreadCount(), before);
  }
  // The next creation works as ever.
  QZThreadHandle thread;
  uint32_t id;
  ASSERT_EQ(QZThreadCreate(&FindOwnRecord, nullptr, nullptr, 0, &thread, &id), 0);
  EXPECT_EQ(QZThreadJoin(thread, nullptr), 0);
}

TEST_F(ThreadRecords, JoinAndDetachInEitherOrderAgainstTheEnd) {
  enum Claim { kJoin, kJoinNullCode, kDetach };
  const struct {
    Claim claim;
    bool endFirst;  // the function returns before the claim is made
  } cases[] = {{kJoin, true}, {kJoin, false}, {kJoinNullCode, true}, {kJoinNullCode, false},
               {kDetach, true}, {kDetach, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << "claim " << c.claim << " end first " << c.endFirst);
    const size_t before = Manager().ThreadCount();
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
    // Once both have happened the record is gone (and the thread is done with `gate`).
    ASSERT_TRUE(Eventually([&] { return Manager().ThreadCount() == before; }));
    EXPECT_EQ(QZThreadJoin(thread, &code), QZ_E_HANDLE);
  }
}

TEST_F(ThreadRecords, GivenUpThreadIsNeverJoined) {
  const size_t before = Manager().ThreadCount();
  std::atomic<bool> gate{false};
  const QZThreadHandle thread = Start(&WaitForGate, &gate);
  EXPECT_EQ(QZThreadDetach(thread), 0);
  uint64_t code = 9;
  EXPECT_EQ(QZThreadJoin(thread, &code), QZ_E_HANDLE);  // running, detached: the record stays
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(QZThreadDetach(thread), QZ_E_HANDLE);       // nothing left to give up
  gate = true;
  ASSERT_TRUE(Eventually([&] { return Manager().ThreadCount() == before; }));
  EXPECT_EQ(QZThreadJoin(thread, &code), QZ_E_HANDLE);
  EXPECT_EQ(QZThreadJoin(0xFFFFFFF0u, &code), QZ_E_HANDLE);  // never made here
}

// The loading thread's record holds the pseudo handle, which a detach never gives up: each detach
// succeeds, the record stays (its thread runs no start routine), and a join is refused.
TEST_F(ThreadRecords, LoadingThreadIsDetachedAnyNumberOfTimes) {
  const uint32_t loader = QZThreadGetID();  // gtest runs the tests on the thread that loaded us
  ASSERT_TRUE(Known(loader));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(QZThreadDetach(loader), 0) << i;
  EXPECT_TRUE(Known(loader));
  EXPECT_EQ(QZThreadJoin(loader, nullptr), QZ_E_HANDLE);
}

TEST_F(ThreadRecords, ManyThreadsCreateJoinAndDetachAtOnce) {
  constexpr int kCreators = 6, kEach = 25;
  const size_t before = Manager().ThreadCount();
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
  // Detached threads must be done with the library before the test ends.
  EXPECT_TRUE(Eventually([&] { return Manager().ThreadCount() == before; }));
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(wrongCodes.load(), 0);
}

}  // namespace
