/* qzmemory.h - heap blocks with result codes, atomics, access at any address, byte swaps, and the
 * debugger break.
 *
 * None of these holds state or takes a lock. Heap blocks come from the C heap and go back through
 * this family (never through QZComFree). Every atomic operation is sequentially consistent.
 */
#ifndef QZCORE_QZMEMORY_H
#define QZCORE_QZMEMORY_H

#include "qzcore/qztypes.h"

QZ_EXTERN_C_BEGIN

/* Allocates `size` bytes. *result always receives what malloc returned. 0, or QZ_E_OUTOFMEMORY. */
QZ_API QZRESULT QZMalloc(size_t size, void** result);
/* Allocates count*size zeroed bytes. *result always receives what calloc returned. 0 or
 * QZ_E_OUTOFMEMORY. */
QZ_API QZRESULT QZCalloc(size_t count, size_t size, void** result);
/* Resizes *block (null: allocates). Size 0 frees the block, sets *block to null and returns 0.
 * Otherwise 0, or QZ_E_OUTOFMEMORY with *block unchanged. */
QZ_API QZRESULT QZRealloc(void** block, size_t size);
/* Resizes *block to `size` bytes in all and zeroes what the heap added beyond the old usable size.
 * Null block: calloc(size, 1). Size 0: frees *block and leaves the pointer as it was (stale).
 * QZ_E_POINTER if the heap cannot tell the block's size; QZ_E_OUTOFMEMORY if it cannot grow. */
QZ_API QZRESULT QZRecalloc(void** block, size_t size);
/* Frees a block (null allowed). Always 0. */
QZ_API QZRESULT QZFree(void* block);
/* Usable size of a block in bytes (at least what was asked for), or 0 if the heap cannot say. */
QZ_API size_t QZMallocSize(void* block);
/* `size` rounded up to a multiple of 8. */
QZ_API size_t QZGetAlignedSize(size_t size);

/* Atomic read-modify-write with a full barrier; each returns the new value except where noted. */
QZ_API int32_t QZAtomicIncrement(volatile int32_t* value);
QZ_API int32_t QZAtomicDecrement(volatile int32_t* value);
QZ_API int32_t QZAtomicAdd32(volatile int32_t* value, int32_t addend);
QZ_API intptr_t QZAtomicAddSZ(volatile intptr_t* value, intptr_t addend);
/* Stores `newValue`; returns the old value. */
QZ_API int32_t QZAtomicExchange(volatile int32_t* value, int32_t newValue);
/* Stores `newValue` only if the word equals `expected` (note the order); returns the old value. */
QZ_API int32_t QZAtomicCompareExchange(volatile int32_t* value, int32_t newValue, int32_t expected);

/* Host byte order at any address, aligned or not. */
QZ_API uint16_t QZGetUnalignedInt16(const void* address);
QZ_API uint32_t QZGetUnalignedInt32(const void* address);
QZ_API uint64_t QZGetUnalignedInt64(const void* address);
QZ_API void QZPutUnalignedInt16(void* address, uint16_t value);
QZ_API void QZPutUnalignedInt32(void* address, uint32_t value);
QZ_API void QZPutUnalignedInt64(void* address, uint64_t value);

/* Reverse the byte order, always. */
QZ_API uint16_t QZSwapInt16(uint16_t value);
QZ_API uint32_t QZSwapInt32(uint32_t value);
QZ_API uint64_t QZSwapInt64(uint64_t value);

/* Breakpoint trap (SIGTRAP): a debugger may continue; without one the process ends. */
QZ_API void QZDebugBreak(void);

QZ_EXTERN_C_END

#endif /* QZCORE_QZMEMORY_H */
