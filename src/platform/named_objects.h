// named_objects.h - objects that several processes reach by name, their views, and the wait on a
// word that lives in shared memory.
//
// Only operating-system-independent declarations live here. A named object is a block of memory
// with a name; every process that holds it keeps it alive, and the last holder (in the system, not
// the process) removes it. An object whose holders have all gone, however they ended, is new to
// the next opener: its contents are zero (then the opener's initial bytes) and it reports created.
// Failures return false (or null) with the platform's last error set.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace qz::os {

// What an opener gets.
struct NamedObjectOpen {
  intptr_t handle = -1;  // the platform's handle (a descriptor), owned by the caller
  bool created = false;  // the object was new to this opener
};

// How an object is opened.
struct NamedObjectRequest {
  bool writable = true;             // read-write handle (else read-only)
  bool create = true;               // make the object when nobody holds it (else: not found, 2)
  uint64_t size = 0;                // bytes of a new object; an existing one keeps its size
  const void* initial = nullptr;    // bytes written at offset 0 of a new object, before anyone joins
  size_t initialLength = 0;
};

// Opens or creates the object `name` (the full name, prefix included). A name the platform cannot
// carry fails with the invalid-name error (123), or 206 when it is too long.
bool OpenNamedObject(const std::string& name, const NamedObjectRequest& request,
                     NamedObjectOpen* out) noexcept;

// Gives up a handle; the last holder removes the name. A handle with views of its object still
// mapped in this process leaves the removal to the last view's unmap. False (error 6) for a handle
// that is not open. CloseHandle of file_system.h on a handle OpenNamedObject gave comes here too,
// so a named object may be closed as a file is.
bool CloseNamedObject(intptr_t handle) noexcept;

// True when `handle` is one OpenNamedObject gave and nobody has closed yet.
bool IsNamedObjectHandle(intptr_t handle) noexcept;

// Maps the whole object of `handle`, read-write or read-only. A writable view of a read-only handle
// fails with access denied (5). The view is known to UnmapNamedObject by its address.
void* MapNamedObject(intptr_t handle, bool writable) noexcept;

// Unmaps a view that MapNamedObject gave. False (error 487) for any other address.
bool UnmapNamedObject(void* address) noexcept;

// Waits while the word shared between processes holds `expected`, at most `timeoutMs`
// milliseconds (0xFFFFFFFF: no limit). True when woken, when the word differed or on a spurious
// return; false with the timeout error (258) when the time ran out, or with a mapped error.
bool WaitOnSharedWord(std::atomic<uint32_t>* word, uint32_t expected, uint32_t timeoutMs) noexcept;

// Wakes up to `count` waiters of the shared word, in any process.
void WakeSharedWord(std::atomic<uint32_t>* word, int count) noexcept;

}  // namespace qz::os
