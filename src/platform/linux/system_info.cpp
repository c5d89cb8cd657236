// system_info.cpp - the machine's figures and the effective user's name on Linux (system_info.h).
//
// Memory from sysinfo(2) and /proc/meminfo (MemAvailable: what can be had without swapping), the
// address space from the architecture's user range (or RLIMIT_AS, when smaller) less the process's
// VmSize; the page size, which is also the granularity of mappings, and the online processors from
// sysconf; the processor's identity from CPUID on x86-64 and MIDR_EL1 on 64-bit ARM; the version
// from the kernel release; the user from the password database.
#include "platform/system_info.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "errno_map.h"
#include "io.h"
#include "platform/last_error.h"
#include "platform/native_error.h"
#include "platform/utf8.h"

namespace qz::os {
namespace {

#if defined(__x86_64__)
constexpr uint64_t kUserAddressSpace = 0x00007FFFFFFFF000ull;  // 47 bits, less the guard page
#elif defined(__aarch64__)
constexpr uint64_t kUserAddressSpace = 0x0001000000000000ull;  // 48-bit virtual addresses
#else
constexpr uint64_t kUserAddressSpace = 0;
#endif

// The number after `key` in a "Key:   value kB" file of /proc, in kB; false if absent.
bool ReadProcFigure(const char* file, const char* key, uint64_t* value) noexcept {
  const int fd = OpenCloexec(file, O_RDONLY);
  if (fd < 0) return false;
  char text[8192];
  const ssize_t got = ReadAll(fd, text, sizeof text - 1);
  sys::close(fd);
  if (got <= 0) return false;
  text[got] = '\0';
  const size_t keyLength = std::strlen(key);
  for (const char* line = text; line != nullptr && *line != '\0';) {
    if (std::strncmp(line, key, keyLength) == 0) {
      *value = std::strtoull(line + keyLength, nullptr, 10);
      return true;
    }
    line = std::strchr(line, '\n');
    if (line != nullptr) ++line;
  }
  return false;
}

void FillProcessorIdentity(ProcessorFigures* figures) noexcept {
#if defined(__x86_64__)
  figures->processorType = 8664;
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return;
  const unsigned baseFamily = (eax >> 8) & 0xF;
  const unsigned family = baseFamily == 0xF ? baseFamily + ((eax >> 20) & 0xFF) : baseFamily;
  unsigned model = (eax >> 4) & 0xF;
  if (baseFamily == 0x6 || baseFamily == 0xF) model |= ((eax >> 16) & 0xF) << 4;
  figures->processorLevel = static_cast<uint16_t>(family);
  figures->processorRevision = static_cast<uint16_t>((model << 8) | (eax & 0xF));
#elif defined(__aarch64__)
  figures->processorType = 0xAA64;
  const int fd = OpenCloexec("/sys/devices/system/cpu/cpu0/regs/identification/midr_el1", O_RDONLY);
  if (fd < 0) return;
  char text[64] = {};
  const ssize_t got = ReadAll(fd, text, sizeof text - 1);
  sys::close(fd);
  if (got <= 0) return;
  const uint64_t midr = std::strtoull(text, nullptr, 16);
  figures->processorLevel = static_cast<uint16_t>((midr >> 24) & 0xFF);                   // implementer
  figures->processorRevision = static_cast<uint16_t>(((midr >> 20) & 0xF) << 8 | (midr & 0xF));
#else
  (void)figures;
#endif
}

}  // namespace

void GlobalMemoryStatus(MemoryStatus* status) noexcept {
  struct sysinfo info;
  if (sys::sysinfo(&info) == 0) {
    status->totalPhysical = static_cast<uint64_t>(info.totalram) * info.mem_unit;
    status->availablePhysical = static_cast<uint64_t>(info.freeram) * info.mem_unit;
  }
  uint64_t kib = 0;
  if (ReadProcFigure("/proc/meminfo", "MemAvailable:", &kib)) status->availablePhysical = kib * 1024;

  uint64_t total = kUserAddressSpace;
  struct rlimit limit;
  if (sys::getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && limit.rlim_cur < total) {
    total = limit.rlim_cur;
  }
  status->totalVirtual = total;
  uint64_t mappedKib = 0;
  ReadProcFigure("/proc/self/status", "VmSize:", &mappedKib);
  const uint64_t mapped = mappedKib * 1024;
  status->availableVirtual = mapped < total ? total - mapped : 0;
}

void GetSystemInfo(ProcessorFigures* figures) noexcept {
  const long page = sys::sysconf(_SC_PAGESIZE);
  figures->pageSize = page > 0 ? static_cast<uint32_t>(page) : 0;
  figures->allocationGranularity = figures->pageSize;
  const long online = sys::sysconf(_SC_NPROCESSORS_ONLN);
  figures->processorCount = online > 0 ? static_cast<uint32_t>(online) : 0;
  FillProcessorIdentity(figures);
}

bool GetVersion(VersionFigures* figures) noexcept {
  struct utsname name;
  if (sys::uname(&name) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  unsigned numbers[3] = {0, 0, 0};
  std::sscanf(name.release, "%u.%u.%u", &numbers[0], &numbers[1], &numbers[2]);
  figures->platformId = kPlatformIdLinux;
  figures->major = numbers[0];
  figures->minor = numbers[1];
  figures->build = numbers[2];
  return true;
}

bool GetUserName(char16_t* buffer, uint32_t* size) noexcept {
  try {
    const uid_t uid = sys::geteuid();
    const long hint = sys::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> scratch(hint > 0 ? static_cast<size_t>(hint) : 1024);
    struct passwd record;
    struct passwd* found = nullptr;
    int rc;
    while ((rc = sys::getpwuid_r(uid, &record, scratch.data(), scratch.size(), &found)) == ERANGE) {
      scratch.resize(scratch.size() * 2);
    }
    if (rc != 0 && rc != ENOENT && rc != ESRCH) {
      SetLastErrorFromErrno(rc);
      return false;
    }
    // A user id the database does not know (common in containers) goes by its number.
    const std::u16string name =
        Utf8ToUtf16Replacing(found != nullptr ? std::string(found->pw_name) : std::to_string(uid));
    const auto needed = static_cast<uint32_t>(name.size() + 1);
    if (*size < needed) {
      *size = needed;
      SetLastError(kErrorInsufficientBuffer);
      return false;
    }
    name.copy(buffer, name.size());
    buffer[name.size()] = 0;
    *size = needed;
    return true;
  } catch (const std::bad_alloc&) {
    SetLastError(kErrorOutOfMemory);
    return false;
  }
}

}  // namespace qz::os
