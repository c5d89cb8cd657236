// thread.h - starting, joining and detaching native threads, sleeping, and the calling thread's
// processor affinity.
//
// Portable declarations: a native thread is an opaque pointer-sized value, so the families that
// include this header see no operating-system type. Failures return false with the last error set
// in the first platform's numbers.
#pragma once

#include <cstdint>

namespace qz::os {

// A started thread as the platform knows it, good for one join or one detach.
using NativeThread = uintptr_t;

// Stands for "the calling thread", whichever thread uses it: the value that the record of the
// thread that loaded the library holds. A join of it is a join of the caller by itself; a detach
// of it gives up nothing.
inline constexpr NativeThread kCurrentThreadPseudo = static_cast<NativeThread>(-2);

// What runs on a new thread; its result becomes the thread's 32-bit exit code. It may throw or
// leave through the platform's thread exit: neither is caught here.
using ThreadRoutine = uint32_t (*)(void* argument);

// Starts `routine(argument)` on a new thread with a stack of at least `stackSize` bytes (0: the
// default; sizes below the platform's minimum are raised to it). Returns once the new thread's id
// is known, with the id in *id (never 0) and the thread in *thread; the routine may already be
// running. False with the last error set (8, not enough memory, when the system has no room for
// another thread) and nothing started.
bool StartThread(uint32_t stackSize, ThreadRoutine routine, void* argument, NativeThread* thread,
                 uint32_t* id) noexcept;

// Waits for the thread to end and gives back its resources; *exitCode (may be null) gets the low
// 32 bits of what it returned or passed to the thread exit. A join of kCurrentThreadPseudo or of
// the caller itself never returns, as a wait for oneself cannot end. False with the last error
// set; the thread is then untouched.
bool JoinThread(NativeThread thread, uint32_t* exitCode) noexcept;

// Lets the thread's resources go when it ends; nobody may join it afterwards. kCurrentThreadPseudo
// needs nothing and succeeds. False with the last error set.
bool DetachThread(NativeThread thread) noexcept;

// Blocks the calling thread for `milliseconds` (signals do not cut it short); 0 gives up the rest
// of the time slice, 0xFFFFFFFF sleeps for ever.
void SleepMilliseconds(uint32_t milliseconds) noexcept;

// Restricts the calling thread to the processors whose bits are set (bit N: processor N, for
// N < 64). *previous (may be null) gets the mask in force before, as the same 64 bits. False with
// the last error set (87 for a mask of no usable processor); the affinity then stays.
bool SetThreadAffinity(uint64_t mask, uint64_t* previous) noexcept;

}  // namespace qz::os
