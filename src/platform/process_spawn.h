// process_spawn.h - the platform operations behind child processes: anonymous pipes, starting a
// program with its streams, waiting for one process or for any of many, exit codes, closing a
// process handle, and the image name of a process.
//
// Portable declarations only. A process handle and a pipe end are the platform's own handles
// widened to intptr_t (on Linux a pidfd and a descriptor). Every failure sets the calling thread's
// last error (last_error.h) and answers false.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace qz::os {

// The exit code reported for a process that has not ended yet.
inline constexpr uint32_t kProcessStillActive = 259;

// A new anonymous pipe; neither end is inherited by a child unless it is handed over as a stream.
bool CreatePipe(intptr_t* readEnd, intptr_t* writeEnd) noexcept;

// What to start. `program` is a path (UTF-8); `argv` and `environment` are null-terminated arrays
// of UTF-8 strings, `environment` null to inherit the caller's; `workingDirectory` null for the
// caller's; `streams` null for the caller's three standard streams, else the three handles the
// child gets as standard input, output and error.
struct ProcessStart {
  const char* program = nullptr;
  const char* const* argv = nullptr;
  const char* const* environment = nullptr;
  const char* workingDirectory = nullptr;
  const intptr_t* streams = nullptr;
};

// Starts the program. A relative program path is taken from the caller's current directory, even
// with a working directory; nothing is searched. The child gets no handle but its streams. On
// success *process is its handle; on failure nothing is left running. Throws std::bad_alloc.
bool StartProcess(const ProcessStart& start, intptr_t* process);

// Blocks until the process has ended. Fails for a handle that names no process.
bool WaitForProcess(intptr_t process) noexcept;

// The exit code of the process, kProcessStillActive while it runs. Reading does not consume it.
bool GetProcessExitCode(intptr_t process, uint32_t* exitCode) noexcept;

// Closes a process handle. The process runs on if it has not ended; the platform layer takes care
// that nothing of it stays behind once it ends.
bool CloseProcessHandle(intptr_t process) noexcept;

// The handle that stands for the calling process; it needs no closing.
intptr_t CurrentProcessHandle() noexcept;

// The full path of the program that process `pid` runs; false if there is no such process or it
// may not be looked at.
bool GetProcessImagePath(uint32_t pid, std::string* path);

// The platform's path separator in an image path.
inline constexpr char kImagePathSeparator = '/';

// A reusable array of process handles to wait on together; it allocates only when it grows.
class CProcessWaitArray {
 public:
  CProcessWaitArray() noexcept = default;
  ~CProcessWaitArray();
  CProcessWaitArray(const CProcessWaitArray&) = delete;
  CProcessWaitArray& operator=(const CProcessWaitArray&) = delete;

  size_t Capacity() const noexcept { return m_capacity; }
  // Drops the entries and makes room for `capacity` of them; throws std::bad_alloc.
  void Reallocate(size_t capacity);
  void Set(size_t index, intptr_t process) noexcept;
  intptr_t Get(size_t index) const noexcept;
  // Blocks until one of the first `count` processes has ended; *index is the lowest such entry.
  // Fails at once for a count of 0, and for an entry that names no process.
  bool WaitForAny(size_t count, size_t* index) noexcept;

 private:
  void* m_entries = nullptr;  // the platform's wait records, m_capacity of them
  size_t m_capacity = 0;      // records allocated
};

}  // namespace qz::os
