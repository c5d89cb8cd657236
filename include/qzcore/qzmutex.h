/* qzmutex.h - named, recursive mutexes with optional owner checks and timing statistics.
 *
 * Every mutex is recursive. Flags chosen at creation add behaviour:
 *
 *   flags                          class    owner/depth checks   statistics   registered
 *   0, or only NONRECURSIVE/SPIN   plain    no                   no           no
 *   CHECKED                        checked  yes                  no           no
 *   STATS                          checked  no                   yes          yes
 *   CHECKED | STATS                checked  yes                  yes          yes
 *   NOSTATS clears STATS before anything else is decided.
 *
 * A failed check alerts through QZErrorAlert with method 0 (so the stored method decides; by default
 * nothing is shown) under the title "QZCore Critical Error", and the call returns QZ_E_FAIL with the
 * lock as it was. A mutex with statistics stays registered after QZMutexDestroy (as a retired entry)
 * until QZResetLockStats or the library's unload, so a later dump still shows its figures.
 *
 * Any thread may call any operation on a valid handle. Handles are not validated: a null or stale
 * handle is a fault, not a result.
 */
#ifndef QZCORE_QZMUTEX_H
#define QZCORE_QZMUTEX_H

#include "qzcore/qztypes.h"

#define QZ_MUTEX_NOSTATS 0x00000010u      /* no statistics: clears QZ_MUTEX_STATS */
#define QZ_MUTEX_SPIN 0x00010000u         /* spin up to 4000 tries before blocking when contended */
#define QZ_MUTEX_NONRECURSIVE 0x00020000u /* with QZ_MUTEX_CHECKED: recursion is an error */
#define QZ_MUTEX_STATS 0x00040000u        /* keep statistics and register for the dump */
#define QZ_MUTEX_CHECKED 0x80000000u      /* check owner and depth on acquire and release */

/* Figures of a mutex with statistics; times in microseconds. */
typedef struct QZMutexStats {
  int64_t maxAcquireTime;   /* longest wait for the lock */
  int64_t totalAcquireTime; /* sum of waits */
  int64_t acquireCount;     /* acquires, recursive ones included */
  int64_t maxHeldTime;      /* longest outermost hold */
  int64_t totalHeldTime;    /* sum of outermost holds */
  int64_t heldCount;        /* releases, recursive ones included */
  int64_t contentionCount;  /* acquires that had to wait */
} QZMutexStats;

QZ_EXTERN_C_BEGIN

/* Creates a mutex. `name` (null: empty) is a private copy for diagnostics. Stores -1 in *out first
 * and the handle on success. 0, or QZ_E_OUTOFMEMORY. */
QZ_API QZRESULT QZMutexCreate(const char* name, uint32_t flags, QZMutexHandle* out);

/* Destroys a mutex (handle not null; whether it is held is not tested). Returns the references
 * left, 0 in every ordinary case. A mutex with statistics is retired instead and returns 0. */
QZ_API QZRESULT QZMutexDestroy(QZMutexHandle mutex);

/* Blocks until the calling thread holds the mutex. 0; QZ_E_FAIL (with an alert) when a checked
 * non-recursive mutex is acquired again by its owner, which then keeps it. */
QZ_API QZRESULT QZMutexAcquire(QZMutexHandle mutex);

/* Never blocks. 0 if taken (a holder may take it again, and needs a release for each), else
 * QZ_E_FAIL with no alert; QZ_E_FAIL with an alert for the owner of a checked non-recursive mutex. */
QZ_API QZRESULT QZMutexTryAcquire(QZMutexHandle mutex);

/* Undoes one acquire. With QZ_MUTEX_CHECKED: QZ_E_FAIL with an alert when the caller is not the
 * owner, when the depth is 0, or (non-recursive) when the depth is not 1; the lock stays as it was. */
QZ_API QZRESULT QZMutexRelease(QZMutexHandle mutex);

/* The caller states whether it believes it holds the mutex (`expected`, 16-bit boolean). Non-zero
 * when the belief holds; always 1 for a mutex without QZ_MUTEX_CHECKED. */
QZ_API int32_t QZMutexAssertOwnership(QZMutexHandle mutex, QZBOOL16 expected);

/* The platform lock itself (a recursive pthread_mutex_t on Linux). Using it directly bypasses the
 * checks and the statistics. */
QZ_API void* QZMutexGetOSMutex(QZMutexHandle mutex);

/* Copies the figures of a mutex with statistics (0). QZ_E_NOTIMPL without writing for a mutex of
 * the plain class. No test of the handle. */
QZ_API QZRESULT QZGetLockStats(QZMutexHandle mutex, QZMutexStats* stats);

/* Appends one block of comma-separated text about every registered mutex to `path` (16-bit text;
 * null: "qzlockstats.csv" in the current directory), created when missing, with lines ended by
 * "\n" and flushed one by one:
 *
 *   BeginLockStatistics: <label> - <MM/DD/YYYY HH:MM:SS local time>
 *   CPU Frequency,1000000                      (the time columns are microseconds)
 *   Name/Handle,Held Count,Total Held Time,Max Held Time,Acquire Count,Total Acquire Time,
 *     Max Acquire Time,Contention Count        (one line)
 *   QZ_MUTEX:0x<16 upper-case hex digits>(<name>),<seven signed decimal figures, header order>
 *   ...live mutexes by address, then retired ones ("QZ_DEL_MUTEX") by address...
 *   EndLockStatistics: <label> - <time>
 *   (two empty lines)
 *
 * `label` null means "LockStatsDump". Names are written as they stand (a comma in a name shifts the
 * columns). The figures are read without taking the mutexes, so a row of a busy mutex is a snapshot
 * whose columns need not agree. Returns 0; QZ_E_FAIL when the file cannot be opened (nothing is
 * made), written or closed (the lines written so far stay; an earlier block is never touched);
 * QZ_E_OUTOFMEMORY. Creating or destroying a mutex with statistics waits while a dump writes. */
QZ_API QZRESULT QZDumpLockStats(const char* label, const QZWCHAR* path);

/* Ends the life of every retired mutex and sets the figures of every live registered mutex to 0.
 * Always 0. */
QZ_API QZRESULT QZResetLockStats(void);

QZ_EXTERN_C_END

#endif /* QZCORE_QZMUTEX_H */
