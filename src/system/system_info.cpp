// system_info.cpp - QZSystemInfo from the platform's memory, processor and version figures, and
// the user's name (system_info.h).
#include "system/system_info.h"

#include "frame/core_exception.h"
#include "platform/last_error.h"
#include "platform/system_info.h"

namespace qz::core {

static_assert(sizeof(QZSystemInfo) == QZ_SYSTEM_INFO_SIZE, "QZSystemInfo is the size the header says");
static_assert(QZ_PLATFORM_ID_LINUX == os::kPlatformIdLinux, "one platform identifier");

QZRESULT GetSystemInfo(QZSystemInfo* info) noexcept {
  os::MemoryStatus memory;
  os::GlobalMemoryStatus(&memory);
  info->totalPhysicalMemory = memory.totalPhysical;
  info->availablePhysicalMemory = memory.availablePhysical;
  info->totalVirtualMemory = memory.totalVirtual;
  info->availableVirtualMemory = memory.availableVirtual;

  os::ProcessorFigures processor;
  os::GetSystemInfo(&processor);
  info->allocationGranularity = processor.allocationGranularity;
  info->pageSize = processor.pageSize;
  info->processorType = static_cast<uint16_t>(processor.processorType);
  info->processorLevel = processor.processorLevel;
  info->processorRevision = processor.processorRevision;
  info->processorCount = static_cast<uint16_t>(processor.processorCount);

  os::VersionFigures version;
  if (!os::GetVersion(&version)) return ResultFromNative(os::GetLastError());
  info->platformId = static_cast<uint16_t>(version.platformId);
  info->reserved = 0;
  info->versionMajor = static_cast<uint16_t>(version.major);
  info->versionMinor = static_cast<uint16_t>(version.minor);
  info->versionBuild = static_cast<uint16_t>(version.build);
  return QZ_S_OK;
}

QZRESULT GetUserName(QZWCHAR* buffer, uint32_t size) noexcept {
  uint32_t units = size;
  return os::GetUserName(buffer, &units) ? QZ_S_OK : ResultFromNative(os::GetLastError());
}

}  // namespace qz::core
