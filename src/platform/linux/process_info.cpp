// process_info.cpp - thread and process identity, yielding, traps and sessions on Linux.
#include "platform/process_info.h"
#include "platform/system_info.h"

#include <fcntl.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>

#include "io.h"
#include "syscalls.h"

namespace qz::os {
namespace {

thread_local uint32_t t_threadId = 0;  // gettid() of this thread, fetched once

// The thread that calls fork() goes on in the child under a new id, with the copy of its cached
// one: forget it there, so the child's trace prefix, mutex owners and lock peeks see its own id.
void ForgetThreadIdInChild() noexcept { t_threadId = 0; }

// Registered once, when the first thread id is cached.
void RegisterForkHandler() noexcept {
  static const bool registered = pthread_atfork(nullptr, nullptr, &ForgetThreadIdInChild) == 0;
  (void)registered;
}

}  // namespace

uint32_t GetCurrentThreadId() noexcept {
  if (t_threadId == 0) {
    RegisterForkHandler();
    t_threadId = static_cast<uint32_t>(sys::gettid());
  }
  return t_threadId;
}

uint32_t GetCurrentProcessId() noexcept { return static_cast<uint32_t>(sys::getpid()); }

void YieldThread() noexcept { sys::sched_yield(); }

void BreakpointTrap() noexcept { sys::raise(SIGTRAP); }

void AbortProcess() noexcept {
  sys::raise(SIGABRT);
  std::exit(3);
}

bool ProcessIdToSessionId(uint32_t pid, uint32_t* session) noexcept {
  const pid_t sid = sys::getsid(static_cast<pid_t>(pid));
  if (sid < 0) return false;
  *session = static_cast<uint32_t>(sid);
  return true;
}

ActiveConsoleSessionFn FindActiveConsoleSessionQuery() noexcept { return nullptr; }

bool QueryPlatformVersion(uint32_t* platformId, uint32_t* majorVersion) noexcept {
  struct utsname un;
  if (sys::uname(&un) != 0) return false;
  *platformId = kPlatformIdLinux;  // not the first platform's family
  *majorVersion = static_cast<uint32_t>(strtoul(un.release, nullptr, 10));
  return true;
}

bool IsDebuggerAttached() noexcept {
  const int fd = OpenCloexec("/proc/self/status", O_RDONLY);
  if (fd < 0) return false;
  char status[4096];
  const ssize_t size = ReadAll(fd, status, sizeof status - 1);
  sys::close(fd);
  if (size <= 0) return false;
  status[size] = '\0';
  const char* tracer = std::strstr(status, "\nTracerPid:");
  return tracer != nullptr && std::strtol(tracer + 11, nullptr, 10) != 0;
}

}  // namespace qz::os
