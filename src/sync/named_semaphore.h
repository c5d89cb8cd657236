// named_semaphore.h - CQZNamedSemaphore, the native part of a semaphore that processes share by
// name (CQZSemaphore of waitable.h is the object behind a handle and keeps the name and flags).
//
// The count lives in a named object of its own ("SEM:<name>"): one 32-bit word that waiters sleep
// on with the platform's shared-word wait, and a count of sleepers so that a post with nobody
// asleep costs no system call. No lock is held across a wait, so a process killed while it waits
// (or anywhere else) leaves nothing that blocks the others; a sleeper it leaves counted only costs
// a spare wake-up.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "qzcore/qztypes.h"

// The words shared by every holder, at offset 0 of the object.
struct QZNamedSemaphoreShared {
  std::atomic<uint32_t> count;    // 0..QZ_NAMED_SEM_MAX_COUNT
  std::atomic<uint32_t> sleepers; // waiters that may be asleep on `count`
};

class CQZNamedSemaphore {
 public:
  static constexpr uint32_t kMaxCount = 32767;

  // Opens or creates the object `objectName` (prefix included); `initialCount` (at most
  // kMaxCount, which the caller checked) stands only for the opener that makes it. Throws
  // EQZCoreException with the mapped platform failure.
  CQZNamedSemaphore(const std::string& objectName, uint32_t initialCount);
  ~CQZNamedSemaphore();
  CQZNamedSemaphore(const CQZNamedSemaphore&) = delete;
  CQZNamedSemaphore& operator=(const CQZNamedSemaphore&) = delete;

  // Takes one, waiting at most `timeoutMs` (0xFFFFFFFF: no limit). True when a unit was taken,
  // false when the time ran out (at once for 0 and a count of 0); throws a mapped failure.
  bool Wait(uint32_t timeoutMs);

  // Adds one and wakes a sleeper. Throws QZ_E_FAIL (too many posts) at kMaxCount.
  void Post();

  bool Created() const { return m_created; }

 private:
  bool TryTake();

  intptr_t m_handle = -1;                       // the platform handle of the object
  QZNamedSemaphoreShared* m_shared = nullptr;   // the mapped words
  bool m_created = false;                       // this opener made the object
};
