// file_system.cpp - files by descriptor on Linux: the create dispositions, reads and writes, the
// 32-bit file pointer, open-file-description byte-range locks, removal of files and directories,
// and temporary files (file_system.h).
//
// "Was it created" is known exactly: a disposition that may create tries an exclusive create first
// and opens the existing file only when that meets one. Directory searches, file times and full
// path names are in directory_search.cpp.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "errno_map.h"
#include "io.h"
#include "path_text.h"
#include "platform/file_system.h"
#include "platform/last_error.h"
#include "platform/native_error.h"

namespace qz::os {
namespace {

constexpr mode_t kReadOnlyMode = 0444;  // a read-only create: no one may write
constexpr mode_t kNormalMode = 0666;    // less the umask, as every new file
constexpr int kCreateRetries = 8;       // creates that met a file removed before it could be opened

int Descriptor(NativeFile file) noexcept { return static_cast<int>(file); }

// EBADF on a descriptor that is open but lacks the access the call needs (a write on a read-only
// handle, a read on a handle without data access) is the platform's access denied; only a
// descriptor that is not open at all is an invalid handle.
uint32_t SetLastErrorFromDataErrno(int fd, int err) noexcept {
  if (err == EBADF && sys::fcntl(fd, F_GETFL, nullptr) >= 0) {
    SetLastError(kErrorAccessDenied);
    return kErrorAccessDenied;
  }
  return SetLastErrorFromErrno(err);
}

// How one open step reaches the system. A handle without data access is an O_PATH descriptor:
// open directly when the step neither creates nor truncates, otherwise opened for writing to do
// that and then reopened as O_PATH.
struct OpenRequest {
  const char* path;
  int accessFlags;  // O_RDONLY, O_WRONLY or O_RDWR
  bool noAccess;    // neither read nor write asked for
  int extraFlags;   // O_CLOEXEC and the like
  mode_t mode;      // for a create
};

int OpenStep(const OpenRequest& request, int how) noexcept {
  const bool changes = (how & (O_CREAT | O_TRUNC)) != 0;
  if (request.noAccess && !changes) return OpenCloexec(request.path, O_PATH | O_NOCTTY);
  const int access = request.noAccess ? O_WRONLY : request.accessFlags;
  const int fd = OpenCloexec(request.path, access | how | request.extraFlags, request.mode);
  if (fd < 0 || !request.noAccess) return fd;
  char self[32];
  std::snprintf(self, sizeof self, "/proc/self/fd/%d", fd);
  const int pathFd = OpenCloexec(self, O_PATH);
  const int saved = errno;
  sys::close(fd);
  errno = saved;
  return pathFd;
}

// The disposition's open steps: the descriptor with *existed telling whether the file was there
// before, or -1 with errno.
int OpenByDisposition(const OpenRequest& request, uint32_t disposition, bool* existed) noexcept {
  *existed = false;
  switch (disposition) {
    case kCreateNew:
      return OpenStep(request, O_CREAT | O_EXCL);
    case kOpenExisting:
      *existed = true;
      return OpenStep(request, 0);
    case kTruncateExisting:
      *existed = true;
      return OpenStep(request, O_TRUNC);
    default:  // kOpenAlways, kCreateAlways
      break;
  }
  for (int attempt = 0; attempt < kCreateRetries; ++attempt) {
    int fd = OpenStep(request, O_CREAT | O_EXCL);
    if (fd >= 0 || errno != EEXIST) return fd;
    fd = OpenStep(request, disposition == kCreateAlways ? O_TRUNC : 0);
    if (fd >= 0) {
      *existed = true;
      return fd;
    }
    if (errno != ENOENT) return fd;  // ENOENT: removed between the two steps, so try again
  }
  return -1;
}

// A lock request of `type` over the range; length 0 locks nothing (the system would read it as
// "to the end of the file and beyond").
bool SetLock(NativeFile file, short type, bool wait, uint32_t offset, uint32_t length) noexcept {
  if (length == 0) return true;
  struct flock range = {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  range.l_start = static_cast<off_t>(offset);
  range.l_len = static_cast<off_t>(length);
  const int fd = Descriptor(file);
  const int command = wait ? F_OFD_SETLKW : F_OFD_SETLK;
  if (RetryOnEintr([&] { return sys::fcntl(fd, command, &range); }) == 0) return true;
  if (errno == EBADF) {
    SetLastErrorFromDataErrno(fd, errno);
  } else {
    SetLastErrorFromErrno(errno, ErrnoContext::kByteRangeLock);
  }
  return false;
}

}  // namespace

NativeFile CreateFile(const char16_t* path, uint32_t access, uint32_t share, uint32_t disposition,
                      uint32_t attributes) noexcept {
  (void)share;  // no sharing modes on this platform
  if (disposition < kCreateNew || disposition > kTruncateExisting ||
      (disposition == kTruncateExisting && (access & kGenericWrite) == 0)) {
    SetLastError(kErrorInvalidParameter);
    return kInvalidFile;
  }
  const PathText utf8(path);
  if (!utf8.ok()) return kInvalidFile;
  OpenRequest request{utf8.c_str(), O_RDONLY, false, O_NOCTTY,
                      (attributes & kAttributeReadOnly) != 0 ? kReadOnlyMode : kNormalMode};
  switch (access & (kGenericRead | kGenericWrite)) {
    case kGenericRead: request.accessFlags = O_RDONLY; break;
    case kGenericWrite: request.accessFlags = O_WRONLY; break;
    case kGenericRead | kGenericWrite: request.accessFlags = O_RDWR; break;
    default: request.noAccess = true; break;
  }
  if ((attributes & kFlagWriteThrough) != 0) request.extraFlags |= O_DSYNC;

  bool existed = false;
  const int fd = OpenByDisposition(request, disposition, &existed);
  if (fd < 0) {
    if (disposition == kCreateNew && errno == EEXIST) {
      SetLastErrorFromErrno(errno, ErrnoContext::kExclusiveCreate);
    } else {
      SetLastErrorFromPathErrno(errno, utf8.c_str());
    }
    return kInvalidFile;
  }
  // A directory is not a file: opening one by this call is refused, as on the first platform.
  struct stat st;
  if (sys::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
    sys::close(fd);
    SetLastError(kErrorAccessDenied);
    return kInvalidFile;
  }
  if ((attributes & kFlagDeleteOnClose) != 0 && sys::unlink(utf8.c_str()) != 0) {
    // The name must not outlive the handles; a file that cannot be removed is not opened.
    const int err = errno;
    sys::close(fd);
    SetLastErrorFromPathErrno(err, utf8.c_str());
    return kInvalidFile;
  }
  const bool reportsExisting = disposition == kOpenAlways || disposition == kCreateAlways;
  SetLastError(reportsExisting && existed ? kErrorAlreadyExists : kErrorSuccess);
  return static_cast<NativeFile>(fd);
}

bool CloseHandle(NativeFile file) noexcept {
  // Linux releases the descriptor even when close reports EINTR: retrying could close another's.
  if (sys::close(Descriptor(file)) == 0 || errno == EINTR) return true;
  SetLastErrorFromErrno(errno);
  return false;
}

bool ReadFile(NativeFile file, void* buffer, uint32_t size, uint32_t* read) noexcept {
  *read = 0;
  const int fd = Descriptor(file);
  const ssize_t got = RetryOnEintr([&] { return sys::read(fd, buffer, size); });
  if (got < 0) {
    SetLastErrorFromDataErrno(fd, errno);
    return false;
  }
  if (got == 0 && size > 0) {
    // The first platform tells a pipe whose writers are gone from an empty file: broken pipe.
    struct stat st;
    if (sys::fstat(fd, &st) == 0 && (S_ISFIFO(st.st_mode) || S_ISSOCK(st.st_mode))) {
      SetLastError(kErrorBrokenPipe);
      return false;
    }
  }
  *read = static_cast<uint32_t>(got);
  return true;
}

bool WriteFile(NativeFile file, const void* buffer, uint32_t size, uint32_t* written) noexcept {
  *written = 0;
  const int fd = Descriptor(file);
  const auto* bytes = static_cast<const char*>(buffer);
  uint32_t done = 0;
  do {
    const ssize_t put = RetryOnEintr([&] { return sys::write(fd, bytes + done, size - done); });
    if (put < 0) {
      if (done > 0) break;  // part written: the count tells
      SetLastErrorFromDataErrno(fd, errno);
      return false;
    }
    if (put == 0) break;
    done += static_cast<uint32_t>(put);
  } while (done < size);
  *written = done;
  return true;
}

uint32_t SetFilePointer(NativeFile file, int32_t distance, uint32_t origin) noexcept {
  constexpr uint32_t kInvalidPosition = 0xFFFFFFFFu;
  const int fd = Descriptor(file);
  off_t base = 0;
  if (origin == 1) {
    base = sys::lseek(fd, 0, SEEK_CUR);
  } else if (origin == 2) {
    struct stat st;
    base = sys::fstat(fd, &st) == 0 ? st.st_size : -1;
    if (base >= 0 && sys::lseek(fd, 0, SEEK_CUR) < 0) base = -1;  // not seekable (a pipe)
  } else if (origin != 0) {
    SetLastError(kErrorInvalidParameter);
    return kInvalidPosition;
  }
  if (base < 0) {
    SetLastErrorFromErrno(errno);
    return kInvalidPosition;
  }
  const int64_t target = static_cast<int64_t>(base) + distance;
  if (target < 0) {
    SetLastError(kErrorNegativeSeek);
    return kInvalidPosition;
  }
  if (target > 0xFFFFFFFFll) {  // not reachable through a 32-bit position
    SetLastError(kErrorInvalidParameter);
    return kInvalidPosition;
  }
  if (sys::lseek(fd, static_cast<off_t>(target), SEEK_SET) < 0) {
    SetLastErrorFromErrno(errno);
    return kInvalidPosition;
  }
  SetLastError(kErrorSuccess);
  return static_cast<uint32_t>(target);
}

bool FlushFileBuffers(NativeFile file) noexcept {
  const int fd = Descriptor(file);
  if (RetryOnEintr([&] { return sys::fsync(fd); }) == 0) return true;
  SetLastErrorFromDataErrno(fd, errno);
  return false;
}

bool GetFileSizeEx(NativeFile file, uint64_t* size) noexcept {
  struct stat st;
  if (sys::fstat(Descriptor(file), &st) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  *size = static_cast<uint64_t>(st.st_size);
  return true;
}

bool LockFileEx(NativeFile file, uint32_t flags, uint32_t offset, uint32_t length) noexcept {
  const short type = (flags & kLockExclusive) != 0 ? F_WRLCK : F_RDLCK;
  return SetLock(file, type, (flags & kLockFailImmediately) == 0, offset, length);
}

bool UnlockFileEx(NativeFile file, uint32_t offset, uint32_t length) noexcept {
  return SetLock(file, F_UNLCK, false, offset, length);
}

bool LockFile(NativeFile file, uint32_t offset, uint32_t length) noexcept {
  return LockFileEx(file, kLockExclusive | kLockFailImmediately, offset, length);
}

bool UnlockFile(NativeFile file, uint32_t offset, uint32_t length) noexcept {
  return UnlockFileEx(file, offset, length);
}

bool DeleteFile(const char16_t* path) noexcept {
  const PathText utf8(path);
  if (!utf8.ok()) return false;
  // A directory, and a file no one may write (the read-only attribute), are refused.
  struct stat st;
  if (sys::lstat(utf8.c_str(), &st) == 0 &&
      (S_ISDIR(st.st_mode) || (S_ISREG(st.st_mode) && (st.st_mode & 0222) == 0))) {
    SetLastError(kErrorAccessDenied);
    return false;
  }
  if (sys::unlink(utf8.c_str()) == 0) return true;
  SetLastErrorFromPathErrno(errno, utf8.c_str());
  return false;
}

bool CreateDirectory(const char16_t* path) noexcept {
  const PathText utf8(path);
  if (!utf8.ok()) return false;
  if (sys::mkdir(utf8.c_str(), 0777) == 0) return true;
  SetLastErrorFromPathErrno(errno, utf8.c_str());
  return false;
}

bool RemoveDirectory(const char16_t* path) noexcept {
  const PathText utf8(path);
  if (!utf8.ok()) return false;
  if (sys::rmdir(utf8.c_str()) == 0) return true;
  const int err = errno;
  struct stat st;
  if (err == ENOTDIR && sys::lstat(utf8.c_str(), &st) == 0 && !S_ISDIR(st.st_mode)) {
    SetLastError(kErrorDirectory);  // the name is there, and it is not a directory
  } else if (err == EEXIST) {
    SetLastError(kErrorDirNotEmpty);
  } else {
    SetLastErrorFromPathErrno(err, utf8.c_str());
  }
  return false;
}

std::u16string GetTempPath() noexcept {
  try {
    const char* tmpdir = std::getenv("TMPDIR");
    std::string dir = tmpdir != nullptr && *tmpdir != '\0' ? tmpdir : "/tmp";
    if (dir.back() != '/') dir += '/';
    return Utf8ToUtf16Replacing(dir);
  } catch (const std::bad_alloc&) {
    SetLastError(kErrorOutOfMemory);
    return std::u16string();
  }
}

std::u16string GetTempFileName(const std::u16string& directory, const char16_t* prefix) noexcept {
  try {
    if (directory.empty()) {
      SetLastError(kErrorPathNotFound);
      return std::u16string();
    }
    std::string pattern = Utf16ToUtf8Replacing(directory) + Utf16ToUtf8Replacing(prefix) + "XXXXXX";
    const int fd = sys::mkostemp(pattern.data(), O_CLOEXEC);
    if (fd < 0) {
      SetLastErrorFromPathErrno(errno, pattern.c_str());
      return std::u16string();
    }
    sys::close(fd);
    return Utf8ToUtf16Replacing(pattern);
  } catch (const std::bad_alloc&) {
    SetLastError(kErrorOutOfMemory);
    return std::u16string();
  }
}

}  // namespace qz::os
