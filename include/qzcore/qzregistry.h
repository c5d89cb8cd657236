/* qzregistry.h - the registry: typed values under keys in five hives, enumeration, removal, and the
 * migration between the platform's store and the text file "qzregistry.ini".
 *
 * A key is named by a hive number (QZ_HKEY_*, qztypes.h) and a path of names separated by
 * backslashes; an empty path is the hive's top. Names of keys and values are case-insensitive and
 * keep the spelling they were created with. Every call opens the key, works and closes it; only an
 * enumeration handle keeps a key open between calls.
 *
 * On this platform the store is a SQLite database: one file for the hives QZ_HKEY_CLASSES,
 * QZ_HKEY_CONFIG and their _64 views (five separate trees in all), one per user for QZ_HKEY_USER,
 * in $QZCORE_REGISTRY_DIR when it is set, else /var/lib/qzcore and
 * ${XDG_CONFIG_HOME:-$HOME/.config}/qzcore. A machine file the process may not write is read-only:
 * writes to it fail with QZ_E_ACCESSDENIED. Any number of threads and processes may use the store at
 * once; a call that finds it busy waits. A write is on disk when the call returns.
 *
 * Sizes of names are in 16-bit units, sizes of data in bytes. Key names are at most 255 units,
 * value names at most 16383; longer names are refused as an invalid parameter of the platform, which
 * reads QZ_E_FAIL. A damaged store file fails its own hives with QZ_E_FAIL and is left as it is.
 */
#ifndef QZCORE_QZREGISTRY_H
#define QZCORE_QZREGISTRY_H

#include "qztypes.h"

QZ_EXTERN_C_BEGIN

/* Store kinds of QZRegistryMigrate. */
#define QZ_REGKIND_NATIVE 0 /* the platform's store, as the other exports use it */
#define QZ_REGKIND_INI 1    /* the text file "qzregistry.ini" in the current directory */

/* Reads value `name` (null or empty: the key's default value) of key `path` in `hive`.
 * `type` (may be null) receives the QZ_REG_* number; `*size` is the room in `data` in bytes and
 * receives the value's size. With `data` null only type and size are told.
 * Results: 0; QZ_E_FILE_NOT_FOUND for a missing key or value; QZ_E_FAIL when the value does not
 * fit (the size needed is in *size, and *type holds the store's own type number, not translated).
 * A value stored as QZ_REG_EXPAND_SZ reads as QZ_E_FAIL with *type QZ_REG_SZ and its unexpanded
 * text in `data`; read with `type` null it succeeds, unexpanded. QZ_E_OUTOFMEMORY when memory runs
 * out. A bad hive number gives QZ_E_HANDLE. */
QZ_API QZRESULT QZRegistryGetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t* type,
                                   void* data, uint32_t* size);

/* Writes value `name` of key `path` in `hive`, creating the key and its missing parents: `size`
 * bytes of `data` as given (count a string's terminator in). Types: QZ_REG_SZ, QZ_REG_DWORD,
 * QZ_REG_BINARY, QZ_REG_EXPAND_SZ, QZ_REG_MULTI_SZ; any other number is QZ_E_INVALIDARG, before
 * anything is done. QZ_E_ACCESSDENIED on a read-only store. */
QZ_API QZRESULT QZRegistrySetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t type,
                                   const void* data, uint32_t size);

/* Removes value `name` of key `path`: 0, QZ_E_FILE_NOT_FOUND, QZ_E_ACCESSDENIED. */
QZ_API QZRESULT QZRegistryDeleteValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name);

/* Removes key `path` with everything beneath it. 0 on success; QZ_E_FAIL when the key cannot be
 * opened for writing (missing, or a read-only store). Otherwise the result is NOT a QZRESULT: it is
 * the platform's error number of the final removal, or-ed with those of the subkeys that could not be
 * removed, a positive number (5 when a subkey resisted, or for the hive's top, which stays). The
 * subkeys that could go are gone. A subkey whose name has 255 units or more ends the walk of its
 * parent and so stays. */
QZ_API QZRESULT QZRegistryDeleteKey(int32_t hive, const QZWCHAR* path);

/* Open an enumeration of the subkeys (in the order of their case-folded names) or of the values (in
 * the order of their creation) of key `path`. *handle is -1 on failure. A missing key gives QZ_E_FAIL
 * for the subkeys and QZ_E_FILE_NOT_FOUND for the values. QZ_E_OUTOFMEMORY when memory runs out.
 * The handle belongs to the caller until QZRegistryCloseEnum, for one thread at a time. */
QZ_API QZRESULT QZRegistryOpenKeyEnum(int32_t hive, const QZWCHAR* path, QZRegEnumHandle* handle);
QZ_API QZRESULT QZRegistryOpenValueEnum(int32_t hive, const QZWCHAR* path, QZRegEnumHandle* handle);

/* The next subkey's name into `name` (room: *size units with the terminator); *size receives the
 * name's length. Each call moves the enumeration on, also a failing one: a name that does not fit
 * (QZ_E_FAIL) is passed over. The end is QZ_E_FAIL too. */
QZ_API QZRESULT QZRegistryEnumNextKey(QZRegEnumHandle handle, QZWCHAR* name, uint32_t* size);

/* The next value: name as for QZRegistryEnumNextKey, *type its QZ_REG_* number (QZ_REG_EXPAND_SZ
 * reads as QZ_REG_SZ, without failure), and its data into `data` (may be null) of *dataSize bytes,
 * *dataSize receiving the value's size. `size`, `type` and `dataSize` must be valid addresses. After
 * a failure *type is not to be relied on. The end is QZ_E_FAIL. */
QZ_API QZRESULT QZRegistryEnumNextValue(QZRegEnumHandle handle, QZWCHAR* name, uint32_t* size, uint32_t* type,
                                        void* data, uint32_t* dataSize);

/* Closes an enumeration; null is accepted. Always 0. Not for the -1 of a failed open. */
QZ_API QZRESULT QZRegistryCloseEnum(QZRegEnumHandle handle);

/* Copies every value of every hive of store `from` into store `to` (QZ_REGKIND_*), hives in the
 * order QZ_HKEY_CLASSES_64, QZ_HKEY_CLASSES, QZ_HKEY_CONFIG_64, QZ_HKEY_CONFIG, QZ_HKEY_USER,
 * subkeys before values; from the text file, the file is deleted afterwards. A value that cannot be
 * read (or is over 2048 bytes) or written is skipped without a word; names of 256 units or more end
 * the walk of their key. The text file holds strings only, and only the text file itself carries a
 * value into it. `from` QZ_REGKIND_NATIVE is not in working order: the walk of the native store
 * reaches QZRegistryEnumNextValue with null sizes and the process ends in an access fault.
 * Result: 0 when the walk ended; QZ_E_BAD_KEY_KIND for another kind; the code of a failed subkey
 * enumeration or of the text file's lock, which stop the walk and keep the file. The two
 * pointer-sized arguments are ignored. Not to be called from two threads of one process at once;
 * processes are serialised by the text file's lock. */
QZ_API QZRESULT QZRegistryMigrate(uint32_t from, void* reserved1, uint32_t to, void* reserved2);

QZ_EXTERN_C_END

#endif /* QZCORE_QZREGISTRY_H */
