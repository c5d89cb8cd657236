// time_zone.cpp - wall clock and zone on Linux: CLOCK_REALTIME, and glibc's zone (tm_gmtoff,
// tm_isdst, tzname, timezone) read after tzset() on every call.
#include "platform/time_zone.h"

#include <cerrno>

#include "errno_map.h"
#include "platform/last_error.h"
#include "platform/native_error.h"
#include "syscalls.h"

namespace qz::os {
namespace {

void FromFields(const struct tm& fields, long nanoseconds, CalendarTime* out) noexcept {
  out->year = static_cast<uint16_t>(fields.tm_year + 1900);
  out->month = static_cast<uint16_t>(fields.tm_mon + 1);
  out->dayOfWeek = static_cast<uint16_t>(fields.tm_wday);
  out->day = static_cast<uint16_t>(fields.tm_mday);
  out->hour = static_cast<uint16_t>(fields.tm_hour);
  out->minute = static_cast<uint16_t>(fields.tm_min);
  out->second = static_cast<uint16_t>(fields.tm_sec);
  out->milliseconds = static_cast<uint16_t>(nanoseconds / 1000000);
}

// The wall clock; the epoch if it cannot be read (it can always be read on Linux).
struct timespec Now() noexcept {
  struct timespec now {};
  if (sys::clock_gettime(CLOCK_REALTIME, &now) != 0) now = {};
  return now;
}

// A zone abbreviation as 16-bit text: at most 31 units, bytes outside ASCII as '?'.
void CopyName(const char* name, char16_t (&out)[32]) noexcept {
  size_t i = 0;
  for (; name != nullptr && name[i] != 0 && i < 31; ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    out[i] = byte < 0x80 ? byte : u'?';
  }
  for (; i < 32; ++i) out[i] = 0;
}

}  // namespace

void GetLocalTime(CalendarTime* out) noexcept {
  tzset();
  const struct timespec now = Now();
  struct tm fields {};
  if (sys::localtime_r(&now.tv_sec, &fields) == nullptr) sys::gmtime_r(&now.tv_sec, &fields);
  FromFields(fields, now.tv_nsec, out);
}

void GetSystemTime(CalendarTime* out) noexcept {
  const struct timespec now = Now();
  struct tm fields {};
  sys::gmtime_r(&now.tv_sec, &fields);
  FromFields(fields, now.tv_nsec, out);
}

uint32_t GetTimeZoneInformation(TimeZoneInformation* info) noexcept {
  *info = {};
  tzset();
  struct timespec now;
  if (sys::clock_gettime(CLOCK_REALTIME, &now) != 0) {
    SetLastErrorFromErrno(errno);
    return kTimeZoneIdInvalid;
  }
  struct tm fields {};
  if (sys::localtime_r(&now.tv_sec, &fields) == nullptr) {
    SetLastErrorFromErrno(errno);
    return kTimeZoneIdInvalid;
  }
  // glibc's offsets are seconds east of UTC; the bias is minutes west.
  const int32_t inForce = static_cast<int32_t>(-fields.tm_gmtoff / 60);
  CopyName(tzname[0], info->standardName);
  if (fields.tm_isdst > 0) {
    // `timezone` holds the standard offset of the zone's rule in force.
    info->bias = static_cast<int32_t>(timezone / 60);
    info->daylightBias = inForce - info->bias;
    CopyName(tzname[1], info->daylightName);
    return kTimeZoneIdDaylight;
  }
  info->bias = inForce;
  if (daylight == 0) return kTimeZoneIdUnknown;
  info->daylightBias = -60;  // only read while daylight time is in force
  CopyName(tzname[1], info->daylightName);
  return kTimeZoneIdStandard;
}

int64_t MakeTime64(std::tm* fields) noexcept {
  tzset();
  errno = 0;
  const time_t seconds = sys::mktime(fields);
  if (seconds == -1 && errno != 0) {
    SetLastErrorFromErrno(errno);
    return -1;
  }
  if (seconds < 0 || seconds > kMaxPosixTime) {
    SetLastError(kErrorInvalidParameter);
    return -1;
  }
  return seconds;
}

bool LocalTime64(int64_t seconds, std::tm* fields) noexcept {
  if (seconds < 0 || seconds > kMaxPosixTime) {
    SetLastError(kErrorInvalidParameter);
    return false;
  }
  tzset();
  const auto value = static_cast<time_t>(seconds);
  if (sys::localtime_r(&value, fields) == nullptr) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  return true;
}

}  // namespace qz::os
