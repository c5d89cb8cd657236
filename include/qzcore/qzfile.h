/* qzfile.h - files by handle, byte-range locks, copying, directories and full path names.
 *
 * A QZFileHandle is the system's own file descriptor widened to pointer size; -1 means no file. Pipe
 * ends of QZProcessCreate are handles of the same kind and take QZFileRead, QZFileWrite and
 * QZFileClose. Every descriptor is opened close-on-exec. Paths are 16-bit text; they reach the
 * system as UTF-8, and '/' separates their parts.
 *
 * The functions keep no state and take no lock: any thread may call them. A handle has one file
 * position, shared by every thread that uses it. Handles are not validated: a closed or foreign
 * descriptor answers what the system says about it (usually QZ_E_HANDLE).
 *
 * Results: 0 success; QZ_S_CREATED (2) from QZFileOpen and QZFileCopy when the file was made anew;
 * QZ_E_FILE_NOT_FOUND for a missing file or directory (also on the way to it, and for a path that
 * runs through a file); QZ_E_ACCESSDENIED where permissions refuse; QZ_E_HANDLE_EOF from QZFileRead
 * at the end of a file; QZ_E_FAIL for every system error without a code of its own (a held lock
 * range, a full disk, an existing file created exclusively, the end of a directory, ...).
 */
#ifndef QZCORE_QZFILE_H
#define QZCORE_QZFILE_H

#include "qzcore/qztypes.h"

/* Flags of QZFileOpen (and of the destination of QZFileCopy). Other bits are ignored. */
#define QZFILE_APPEND 0x00000008u        /* after the open, position at the end (once: no append mode) */
#define QZFILE_TEMPORARY 0x00000040u     /* deleted with its last handle; see QZFileOpen */
#define QZFILE_CREATE 0x00000100u        /* create the file if it does not exist */
#define QZFILE_TRUNCATE 0x00000200u      /* empty the file */
#define QZFILE_EXCLUSIVE 0x00000400u     /* with QZFILE_CREATE: fail if the file exists */
#define QZFILE_WRITE_THROUGH 0x00001000u /* each write reaches the device before it returns */
#define QZFILE_WRITE 0x40000000u         /* write access */
#define QZFILE_READ 0x80000000u          /* read access */

/* Flags of QZFileLock. */
#define QZFILE_LOCK_SHARED 0x1u /* shared (read) lock; clear: exclusive */
#define QZFILE_LOCK_WAIT 0x2u   /* wait until the range can be locked; clear: fail at once */

/* Seek origins of QZFileSeek. */
#define QZFILE_SEEK_SET 0u
#define QZFILE_SEEK_CUR 1u
#define QZFILE_SEEK_END 2u

/* Permission and type bits of QZFileOpen's permissions and of QZDirEntry.mode. */
#define QZFILE_MODE_DIRECTORY 0x4000u
#define QZFILE_MODE_READ 0x124u  /* read permission for owner, group and others */
#define QZFILE_MODE_WRITE 0x92u  /* write permission for owner, group and others */

/* One entry of a directory, filled by QZDirRead into storage the caller provides. */
typedef struct QZDirEntry {
  QZWCHAR name[260];     /* the entry's name without a path, terminated (longer names are cut) */
  QZWCHAR shortName[14]; /* the alternate short name: always empty here */
  uint32_t mode;         /* QZFILE_MODE_READ, plus QZFILE_MODE_WRITE unless no one may write, plus
                            QZFILE_MODE_DIRECTORY for a directory */
  uint32_t sizeHigh;     /* upper half of the size in bytes */
  uint32_t sizeLow;      /* lower half of the size in bytes */
  int64_t createTime;    /* creation (birth) time, POSIX seconds; 0 when not known or not convertible */
  int64_t accessTime;    /* last access, the same way */
  int64_t modifyTime;    /* last write, the same way */
} QZDirEntry;

#define QZ_DIR_ENTRY_SIZE 584 /* sizeof(QZDirEntry) */

/* The state behind a QZDirHandle (the open allocates it, the close frees it). */
typedef struct QZDirState {
  QZWCHAR* pattern;      /* the directory path followed by a slash and an asterisk */
  intptr_t findHandle;   /* the running enumeration; -1 before the first successful read */
} QZDirState;

QZ_EXTERN_C_BEGIN

/* Opens or creates `path`. `flags`: QZFILE_READ/QZFILE_WRITE give the access (neither: a handle
 * without data access, on which reads and writes fail with QZ_E_ACCESSDENIED). The bits
 * CREATE|TRUNCATE|EXCLUSIVE choose what happens:
 *
 *   none              open an existing file                      missing: QZ_E_FILE_NOT_FOUND
 *   CREATE            open, or create (QZ_S_CREATED)
 *   TRUNCATE          open an existing file and empty it         missing: QZ_E_FILE_NOT_FOUND
 *   CREATE|TRUNCATE   empty an existing file, or create (QZ_S_CREATED)
 *   CREATE|EXCLUSIVE  create (0, not QZ_S_CREATED)               existing: QZ_E_FAIL, untouched
 *   EXCLUSIVE alone   refused: QZ_E_FAIL
 *
 * A file this call creates with `permissions` holding none of QZFILE_MODE_WRITE is read-only (no
 * write permission for anyone; this handle may still write). QZFILE_TEMPORARY: the file is removed
 * from its directory at once and vanishes with its last handle; with a NULL or empty `path` a
 * nameless file is made in $TMPDIR (else /tmp) under a name beginning "tmp", which the caller never
 * learns. QZFILE_APPEND positions at the end once; if that fails the error is returned and the open
 * handle is still in *result, for the caller to close. *result is -1 until the open succeeds.
 * Returns 0 or QZ_S_CREATED, or a failure. Never blocks beyond the file system. */
QZ_API QZRESULT QZFileOpen(const QZWCHAR* path, uint32_t flags, int32_t permissions, QZFileHandle* result);

/* Closes the handle (and releases its byte-range locks). */
QZ_API QZRESULT QZFileClose(QZFileHandle file);

/* Reads up to `size` bytes at the position; *read (required) gets the count. 0, or QZ_E_HANDLE_EOF
 * when no byte was read: at the end of the file, and for a `size` of 0. A pipe whose writers are
 * all gone answers QZ_E_FAIL once it is drained. Blocks while a pipe is empty. */
QZ_API QZRESULT QZFileRead(QZFileHandle file, void* buffer, uint32_t size, uint32_t* read);

/* Writes `size` bytes at the position; *written (required) gets the count. A write that stops part
 * way (a full disk) is no failure: the count tells. Blocks while a pipe is full. */
QZ_API QZRESULT QZFileWrite(QZFileHandle file, const void* buffer, uint32_t size, uint32_t* written);

/* Moves the position by `offset` from `origin` (QZFILE_SEEK_*); *position (required) gets the new
 * position, or 0xFFFFFFFF on failure: a position before the start, one beyond 32 bits (the
 * position stays), an unknown origin. Positions beyond 32 bits are reached only by reading or
 * writing; QZFileGetSize sees the whole size. */
QZ_API QZRESULT QZFileSeek(QZFileHandle file, int32_t offset, uint32_t origin, uint32_t* position);

/* Writes the file's data and metadata through to the device. */
QZ_API QZRESULT QZFileFlush(QZFileHandle file);

/* *size gets the file's size in bytes. */
QZ_API QZRESULT QZFileGetSize(QZFileHandle file, uint64_t* size);

/* Locks `length` bytes from `offset` against every other handle, in this process or another
 * (handles from separate opens; a handle never conflicts with itself). QZ_E_FAIL at once when the
 * range is held in a conflicting way, unless QZFILE_LOCK_WAIT asks to block until it is free. An
 * exclusive lock needs a handle with write access, a shared one read access. Locks are advisory:
 * they stop other locks, not reads and writes. Released by QZFileUnlock or by closing the handle. */
QZ_API QZRESULT QZFileLock(QZFileHandle file, uint32_t offset, uint32_t length, uint32_t flags);

/* Releases the range locked by QZFileLock with the same offset and length. */
QZ_API QZRESULT QZFileUnlock(QZFileHandle file, uint32_t offset, uint32_t length);

/* Removes the file `path`. QZ_E_ACCESSDENIED for a directory and for a read-only file (no write
 * permission for anyone), QZ_E_FILE_NOT_FOUND when it is missing. */
QZ_API QZRESULT QZFileDelete(const QZWCHAR* path);

/* Copies the bytes of `source` (opened for reading) into `destination`, opened with `flags` plus
 * QZFILE_WRITE and `permissions` as by QZFileOpen, 16384 bytes at a time. Moves bytes only: no
 * permissions, times or other attributes. Returns the destination's open status (0 or
 * QZ_S_CREATED) or a failure: a failed write gives its error, a short write QZ_E_FAIL; a read error
 * ends the copy as if at the end of the source. A partly written destination is left as it is.
 * With `destination_handle` not NULL it gets -1 first and, on success, the destination handle, open
 * and positioned behind the copied bytes, for the caller to close. */
QZ_API QZRESULT QZFileCopy(const QZWCHAR* source, const QZWCHAR* destination, uint32_t flags,
                           uint32_t permissions, QZFileHandle* destination_handle);

/* Creates the directory `path` (permissions from the process's umask; `permissions` is ignored).
 * QZ_E_ALREADY_EXISTS when something of that name exists. */
QZ_API QZRESULT QZDirCreate(const QZWCHAR* path, uint32_t permissions);

/* Removes the empty directory `path`; QZ_E_FAIL when it is not empty or not a directory. */
QZ_API QZRESULT QZDirRemove(const QZWCHAR* path);

/* Opens the directory `path` (trailing '/' and '\' removed) for QZDirRead; *result is -1 until it
 * succeeds. A missing path fails here; a path that names a file opens, and its first read fails.
 * QZ_E_OUTOFMEMORY when the state cannot be allocated. */
QZ_API QZRESULT QZDirOpen(const QZWCHAR* path, QZDirHandle* result);

/* Fills *entry (`size` is ignored: give a whole QZDirEntry) with the next entry, "." and ".."
 * included, in the file system's order. QZ_E_FAIL at the end and on any failure alike: read until
 * the first failure. A handle belongs to one thread at a time. */
QZ_API QZRESULT QZDirRead(QZDirHandle dir, QZDirEntry* entry, uint32_t size);

/* Ends the enumeration and frees the state. Always 0. */
QZ_API QZRESULT QZDirClose(QZDirHandle dir);

/* The full form of `path` in `buffer` of `size` units: a relative path is taken from the current
 * directory; "." and ".." parts and repeated '/' are resolved as text (symbolic links are not
 * followed, nothing need exist). 0 when it fits with its terminator, and also when it does not, in
 * which case the buffer is left unfilled. QZ_E_FAIL for an empty path. */
QZ_API QZRESULT QZPathExpand(const QZWCHAR* path, QZWCHAR* buffer, uint32_t size);

QZ_EXTERN_C_END

#endif /* QZCORE_QZFILE_H */
