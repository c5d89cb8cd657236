// waitable.h - the native parts of the library's waitable objects: a monitor (recursive lock and
// condition variable) and one small waitable object that serves events, gates and semaphores.
//
// Portable declarations: the native objects live in opaque storage inside these classes, so the
// families that include this header see no operating-system type. Timeouts are milliseconds on a
// monotonic clock; kInfinite means no limit and 0 means do not block. Failures of operations that
// cannot fail unless an invariant is broken (locking, waking) end the process with a message.
#pragma once

#include <cstdint>

namespace qz::os {

inline constexpr uint32_t kInfinite = 0xFFFFFFFF;

// What a wait on a WaitableObject answers.
enum WaitResult : uint32_t {
  kWaitObject0 = 0,           // signalled: the wait passed (and consumed what its kind consumes)
  kWaitTimeout = 258,         // the time ran out, or nothing was there for a wait of 0
  kWaitFailed = 0xFFFFFFFF,   // the wait could not be made; the last error tells why
};

// A recursive lock with a condition variable on the monotonic clock.
//
// Sleep releases the lock once (a recursive hold keeps it: the caller's error) and takes it again
// before it returns, in every case. It may return without a wake-up: the caller's predicate decides.
class Monitor {
 public:
  Monitor() noexcept;
  ~Monitor();
  Monitor(const Monitor&) = delete;
  Monitor& operator=(const Monitor&) = delete;

  void Enter() noexcept;
  void Leave() noexcept;
  // True when woken (or spuriously); false with the last error set: 1460 (timeout) when the time
  // ran out, the translation of the system's refusal otherwise (a caller that does not hold the
  // lock gets access denied).
  bool Sleep(uint32_t timeoutMs) noexcept;
  void WakeOne() noexcept;
  void WakeAll() noexcept;

 private:
  alignas(16) unsigned char m_storage[128];  // the native lock and condition variable
};

// One waitable object, by kind:
//
//   kind          state            Set                       a wait that passes
//   kAutoReset    signalled or not signalled (stays so)      un-signals: lets one waiter through
//   kManualReset  signalled or not signalled (stays so)      leaves it signalled: lets all through
//   kCounter      count 0..max     adds one; refused at max  takes one
//
// Reset un-signals an event (a counter ignores it). The state lives without waiters: a Set with
// nobody waiting is kept for the next wait, never lost. Any thread may call any operation;
// destroying the object while a thread waits on it is the caller's error.
class WaitableObject {
 public:
  enum class Kind : uint32_t { kAutoReset, kManualReset, kCounter };

  // `initial`: 0 or 1 for an event, the starting count (<= maximum) for a counter.
  WaitableObject(Kind kind, uint32_t initial, uint32_t maximum = 1) noexcept;
  ~WaitableObject();
  WaitableObject(const WaitableObject&) = delete;
  WaitableObject& operator=(const WaitableObject&) = delete;

  // Signals an event, or adds one to a counter. False (last error 298, too many posts) when a
  // counter is at its maximum; the count stays.
  bool Set() noexcept;
  void Reset() noexcept;
  // Waits up to `timeoutMs`: kWaitObject0, kWaitTimeout, or kWaitFailed with the last error set
  // (the clock could not be read).
  uint32_t Wait(uint32_t timeoutMs) noexcept;

 private:
  alignas(16) unsigned char m_storage[128];  // native lock, condition variable, kind, state
};

}  // namespace qz::os
