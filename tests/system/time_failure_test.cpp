// time_failure_test.cpp - the time family when the system cannot answer: the zone's failure is
// reported by QZTimeGetZone and hidden by QZTimeToTM, and the counters fall back to milliseconds.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "platform/system_calls.h"
#include "qzcore/qzresult.h"
#include "qzcore/qztime.h"
#include "support/test_support.h"

namespace {

class TimeFailure : public ::testing::Test {
 protected:
  void TearDown() override { qz::os::ResetSystemCalls(); }
  // A zone whose daylight saving is in force all year round, so tm_isdst is 1 while it works.
  qztest::ScopedEnv m_tz{"TZ", "XST-1XDT,0/0,J365/25"};
};

TEST_F(TimeFailure, ZoneThatCannotBeHad) {
  const QZSystemTime date{2024, 6, 0, 1, 12, 0, 0, 0};
  struct tm fields {};
  ASSERT_EQ(QZTimeToTM(&date, &fields), 0);
  ASSERT_EQ(fields.tm_isdst, 1);

  for (const char* call : {"clock_gettime", "localtime_r"}) {
    ASSERT_TRUE(qz::os::FailSystemCall(call, EOVERFLOW));
    QZTimeZoneInfo zone;
    std::memset(&zone, 0xA5, sizeof zone);
    EXPECT_EQ(QZTimeGetZone(&zone), QZResultFromNative(534)) << call;  // arithmetic overflow
    const QZTimeZoneInfo clear{};
    EXPECT_EQ(std::memcmp(&zone, &clear, sizeof zone), 0) << call;

    ASSERT_TRUE(qz::os::FailSystemCall(call, EOVERFLOW));
    fields.tm_isdst = 9;
    EXPECT_EQ(QZTimeToTM(&date, &fields), 0) << call;
    EXPECT_EQ(fields.tm_isdst, 0) << call;  // the failure is hidden
  }
}

TEST_F(TimeFailure, CounterFallsBackToMilliseconds) {
  ASSERT_TRUE(qz::os::FailSystemCall("clock_gettime", EINVAL));
  const int64_t fallback = QZPerfGetCount();  // the fine clock fails once
  const int64_t ms = QZPerfGetCountMS();
  EXPECT_LE(fallback, ms);
  EXPECT_GT(fallback, ms - 1000);
}

}  // namespace
