// last_error.h - the calling thread's last platform error, in the numbers of native_error.h.
//
// Every platform operation that fails sets it (a POSIX layer translates errno); the logic reads it
// right after the failing call, usually through qz::core::ThrowLastError().
#pragma once

#include <cstdint>

namespace qz::os {

uint32_t GetLastError() noexcept;
void SetLastError(uint32_t error) noexcept;

}  // namespace qz::os
