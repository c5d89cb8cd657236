// exports.cpp - the exports of the component model: identifiers, the component allocator, the
// interface forwarders, libraries and the module set, and class objects.
#include "component/factory_manager.h"
#include "component/guid.h"
#include "component/lib_manager.h"
#include "component/module_manager.h"
#include "frame/export_frame.h"
#include "frame/global_data.h"
#include "frame/task_allocator.h"
#include "start/client_data.h"
#include "qzcore/qzcom.h"
#include "qzcore/qzlibrary.h"

namespace {

CQZModuleManager& Modules() noexcept { return *CQZGlobalData::m_moduleManager; }
CQZLibManager& Libraries() noexcept { return CQZGlobalData::m_clientData->m_libManager; }
CQZFactoryManager& Factories() noexcept { return CQZGlobalData::m_clientData->m_factoryManager; }

// The module guard: QZ_E_MODULE_NOT_INITIALIZED for a key not in the set, otherwise the result
// of `operation`, each in a frame of its own, with no lock held while the operation runs.
template <class Operation>
QZRESULT Guarded(uintptr_t key, Operation&& operation) noexcept {
  const QZRESULT found = QZExportFrame([&] { return Modules().IsInitialized(key) ? QZ_S_OK : QZ_E_MODULE_NOT_INITIALIZED; });
  if (found != QZ_S_OK) return found;
  return QZExportFrame(operation);
}

}  // namespace

extern "C" {

// ---- Identifiers and the component allocator: no frame, no lock.

QZ_API QZRESULT QZComGUIDFromString(const QZWCHAR* text, QZGUID* result) {
  return qz::core::GuidFromString(text, result);
}

QZ_API QZRESULT QZComStringFromGUID(const QZGUID* guid, QZWCHAR* buffer, int32_t size) {
  qz::core::StringFromGuid(*guid, buffer, size);
  return QZ_S_OK;
}

QZ_API int32_t QZComCompareGUID(const QZGUID* first, const QZGUID* second) {
  return qz::core::CompareGuid(*first, *second);
}

QZ_API int32_t QZComIsEqualGUID(const QZGUID* first, const QZGUID* second) {
  return qz::core::IsEqualGuid(*first, *second) ? 1 : 0;
}

QZ_API QZRESULT QZComGenerateGUID(QZGUID* result) {
  return qz::core::UuidCreate(result) == qz::core::kRpcUuidNoAddress ? QZ_E_FAIL : QZ_S_OK;
}

QZ_API QZRESULT QZComMalloc(uint32_t size, void** result) {
  *result = g_comMalloc->Alloc(size);
  return *result == nullptr ? QZ_E_OUTOFMEMORY : QZ_S_OK;
}

QZ_API QZRESULT QZComRealloc(void** block, uint32_t size) {
  void* resized = g_comMalloc->Realloc(*block, size);
  if (resized == nullptr && size != 0) return QZ_E_OUTOFMEMORY;
  *block = resized;
  return QZ_S_OK;
}

QZ_API QZRESULT QZComFree(void* block) {
  g_comMalloc->Free(block);
  return QZ_S_OK;
}

QZ_API QZRESULT IQZUnknown_QueryInterface(IQZUnknown* object, const QZGUID* iid, void** result) {
  return object->lpVtbl->QueryInterface(object, iid, result);
}

QZ_API uint32_t IQZUnknown_AddRef(IQZUnknown* object) { return object->lpVtbl->AddRef(object); }

QZ_API uint32_t IQZUnknown_Release(IQZUnknown* object) { return object->lpVtbl->Release(object); }

// ---- Libraries and the module set.

QZ_API QZRESULT QZModuleSetInitialized(uintptr_t moduleKey, uint16_t on) {
  return QZExportFrame([&] {
    Modules().SetInitialized(moduleKey, on != 0);
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZModuleLibOpen(uintptr_t moduleKey, const QZWCHAR* path, QZLibHandle* result) {
  return Guarded(moduleKey, [&] { return QZLibOpen(path, result); });
}

QZ_API QZRESULT QZModuleLibClose(uintptr_t moduleKey, QZLibHandle library) {
  return Guarded(moduleKey, [&] { return QZLibClose(library); });
}

QZ_API QZRESULT QZLibOpen(const QZWCHAR* path, QZLibHandle* result) {
  qz::core::StoreInvalidHandle(result);
  return QZExportFrame([&] {
    Libraries().Open(path, result);
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZLibClose(QZLibHandle library) {
  return QZExportFrame([&] {
    Libraries().Close(library);
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZLibGetSymbol(QZLibHandle library, const QZWCHAR* name, void** result) {
  *result = nullptr;
  return QZExportFrame([&] {
    Libraries().GetSymbol(library, name, result);
    return QZ_S_OK;
  });
}

// ---- Class objects.

QZ_API QZRESULT QZComGetClassObject(const QZGUID* clsid, const QZGUID* iid, void** result) {
  *result = nullptr;
  return QZExportFrame([&] { return Factories().GetClassObject(*clsid, iid, result); });
}

QZ_API QZRESULT QZComCreateObject(const QZGUID* clsid, IQZUnknown* outer, const QZGUID* iid, void** result) {
  IQZClassFactory* factory = nullptr;
  QZRESULT hr = QZComGetClassObject(clsid, &qz::core::kIidClassFactory, reinterpret_cast<void**>(&factory));
  if (hr >= 0) hr = factory->lpVtbl->CreateInstance(factory, outer, iid, result);
  if (factory != nullptr) factory->lpVtbl->Release(factory);
  return hr;
}

QZ_API QZRESULT QZComCreateObjectByProgID(const QZWCHAR* progId, IQZUnknown* outer, const QZGUID* iid,
                                          void** result) {
  QZGUID clsid;
  const QZRESULT hr = QZComClassIDFromProgID(progId, &clsid);
  if (hr < 0) return hr;
  return QZComCreateObject(&clsid, outer, iid, result);
}

QZ_API QZRESULT QZComClassIDFromProgID(const QZWCHAR* progId, QZGUID* result) {
  return CQZFactoryManager::ClassIdFromProgId(progId, result);
}

QZ_API QZRESULT QZComFlushFactoryCache(void) {
  return QZExportFrame([&] {
    Factories().Flush();
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZModuleComCreateObject(uintptr_t moduleKey, const QZGUID* clsid, IQZUnknown* outer,
                                        const QZGUID* iid, void** result) {
  return Guarded(moduleKey, [&] { return QZComCreateObject(clsid, outer, iid, result); });
}

QZ_API QZRESULT QZModuleComGetClassObject(uintptr_t moduleKey, const QZGUID* clsid, const QZGUID* iid,
                                          void** result) {
  return Guarded(moduleKey, [&] { return QZComGetClassObject(clsid, iid, result); });
}

}  // extern "C"
