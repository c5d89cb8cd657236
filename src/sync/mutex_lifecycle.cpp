// mutex_lifecycle.cpp - creating and destroying mutexes through the provider and the register.
#include "sync/mutex_lifecycle.h"

#include "frame/export_frame.h"
#include "frame/global_data.h"
#include "sync/lock_stat_manager.h"
#include "sync/mutex_provider.h"

namespace qz::core {

QZRESULT MutexCreate(const char* name, uint32_t flags, QZMutexHandle* out) noexcept {
  StoreInvalidHandle(out);
  return QZExportFrame([&]() -> QZRESULT {
    const std::string localName = NameOrEmpty(name);
    CQZRef<IMutex> holder;
    const QZRESULT result = CQZGlobalData::m_mutexProvider->Create(localName.c_str(), flags, holder.Receive());
    if (result < 0) return result;
    if ((holder->GetFlags() & QZ_MUTEX_STATS) != 0 && CQZGlobalData::m_lockStatManager != nullptr) {
      CQZGlobalData::m_lockStatManager->SetEntry(CQZLockStatManager::kLive, holder.Get());
    }
    *out = HandleFromMutex(holder.Detach());
    return result;
  });
}

QZRESULT MutexDestroy(QZMutexHandle handle) noexcept {
  return QZExportFrame([&]() -> QZRESULT {
    IMutex* mutex = MutexFromHandle(handle);
    if ((mutex->GetFlags() & QZ_MUTEX_STATS) != 0 && CQZGlobalData::m_lockStatManager != nullptr) {
      CQZGlobalData::m_lockStatManager->RetireEntry(CQZLockStatManager::kRetired, CQZLockStatManager::kLive, mutex);
      return QZ_S_OK;
    }
    return static_cast<QZRESULT>(Release(mutex));
  });
}

}  // namespace qz::core
