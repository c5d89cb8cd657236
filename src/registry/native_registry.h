// native_registry.h - the operations behind the QZRegistry* exports over the platform's registry.
//
// Each maps the hive to a root key and view, opens the key, works and closes it, and answers in
// result codes. They have no export frame: only the allocations of the value read (for an
// expandable string) and of the enumeration records turn into QZ_E_OUTOFMEMORY.
#pragma once

#include <cstdint>

#include "platform/registry_store.h"
#include "qzcore/qztypes.h"

// The enumeration record behind a QZRegEnumHandle.
struct QZRegEnumOpaque {
  qz::os::RegKey key;  // the key, open for reading
  uint32_t index;      // the next index to ask for; starts at 0
};

namespace qz::core {

// Views of the platform's registry are told apart while this is set; it starts at 1 and nothing
// changes it.
extern int16_t s_registryViews;

struct CHiveRoot {
  os::RegKey root;  // predefined root key, or the invalid one for a bad hive
  uint32_t view;    // view bits added to every access mask
};

// The root and view of a hive number.
CHiveRoot MapHive(int32_t hive) noexcept;

QZRESULT RegistryGetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t* type, void* data,
                          uint32_t* size) noexcept;
QZRESULT RegistrySetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t type,
                          const void* data, uint32_t size) noexcept;
QZRESULT RegistryDeleteValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name) noexcept;
QZRESULT RegistryDeleteKey(int32_t hive, const QZWCHAR* path) noexcept;
QZRESULT RegistryOpenKeyEnum(int32_t hive, const QZWCHAR* path, QZRegEnumHandle* handle) noexcept;
QZRESULT RegistryOpenValueEnum(int32_t hive, const QZWCHAR* path, QZRegEnumHandle* handle) noexcept;
QZRESULT RegistryEnumNextKey(QZRegEnumHandle handle, QZWCHAR* name, uint32_t* size) noexcept;
QZRESULT RegistryEnumNextValue(QZRegEnumHandle handle, QZWCHAR* name, uint32_t* size, uint32_t* type, void* data,
                               uint32_t* dataSize) noexcept;
QZRESULT RegistryCloseEnum(QZRegEnumHandle handle) noexcept;

}  // namespace qz::core
