// ticks.cpp - tick sources on POSIX: CLOCK_MONOTONIC in nanoseconds, CLOCK_BOOTTIME for the
// millisecond counter.
#include "platform/ticks.h"

#include <cerrno>

#include "errno_map.h"
#include "syscalls.h"

namespace qz::os {

bool QueryPerformanceCounter(int64_t* ticks) noexcept {
  struct timespec ts;
  if (sys::clock_gettime(CLOCK_MONOTONIC, &ts) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  *ticks = static_cast<int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
  return true;
}

bool QueryPerformanceFrequency(int64_t* frequency) noexcept {
  *frequency = 1000000000;
  return true;
}

uint32_t GetTickCount() noexcept {
  struct timespec ts;
  if (sys::clock_gettime(CLOCK_BOOTTIME, &ts) != 0 && sys::clock_gettime(CLOCK_MONOTONIC, &ts) != 0) ts = {};
  const uint64_t ms = static_cast<uint64_t>(ts.tv_sec) * 1000 + static_cast<uint64_t>(ts.tv_nsec) / 1000000;
  return static_cast<uint32_t>(ms);
}

}  // namespace qz::os
