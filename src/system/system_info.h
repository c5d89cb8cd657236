// system_info.h - the machine's figures in a QZSystemInfo, and the name of the process's user.
#pragma once

#include <cstdint>

#include "qzcore/qzsysinfo.h"

namespace qz::core {

// Memory and processor figures always; the version fields only when the version can be had,
// otherwise they keep what they held and the translated error is returned.
QZRESULT GetSystemInfo(QZSystemInfo* info) noexcept;
// The user's name and terminator into `buffer` of `size` units: 0, or the translated failure.
QZRESULT GetUserName(QZWCHAR* buffer, uint32_t size) noexcept;

}  // namespace qz::core
