// module_manager.cpp - the module set under its lock.
#include "component/module_manager.h"

#include "component/unchecked_lock.h"
#include "qzcore/qzmutex.h"
#include "sync/mutex_lifecycle.h"

CQZModuleManager::CQZModuleManager() {
  QZMutexCreate("CQZModuleManager::m_setLock", 0, &m_setLock);
}

CQZModuleManager::~CQZModuleManager() {
  if (qz::core::IsMutexHandle(m_setLock)) QZMutexDestroy(m_setLock);
  m_setLock = nullptr;
  m_modules.clear();
}

void CQZModuleManager::SetInitialized(uintptr_t key, bool on) {
  qz::core::CQZUncheckedLock lock(m_setLock);
  if (on) {
    m_modules.insert(key);
  } else {
    m_modules.erase(key);
  }
}

bool CQZModuleManager::IsInitialized(uintptr_t key) noexcept {
  qz::core::CQZUncheckedLock lock(m_setLock);
  return m_modules.count(key) != 0;
}
