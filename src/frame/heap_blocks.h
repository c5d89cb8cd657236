// heap_blocks.h - heap blocks with result codes: the work behind QZMalloc and its family.
#pragma once

#include <cstddef>

#include "qzcore/qztypes.h"

namespace qz::core {

QZRESULT HeapAlloc(size_t size, void** result) noexcept;
QZRESULT HeapCalloc(size_t count, size_t size, void** result) noexcept;
QZRESULT HeapRealloc(void** block, size_t size) noexcept;
QZRESULT HeapRecalloc(void** block, size_t size) noexcept;
size_t HeapBlockSize(void* block) noexcept;

}  // namespace qz::core
