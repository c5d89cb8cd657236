/* qztypes.h - the types, result codes and export markers shared by every QZCore header.
 *
 * Everything here is plain C11 and C++: fixed-width integers, the 16-bit text unit, the opaque
 * handles, the result type QZRESULT with the codes the library produces, and QZGUID. Family headers
 * include this one; callers normally include <qzcore.h>.
 */
#ifndef QZCORE_QZTYPES_H
#define QZCORE_QZTYPES_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

#ifdef __cplusplus
#define QZ_EXTERN_C_BEGIN extern "C" {
#define QZ_EXTERN_C_END }
#else
#define QZ_EXTERN_C_BEGIN
#define QZ_EXTERN_C_END
#endif

/* QZ_API marks a function or variable that the shared library exports. */
#define QZ_API __attribute__((visibility("default")))

/* The 16-bit text unit of every "wide", W, UCS2 and UTF16 interface (UTF-16 code units). */
typedef char16_t QZWCHAR;

/* Result of every fallible export: HRESULT layout. Zero is success, negative is failure, positive is
 * success with information. */
typedef int32_t QZRESULT;

/* The 16-bit boolean of several exports: 0 is false, anything else is true. */
typedef int16_t QZBOOL16;

#define QZ_SUCCEEDED(hr) ((QZRESULT)(hr) >= 0)
#define QZ_FAILED(hr) ((QZRESULT)(hr) < 0)

/* The result codes the library produces, and no others. */
#define QZ_S_OK ((QZRESULT)0x00000000)
#define QZ_S_CREATED ((QZRESULT)0x00000002)              /* success: the object was made anew */
#define QZ_E_NOTIMPL ((QZRESULT)0x80004001)              /* operation not available */
#define QZ_E_POINTER ((QZRESULT)0x80004003)              /* the block handed in has no size */
#define QZ_E_FAIL ((QZRESULT)0x80004005)                 /* general failure */
#define QZ_E_MODULE_NOT_INITIALIZED ((QZRESULT)0x80004006)
#define QZ_E_BAD_KEY_KIND ((QZRESULT)0x80004007)
#define QZ_E_BUFFER_TOO_SMALL ((QZRESULT)0x80004009)     /* what fits may have been delivered */
#define QZ_E_CLASSNOTREG ((QZRESULT)0x80040154)          /* class or ProgID not registered */
#define QZ_E_FILE_NOT_FOUND ((QZRESULT)0x80070002)       /* file, path, key or value not found */
#define QZ_E_ACCESSDENIED ((QZRESULT)0x80070005)
#define QZ_E_HANDLE ((QZRESULT)0x80070006)
#define QZ_E_OUTOFMEMORY ((QZRESULT)0x8007000E)
#define QZ_E_HANDLE_EOF ((QZRESULT)0x80070026)           /* end of file or of an enumeration */
#define QZ_E_INVALIDARG ((QZRESULT)0x80070057)
#define QZ_E_ALREADY_EXISTS ((QZRESULT)0x800700B7)
#define QZ_E_TIMEOUT ((QZRESULT)0x800705B4)              /* a timed wait ran out */

/* The 16-byte identifier, laid out as the first platform's GUID. */
typedef struct QZGUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
} QZGUID;

/* Handles. Synchronisation handles are object addresses; file, process, library and shared memory
 * handles are the platform's own (file descriptors and pidfds widened to pointer size, dlopen
 * handles); a thread handle is the kernel thread id. -1 (all bits set) marks a handle that a failed
 * create left behind. */
typedef struct QZMutexOpaque* QZMutexHandle;
typedef struct QZRWLockOpaque* QZRWLockHandle;
typedef struct QZConditionOpaque* QZConditionHandle;
typedef struct QZEventOpaque* QZEventHandle;
typedef struct QZGateOpaque* QZGateHandle;
typedef struct QZSemaphoreOpaque* QZSemaphoreHandle;
typedef struct QZDirOpaque* QZDirHandle;
typedef struct QZRegEnumOpaque* QZRegEnumHandle;
typedef intptr_t QZFileHandle;
typedef intptr_t QZProcessHandle;
typedef intptr_t QZSharedMemHandle;
typedef void* QZLibHandle;
typedef uint64_t QZThreadHandle;

#define QZ_INVALID_HANDLE_VALUE(type) ((type)(intptr_t)-1)

/* Hive numbers of the registry and its value types. */
#define QZ_HKEY_CLASSES 0
#define QZ_HKEY_CONFIG 1
#define QZ_HKEY_USER 2
#define QZ_HKEY_CLASSES_64 3
#define QZ_HKEY_CONFIG_64 4

#define QZ_REG_SZ 0
#define QZ_REG_DWORD 1
#define QZ_REG_BINARY 3
#define QZ_REG_EXPAND_SZ 4
#define QZ_REG_MULTI_SZ 5

#endif /* QZCORE_QZTYPES_H */
