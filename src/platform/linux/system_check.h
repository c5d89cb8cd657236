// system_check.h - ending the process when the system refuses an operation that can only fail
// when an invariant is broken (locking a lock that exists, unlocking a lock the thread holds).
//
// Going on would corrupt state silently; the message names the call and the error, and the
// process aborts so that a core dump shows where.
#pragma once

namespace qz::os {

// Writes "qzcore: fatal: CALL failed: ERROR TEXT" to standard error and aborts.
[[noreturn]] void SystemCallFailed(const char* call, int error) noexcept;

// For calls that return 0 or an error number (the pthread family).
inline void CheckSystemResult(int result, const char* call) noexcept {
  if (__builtin_expect(result != 0, 0)) SystemCallFailed(call, result);
}

}  // namespace qz::os
