// heap.cpp - heap block sizes from glibc's malloc_usable_size.
#include "platform/heap.h"

#include <malloc.h>

namespace qz::os {

size_t HeapUsableSize(void* block) noexcept {
  if (block == nullptr) return static_cast<size_t>(-1);
  return malloc_usable_size(block);
}

}  // namespace qz::os
