// time_zone.h - the wall clock, the time zone and the C library's calendar conversions, as the
// time family asks for them.
//
// Portable declarations only. The calendar record is the first platform's eight 16-bit fields;
// the zone is told as a bias in minutes with a standard and a daylight part, and which of the two
// is in force now. The conversions keep one range on every platform: POSIX seconds from 0
// (1970-01-01 00:00:00 UTC) to kMaxPosixTime (3000-12-31 23:59:59 UTC); anything outside fails.
#pragma once

#include <cstdint>
#include <ctime>

namespace qz::os {

// The last second the conversions take: 3000-12-31 23:59:59 UTC.
inline constexpr int64_t kMaxPosixTime = 32535215999;

// Year, month (1-12), day of week (0 Sunday), day, hour, minute, second, milliseconds.
struct CalendarTime {
  uint16_t year;
  uint16_t month;
  uint16_t dayOfWeek;
  uint16_t day;
  uint16_t hour;
  uint16_t minute;
  uint16_t second;
  uint16_t milliseconds;
};

// What GetTimeZoneInformation answers about the zone in force.
enum TimeZoneId : uint32_t {
  kTimeZoneIdUnknown = 0,   // the zone has no daylight saving
  kTimeZoneIdStandard = 1,  // standard time is in force now
  kTimeZoneIdDaylight = 2,  // daylight saving time is in force now
  kTimeZoneIdInvalid = 0xFFFFFFFF,
};

struct TimeZoneInformation {
  int32_t bias;               // minutes to add to standard local time to get UTC
  int32_t standardBias;       // minutes added to bias while standard time is in force
  int32_t daylightBias;       // minutes added to bias while daylight saving time is in force
  char16_t standardName[32];  // abbreviation of standard time, NUL-terminated
  char16_t daylightName[32];  // abbreviation of daylight time (empty without daylight saving)
};

// The current local time / UTC, with milliseconds.
void GetLocalTime(CalendarTime* out) noexcept;
void GetSystemTime(CalendarTime* out) noexcept;

// The zone in force now, read afresh on every call (a change of TZ takes effect at once). One of
// TimeZoneId; kTimeZoneIdInvalid with the last error set if the zone cannot be had.
uint32_t GetTimeZoneInformation(TimeZoneInformation* info) noexcept;

// Local calendar fields (tm_isdst as given: the C library's season rule) to POSIX seconds. The
// fields are normalised in place. -1 (last error set) outside 0..kMaxPosixTime.
int64_t MakeTime64(std::tm* fields) noexcept;

// POSIX seconds to local calendar fields. False (last error set) outside 0..kMaxPosixTime.
bool LocalTime64(int64_t seconds, std::tm* fields) noexcept;

}  // namespace qz::os
