// library.cpp - shared libraries through the dynamic loader (dlopen, dlsym, dlclose) and random
// bytes from getrandom, for Linux with glibc.
//
// The loader sets no errno: its failures are given the first platform's numbers here, 126 for a
// library that cannot be loaded and 127 for a missing entry point.
#include "platform/library.h"

#include <cerrno>
#include <cstdint>

#include <link.h>

#include "errno_map.h"
#include "io.h"
#include "platform/last_error.h"
#include "platform/native_error.h"
#include "syscalls.h"

namespace qz::os {
namespace {

// The values that the loader reads as "search the global scope" (null) and "search behind the
// caller" (-1, which is also the library's "no handle"): neither is a library that was opened, so
// they are refused here; dlclose would fault on them and dlsym would search other libraries.
bool IsLoaderPseudoHandle(void* handle) noexcept {
  return handle == nullptr || handle == reinterpret_cast<void*>(~uintptr_t{0});
}

// Whether `address`, which dlsym found from `handle`, lies in that library itself. dlsym also
// searches the libraries it depends on (the C library among them); the first platform finds only
// what the library itself exports.
bool DefinedIn(void* handle, const void* address) noexcept {
  struct link_map* own = nullptr;
  if (sys::dlinfo(handle, RTLD_DI_LINKMAP, &own) != 0) return false;
  Dl_info info;
  struct link_map* owner = nullptr;
  if (sys::dladdr1(address, &info, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) == 0) return false;
  return owner == own;
}

}  // namespace

void* LoadLibrary(const char* utf8Path) noexcept {
  // The loader takes an empty name for the main program; the first platform loads nothing for it.
  void* handle = utf8Path[0] == '\0' ? nullptr : sys::dlopen(utf8Path, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) SetLastError(kErrorModNotFound);
  return handle;
}

bool FreeLibrary(void* handle) noexcept {
  if (!IsLoaderPseudoHandle(handle) && sys::dlclose(handle) == 0) return true;
  SetLastError(kErrorInvalidHandle);
  return false;
}

void* GetProcAddress(void* handle, const char* name) noexcept {
  if (IsLoaderPseudoHandle(handle)) {
    SetLastError(kErrorModNotFound);
    return nullptr;
  }
  void* address = sys::dlsym(handle, name);
  if (address != nullptr && !DefinedIn(handle, address)) address = nullptr;
  if (address == nullptr) SetLastError(kErrorProcNotFound);
  return address;
}

bool FillRandom(void* buffer, size_t size) noexcept {
  auto* bytes = static_cast<uint8_t*>(buffer);
  while (size > 0) {
    const ssize_t got = RetryOnEintr([&] { return sys::getrandom(bytes, size, 0); });
    if (got < 0) {
      SetLastErrorFromErrno(errno);
      return false;
    }
    bytes += got;
    size -= static_cast<size_t>(got);
  }
  return true;
}

}  // namespace qz::os
