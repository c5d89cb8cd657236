// system_calls.h - replacing the platform layer's system calls, one by name, to inject failures.
//
// Every operating-system call of the platform layer goes through one table. Tests replace an entry
// to give a failure the real system will not give on demand (a full disk, an interrupted wait, a
// short write, no descriptors left) and check what the library answers. Only tests use this; the
// library itself never changes the table. The names are the system's own ("open", "write",
// "shm_open", "pidfd_open", ...); a replacement has exactly the signature of the table's entry,
// which the platform folder declares (for Linux: platform/linux/syscalls.h).
//
// Thread-safety: entries are read and written atomically, so a replacement may be installed while
// other threads call; a test that replaces a call restores it (ResetSystemCalls) before it ends.
#pragma once

namespace qz::os {

using SystemCallPointer = void (*)();

// Replaces the entry `name` with `replacement`; null puts the system's own call back. False (and
// nothing changed) when the table has no entry of that name.
bool SetSystemCall(const char* name, SystemCallPointer replacement) noexcept;

// The entry `name` as it stands now (the system's own unless replaced); null for an unknown name.
SystemCallPointer GetSystemCall(const char* name) noexcept;

// The name of the entry after `name` (the first entry for null), or null after the last: walks
// the table.
const char* NextSystemCall(const char* name) noexcept;

// Makes the next `count` calls of entry `name` fail at once with the platform's own error code
// `nativeError` (an errno value on POSIX), without reaching the system: each returns the call's
// failure value with the code where the call puts it. Calls made by any thread count. A count of
// 0 ends an injection. False for an unknown name.
bool FailSystemCall(const char* name, int nativeError, int count = 1) noexcept;

// Puts every entry back to the system's own call and ends every injection.
void ResetSystemCalls() noexcept;

}  // namespace qz::os
