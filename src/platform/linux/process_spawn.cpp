// process_spawn.cpp - child processes on Linux: pipes, posix_spawn with its file actions, pidfds
// as process handles, poll for one or many, waitid for exit codes, and the reaping of children
// whose handle was closed while they ran.
//
// A process handle is a pidfd (always close-on-exec). Exit codes are read with WNOWAIT, so a read
// does not consume them; the child is reaped when its handle is closed. A handle closed while its
// child runs leaves a private copy in a list, and the child is reaped at a later start or close
// once it has ended, so no zombie outlives a detach by more than one such call.
#include "platform/process_spawn.h"

#include <climits>
#include <csignal>
#include <mutex>
#include <new>
#include <vector>

#include "errno_map.h"
#include "io.h"
#include "platform/last_error.h"
#include "platform/native_error.h"
#include "syscalls.h"

extern char** environ;

namespace qz::os {
namespace {

// Handles closed while their child ran: still to be reaped. Guarded by g_detachedLock.
std::mutex g_detachedLock;
std::vector<int> g_detached;

// waitid on a pidfd, retried on EINTR.
int WaitIdOnHandle(int pidfd, siginfo_t* info, int options) noexcept {
  *info = siginfo_t{};
  return RetryOnEintr(
      [&] { return sys::waitid(P_PIDFD, static_cast<id_t>(pidfd), info, options); });
}

// Reaps the detached children that have ended and closes their handles.
void ReapDetached() noexcept {
  std::lock_guard<std::mutex> lock(g_detachedLock);
  for (size_t i = 0; i < g_detached.size();) {
    siginfo_t info;
    if (WaitIdOnHandle(g_detached[i], &info, WEXITED | WNOHANG) == 0 && info.si_pid == 0) {
      ++i;  // still running
      continue;
    }
    sys::close(g_detached[i]);  // reaped, or no longer ours to reap
    g_detached[i] = g_detached.back();
    g_detached.pop_back();
  }
}

// The exit code a Linux child leaves: its own status, or 128 + the signal that ended it.
uint32_t ExitCodeOf(const siginfo_t& info) noexcept {
  if (info.si_code == CLD_EXITED) return static_cast<uint32_t>(info.si_status) & 0xFF;
  return 128u + static_cast<uint32_t>(info.si_status);
}

bool IsDirectory(const char* path) noexcept {
  struct stat st;
  return sys::stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

// The path the child executes: a relative one is made absolute against the caller's directory
// when the child starts elsewhere, because the child resolves it after its change of directory.
bool ExecutablePath(const ProcessStart& start, std::string* path) {
  *path = start.program;
  if (start.workingDirectory == nullptr || path->empty() || (*path)[0] == '/') return true;
  std::string cwd(PATH_MAX, '\0');
  while (sys::getcwd(cwd.data(), cwd.size()) == nullptr) {
    if (errno != ERANGE) {
      SetLastErrorFromErrno(errno);
      return false;
    }
    cwd.resize(cwd.size() * 2);
  }
  cwd.resize(cwd.find('\0'));
  if (cwd.back() != '/') cwd += '/';
  *path = cwd + *path;
  return true;
}

// Owns the spawn attributes and file actions, and the temporary copies of low stream descriptors.
class CSpawnSetup {
 public:
  CSpawnSetup() noexcept {
    m_actionsError = posix_spawn_file_actions_init(&m_actions);
    m_attributesError = posix_spawnattr_init(&m_attributes);
  }
  ~CSpawnSetup() {
    if (m_actionsError == 0) posix_spawn_file_actions_destroy(&m_actions);
    if (m_attributesError == 0) posix_spawnattr_destroy(&m_attributes);
    for (int fd : m_copies) sys::close(fd);
  }
  CSpawnSetup(const CSpawnSetup&) = delete;
  CSpawnSetup& operator=(const CSpawnSetup&) = delete;

  // Fills the actions and attributes; 0 or an errno value.
  int Prepare(const ProcessStart& start) {
    if (m_actionsError != 0) return m_actionsError;
    if (m_attributesError != 0) return m_attributesError;
    // The child starts as a new program would: no blocked signal, every disposition the default.
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    int err = posix_spawnattr_setsigmask(&m_attributes, &none);
    if (err == 0) err = posix_spawnattr_setsigdefault(&m_attributes, &all);
    if (err == 0)
      err = posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    if (err != 0) return err;
    if (start.streams != nullptr) {
      for (int target = 0; target < 3; ++target) {
        int source = 0;
        err = StreamSource(start.streams[target], target, &source);
        if (err == 0) err = posix_spawn_file_actions_adddup2(&m_actions, source, target);
        if (err != 0) return err;
      }
    }
    if (start.workingDirectory != nullptr) {
      err = posix_spawn_file_actions_addchdir_np(&m_actions, start.workingDirectory);
      if (err != 0) return err;
    }
    return posix_spawn_file_actions_addclosefrom_np(&m_actions, 3);
  }

  const posix_spawn_file_actions_t* Actions() const noexcept { return &m_actions; }
  const posix_spawnattr_t* Attributes() const noexcept { return &m_attributes; }

 private:
  // The descriptor to duplicate onto `target`. One of 0-2 that is not the target itself is first
  // copied above 2, so that an earlier duplication onto it cannot overwrite it in the child.
  int StreamSource(intptr_t handle, int target, int* source) {
    if (handle < 0 || handle > INT_MAX) return EBADF;
    *source = static_cast<int>(handle);
    if (*source >= 3 || *source == target) return 0;
    const int copy = sys::fcntl(*source, F_DUPFD_CLOEXEC, reinterpret_cast<void*>(intptr_t{3}));
    if (copy < 0) return errno;
    m_copies.push_back(copy);
    *source = copy;
    return 0;
  }

  posix_spawn_file_actions_t m_actions;  // duplications, change of directory, closing the rest
  posix_spawnattr_t m_attributes;        // signal mask and dispositions of the child
  int m_actionsError = 0;                // result of initialising m_actions
  int m_attributesError = 0;             // result of initialising m_attributes
  std::vector<int> m_copies;             // temporary copies of low stream descriptors
};

// Sets the last error for a failed start: a working directory that is missing or no directory
// is told apart from a missing program, since the child changes directory before it executes.
void SetStartError(int err, const ProcessStart& start, const std::string& path) noexcept {
  if (start.workingDirectory != nullptr && (err == ENOENT || err == ENOTDIR) &&
      !IsDirectory(start.workingDirectory)) {
    SetLastError(kErrorDirectory);
    return;
  }
  SetLastErrorFromPathErrno(err, path.c_str());
}

}  // namespace

bool CreatePipe(intptr_t* readEnd, intptr_t* writeEnd) noexcept {
  int fds[2];
  if (sys::pipe2(fds, O_CLOEXEC) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  *readEnd = fds[0];
  *writeEnd = fds[1];
  return true;
}

bool StartProcess(const ProcessStart& start, intptr_t* process) {
  ReapDetached();
  if (start.program == nullptr) {
    SetLastError(kErrorInvalidParameter);
    return false;
  }
  std::string path;
  if (!ExecutablePath(start, &path)) return false;
  pid_t pid = 0;
  {
    CSpawnSetup setup;
    int err = setup.Prepare(start);
    if (err == 0) {
      char* const* envp =
          start.environment != nullptr ? const_cast<char* const*>(start.environment) : environ;
      err = sys::posix_spawn(&pid, path.c_str(), setup.Actions(), setup.Attributes(),
                             const_cast<char* const*>(start.argv), envp);
    }
    if (err != 0) {
      SetStartError(err, start, path);
      return false;
    }
  }
  const int pidfd = sys::pidfd_open(pid, 0);
  if (pidfd < 0) {
    // No handle, no child: end it and reap it, so that nothing is left behind.
    const int err = errno;
    sys::kill(pid, SIGKILL);
    int status = 0;
    RetryOnEintr([&] { return sys::waitpid(pid, &status, 0); });
    SetLastErrorFromErrno(err);
    return false;
  }
  *process = pidfd;
  return true;
}

bool WaitForProcess(intptr_t process) noexcept {
  // The current process's pseudo-handle (-1) is skipped by poll, so its wait never ends, as a
  // process that waits for itself waits for ever.
  struct pollfd entry = {static_cast<int>(process), POLLIN, 0};
  if (process > INT_MAX || process < -1) {
    SetLastError(kErrorInvalidHandle);
    return false;
  }
  for (;;) {
    const int ready = RetryOnEintr([&] { return sys::poll(&entry, 1, -1); });
    if (ready < 0) {
      SetLastErrorFromErrno(errno);
      return false;
    }
    if ((entry.revents & POLLNVAL) != 0) {
      SetLastError(kErrorInvalidHandle);
      return false;
    }
    if (ready > 0) return true;
  }
}

bool GetProcessExitCode(intptr_t process, uint32_t* exitCode) noexcept {
  if (process == -1) {
    *exitCode = kProcessStillActive;
    return true;
  }
  if (process < 0 || process > INT_MAX) {
    SetLastError(kErrorInvalidHandle);
    return false;
  }
  siginfo_t info;
  if (WaitIdOnHandle(static_cast<int>(process), &info, WEXITED | WNOHANG | WNOWAIT) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  *exitCode = info.si_pid == 0 ? kProcessStillActive : ExitCodeOf(info);
  return true;
}

bool CloseProcessHandle(intptr_t process) noexcept {
  if (process == -1) return true;  // the current process's pseudo-handle
  if (process < 0 || process > INT_MAX) {
    SetLastError(kErrorInvalidHandle);
    return false;
  }
  const int pidfd = static_cast<int>(process);
  siginfo_t info;
  if (WaitIdOnHandle(pidfd, &info, WEXITED | WNOHANG) != 0) {
    // EBADF: no handle at all. ECHILD: a process that is not (or no longer) ours to reap, and
    // EINVAL: a descriptor of another kind; both are still closed.
    if (errno == EBADF) {
      SetLastError(kErrorInvalidHandle);
      return false;
    }
  } else if (info.si_pid == 0) {
    // The child runs on: a private copy of the handle waits to reap it, and the caller's number
    // is closed like any other, so that using it again finds no handle. Without a copy the
    // number itself is kept (and then stays open until the child has been reaped).
    const int copy = sys::fcntl(pidfd, F_DUPFD_CLOEXEC, reinterpret_cast<void*>(intptr_t{3}));
    const int kept = copy >= 0 ? copy : pidfd;
    try {
      std::lock_guard<std::mutex> lock(g_detachedLock);
      g_detached.push_back(kept);
    } catch (const std::bad_alloc&) {
      if (copy >= 0) sys::close(copy);
      SetLastError(kErrorOutOfMemory);
      return false;
    }
    if (copy >= 0) sys::close(pidfd);
    ReapDetached();
    return true;
  }
  if (sys::close(pidfd) != 0 && errno != EINTR) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  return true;
}

intptr_t CurrentProcessHandle() noexcept { return -1; }

bool GetProcessImagePath(uint32_t pid, std::string* path) {
  const std::string link = "/proc/" + std::to_string(pid) + "/exe";
  std::string target(PATH_MAX, '\0');
  const ssize_t length = sys::readlink(link.c_str(), target.data(), target.size());
  if (length < 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  if (static_cast<size_t>(length) >= target.size()) {
    SetLastError(kErrorInsufficientBuffer);
    return false;
  }
  target.resize(static_cast<size_t>(length));
  *path = std::move(target);
  return true;
}

CProcessWaitArray::~CProcessWaitArray() { delete[] static_cast<struct pollfd*>(m_entries); }

void CProcessWaitArray::Reallocate(size_t capacity) {
  delete[] static_cast<struct pollfd*>(m_entries);
  m_entries = nullptr;
  m_capacity = 0;
  m_entries = new struct pollfd[capacity];
  m_capacity = capacity;
}

void CProcessWaitArray::Set(size_t index, intptr_t process) noexcept {
  static_cast<struct pollfd*>(m_entries)[index] = {static_cast<int>(process), POLLIN, 0};
}

intptr_t CProcessWaitArray::Get(size_t index) const noexcept {
  return static_cast<const struct pollfd*>(m_entries)[index].fd;
}

bool CProcessWaitArray::WaitForAny(size_t count, size_t* index) noexcept {
  if (count == 0) {
    SetLastError(kErrorInvalidParameter);  // nothing to wait for
    return false;
  }
  auto* entries = static_cast<struct pollfd*>(m_entries);
  for (;;) {
    const int ready = RetryOnEintr([&] { return sys::poll(entries, count, -1); });
    if (ready < 0) {
      SetLastErrorFromErrno(errno);
      return false;
    }
    if (ready == 0) continue;
    for (size_t i = 0; i < count; ++i) {
      if ((entries[i].revents & POLLNVAL) != 0) {
        SetLastError(kErrorInvalidHandle);
        return false;
      }
    }
    for (size_t i = 0; i < count; ++i) {
      if (entries[i].revents != 0) {
        *index = i;
        return true;
      }
    }
  }
}

}  // namespace qz::os
