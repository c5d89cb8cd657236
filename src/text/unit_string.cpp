// unit_string.cpp - the byte concatenation of a list, and the allocation behind the string copies.
#include "text/unit_string.h"

#include <cstdlib>
#include <new>

namespace qz::text {

size_t ConcatList(char* destination, int32_t count, va_list strings) noexcept {
  if (destination == nullptr) return 0;
  char* end = destination;
  *end = 0;
  for (int32_t i = 0; i < count; ++i) {
    const char* text = va_arg(strings, const char*);
    if (text == nullptr) continue;
    while (*text != 0) *end++ = *text++;
  }
  *end = 0;
  return static_cast<size_t>(end - destination);
}

void* AllocateLikeNew(size_t bytes) {
  if (bytes == 0) bytes = 1;
  for (;;) {
    if (void* block = std::malloc(bytes)) return block;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}

}  // namespace qz::text
