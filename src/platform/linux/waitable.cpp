// waitable.cpp - the monitor and the waitable object on Linux: pthread mutexes with condition
// variables on CLOCK_MONOTONIC, so a change of the wall clock never stretches or cuts a timeout.
#include "platform/waitable.h"

#include <pthread.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "errno_map.h"
#include "platform/last_error.h"
#include "platform/native_error.h"
#include "syscalls.h"

namespace qz::os {
namespace {

[[noreturn]] void BrokenInvariant(const char* call, int error) noexcept {
  std::fprintf(stderr, "QZCore: %s failed (%s); the object is damaged or was destroyed in use\n", call,
               std::strerror(error));
  std::abort();
}

void Check(int error, const char* call) noexcept {
  if (error != 0) BrokenInvariant(call, error);
}

void InitCondition(pthread_cond_t* condition) noexcept {
  pthread_condattr_t attr;
  Check(pthread_condattr_init(&attr), "pthread_condattr_init");
  Check(pthread_condattr_setclock(&attr, CLOCK_MONOTONIC), "pthread_condattr_setclock");
  Check(pthread_cond_init(condition, &attr), "pthread_cond_init");
  pthread_condattr_destroy(&attr);
}

// The monotonic deadline `timeoutMs` from now; false with the last error set if the clock fails.
bool DeadlineAfter(uint32_t timeoutMs, struct timespec* deadline) noexcept {
  if (sys::clock_gettime(CLOCK_MONOTONIC, deadline) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  deadline->tv_sec += timeoutMs / 1000;
  deadline->tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000;
  if (deadline->tv_nsec >= 1000000000) {
    deadline->tv_nsec -= 1000000000;
    ++deadline->tv_sec;
  }
  return true;
}

struct MonitorState {
  pthread_mutex_t mutex;       // recursive
  pthread_cond_t condition;    // on CLOCK_MONOTONIC
};

struct WaitableState {
  pthread_mutex_t mutex;       // guards value; never held across anything but the wait itself
  pthread_cond_t condition;    // on CLOCK_MONOTONIC
  WaitableObject::Kind kind;
  uint32_t value;              // event: 0 or 1; counter: the count
  uint32_t maximum;            // counter: the highest count
};

static_assert(sizeof(MonitorState) <= 128 && alignof(MonitorState) <= 16);
static_assert(sizeof(WaitableState) <= 128 && alignof(WaitableState) <= 16);

template <class State>
State& StateOf(unsigned char* storage) noexcept {
  return *std::launder(reinterpret_cast<State*>(storage));
}

}  // namespace

Monitor::Monitor() noexcept {
  auto* state = new (m_storage) MonitorState;
  pthread_mutexattr_t attr;
  Check(pthread_mutexattr_init(&attr), "pthread_mutexattr_init");
  Check(pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE), "pthread_mutexattr_settype");
  Check(pthread_mutex_init(&state->mutex, &attr), "pthread_mutex_init");
  pthread_mutexattr_destroy(&attr);
  InitCondition(&state->condition);
}

Monitor::~Monitor() {
  auto& state = StateOf<MonitorState>(m_storage);
  pthread_cond_destroy(&state.condition);
  pthread_mutex_destroy(&state.mutex);
  state.~MonitorState();
}

void Monitor::Enter() noexcept { Check(pthread_mutex_lock(&StateOf<MonitorState>(m_storage).mutex), "pthread_mutex_lock"); }

void Monitor::Leave() noexcept {
  Check(pthread_mutex_unlock(&StateOf<MonitorState>(m_storage).mutex), "pthread_mutex_unlock");
}

bool Monitor::Sleep(uint32_t timeoutMs) noexcept {
  auto& state = StateOf<MonitorState>(m_storage);
  int error;
  if (timeoutMs == kInfinite) {
    error = pthread_cond_wait(&state.condition, &state.mutex);
  } else {
    struct timespec deadline;
    if (!DeadlineAfter(timeoutMs, &deadline)) return false;
    error = pthread_cond_timedwait(&state.condition, &state.mutex, &deadline);
  }
  if (error == 0) return true;
  SetLastError(error == ETIMEDOUT ? kErrorTimeout : TranslateErrno(error));
  return false;
}

void Monitor::WakeOne() noexcept { Check(pthread_cond_signal(&StateOf<MonitorState>(m_storage).condition), "pthread_cond_signal"); }

void Monitor::WakeAll() noexcept {
  Check(pthread_cond_broadcast(&StateOf<MonitorState>(m_storage).condition), "pthread_cond_broadcast");
}

WaitableObject::WaitableObject(Kind kind, uint32_t initial, uint32_t maximum) noexcept {
  auto* state = new (m_storage) WaitableState;
  Check(pthread_mutex_init(&state->mutex, nullptr), "pthread_mutex_init");
  InitCondition(&state->condition);
  state->kind = kind;
  state->value = initial;
  state->maximum = maximum;
}

WaitableObject::~WaitableObject() {
  auto& state = StateOf<WaitableState>(m_storage);
  pthread_cond_destroy(&state.condition);
  pthread_mutex_destroy(&state.mutex);
  state.~WaitableState();
}

bool WaitableObject::Set() noexcept {
  auto& state = StateOf<WaitableState>(m_storage);
  Check(pthread_mutex_lock(&state.mutex), "pthread_mutex_lock");
  bool done = true;
  if (state.kind == Kind::kCounter) {
    if (state.value >= state.maximum) {
      done = false;
    } else {
      ++state.value;
    }
  } else {
    state.value = 1;
  }
  // Woken under the lock: a waiter that passes may destroy the object as soon as it returns.
  if (done) {
    if (state.kind == Kind::kManualReset) {
      Check(pthread_cond_broadcast(&state.condition), "pthread_cond_broadcast");
    } else {
      Check(pthread_cond_signal(&state.condition), "pthread_cond_signal");
    }
  }
  Check(pthread_mutex_unlock(&state.mutex), "pthread_mutex_unlock");
  if (!done) SetLastError(kErrorTooManyPosts);
  return done;
}

void WaitableObject::Reset() noexcept {
  auto& state = StateOf<WaitableState>(m_storage);
  Check(pthread_mutex_lock(&state.mutex), "pthread_mutex_lock");
  if (state.kind != Kind::kCounter) state.value = 0;
  Check(pthread_mutex_unlock(&state.mutex), "pthread_mutex_unlock");
}

uint32_t WaitableObject::Wait(uint32_t timeoutMs) noexcept {
  auto& state = StateOf<WaitableState>(m_storage);
  Check(pthread_mutex_lock(&state.mutex), "pthread_mutex_lock");
  uint32_t result = kWaitObject0;
  if (state.value == 0 && timeoutMs == kInfinite) {
    while (state.value == 0) Check(pthread_cond_wait(&state.condition, &state.mutex), "pthread_cond_wait");
  } else if (state.value == 0 && timeoutMs != 0) {
    struct timespec deadline;
    if (!DeadlineAfter(timeoutMs, &deadline)) {
      result = kWaitFailed;
    } else {
      while (state.value == 0) {
        const int error = pthread_cond_timedwait(&state.condition, &state.mutex, &deadline);
        if (error == ETIMEDOUT) break;
        Check(error, "pthread_cond_timedwait");
      }
    }
  }
  if (result != kWaitFailed) {
    if (state.value == 0) {
      result = kWaitTimeout;
    } else if (state.kind != Kind::kManualReset) {
      --state.value;
    }
  }
  Check(pthread_mutex_unlock(&state.mutex), "pthread_mutex_unlock");
  return result;
}

}  // namespace qz::os
