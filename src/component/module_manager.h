// module_manager.h - CQZModuleManager: the set of code modules that are up and running, and the
// guard that the module-keyed operations pass.
//
// A module enters its key when it has started and takes it out before it stops; a guarded call
// with a key that is not in the set does nothing and answers QZ_E_MODULE_NOT_INITIALIZED. The
// library's own key (g_moduleId) leaves the set before the library's stop, so the factory cache's
// last destruction closes no library while the loader is running unload hooks.
#pragma once

#include <cstdint>
#include <set>

#include "qzcore/qztypes.h"

class CQZModuleManager {
 public:
  // Creates m_setLock ("CQZModuleManager::m_setLock", flags 0), the result not looked at.
  CQZModuleManager();
  // Destroys m_setLock first, then drops the set without a lock.
  ~CQZModuleManager();
  CQZModuleManager(const CQZModuleManager&) = delete;
  CQZModuleManager& operator=(const CQZModuleManager&) = delete;

  // Enters (on) or takes out (!on) `key`; repeats are no-ops. Throws std::bad_alloc.
  void SetInitialized(uintptr_t key, bool on);

  // Whether `key` is in the set, looked up under m_setLock, which is released before returning:
  // the guard of the module-keyed operations, which then run with no lock held.
  bool IsInitialized(uintptr_t key) noexcept;

 private:
  QZMutexHandle m_setLock = nullptr;  // guards m_modules only; a leaf lock, never held across a call out
  std::set<uintptr_t> m_modules;      // keys of the modules that are initialised
};
