// library.h - loading shared libraries, finding their entry points, and the random source of new
// identifiers: what the component model asks of the platform.
//
// Portable declarations only. Failures set the calling thread's last error in the platform numbers
// (native_error.h): a library that cannot be loaded gives kErrorModNotFound (126), an entry point
// that is not there kErrorProcNotFound (127), whatever the system said about why.
#pragma once

#include <cstddef>

namespace qz::os {

// Loads the library at `utf8Path` (a path with no directory is searched for as the system's loader
// does) with all its symbols resolved at once and kept to itself, or takes one more count on it if
// it is loaded already. The handle, or null with the last error 126 (missing file, not a library, a
// dependency missing, an empty path).
void* LoadLibrary(const char* utf8Path) noexcept;

// Drops one count of a handle LoadLibrary gave; the library leaves memory with its last count.
// False with the last error kErrorInvalidHandle (6) when the system refuses, and for null and -1,
// which are no library. Any other value that is not a handle is not recognised: the system may
// fault on it.
bool FreeLibrary(void* handle) noexcept;

// The address of the entry point `name` that the library itself defines (not one of the libraries
// it depends on), or null with the last error 127; null
// with 126 for a handle of null or -1, which name no library.
void* GetProcAddress(void* handle, const char* name) noexcept;

// Fills `buffer` with `size` bytes from the system's cryptographic random source, waiting for it
// to be ready if it is not yet. False with the last error set when the source fails.
bool FillRandom(void* buffer, size_t size) noexcept;

}  // namespace qz::os
