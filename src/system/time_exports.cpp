// time_exports.cpp - the exported functions of the time family: direct calls with no frame, no
// lock and no state.
#include "qzcore/qztime.h"
#include "system/time.h"

extern "C" {

QZ_API QZRESULT QZTimeGetLocal(QZSystemTime* out) {
  qz::core::TimeGetLocal(out);
  return QZ_S_OK;
}

QZ_API QZRESULT QZTimeGetSystem(QZSystemTime* out) {
  qz::core::TimeGetSystem(out);
  return QZ_S_OK;
}

QZ_API QZRESULT QZTimeGetZone(QZTimeZoneInfo* out) { return qz::core::TimeGetZone(out); }
QZ_API QZRESULT QZTimeToTM(const QZSystemTime* time, struct tm* out) { return qz::core::TimeToTM(time, out); }
QZ_API QZRESULT QZTimeFromTM(const struct tm* tm, QZSystemTime* out) { return qz::core::TimeFromTM(tm, out); }
QZ_API QZRESULT QZTimeToPosix(const QZSystemTime* time, int64_t* out) { return qz::core::TimeToPosix(time, out); }
QZ_API QZRESULT QZTimeFromPosix(int64_t seconds, QZSystemTime* out) { return qz::core::TimeFromPosix(seconds, out); }
QZ_API int64_t QZPerfGetCount(void) { return qz::core::PerfGetCount(); }
QZ_API int64_t QZPerfGetFreq(void) { return qz::core::PerfGetFreq(); }
QZ_API uint32_t QZPerfGetCountMS(void) { return qz::core::PerfGetCountMS(); }

}  // extern "C"
