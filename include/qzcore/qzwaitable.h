/* qzwaitable.h - conditions, events, gates and unnamed semaphores.
 *
 *   object     what it is                               what a wait does
 *   condition  a recursive lock and a wait queue        gives up the lock once while asleep,
 *                                                       holds it again on every return
 *   event      a signal; auto reset unless flags has    auto: lets one waiter through and closes;
 *              QZ_EVENT_MANUAL_RESET                    manual: stays signalled until reset
 *   gate       a level, born closed                     passes while open, consumes nothing
 *   semaphore  a counter, 0..32767                      takes one from the count
 *
 * Events, gates and semaphores keep their state with nobody waiting: a signal, open or post made
 * before the wait is never lost. A condition keeps no state: a signal with nobody waiting is lost.
 *
 * Timeouts are milliseconds on a monotonic clock (a change of the wall clock does not move them);
 * 0 does not block and QZ_INFINITE (0xFFFFFFFF) waits without limit. How each kind of wait reads:
 *
 *   outcome                 infinite wait   timed wait       try-wait
 *   passed / took a unit    0               0                0
 *   time ran out / nothing  (never)         QZ_E_TIMEOUT     QZ_E_FAIL
 *   the wait failed         mapped failure  mapped failure   mapped failure
 *
 * A create export stores -1 in *out first and leaves it there on failure (QZ_E_OUTOFMEMORY when
 * allocation fails). Every destroy export accepts null and returns 0; only null is recognised, not
 * -1, and nothing checks for waiters: destroying an object while a thread waits on it is the
 * caller's error. Handles are not validated otherwise: a bad handle is a fault. Names are private
 * copies for diagnostics (null: empty); the flags are stored as given. Any thread may call any
 * operation but create and destroy at any time.
 */
#ifndef QZCORE_QZWAITABLE_H
#define QZCORE_QZWAITABLE_H

#include "qzcore/qztypes.h"

#define QZ_INFINITE 0xFFFFFFFFu
#define QZ_EVENT_MANUAL_RESET 0x00000002u /* event flag: stay signalled until QZEventReset */
#define QZ_SEMAPHORE_MAX_COUNT 32767u

QZ_EXTERN_C_BEGIN

/* Conditions. Create: 0. Acquire blocks until the caller holds the lock (recursive). Release undoes
 * one acquire. Wait/TimedWait: the caller must hold the lock exactly once (held recursively, the
 * wait sleeps with the lock still held); the lock is held again on every return. TimedWait: 0, or
 * QZ_E_TIMEOUT when the time ran out. A wait may return 0 without a signal: test the predicate
 * again. A wait by a thread that does not hold the lock returns QZ_E_ACCESSDENIED. Signal wakes one
 * waiter, Broadcast all; neither needs the lock. */
QZ_API QZRESULT QZConditionCreate(const char* name, uint32_t flags, QZConditionHandle* out);
QZ_API QZRESULT QZConditionDestroy(QZConditionHandle condition);
QZ_API QZRESULT QZConditionAcquire(QZConditionHandle condition);
QZ_API QZRESULT QZConditionRelease(QZConditionHandle condition);
QZ_API QZRESULT QZConditionWait(QZConditionHandle condition);
QZ_API QZRESULT QZConditionTimedWait(QZConditionHandle condition, uint32_t timeoutMs);
QZ_API QZRESULT QZConditionSignal(QZConditionHandle condition);
QZ_API QZRESULT QZConditionBroadcast(QZConditionHandle condition);

/* Events, not signalled at creation. Signal: signalled (a second signal changes nothing). Reset:
 * not signalled (harmless on an auto-reset event). Wait/TimedWait as in the table above. */
QZ_API QZRESULT QZEventCreate(const char* name, uint32_t flags, QZEventHandle* out);
QZ_API QZRESULT QZEventDestroy(QZEventHandle event);
QZ_API QZRESULT QZEventSignal(QZEventHandle event);
QZ_API QZRESULT QZEventReset(QZEventHandle event);
QZ_API QZRESULT QZEventWait(QZEventHandle event);
QZ_API QZRESULT QZEventTimedWait(QZEventHandle event, uint32_t timeoutMs);

/* Gates, closed at creation whatever the flags. Open lets every wait through until Close; waits
 * never change the gate. TryWait: 0 when open, QZ_E_FAIL when closed (not QZ_E_TIMEOUT). */
QZ_API QZRESULT QZGateCreate(const char* name, uint32_t flags, QZGateHandle* out);
QZ_API QZRESULT QZGateDestroy(QZGateHandle gate);
QZ_API QZRESULT QZGateOpen(QZGateHandle gate);
QZ_API QZRESULT QZGateClose(QZGateHandle gate);
QZ_API QZRESULT QZGateWait(QZGateHandle gate);
QZ_API QZRESULT QZGateTimedWait(QZGateHandle gate, uint32_t timeoutMs);
QZ_API QZRESULT QZGateTryWait(QZGateHandle gate);

/* Unnamed semaphores, maximum count 32767. Create: 0, or QZ_E_FAIL for an initial count above the
 * maximum. Post adds one: QZ_E_FAIL at the maximum, the count staying. TryWait: 0 when a unit was
 * taken, QZ_E_FAIL when none was free. GetValue always stores -1 and returns 0, whatever the count
 * (the handle is not looked at). */
QZ_API QZRESULT QZSemaphoreCreate(uint32_t initialCount, const char* name, uint32_t flags, QZSemaphoreHandle* out);
QZ_API QZRESULT QZSemaphoreDestroy(QZSemaphoreHandle semaphore);
QZ_API QZRESULT QZSemaphorePost(QZSemaphoreHandle semaphore);
QZ_API QZRESULT QZSemaphoreWait(QZSemaphoreHandle semaphore);
QZ_API QZRESULT QZSemaphoreTryWait(QZSemaphoreHandle semaphore);
QZ_API QZRESULT QZSemaphoreGetValue(QZSemaphoreHandle semaphore, int32_t* value);

QZ_EXTERN_C_END

#endif /* QZCORE_QZWAITABLE_H */
