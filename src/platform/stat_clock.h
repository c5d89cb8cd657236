// stat_clock.h - the statistics clock: the cheapest monotonic tick source the processor offers,
// for the timing figures of mutexes with statistics.
//
// Contract (every platform): StatClockFrequency() picks the source and gives its ticks per
// second; it is settled once per process (thread-safe; later calls return the same value) and must
// have been called before the first StatClockTicks(). StatClockTicks() is monotonic for the whole
// process and costs a few instructions where the processor has a usable counter; elsewhere it is
// the monotonic system clock. Figures are converted with the frequency when they are read, so the
// unit of a tick never reaches a caller.
#pragma once

#include <cstdint>

namespace qz::os {

int64_t StatClockFrequency() noexcept;
int64_t StatClockTicks() noexcept;

}  // namespace qz::os
