// registry_store.h - the platform's registry: hierarchical keys under predefined roots, typed
// values, creation of missing parents, enumeration by index, all in the platform's error numbers.
//
// Portable declarations only. The operations have the shape of the first platform's registry
// calls, so the registry family's logic reads the same on every platform: each returns 0 or a
// platform error number (native_error.h) and never throws. Where the platform has no registry of
// its own, the body is the SQLite store (registry_store_sqlite.cpp; its layout is in
// docs/registry.md) and registry_location.h says where its files live.
//
// Thread-safety: every operation may be called from any thread and any number of processes at
// once. An open key is for one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qz::os {

// An open key, or one of the predefined roots below. Not a pointer the caller may follow.
using RegKey = uintptr_t;

// Predefined roots, as the first platform numbers them; any other value that is not an open key
// (such as -1) is refused with kErrorInvalidHandle.
inline constexpr RegKey kRegClassesRoot = 0x80000000u;
inline constexpr RegKey kRegCurrentUser = 0x80000001u;
inline constexpr RegKey kRegLocalMachine = 0x80000002u;
inline constexpr RegKey kRegInvalidRoot = static_cast<RegKey>(-1);

// Access and view bits of an open. The two views of the classes and machine roots are separate
// trees; without a view bit the process's own (64-bit) view is meant.
inline constexpr uint32_t kKeyQueryValue = 0x0001;
inline constexpr uint32_t kKeySetValue = 0x0002;
inline constexpr uint32_t kKeyCreateSubKey = 0x0004;
inline constexpr uint32_t kKeyRead = 0x20019;
inline constexpr uint32_t kKeyAllAccess = 0xF003F;
inline constexpr uint32_t kKeyWow64_64Key = 0x0100;
inline constexpr uint32_t kKeyWow64_32Key = 0x0200;

// Value types, in the platform's numbers.
inline constexpr uint32_t kRegNone = 0;
inline constexpr uint32_t kRegSz = 1;
inline constexpr uint32_t kRegExpandSz = 2;
inline constexpr uint32_t kRegBinary = 3;
inline constexpr uint32_t kRegDword = 4;
inline constexpr uint32_t kRegDwordBigEndian = 5;
inline constexpr uint32_t kRegLink = 6;
inline constexpr uint32_t kRegMultiSz = 7;

// Longest key name (one path component) and value name, in 16-bit units. Longer names are refused
// with kErrorInvalidParameter.
inline constexpr size_t kRegMaxKeyName = 255;
inline constexpr size_t kRegMaxValueName = 16383;

// Opens `subKey` (null or empty: `root` itself) under `root` with `access` (read, write, view
// bits). 0 with the key in *out; 2 when it does not exist; 5 when write access is asked of a store
// this process may not write; 6 for a bad root; 87 for a malformed name. Components are split at
// backslashes; empty components (leading, trailing or doubled separators) are skipped.
uint32_t RegOpenKeyEx(RegKey root, const char16_t* subKey, uint32_t access, RegKey* out) noexcept;

// As RegOpenKeyEx, creating the key and every missing parent first (one transaction).
uint32_t RegCreateKeyEx(RegKey root, const char16_t* subKey, uint32_t access, RegKey* out) noexcept;

// Closes an open key (a predefined root is left alone). 0, or 6 for null or -1.
uint32_t RegCloseKey(RegKey key) noexcept;

// Reads value `name` (null or empty: the key's default value). With `data` null only the type and
// size are told. 0; 2 when the value or key is missing; 234 when `*size` bytes are too few, with
// the size needed in *size and the type told; 87 when data is given without a size.
uint32_t RegQueryValueEx(RegKey key, const char16_t* name, uint32_t* type, void* data,
                         uint32_t* size) noexcept;

// Creates or replaces value `name` with `size` bytes of `data` of platform type `type`, as given
// (nothing is measured or terminated). A replaced value keeps its place in the order of creation.
uint32_t RegSetValueEx(RegKey key, const char16_t* name, uint32_t type, const void* data,
                       uint32_t size) noexcept;

// Removes value `name`: 0, or 2 when it is not there.
uint32_t RegDeleteValue(RegKey key, const char16_t* name) noexcept;

// Removes the key `subKey` under `key` with its values. It must have no subkeys (5 otherwise) and
// must not be a root (5). `view` selects the tree when `key` is a predefined root.
uint32_t RegDeleteKeyEx(RegKey key, const char16_t* subKey, uint32_t view) noexcept;

// The name of subkey number `index` in the order of the folded names. *length: in, the buffer's
// units; out, the name's length without terminator. 0; 259 past the last; 234 when the name and
// its terminator do not fit (the length needed is stored).
uint32_t RegEnumKeyEx(RegKey key, uint32_t index, char16_t* name, uint32_t* length) noexcept;

// Name, type and data of value number `index` in the order of creation. Sizes as for
// RegEnumKeyEx (units) and RegQueryValueEx (bytes); `type`, `data` and `dataSize` may be null.
uint32_t RegEnumValue(RegKey key, uint32_t index, char16_t* name, uint32_t* nameLength,
                      uint32_t* type, void* data, uint32_t* dataSize) noexcept;

// Expands %NAME% references of `source` (at most `sourceUnits` units, fewer when a NUL comes
// first; null is empty) from the environment into `dest` of `size` units. Returns the units the
// expansion needs with its terminator, whatever fits; 0 only on failure.
uint32_t ExpandEnvironmentStrings(const char16_t* source, size_t sourceUnits, char16_t* dest,
                                  uint32_t size) noexcept;

}  // namespace qz::os
