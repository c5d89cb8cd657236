// ini_registry.h - the text-file registry: the one IniFile of the process answering by hive, key
// path and value name, as the platform's registry answers. Reached only through the migration.
//
// A key is the section "<hive prefix>\<path>" (the user's hive adds the user's name); a value is
// a key of that section, always a QZ_REG_SZ string. No deletion. Each operation has an export
// frame of its own. The store is made at the first operation and destroyed when the migration ends.
#pragma once

#include <string>

#include "qzcore/qztypes.h"
#include "registry/ini_file.h"
#include "registry/ini_iterators.h"

namespace registry {

extern QZMutexHandle s_pInitLock;              // guards the making of the single IniFile
extern IniFile* s_pIniFile;                    // the single store, or null
extern std::u16string s_fileName;              // the file's name as last used
extern const std::u16string* s_pDefaultFileName;  // "qzregistry.ini"
extern const char* s_pFileNameVariable;        // "QZREGISTRY_FILE": stands beside the name, unread

// Makes the store on first use (s_pInitLock must exist). Throws what the IniFile constructor throws.
void GetIniFile();

// "<prefix>[\<user>][\<path>]" of a hive; throws QZ_E_INVALIDARG for a hive outside 0..4, and the
// code of the user-name query for QZ_HKEY_USER.
std::u16string MakeSectionName(int32_t hive, const QZWCHAR* path);

using IniEnumHandle = IniFileIteratorBase*;

QZRESULT IniRegistryOpenKeyEnum(int32_t hive, const QZWCHAR* path, IniEnumHandle* handle) noexcept;
QZRESULT IniRegistryEnumNextKey(IniEnumHandle handle, QZWCHAR* name, uint32_t* size) noexcept;
QZRESULT IniRegistryOpenValueEnum(int32_t hive, const QZWCHAR* path, IniEnumHandle* handle) noexcept;
QZRESULT IniRegistryEnumNextValue(IniEnumHandle handle, QZWCHAR* name, uint32_t* size, uint32_t* type,
                                  void* data, uint32_t* dataSize) noexcept;
QZRESULT IniRegistryCloseEnum(IniEnumHandle handle) noexcept;
QZRESULT IniRegistryGetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t* type,
                             void* data, uint32_t* dataSize) noexcept;
QZRESULT IniRegistrySetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t type,
                             const void* data, uint32_t dataSize) noexcept;

}  // namespace registry
