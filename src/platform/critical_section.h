// critical_section.h - the recursive lock behind every library mutex.
//
// Contract (every platform): recursive; Enter blocks until the calling thread holds the lock;
// TryEnter never blocks; Leave undoes one Enter or successful TryEnter of the holder. The lock
// counts the acquires that had to wait (the first try failed), readable and resettable. With a spin
// count, a contended Enter retries that many times before it blocks. NativeHandle is the address of
// the platform's own lock object. A lock operation the system refuses ends the process with a
// message: it only fails when an invariant is broken.
//
// The platform's lock object lives in opaque storage whose size and alignment the build measured
// (platform_config.h, generated at configure time), so this header carries no native type and the
// families that hold a lock see no operating-system header.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform_config.h"

namespace qz::os {

class CriticalSection {
 public:
  // spinCount: tries with a CPU pause before a contended Enter blocks (0: block at once).
  explicit CriticalSection(uint32_t spinCount = 0) noexcept;
  ~CriticalSection();
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  void Enter() noexcept;
  bool TryEnter() noexcept;
  void Leave() noexcept;

  uint32_t ContentionCount() const noexcept { return m_contention.load(std::memory_order_relaxed); }
  void ResetContentionCount() noexcept { m_contention.store(0, std::memory_order_relaxed); }
  void* NativeHandle() noexcept { return m_native; }

 private:
  void EnterBusy() noexcept;

  alignas(QZ_NATIVE_LOCK_ALIGN) unsigned char m_native[QZ_NATIVE_LOCK_SIZE];  // the platform's lock
  std::atomic<uint32_t> m_contention{0};  // acquires whose first try failed
  uint32_t m_spinCount;                   // tries before blocking on contention
};

}  // namespace qz::os
