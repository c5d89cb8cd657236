// mutex.h - IMutex, the one interface of every library mutex, and its plain implementation.
//
// qz::core::CQZMutex keeps the flags and the name; CQZCoreMutexImpl adds the platform lock and
// nothing else, so a plain acquire is one virtual call and one lock. Checks and statistics live in
// CQZCoreMutexChecked (mutex_checked.h). A QZMutexHandle is the address of the IMutex.
#pragma once

#include <cstdint>
#include <string>

#include "frame/ref_counted.h"
#include "platform/critical_section.h"
#include "qzcore/qzmutex.h"

class IMutex : public CQZCoreRefCounted {
 public:
  virtual QZRESULT Acquire() = 0;
  virtual QZRESULT TryAcquire() = 0;
  virtual QZRESULT Release() = 0;
  virtual QZRESULT GetStats(QZMutexStats* stats) = 0;
  virtual void ResetStats() = 0;
  virtual int32_t AssertOwnership(QZBOOL16 expected) = 0;
  virtual std::string GetName() const = 0;
  virtual uint32_t GetFlags() const = 0;
  virtual uint32_t IsStatsExcluded() const = 0;
  virtual void* GetOSMutex() = 0;
};

inline IMutex* MutexFromHandle(QZMutexHandle handle) noexcept { return reinterpret_cast<IMutex*>(handle); }
inline QZMutexHandle HandleFromMutex(IMutex* mutex) noexcept { return reinterpret_cast<QZMutexHandle>(mutex); }

namespace qz::core {

class CQZMutex : public IMutex {
 public:
  CQZMutex(std::string name, uint32_t flags) : m_flags(flags), m_name(std::move(name)) {}

  std::string GetName() const override { return m_name; }
  uint32_t GetFlags() const override { return m_flags; }
  uint32_t IsStatsExcluded() const override { return (m_flags & QZ_MUTEX_NOSTATS) != 0 ? 1 : 0; }

 protected:
  uint32_t m_flags;    // the effective flags, after the provider's masking
  std::string m_name;  // private copy of the name; the platform never sees it
};

}  // namespace qz::core

class CQZCoreMutexImpl : public qz::core::CQZMutex {
 public:
  static constexpr uint32_t kSpinCount = 4000;

  CQZCoreMutexImpl(std::string name, uint32_t flags)
      : CQZMutex(std::move(name), flags), m_criticalSection((flags & QZ_MUTEX_SPIN) != 0 ? kSpinCount : 0) {}

  QZRESULT Acquire() override;
  QZRESULT TryAcquire() override;
  QZRESULT Release() override;
  QZRESULT GetStats(QZMutexStats* stats) override;
  void ResetStats() override;
  int32_t AssertOwnership(QZBOOL16 expected) override;
  void* GetOSMutex() override;
  qz::os::CriticalSection& PlatformLock() noexcept { return m_criticalSection; }

 protected:
  qz::os::CriticalSection m_criticalSection;  // the platform lock
};
