// native_registry.cpp - the QZRegistry* operations over the platform's registry (registry_store.h).
//
// The translations of types and results are those of the library's first platform, with its
// deliberate oddities: an expandable string reads as a failure, the removal of a tree answers in
// raw platform numbers, the end of an enumeration is a general failure.
#include "registry/native_registry.h"

#include <memory>
#include <new>
#include <string>
#include <vector>

#include "frame/core_exception.h"
#include "frame/export_frame.h"
#include "frame/global_data.h"
#include "platform/native_error.h"
#include "qzcore/qzstring.h"

namespace qz::core {

int16_t s_registryViews = 1;

namespace {

QZRESULT Mapped(uint32_t error) { return ResultFromNative(error); }

// The platform's number of a value type; 0 for a type that cannot be written.
uint32_t PlatformType(uint32_t type) {
  switch (type) {
    case QZ_REG_SZ: return os::kRegSz;
    case QZ_REG_DWORD: return os::kRegDword;
    case QZ_REG_BINARY: return os::kRegBinary;
    case QZ_REG_EXPAND_SZ: return os::kRegExpandSz;
    case QZ_REG_MULTI_SZ: return os::kRegMultiSz;
    default: return 0;
  }
}

// Removes every subkey of `key`, depth first: all names are gathered while nothing is removed, so
// the indexes stay valid, and only then removed. Only the failures of this level count.
QZRESULT DeleteSubKeys(os::RegKey key, uint32_t view) {
  if (g_platformReady == 0) return QZ_E_FAIL;
  QZRESULT result = 0;
  std::vector<std::u16string> names;
  for (uint32_t index = 0;;) {
    char16_t buffer[256];
    uint32_t length = 255;
    if (os::RegEnumKeyEx(key, index, buffer, &length) != 0) break;
    ++index;
    os::RegKey child = 0;
    os::RegOpenKeyEx(key, buffer, view | os::kKeyAllAccess, &child);  // result not looked at
    DeleteSubKeys(child, view);
    os::RegCloseKey(child);
    names.emplace_back(buffer, length);
  }
  for (const auto& name : names) result |= static_cast<QZRESULT>(os::RegDeleteKeyEx(key, name.c_str(), view));
  return result;
}

QZRESULT OpenEnum(int32_t hive, const QZWCHAR* path, QZRegEnumHandle* handle, bool values) noexcept {
  StoreInvalidHandle(handle);
  const CHiveRoot h = MapHive(hive);
  os::RegKey key = 0;
  const uint32_t error = os::RegOpenKeyEx(h.root, path, h.view | os::kKeyRead, &key);
  if (error != 0) return values ? Mapped(error) : QZ_E_FAIL;
  auto* record = new (std::nothrow) QZRegEnumOpaque{key, 0};
  if (record == nullptr) {
    os::RegCloseKey(key);
    return QZ_E_OUTOFMEMORY;
  }
  *handle = record;
  return 0;
}

}  // namespace

CHiveRoot MapHive(int32_t hive) noexcept {
  const uint32_t v32 = s_registryViews != 0 ? os::kKeyWow64_32Key : 0;
  const uint32_t v64 = s_registryViews != 0 ? os::kKeyWow64_64Key : 0;
  switch (hive) {
    case QZ_HKEY_CLASSES: return {os::kRegClassesRoot, v32};
    case QZ_HKEY_CONFIG: return {os::kRegLocalMachine, v32};
    case QZ_HKEY_USER: return {os::kRegCurrentUser, 0};
    case QZ_HKEY_CLASSES_64: return {os::kRegClassesRoot, v64};
    case QZ_HKEY_CONFIG_64: return {os::kRegLocalMachine, v64};
    default: return {os::kRegInvalidRoot, 0};
  }
}

QZRESULT RegistryGetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t* type, void* data,
                          uint32_t* size) noexcept {
  const CHiveRoot h = MapHive(hive);
  os::RegKey key = 0;
  const uint32_t error = os::RegOpenKeyEx(h.root, path, h.view | os::kKeyRead, &key);
  if (error != 0) return Mapped(error);
  QZRESULT result = Mapped(os::RegQueryValueEx(key, name, type, data, size));
  os::RegCloseKey(key);
  if (type == nullptr || result < 0 || *type > os::kRegMultiSz) return result;
  switch (*type) {
    case os::kRegNone:
    case os::kRegBinary: *type = QZ_REG_BINARY; break;
    case os::kRegSz: *type = QZ_REG_SZ; break;
    case os::kRegDword: *type = QZ_REG_DWORD; break;
    case os::kRegMultiSz: *type = QZ_REG_MULTI_SZ; break;
    case os::kRegExpandSz: {
      *type = QZ_REG_SZ;
      // The expansion asks for its size with a buffer of none, so it answers with a count in every
      // ordinary case and the read ends as a failure, the text unexpanded in `data`.
      char16_t* buffer = new (std::nothrow) char16_t[1];
      if (buffer == nullptr) return QZ_E_OUTOFMEMORY;
      const size_t units = data != nullptr && size != nullptr ? *size / sizeof(char16_t) : 0;
      if (os::ExpandEnvironmentStrings(static_cast<const char16_t*>(data), units, buffer, 0) != 0) {
        result = QZ_E_FAIL;
      } else {
        QZStrNCpyW(static_cast<QZWCHAR*>(data), buffer, 0);
      }
      delete[] buffer;
      break;
    }
    default: break;  // big-endian numbers and links keep the platform's number
  }
  return result;
}

QZRESULT RegistrySetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t type, const void* data,
                          uint32_t size) noexcept {
  const CHiveRoot h = MapHive(hive);
  const uint32_t platformType = PlatformType(type);
  if (platformType == 0) return QZ_E_INVALIDARG;
  // The first platform makes the key with a descriptor that has no access list at all. This
  // store keeps access per file (the machine file's permissions), so there is nothing to pass.
  os::RegKey key = 0;
  uint32_t error = os::RegCreateKeyEx(h.root, path, h.view | os::kKeyAllAccess, &key);
  if (error != 0) return Mapped(error);
  error = os::RegSetValueEx(key, name, platformType, data, size);
  os::RegCloseKey(key);
  return Mapped(error);
}

QZRESULT RegistryDeleteValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name) noexcept {
  const CHiveRoot h = MapHive(hive);
  os::RegKey key = 0;
  uint32_t error = os::RegOpenKeyEx(h.root, path, h.view | os::kKeySetValue, &key);
  if (error != 0) return Mapped(error);
  error = os::RegDeleteValue(key, name);
  os::RegCloseKey(key);
  return Mapped(error);
}

QZRESULT RegistryDeleteKey(int32_t hive, const QZWCHAR* path) noexcept {
  const CHiveRoot h = MapHive(hive);
  os::RegKey key = 0;
  if (os::RegOpenKeyEx(h.root, path, h.view | os::kKeyAllAccess, &key) != 0) return QZ_E_FAIL;
  QZRESULT subKeys;
  try {
    subKeys = DeleteSubKeys(key, h.view);
  } catch (const std::bad_alloc&) {
    subKeys = static_cast<QZRESULT>(os::kErrorOutOfMemory);
  }
  os::RegCloseKey(key);
  return static_cast<QZRESULT>(os::RegDeleteKeyEx(h.root, path, h.view)) | subKeys;
}

QZRESULT RegistryOpenKeyEnum(int32_t hive, const QZWCHAR* path, QZRegEnumHandle* handle) noexcept {
  return OpenEnum(hive, path, handle, false);
}

QZRESULT RegistryOpenValueEnum(int32_t hive, const QZWCHAR* path, QZRegEnumHandle* handle) noexcept {
  return OpenEnum(hive, path, handle, true);
}

QZRESULT RegistryEnumNextKey(QZRegEnumHandle handle, QZWCHAR* name, uint32_t* size) noexcept {
  const uint32_t index = handle->index++;
  const uint32_t error = os::RegEnumKeyEx(handle->key, index, name, size);
  if (error == 0) return 0;
  return error == os::kErrorNoMoreItems ? QZ_E_FAIL : Mapped(error);
}

QZRESULT RegistryEnumNextValue(QZRegEnumHandle handle, QZWCHAR* name, uint32_t* size, uint32_t* type, void* data,
                               uint32_t* dataSize) noexcept {
  uint32_t localSize = *size;
  uint32_t localDataSize = *dataSize;
  uint32_t localType = os::kRegNone;
  const uint32_t index = handle->index++;
  const uint32_t error = os::RegEnumValue(handle->key, index, name, &localSize, &localType, data, &localDataSize);
  *size = localSize;
  *dataSize = localDataSize;
  switch (localType) {
    case os::kRegSz:
    case os::kRegExpandSz: *type = QZ_REG_SZ; break;
    case os::kRegBinary: *type = QZ_REG_BINARY; break;
    case os::kRegDword: *type = QZ_REG_DWORD; break;
    case os::kRegMultiSz: *type = QZ_REG_MULTI_SZ; break;
    default: break;  // REG_NONE and the rest leave *type as it was
  }
  if (error == 0) return 0;
  return error == os::kErrorNoMoreItems ? QZ_E_FAIL : Mapped(error);
}

QZRESULT RegistryCloseEnum(QZRegEnumHandle handle) noexcept {
  if (handle == nullptr) return 0;
  os::RegCloseKey(handle->key);
  delete handle;
  return 0;
}

}  // namespace qz::core
