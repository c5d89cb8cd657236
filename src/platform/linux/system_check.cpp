// system_check.cpp - the message and abort of a broken invariant. The message goes straight to
// descriptor 2 (not through the system-call table): a test that fails writes must not hide it.
#include "system_check.h"

#include <unistd.h>

#include <cstdlib>
#include <cstdio>
#include <cstring>

namespace qz::os {

void SystemCallFailed(const char* call, int error) noexcept {
  char text[256];
  char reason[128];
  const char* described = strerror_r(error, reason, sizeof reason);
  const size_t length = static_cast<size_t>(
      snprintf(text, sizeof text, "qzcore: fatal: %s failed: %s (%d)\n", call, described, error));
  const ssize_t written = ::write(2, text, length < sizeof text ? length : sizeof text - 1);
  (void)written;
  std::abort();
}

}  // namespace qz::os
