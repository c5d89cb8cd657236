// unit_string.h - the string routines shared by byte and 16-bit text: lengths, bounded copies,
// compares, searches, the tokeniser and the copies on the heap.
//
// Each routine is written once over the unit type. Where the byte family is a plain forward to the
// C library (strncpy, strchr, strstr, ...) the byte overload forwards, and the 16-bit overload is
// the same contract as the C library's wide function, on 16-bit units.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace qz::text {

template <class T>
size_t Length(const T* text) noexcept {
  size_t n = 0;
  while (text[n] != 0) ++n;
  return n;
}

// The length, at most `maximum`; a maximum of 0 reads nothing.
template <class T>
size_t BoundedLength(const T* text, size_t maximum) noexcept {
  size_t n = 0;
  while (n < maximum && text[n] != 0) ++n;
  return n;
}

// strncpy: at most `count` units, the rest of the count filled with NUL, unterminated when the
// source has `count` units or more.
inline char* CopyPadded(char* destination, const char* source, size_t count) noexcept {
  return std::strncpy(destination, source, count);
}
inline char16_t* CopyPadded(char16_t* destination, const char16_t* source, size_t count) noexcept {
  size_t i = 0;
  for (; i < count && source[i] != 0; ++i) destination[i] = source[i];
  for (; i < count; ++i) destination[i] = 0;
  return destination;
}

inline char* Copy(char* destination, const char* source) noexcept {
  return std::strcpy(destination, source);
}
inline char16_t* Copy(char16_t* destination, const char16_t* source) noexcept {
  size_t i = 0;
  while ((destination[i] = source[i]) != 0) ++i;
  return destination;
}

template <class T>
T* Append(T* destination, const T* source) noexcept {
  Copy(destination + Length(destination), source);
  return destination;
}

// strncat: at most `count` units of the source, then always a terminator.
inline char* AppendBounded(char* destination, const char* source, size_t count) noexcept {
  return std::strncat(destination, source, count);
}
inline char16_t* AppendBounded(char16_t* destination, const char16_t* source, size_t count) noexcept {
  char16_t* end = destination + Length(destination);
  size_t i = 0;
  for (; i < count && source[i] != 0; ++i) end[i] = source[i];
  end[i] = 0;
  return destination;
}

// Copy of at most the smaller of size - 1 and `maximum` units, padded with NUL to that count, with
// a NUL at that index. size - 1 is computed unsigned: a size of 0 lets `maximum` alone decide.
template <class T>
T* CopyTerminated(T* destination, size_t size, const T* source, size_t maximum) noexcept {
  const size_t room = size - 1;
  const size_t n = room < maximum ? room : maximum;
  T* result = CopyPadded(destination, source, n);
  destination[n] = 0;
  return result;
}

// Append after the terminator found among the first `size` units; a buffer without one is taken
// as full, and its last unit gives way to the terminator. Returns the address the text went to.
// A size of 0 scans nothing and stores the terminator one unit before the buffer: callers pass a
// real size.
template <class T>
T* AppendTerminated(T* destination, size_t size, const T* source, size_t maximum) noexcept {
  size_t end = BoundedLength(destination, size);
  if (end == size) --end;
  const size_t room = size - end - 1;
  const size_t n = room < maximum ? room : maximum;
  // The index is -1 for a size of 0; signed arithmetic keeps the pointer step well defined.
  T* at = destination + static_cast<ptrdiff_t>(end);
  T* result = CopyPadded(at, source, n);
  at[n] = 0;
  return result;
}

// Order of the units compared as unsigned: -1, 0 or 1.
template <class T>
int32_t CompareOrder(const T* first, const T* second) noexcept {
  using U = std::make_unsigned_t<T>;
  for (;; ++first, ++second) {
    const U a = static_cast<U>(*first);
    const U b = static_cast<U>(*second);
    if (a != b) return a < b ? -1 : 1;
    if (a == 0) return 0;
  }
}

// wcsncmp on 16-bit units: the difference of the first differing units within `count`.
inline int32_t CompareBounded(const char16_t* first, const char16_t* second, size_t count) noexcept {
  for (; count > 0; --count, ++first, ++second) {
    if (*first != *second) return static_cast<int32_t>(*first) - static_cast<int32_t>(*second);
    if (*first == 0) return 0;
  }
  return 0;
}

// wcschr, wcsrchr and wcsstr on 16-bit units; searching for NUL finds the terminator.
inline char16_t* FindUnit(const char16_t* text, char16_t unit) noexcept {
  for (;; ++text) {
    if (*text == unit) return const_cast<char16_t*>(text);
    if (*text == 0) return nullptr;
  }
}
inline char16_t* FindLastUnit(const char16_t* text, char16_t unit) noexcept {
  const char16_t* found = nullptr;
  for (;; ++text) {
    if (*text == unit) found = text;
    if (*text == 0) return const_cast<char16_t*>(found);
  }
}
inline char16_t* FindString(const char16_t* text, const char16_t* sought) noexcept {
  if (*sought == 0) return const_cast<char16_t*>(text);
  for (; *text != 0; ++text) {
    size_t i = 0;
    while (sought[i] != 0 && text[i] == sought[i]) ++i;
    if (sought[i] == 0) return const_cast<char16_t*>(text);
  }
  return nullptr;
}

// Re-entrant tokeniser over a position the caller keeps: skips delimiters, cuts the next token
// off with a NUL and moves the position behind it; the position becomes null at the string's end.
template <class T>
T* NextToken(T** position, const T* delimiters) noexcept {
  const auto isDelimiter = [delimiters](T unit) {
    for (const T* d = delimiters; *d != 0; ++d) {
      if (*d == unit) return true;
    }
    return false;
  };
  T* p = *position;
  if (p == nullptr) return nullptr;
  while (*p != 0 && isDelimiter(*p)) ++p;
  if (*p == 0) {
    *position = nullptr;
    return nullptr;
  }
  T* start = p;
  while (*p != 0 && !isDelimiter(*p)) ++p;
  if (*p != 0) {
    *p = 0;
    *position = p + 1;
  } else {
    *position = nullptr;
  }
  return start;
}

// Concatenates `count` byte strings from `strings` into `destination` (NULL and empty ones skipped)
// and terminates it; returns the length. A null destination returns 0 without reading the list.
size_t ConcatList(char* destination, int32_t count, va_list strings) noexcept;

// Memory for a copy, obtained as the standard operator new obtains it: malloc, then the installed
// new-handler in a loop, then std::bad_alloc. The block is malloc's, so free gives it back.
void* AllocateLikeNew(size_t bytes);

// A new copy of at most `maximum` units of `source` (stopping at its NUL) with a terminator, or
// null for a null source. Throws std::bad_alloc when memory is exhausted.
template <class T>
T* Duplicate(const T* source, size_t maximum) {
  if (source == nullptr) return nullptr;
  const size_t n = BoundedLength(source, maximum);
  // A unit count whose size in bytes overflows asks for all bits set, which cannot be had.
  const size_t bytes = n + 1 > SIZE_MAX / sizeof(T) ? SIZE_MAX : (n + 1) * sizeof(T);
  T* copy = static_cast<T*>(AllocateLikeNew(bytes));
  std::memcpy(copy, source, n * sizeof(T));
  copy[n] = 0;
  return copy;
}

}  // namespace qz::text
