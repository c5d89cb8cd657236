// thread_manager.cpp - CQZThreadManager: creating a thread with the semaphore hand-over, join and
// detach over the native thread, and the two flags that decide when a record leaves the map.
#include "thread/thread_manager.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "frame/core_exception.h"
#include "platform/last_error.h"
#include "platform/native_error.h"
#include "platform/process_info.h"
#include "qzcore/qzmutex.h"
#include "qzcore/qzwaitable.h"
#include "sync/mutex_lifecycle.h"

using qz::core::CQZMutexGuard;
using qz::core::CQZRef;

namespace {

// A caller that detaches a thread the library does not know has lost track of its threads; there
// is no result to give, and going on could give up someone else's thread.
[[noreturn]] void UnknownThread(const char* what, uint32_t id) noexcept {
  std::fprintf(stderr, "qzcore: fatal: %s of thread %u, which the library does not know\n", what, id);
  std::abort();
}

}  // namespace

CQZThreadManager::CQZThreadManager() {
  QZMutexCreate("CQZThreadManager::m_mapMutex", 0, &m_mapMutex);  // the result is not looked at
  try {
    AddThread(qz::os::GetCurrentThreadId(), qz::os::kCurrentThreadPseudo);
  } catch (...) {
    // No destructor runs for a constructor that throws: the mutex goes here.
    if (qz::core::IsMutexHandle(m_mapMutex)) QZMutexDestroy(m_mapMutex);
    throw;
  }
}

CQZThreadManager::~CQZThreadManager() {
  if (qz::core::IsMutexHandle(m_mapMutex)) QZMutexDestroy(m_mapMutex);
  for (auto& entry : m_map) qz::core::Release(entry.second);
  m_map.clear();
}

uint32_t CQZThreadManager::Create(QZThreadFunction function, void* argument, uint32_t stackSize,
                                  qz::os::ThreadRoutine start, uint32_t* outId) {
  // The caller's own record is held for the call; nothing reads it.
  CQZRef<CQZThreadData> caller;
  *caller.Receive() = FindThread(qz::os::GetCurrentThreadId());
  auto block = std::make_unique<CQZThreadStartBlock>(CQZThreadStartBlock{function, argument, nullptr});
  qz::core::ThrowIfFailed(QZSemaphoreCreate(0, nullptr, 0, &block->semaphore));
  qz::os::NativeThread handle;
  uint32_t id;
  if (!qz::os::StartThread(stackSize, start, block.get(), &handle, &id)) {
    const QZRESULT result = qz::core::ResultFromNative(qz::os::GetLastError());
    QZSemaphoreDestroy(block->semaphore);
    throw EQZCoreException(result);
  }
  *outId = id;
  // From here on the block belongs to the new thread, which frees it after the hand-over. If what
  // follows throws, the thread waits for good on its semaphore.
  CQZThreadStartBlock* handedOver = block.release();
  AddThread(id, handle);
  qz::core::ThrowIfFailed(QZSemaphorePost(handedOver->semaphore));
  return id;
}

uint32_t CQZThreadManager::Join(uint32_t id) {
  CQZRef<CQZThreadData> record;
  *record.Receive() = FindThread(id);
  if (record.Get() == nullptr) throw EQZCoreException(QZ_E_HANDLE);
  // A detached thread may be gone already, its native handle with it: never join it.
  if (IsGivenUp(record.Get())) {
    qz::os::SetLastError(qz::os::kErrorInvalidHandle);
    qz::core::ThrowLastError();
  }
  uint32_t exitCode = 0;
  if (!qz::os::JoinThread(record->m_handle, &exitCode)) qz::core::ThrowLastError();
  MarkDetached(id);
  return exitCode;
}

void CQZThreadManager::Detach(uint32_t id) {
  qz::os::NativeThread handle;
  bool givenUp;
  {
    CQZRef<CQZThreadData> record;
    *record.Receive() = FindThread(id);
    if (record.Get() == nullptr) UnknownThread("QZThreadDetach", id);
    handle = record->m_handle;
    givenUp = IsGivenUp(record.Get());
  }
  bool detached = false;
  // The loading thread's pseudo handle is never really given up, so its detach always succeeds.
  if (givenUp && handle != qz::os::kCurrentThreadPseudo) {
    qz::os::SetLastError(qz::os::kErrorInvalidHandle);  // a second detach: nothing left to give up
  } else {
    detached = qz::os::DetachThread(handle);
  }
  MarkDetached(id);
  if (!detached) qz::core::ThrowLastError();
}

void CQZThreadManager::AddThread(uint32_t id, qz::os::NativeThread handle) {
  CQZMutexGuard guard(m_mapMutex);
  auto record = std::make_unique<CQZThreadData>(handle);
  auto [entry, inserted] = m_map.try_emplace(id, nullptr);  // may throw; then nothing changed
  if (!inserted) {
    // A recycled id: the old record goes, its thread is never joined or detached.
    qz::core::Release(entry->second);
  }
  qz::core::AddRef(record.get());
  entry->second = record.release();
}

CQZThreadData* CQZThreadManager::FindThread(uint32_t id) {
  CQZMutexGuard guard(m_mapMutex);
  const auto entry = m_map.find(id);
  if (entry == m_map.end()) return nullptr;
  qz::core::AddRef(entry->second);
  return entry->second;
}

void CQZThreadManager::MarkDetached(uint32_t id) {
  Mark(id, &CQZThreadData::m_detached, &CQZThreadData::m_finished, "marking the join or detach");
}

void CQZThreadManager::MarkFinished(uint32_t id) {
  Mark(id, &CQZThreadData::m_finished, &CQZThreadData::m_detached, "marking the end");
}

void CQZThreadManager::Mark(uint32_t id, bool CQZThreadData::*flag, bool CQZThreadData::*other,
                            const char* what) {
  CQZMutexGuard guard(m_mapMutex);
  CQZRef<CQZThreadData> record;
  *record.Receive() = FindThread(id);  // takes the mutex a second time
  // Only two joins or detaches of one thread at once get here without a record.
  if (record.Get() == nullptr) UnknownThread(what, id);
  record.Get()->*flag = true;
  if (record.Get()->*other) {
    const auto entry = m_map.find(id);
    qz::core::Release(entry->second);  // the map's reference; the lookup's is still held
    m_map.erase(entry);
  }
}

bool CQZThreadManager::IsGivenUp(CQZThreadData* record) {
  CQZMutexGuard guard(m_mapMutex);
  return record->m_detached;
}

size_t CQZThreadManager::ThreadCount() {
  CQZMutexGuard guard(m_mapMutex);
  return m_map.size();
}

bool CQZThreadManager::HasFinished(uint32_t id) {
  CQZMutexGuard guard(m_mapMutex);
  const auto entry = m_map.find(id);
  return entry != m_map.end() && entry->second->m_finished;
}

namespace qz::core {

uintptr_t RunThreadFunction(CQZThreadStartBlock* block) {
  const QZThreadFunction function = block->function;
  void* const argument = block->argument;
  const QZSemaphoreHandle semaphore = block->semaphore;
  ThrowIfFailed(QZSemaphoreWait(semaphore));
  QZSemaphoreDestroy(semaphore);
  delete block;
  return function(argument);
}

}  // namespace qz::core
