// heap.h - what the platform's C heap can tell about a block.
#pragma once

#include <cstddef>

namespace qz::os {

// Usable size of a heap block from malloc/calloc/realloc (at least what was asked for), or
// (size_t)-1 when the heap cannot say.
size_t HeapUsableSize(void* block) noexcept;

}  // namespace qz::os
