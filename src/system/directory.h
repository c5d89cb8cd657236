// directory.h - directories: create, remove, and read whole (the QZDirState record), and the full
// form of a path.
//
// Stateless apart from the caller's QZDirState. Only OpenDirectory turns an exception into a
// result (QZ_E_OUTOFMEMORY); the others report by result alone.
#pragma once

#include <cstdint>

#include "qzcore/qzfile.h"

namespace qz::core {

QZRESULT CreateDirectory(const QZWCHAR* path) noexcept;
QZRESULT RemoveDirectory(const QZWCHAR* path) noexcept;
QZRESULT OpenDirectory(const QZWCHAR* path, QZDirHandle* result) noexcept;
QZRESULT ReadDirectory(QZDirHandle dir, QZDirEntry* entry) noexcept;
QZRESULT CloseDirectory(QZDirHandle dir) noexcept;
QZRESULT ExpandPath(const QZWCHAR* path, QZWCHAR* buffer, uint32_t size) noexcept;

}  // namespace qz::core
