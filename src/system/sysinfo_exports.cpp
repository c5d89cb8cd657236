// sysinfo_exports.cpp - the exports of system information: direct calls, no frame, no state.
#include "qzcore/qzsysinfo.h"
#include "system/system_info.h"

extern "C" {

QZ_API QZRESULT QZGetSystemInfo(QZSystemInfo* info, uint32_t size) {
  (void)size;  // not read: the caller gives a whole record
  return qz::core::GetSystemInfo(info);
}

QZ_API QZRESULT QZGetUserName(QZWCHAR* buffer, uint32_t size) { return qz::core::GetUserName(buffer, size); }

}  // extern "C"
