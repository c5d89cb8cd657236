// syscalls.h - the system-call table of the Linux layer: every operating-system call the platform
// folder makes goes through qz::os::sys::NAME(...), so that tests can replace or fail one call
// (system_calls.h) and see what the library answers.
//
// Only files of the platform folder include this. Each wrapper costs one relaxed load of the
// entry's injection count and an indirect call. The signatures are the system's, except where a
// variadic call is given its widest form (open and openat take the mode, fcntl and ioctl a pointer
// argument) and where glibc has no wrapper (pidfd_open, futex), which call syscall(2).
#pragma once

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <netdb.h>
#include <poll.h>
#include <pthread.h>
#include <pwd.h>
#include <signal.h>
#include <sched.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/socket.h>
#include <sys/sysinfo.h>
#include <sys/types.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <ctime>

#include "platform/system_calls.h"

// How an injected failure comes back: most calls return a failure value with errno set; some
// return the error number itself; the loader's calls return null and set no errno.
#define QZ_FAIL_ERRNO(value) (errno = injectedError_, (value))
#define QZ_FAIL_RESULT (injectedError_)
#define QZ_FAIL_NULL ((void)injectedError_, nullptr)
#define QZ_FAIL_VOID ((void)injectedError_)

// X(name, result type, parameters, arguments, the system's call, failure)
#define QZ_SYSTEM_CALLS(X)                                                                          \
  X(open, int, (const char* path, int flags, mode_t mode), (path, flags, mode), ::open,             \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(openat, int, (int dirFd, const char* path, int flags, mode_t mode), (dirFd, path, flags, mode), \
    ::openat, QZ_FAIL_ERRNO(-1))                                                                    \
  X(close, int, (int fd), (fd), ::close, QZ_FAIL_ERRNO(-1))                                         \
  X(read, ssize_t, (int fd, void* buffer, size_t size), (fd, buffer, size), ::read,                 \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(write, ssize_t, (int fd, const void* buffer, size_t size), (fd, buffer, size), ::write,         \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(pread, ssize_t, (int fd, void* buffer, size_t size, off_t offset), (fd, buffer, size, offset),  \
    ::pread, QZ_FAIL_ERRNO(-1))                                                                     \
  X(pwrite, ssize_t, (int fd, const void* buffer, size_t size, off_t offset),                       \
    (fd, buffer, size, offset), ::pwrite, QZ_FAIL_ERRNO(-1))                                        \
  X(lseek, off_t, (int fd, off_t offset, int whence), (fd, offset, whence), ::lseek,                \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(fcntl, int, (int fd, int command, void* argument), (fd, command, argument), ::fcntl,            \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(ioctl, int, (int fd, unsigned long request, void* argument), (fd, request, argument), ::ioctl,  \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(flock, int, (int fd, int operation), (fd, operation), ::flock, QZ_FAIL_ERRNO(-1))               \
  X(ftruncate, int, (int fd, off_t length), (fd, length), ::ftruncate, QZ_FAIL_ERRNO(-1))           \
  X(fsync, int, (int fd), (fd), ::fsync, QZ_FAIL_ERRNO(-1))                                         \
  X(fdatasync, int, (int fd), (fd), ::fdatasync, QZ_FAIL_ERRNO(-1))                                 \
  X(fstat, int, (int fd, struct stat* buffer), (fd, buffer), ::fstat, QZ_FAIL_ERRNO(-1))            \
  X(stat, int, (const char* path, struct stat* buffer), (path, buffer), ::stat, QZ_FAIL_ERRNO(-1))  \
  X(lstat, int, (const char* path, struct stat* buffer), (path, buffer), ::lstat,                   \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(statx, int, (int dirFd, const char* path, int flags, unsigned mask, struct statx* buffer),      \
    (dirFd, path, flags, mask, buffer), ::statx, QZ_FAIL_ERRNO(-1))                                 \
  X(mkdir, int, (const char* path, mode_t mode), (path, mode), ::mkdir, QZ_FAIL_ERRNO(-1))          \
  X(rmdir, int, (const char* path), (path), ::rmdir, QZ_FAIL_ERRNO(-1))                             \
  X(rename, int, (const char* from, const char* to), (from, to), ::rename, QZ_FAIL_ERRNO(-1))       \
  X(unlink, int, (const char* path), (path), ::unlink, QZ_FAIL_ERRNO(-1))                           \
  X(chmod, int, (const char* path, mode_t mode), (path, mode), ::chmod, QZ_FAIL_ERRNO(-1))          \
  X(fchmod, int, (int fd, mode_t mode), (fd, mode), ::fchmod, QZ_FAIL_ERRNO(-1))                    \
  X(access, int, (const char* path, int mode), (path, mode), ::access, QZ_FAIL_ERRNO(-1))           \
  X(readlink, ssize_t, (const char* path, char* buffer, size_t size), (path, buffer, size),         \
    ::readlink, QZ_FAIL_ERRNO(-1))                                                                  \
  X(getcwd, char*, (char* buffer, size_t size), (buffer, size), ::getcwd, QZ_FAIL_ERRNO(nullptr))   \
  X(mkostemp, int, (char* pattern, int flags), (pattern, flags), ::mkostemp, QZ_FAIL_ERRNO(-1))     \
  X(opendir, DIR*, (const char* path), (path), ::opendir, QZ_FAIL_ERRNO(nullptr))                   \
  X(fdopendir, DIR*, (int fd), (fd), ::fdopendir, QZ_FAIL_ERRNO(nullptr))                           \
  X(readdir, struct dirent*, (DIR * dir), (dir), ::readdir, QZ_FAIL_ERRNO(nullptr))                 \
  X(closedir, int, (DIR * dir), (dir), ::closedir, QZ_FAIL_ERRNO(-1))                               \
  X(copy_file_range, ssize_t,                                                                       \
    (int fdIn, off64_t* offsetIn, int fdOut, off64_t* offsetOut, size_t size, unsigned flags),      \
    (fdIn, offsetIn, fdOut, offsetOut, size, flags), ::copy_file_range, QZ_FAIL_ERRNO(-1))          \
  X(shm_open, int, (const char* name, int flags, mode_t mode), (name, flags, mode), ::shm_open,     \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(shm_unlink, int, (const char* name), (name), ::shm_unlink, QZ_FAIL_ERRNO(-1))                   \
  X(mmap, void*, (void* address, size_t length, int protection, int flags, int fd, off_t offset),   \
    (address, length, protection, flags, fd, offset), ::mmap, QZ_FAIL_ERRNO(MAP_FAILED))            \
  X(munmap, int, (void* address, size_t length), (address, length), ::munmap, QZ_FAIL_ERRNO(-1))    \
  X(futex, long,                                                                                    \
    (uint32_t * word, int operation, uint32_t value, const struct timespec* timeout,                \
     uint32_t* word2, uint32_t value3),                                                             \
    (word, operation, value, timeout, word2, value3), qz::os::sys::SystemFutex, QZ_FAIL_ERRNO(-1))  \
  X(pipe2, int, (int* fds, int flags), (fds, flags), ::pipe2, QZ_FAIL_ERRNO(-1))                    \
  X(dup3, int, (int fd, int target, int flags), (fd, target, flags), ::dup3, QZ_FAIL_ERRNO(-1))     \
  X(posix_spawn, int,                                                                               \
    (pid_t * pid, const char* path, const posix_spawn_file_actions_t* actions,                      \
     const posix_spawnattr_t* attributes, char* const* argv, char* const* envp),                    \
    (pid, path, actions, attributes, argv, envp), ::posix_spawn, QZ_FAIL_RESULT)                    \
  X(pidfd_open, int, (pid_t pid, unsigned flags), (pid, flags), qz::os::sys::SystemPidfdOpen,       \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(waitid, int, (idtype_t type, id_t id, siginfo_t* info, int options), (type, id, info, options), \
    ::waitid, QZ_FAIL_ERRNO(-1))                                                                    \
  X(waitpid, pid_t, (pid_t pid, int* status, int options), (pid, status, options), ::waitpid,       \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(poll, int, (struct pollfd * fds, nfds_t count, int timeout), (fds, count, timeout), ::poll,     \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(kill, int, (pid_t pid, int signal), (pid, signal), ::kill, QZ_FAIL_ERRNO(-1))                   \
  X(pthread_create, int,                                                                            \
    (pthread_t * thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument),  \
    (thread, attributes, start, argument), ::pthread_create, QZ_FAIL_RESULT)                        \
  X(sched_setaffinity, int, (pid_t pid, size_t size, const cpu_set_t* mask), (pid, size, mask),     \
    ::sched_setaffinity, QZ_FAIL_ERRNO(-1))                                                         \
  X(sched_getaffinity, int, (pid_t pid, size_t size, cpu_set_t* mask), (pid, size, mask),           \
    ::sched_getaffinity, QZ_FAIL_ERRNO(-1))                                                         \
  /* threads: join, detach, stack size, sleep */                                                    \
  X(pthread_join, int, (pthread_t thread, void** result), (thread, result), ::pthread_join,         \
    QZ_FAIL_RESULT)                                                                                 \
  X(pthread_detach, int, (pthread_t thread), (thread), ::pthread_detach, QZ_FAIL_RESULT)            \
  X(pthread_attr_setstacksize, int, (pthread_attr_t * attributes, size_t size), (attributes, size), \
    ::pthread_attr_setstacksize, QZ_FAIL_RESULT)                                                    \
  X(clock_nanosleep, int,                                                                           \
    (clockid_t clock, int flags, const struct timespec* request, struct timespec* remain),          \
    (clock, flags, request, remain), ::clock_nanosleep, QZ_FAIL_RESULT)                             \
  X(dlopen, void*, (const char* path, int flags), (path, flags), ::dlopen, QZ_FAIL_NULL)            \
  X(dlsym, void*, (void* handle, const char* name), (handle, name), ::dlsym, QZ_FAIL_NULL)          \
  X(dlclose, int, (void* handle), (handle), ::dlclose, (QZ_FAIL_VOID, -1))                          \
  X(dlinfo, int, (void* handle, int request, void* info), (handle, request, info), ::dlinfo,          \
    (QZ_FAIL_VOID, -1))                                                                             \
  X(dladdr1, int, (const void* address, Dl_info* info, void** extra, int flags),                    \
    (address, info, extra, flags), ::dladdr1, (QZ_FAIL_VOID, 0))                                    \
  X(getrandom, ssize_t, (void* buffer, size_t size, unsigned flags), (buffer, size, flags),         \
    ::getrandom, QZ_FAIL_ERRNO(-1))                                                                 \
  X(uname, int, (struct utsname * name), (name), ::uname, QZ_FAIL_ERRNO(-1))                        \
  X(sysinfo, int, (struct sysinfo * info), (info), ::sysinfo, QZ_FAIL_ERRNO(-1))                    \
  X(getpwuid_r, int,                                                                                \
    (uid_t uid, struct passwd* record, char* buffer, size_t size, struct passwd** result),          \
    (uid, record, buffer, size, result), ::getpwuid_r, QZ_FAIL_RESULT)                              \
  X(gethostname, int, (char* buffer, size_t size), (buffer, size), ::gethostname,                   \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(getaddrinfo, int,                                                                               \
    (const char* node, const char* service, const struct addrinfo* hints, struct addrinfo** list),  \
    (node, service, hints, list), ::getaddrinfo, QZ_FAIL_RESULT)                                    \
  X(freeaddrinfo, void, (struct addrinfo * list), (list), ::freeaddrinfo, QZ_FAIL_VOID)             \
  X(getifaddrs, int, (struct ifaddrs * *list), (list), ::getifaddrs, QZ_FAIL_ERRNO(-1))             \
  X(freeifaddrs, void, (struct ifaddrs * list), (list), ::freeifaddrs, QZ_FAIL_VOID)             \
  /* reporting, process identity */                                                             \
  X(socket, int, (int domain, int type, int protocol), (domain, type, protocol), ::socket,          \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(connect, int, (int fd, const struct sockaddr* address, socklen_t length), (fd, address, length),\
    ::connect, QZ_FAIL_ERRNO(-1))                                                                   \
  X(send, ssize_t, (int fd, const void* buffer, size_t size, int flags), (fd, buffer, size, flags), \
    ::send, QZ_FAIL_ERRNO(-1))                                                                      \
  X(getpid, pid_t, (), (), ::getpid, QZ_FAIL_ERRNO(-1))                                             \
  X(gettid, pid_t, (), (), ::gettid, QZ_FAIL_ERRNO(-1))                                             \
  X(sched_yield, int, (), (), ::sched_yield, QZ_FAIL_ERRNO(-1))                                     \
  X(raise, int, (int signal), (signal), ::raise, QZ_FAIL_ERRNO(-1))                                \
  X(getsid, pid_t, (pid_t pid), (pid), ::getsid, QZ_FAIL_ERRNO(-1))                                 \
  /* time and the zone */                                                                           \
  X(clock_gettime, int, (clockid_t clock, struct timespec* time), (clock, time), ::clock_gettime,  \
    QZ_FAIL_ERRNO(-1))                                                                              \
  X(localtime_r, struct tm*, (const time_t* seconds, struct tm* fields), (seconds, fields),        \
    ::localtime_r, QZ_FAIL_ERRNO(nullptr))                                                          \
  X(gmtime_r, struct tm*, (const time_t* seconds, struct tm* fields), (seconds, fields),           \
    ::gmtime_r, QZ_FAIL_ERRNO(nullptr))                                                             \
  X(mktime, time_t, (struct tm * fields), (fields), ::mktime, QZ_FAIL_ERRNO(-1))                   \
  /* system information */                                                                        \
  X(sysconf, long, (int name), (name), ::sysconf, QZ_FAIL_ERRNO(-1L))                              \
  X(getrlimit, int, (int resource, struct rlimit* limit), (resource, limit),                       \
    qz::os::sys::SystemGetrlimit, QZ_FAIL_ERRNO(-1))                                                \
  X(geteuid, uid_t, (), (), ::geteuid, (QZ_FAIL_VOID, static_cast<uid_t>(-1)))

namespace qz::os::sys {

// The calls glibc has no wrapper for.
long SystemFutex(uint32_t* word, int operation, uint32_t value, const struct timespec* timeout,
                 uint32_t* word2, uint32_t value3) noexcept;
int SystemPidfdOpen(pid_t pid, unsigned flags) noexcept;
// glibc's getrlimit takes an enumeration in C++; the table's entry takes the plain number.
int SystemGetrlimit(int resource, struct rlimit* limit) noexcept;

enum class Call : unsigned {
#define QZ_SYSCALL_ENUM(name, ...) name,
  QZ_SYSTEM_CALLS(QZ_SYSCALL_ENUM)
#undef QZ_SYSCALL_ENUM
  kCount
};

// The system's own calls, each behind a function of the entry's exact signature.
#define QZ_SYSCALL_SYSTEM_DECL(name, result, params, args, system, failure) \
  result System_##name params noexcept;
QZ_SYSTEM_CALLS(QZ_SYSCALL_SYSTEM_DECL)
#undef QZ_SYSCALL_SYSTEM_DECL

// One entry of the table. Every field is constant-initialised, so the table is ready before any
// constructor of the library runs (the load hook among them), whatever the order of the files.
struct Entry {
  const char* name;                          // the system's name of the call
  std::atomic<SystemCallPointer> current;    // a test's replacement, or null: the system's own
  std::atomic<int> failCount;                // calls still to fail at once (injection)
  std::atomic<int> failError;                // the error code they fail with
};

extern Entry g_systemCalls[static_cast<unsigned>(Call::kCount)];

// Takes one injected failure of `entry` if any is left; true with its error code in *error.
bool TakeInjectedFailure(Entry& entry, int* error) noexcept;

#define QZ_SYSCALL_WRAPPER(name, result, params, args, system, failure)                   \
  inline result name params noexcept {                                                   \
    Entry& entry_ = g_systemCalls[static_cast<unsigned>(Call::name)];                     \
    int injectedError_ = 0;                                                               \
    if (__builtin_expect(entry_.failCount.load(std::memory_order_relaxed) != 0, 0) &&     \
        TakeInjectedFailure(entry_, &injectedError_))                                     \
      return failure;                                                                     \
    const SystemCallPointer replaced_ = entry_.current.load(std::memory_order_acquire);  \
    if (__builtin_expect(replaced_ == nullptr, 1)) return System_##name args;             \
    return reinterpret_cast<result(*) params>(replaced_) args;                            \
  }
QZ_SYSTEM_CALLS(QZ_SYSCALL_WRAPPER)
#undef QZ_SYSCALL_WRAPPER

}  // namespace qz::os::sys
