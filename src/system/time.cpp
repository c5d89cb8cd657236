// time.cpp - the zone, the record/tm/POSIX conversions and the counters over the platform layer.
#include "system/time.h"

#include <cstring>

#include "frame/core_exception.h"
#include "platform/last_error.h"
#include "platform/ticks.h"
#include "platform/time_zone.h"

namespace qz::core {
namespace {

static_assert(sizeof(QZSystemTime) == sizeof(qz::os::CalendarTime));

void CopyName(const char16_t (&from)[32], QZWCHAR (&to)[32]) noexcept {
  // At most 31 units, so the 32nd stays NUL.
  for (size_t i = 0; i < 31 && from[i] != 0; ++i) to[i] = from[i];
}

}  // namespace

void TimeGetLocal(QZSystemTime* out) noexcept {
  qz::os::GetLocalTime(reinterpret_cast<qz::os::CalendarTime*>(out));
}

void TimeGetSystem(QZSystemTime* out) noexcept {
  qz::os::GetSystemTime(reinterpret_cast<qz::os::CalendarTime*>(out));
}

QZRESULT TimeGetZone(QZTimeZoneInfo* out) noexcept {
  std::memset(out, 0, sizeof *out);
  qz::os::TimeZoneInformation zone;
  const uint32_t id = qz::os::GetTimeZoneInformation(&zone);
  if (id == qz::os::kTimeZoneIdInvalid) return ResultFromNative(qz::os::GetLastError());
  int32_t minutes = zone.bias;
  if (id == qz::os::kTimeZoneIdDaylight) {
    minutes += zone.daylightBias;
    out->daylight = 1;
  } else if (id == qz::os::kTimeZoneIdStandard) {
    minutes += zone.standardBias;
  }
  out->biasSeconds = minutes * 60;
  CopyName(zone.standardName, out->standardName);
  CopyName(zone.daylightName, out->daylightName);
  return QZ_S_OK;
}

QZRESULT TimeToTM(const QZSystemTime* time, std::tm* out) noexcept {
  out->tm_sec = time->wSecond;
  out->tm_min = time->wMinute;
  out->tm_hour = time->wHour;
  out->tm_mday = time->wDay;
  out->tm_wday = time->wDayOfWeek;
  QZTimeZoneInfo zone;
  TimeGetZone(&zone);  // a failure leaves the record clear: tm_isdst 0
  out->tm_isdst = zone.daylight;
  out->tm_mon = time->wMonth - 1;
  out->tm_year = time->wYear - 1900;
  return QZ_S_OK;
}

QZRESULT TimeFromTM(const std::tm* tm, QZSystemTime* out) noexcept {
  std::memset(out, 0, sizeof *out);
  out->wSecond = static_cast<uint16_t>(tm->tm_sec);
  out->wMinute = static_cast<uint16_t>(tm->tm_min);
  out->wHour = static_cast<uint16_t>(tm->tm_hour);
  out->wDay = static_cast<uint16_t>(tm->tm_mday);
  out->wDayOfWeek = static_cast<uint16_t>(tm->tm_wday);
  out->wMonth = static_cast<uint16_t>(tm->tm_mon + 1);
  out->wYear = static_cast<uint16_t>(tm->tm_year + 1900);
  return QZ_S_OK;
}

QZRESULT TimeToPosix(const QZSystemTime* time, int64_t* out) noexcept {
  std::tm fields{};
  TimeToTM(time, &fields);
  *out = qz::os::MakeTime64(&fields);
  return *out == -1 ? QZ_E_FAIL : QZ_S_OK;
}

QZRESULT TimeFromPosix(int64_t seconds, QZSystemTime* out) noexcept {
  std::memset(out, 0, sizeof *out);
  std::tm fields{};
  if (!qz::os::LocalTime64(seconds, &fields)) return QZ_E_FAIL;
  return TimeFromTM(&fields, out);
}

int64_t PerfGetCount() noexcept {
  int64_t count;
  if (qz::os::QueryPerformanceCounter(&count)) return count;
  return static_cast<int64_t>(qz::os::GetTickCount());
}

int64_t PerfGetFreq() noexcept {
  int64_t frequency;
  return qz::os::QueryPerformanceFrequency(&frequency) ? frequency : 1000;
}

uint32_t PerfGetCountMS() noexcept { return qz::os::GetTickCount(); }

}  // namespace qz::core
