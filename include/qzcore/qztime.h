/* qztime.h - the wall clock, the time zone, calendar conversions and the performance counters.
 *
 * Times travel in QZSystemTime, eight 16-bit fields (the first platform's calendar record). The
 * conversions to and from the C library's struct tm and POSIX seconds read and give LOCAL time and
 * keep one range: from 1970-01-01 00:00:00 UTC to 3000-12-31 23:59:59 UTC; anything outside
 * fails with QZ_E_FAIL.
 *
 * The season rule: QZTimeToTM (and so QZTimeToPosix) sets tm_isdst from the zone's state at the
 * moment of the call, not from the date converted. A date in the other season than today's is
 * therefore read with today's offset: QZTimeToPosix of a winter date, called in summer, is one hour
 * early in most zones, and QZTimeFromPosix of the result gives back an hour that differs.
 *
 * Every export may be called from any thread; none keeps state, and the zone is read afresh on
 * every call (a change of TZ takes effect at once). No argument is checked: a null pointer is a
 * fault, and no field value is validated.
 */
#ifndef QZCORE_QZTIME_H
#define QZCORE_QZTIME_H

#include <time.h>

#include "qzcore/qztypes.h"

/* The calendar record. */
typedef struct QZSystemTime {
  uint16_t wYear;         /* full year, such as 2024 */
  uint16_t wMonth;        /* 1 to 12 */
  uint16_t wDayOfWeek;    /* 0 is Sunday */
  uint16_t wDay;          /* 1 to 31 */
  uint16_t wHour;         /* 0 to 23 */
  uint16_t wMinute;       /* 0 to 59 */
  uint16_t wSecond;       /* 0 to 59 */
  uint16_t wMilliseconds; /* 0 to 999 */
} QZSystemTime;

/* The zone in force, as QZTimeGetZone tells it. */
typedef struct QZTimeZoneInfo {
  int32_t biasSeconds;       /* seconds to add to local time to get UTC (positive west of
                                Greenwich), the bias of the season in force included */
  int16_t daylight;          /* 1 while daylight saving time is in force, else 0 */
  QZWCHAR standardName[32];  /* abbreviation of standard time: at most 31 units and a NUL */
  QZWCHAR daylightName[32];  /* abbreviation of daylight time; empty for a zone without it */
} QZTimeZoneInfo;

QZ_EXTERN_C_BEGIN

/* The current local time / UTC, with milliseconds. Always 0. */
QZ_API QZRESULT QZTimeGetLocal(QZSystemTime* out);
QZ_API QZRESULT QZTimeGetSystem(QZSystemTime* out);

/* Clears *out, then fills it with the zone in force. 0; the mapped failure (record left clear)
 * when the zone cannot be had. */
QZ_API QZRESULT QZTimeGetZone(QZTimeZoneInfo* out);

/* Record to tm: seconds, minutes, hours, day and weekday as they are, tm_mon = wMonth - 1,
 * tm_year = wYear - 1900, tm_isdst = the zone's daylight state NOW (0 if the zone cannot be had).
 * tm_yday and glibc's extra fields keep what the caller's record held; milliseconds are dropped.
 * Always 0. */
QZ_API QZRESULT QZTimeToTM(const QZSystemTime* time, struct tm* out);

/* tm to record: clears all 16 bytes, then takes the low 16 bits of tm_sec, tm_min, tm_hour,
 * tm_mday and tm_wday, wMonth = tm_mon + 1, wYear = tm_year + 1900; tm_yday and tm_isdst are not
 * read, wMilliseconds stays 0. Always 0. */
QZ_API QZRESULT QZTimeFromTM(const struct tm* tm, QZSystemTime* out);

/* Local time to POSIX seconds, with the season rule above. 0; QZ_E_FAIL, with -1 stored in *out,
 * for a time before 1970-01-01 00:00:00 UTC or after 3000-12-31 23:59:59 UTC. */
QZ_API QZRESULT QZTimeToPosix(const QZSystemTime* time, int64_t* out);

/* POSIX seconds to local time (milliseconds 0). Clears *out first. 0; QZ_E_FAIL with the record
 * left clear for a negative value or one after 3000-12-31 23:59:59 UTC. */
QZ_API QZRESULT QZTimeFromPosix(int64_t seconds, QZSystemTime* out);

/* A monotonic count (nanoseconds on Linux) and its counts per second; should the fine clock ever
 * fail, the pair falls back together to milliseconds (QZPerfGetCountMS widened, frequency 1000). */
QZ_API int64_t QZPerfGetCount(void);
QZ_API int64_t QZPerfGetFreq(void);

/* Milliseconds since the system started (suspended time included), cut to 32 bits: wraps to 0
 * after 49.7 days. */
QZ_API uint32_t QZPerfGetCountMS(void);

QZ_EXTERN_C_END

#endif /* QZCORE_QZTIME_H */
