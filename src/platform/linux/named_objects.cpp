// named_objects.cpp - named objects on Linux: POSIX shared memory whose life is tied to its holders
// by flock, the process's table of views, and the futex wait on a shared word.
//
// How the holders keep an object alive. Every holder keeps a shared flock on its descriptor (a
// view keeps the descriptor's lock too, as long as it is mapped). An opener that gets the
// exclusive lock is alone: the object is new to it, whatever an earlier, dead holder left. The
// last closer takes the exclusive lock and removes the name while it holds it. Two races need care:
//  - a name removed (or replaced) between an opener's shm_open and its lock: after locking, the
//    opener checks that the name still leads to the descriptor it locked, and starts again if not;
//  - flock turns an exclusive lock into a shared one by dropping it first, so another opener or a
//    closer can find itself "alone" in that gap. An initialiser therefore marks the object with an
//    open-file-description read lock on byte 0 from before it gives up its exclusive lock until it
//    holds the shared one; whoever gets the exclusive lock and sees the mark joins instead.
#include "platform/named_objects.h"

#include <linux/futex.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "errno_map.h"
#include "io.h"
#include "platform/last_error.h"
#include "platform/native_error.h"

namespace qz::os {
namespace {

constexpr uint32_t kErrorInvalidAddress = 487;
constexpr char kShmDirectory[] = "/dev/shm/";
constexpr int kOpenAttempts = 1000;

bool Fail(int err) noexcept {
  SetLastErrorFromErrno(err);
  return false;
}

bool FailWith(uint32_t error) noexcept {
  SetLastError(error);
  return false;
}

// A failed attempt of the open (see TryOpen).
int FailAttempt(int err) noexcept {
  SetLastErrorFromErrno(err);
  return -1;
}

// Closes a descriptor the library opened; a failure means a descriptor was lost, a broken invariant.
void CloseOrDie(int fd) noexcept {
  if (sys::close(fd) != 0 && errno != EINTR) {
    std::fprintf(stderr, "QZCore: close(%d) of a named object failed (errno %d)\n", fd, errno);
    std::abort();
  }
}

// flock retried on EINTR.
int Flock(int fd, int operation) noexcept {
  return RetryOnEintr([&] { return sys::flock(fd, operation); });
}

// True when `path` leads to the same file as `fd` (false also when the name is gone).
bool SameObject(int fd, const std::string& path) noexcept {
  struct stat byFd {}, byName {};
  if (sys::fstat(fd, &byFd) != 0) return false;
  if (sys::stat(path.c_str(), &byName) != 0) return false;
  return byFd.st_dev == byName.st_dev && byFd.st_ino == byName.st_ino;
}

// The mark of an opener between its exclusive and its shared lock (see the top of the file).
bool SetOpeningMark(int fd, short type) noexcept {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = 0;
  lock.l_len = 1;
  return RetryOnEintr([&] { return sys::fcntl(fd, F_OFD_SETLK, &lock); }) == 0;
}

bool SomeoneOpening(int fd) noexcept {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = 0;
  lock.l_len = 1;
  if (sys::fcntl(fd, F_OFD_GETLK, &lock) != 0) return true;  // cannot tell: do not remove
  return lock.l_type != F_UNLCK;
}

// The path of the name behind a descriptor, for its removal.
std::string PathOf(int fd) {
  char link[64];
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  char target[PATH_MAX];
  const ssize_t length = sys::readlink(link, target, sizeof target);
  if (length <= 0 || static_cast<size_t>(length) >= sizeof target) return std::string();
  return std::string(target, static_cast<size_t>(length));
}

// Removes the name of `fd` when the caller is its last holder. The caller's own shared lock is
// dropped by the attempt whatever its outcome.
void RemoveIfLastHolder(int fd, const std::string& path) noexcept {
  if (path.empty()) return;
  if (Flock(fd, LOCK_EX | LOCK_NB) != 0) return;
  if (SomeoneOpening(fd) || !SameObject(fd, path)) return;
  sys::unlink(path.c_str());
}

// The views this process has mapped: address -> length and object, since an unmap needs the
// length, and objects whose handle was closed while views remained.
struct ObjectKey {
  dev_t device;
  ino_t inode;
  bool operator<(const ObjectKey& other) const {
    return std::pair(device, inode) < std::pair(other.device, other.inode);
  }
};

struct View {
  size_t length;
  ObjectKey object;
};

class CViewTable {
 public:
  void Add(void* address, const View& view) {
    std::lock_guard<std::mutex> hold(m_lock);
    m_views[address] = view;
  }

  // Takes the view out; with `orphanPath` the path of its object when it was the object's last
  // view and the object's handle is already closed.
  bool Remove(void* address, View* view, std::string* orphanPath) {
    std::lock_guard<std::mutex> hold(m_lock);
    auto found = m_views.find(address);
    if (found == m_views.end()) return false;
    *view = found->second;
    m_views.erase(found);
    if (!HasViewLocked(view->object)) {
      auto orphan = m_closedWithViews.find(view->object);
      if (orphan != m_closedWithViews.end()) {
        *orphanPath = std::move(orphan->second);
        m_closedWithViews.erase(orphan);
      }
    }
    return true;
  }

  // True (and the object noted) when the closing handle's object still has views here.
  bool NoteClosedWithViews(const ObjectKey& object, const std::string& path) {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!HasViewLocked(object)) return false;
    m_closedWithViews[object] = path;
    return true;
  }

 private:
  bool HasViewLocked(const ObjectKey& object) const {
    for (const auto& [address, view] : m_views) {
      if (!(view.object < object) && !(object < view.object)) return true;
    }
    return false;
  }

  std::mutex m_lock;  // leaf lock: guards both maps
  std::map<void*, View> m_views;
  std::map<ObjectKey, std::string> m_closedWithViews;
};

// The descriptors that OpenNamedObject gave and nobody closed, with their objects, so that
// closing one as a file still gives up its holder's part. The object is compared again at the
// close, so a number closed behind the library's back and reused by another file is not taken for
// a named object. The count spares other descriptors' closes the lock.
class CHolderTable {
 public:
  void Add(int fd, const ObjectKey& object) {
    std::lock_guard<std::mutex> hold(m_lock);
    m_holders[fd] = object;
    m_count.store(m_holders.size(), std::memory_order_release);
  }
  bool Contains(int fd, const ObjectKey& object) {
    if (m_count.load(std::memory_order_acquire) == 0) return false;
    std::lock_guard<std::mutex> hold(m_lock);
    auto found = m_holders.find(fd);
    return found != m_holders.end() && !(found->second < object) && !(object < found->second);
  }
  void Remove(int fd) noexcept {
    std::lock_guard<std::mutex> hold(m_lock);
    m_holders.erase(fd);
    m_count.store(m_holders.size(), std::memory_order_release);
  }
  bool Empty() const noexcept { return m_count.load(std::memory_order_acquire) == 0; }

 private:
  std::mutex m_lock;  // leaf lock
  std::map<int, ObjectKey> m_holders;
  std::atomic<size_t> m_count{0};
};

CHolderTable& Holders() {
  static CHolderTable* table = new CHolderTable;  // outlives every static destructor
  return *table;
}

CViewTable& Views() {
  static CViewTable* table = new CViewTable;  // outlives every static destructor
  return *table;
}

// Gives up the last view of an object whose handle was closed: open the name anew and remove it
// when nobody else holds the object.
void RemoveOrphan(const std::string& path) noexcept {
  const int fd = OpenCloexec(path.c_str(), O_RDONLY | O_NOFOLLOW);
  if (fd < 0) return;
  RemoveIfLastHolder(fd, path);
  CloseOrDie(fd);
}

// One attempt of the open: 1 done, 0 start again (the name changed under us), -1 failed.
int TryOpen(const std::string& name, const std::string& path, const NamedObjectRequest& request,
            NamedObjectOpen* out) noexcept {
  const std::string shmName = "/" + name;
  const int access = (request.writable ? O_RDWR : O_RDONLY) | O_CLOEXEC;
  int fd = -1;
  bool madeName = false;
  if (request.create) {
    fd = sys::shm_open(shmName.c_str(), access | O_CREAT | O_EXCL, 0666);
    if (fd >= 0) {
      madeName = true;
      sys::fchmod(fd, 0666);  // whatever the umask took away
    } else if (errno == EEXIST) {
      fd = sys::shm_open(shmName.c_str(), access, 0);
      if (fd < 0 && errno == ENOENT) return 0;
    }
  } else {
    fd = sys::shm_open(shmName.c_str(), access, 0);
  }
  if (fd < 0) return FailAttempt(errno);

  bool alone = Flock(fd, LOCK_EX | LOCK_NB) == 0;
  int err = alone || errno == EWOULDBLOCK ? 0 : errno;
  // An initialiser between its exclusive and its shared lock has marked the object: join it.
  if (err == 0 && alone && SomeoneOpening(fd)) alone = false;
  if (err == 0 && !alone && Flock(fd, LOCK_SH) != 0) err = errno;
  if (err != 0) {
    // Not a holder: a name this attempt made goes again, unless someone holds it meanwhile.
    if (madeName) RemoveIfLastHolder(fd, path);
    CloseOrDie(fd);
    return FailAttempt(err);
  }
  if (!SameObject(fd, path)) {
    CloseOrDie(fd);
    return 0;
  }
  if (alone && !request.create) {
    // Nobody holds it: what the name shows is left by dead holders and does not exist.
    sys::unlink(path.c_str());
    CloseOrDie(fd);
    SetLastError(kErrorFileNotFound);
    return -1;
  }
  if (alone) {
    sys::fchmod(fd, 0666);  // a dead creator may not have come to it
    bool ready = sys::ftruncate(fd, 0) == 0 &&
                 sys::ftruncate(fd, static_cast<off_t>(request.size)) == 0 &&
                 (request.initialLength == 0 ||
                  sys::pwrite(fd, request.initial, request.initialLength, 0) ==
                      static_cast<ssize_t>(request.initialLength));
    ready = ready && SetOpeningMark(fd, F_RDLCK) && Flock(fd, LOCK_SH) == 0;
    const int failure = errno;
    SetOpeningMark(fd, F_UNLCK);
    if (!ready) {
      RemoveIfLastHolder(fd, path);  // made for nobody: it goes again
      CloseOrDie(fd);
      return FailAttempt(failure);
    }
  }
  out->handle = fd;
  out->created = alone;
  return 1;
}

}  // namespace

bool OpenNamedObject(const std::string& name, const NamedObjectRequest& request,
                     NamedObjectOpen* out) noexcept {
  out->handle = -1;
  out->created = false;
  if (name.find('/') != std::string::npos) return FailWith(kErrorInvalidName);
  if (name.size() > NAME_MAX) return FailWith(kErrorFilenameExcedRange);
  try {
    const std::string path = kShmDirectory + name;
    for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
      const int done = TryOpen(name, path, request, out);
      if (done < 0) return false;
      if (done == 0) continue;
      try {
        struct stat status {};
        sys::fstat(static_cast<int>(out->handle), &status);  // an open descriptor: cannot fail
        Holders().Add(static_cast<int>(out->handle), {status.st_dev, status.st_ino});
      } catch (const std::bad_alloc&) {
        RemoveIfLastHolder(static_cast<int>(out->handle), path);
        CloseOrDie(static_cast<int>(out->handle));
        out->handle = -1;
        out->created = false;
        throw;
      }
      return true;
    }
    return FailWith(kErrorBusy);  // the name kept changing under us
  } catch (const std::bad_alloc&) {
    return FailWith(kErrorNotEnoughMemory);
  }
}

bool CloseNamedObject(intptr_t handle) noexcept {
  const int fd = static_cast<int>(handle);
  struct stat status {};
  if (handle < 0 || handle > INT_MAX || sys::fstat(fd, &status) != 0) {
    return FailWith(kErrorInvalidHandle);
  }
  Holders().Remove(fd);
  try {
    const std::string path = PathOf(fd);
    if (!Views().NoteClosedWithViews({status.st_dev, status.st_ino}, path)) {
      RemoveIfLastHolder(fd, path);
    }
  } catch (const std::bad_alloc&) {
    // Without the path the name stays; the next opener finds it unheld and new.
  }
  if (sys::close(fd) != 0 && errno != EINTR) return Fail(errno);
  return true;
}

bool IsNamedObjectHandle(intptr_t handle) noexcept {
  if (handle < 0 || handle > INT_MAX || Holders().Empty()) return false;
  struct stat status {};
  if (sys::fstat(static_cast<int>(handle), &status) != 0) return false;
  return Holders().Contains(static_cast<int>(handle), {status.st_dev, status.st_ino});
}

void* MapNamedObject(intptr_t handle, bool writable) noexcept {
  const int fd = static_cast<int>(handle);
  struct stat status {};
  if (handle < 0 || handle > INT_MAX || sys::fstat(fd, &status) != 0) {
    FailWith(kErrorInvalidHandle);
    return nullptr;
  }
  const size_t length = static_cast<size_t>(status.st_size);
  const int protection = writable ? PROT_READ | PROT_WRITE : PROT_READ;
  void* address = sys::mmap(nullptr, length, protection, MAP_SHARED, fd, 0);
  if (address == MAP_FAILED) {
    Fail(errno);
    return nullptr;
  }
  try {
    Views().Add(address, {length, {status.st_dev, status.st_ino}});
  } catch (const std::bad_alloc&) {
    sys::munmap(address, length);
    FailWith(kErrorNotEnoughMemory);
    return nullptr;
  }
  return address;
}

bool UnmapNamedObject(void* address) noexcept {
  View view{};
  std::string orphanPath;
  try {
    if (!Views().Remove(address, &view, &orphanPath)) return FailWith(kErrorInvalidAddress);
  } catch (const std::bad_alloc&) {
    return FailWith(kErrorNotEnoughMemory);
  }
  if (sys::munmap(address, view.length) != 0) return Fail(errno);
  if (!orphanPath.empty()) RemoveOrphan(orphanPath);
  return true;
}

bool WaitOnSharedWord(std::atomic<uint32_t>* word, uint32_t expected, uint32_t timeoutMs) noexcept {
  struct timespec timeout {};
  struct timespec* limit = nullptr;
  if (timeoutMs != 0xFFFFFFFFu) {
    timeout.tv_sec = static_cast<time_t>(timeoutMs / 1000);
    timeout.tv_nsec = static_cast<long>(timeoutMs % 1000) * 1000000;
    limit = &timeout;
  }
  // Shared between processes: no FUTEX_PRIVATE_FLAG.
  const long result = sys::futex(reinterpret_cast<uint32_t*>(word), FUTEX_WAIT, expected, limit,
                                 nullptr, 0);
  if (result == 0 || errno == EAGAIN || errno == EINTR) return true;
  if (errno == ETIMEDOUT) return FailWith(kErrorWaitTimeout);
  return Fail(errno);
}

void WakeSharedWord(std::atomic<uint32_t>* word, int count) noexcept {
  if (sys::futex(reinterpret_cast<uint32_t*>(word), FUTEX_WAKE, static_cast<uint32_t>(count),
                 nullptr, nullptr, 0) < 0) {
    std::fprintf(stderr, "QZCore: futex wake of a named semaphore failed (errno %d)\n", errno);
    std::abort();
  }
}

}  // namespace qz::os
