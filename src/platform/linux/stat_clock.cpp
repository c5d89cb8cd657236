// stat_clock.cpp - the statistics clock on Linux: the invariant time-stamp counter on x86-64
// (rdtsc, calibrated once against CLOCK_MONOTONIC), the virtual counter on aarch64 (cntvct_el0,
// with its architectural frequency), and CLOCK_MONOTONIC nanoseconds elsewhere or where the x86
// counter is not invariant.
#include "platform/stat_clock.h"

#include <atomic>

#if defined(__x86_64__)
#include <cpuid.h>
#include <x86intrin.h>
#endif

#include "syscalls.h"

namespace qz::os {
namespace detail {

// True once StatClockFrequency() chose the x86 time-stamp counter.
std::atomic<bool> g_statClockUsesTsc{false};

// CLOCK_MONOTONIC in nanoseconds.
int64_t StatClockFallbackTicks() noexcept {
  struct timespec now {};
  if (sys::clock_gettime(CLOCK_MONOTONIC, &now) != 0) return 0;
  return static_cast<int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

}  // namespace detail

namespace {

#if defined(__x86_64__)
// The counter ticks at one rate in every power state and on every core ("invariant TSC").
bool TscIsInvariant() noexcept {
  unsigned eax, ebx, ecx, edx;
  if (__get_cpuid(0x80000000, &eax, &ebx, &ecx, &edx) == 0 || eax < 0x80000007) return false;
  __get_cpuid(0x80000007, &eax, &ebx, &ecx, &edx);
  return (edx & (1u << 8)) != 0;
}

// One reading of the counter bracketed by two of the monotonic clock, retried until the bracket is
// tight (no preemption in between): the counter and the clock's midpoint.
void Sample(uint64_t* tsc, int64_t* nanoseconds) noexcept {
  for (int attempt = 0;; ++attempt) {
    const int64_t before = detail::StatClockFallbackTicks();
    *tsc = __rdtsc();
    const int64_t after = detail::StatClockFallbackTicks();
    *nanoseconds = before + (after - before) / 2;
    if (after - before < 2000 || attempt == 100) return;
  }
}

// Counter ticks per second, measured against CLOCK_MONOTONIC over about 5 ms.
int64_t CalibrateTsc() noexcept {
  uint64_t tsc0, tsc1;
  int64_t ns0, ns1;
  Sample(&tsc0, &ns0);
  do {
    Sample(&tsc1, &ns1);
  } while (ns1 - ns0 < 5000000);
  return static_cast<int64_t>(static_cast<__int128>(tsc1 - tsc0) * 1000000000 / (ns1 - ns0));
}
#endif

int64_t ChooseSource() noexcept {
#if defined(__x86_64__)
  if (TscIsInvariant()) {
    const int64_t frequency = CalibrateTsc();
    if (frequency > 0) {
      detail::g_statClockUsesTsc.store(true, std::memory_order_relaxed);
      return frequency;
    }
  }
  return 1000000000;
#elif defined(__aarch64__)
  uint64_t frequency;
  asm volatile("mrs %0, cntfrq_el0" : "=r"(frequency));
  return static_cast<int64_t>(frequency);
#else
  return 1000000000;
#endif
}

}  // namespace

int64_t StatClockTicks() noexcept {
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

int64_t StatClockFrequency() noexcept {
  static const int64_t s_frequency = ChooseSource();  // once, thread-safe
  return s_frequency;
}

}  // namespace qz::os
