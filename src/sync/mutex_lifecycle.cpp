// mutex_lifecycle.cpp - creating and destroying mutexes through the provider and the register.
#include "sync/mutex_lifecycle.h"

#include <string>

#include "frame/global_data.h"
#include "sync/lock_stat_manager.h"
#include "sync/mutex_provider.h"

namespace qz::core {

QZMutexHandle CreateMutexHandle(const char* name, uint32_t flags) {
  const std::string localName = name != nullptr ? std::string(name) : std::string();
  CQZRef<IMutex> holder;
  ThrowIfFailed(CQZGlobalData::m_mutexProvider->Create(localName.c_str(), flags, holder.Receive()));
  if ((holder->GetFlags() & QZ_MUTEX_STATS) != 0 && CQZGlobalData::m_lockStatManager != nullptr) {
    CQZGlobalData::m_lockStatManager->SetEntry(CQZLockStatManager::kLive, holder.Get());
  }
  return HandleFromMutex(holder.Detach());
}

QZRESULT DestroyMutexHandle(QZMutexHandle handle) {
  IMutex* mutex = MutexFromHandle(handle);
  if ((mutex->GetFlags() & QZ_MUTEX_STATS) != 0 && CQZGlobalData::m_lockStatManager != nullptr) {
    CQZGlobalData::m_lockStatManager->RetireEntry(CQZLockStatManager::kRetired, CQZLockStatManager::kLive, mutex);
    return QZ_S_OK;
  }
  return static_cast<QZRESULT>(Release(mutex));
}

os::CriticalSection* PlatformLockOf(QZMutexHandle mutex) noexcept {
  if (!IsMutexHandle(mutex)) return nullptr;
  // The provider makes CQZCoreMutexImpl and classes derived from it, nothing else.
  return &static_cast<CQZCoreMutexImpl*>(MutexFromHandle(mutex))->PlatformLock();
}

}  // namespace qz::core
