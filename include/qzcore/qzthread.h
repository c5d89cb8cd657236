/* qzthread.h - threads made for the caller, joined or detached by their id; and the calls that act
 * on the calling thread: identity, yield, sleep and processor affinity.
 *
 * A QZThreadHandle is the thread's kernel id (never 0) widened to 64 bits; join and detach use its
 * low 32 bits. The library keeps a record per thread it made (and one for the thread that loaded
 * it) until both have happened: the thread function has returned, and a caller has joined or
 * detached the thread. Record states:
 *
 *   joined/detached  function returned  meaning                       leaves by
 *   no               no                 running, unclaimed            return; join or detach
 *   no               yes                ended, exit code kept         join or detach
 *   yes              no                 detached while running        return
 *
 * Any thread may join or detach any other, but only once, and only one thread at a time: two
 * joins or detaches of one thread at once are the caller's error. A thread that joins itself, or
 * joins the thread that loaded the library, waits for ever: nothing detects it. Threads
 * made here must have ended before the library is unloaded.
 */
#ifndef QZCORE_QZTHREAD_H
#define QZCORE_QZTHREAD_H

#include "qzcore/qztypes.h"

QZ_EXTERN_C_BEGIN

/* A thread function: its result's low 32 bits become the thread's exit code. */
typedef uintptr_t (*QZThreadFunction)(void* argument);

/* Starts function(argument) on a new thread with a stack of at least stackSize bytes (0: the
 * system's default; smaller sizes than the system's minimum are raised to it). `reserved` is
 * ignored. Stores -1 in *outHandle and 0 in *outId first; on success *outId is the new thread's
 * id and *outHandle the same value widened. The function never starts before the library has the
 * thread's record, so a join or detach right after the return always finds it. Results: 0;
 * QZ_E_FAIL when the system has no room for another thread; QZ_E_OUTOFMEMORY. No thread is left
 * behind after a failure. */
QZ_API QZRESULT QZThreadCreate(QZThreadFunction function, void* argument, void* reserved,
                               uint32_t stackSize, QZThreadHandle* outHandle, uint32_t* outId);

/* Blocks until the thread has ended, then stores its exit code (upper 32 bits 0) in *exitCode if
 * that is not null (0 is stored first) and forgets the thread. 0; QZ_E_HANDLE for an id the
 * library does not know (never made here, or already joined) and for a thread that was detached.
 * A join of the caller itself or of the thread that loaded the library never returns. */
QZ_API QZRESULT QZThreadJoin(QZThreadHandle thread, uint64_t* exitCode);

/* Gives the thread up: its exit code is dropped when it ends, and nobody can join it. Never
 * blocks. 0; QZ_E_HANDLE when the thread was already detached (never for the thread that loaded
 * the library, which has nothing to give up). The thread must be one the library knows:
 * detaching an unknown id (never made here, already joined or detached and ended) is a
 * programming error that ends the process with a message. */
QZ_API QZRESULT QZThreadDetach(QZThreadHandle thread);

/* The calling thread's id: what QZThreadCreate reports for a thread it makes. Never 0. */
QZ_API uint32_t QZThreadGetID(void);

/* A pseudo handle that means "the calling thread" wherever it is used (the value -2). It is not a
 * thread id: join and detach do not take it. */
QZ_API void* QZThreadGetHandle(void);

/* Gives up the rest of the calling thread's time slice. Always 0. */
QZ_API QZRESULT QZThreadYield(void);

/* Blocks the calling thread for the given time; 0 only yields, QZ_INFINITE (0xFFFFFFFF) never
 * returns. Signals do not cut the sleep short. */
QZ_API void QZSleep(uint32_t milliseconds);

/* Restricts the calling thread to the processors of *mask (bit N: processor N, N from 0 to 63);
 * mask must not be null. 0, or QZ_E_FAIL when no processor of the mask can be used (a mask of 0
 * included); the affinity then stays. */
QZ_API QZRESULT QZSetCpuAffinity(const uint64_t* mask);

/* As QZSetCpuAffinity, and stores the mask in force before in *previous (0 on failure). There is
 * no way to read the mask without setting one. Neither pointer may be null. */
QZ_API QZRESULT QZGetSetCpuAffinity(uint64_t* previous, const uint64_t* mask);

QZ_EXTERN_C_END

#endif /* QZCORE_QZTHREAD_H */
