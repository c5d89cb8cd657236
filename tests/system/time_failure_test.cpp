// time_failure_test.cpp - the time family when the system cannot answer: the zone's failure is
// reported by QZTimeGetZone and hidden by QZTimeToTM, and the counters fall back to milliseconds.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <time.h>

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

// The monotonic clock fails, the boot-time clock behind the millisecond counter still works.
int MonotonicClockFails(clockid_t clock, struct timespec* now) {
  if (clock == CLOCK_MONOTONIC) {
    errno = EINVAL;
    return -1;
  }
  return ::clock_gettime(clock, now);
}

// While the fine clock cannot be read, count and frequency fall back together, so count divided by
// frequency stays seconds; once it works again both are the fine clock's.
TEST_F(TimeFailure, CountAndFrequencyFallBackTogether) {
  ASSERT_TRUE(qz::os::SetSystemCall("clock_gettime", reinterpret_cast<qz::os::SystemCallPointer>(&MonotonicClockFails)));
  const int64_t frequency = QZPerfGetFreq();
  const int64_t count = QZPerfGetCount();
  const int64_t ms = QZPerfGetCountMS();
  EXPECT_EQ(frequency, 1000);
  EXPECT_LE(count, ms);
  EXPECT_GT(count, ms - 1000);

  qz::os::ResetSystemCalls();
  EXPECT_EQ(QZPerfGetFreq(), 1000000000);
}

}  // namespace
