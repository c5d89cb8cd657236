// start.cpp - the start and stop of the library: building and destroying the process-wide objects
// in their fixed order, and the load hook that runs them.
//
// The order is forced: every mutex is made through m_mutexProvider, and mutex creation and
// destruction consult m_lockStatManager, so those two come first; the debug mutex is the only one
// whose creation is tested. Once it exists, failure reporting locks its platform lock directly.
#include "start/start.h"

#include <clocale>

#include "component/module_manager.h"
#include "frame/error_report.h"
#include "frame/export_frame.h"
#include "frame/global_data.h"
#include "frame/task_allocator.h"
#include "platform/load_hook.h"
#include "qzcore/qzlibrary.h"
#include "qzcore/qzmutex.h"
#include "start/client_data.h"
#include "sync/lock_stat_manager.h"
#include "sync/mutex_lifecycle.h"
#include "sync/mutex_provider.h"

CQZClientData::CQZClientData() = default;
CQZClientData::~CQZClientData() = default;

namespace {

QZRESULT StartHook() noexcept { return QZ_S_OK; }
QZRESULT StopHook() noexcept { return QZ_S_OK; }

// Step 4 of the start; throws, and what was built stays built.
QZRESULT BuildGlobalData() {
  CQZGlobalData::m_mutexProvider = new qz::core::CQZMutexProvider();
  CQZGlobalData::m_lockStatManager = new CQZLockStatManager();
  auto* cell = new QZMutexHandle(nullptr);
  const QZRESULT result = QZMutexCreate("CQZGlobalData::m_debugMutex", QZ_MUTEX_NOSTATS, cell);
  if (result < 0) {
    delete cell;
    throw EQZCoreException(result);
  }
  CQZGlobalData::m_debugMutex = cell;
  qz::core::SetReportLock(qz::core::PlatformLockOf(*cell));
  CQZGlobalData::m_moduleManager = new CQZModuleManager();
  CQZGlobalData::m_clientData = new CQZClientData();
  return QZ_S_OK;
}

void DestroyGlobalData() noexcept {
  try {
    if (CQZGlobalData::m_clientData != nullptr) {
      delete CQZGlobalData::m_clientData;
      CQZGlobalData::m_clientData = nullptr;
    }
    if (CQZGlobalData::m_moduleManager != nullptr) {
      delete CQZGlobalData::m_moduleManager;
      CQZGlobalData::m_moduleManager = nullptr;
    }
    if (CQZGlobalData::m_debugMutex != nullptr) {
      qz::core::SetReportLock(nullptr);
      QZMutexDestroy(*CQZGlobalData::m_debugMutex);
      delete CQZGlobalData::m_debugMutex;
      CQZGlobalData::m_debugMutex = nullptr;
    }
    if (CQZGlobalData::m_mutexProvider != nullptr) {
      delete CQZGlobalData::m_mutexProvider;
      CQZGlobalData::m_mutexProvider = nullptr;
    }
    if (CQZGlobalData::m_lockStatManager != nullptr) {
      delete CQZGlobalData::m_lockStatManager;
      CQZGlobalData::m_lockStatManager = nullptr;
    }
  } catch (...) {
    // Failures while tearing down are dropped; the stop keeps its status.
  }
}

}  // namespace

QZRESULT QZLibraryStart() noexcept {
  if (++g_initCount != 1) return QZ_S_OK;
  std::setlocale(LC_ALL, "");
  g_platformReady = 1;
  // A code of 0 or above thrown while building ends step 4 as if it had completed.
  QZRESULT result = QZExportFrame(BuildGlobalData);
  if (result < 0) return result;
  result = StartHook();
  if (result < 0) return result;
  result = StartHook();
  if (result < 0) return result;
  return CoGetMalloc(QZ_MEMCTX_TASK, &g_comMalloc);
}

QZRESULT QZLibraryStop() noexcept {
  if (g_initCount < 1) return QZ_E_FAIL;
  if (--g_initCount != 0) return QZ_S_OK;
  // A start that failed before it obtained the allocator has none to give back.
  if (g_comMalloc != nullptr && g_comMalloc->Release() == 0) g_comMalloc = nullptr;
  QZRESULT status = QZ_S_OK;
  if (StopHook() < 0) status = QZ_E_FAIL;  // both hooks run, whatever the first answered
  if (StopHook() < 0) status = QZ_E_FAIL;
  DestroyGlobalData();
  return status;
}

int32_t QZDllMain(void* moduleHandle, uint32_t reason, void*) noexcept {
  if (reason == QZ_DLL_PROCESS_ATTACH) {
    g_moduleHandle = moduleHandle;
    QZLibraryStart();
    QZModuleSetInitialized(reinterpret_cast<uintptr_t>(g_moduleId), 1);
  } else if (reason == QZ_DLL_PROCESS_DETACH) {
    QZModuleSetInitialized(reinterpret_cast<uintptr_t>(g_moduleId), 0);
    QZLibraryStop();
  }
  return 1;
}
