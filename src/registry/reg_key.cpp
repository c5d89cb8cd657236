// reg_key.cpp - the key objects of both stores, the copy of values and trees, and the migration.
#include "registry/reg_key.h"

#include "frame/core_exception.h"
#include "frame/export_frame.h"
#include "qzcore/qzfile.h"
#include "qzcore/qzmutex.h"
#include "qzcore/qzregistry.h"
#include "registry/ini_registry.h"
#include "registry/native_registry.h"

namespace qz::core {

namespace {

registry::IniEnumHandle IniHandle(uintptr_t handle) { return reinterpret_cast<registry::IniEnumHandle>(handle); }
QZRegEnumHandle NativeHandle(uintptr_t handle) { return reinterpret_cast<QZRegEnumHandle>(handle); }

}  // namespace

void CRegKeyPtr::Reset(CRegKey* key) noexcept {
  if (key != nullptr) AddRef(key);
  CRegKey* old = std::exchange(m_key, key);
  if (old != nullptr) Release(old);
}

bool CRegKey::HasMoreKeys() {
  if (m_keyEnum == kNoEnum) ThrowIfFailed(OpenKeyEnum());
  if (!m_hasNextKey) {
    QZWCHAR name[256];
    uint32_t size = 256;
    if (EnumNextKey(name, &size) >= 0) {  // a failure is the end of the walk
      m_hasNextKey = true;
      m_nextKey.assign(name, size);
    }
  }
  return m_hasNextKey;
}

bool CRegKey::HasMoreValues() {
  if (m_valueEnum == kNoEnum && OpenValueEnum() < 0) return false;
  if (!m_hasNextValue) {
    QZWCHAR name[256];
    uint32_t size = 256;
    if (EnumNextValue(name, &size) >= 0) {
      m_hasNextValue = true;
      m_nextValue.assign(name, size);
    }
  }
  return m_hasNextValue;
}

void CRegKey::NextKey(CRegKeyPtr& out) {
  if (!m_hasNextKey && !HasMoreKeys()) throw EQZCoreException(QZ_E_HANDLE_EOF);
  m_hasNextKey = false;
  if (!m_path.empty()) m_nextKey = m_path + u'\\' + m_nextKey;
  CreateKey(out, m_hive, m_nextKey);
}

std::u16string CRegKey::NextValue() {
  if (!m_hasNextValue && !HasMoreValues()) throw EQZCoreException(QZ_E_HANDLE_EOF);
  m_hasNextValue = false;
  return m_nextValue;
}

// --- The text file ------------------------------------------------------------------------------

CIniRegKey::~CIniRegKey() {
  if (m_keyEnum != kNoEnum) registry::IniRegistryCloseEnum(IniHandle(m_keyEnum));
  if (m_valueEnum != kNoEnum) registry::IniRegistryCloseEnum(IniHandle(m_valueEnum));
}

QZRESULT CIniRegKey::OpenKeyEnum() {
  registry::IniEnumHandle handle;
  const QZRESULT result = registry::IniRegistryOpenKeyEnum(m_hive, m_path.c_str(), &handle);
  m_keyEnum = reinterpret_cast<uintptr_t>(handle);
  return result;
}

QZRESULT CIniRegKey::EnumNextKey(QZWCHAR* name, uint32_t* size) {
  return registry::IniRegistryEnumNextKey(IniHandle(m_keyEnum), name, size);
}

QZRESULT CIniRegKey::OpenValueEnum() {
  registry::IniEnumHandle handle;
  const QZRESULT result = registry::IniRegistryOpenValueEnum(m_hive, m_path.c_str(), &handle);
  m_valueEnum = reinterpret_cast<uintptr_t>(handle);
  return result;
}

QZRESULT CIniRegKey::EnumNextValue(QZWCHAR* name, uint32_t* size) {
  return registry::IniRegistryEnumNextValue(IniHandle(m_valueEnum), name, size, nullptr, nullptr, nullptr);
}

QZRESULT CIniRegKey::CloseEnum(uintptr_t handle) { return registry::IniRegistryCloseEnum(IniHandle(handle)); }

void CIniRegKey::CreateKey(CRegKeyPtr& out, int32_t hive, const std::u16string& path) {
  out.Reset(new CIniRegKey(hive, path));
}

QZRESULT CIniRegKey::GetValue(const std::u16string& name, uint32_t* type, void* data, uint32_t* size) {
  return registry::IniRegistryGetValue(m_hive, m_path.c_str(), name.c_str(), type, data, size);
}

QZRESULT CIniRegKey::SetValue(int32_t hive, const std::u16string& path, const std::u16string& name, uint32_t type,
                              const void* data, uint32_t size) {
  return registry::IniRegistrySetValue(hive, path.c_str(), name.c_str(), type, data, size);
}

// --- The platform's store ------------------------------------------------------------------------

CNativeRegKey::~CNativeRegKey() {
  if (m_keyEnum != kNoEnum) QZRegistryCloseEnum(NativeHandle(m_keyEnum));
  if (m_valueEnum != kNoEnum) QZRegistryCloseEnum(NativeHandle(m_valueEnum));
}

QZRESULT CNativeRegKey::OpenKeyEnum() {
  QZRegEnumHandle handle;
  const QZRESULT result = QZRegistryOpenKeyEnum(m_hive, m_path.c_str(), &handle);
  m_keyEnum = reinterpret_cast<uintptr_t>(handle);
  return result;
}

QZRESULT CNativeRegKey::EnumNextKey(QZWCHAR* name, uint32_t* size) {
  return QZRegistryEnumNextKey(NativeHandle(m_keyEnum), name, size);
}

QZRESULT CNativeRegKey::OpenValueEnum() {
  QZRegEnumHandle handle;
  const QZRESULT result = QZRegistryOpenValueEnum(m_hive, m_path.c_str(), &handle);
  m_valueEnum = reinterpret_cast<uintptr_t>(handle);
  return result;
}

// As for the text file, with null for type, data and data size. The native enumeration reads and
// writes through those without a test, so this call ends the process: the walk of the native
// store as a source is not in working order, and stays so.
QZRESULT CNativeRegKey::EnumNextValue(QZWCHAR* name, uint32_t* size) {
  return QZRegistryEnumNextValue(NativeHandle(m_valueEnum), name, size, nullptr, nullptr, nullptr);
}

QZRESULT CNativeRegKey::CloseEnum(uintptr_t handle) { return QZRegistryCloseEnum(NativeHandle(handle)); }

void CNativeRegKey::CreateKey(CRegKeyPtr& out, int32_t hive, const std::u16string& path) {
  out.Reset(new CNativeRegKey(hive, path));
}

QZRESULT CNativeRegKey::GetValue(const std::u16string& name, uint32_t* type, void* data, uint32_t* size) {
  return QZRegistryGetValue(m_hive, m_path.c_str(), name.c_str(), type, data, size);
}

QZRESULT CNativeRegKey::SetValue(int32_t hive, const std::u16string& path, const std::u16string& name, uint32_t type,
                                 const void* data, uint32_t size) {
  return QZRegistrySetValue(hive, path.c_str(), name.c_str(), type, data, size);
}

// --- Walks -----------------------------------------------------------------------------------------

CRegKeyPtr CreateRegKey(int32_t hive, const std::u16string& path, uint32_t kind) {
  if (kind == QZ_REGKIND_NATIVE) return CRegKeyPtr(new CNativeRegKey(hive, path));
  if (kind == QZ_REGKIND_INI) return CRegKeyPtr(new CIniRegKey(hive, path));
  throw EQZCoreException(QZ_E_BAD_KEY_KIND);
}

void CopyValue(CRegKey& source, const std::u16string& name, CRegKey& destination) {
  alignas(8) uint8_t buffer[2048];
  uint32_t size = sizeof buffer;
  uint32_t type = 0;
  if (source.GetValue(name, &type, buffer, &size) < 0) return;  // skipped, nobody told
  destination.SetValue(source.m_hive, source.m_path, name, type, buffer, size);
}

void CopyTree(CRegKey& source, CRegKey& destination) {
  while (source.HasMoreKeys()) {
    CRegKeyPtr child;
    source.NextKey(child);
    CopyTree(*child, destination);
  }
  while (source.HasMoreValues()) CopyValue(source, source.NextValue(), destination);
}

QZRESULT RegistryMigrate(uint32_t from, uint32_t to) noexcept {
  QZMutexCreate("registry::s_pInitLock", 0, &registry::s_pInitLock);  // result not looked at
  const QZRESULT result = QZExportFrame([&]() -> QZRESULT {
    const int32_t order[] = {QZ_HKEY_CLASSES_64, QZ_HKEY_CLASSES, QZ_HKEY_CONFIG_64, QZ_HKEY_CONFIG, QZ_HKEY_USER};
    for (const int32_t hive : order) {
      if ((hive == QZ_HKEY_CLASSES_64 || hive == QZ_HKEY_CONFIG_64) && s_registryViews == 0) continue;
      const CRegKeyPtr source = CreateRegKey(hive, u"", from);
      const CRegKeyPtr destination = CreateRegKey(hive, u"", to);
      CopyTree(*source, *destination);
    }
    if (from == QZ_REGKIND_INI && registry::s_pIniFile != nullptr) {
      QZFileDelete(registry::s_fileName.c_str());  // already gone counts as done; not looked at
    }
    return 0;
  });
  delete registry::s_pIniFile;
  registry::s_pIniFile = nullptr;
  QZMutexDestroy(registry::s_pInitLock);
  registry::s_pInitLock = nullptr;
  return result;
}

}  // namespace qz::core
