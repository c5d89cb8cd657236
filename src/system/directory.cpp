// directory.cpp - directories over the platform's searches (directory.h).
//
// An open tests that the path exists and keeps the path with "/*" behind it; the first read starts
// the search, later reads continue it. Entry times go through local time: the platform's ticks to
// local ticks to calendar fields, then the time family's local-time-to-POSIX conversion.
#include "system/directory.h"

#include <algorithm>
#include <new>
#include <string>

#include "frame/core_exception.h"
#include "platform/file_system.h"
#include "platform/last_error.h"
#include "system/time.h"

namespace qz::core {
namespace {

static_assert(sizeof(QZDirEntry) == QZ_DIR_ENTRY_SIZE, "QZDirEntry is the size the header says");

constexpr size_t kNameUnits = std::size(QZDirEntry{}.name);

QZRESULT LastResult() noexcept { return ResultFromNative(os::GetLastError()); }

QZDirState* State(QZDirHandle dir) noexcept { return reinterpret_cast<QZDirState*>(dir); }

// A file time as POSIX seconds by way of local time; 0 when it is unknown or any step fails.
int64_t PosixTime(uint64_t ticks) noexcept {
  uint64_t local = 0;
  os::CalendarTime fields{};
  if (ticks == 0 || !os::FileTimeToLocalFileTime(ticks, &local) || !os::FileTimeToSystemTime(local, &fields)) {
    return 0;
  }
  const QZSystemTime record{fields.year,  fields.month,  fields.dayOfWeek, fields.day,
                            fields.hour,  fields.minute, fields.second,    fields.milliseconds};
  int64_t seconds = 0;
  return TimeToPosix(&record, &seconds) < 0 ? 0 : seconds;
}

}  // namespace

QZRESULT CreateDirectory(const QZWCHAR* path) noexcept {
  return os::CreateDirectory(path) ? QZ_S_OK : LastResult();
}

QZRESULT RemoveDirectory(const QZWCHAR* path) noexcept {
  return os::RemoveDirectory(path) ? QZ_S_OK : LastResult();
}

QZRESULT OpenDirectory(const QZWCHAR* path, QZDirHandle* result) noexcept {
  *result = reinterpret_cast<QZDirHandle>(static_cast<intptr_t>(-1));
  try {
    std::u16string pattern = path != nullptr ? std::u16string(path) : std::u16string();
    while (!pattern.empty() && (pattern.back() == u'/' || pattern.back() == u'\\')) pattern.pop_back();
    os::FindData found;
    const os::FindHandle probe = os::FindFirstFile(pattern, &found);
    if (probe == os::kInvalidFind) return LastResult();
    os::FindClose(probe);
    pattern += u"/*";
    auto* text = new QZWCHAR[pattern.size() + 1];
    std::copy(pattern.begin(), pattern.end(), text);
    text[pattern.size()] = 0;
    *result = reinterpret_cast<QZDirHandle>(new QZDirState{text, os::kInvalidFind});
    return QZ_S_OK;
  } catch (...) {
    return QZ_E_OUTOFMEMORY;
  }
}

QZRESULT ReadDirectory(QZDirHandle dir, QZDirEntry* entry) noexcept {
  QZDirState* state = State(dir);
  os::FindData found;
  bool ok;
  if (state->findHandle == os::kInvalidFind) {
    state->findHandle = os::FindFirstFile(state->pattern, &found);
    ok = state->findHandle != os::kInvalidFind;
  } else {
    ok = os::FindNextFile(state->findHandle, &found);
  }
  if (!ok) {
    // The end of the directory is a failure like any other (no row of its own).
    const QZRESULT failure = LastResult();
    if (failure < 0) return failure;
  }
  const size_t units = std::min(found.name.size(), kNameUnits - 1);
  std::copy_n(found.name.begin(), units, entry->name);
  entry->name[units] = 0;
  entry->shortName[0] = 0;  // no short names here
  uint32_t mode = QZFILE_MODE_READ;
  if ((found.attributes & os::kAttributeDirectory) != 0) mode |= QZFILE_MODE_DIRECTORY;
  if ((found.attributes & os::kAttributeReadOnly) == 0) mode |= QZFILE_MODE_WRITE;
  entry->mode = mode;
  entry->sizeHigh = static_cast<uint32_t>(found.size >> 32);
  entry->sizeLow = static_cast<uint32_t>(found.size);
  entry->createTime = PosixTime(found.createTime);
  entry->accessTime = PosixTime(found.accessTime);
  entry->modifyTime = PosixTime(found.writeTime);
  return QZ_S_OK;
}

QZRESULT CloseDirectory(QZDirHandle dir) noexcept {
  if (dir == nullptr) return QZ_S_OK;
  QZDirState* state = State(dir);
  if (state->findHandle != os::kInvalidFind) os::FindClose(state->findHandle);
  delete[] state->pattern;
  delete state;
  return QZ_S_OK;
}

QZRESULT ExpandPath(const QZWCHAR* path, QZWCHAR* buffer, uint32_t size) noexcept {
  // A buffer too small is answered with the size needed, which is not 0: success, buffer unfilled.
  return os::GetFullPathName(path, size, buffer) == 0 ? LastResult() : QZ_S_OK;
}

}  // namespace qz::core
