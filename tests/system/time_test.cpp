// time_test.cpp - the time family as callers see it: conversions at both ends of their range, the
// tm copies, zones with and without daylight saving (today's season rule), and the counters.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <ctime>
#include <string>
#include <thread>

#include "qzcore.h"
#include "support/test_support.h"

namespace {

using qztest::ScopedEnv;

QZSystemTime Date(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  QZSystemTime t{};
  t.wYear = static_cast<uint16_t>(y);
  t.wMonth = static_cast<uint16_t>(mo);
  t.wDay = static_cast<uint16_t>(d);
  t.wHour = static_cast<uint16_t>(h);
  t.wMinute = static_cast<uint16_t>(mi);
  t.wSecond = static_cast<uint16_t>(s);
  return t;
}

std::string Text(const QZSystemTime& t) {
  char text[64];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u w%u", t.wYear, t.wMonth, t.wDay, t.wHour,
                t.wMinute, t.wSecond, t.wMilliseconds, t.wDayOfWeek);
  return text;
}

std::string Narrow(const QZWCHAR* text) {
  std::string out;
  for (; *text != 0; ++text) out += static_cast<char>(*text);
  return out;
}

// Whether daylight saving time is in force now, told by the C library itself.
int DaylightNow() {
  const time_t now = time(nullptr);
  struct tm fields;
  localtime_r(&now, &fields);
  return fields.tm_isdst > 0 ? 1 : 0;
}

TEST(Time, PosixConversionsAtBothEndsOfTheRange) {
  ScopedEnv tz("TZ", "UTC");
  struct Case {
    QZSystemTime date;
    int64_t seconds;  // -1: refused
  } toPosix[] = {
      {Date(1970, 1, 1), 0},
      {Date(1969, 12, 31, 23, 59, 59), -1},
      {Date(1601, 1, 1), -1},
      {Date(2024, 2, 29, 12, 30, 15), 1709209815},
      {Date(3000, 12, 31, 23, 59, 59), 32535215999},
      {Date(3001, 1, 1), -1},
  };
  for (const auto& c : toPosix) {
    int64_t seconds = 12345;
    EXPECT_EQ(QZTimeToPosix(&c.date, &seconds), c.seconds == -1 ? QZ_E_FAIL : QZ_S_OK) << Text(c.date);
    EXPECT_EQ(seconds, c.seconds) << Text(c.date);
  }

  struct Back {
    int64_t seconds;
    const char* text;  // nullptr: refused, record cleared
  } fromPosix[] = {
      {0, "1970-01-01 00:00:00.000 w4"},
      {-1, nullptr},
      {INT64_MIN, nullptr},
      {1709209815, "2024-02-29 12:30:15.000 w4"},
      {32535215999, "3000-12-31 23:59:59.000 w3"},
      {32535216000, nullptr},
      {INT64_MAX, nullptr},
  };
  for (const auto& c : fromPosix) {
    QZSystemTime t;
    std::memset(&t, 0xA5, sizeof t);
    EXPECT_EQ(QZTimeFromPosix(c.seconds, &t), c.text == nullptr ? QZ_E_FAIL : QZ_S_OK) << c.seconds;
    EXPECT_EQ(Text(t), c.text == nullptr ? "0000-00-00 00:00:00.000 w0" : c.text) << c.seconds;
  }
}

TEST(Time, TmFieldsAreCopiedAsTheyStand) {
  ScopedEnv tz("TZ", "UTC");
  QZSystemTime date = Date(2024, 3, 5, 7, 8, 9);
  date.wDayOfWeek = 2;
  date.wMilliseconds = 999;
  struct tm fields;
  std::memset(&fields, 0, sizeof fields);
  fields.tm_yday = 4242;
  fields.tm_isdst = 7;
  ASSERT_EQ(QZTimeToTM(&date, &fields), 0);
  EXPECT_EQ(fields.tm_year, 124);
  EXPECT_EQ(fields.tm_mon, 2);
  EXPECT_EQ(fields.tm_mday, 5);
  EXPECT_EQ(fields.tm_wday, 2);
  EXPECT_EQ(fields.tm_hour * 10000 + fields.tm_min * 100 + fields.tm_sec, 70809);
  EXPECT_EQ(fields.tm_yday, 4242);  // never written
  EXPECT_EQ(fields.tm_isdst, 0);    // UTC has no daylight saving

  struct Case {
    int year, mon, mday, wday, sec, isdst;
    const char* text;
  } cases[] = {
      {99, 11, 31, 5, 0, 1, "1999-12-31 00:00:00.000 w5"},        // tm_isdst is not read
      {124, 0, 1, 7, 0, -1, "2024-01-01 00:00:00.000 w7"},        // no value is checked
      {124, 0, 1, 1, 0x10005, 0, "2024-01-01 00:00:05.000 w1"},   // low 16 bits
      {124, 12, 32, 0, 61, 0, "2024-13-32 00:00:61.000 w0"},       // nor normalised
  };
  for (const auto& c : cases) {
    struct tm in {};
    in.tm_year = c.year;
    in.tm_mon = c.mon;
    in.tm_mday = c.mday;
    in.tm_wday = c.wday;
    in.tm_sec = c.sec;
    in.tm_isdst = c.isdst;
    QZSystemTime out;
    std::memset(&out, 0xA5, sizeof out);
    ASSERT_EQ(QZTimeFromTM(&in, &out), 0);
    EXPECT_EQ(Text(out), c.text);
  }
}

TEST(Time, ZonesWithoutDaylightSavingInForce) {
  struct Case {
    const char* tz;
    int32_t bias;
    int16_t daylight;
    const char* standard;
    const char* daylightName;
  } cases[] = {
      {"UTC", 0, 0, "UTC", ""},
      {"Asia/Tokyo", -32400, 0, "JST", ""},
      {"EST5", 18000, 0, "EST", ""},
      {"<+0530>-5:30", -19800, 0, "+0530", ""},
      // Daylight saving all year round: the season in force is always the daylight one.
      {"XST-1XDT,0/0,J365/25", -7200, 1, "XST", "XDT"},
  };
  for (const auto& c : cases) {
    ScopedEnv tz("TZ", c.tz);
    QZTimeZoneInfo zone;
    std::memset(&zone, 0xA5, sizeof zone);
    ASSERT_EQ(QZTimeGetZone(&zone), 0) << c.tz;
    EXPECT_EQ(zone.biasSeconds, c.bias) << c.tz;
    EXPECT_EQ(zone.daylight, c.daylight) << c.tz;
    EXPECT_EQ(Narrow(zone.standardName), c.standard) << c.tz;
    EXPECT_EQ(Narrow(zone.daylightName), c.daylightName) << c.tz;
    EXPECT_EQ(zone.standardName[31], 0);
    EXPECT_EQ(zone.daylightName[31], 0);
  }
}

// Run as a child with TZ=Europe/Berlin in its environment from the start.
TEST(TimeChild, BerlinSeasons) {
  if (!qztest::IsChild()) GTEST_SKIP() << "runs as a child of Time.DaylightSavingZoneReadsDatesInTodaysSeason";
  const int dst = DaylightNow();
  QZTimeZoneInfo zone;
  ASSERT_EQ(QZTimeGetZone(&zone), 0);
  EXPECT_EQ(zone.biasSeconds, dst ? -7200 : -3600);
  EXPECT_EQ(zone.daylight, dst);
  EXPECT_EQ(Narrow(zone.standardName), "CET");
  EXPECT_EQ(Narrow(zone.daylightName), "CEST");

  // Both dates are read with today's offset: noon is 11:00 UTC in winter, 10:00 UTC in summer,
  // but each date here comes out as noon minus today's offset.
  const QZSystemTime winter = Date(2024, 1, 15, 12), summer = Date(2024, 7, 15, 12);
  const int64_t winterNoonUtc = 1705320000, summerNoonUtc = 1721044800;
  const int64_t offset = dst ? 7200 : 3600;
  int64_t seconds;
  ASSERT_EQ(QZTimeToPosix(&winter, &seconds), 0);
  EXPECT_EQ(seconds, winterNoonUtc - offset);
  ASSERT_EQ(QZTimeToPosix(&summer, &seconds), 0);
  EXPECT_EQ(seconds, summerNoonUtc - offset);

  // Back again: the date of today's season returns as it was, the other one an hour off.
  for (const auto& date : {winter, summer}) {
    ASSERT_EQ(QZTimeToPosix(&date, &seconds), 0);
    QZSystemTime back;
    ASSERT_EQ(QZTimeFromPosix(seconds, &back), 0);
    const bool sameSeason = (date.wMonth == 7) == (dst == 1);
    EXPECT_EQ(back.wHour, sameSeason ? 12 : (dst ? 11 : 13)) << Text(date);
    struct tm fields {};
    QZTimeToTM(&date, &fields);
    EXPECT_EQ(fields.tm_isdst, dst) << Text(date);  // today's state, not the date's
  }

  // The range is in UTC: half past midnight on the first day is still 1969 there.
  const QZSystemTime first = Date(1970, 1, 1, 0, 30);
  EXPECT_EQ(QZTimeToPosix(&first, &seconds), QZ_E_FAIL);
  EXPECT_EQ(seconds, -1);
  QZSystemTime epoch;
  ASSERT_EQ(QZTimeFromPosix(0, &epoch), 0);
  EXPECT_EQ(Text(epoch), "1970-01-01 01:00:00.000 w4");
}

TEST(Time, DaylightSavingZoneReadsDatesInTodaysSeason) {
  const auto child = qztest::RunSelf("TimeChild.BerlinSeasons", {"TZ=Europe/Berlin"});
  EXPECT_EQ(child.exitCode, 0) << child.out << child.err;
  EXPECT_NE(child.out.find("[  PASSED  ] 1 test"), std::string::npos) << child.out;
}

TEST(Time, LocalAndSystemClocksTellTheSameMoment) {
  for (const char* zone : {"UTC", "Asia/Tokyo", "America/New_York"}) {
    ScopedEnv tz("TZ", zone);
    QZSystemTime local, system;
    ASSERT_EQ(QZTimeGetLocal(&local), 0);
    ASSERT_EQ(QZTimeGetSystem(&system), 0);
    const time_t now = time(nullptr);
    EXPECT_LT(local.wMilliseconds, 1000);
    // Local time read back through the zone, and UTC through UTC's own arithmetic, give now.
    int64_t seconds;
    ASSERT_EQ(QZTimeToPosix(&local, &seconds), 0) << Text(local);
    EXPECT_NEAR(static_cast<double>(seconds), static_cast<double>(now), 2.0) << zone << " " << Text(local);
    struct tm utc {};
    utc.tm_year = system.wYear - 1900;
    utc.tm_mon = system.wMonth - 1;
    utc.tm_mday = system.wDay;
    utc.tm_hour = system.wHour;
    utc.tm_min = system.wMinute;
    utc.tm_sec = system.wSecond;
    EXPECT_NEAR(static_cast<double>(timegm(&utc)), static_cast<double>(now), 2.0) << Text(system);
    EXPECT_EQ(system.wDayOfWeek, utc.tm_wday);
  }
}

TEST(PerfCounters, AdvanceTogetherWithTheirFrequency) {
  EXPECT_EQ(QZPerfGetFreq(), 1000000000);
  const int64_t count = QZPerfGetCount();
  const uint32_t ms = QZPerfGetCountMS();
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  const int64_t countDelta = QZPerfGetCount() - count;
  const uint32_t msDelta = QZPerfGetCountMS() - ms;  // unsigned: right across a wrap too
  EXPECT_GE(countDelta * 1000 / QZPerfGetFreq(), 29);
  EXPECT_LT(countDelta * 1000 / QZPerfGetFreq(), 5000);
  EXPECT_GE(msDelta, 29u);
  EXPECT_LT(msDelta, 5000u);
}

}  // namespace
