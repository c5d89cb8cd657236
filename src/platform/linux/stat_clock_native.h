// stat_clock_native.h - the statistics clock on Linux: the invariant time-stamp counter on x86-64
// (rdtsc, calibrated once against CLOCK_MONOTONIC), the virtual counter on aarch64 (cntvct_el0,
// with its architectural frequency), and CLOCK_MONOTONIC nanoseconds elsewhere or where the x86
// counter is not invariant.
#pragma once

#include <atomic>
#include <cstdint>

#if defined(__x86_64__)
#include <x86intrin.h>
#endif

namespace qz::os {

namespace detail {
// True once StatClockFrequency() chose the x86 time-stamp counter.
extern std::atomic<bool> g_statClockUsesTsc;
// CLOCK_MONOTONIC in nanoseconds.
int64_t StatClockFallbackTicks() noexcept;
}  // namespace detail

int64_t StatClockFrequency() noexcept;

inline int64_t StatClockTicks() noexcept {
#if defined(__x86_64__)
  if (__builtin_expect(detail::g_statClockUsesTsc.load(std::memory_order_relaxed), 1)) {
    return static_cast<int64_t>(__rdtsc());
  }
  return detail::StatClockFallbackTicks();
#elif defined(__aarch64__)
  uint64_t ticks;
  asm volatile("isb\n\tmrs %0, cntvct_el0" : "=r"(ticks)::"memory");
  return static_cast<int64_t>(ticks);
#else
  return detail::StatClockFallbackTicks();
#endif
}

}  // namespace qz::os
