// exports.cpp - the registry family's exports: the platform's registry and the migration.
#include "qzcore/qzregistry.h"
#include "registry/native_registry.h"
#include "registry/reg_key.h"

extern "C" {

QZ_API QZRESULT QZRegistryGetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t* type,
                                   void* data, uint32_t* size) {
  return qz::core::RegistryGetValue(hive, path, name, type, data, size);
}

QZ_API QZRESULT QZRegistrySetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t type,
                                   const void* data, uint32_t size) {
  return qz::core::RegistrySetValue(hive, path, name, type, data, size);
}

QZ_API QZRESULT QZRegistryDeleteValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name) {
  return qz::core::RegistryDeleteValue(hive, path, name);
}

QZ_API QZRESULT QZRegistryDeleteKey(int32_t hive, const QZWCHAR* path) {
  return qz::core::RegistryDeleteKey(hive, path);
}

QZ_API QZRESULT QZRegistryOpenKeyEnum(int32_t hive, const QZWCHAR* path, QZRegEnumHandle* handle) {
  return qz::core::RegistryOpenKeyEnum(hive, path, handle);
}

QZ_API QZRESULT QZRegistryOpenValueEnum(int32_t hive, const QZWCHAR* path, QZRegEnumHandle* handle) {
  return qz::core::RegistryOpenValueEnum(hive, path, handle);
}

QZ_API QZRESULT QZRegistryEnumNextKey(QZRegEnumHandle handle, QZWCHAR* name, uint32_t* size) {
  return qz::core::RegistryEnumNextKey(handle, name, size);
}

QZ_API QZRESULT QZRegistryEnumNextValue(QZRegEnumHandle handle, QZWCHAR* name, uint32_t* size, uint32_t* type,
                                        void* data, uint32_t* dataSize) {
  return qz::core::RegistryEnumNextValue(handle, name, size, type, data, dataSize);
}

QZ_API QZRESULT QZRegistryCloseEnum(QZRegEnumHandle handle) { return qz::core::RegistryCloseEnum(handle); }

QZ_API QZRESULT QZRegistryMigrate(uint32_t from, void* reserved1, uint32_t to, void* reserved2) {
  return qz::core::RegistryMigrate(from, to);
}

}  // extern "C"
