// syscalls.cpp - the system-call table itself, the calls glibc does not wrap, and the replacing
// and failing of entries for tests.
#include "syscalls.h"

#include <sys/syscall.h>

#include <cstring>

namespace qz::os::sys {

long SystemFutex(uint32_t* word, int operation, uint32_t value, const struct timespec* timeout,
                 uint32_t* word2, uint32_t value3) noexcept {
  return ::syscall(SYS_futex, word, operation, value, timeout, word2, value3);
}

int SystemPidfdOpen(pid_t pid, unsigned flags) noexcept {
  return static_cast<int>(::syscall(SYS_pidfd_open, pid, flags));
}

int SystemGetrlimit(int resource, struct rlimit* limit) noexcept {
  return ::getrlimit(static_cast<__rlimit_resource_t>(resource), limit);
}

namespace {

// The system's own calls, each behind a function of the entry's exact signature.
#define QZ_SYSCALL_SYSTEM(name, result, params, args, system, failure) \
  result System_##name params noexcept { return system args; }
QZ_SYSTEM_CALLS(QZ_SYSCALL_SYSTEM)
#undef QZ_SYSCALL_SYSTEM

}  // namespace

// Filled before any unprioritised initializer runs, the load hook's among them: the start already
// makes system calls (the thread manager records the loading thread's id).
__attribute__((init_priority(101))) Entry g_systemCalls[static_cast<unsigned>(Call::kCount)] = {
#define QZ_SYSCALL_ENTRY(name, ...) \
  {#name, reinterpret_cast<SystemCallPointer>(&System_##name), {reinterpret_cast<SystemCallPointer>(&System_##name)}, {0}, {0}},
    QZ_SYSTEM_CALLS(QZ_SYSCALL_ENTRY)
#undef QZ_SYSCALL_ENTRY
};

bool TakeInjectedFailure(Entry& entry, int* error) noexcept {
  int left = entry.failCount.load(std::memory_order_relaxed);
  while (left > 0) {
    if (entry.failCount.compare_exchange_weak(left, left - 1, std::memory_order_acq_rel)) {
      *error = entry.failError.load(std::memory_order_relaxed);
      return true;
    }
  }
  return false;
}

}  // namespace qz::os::sys

namespace qz::os {
namespace {

sys::Entry* FindEntry(const char* name) noexcept {
  if (name == nullptr) return nullptr;
  for (auto& entry : sys::g_systemCalls) {
    if (std::strcmp(entry.name, name) == 0) return &entry;
  }
  return nullptr;
}

}  // namespace

bool SetSystemCall(const char* name, SystemCallPointer replacement) noexcept {
  sys::Entry* entry = FindEntry(name);
  if (entry == nullptr) return false;
  entry->current.store(replacement != nullptr ? replacement : entry->system, std::memory_order_release);
  return true;
}

SystemCallPointer GetSystemCall(const char* name) noexcept {
  const sys::Entry* entry = FindEntry(name);
  return entry != nullptr ? entry->current.load(std::memory_order_acquire) : nullptr;
}

const char* NextSystemCall(const char* name) noexcept {
  constexpr unsigned kCount = static_cast<unsigned>(sys::Call::kCount);
  if (name == nullptr) return sys::g_systemCalls[0].name;
  const sys::Entry* entry = FindEntry(name);
  if (entry == nullptr) return nullptr;
  const auto index = static_cast<unsigned>(entry - sys::g_systemCalls) + 1;
  return index < kCount ? sys::g_systemCalls[index].name : nullptr;
}

bool FailSystemCall(const char* name, int nativeError, int count) noexcept {
  sys::Entry* entry = FindEntry(name);
  if (entry == nullptr) return false;
  entry->failError.store(nativeError, std::memory_order_relaxed);
  entry->failCount.store(count > 0 ? count : 0, std::memory_order_release);
  return true;
}

void ResetSystemCalls() noexcept {
  for (auto& entry : sys::g_systemCalls) {
    entry.failCount.store(0, std::memory_order_relaxed);
    entry.current.store(entry.system, std::memory_order_release);
  }
}

}  // namespace qz::os
