// named_semaphore.h - CQZNamedSemaphore, the counting semaphore that processes share by name.
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
  static constexpr uint32_t kFlagNamed = 2;

  // Opens or creates "SEM:" + name; `initialCount` stands only for the opener that makes it.
  // Throws EQZCoreException: QZ_E_FAIL for a count above kMaxCount, the mapped platform failure.
  CQZNamedSemaphore(const char* name, uint32_t initialCount, uint32_t flags);
  ~CQZNamedSemaphore();
  CQZNamedSemaphore(const CQZNamedSemaphore&) = delete;
  CQZNamedSemaphore& operator=(const CQZNamedSemaphore&) = delete;

  // Takes one, waiting at most `timeoutMs` (0xFFFFFFFF: no limit). 0, QZ_E_TIMEOUT when the time
  // ran out, QZ_E_FAIL when `timeoutMs` is 0 and the count was 0; throws a mapped failure.
  QZRESULT Wait(uint32_t timeoutMs);

  // Adds one and wakes a sleeper. Throws QZ_E_FAIL (too many posts) at kMaxCount.
  void Post();

  bool Created() const { return m_created; }
  const std::string& Name() const { return m_name; }

 private:
  bool TryTake();

  intptr_t m_handle = -1;                       // the platform handle of the object
  std::string m_name;                           // the caller's name, without the prefix
  uint32_t m_flags;                             // as created; 2 marks a named semaphore
  QZNamedSemaphoreShared* m_shared = nullptr;   // the mapped words
  bool m_created = false;                       // this opener made the object
};
