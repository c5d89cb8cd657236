// waitable.h - the library's waitable objects: CQZCondition (a monitor), CQZEvent (auto or manual
// reset), CQZGate (a manual-reset event that starts closed) and CQZSemaphore (a counter, maximum
// 32767, private to the process or shared by name). The exports of qzcore/qzwaitable.h are thin over these; other families (thread
// hand-over, the reader/writer lock) use them from C++ directly.
//
// Contracts shared by all four:
// - Timeouts are milliseconds on a monotonic clock; qz::os::kInfinite (0xFFFFFFFF) waits without
//   limit and 0 never blocks.
// - Failures are thrown as EQZCoreException with the mapped platform failure; a timeout is NOT a
//   failure at this level: Wait answers false.
// - Every operation but construction and destruction may run on any thread at any time;
//   destroying an object while another thread waits on it is the caller's error. The name is a
//   private copy for diagnostics (null as empty) and nothing reads it back; the flags are kept
//   as given. Only a named semaphore hands its name on, to the object other processes open.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "platform/waitable.h"
#include "sync/named_semaphore.h"

// A lock and a condition variable in one object. The lock is recursive; a wait gives it up once
// and holds it again on every return, timeout included. A wait may return without a signal, and a
// signal with nobody waiting is lost: the caller's predicate, tested under the lock, decides.
class CQZCondition {
 public:
  CQZCondition(std::string name, uint32_t flags) : m_name(std::move(name)), m_flags(flags) {}

  void Acquire() noexcept { m_monitor.Enter(); }
  void Release() noexcept { m_monitor.Leave(); }
  // The caller holds the lock exactly once. Throws QZ_E_TIMEOUT when the time runs out (the lock
  // is held again), the mapped failure otherwise (a caller that does not hold the lock gets
  // QZ_E_ACCESSDENIED).
  void Wait(uint32_t timeoutMs);
  void Signal() noexcept { m_monitor.WakeOne(); }     // no lock needed
  void Broadcast() noexcept { m_monitor.WakeAll(); }  // no lock needed

 private:
  std::string m_name;          // private copy; never read back
  [[maybe_unused]] uint32_t m_flags;            // stored, never read
  qz::os::Monitor m_monitor;   // the monitor lock and the wait queue
};

// An event: a signal that keeps its state with nobody waiting (a Signal is never lost).
//   auto reset (flags without kManualResetFlag): a passing wait closes it behind the one waiter
//     it lets through; two Signals before any wait let exactly one waiter through.
//   manual reset: stays signalled through any number of waits, until Reset.
// Starts not signalled.
class CQZEvent {
 public:
  static constexpr uint32_t kManualResetFlag = 2;

  CQZEvent(std::string name, uint32_t flags)
      : CQZEvent(std::move(name), flags, (flags & kManualResetFlag) != 0) {}
  virtual ~CQZEvent() = default;  // a gate handle may reach QZEventDestroy
  CQZEvent(const CQZEvent&) = delete;
  CQZEvent& operator=(const CQZEvent&) = delete;

  void Signal() noexcept { m_handle.Set(); }
  void Reset() noexcept { m_handle.Reset(); }
  // True when the event let the caller through (an auto-reset one is closed again), false when
  // `timeoutMs` ran out first (at once for 0). Throws the mapped failure.
  bool Wait(uint32_t timeoutMs);

 protected:
  CQZEvent(std::string name, uint32_t flags, bool manualReset);

 private:
  qz::os::WaitableObject m_handle;  // the native event
  std::string m_name;               // private copy; never read back
  [[maybe_unused]] uint32_t m_flags;                 // bit 2: manual reset
};

// A gate: a level that a controller opens and closes; waits pass while it is open and consume
// nothing. Born closed; only Open and Close change it. (The same native object as a manual-reset
// event; the flags are stored and change nothing.)
class CQZGate final : public CQZEvent {
 public:
  CQZGate(std::string name, uint32_t flags) : CQZEvent(std::move(name), flags, true) {}

  void Open() noexcept { Signal(); }
  void Close() noexcept { Reset(); }
  // True at once when open, false when closed; never blocks.
  bool TryWait() { return Wait(0); }
};

// A counting semaphore with the maximum count 32767: one object for both kinds, so every
// semaphore operation and both close exports take either. The bit kNamedFlag of the flags chooses
// the native part: clear, a counter private to the process; set, the object "SEM:" + name that
// every process opening that name shares (opened when it exists; only its maker's count stands).
class CQZSemaphore {
 public:
  static constexpr uint32_t kMaxCount = 32767;
  static constexpr uint32_t kNamedFlag = 2;

  // Throws QZ_E_FAIL (invalid parameter) for an initial count above kMaxCount, and for a named one
  // the mapped failure of the open.
  CQZSemaphore(uint32_t initialCount, std::string name, uint32_t flags);
  CQZSemaphore(const CQZSemaphore&) = delete;
  CQZSemaphore& operator=(const CQZSemaphore&) = delete;

  // Adds one and lets one waiter through. Throws QZ_E_FAIL (too many posts) at kMaxCount, and the
  // count stays.
  void Post();
  // True when a unit was taken, false when `timeoutMs` ran out first (at once for 0). Throws the
  // mapped failure.
  bool Wait(uint32_t timeoutMs);

 private:
  using Native = std::variant<qz::os::WaitableObject, CQZNamedSemaphore>;
  static Native MakeNative(uint32_t initialCount, const std::string& name, uint32_t flags);

  Native m_handle;     // the native counter, or the shared one of a named semaphore
  std::string m_name;  // private copy; a named semaphore's object name is made from it
  [[maybe_unused]] uint32_t m_flags;    // stored; only kNamedFlag is read
};
