// system_info.h - the machine's figures and the effective user's name, as the system-information
// family needs them.
//
// Portable declarations only; each platform fills the records from what its system offers.
#pragma once

#include <cstdint>

namespace qz::os {

// The platform identifier this port reports (the first platform's are 0 to 3).
inline constexpr uint32_t kPlatformIdLinux = 0x4C58;

struct MemoryStatus {
  uint64_t totalPhysical = 0;     // bytes of RAM
  uint64_t availablePhysical = 0; // bytes available without swapping
  uint64_t totalVirtual = 0;      // bytes of the process's user address space
  uint64_t availableVirtual = 0;  // of those, bytes not mapped now
};

struct ProcessorFigures {
  uint32_t allocationGranularity = 0;  // bytes
  uint32_t pageSize = 0;               // bytes
  uint32_t processorType = 0;          // 8664 for x86-64, 0xAA64 for 64-bit ARM, 0 if unknown
  uint16_t processorLevel = 0;
  uint16_t processorRevision = 0;
  uint32_t processorCount = 0;         // online
};

struct VersionFigures {
  uint32_t platformId = 0;
  uint32_t major = 0;
  uint32_t minor = 0;
  uint32_t build = 0;
};

// Fills what the system tells; figures it does not tell stay 0. Never fails.
void GlobalMemoryStatus(MemoryStatus* status) noexcept;
void GetSystemInfo(ProcessorFigures* figures) noexcept;
// False (last error set) when the system's version cannot be had.
bool GetVersion(VersionFigures* figures) noexcept;

// The effective user's name and terminator into `buffer` of *size units; *size becomes the units
// written, terminator included. False with 122 (and *size the units needed) when it does not
// fit; false with the system's error when the name cannot be had.
bool GetUserName(char16_t* buffer, uint32_t* size) noexcept;

}  // namespace qz::os
