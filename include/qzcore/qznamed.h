/* qznamed.h - objects two processes reach by name: a counting semaphore and a block of shared
 * memory, and the restricted security descriptor built for such objects.
 *
 * A name is a plain byte string; the library puts "SEM:" or "SHM:" in front of it and the object
 * lives in the system's shared-memory namespace ("/SEM:<name>", "/SHM:<name>", mode 0666 whatever
 * the umask). An object lives as long as some process holds a handle (or, for shared memory, a
 * view) on it: the last holder removes the name, and an object whose holders all died is new to
 * the next opener. A name the system cannot carry (one holding '/', or longer than 251 bytes) is
 * refused with QZ_E_FAIL; an empty name is valid.
 *
 * A named semaphore is a semaphore of qzwaitable.h: QZNamedSemOpen(name, n, out) is
 * QZSemaphoreCreate(n, name, 3, out), the QZNamedSem* operations are the QZSemaphore* ones (either
 * set takes a handle made either way), and QZNamedSemClose is QZSemaphoreDestroy.
 *
 * Named semaphore states: count 0..32767. Post adds one (refused at 32767), wait takes one and
 * blocks while the count is 0. A process that dies after a wait and before its post leaves the
 * count taken; one that dies while it waits takes nothing with it.
 *
 * Handles and views may be used from any thread; opening and closing a given handle are the
 * caller's to serialise.
 */
#ifndef QZCORE_QZNAMED_H
#define QZCORE_QZNAMED_H

#include "qzcore/qztypes.h"

/* Flags of QZSharedMemOpen. Any of CREATE or EXCL selects the create path; both together fail
 * on an existing object. */
#define QZ_SHM_CREATE 0x00000100u
#define QZ_SHM_EXCL 0x00000400u
/* Access bits: in the flags of the open path, and as the access of QZSharedMemAttach. */
#define QZ_SHM_WRITE 0x40000000u
#define QZ_SHM_READ 0x80000000u

/* The highest count of a named semaphore. */
#define QZ_NAMED_SEM_MAX_COUNT 32767

/* One access entry of a restricted descriptor: who may do what. */
typedef struct QZAccessEntry {
  uint32_t type;       /* 0: access allowed */
  uint32_t accessMask; /* the mask given to QZWinBuildRestrictedSD */
  uint8_t sid[12];     /* S-1-5-11 (Authenticated Users) in its binary form */
} QZAccessEntry;

/* The caller's storage for a security descriptor. */
typedef struct QZSecurityDescriptor {
  uint32_t revision;      /* 1 */
  uint32_t mode;          /* the POSIX mode an object made with it gets: 0666 */
  QZAccessEntry* entries; /* the entry buffer (owned by the caller via aclOut), or null */
  uint32_t entryCount;    /* 1 once built */
  uint32_t reserved;      /* 0 */
} QZSecurityDescriptor;

#define QZ_SECURITY_DESCRIPTOR_SIZE 24

QZ_EXTERN_C_BEGIN

/* Opens the named semaphore "SEM:<name>" (name not null), creating it with `initialCount` when no
 * process holds it; a later opener's count is ignored and joining is not reported. Stores -1 in
 * *out first, the handle on success. 0; QZ_E_FAIL for an initialCount above 32767 or a name the
 * system cannot carry; QZ_E_OUTOFMEMORY; QZ_E_ACCESSDENIED; other system failures mapped. */
QZ_API QZRESULT QZNamedSemOpen(const char* name, uint32_t initialCount, QZSemaphoreHandle* out);

/* QZSemaphoreDestroy: closes the handle (null: nothing). The last holder in the system removes the
 * name. Always 0. */
QZ_API QZRESULT QZNamedSemClose(QZSemaphoreHandle sem);

/* Blocks without limit until it takes one from the count. 0, or a mapped system failure. */
QZ_API QZRESULT QZNamedSemWait(QZSemaphoreHandle sem);

/* Never blocks. 0 when one was taken, QZ_E_FAIL when the count was 0. */
QZ_API QZRESULT QZNamedSemTryWait(QZSemaphoreHandle sem);

/* Adds one to the count and wakes a waiter. 0; QZ_E_FAIL with the count unchanged at 32767. */
QZ_API QZRESULT QZNamedSemPost(QZSemaphoreHandle sem);

/* Stores -1 in *value whatever the count (the handle is not looked at). Always 0. */
QZ_API QZRESULT QZNamedSemGetValue(QZSemaphoreHandle sem, int32_t* value);

/* Opens shared memory "SHM:<name>". With QZ_SHM_CREATE or QZ_SHM_EXCL in `flags` (the create
 * path) an object of `size` bytes (not 0), zero-filled, is made when no process holds one, with
 * read-write access; an existing object keeps its size. Otherwise (the open path) the object must
 * exist; QZ_SHM_WRITE asks for read-write access, else read-only. `mode` is ignored.
 * Results: QZ_S_CREATED (2) for a new object and for every success of the open path; 0 for an
 * existing object joined on the create path; QZ_E_FAIL when both CREATE and EXCL are given and the
 * object exists; QZ_E_FILE_NOT_FOUND on the open path when nobody holds it; QZ_E_FAIL for size 0 on
 * the create path or a name the system cannot carry. *out is the descriptor, or -1 on failure. */
QZ_API QZRESULT QZSharedMemOpen(const char* name, uint32_t flags, uint32_t mode, uint32_t size,
                                QZSharedMemHandle* out);

/* Maps the whole object. `access` QZ_SHM_WRITE (alone or with READ) gives a read-write view,
 * QZ_SHM_READ a read-only one; any other value fails with QZ_E_FAIL. A writable view of a
 * read-only handle is QZ_E_ACCESSDENIED. *address is untouched on failure. */
QZ_API QZRESULT QZSharedMemAttach(QZSharedMemHandle shm, uint32_t access, void** address);

/* Unmaps a view QZSharedMemAttach gave. 0; QZ_E_FAIL for an address that is not a view's. */
QZ_API QZRESULT QZSharedMemDetach(void* address);

/* QZFileClose: closes the handle (QZFileClose on it is the same). The object stays while this
 * process has views of it; the last holder in the system removes the name. 0, or QZ_E_HANDLE for
 * a descriptor that is not open. */
QZ_API QZRESULT QZSharedMemClose(QZSharedMemHandle shm);

/* Fills *sd (caller's storage of QZ_SECURITY_DESCRIPTOR_SIZE bytes) with mode 0666 and one
 * access-allowed entry for Authenticated Users carrying `accessMask`; the entry buffer is
 * allocated and stored in *aclOut, and sd->entries points into it, so it must outlive every use
 * of *sd. 0, or QZ_E_OUTOFMEMORY with *aclOut null. Free the buffer with QZWinFreeRestrictedSD. */
QZ_API QZRESULT QZWinBuildRestrictedSD(QZSecurityDescriptor* sd, uint32_t accessMask,
                                       void** aclOut);

/* Frees the entry buffer QZWinBuildRestrictedSD stored in aclOut (null: nothing). */
QZ_API void QZWinFreeRestrictedSD(void* acl);

QZ_EXTERN_C_END

#endif /* QZCORE_QZNAMED_H */
