// host_name.h - the host name as bytes and as 16-bit text.
#pragma once

#include <cstdint>

#include "platform/host_network.h"
#include "qzcore/qztypes.h"

namespace qz::core {

// The host name into `buffer` of `size` bytes with its terminator: 0; QZ_E_FAIL when it does not
// fit (buffer untouched); the translation of the system's error when the name cannot be read.
QZRESULT GetHostNameA(char* buffer, int32_t size) noexcept;

// The same, converted to 16-bit text; `size` in units, compared with the length in bytes.
QZRESULT GetHostNameW(QZWCHAR* buffer, int32_t size) noexcept;

}  // namespace qz::core
