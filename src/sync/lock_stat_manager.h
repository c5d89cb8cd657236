// lock_stat_manager.h - CQZLockStatManager, the register of every mutex that keeps statistics.
//
// Entries are keyed by kind (live 0, retired 4) and then address, so live mutexes come first. A
// live entry borrows the handle's reference; a retired entry owns it. The manager's own mutex is a
// leaf: nothing else is locked while it is held.
#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "qzcore/qztypes.h"

class IMutex;

class CQZLockStatManager {
 public:
  static constexpr int32_t kLive = 0;     // held by its user's handle ("QZ_MUTEX")
  static constexpr int32_t kRetired = 4;  // destroyed by its user, kept by the manager ("QZ_DEL_MUTEX")

  CQZLockStatManager();
  ~CQZLockStatManager();
  CQZLockStatManager(const CQZLockStatManager&) = delete;
  CQZLockStatManager& operator=(const CQZLockStatManager&) = delete;

  // Finds or inserts (kind, mutex); touches no reference count. Failures leave the entry missing.
  void SetEntry(int32_t kind, IMutex* mutex) noexcept;
  // Removes (kind, mutex) if present. Failures are dropped.
  void EraseEntry(int32_t kind, IMutex* mutex) noexcept;
  // SetEntry with the new kind, then EraseEntry with the old one.
  void RetireEntry(int32_t newKind, int32_t oldKind, IMutex* mutex) noexcept;
  // Ends every retired mutex's life and zeroes the figures of the live ones.
  void ResetAll();
  // Appends one block of comma-separated text to `path` (null: "qzlockstats.csv" in the current
  // directory) under `label` (null: "LockStatsDump"): a head, one row per entry in register order,
  // a tail. Figures are read without taking the mutexes. Returns the result of converting the
  // time of the head (0). Throws: a file that cannot be opened, written or closed (a non-library
  // exception, so the frame answers QZ_E_FAIL), allocation failures. What was written stays.
  QZRESULT Dump(const char* label, const char16_t* path);

  using Key = std::pair<int32_t, uint64_t>;  // kind, then the mutex's address
  // A copy of the entries in register order, taken under the manager's mutex.
  std::map<Key, IMutex*> Snapshot() const;
  QZMutexHandle Mutex() const noexcept { return m_mutex; }

 private:
  QZMutexHandle m_mutex = nullptr;     // guards the map; created without statistics
  std::map<Key, IMutex*> m_entries;    // kind and address to the mutex
};
