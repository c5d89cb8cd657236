// waitable_failure_test.cpp - waits that fail (the clock cannot be read) come back as the mapped
// failure, not as a timeout; and the C++ contracts the thread and reader/writer families rely on.
#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "frame/core_exception.h"
#include "platform/system_calls.h"
#include "qzcore/qzwaitable.h"
#include "sync/waitable.h"

namespace {

class WaitFailure : public ::testing::Test {
 protected:
  void TearDown() override { qz::os::ResetSystemCalls(); }
};

TEST_F(WaitFailure, TimedWaitsReportTheMappedFailure) {
  QZEventHandle event;
  QZGateHandle gate;
  QZConditionHandle condition;
  ASSERT_EQ(QZEventCreate("e", 0, &event), 0);
  ASSERT_EQ(QZGateCreate("g", 0, &gate), 0);
  ASSERT_EQ(QZConditionCreate("c", 0, &condition), 0);
  ASSERT_EQ(QZConditionAcquire(condition), 0);
  ASSERT_TRUE(qz::os::FailSystemCall("clock_gettime", EBADF, 3));
  EXPECT_EQ(QZEventTimedWait(event, 50), QZ_E_HANDLE);
  EXPECT_EQ(QZGateTimedWait(gate, 50), QZ_E_HANDLE);
  EXPECT_EQ(QZConditionTimedWait(condition, 50), QZ_E_HANDLE);
  EXPECT_EQ(QZConditionRelease(condition), 0);  // the lock was held again
  // Waits that need no deadline never read the clock.
  ASSERT_TRUE(qz::os::FailSystemCall("clock_gettime", EBADF, 2));
  EXPECT_EQ(QZEventTimedWait(event, 0), QZ_E_TIMEOUT);
  EXPECT_EQ(QZGateTryWait(gate), QZ_E_FAIL);
  QZEventDestroy(event);
  QZGateDestroy(gate);
  QZConditionDestroy(condition);
}

TEST(WaitableClasses, CppContracts) {
  CQZSemaphore semaphore(1, "s", 0);
  EXPECT_TRUE(semaphore.Wait(0));
  EXPECT_FALSE(semaphore.Wait(5));  // a timeout is an answer, not an exception
  EXPECT_THROW(CQZSemaphore(CQZSemaphore::kMaxCount + 1, "over", 0), EQZCoreException);
  CQZSemaphore full(CQZSemaphore::kMaxCount, "full", 0);
  try {
    full.Post();
    ADD_FAILURE() << "a post past the maximum went through";
  } catch (const EQZCoreException& e) {
    EXPECT_EQ(e.m_result, QZ_E_FAIL);
  }

  // A waiter may destroy its event as soon as its wait returns, while the signaller is still in
  // Signal: the hand-over pattern of thread start-up.
  for (int i = 0; i < 200; ++i) {
    auto* event = new CQZEvent("handover", 0);
    std::thread signaller([event] { event->Signal(); });
    EXPECT_TRUE(event->Wait(qz::os::kInfinite));
    delete event;
    signaller.join();
  }
}

}  // namespace
