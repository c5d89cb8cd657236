// ref_counted.h - CQZCoreRefCounted, the root of the object layer, and CQZRef, its holder.
//
// The object carries only a 32-bit count and a virtual destructor; holders change the count by
// atomic add, and the holder that takes it from 1 to 0 destroys the object. CQZRef is the local
// holder that releases what it holds when an exception passes.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

class CQZCoreRefCounted {
 public:
  CQZCoreRefCounted() noexcept = default;
  CQZCoreRefCounted(const CQZCoreRefCounted&) = delete;
  CQZCoreRefCounted& operator=(const CQZCoreRefCounted&) = delete;
  virtual ~CQZCoreRefCounted() = default;

  std::atomic<uint32_t> m_refCount{0};  // references held; starts at 0
};

namespace qz::core {

// Adds one reference; returns the new count.
inline uint32_t AddRef(CQZCoreRefCounted* object) noexcept {
  return object->m_refCount.fetch_add(1, std::memory_order_relaxed) + 1;
}

// Drops one reference and destroys the object when it was the last; returns the count left.
inline uint32_t Release(CQZCoreRefCounted* object) noexcept {
  const uint32_t before = object->m_refCount.fetch_sub(1, std::memory_order_acq_rel);
  if (before == 1) delete object;
  return before - 1;
}

// A local holder of one reference, released at scope exit unless Detach()ed.
template <class T>
class CQZRef {
 public:
  CQZRef() noexcept = default;
  ~CQZRef() { Reset(); }
  CQZRef(const CQZRef&) = delete;
  CQZRef& operator=(const CQZRef&) = delete;

  // Address for an out-parameter that receives an already counted reference.
  T** Receive() noexcept {
    Reset();
    return &m_object;
  }
  T* Get() const noexcept { return m_object; }
  T* operator->() const noexcept { return m_object; }
  T* Detach() noexcept { return std::exchange(m_object, nullptr); }
  void Reset() noexcept {
    if (m_object != nullptr) Release(std::exchange(m_object, nullptr));
  }

 private:
  T* m_object = nullptr;  // one counted reference, or null
};

}  // namespace qz::core
