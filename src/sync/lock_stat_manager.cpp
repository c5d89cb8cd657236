// lock_stat_manager.cpp - entering, retiring and resetting registered mutexes.
#include "sync/lock_stat_manager.h"

#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <string>

#include "platform/append_file.h"
#include "sync/mutex_lifecycle.h"
#include "qzcore/qztime.h"

namespace {

CQZLockStatManager::Key KeyOf(int32_t kind, IMutex* mutex) noexcept {
  return {kind, static_cast<uint64_t>(reinterpret_cast<uintptr_t>(mutex))};
}

// The file of a dump could not be opened, written or closed: not a library exception, so the
// frame answers QZ_E_FAIL.
struct CQZDumpFileFailure {};

void WriteLine(qz::os::AppendFile& file, const std::string& line) {
  if (!file.Write(line + "\n")) throw CQZDumpFileFailure();
}

// The local time as "%m/%d/%Y %H:%M:%S", through the time family's exports; *result receives the
// conversion's result.
std::string Stamp(QZRESULT* result) {
  QZSystemTime now;
  QZTimeGetLocal(&now);
  std::tm fields{};
  *result = QZTimeToTM(&now, &fields);
  char text[80];
  const size_t length = std::strftime(text, sizeof text, "%m/%d/%Y %H:%M:%S", &fields);
  return std::string(text, length);
}

const char* LabelOf(int32_t kind) noexcept {
  switch (kind) {
    case CQZLockStatManager::kLive: return "QZ_MUTEX";
    case CQZLockStatManager::kRetired: return "QZ_DEL_MUTEX";
    default: return "UNKNOWN";
  }
}

std::string Row(int32_t kind, IMutex* mutex) {
  QZMutexStats stats{};
  mutex->GetStats(&stats);  // figures read as they stand, without the mutex
  char figures[200];
  std::snprintf(figures, sizeof figures, ",%" PRId64 ",%" PRId64 ",%" PRId64 ",%" PRId64 ",%" PRId64 ",%" PRId64 ",%" PRId64,
                stats.heldCount, stats.totalHeldTime, stats.maxHeldTime, stats.acquireCount, stats.totalAcquireTime,
                stats.maxAcquireTime, stats.contentionCount);
  char address[24];
  std::snprintf(address, sizeof address, "%016" PRIX64, static_cast<uint64_t>(reinterpret_cast<uintptr_t>(mutex)));
  return std::string(LabelOf(kind)) + ":0x" + address + "(" + mutex->GetName() + ")" + figures;
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

QZRESULT CQZLockStatManager::Dump(const char* label, const char16_t* path) {
  qz::core::CQZMutexGuard guard(m_mutex);
  const std::string tag = label != nullptr ? label : "LockStatsDump";
  qz::os::AppendFile file;
  if (!file.Open(path != nullptr ? path : u"qzlockstats.csv")) throw CQZDumpFileFailure();
  QZRESULT result;
  WriteLine(file, "BeginLockStatistics: " + tag + " - " + Stamp(&result));
  WriteLine(file, "CPU Frequency,1000000");
  WriteLine(file,
            "Name/Handle,Held Count,Total Held Time,Max Held Time,Acquire Count,Total Acquire Time,"
            "Max Acquire Time,Contention Count");
  for (const auto& [key, mutex] : m_entries) WriteLine(file, Row(key.first, mutex));
  QZRESULT ignored;
  WriteLine(file, "EndLockStatistics: " + tag + " - " + Stamp(&ignored));
  WriteLine(file, "");
  WriteLine(file, "");
  if (!file.Close()) throw CQZDumpFileFailure();
  return result;
}
