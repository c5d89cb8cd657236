// exports.cpp - the exported functions of the library frame: result translation, reporting,
// heap blocks, atomics, access at any address, byte swaps and the debugger break.
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "frame/core_exception.h"
#include "frame/error_report.h"
#include "frame/heap_blocks.h"
#include "platform/process_info.h"
#include "qzcore/qzmemory.h"
#include "qzcore/qzresult.h"

extern "C" {

QZ_API QZRESULT QZResultFromNative(uint32_t nativeError) { return qz::core::ResultFromNative(nativeError); }

QZ_API void QZErrorAlert(uint32_t method, const QZWCHAR* title, const QZWCHAR* format, ...) {
  va_list args;
  va_start(args, format);
  qz::core::ErrorAlertV(method, title, format, args);
  va_end(args);
}

QZ_API QZRESULT QZErrorAlertSetMethod(uint32_t method) {
  qz::core::SetAlertMethod(method);
  return QZ_S_OK;
}

QZ_API void QZAssert(const char* expression, const char* file, int32_t line) {
  qz::core::Assert(expression, file, line);
}

QZ_API void QZTrace(const QZWCHAR* format, ...) {
  va_list args;
  va_start(args, format);
  qz::core::TraceV(format, args);
  va_end(args);
}

QZ_API QZRESULT QZMalloc(size_t size, void** result) { return qz::core::HeapAlloc(size, result); }
QZ_API QZRESULT QZCalloc(size_t count, size_t size, void** result) { return qz::core::HeapCalloc(count, size, result); }
QZ_API QZRESULT QZRealloc(void** block, size_t size) { return qz::core::HeapRealloc(block, size); }
QZ_API QZRESULT QZRecalloc(void** block, size_t size) { return qz::core::HeapRecalloc(block, size); }
QZ_API QZRESULT QZFree(void* block) {
  std::free(block);
  return QZ_S_OK;
}
QZ_API size_t QZMallocSize(void* block) { return qz::core::HeapBlockSize(block); }
QZ_API size_t QZGetAlignedSize(size_t size) { return (size + 7) & ~static_cast<size_t>(7); }

QZ_API int32_t QZAtomicIncrement(volatile int32_t* value) { return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST); }
QZ_API int32_t QZAtomicDecrement(volatile int32_t* value) { return __atomic_sub_fetch(value, 1, __ATOMIC_SEQ_CST); }
QZ_API int32_t QZAtomicAdd32(volatile int32_t* value, int32_t addend) {
  return __atomic_add_fetch(value, addend, __ATOMIC_SEQ_CST);
}
QZ_API intptr_t QZAtomicAddSZ(volatile intptr_t* value, intptr_t addend) {
  return __atomic_add_fetch(value, addend, __ATOMIC_SEQ_CST);
}
QZ_API int32_t QZAtomicExchange(volatile int32_t* value, int32_t newValue) {
  return __atomic_exchange_n(value, newValue, __ATOMIC_SEQ_CST);
}
QZ_API int32_t QZAtomicCompareExchange(volatile int32_t* value, int32_t newValue, int32_t expected) {
  __atomic_compare_exchange_n(value, &expected, newValue, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
  return expected;  // the word's value before the call, whether or not it was written
}

QZ_API uint16_t QZGetUnalignedInt16(const void* address) {
  uint16_t v;
  std::memcpy(&v, address, sizeof v);
  return v;
}
QZ_API uint32_t QZGetUnalignedInt32(const void* address) {
  uint32_t v;
  std::memcpy(&v, address, sizeof v);
  return v;
}
QZ_API uint64_t QZGetUnalignedInt64(const void* address) {
  uint64_t v;
  std::memcpy(&v, address, sizeof v);
  return v;
}
QZ_API void QZPutUnalignedInt16(void* address, uint16_t value) { std::memcpy(address, &value, sizeof value); }
QZ_API void QZPutUnalignedInt32(void* address, uint32_t value) { std::memcpy(address, &value, sizeof value); }
QZ_API void QZPutUnalignedInt64(void* address, uint64_t value) { std::memcpy(address, &value, sizeof value); }

QZ_API uint16_t QZSwapInt16(uint16_t value) { return __builtin_bswap16(value); }
QZ_API uint32_t QZSwapInt32(uint32_t value) { return __builtin_bswap32(value); }
QZ_API uint64_t QZSwapInt64(uint64_t value) { return __builtin_bswap64(value); }

QZ_API void QZDebugBreak(void) { qz::os::BreakpointTrap(); }

}  // extern "C"
