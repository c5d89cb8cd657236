// ticks.h - the monotonic tick source with its frequency, and the 32-bit millisecond counter.
#pragma once

#include <cstdint>

namespace qz::os {

// Current ticks of a monotonic clock; false (last error set) if the clock cannot be read.
bool QueryPerformanceCounter(int64_t* ticks) noexcept;
// Ticks per second of QueryPerformanceCounter; false (last error set) while that clock cannot be
// read, so the two fail together.
bool QueryPerformanceFrequency(int64_t* frequency) noexcept;
// Milliseconds since the system started, cut to 32 bits.
uint32_t GetTickCount() noexcept;

}  // namespace qz::os
