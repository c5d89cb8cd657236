// file.cpp - files by handle over the platform's file operations (file.h).
//
// The open turns the library's flags into an access mask, attributes and a creation disposition,
// and reads the created status from what the platform says about an existing file. Each other
// operation is one platform call and the translation of its error.
#include "system/file.h"

#include <cstdlib>
#include <string>

#include "frame/core_exception.h"
#include "frame/global_data.h"
#include "platform/file_system.h"
#include "platform/last_error.h"
#include "platform/native_error.h"

namespace qz::core {
namespace {

constexpr uint32_t kAccessBits = QZFILE_READ | QZFILE_WRITE;
constexpr uint32_t kDispositionBits = QZFILE_CREATE | QZFILE_TRUNCATE | QZFILE_EXCLUSIVE;
constexpr int32_t kWritePermissions = QZFILE_MODE_WRITE;
constexpr uint32_t kInvalidPosition = 0xFFFFFFFFu;

QZRESULT LastResult() noexcept { return ResultFromNative(os::GetLastError()); }

// The creation disposition of the CREATE, TRUNCATE and EXCLUSIVE bits. EXCLUSIVE without CREATE
// has none (0), which the platform refuses.
uint32_t Disposition(uint32_t flags) noexcept {
  switch (flags & kDispositionBits) {
    case 0: return os::kOpenExisting;
    case QZFILE_CREATE: return os::kOpenAlways;
    case QZFILE_TRUNCATE: return os::kTruncateExisting;
    case QZFILE_CREATE | QZFILE_TRUNCATE: return os::kCreateAlways;
    case QZFILE_CREATE | QZFILE_EXCLUSIVE:
    case QZFILE_CREATE | QZFILE_TRUNCATE | QZFILE_EXCLUSIVE: return os::kCreateNew;
    default: return 0;
  }
}

os::NativeFile Native(QZFileHandle file) noexcept { return static_cast<os::NativeFile>(file); }

}  // namespace

QZRESULT OpenFile(const QZWCHAR* path, uint32_t flags, int32_t permissions, QZFileHandle* result) noexcept {
  *result = static_cast<QZFileHandle>(-1);
  uint32_t access = flags & kAccessBits;
  uint32_t attributes = os::kAttributeNormal;
  // Decided before a temporary file adds CREATE: only the caller's CREATE makes a read-only file.
  if ((flags & QZFILE_CREATE) != 0 && (permissions & kWritePermissions) == 0) {
    attributes = os::kAttributeReadOnly;
  }
  std::u16string temporaryName;  // the nameless temporary file's name, which the caller never sees
  const QZWCHAR* name = path != nullptr ? path : u"";
  if ((flags & QZFILE_TEMPORARY) != 0) {
    if (name[0] != 0) {
      flags |= QZFILE_CREATE;
    } else {
      // Made here with a unique name and then simply opened; if that fails, the open fails on the
      // empty name.
      temporaryName = os::GetTempFileName(os::GetTempPath(), u"tmp");
      name = temporaryName.c_str();
      flags &= ~kDispositionBits;
    }
    attributes |= os::kFlagDeleteOnClose | os::kAttributeTemporary;
    access |= os::kAccessDelete;
  }
  if ((flags & QZFILE_WRITE_THROUGH) != 0) attributes |= os::kFlagWriteThrough;
  const uint32_t disposition = Disposition(flags);

  const os::NativeFile file = os::CreateFile(name, access, os::kShareReadWrite, disposition, attributes);
  if (file == os::kInvalidFile) return LastResult();
  *result = static_cast<QZFileHandle>(file);
  QZRESULT status = QZ_S_OK;
  if (disposition == os::kCreateAlways || disposition == os::kOpenAlways) {
    status = os::GetLastError() == os::kErrorAlreadyExists ? QZ_S_OK : QZ_S_CREATED;
  }
  if ((flags & QZFILE_APPEND) != 0 && os::SetFilePointer(file, 0, QZFILE_SEEK_END) == kInvalidPosition) {
    return LastResult();  // the handle stays open in *result
  }
  return status;
}

QZRESULT CloseFile(QZFileHandle file) noexcept {
  return os::CloseHandle(Native(file)) ? QZ_S_OK : LastResult();
}

QZRESULT ReadFile(QZFileHandle file, void* buffer, uint32_t size, uint32_t* read) noexcept {
  if (!os::ReadFile(Native(file), buffer, size, read)) return LastResult();
  return *read == 0 ? QZ_E_HANDLE_EOF : QZ_S_OK;
}

QZRESULT WriteFile(QZFileHandle file, const void* buffer, uint32_t size, uint32_t* written) noexcept {
  return os::WriteFile(Native(file), buffer, size, written) ? QZ_S_OK : LastResult();
}

QZRESULT SeekFile(QZFileHandle file, int32_t offset, uint32_t origin, uint32_t* position) noexcept {
  *position = os::SetFilePointer(Native(file), offset, origin);
  return *position == kInvalidPosition ? LastResult() : QZ_S_OK;
}

QZRESULT FlushFile(QZFileHandle file) noexcept {
  return os::FlushFileBuffers(Native(file)) ? QZ_S_OK : LastResult();
}

QZRESULT GetFileSize(QZFileHandle file, uint64_t* size) noexcept {
  if (g_platformReady == 0) return QZ_E_NOTIMPL;
  return os::GetFileSizeEx(Native(file), size) ? QZ_S_OK : LastResult();
}

QZRESULT LockFileRange(QZFileHandle file, uint32_t offset, uint32_t length, uint32_t flags) noexcept {
  bool locked;
  if (g_platformReady != 0) {
    uint32_t lockFlags = 0;
    if ((flags & QZFILE_LOCK_SHARED) == 0) lockFlags |= os::kLockExclusive;
    if ((flags & QZFILE_LOCK_WAIT) == 0) lockFlags |= os::kLockFailImmediately;
    locked = os::LockFileEx(Native(file), lockFlags, offset, length);
  } else {
    locked = os::LockFile(Native(file), offset, length);
  }
  return locked ? QZ_S_OK : LastResult();
}

QZRESULT UnlockFileRange(QZFileHandle file, uint32_t offset, uint32_t length) noexcept {
  const bool unlocked = g_platformReady != 0 ? os::UnlockFileEx(Native(file), offset, length)
                                             : os::UnlockFile(Native(file), offset, length);
  return unlocked ? QZ_S_OK : LastResult();
}

QZRESULT DeleteFile(const QZWCHAR* path) noexcept {
  return os::DeleteFile(path) ? QZ_S_OK : LastResult();
}

QZRESULT CopyFile(const QZWCHAR* source, const QZWCHAR* destination, uint32_t flags, uint32_t permissions,
                  QZFileHandle* destinationHandle) noexcept {
  if (destinationHandle != nullptr) *destinationHandle = static_cast<QZFileHandle>(-1);
  QZFileHandle in;
  QZRESULT hr = OpenFile(source, QZFILE_READ, 0, &in);
  if (hr < 0) return hr;
  QZFileHandle out;
  const QZRESULT status = OpenFile(destination, flags | QZFILE_WRITE, static_cast<int32_t>(permissions), &out);
  if (status < 0) {
    CloseFile(in);
    return status;
  }
  void* buffer = std::malloc(kCopyStep);
  if (buffer == nullptr) return QZ_E_OUTOFMEMORY;  // both files stay open, as they always have

  QZRESULT failure = QZ_S_OK;
  for (;;) {
    uint32_t got = 0;
    ReadFile(in, buffer, kCopyStep, &got);  // a failed read counts 0 and ends the copy
    if (got == 0) break;
    uint32_t put = 0;
    hr = WriteFile(out, buffer, got, &put);
    if (hr < 0) {
      failure = hr;
      break;
    }
    if (put != got) {
      failure = QZ_E_FAIL;
      break;
    }
  }
  if (failure >= 0 && destinationHandle != nullptr) {
    *destinationHandle = out;
  } else {
    CloseFile(out);
  }
  std::free(buffer);
  CloseFile(in);
  return failure < 0 ? failure : status;
}

}  // namespace qz::core
