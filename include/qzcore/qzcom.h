/* qzcom.h - the component model: 128-bit identifiers and their text form, the allocator shared by
 * components, the shape of a component interface, and class objects found through the registry.
 *
 * A component is a class in a shared library, known by a class identifier (CLSID) or a text name
 * (ProgID). Its registration lives in the registry hive QZ_HKEY_CLASSES_64:
 *   CLSID\{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}\InprocServer32   default value: the library's path
 *   <ProgID>\CLSID                                                 default value: the CLSID text
 * and its library exports, with the C calling convention,
 *   QZRESULT DllGetClassObject(const QZGUID* clsid, const QZGUID* iid, void** object);
 * which answers a class object (the IQZClassFactory shape) or a negative result. The library loads
 * each class once and keeps its class object in a process-wide cache until QZComFlushFactoryCache.
 */
#ifndef QZCORE_QZCOM_H
#define QZCORE_QZCOM_H

#include "qzcore/qztypes.h"

QZ_EXTERN_C_BEGIN

/* Initialisers of the two published interface identifiers a component needs. */
#define QZ_IID_IQZUNKNOWN_INIT {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}}
#define QZ_IID_IQZCLASSFACTORY_INIT {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}}

/* Results a component commonly answers. */
#define QZ_E_NOINTERFACE ((QZRESULT)0x80004002)           /* the object has no such interface */
#define QZ_CLASS_E_CLASSNOTAVAILABLE ((QZRESULT)0x80040111) /* the library has no such class */

/* Length of the text form, braces included and terminator excluded; a buffer of
 * QZ_GUID_STRING_LENGTH + 1 units holds it whole. */
#define QZ_GUID_STRING_LENGTH 38

/* The shape of every component interface: a pointer to a table whose first three operations are
 * these. A C++ class whose first virtual functions are these three, in this order, has this shape. */
typedef struct IQZUnknown IQZUnknown;
typedef struct IQZUnknownVtbl {
  QZRESULT (*QueryInterface)(IQZUnknown* self, const QZGUID* iid, void** object);
  uint32_t (*AddRef)(IQZUnknown* self);
  uint32_t (*Release)(IQZUnknown* self);
} IQZUnknownVtbl;
struct IQZUnknown {
  const IQZUnknownVtbl* lpVtbl;
};

/* The shape of a class object: IQZUnknown, then CreateInstance (outer object, may be null;
 * interface identifier; result) and LockServer, which the library never calls. */
typedef struct IQZClassFactory IQZClassFactory;
typedef struct IQZClassFactoryVtbl {
  QZRESULT (*QueryInterface)(IQZClassFactory* self, const QZGUID* iid, void** object);
  uint32_t (*AddRef)(IQZClassFactory* self);
  uint32_t (*Release)(IQZClassFactory* self);
  QZRESULT (*CreateInstance)(IQZClassFactory* self, IQZUnknown* outer, const QZGUID* iid, void** object);
  QZRESULT (*LockServer)(IQZClassFactory* self, int32_t lock);
} IQZClassFactoryVtbl;
struct IQZClassFactory {
  const IQZClassFactoryVtbl* lpVtbl;
};

/* The entry point of a component library, "DllGetClassObject". */
typedef QZRESULT (*QZDllGetClassObjectFn)(const QZGUID* clsid, const QZGUID* iid, void** object);

/* ---- Identifiers. None takes a lock, none allocates; any thread. ---- */

/* Reads an identifier from `text`: 36 characters in the pattern XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX
 * (hexadecimal digits in either case), or the same between "{" and "}". What follows the pattern
 * (or the closing brace) is not looked at, and a closing brace without an opening one is taken.
 * 0 with *result written; QZ_E_INVALIDARG for anything else, *result untouched. */
QZ_API QZRESULT QZComGUIDFromString(const QZWCHAR* text, QZGUID* result);
/* Writes "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" (upper case) into `buffer` of `size` units. With
 * size 39 or more it is terminated; a smaller size gets the first `size` units and no terminator,
 * and nothing says so. Always 0. */
QZ_API QZRESULT QZComStringFromGUID(const QZGUID* guid, QZWCHAR* buffer, int32_t size);
/* Orders two identifiers: bytes compared unsigned at positions 10..15, 8, 9, 6, 7, 4, 5, 0..3 of the
 * record (the last six bytes first), the first difference deciding. -1, 0 or 1. This is a fixed
 * order of its own, not the order of the text form. */
QZ_API int32_t QZComCompareGUID(const QZGUID* first, const QZGUID* second);
/* 1 when the 16 bytes are equal, else 0. */
QZ_API int32_t QZComIsEqualGUID(const QZGUID* first, const QZGUID* second);
/* A new random identifier (version 4, from the system's random source; a forked child makes its own).
 * 0, or QZ_E_FAIL with *result untouched when the random source fails. */
QZ_API QZRESULT QZComGenerateGUID(QZGUID* result);

/* ---- Memory that crosses component borders: the process's task allocator. A block allocated here
 * may be resized or freed by any component and by anything using the task allocator, and must never
 * go to QZFree or come from QZMalloc. Any thread; the library must be started (it is once loaded). */

/* Allocates `size` bytes; *result receives the block, or null with QZ_E_OUTOFMEMORY. */
QZ_API QZRESULT QZComMalloc(uint32_t size, void** result);
/* Resizes *block (null: allocates). Size 0 frees it, sets *block to null and returns 0. Otherwise 0
 * with the new block in *block, or QZ_E_OUTOFMEMORY with *block and its block unchanged. */
QZ_API QZRESULT QZComRealloc(void** block, uint32_t size);
/* Frees a block (null allowed). Always 0. */
QZ_API QZRESULT QZComFree(void* block);

/* ---- Forwarders: the first three operations of any component interface, called through its table
 * with the arguments as they came; they answer what the object answers and do nothing else. ---- */
QZ_API QZRESULT IQZUnknown_QueryInterface(IQZUnknown* object, const QZGUID* iid, void** result);
QZ_API uint32_t IQZUnknown_AddRef(IQZUnknown* object);
QZ_API uint32_t IQZUnknown_Release(IQZUnknown* object);

/* ---- Class objects and objects. Any thread. One recursive process-wide lock serialises every class
 * lookup; it is held while the registry is read, while a library is loaded and runs its start code,
 * and while the entry point and QueryInterface run, so a component may look up another class from
 * its own entry point, and a slow one delays every other lookup. ---- */

/* Sets *result to null, then gives the class object of `clsid` with the interface `iid`, with one
 * reference for the caller. The first request loads the library and keeps the class object in the
 * cache; later ones only call QueryInterface on it (a registration changed in between has no effect
 * until a flush). Failures are not cached. Results: 0; QZ_E_CLASSNOTREG when the registration cannot
 * be read; QZ_E_FAIL when the library cannot be loaded or has no entry point (a library whose entry
 * point is missing or fails stays loaded); QZ_E_MODULE_NOT_INITIALIZED while the library is stopping;
 * what the entry point or QueryInterface answers when negative; QZ_E_OUTOFMEMORY. */
QZ_API QZRESULT QZComGetClassObject(const QZGUID* clsid, const QZGUID* iid, void** result);
/* Gets the class object as IQZClassFactory and answers what its CreateInstance(outer, iid, result)
 * answers; *result is written only by the component. A failed lookup is returned as it came, with
 * *result untouched. Calls into the component are not guarded: what it throws passes to the caller. */
QZ_API QZRESULT QZComCreateObject(const QZGUID* clsid, IQZUnknown* outer, const QZGUID* iid, void** result);
/* QZComClassIDFromProgID, then QZComCreateObject. */
QZ_API QZRESULT QZComCreateObjectByProgID(const QZWCHAR* progId, IQZUnknown* outer, const QZGUID* iid,
                                          void** result);
/* Reads the class identifier registered for `progId` (at most 257 units). 0 with *result written;
 * QZ_E_CLASSNOTREG when the ProgID has no registration; QZ_E_INVALIDARG when the value is no
 * identifier; another failure of the registry read (a value over 38 units gives QZ_E_FAIL) as it came. */
QZ_API QZRESULT QZComClassIDFromProgID(const QZWCHAR* progId, QZGUID* result);
/* Empties the cache: releases every class object and then closes its library, which unloads it even
 * if objects made by it are alive; only a caller who knows none are alive may flush. 0. */
QZ_API QZRESULT QZComFlushFactoryCache(void);

/* The two above behind the module guard (qzlibrary.h): QZ_E_MODULE_NOT_INITIALIZED, with nothing
 * touched, when `moduleKey` is not in the module set; otherwise the forwarded call's result. */
QZ_API QZRESULT QZModuleComCreateObject(uintptr_t moduleKey, const QZGUID* clsid, IQZUnknown* outer,
                                        const QZGUID* iid, void** result);
QZ_API QZRESULT QZModuleComGetClassObject(uintptr_t moduleKey, const QZGUID* clsid, const QZGUID* iid,
                                          void** result);

QZ_EXTERN_C_END

#endif /* QZCORE_QZCOM_H */
