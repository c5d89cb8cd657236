// factory_manager.cpp - finding, caching and flushing class objects.
#include "component/factory_manager.h"

#include <cstring>

#include "component/unchecked_lock.h"
#include "frame/core_exception.h"
#include "frame/global_data.h"
#include "qzcore/qzlibrary.h"
#include "qzcore/qzregistry.h"
#include "qzcore/qzmutex.h"
#include "sync/mutex_lifecycle.h"

namespace {

constexpr size_t kKeyUnits = 256;       // the registration's key path
constexpr size_t kPathUnits = 260;      // the library's path
constexpr size_t kProgIdUnits = 264;    // a ProgID with "\CLSID"
constexpr size_t kGuidTextUnits = 39;   // the braced text form and its terminator

uintptr_t OwnModuleKey() noexcept { return reinterpret_cast<uintptr_t>(g_moduleId); }

// Appends NUL-terminated `text` at `*end`; the caller's buffer is large enough by construction.
void Append(QZWCHAR*& end, const char16_t* text) noexcept {
  while (*text != 0) *end++ = *text++;
  *end = 0;
}

size_t UnitsUpTo(const QZWCHAR* text, size_t limit) noexcept {
  size_t n = 0;
  while (n < limit && text[n] != 0) ++n;
  return n;
}

}  // namespace

CQZFactoryData::CQZFactoryData(IQZUnknown* object, QZLibHandle handle) noexcept
    : classObject(object), library(handle) {
  if (classObject != nullptr) classObject->lpVtbl->AddRef(classObject);
}

CQZFactoryData::~CQZFactoryData() {
  if (classObject != nullptr) {
    IQZUnknown* object = classObject;
    classObject = nullptr;
    object->lpVtbl->Release(object);
  }
  QZModuleLibClose(OwnModuleKey(), library);  // refused during the library's own stop
}

CQZFactoryManager::CQZFactoryManager() {
  QZMutexCreate("CQZFactoryManager::m_mapMutex", 0, &m_mapMutex);
}

CQZFactoryManager::~CQZFactoryManager() {
  if (qz::core::IsMutexHandle(m_mapMutex)) QZMutexDestroy(m_mapMutex);
  m_mapMutex = nullptr;
  for (auto& entry : m_classes) qz::core::Release(entry.second);
  m_classes.clear();
}

bool CQZFactoryManager::Lookup(const QZGUID& clsid, CQZFactoryData** data) {
  qz::core::CQZUncheckedLock lock(m_mapMutex);
  const auto found = m_classes.find(clsid);
  if (found == m_classes.end()) return false;
  qz::core::AddRef(found->second);
  *data = found->second;
  return true;
}

CQZFactoryData* CQZFactoryManager::Load(const QZGUID& clsid, const QZGUID* iid, void** result) {
  QZWCHAR key[kKeyUnits];
  QZWCHAR* end = key;
  Append(end, u"CLSID\\");
  qz::core::StringFromGuid(clsid, end, static_cast<int32_t>(kGuidTextUnits));
  end += kGuidTextUnits - 1;
  Append(end, u"\\InprocServer32");

  // One unit more than the read may fill, so the path is terminated whatever the store holds.
  QZWCHAR path[kPathUnits + 1] = {};
  uint32_t type = 0;
  uint32_t size = kPathUnits * sizeof(QZWCHAR);
  if (QZRegistryGetValue(QZ_HKEY_CLASSES_64, key, u"", &type, path, &size) < 0)
    throw EQZCoreException(QZ_E_CLASSNOTREG);

  QZLibHandle library = nullptr;
  qz::core::ThrowIfFailed(QZModuleLibOpen(OwnModuleKey(), path, &library));
  // From here a failure leaves the library open: a later attempt opens it again.
  void* entry = nullptr;
  qz::core::ThrowIfFailed(QZLibGetSymbol(library, u"DllGetClassObject", &entry));
  IQZUnknown* object = nullptr;
  qz::core::ThrowIfFailed(
      reinterpret_cast<QZDllGetClassObjectFn>(entry)(&clsid, iid, reinterpret_cast<void**>(&object)));
  auto* data = new CQZFactoryData(object, library);
  qz::core::AddRef(data);
  *result = object;
  return data;
}

QZRESULT CQZFactoryManager::GetClassObject(const QZGUID& clsid, const QZGUID* iid, void** result) {
  qz::core::CQZUncheckedLock lock(m_mapMutex);
  qz::core::CQZRef<CQZFactoryData> data;
  if (Lookup(clsid, data.Receive())) {
    IQZUnknown* object = data->classObject;
    qz::core::ThrowIfFailed(object->lpVtbl->QueryInterface(object, iid, result));
    return QZ_S_OK;
  }
  void* object = nullptr;
  *data.Receive() = Load(clsid, iid, &object);
  CQZFactoryData*& slot = m_classes[clsid];
  qz::core::AddRef(data.Get());
  if (slot != nullptr) qz::core::Release(slot);
  slot = data.Get();
  *result = object;  // the entry point's reference goes to the caller
  return QZ_S_OK;
}

void CQZFactoryManager::Flush() noexcept {
  qz::core::CQZUncheckedLock lock(m_mapMutex);
  for (auto& entry : m_classes) qz::core::Release(entry.second);
  m_classes.clear();
}

QZRESULT CQZFactoryManager::ClassIdFromProgId(const QZWCHAR* progId, QZGUID* result) noexcept {
  QZWCHAR key[kProgIdUnits];
  QZWCHAR* end = key;
  // A ProgID that cannot be followed by "\CLSID" in the key is no registered one.
  if (UnitsUpTo(progId, kProgIdUnits) > kProgIdUnits - sizeof "\\CLSID") return QZ_E_CLASSNOTREG;
  Append(end, progId);
  Append(end, u"\\CLSID");
  QZWCHAR text[kGuidTextUnits] = {};
  uint32_t type = 0;
  uint32_t size = kGuidTextUnits * sizeof(QZWCHAR);
  const QZRESULT read = QZRegistryGetValue(QZ_HKEY_CLASSES_64, key, u"", &type, text, &size);
  if (read == QZ_E_FILE_NOT_FOUND) return QZ_E_CLASSNOTREG;
  if (read < 0) return read;
  return qz::core::GuidFromString(text, result);
}
