// file_system.h - the file-system operations the files family stands on, in the first platform's
// terms: access masks, dispositions, attributes and error numbers.
//
// Portable declarations only. A file is the platform's descriptor widened to intptr_t (-1: none);
// paths are 16-bit text, which each platform turns into what its system takes. Every failure sets
// the calling thread's last error (last_error.h) and answers the failure value given per function.
#pragma once

#include <cstdint>
#include <string>

#include "platform/time_zone.h"

namespace qz::os {

using NativeFile = intptr_t;
inline constexpr NativeFile kInvalidFile = -1;

// Access mask bits.
inline constexpr uint32_t kGenericRead = 0x80000000u;
inline constexpr uint32_t kGenericWrite = 0x40000000u;
inline constexpr uint32_t kAccessDelete = 0x00010000u;

// Creation dispositions.
inline constexpr uint32_t kCreateNew = 1;
inline constexpr uint32_t kCreateAlways = 2;
inline constexpr uint32_t kOpenExisting = 3;
inline constexpr uint32_t kOpenAlways = 4;
inline constexpr uint32_t kTruncateExisting = 5;

// Attributes and flags of a create, and attributes of a found entry.
inline constexpr uint32_t kAttributeReadOnly = 0x1u;
inline constexpr uint32_t kAttributeDirectory = 0x10u;
inline constexpr uint32_t kAttributeNormal = 0x80u;
inline constexpr uint32_t kAttributeTemporary = 0x100u;
inline constexpr uint32_t kFlagDeleteOnClose = 0x04000000u;
inline constexpr uint32_t kFlagWriteThrough = 0x80000000u;

// Share mode: read and write shared.
inline constexpr uint32_t kShareReadWrite = 3;

// Byte-range lock flags.
inline constexpr uint32_t kLockFailImmediately = 1;
inline constexpr uint32_t kLockExclusive = 2;

// Opens or creates `path` with `access`, `disposition` and `attributes`. The descriptor, or
// kInvalidFile. On success the last error is 183 when kOpenAlways or kCreateAlways met an existing
// file, and 0 otherwise. A read-only create makes a file no one may write; delete-on-close removes
// the name at once. Sharing is not enforced by this platform: `share` is accepted and not used.
NativeFile CreateFile(const char16_t* path, uint32_t access, uint32_t share, uint32_t disposition,
                      uint32_t attributes) noexcept;
bool CloseHandle(NativeFile file) noexcept;

// One read of up to `size` bytes; true with the count (0 at the end), or false. A drained pipe
// with no writer left fails with the broken-pipe error.
bool ReadFile(NativeFile file, void* buffer, uint32_t size, uint32_t* read) noexcept;
// Writes all `size` bytes unless the system stops part way: true with the count, false when not a
// byte could be written.
bool WriteFile(NativeFile file, const void* buffer, uint32_t size, uint32_t* written) noexcept;
// Moves by a 32-bit distance from origin 0, 1 or 2: the new position, or 0xFFFFFFFF. The last
// error is 0 after a success (a position of 0xFFFFFFFF is then real); a new position beyond 32 bits
// fails with 87 and leaves the position.
uint32_t SetFilePointer(NativeFile file, int32_t distance, uint32_t origin) noexcept;
bool FlushFileBuffers(NativeFile file) noexcept;
bool GetFileSizeEx(NativeFile file, uint64_t* size) noexcept;

// Byte-range locks against every other open of the file, this process included.
bool LockFileEx(NativeFile file, uint32_t flags, uint32_t offset, uint32_t length) noexcept;
bool UnlockFileEx(NativeFile file, uint32_t offset, uint32_t length) noexcept;
// The plain forms: exclusive, failing at once.
bool LockFile(NativeFile file, uint32_t offset, uint32_t length) noexcept;
bool UnlockFile(NativeFile file, uint32_t offset, uint32_t length) noexcept;

bool DeleteFile(const char16_t* path) noexcept;
bool CreateDirectory(const char16_t* path) noexcept;
bool RemoveDirectory(const char16_t* path) noexcept;

// The directory for temporary files, with a separator at its end ("" when no memory is left).
std::u16string GetTempPath() noexcept;
// Makes a new, empty file with a unique name beginning `prefix` in `directory`: its path, or ""
// (last error set) when none could be made.
std::u16string GetTempFileName(const std::u16string& directory, const char16_t* prefix) noexcept;

// What a directory search finds about one entry. Times are 100-ns ticks since 1601-01-01 UTC;
// 0 when the system does not know them.
struct FindData {
  std::u16string name;       // the entry's name, without a path
  uint32_t attributes = 0;   // kAttributeDirectory, kAttributeReadOnly, or kAttributeNormal
  uint64_t size = 0;         // bytes
  uint64_t createTime = 0;   // birth
  uint64_t accessTime = 0;   // last access
  uint64_t writeTime = 0;    // last write
};

// A running search; kInvalidFind when none.
using FindHandle = intptr_t;
inline constexpr FindHandle kInvalidFind = -1;

// `pattern` ending in "/*" lists that directory ("." and ".." included); any other pattern finds
// the one entry it names. The search with its first entry, or kInvalidFind.
FindHandle FindFirstFile(const std::u16string& pattern, FindData* data) noexcept;
// The next entry; false at the end (last error 18) or on failure.
bool FindNextFile(FindHandle find, FindData* data) noexcept;
void FindClose(FindHandle find) noexcept;

// UTC ticks to local ticks, by the zone's bias now in force (as the first platform does it: not
// the bias at that date). False when the result falls outside the range of ticks.
bool FileTimeToLocalFileTime(uint64_t utc, uint64_t* local) noexcept;
// Ticks to calendar fields; false for ticks beyond the signed 64-bit range.
bool FileTimeToSystemTime(uint64_t ticks, CalendarTime* time) noexcept;

// The full path of `path`, resolved as text against the current directory. When `size` units
// hold it with its terminator: written, and its length answered; otherwise nothing is written and
// the size needed (terminator included) is answered. 0 on failure.
uint32_t GetFullPathName(const char16_t* path, uint32_t size, char16_t* buffer) noexcept;

}  // namespace qz::os
