/* qzsysinfo.h - the machine's memory, processor and operating-system figures, and the name of the
 * user the process runs as.
 *
 * Both functions keep no state and read the system afresh on every call; any thread may call them.
 */
#ifndef QZCORE_QZSYSINFO_H
#define QZCORE_QZSYSINFO_H

#include "qzcore/qztypes.h"

/* processorType of an x86-64 processor, and of a 64-bit ARM one. */
#define QZ_PROCESSOR_X8664 8664
#define QZ_PROCESSOR_ARM64 0xAA64
/* platformId of a Linux system (the first platform's identifiers are 0 to 3). */
#define QZ_PLATFORM_ID_LINUX 0x4C58

/* The figures QZGetSystemInfo fills, into storage the caller provides. */
typedef struct QZSystemInfo {
  uint64_t totalPhysicalMemory;     /* bytes of RAM (sysinfo) */
  uint64_t availablePhysicalMemory; /* bytes available without swapping (MemAvailable) */
  uint64_t totalVirtualMemory;      /* bytes of this process's user address space (less when
                                       RLIMIT_AS sets a smaller limit) */
  uint64_t availableVirtualMemory;  /* of those, bytes not mapped by the process now */
  uint32_t allocationGranularity;   /* the page size: the unit of mappings here */
  uint32_t pageSize;                /* bytes */
  uint16_t processorType;           /* QZ_PROCESSOR_X8664, QZ_PROCESSOR_ARM64, 0 if unknown */
  uint16_t processorLevel;          /* x86-64: the family (extended family added for 15);
                                       64-bit ARM: the implementer of MIDR_EL1 */
  uint16_t processorRevision;       /* x86-64: model (extended model included) << 8 | stepping;
                                       64-bit ARM: variant << 8 | revision of MIDR_EL1 */
  uint16_t processorCount;          /* processors online, low 16 bits */
  uint16_t platformId;              /* QZ_PLATFORM_ID_LINUX */
  uint16_t reserved;                /* 0 */
  uint16_t versionMajor;            /* kernel release "6.1.0-18-amd64": 6 */
  uint16_t versionMinor;            /* 1 */
  uint16_t versionBuild;            /* 0, the third number */
} QZSystemInfo;

#define QZ_SYSTEM_INFO_SIZE 64 /* sizeof(QZSystemInfo) */

QZ_EXTERN_C_BEGIN

/* Fills *info (`size` is not read: give a whole QZSystemInfo). The memory and processor figures
 * are always filled; the version step can fail, and then platformId, reserved and the three
 * version fields keep what they held and the translated system error is returned. Otherwise 0. */
QZ_API QZRESULT QZGetSystemInfo(QZSystemInfo* info, uint32_t size);

/* The login name of the effective user, with its terminator, into `buffer` of `size` units (the
 * decimal user id when the user database has no entry for it). QZ_E_FAIL when it does not fit,
 * with the buffer's contents undefined. */
QZ_API QZRESULT QZGetUserName(QZWCHAR* buffer, uint32_t size);

QZ_EXTERN_C_END

#endif /* QZCORE_QZSYSINFO_H */
