/* qzlibrary.h - loading shared libraries, and the module set that keeps a module from loading or
 * unloading libraries once its own unloading has begun.
 *
 * A module key is a pointer-sized value a module chooses (its own load hook's address, say) and
 * enters in the set when it has started (QZModuleSetInitialized(key, 1)) and takes out before it
 * stops (QZModuleSetInitialized(key, 0)). The guarded operations (QZModuleLib* here, QZModuleCom* in
 * qzcom.h) refuse with QZ_E_MODULE_NOT_INITIALIZED, doing nothing, for a key that is not in the set.
 * The check guards a module's own order of clean-up, not a race with other threads: the set's lock
 * is not held while the guarded operation runs. The library enters itself under its own key.
 *
 * Libraries are loaded by path (UTF-8 on the way to the system; no directory: the system's search),
 * with every symbol resolved at once and kept local, and counted per process: each successful open
 * needs its own close before the library leaves memory. Any thread.
 */
#ifndef QZCORE_QZLIBRARY_H
#define QZCORE_QZLIBRARY_H

#include "qzcore/qztypes.h"

QZ_EXTERN_C_BEGIN

/* Enters `moduleKey` in the set (`on` non-zero) or takes it out (`on` zero). The set keeps no
 * counts: entering twice and leaving once leaves the key out. 0, or QZ_E_OUTOFMEMORY. */
QZ_API QZRESULT QZModuleSetInitialized(uintptr_t moduleKey, uint16_t on);
/* QZLibOpen behind the module guard; a refused call leaves *result as it was. */
QZ_API QZRESULT QZModuleLibOpen(uintptr_t moduleKey, const QZWCHAR* path, QZLibHandle* result);
/* QZLibClose behind the module guard. */
QZ_API QZRESULT QZModuleLibClose(uintptr_t moduleKey, QZLibHandle library);

/* Sets *result to -1, then loads the library at `path`: 0 with the handle, or QZ_E_FAIL when it
 * cannot be loaded (missing, not a library, a dependency missing, empty path). */
QZ_API QZRESULT QZLibOpen(const QZWCHAR* path, QZLibHandle* result);
/* Drops one open of a library. 0, or QZ_E_HANDLE when the system refuses, as it does for -1 and
 * null: -1 is not a harmless "no handle". Any other value that is not a handle may fault. */
QZ_API QZRESULT QZLibClose(QZLibHandle library);
/* Sets *result to null, then finds the entry point `name` of a loaded library: 0, or QZ_E_FAIL when
 * it has none or the handle is -1 or null; QZ_E_OUTOFMEMORY. */
QZ_API QZRESULT QZLibGetSymbol(QZLibHandle library, const QZWCHAR* name, void** result);

QZ_EXTERN_C_END

#endif /* QZCORE_QZLIBRARY_H */
