// thread_failure_test.cpp - the thread records from inside: the record exists before the thread
// function runs, it leaves the map only when both the end and the claim have happened, a recycled
// id replaces its record, and a thread the system refuses (failures injected through the
// system-call table) leaves no record, semaphore or thread behind.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>

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

uintptr_t WaitForGate(void* gate) {
  while (!static_cast<std::atomic<bool>*>(gate)->load()) QZThreadYield();
  return 0;
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

}  // namespace
