// time.h - the time family's work: the wall clock, the zone, and the conversions between the
// calendar record, the C library's tm and POSIX seconds.
//
// Stateless and lock-free; the exports and the rest of the library (file times, the statistics
// dump) call these directly. Results are those of the exports in qzcore/qztime.h.
#pragma once

#include <cstdint>
#include <ctime>

#include "qzcore/qztime.h"

namespace qz::core {

void TimeGetLocal(QZSystemTime* out) noexcept;
void TimeGetSystem(QZSystemTime* out) noexcept;
// 0, or the mapped failure with *out left clear.
QZRESULT TimeGetZone(QZTimeZoneInfo* out) noexcept;
// tm_isdst from the zone's state now; tm_yday untouched. Always 0.
QZRESULT TimeToTM(const QZSystemTime* time, std::tm* out) noexcept;
QZRESULT TimeFromTM(const std::tm* tm, QZSystemTime* out) noexcept;
// Local time to POSIX seconds: 0, or QZ_E_FAIL with -1 in *out outside 1970..3000.
QZRESULT TimeToPosix(const QZSystemTime* time, int64_t* out) noexcept;
// POSIX seconds to local time: 0, or QZ_E_FAIL with *out clear outside 1970..3000.
QZRESULT TimeFromPosix(int64_t seconds, QZSystemTime* out) noexcept;

int64_t PerfGetCount() noexcept;
int64_t PerfGetFreq() noexcept;
uint32_t PerfGetCountMS() noexcept;

}  // namespace qz::core
