// tour_time.cpp - tour step: the wall clock, the zone, the conversions with their range and
// today's season rule, and the counters.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "qzcore.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

std::string Text(const QZSystemTime& t) {
  char text[96];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u (weekday %u)", t.wYear, t.wMonth, t.wDay,
                t.wHour, t.wMinute, t.wSecond, t.wMilliseconds, t.wDayOfWeek);
  return text;
}

QZSystemTime Date(uint16_t y, uint16_t mo, uint16_t d, uint16_t h) { return QZSystemTime{y, mo, 0, d, h, 0, 0, 0}; }

void TourTime() {
  QZSystemTime local, utc;
  QZTimeGetLocal(&local);
  QZTimeGetSystem(&utc);
  Show("QZTimeGetLocal", Text(local));
  Show("QZTimeGetSystem (UTC)", Text(utc));
  QZTimeZoneInfo zone;
  const QZRESULT hr = QZTimeGetZone(&zone);
  Show("QZTimeGetZone", Hex(static_cast<uint32_t>(hr)) + ": bias " + std::to_string(zone.biasSeconds) + " s, daylight " +
                            std::to_string(zone.daylight) + ", " + qztool::Utf8(zone.standardName) + "/" +
                            qztool::Utf8(zone.daylightName));

  // The season rule, shown in a zone with daylight saving whatever the machine's zone is.
  const char* oldTz = std::getenv("TZ");
  const std::string savedTz = oldTz != nullptr ? oldTz : "";
  setenv("TZ", "Europe/Berlin", 1);
  QZTimeGetZone(&zone);
  Show("with TZ=Europe/Berlin: QZTimeGetZone", "bias " + std::to_string(zone.biasSeconds) + " s, daylight " +
                                                   std::to_string(zone.daylight));
  int64_t seconds = 0;
  for (const QZSystemTime& date : {Date(2024, 1, 15, 12), Date(2024, 7, 15, 12)}) {
    QZTimeToPosix(&date, &seconds);
    QZSystemTime back;
    QZTimeFromPosix(seconds, &back);
    Show("QZTimeToPosix(" + Text(date).substr(0, 19) + ")", std::to_string(seconds) + ", back: " + Text(back).substr(11, 8));
  }
  Show("  (both dates are read with today's daylight state)", "");
  if (oldTz != nullptr) {
    setenv("TZ", savedTz.c_str(), 1);
  } else {
    unsetenv("TZ");
  }
  const QZSystemTime before = Date(1969, 12, 31, 12), after = Date(3001, 1, 1, 12);
  const QZRESULT early = QZTimeToPosix(&before, &seconds);
  Show("QZTimeToPosix(1969-12-31 12:00)", Hex(static_cast<uint32_t>(early)) + ", out " + std::to_string(seconds));
  Show("QZTimeToPosix(3001-01-01 12:00)", Hex(static_cast<uint32_t>(QZTimeToPosix(&after, &seconds))));
  QZSystemTime last;
  QZTimeFromPosix(32535215999, &last);
  Show("QZTimeFromPosix(32535215999), the last second", Text(last));
  Show("QZTimeFromPosix(-1)", Hex(static_cast<uint32_t>(QZTimeFromPosix(-1, &last))));

  const int64_t frequency = QZPerfGetFreq();
  const int64_t count = QZPerfGetCount();
  Show("QZPerfGetFreq / QZPerfGetCount", std::to_string(frequency) + " / " + std::to_string(count));
  Show("QZPerfGetCountMS (ms since boot, 32 bits)", std::to_string(QZPerfGetCountMS()));
}

}  // namespace

QZ_TOUR_STEP(70, "Time and performance counters", TourTime);
