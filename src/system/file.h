// file.h - files by handle: the open with its flags and created status, reads, writes, the 32-bit
// seek, size, byte-range locks, removal and copying.
//
// The functions keep no state and report by result alone (no exception leaves them): they are the
// bodies of the QZFile* exports, and QZFileCopy opens its two files through OpenFile as the export
// QZFileOpen would.
#pragma once

#include <cstdint>

#include "qzcore/qzfile.h"

namespace qz::core {

// The bytes QZFileCopy moves at a time.
inline constexpr uint32_t kCopyStep = 16384;

QZRESULT OpenFile(const QZWCHAR* path, uint32_t flags, int32_t permissions, QZFileHandle* result) noexcept;
QZRESULT CloseFile(QZFileHandle file) noexcept;
QZRESULT ReadFile(QZFileHandle file, void* buffer, uint32_t size, uint32_t* read) noexcept;
QZRESULT WriteFile(QZFileHandle file, const void* buffer, uint32_t size, uint32_t* written) noexcept;
QZRESULT SeekFile(QZFileHandle file, int32_t offset, uint32_t origin, uint32_t* position) noexcept;
QZRESULT FlushFile(QZFileHandle file) noexcept;
QZRESULT GetFileSize(QZFileHandle file, uint64_t* size) noexcept;
QZRESULT LockFileRange(QZFileHandle file, uint32_t offset, uint32_t length, uint32_t flags) noexcept;
QZRESULT UnlockFileRange(QZFileHandle file, uint32_t offset, uint32_t length) noexcept;
QZRESULT DeleteFile(const QZWCHAR* path) noexcept;
QZRESULT CopyFile(const QZWCHAR* source, const QZWCHAR* destination, uint32_t flags, uint32_t permissions,
                  QZFileHandle* destinationHandle) noexcept;

}  // namespace qz::core
