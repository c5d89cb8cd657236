// debugger_wait_test.cpp - the alert method that waits for a person at a debugger: what happens
// before the wait, and how the word that releases it is handed back.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "frame/error_report.h"
#include "qzcore/qzresult.h"
#include "support/test_support.h"

namespace {

TEST(DebuggerWait, EventEntryComesFirstAndTheReleaseWordIsSetBack) {
  qztest::TempDir dir;
  const std::string log = dir.File("events.log");
  qztest::ScopedEnv env("QZCORE_EVENT_LOG", log.c_str());
  std::atomic<bool> returned{false};
  std::thread waiter([&] {
    qz::core::ErrorAlert(QZ_ALERT_EVENT_LOG | QZ_ALERT_WAIT_FOR_DEBUGGER, u"T", u"waiting %d", 1);
    returned = true;
  });
  // The entry is written before the wait begins; the wait goes on until the word is set.
  while (qztest::ReadFile(log).empty()) std::this_thread::yield();
  EXPECT_EQ(qztest::ReadFile(log), "T\twaiting 1\n");
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(returned);
  g_debuggerContinue.store(1);
  waiter.join();
  EXPECT_TRUE(returned);
  EXPECT_EQ(g_debuggerContinue.load(), 0);
}

}  // namespace
