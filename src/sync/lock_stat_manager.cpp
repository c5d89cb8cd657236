// lock_stat_manager.cpp - entering, retiring and resetting registered mutexes.
#include "sync/lock_stat_manager.h"

#include "sync/mutex_lifecycle.h"

namespace {
CQZLockStatManager::Key KeyOf(int32_t kind, IMutex* mutex) noexcept {
  return {kind, static_cast<uint64_t>(reinterpret_cast<uintptr_t>(mutex))};
}
}  // namespace

CQZLockStatManager::CQZLockStatManager() {
  QZMutexCreate("CQZLockStatManager::m_mutex", QZ_MUTEX_NOSTATS, &m_mutex);
}

CQZLockStatManager::~CQZLockStatManager() {
  while (!m_entries.empty()) {
    const auto first = m_entries.begin();
    IMutex* mutex = first->second;
    EraseEntry(first->first.first, mutex);
    qz::core::Release(mutex);
  }
  if (qz::core::IsMutexHandle(m_mutex)) QZMutexDestroy(m_mutex);
}

void CQZLockStatManager::SetEntry(int32_t kind, IMutex* mutex) noexcept {
  try {
    qz::core::CQZMutexGuard guard(m_mutex);
    m_entries[KeyOf(kind, mutex)] = mutex;
  } catch (...) {
    // The entry may be missing; the mutex works all the same.
  }
}

void CQZLockStatManager::EraseEntry(int32_t kind, IMutex* mutex) noexcept {
  try {
    qz::core::CQZMutexGuard guard(m_mutex);
    m_entries.erase(KeyOf(kind, mutex));
  } catch (...) {
  }
}

void CQZLockStatManager::RetireEntry(int32_t newKind, int32_t oldKind, IMutex* mutex) noexcept {
  SetEntry(newKind, mutex);
  EraseEntry(oldKind, mutex);
}

void CQZLockStatManager::ResetAll() {
  qz::core::CQZMutexGuard guard(m_mutex);
  for (auto it = m_entries.begin(); it != m_entries.end();) {
    if (it->first.first == kRetired) {
      qz::core::Release(it->second);
      it = m_entries.erase(it);
    } else {
      it->second->ResetStats();
      ++it;
    }
  }
}

std::map<CQZLockStatManager::Key, IMutex*> CQZLockStatManager::Snapshot() const {
  qz::core::CQZMutexGuard guard(m_mutex);
  return m_entries;
}
