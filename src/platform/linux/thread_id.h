// thread_id.h - the calling thread's id as the Linux layer reads it on hot paths: one load of a
// thread-local cell, filled by the first call on each thread (and forgotten in a forked child).
//
// The cell uses the initial-exec model so that a read from inside the shared library is a plain
// %fs-relative load rather than a call into the dynamic loader.
#pragma once

#include <cstdint>

#define QZ_THREAD_ID_TLS_MODEL __attribute__((tls_model("initial-exec")))

namespace qz::os {

extern __thread uint32_t t_threadId QZ_THREAD_ID_TLS_MODEL;  // 0 until fetched

// Fetches the id with gettid, caches it and returns it.
__attribute__((noinline, cold)) uint32_t FetchThreadId() noexcept;

inline uint32_t CachedThreadId() noexcept {
  const uint32_t id = t_threadId;
  return __builtin_expect(id != 0, 1) ? id : FetchThreadId();
}

}  // namespace qz::os
