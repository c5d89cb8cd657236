// thread.cpp - native threads on Linux: pthread_create with the requested stack, the new thread's
// kernel id handed back to its creator, join and detach, sleeping and the affinity mask.
//
// pthread_create gives no kernel thread id, and glibc 2.36 has no call that reads one from a
// pthread_t, so the new thread reports its own: it stores the id in its creator's start record and
// wakes the creator with a futex, before it runs anything else. The creator waits for that, so a
// thread is never handed out without its id.
#include "platform/thread.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>

#include "errno_map.h"
#include "platform/last_error.h"
#include "platform/native_error.h"
#include "platform/process_info.h"
#include "syscalls.h"

namespace qz::os {
namespace {

static_assert(sizeof(pthread_t) <= sizeof(NativeThread), "a pthread_t must fit a NativeThread");

// Lives on the creator's stack until the new thread has reported its id.
struct StartRecord {
  ThreadRoutine routine;
  void* argument;
  std::atomic<uint32_t> id{0};  // the new thread's kernel id; 0 until it reports
};
static_assert(sizeof(std::atomic<uint32_t>) == sizeof(uint32_t), "the futex word is the atomic");

uint32_t* FutexWord(std::atomic<uint32_t>* word) noexcept { return reinterpret_cast<uint32_t*>(word); }

void* ThreadEntry(void* pointer) {
  auto* record = static_cast<StartRecord*>(pointer);
  const ThreadRoutine routine = record->routine;
  void* const argument = record->argument;
  record->id.store(GetCurrentThreadId(), std::memory_order_release);
  // The creator may return, and its stack be reused, as soon as it sees the id: the wake touches
  // only the address, which a futex tolerates (a stray wake is a spurious one).
  sys::futex(FutexWord(&record->id), FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
  return reinterpret_cast<void*>(static_cast<uintptr_t>(routine(argument)));
}

uint32_t WaitForId(StartRecord* record) noexcept {
  uint32_t id;
  while ((id = record->id.load(std::memory_order_acquire)) == 0) {
    sys::futex(FutexWord(&record->id), FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
  }
  return id;
}

pthread_t Native(NativeThread thread) noexcept {
  return thread == kCurrentThreadPseudo ? pthread_self() : static_cast<pthread_t>(thread);
}

}  // namespace

bool StartThread(uint32_t stackSize, ThreadRoutine routine, void* argument, NativeThread* thread,
                 uint32_t* id) noexcept {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);  // cannot fail on glibc
  int error = 0;
  if (stackSize != 0) {
    const size_t size = std::max<size_t>(stackSize, static_cast<size_t>(PTHREAD_STACK_MIN));
    error = sys::pthread_attr_setstacksize(&attributes, size);
  }
  StartRecord record{routine, argument};
  pthread_t native{};
  if (error == 0) error = sys::pthread_create(&native, &attributes, &ThreadEntry, &record);
  pthread_attr_destroy(&attributes);
  if (error != 0) {
    SetLastErrorFromErrno(error, ErrnoContext::kThreadCreate);
    return false;
  }
  *id = WaitForId(&record);
  *thread = static_cast<NativeThread>(native);
  return true;
}

bool JoinThread(NativeThread thread, uint32_t* exitCode) noexcept {
  void* result = nullptr;
  // glibc refuses a join that would wait for the caller itself (EDEADLK) before it touches
  // anything. The first platform's wait on such a thread simply never ends, and callers get the
  // same here: the pseudo handle of the loading thread stands for whoever waits on it.
  const int error = sys::pthread_join(Native(thread), &result);
  if (error == EDEADLK) SleepMilliseconds(UINT32_MAX);
  if (error != 0) {
    SetLastErrorFromErrno(error);
    return false;
  }
  if (exitCode != nullptr) *exitCode = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(result));
  return true;
}

bool DetachThread(NativeThread thread) noexcept {
  if (thread == kCurrentThreadPseudo) return true;
  const int error = sys::pthread_detach(static_cast<pthread_t>(thread));
  if (error != 0) {
    SetLastErrorFromErrno(error);
    return false;
  }
  return true;
}

void SleepMilliseconds(uint32_t milliseconds) noexcept {
  if (milliseconds == 0) {
    sys::sched_yield();
    return;
  }
  if (milliseconds == UINT32_MAX) {
    for (;;) {
      struct timespec hour = {3600, 0};
      sys::clock_nanosleep(CLOCK_MONOTONIC, 0, &hour, nullptr);
    }
  }
  struct timespec left = {static_cast<time_t>(milliseconds / 1000),
                          static_cast<long>(milliseconds % 1000) * 1000000L};
  // A signal handler interrupts the sleep; the rest is slept after it.
  while (sys::clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
  }
}

bool SetThreadAffinity(uint64_t mask, uint64_t* previous) noexcept {
  cpu_set_t before;
  CPU_ZERO(&before);
  if (sys::sched_getaffinity(0, sizeof before, &before) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  cpu_set_t wanted;
  CPU_ZERO(&wanted);
  for (unsigned cpu = 0; cpu < 64; ++cpu) {
    if ((mask >> cpu) & 1) CPU_SET(cpu, &wanted);
  }
  if (sys::sched_setaffinity(0, sizeof wanted, &wanted) != 0) {
    SetLastErrorFromErrno(errno);  // EINVAL: no processor of the mask may be used
    return false;
  }
  if (previous != nullptr) {
    uint64_t bits = 0;
    for (unsigned cpu = 0; cpu < 64; ++cpu) {
      if (CPU_ISSET(cpu, &before)) bits |= uint64_t{1} << cpu;
    }
    *previous = bits;
  }
  return true;
}

}  // namespace qz::os
