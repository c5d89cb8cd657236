// ini_registry.cpp - the text-file registry over the one IniFile of the process.
#include "registry/ini_registry.h"

#include "frame/core_exception.h"
#include "frame/export_frame.h"
#include "qzcore/qzmutex.h"
#include "qzcore/qzstring.h"
#include "qzcore/qzsysinfo.h"

namespace registry {

namespace {
const std::u16string g_defaultFileName = u"qzregistry.ini";

// Holds s_pInitLock for a scope.
class CInitLock {
 public:
  CInitLock() { qz::core::ThrowIfFailed(QZMutexAcquire(s_pInitLock)); }
  ~CInitLock() { QZMutexRelease(s_pInitLock); }
  CInitLock(const CInitLock&) = delete;
  CInitLock& operator=(const CInitLock&) = delete;
};

// Steps shared by both enumerations: the next name into the caller's buffer.
QZRESULT NextName(IniEnumHandle handle, QZWCHAR* name, uint32_t* size, std::u16string* item) {
  if (!handle->HasNext()) return QZ_E_HANDLE_EOF;
  *item = handle->Next();
  const auto length = static_cast<uint32_t>(item->size());
  if (*size > length) {
    *size = length;
    QZStrNCpyW(name, item->c_str(), length + 1);
    return 0;
  }
  QZStrNCpyW(name, item->c_str(), *size);  // not terminated: the caller was told the buffer is short
  return QZ_E_BUFFER_TOO_SMALL;
}

}  // namespace

QZMutexHandle s_pInitLock = nullptr;
IniFile* s_pIniFile = nullptr;
std::u16string s_fileName;
const std::u16string* s_pDefaultFileName = &g_defaultFileName;
const char* s_pFileNameVariable = "QZREGISTRY_FILE";

void GetIniFile() {
  if (s_pIniFile != nullptr) return;
  CInitLock hold;
  if (s_pIniFile != nullptr) return;
  s_fileName = *s_pDefaultFileName;
  s_pIniFile = new IniFile(s_fileName.c_str());
}

std::u16string MakeSectionName(int32_t hive, const QZWCHAR* path) {
  std::u16string name;
  switch (hive) {
    case QZ_HKEY_CLASSES: name = u"QZ_HKEY_CLASSES"; break;
    case QZ_HKEY_CONFIG: name = u"QZ_HKEY_CONFIG"; break;
    case QZ_HKEY_CLASSES_64: name = u"QZ_HKEY_CLASSES_64"; break;
    case QZ_HKEY_CONFIG_64: name = u"QZ_HKEY_CONFIG_64"; break;
    case QZ_HKEY_USER: {
      QZWCHAR user[127];
      qz::core::ThrowIfFailed(QZGetUserName(user, 127));
      name = u"QZ_HKEY_USER\\";
      name += user;
      break;
    }
    default: throw EQZCoreException(QZ_E_INVALIDARG);
  }
  if (path != nullptr && path[0] != 0) {
    name += u'\\';
    name += path;  // as it stands: case, slashes, doubled or trailing separators
  }
  return name;
}

QZRESULT IniRegistryOpenKeyEnum(int32_t hive, const QZWCHAR* path, IniEnumHandle* handle) noexcept {
  return QZExportFrame([&]() -> QZRESULT {
    qz::core::StoreInvalidHandle(handle);
    GetIniFile();
    *handle = new IniFileSetIterator(*s_pIniFile, MakeSectionName(hive, path).c_str());
    return 0;
  });
}

QZRESULT IniRegistryOpenValueEnum(int32_t hive, const QZWCHAR* path, IniEnumHandle* handle) noexcept {
  return QZExportFrame([&]() -> QZRESULT {
    qz::core::StoreInvalidHandle(handle);
    GetIniFile();
    *handle = new IniFileKeyIterator(*s_pIniFile, MakeSectionName(hive, path).c_str());
    return 0;
  });
}

QZRESULT IniRegistryEnumNextKey(IniEnumHandle handle, QZWCHAR* name, uint32_t* size) noexcept {
  return QZExportFrame([&]() -> QZRESULT {
    GetIniFile();
    std::u16string item;
    return NextName(handle, name, size, &item);
  });
}

QZRESULT IniRegistryEnumNextValue(IniEnumHandle handle, QZWCHAR* name, uint32_t* size, uint32_t* type, void* data,
                                  uint32_t* dataSize) noexcept {
  return QZExportFrame([&]() -> QZRESULT {
    GetIniFile();
    std::u16string item;
    const QZRESULT result = NextName(handle, name, size, &item);
    if (result == QZ_E_HANDLE_EOF) return result;
    if (type != nullptr) *type = QZ_REG_SZ;
    if (data == nullptr) return result;
    auto* text = static_cast<QZWCHAR*>(data);
    if (s_pIniFile->GetValue(handle->GetName().c_str(), item.c_str(), text) < 0) return QZ_E_FAIL;
    *dataSize = static_cast<uint32_t>(QZStrLenW(text) * 2 + 2);
    return 0;
  });
}

QZRESULT IniRegistryCloseEnum(IniEnumHandle handle) noexcept {
  return QZExportFrame([&]() -> QZRESULT {
    GetIniFile();
    delete handle;
    return 0;
  });
}

QZRESULT IniRegistryGetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t* type, void* data,
                             uint32_t* dataSize) noexcept {
  return QZExportFrame([&]() -> QZRESULT {
    GetIniFile();
    const std::u16string section = MakeSectionName(hive, path);
    // The buffer's size is not known here: the caller's room must hold the value (the key objects
    // give 2048 bytes, and the text file's reader delivers lines of 510 bytes at most).
    auto* text = static_cast<QZWCHAR*>(data);
    if (s_pIniFile->GetValue(section.c_str(), name, text) < 0) return QZ_E_FILE_NOT_FOUND;
    *type = QZ_REG_SZ;
    *dataSize = static_cast<uint32_t>(QZStrLenW(text) * 2 + 2);
    return 0;
  });
}

QZRESULT IniRegistrySetValue(int32_t hive, const QZWCHAR* path, const QZWCHAR* name, uint32_t type, const void* data,
                             uint32_t dataSize) noexcept {
  return QZExportFrame([&]() -> QZRESULT {
    GetIniFile();
    if (type != QZ_REG_SZ) return QZ_E_NOTIMPL;
    const std::u16string section = MakeSectionName(hive, path);
    const int32_t stored = s_pIniFile->SetValue(section.c_str(), name, static_cast<const QZWCHAR*>(data), true);
    return stored == -1 ? QZ_E_FAIL : 0;
  });
}

}  // namespace registry
