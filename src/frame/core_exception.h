// core_exception.h - EQZCoreException, the library's one exception, and the helpers that throw it.
//
// A routine below an export reports failure by throwing EQZCoreException with a QZRESULT; the
// export frame (export_frame.h) turns it back into the result. Platform failures are thrown with
// the translation of the thread's last error.
#pragma once

#include <cstdint>

#include "qzcore/qztypes.h"

// The library's one exception: exactly one field, no base, no virtual operations.
class EQZCoreException {
 public:
  explicit EQZCoreException(QZRESULT result) noexcept : m_result(result) {}
  QZRESULT m_result;  // the code the export returns
};

namespace qz::core {

// Translation of a platform error number into a QZRESULT (the table behind QZResultFromNative).
QZRESULT ResultFromNative(uint32_t nativeError) noexcept;

// Throws EQZCoreException with `result` when it is a failure.
inline void ThrowIfFailed(QZRESULT result) {
  if (result < 0) throw EQZCoreException(result);
}

// Throws EQZCoreException with the translation of the calling thread's last platform error.
[[noreturn]] void ThrowLastError();

}  // namespace qz::core
