// mutex_provider.h - IMutexProvider and CQZMutexProvider, the one factory of every mutex.
//
// The provider masks the flags (NOSTATS clears STATS) and picks the class by the flag bits alone:
// CHECKED or STATS build CQZCoreMutexChecked, anything else CQZCoreMutexImpl.
#pragma once

#include <cstdint>

#include "frame/ref_counted.h"
#include "qzcore/qztypes.h"

class IMutex;

class IMutexProvider : public CQZCoreRefCounted {
 public:
  // Makes a mutex with one reference in *out and returns 0; throws (out of memory) with *out
  // untouched.
  virtual QZRESULT Create(const char* name, uint32_t flags, IMutex** out) = 0;
};

namespace qz::core {

class CQZMutexProvider : public IMutexProvider {
 public:
  QZRESULT Create(const char* name, uint32_t flags, IMutex** out) override;
};

}  // namespace qz::core
