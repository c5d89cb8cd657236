// heap_blocks.cpp - heap blocks with result codes; QZRecalloc grows a block and zeroes what the
// heap added, judged by the heap's usable sizes before and after.
#include "frame/heap_blocks.h"

#include <cstdlib>
#include <cstring>

#include "platform/heap.h"

namespace qz::core {

QZRESULT HeapAlloc(size_t size, void** result) noexcept {
  *result = std::malloc(size);
  return *result != nullptr ? QZ_S_OK : QZ_E_OUTOFMEMORY;
}

QZRESULT HeapCalloc(size_t count, size_t size, void** result) noexcept {
  *result = std::calloc(count, size);
  return *result != nullptr ? QZ_S_OK : QZ_E_OUTOFMEMORY;
}

QZRESULT HeapRealloc(void** block, size_t size) noexcept {
  void* resized = std::realloc(*block, size);
  // With size 0 realloc frees the block, and its null answer is no failure.
  if (resized == nullptr && size != 0) return QZ_E_OUTOFMEMORY;
  *block = resized;
  return QZ_S_OK;
}

QZRESULT HeapRecalloc(void** block, size_t size) noexcept {
  if (*block == nullptr) {
    *block = std::calloc(size, 1);
    return *block != nullptr ? QZ_S_OK : QZ_E_OUTOFMEMORY;
  }
  if (size == 0) {
    std::free(*block);  // the caller's pointer is left as it was
    return QZ_S_OK;
  }
  const size_t oldSize = os::HeapUsableSize(*block);
  if (oldSize == 0 || oldSize == static_cast<size_t>(-1)) return QZ_E_POINTER;
  const QZRESULT result = HeapRealloc(block, size);
  if (result < 0) return result;
  const size_t newSize = os::HeapUsableSize(*block);
  if (newSize == static_cast<size_t>(-1) || newSize <= oldSize) return QZ_S_OK;
  std::memset(static_cast<char*>(*block) + oldSize, 0, newSize - oldSize);
  return QZ_S_OK;
}

size_t HeapBlockSize(void* block) noexcept {
  const size_t size = os::HeapUsableSize(block);
  return size == static_cast<size_t>(-1) ? 0 : size;
}

}  // namespace qz::core
