/* qzrwlock.h - the recursive reader/writer lock.
 *
 * The lock knows by thread who holds how many read locks:
 *   - a thread with a read lock takes more without ever blocking, even while a writer waits;
 *   - a new reader that arrives while a writer waits or writes queues behind that writer, so
 *     writers are not starved; the readers already inside go on and finish;
 *   - a reader that is the only one left takes the write lock at once (an upgrade); with other
 *     readers inside it waits until they have gone, and keeps its read locks through the write;
 *   - a writer takes further write and read locks; each needs its own release. Read locks taken
 *     inside the write lock come back as the thread's read locks after its last write release.
 *
 *   the caller holds   it asks for   effect
 *   read               read          granted at once
 *   read               write         upgrade: at once when alone, else after the other readers
 *   write              write         one more level
 *   write              read          granted at once, parked until the last write release
 *
 * Caller's errors with defined outcomes, kept as they are:
 *   - two readers that both ask for the write lock deadlock;
 *   - after an upgrade made beside other readers, a later writer can enter beside the upgrader
 *     while it keeps its read lock;
 *   - a writer with no read lock of its own that takes a read lock and then releases the write
 *     lock first is not downgraded: its read release then fails, and the lock counts that hold
 *     for ever;
 *   - in write mode a read release takes back a parked read lock whoever calls it, and a write
 *     release is not checked against the caller.
 * The try operations never block and may fail for a moment with no writer anywhere.
 *
 * Every operation but destroy may be called from any thread. Handles are not validated: a bad
 * handle is a fault. Lock order inside: the turnstile before the list of readers.
 */
#ifndef QZCORE_QZRWLOCK_H
#define QZCORE_QZRWLOCK_H

#include "qzcore/qztypes.h"

QZ_EXTERN_C_BEGIN

/* Creates a lock. `name` (null: empty) is a private copy for diagnostics; `flags` are stored and
 * change nothing. Stores -1 in *out first. 0, QZ_E_OUTOFMEMORY, or the failure of the inner gate. */
QZ_API QZRESULT QZRWLockCreate(const char* name, uint32_t flags, QZRWLockHandle* out);

/* Destroys a lock; null is accepted. Holders and waiters are not looked for. Always 0. */
QZ_API QZRESULT QZRWLockDestroy(QZRWLockHandle lock);

/* Blocks as the table above says. 0, or the failure of the inner gate (the lock is then lost). */
QZ_API QZRESULT QZRWLockAcquireRead(QZRWLockHandle lock);
QZ_API QZRESULT QZRWLockAcquireWrite(QZRWLockHandle lock);

/* Gives back one read lock of the caller: 0; QZ_E_FAIL when the caller had none (nothing changes);
 * or the failure of the inner gate. */
QZ_API QZRESULT QZRWLockReleaseRead(QZRWLockHandle lock);

/* Gives back one level of the write lock: 0, or QZ_E_FAIL when no write lock is held. */
QZ_API QZRESULT QZRWLockReleaseWrite(QZRWLockHandle lock);

/* Never block: 0 when taken, QZ_E_FAIL when the lock is busy (or one of its inner mutexes is,
 * for a moment). */
QZ_API QZRESULT QZRWLockTryAcquireRead(QZRWLockHandle lock);
QZ_API QZRESULT QZRWLockTryAcquireWrite(QZRWLockHandle lock);

QZ_EXTERN_C_END

#endif /* QZCORE_QZRWLOCK_H */
