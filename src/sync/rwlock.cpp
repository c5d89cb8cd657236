// rwlock.cpp - CQZRWLockImpl: the reader list, the turnstile and the writer's gate.
//
// m_lock guards m_writeActive, m_parkedReadCount and m_waitingWriter against other writers,
// m_arrayLock guards m_readers, and m_holdCount changes by atomic add (readers under m_arrayLock,
// writers under m_lock). The scalars are atomics because the releases and the readers' gate test
// read them without m_lock; relaxed order is enough, the mutexes and the gate order the rest.
#include "sync/rwlock.h"

#include <algorithm>

#include "frame/core_exception.h"
#include "platform/process_info.h"
#include "qzcore/qzmutex.h"
#include "qzcore/qzwaitable.h"
#include "sync/mutex_lifecycle.h"

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

}  // namespace

uint32_t CQZReaderArray::Find(uint32_t threadId) const noexcept {
  uint32_t index = 0;
  while (index < m_length && m_slots[index].threadId != threadId) ++index;
  return index;
}

void CQZReaderArray::MakeRoom() {
  if (m_length == Room()) m_slots.resize(Room() + Room() / 2);
}

void CQZReaderArray::Remove(uint32_t index) noexcept {
  std::copy(m_slots.begin() + index + 1, m_slots.begin() + m_length, m_slots.begin() + index);
  --m_length;
}

CQZRWLockImpl::CQZRWLockImpl(std::string name, uint32_t flags) : m_name(std::move(name)), m_flags(flags) {
  qz::core::ThrowIfFailed(QZGateCreate((m_name + "::CQZRWLockImpl::m_writerGate").c_str(), 0, &m_writerGate));
  QZMutexCreate((m_name + "::CQZRWLockImpl::m_lock").c_str(), 0, &m_lock);
  QZMutexCreate((m_name + "::CQZRWLockImpl::m_arrayLock").c_str(), 0, &m_arrayLock);
  const QZRESULT opened = QZGateOpen(m_writerGate);
  if (opened < 0) {
    DestroyParts();  // what was made goes with the failed construction
    throw EQZCoreException(opened);
  }
}

CQZRWLockImpl::~CQZRWLockImpl() { DestroyParts(); }

void CQZRWLockImpl::DestroyParts() noexcept {
  if (qz::core::IsMutexHandle(m_arrayLock)) QZMutexDestroy(m_arrayLock);
  if (qz::core::IsMutexHandle(m_lock)) QZMutexDestroy(m_lock);
  m_arrayLock = m_lock = nullptr;
  QZGateDestroy(m_writerGate);
  m_writerGate = nullptr;
}

bool CQZRWLockImpl::OnlyHolder(uint32_t id) const noexcept {
  const uint32_t length = m_readers.Length();
  return id != 0 && (length == 0 || (length == 1 && m_readers[0].threadId == id));
}

void CQZRWLockImpl::AddReader(uint32_t id) {
  if (m_writeActive.load(kRelaxed)) {
    // Only the writer passes m_lock in write mode.
    m_parkedReadCount.fetch_add(1, kRelaxed);
    return;
  }
  m_readers.MakeRoom();
  if (m_holdCount.fetch_add(1, kRelaxed) == 0) qz::core::ThrowIfFailed(QZGateClose(m_writerGate));
  m_readers.Append(id, 1);
}

bool CQZRWLockImpl::ReenterRead(uint32_t id) {
  const uint32_t index = m_readers.Find(id);
  if (index == m_readers.Length()) return false;
  if (m_writeActive.load(kRelaxed)) {
    m_parkedReadCount.fetch_add(1, kRelaxed);
  } else {
    m_holdCount.fetch_add(1, kRelaxed);
    ++m_readers[index].count;
  }
  return true;
}

void CQZRWLockImpl::AcquireRead() {
  const uint32_t id = qz::os::GetCurrentThreadId();
  QZMutexAcquire(m_arrayLock);
  const bool reentered = ReenterRead(id);
  QZMutexRelease(m_arrayLock);
  if (reentered) return;  // never touches m_lock
  QZMutexAcquire(m_lock);  // a new reader waits here behind a writer; the writer passes
  QZMutexAcquire(m_arrayLock);
  AddReader(id);
  QZMutexRelease(m_arrayLock);
  QZMutexRelease(m_lock);
}

bool CQZRWLockImpl::ReleaseRead() {
  if (m_writeActive.load(kRelaxed)) {
    if (m_parkedReadCount.load(kRelaxed) <= 0) return false;
    m_parkedReadCount.fetch_sub(1, kRelaxed);
    return true;
  }
  QZMutexAcquire(m_arrayLock);
  const uint32_t index = m_readers.Find(qz::os::GetCurrentThreadId());
  if (index == m_readers.Length()) {
    QZMutexRelease(m_arrayLock);
    return false;
  }
  if (--m_readers[index].count == 0) m_readers.Remove(index);
  const uint32_t before = m_holdCount.fetch_sub(1, kRelaxed);
  // The second case wakes a writer that holds a read lock itself: it waits for all but itself.
  if (before == 1 || OnlyHolder(m_waitingWriter.load(kRelaxed))) {
    qz::core::ThrowIfFailed(QZGateOpen(m_writerGate));
  }
  QZMutexRelease(m_arrayLock);
  return true;
}

void CQZRWLockImpl::AcquireWrite() {
  QZMutexAcquire(m_lock);  // held, one level per write lock, until the matching release
  if (!m_writeActive.load(kRelaxed)) {
    m_waitingWriter.store(qz::os::GetCurrentThreadId(), kRelaxed);
    QZMutexAcquire(m_arrayLock);
    const bool alone = OnlyHolder(m_waitingWriter.load(kRelaxed));
    QZMutexRelease(m_arrayLock);
    if (!alone) qz::core::ThrowIfFailed(QZGateWait(m_writerGate));
    m_parkedReadCount.store(static_cast<int32_t>(m_holdCount.load(kRelaxed)), kRelaxed);
    m_holdCount.store(0, kRelaxed);
    m_waitingWriter.store(0, kRelaxed);
    m_writeActive.store(true, kRelaxed);
  }
  m_holdCount.fetch_add(1, kRelaxed);
}

bool CQZRWLockImpl::ReleaseWrite() {
  if (!m_writeActive.load(kRelaxed)) return false;
  const uint32_t before = m_holdCount.fetch_sub(1, kRelaxed);
  if (before > 1) {
    QZMutexRelease(m_lock);
    return true;
  }
  if (before == 0) return false;  // went below 0: m_lock stays held
  // The last level: the parked read holds come back as the caller's read holds.
  const int32_t parked = m_parkedReadCount.load(kRelaxed);
  m_holdCount.store(static_cast<uint32_t>(parked), kRelaxed);
  QZMutexAcquire(m_arrayLock);
  const uint32_t index = m_readers.Find(qz::os::GetCurrentThreadId());
  if (parked != 0) {
    m_readers.StoreCount(index, static_cast<uint32_t>(parked));  // no entry: past the last one
  } else if (index != m_readers.Length()) {
    m_readers.Remove(index);
  }
  QZMutexRelease(m_arrayLock);
  m_parkedReadCount.store(0, kRelaxed);
  m_writeActive.store(false, kRelaxed);
  QZMutexRelease(m_lock);
  return true;
}

bool CQZRWLockImpl::TryAcquireRead() {
  const uint32_t id = qz::os::GetCurrentThreadId();
  if (QZMutexTryAcquire(m_arrayLock) < 0) return false;
  const bool reentered = ReenterRead(id);
  QZMutexRelease(m_arrayLock);
  if (reentered) return true;
  if (QZMutexTryAcquire(m_lock) < 0) return false;
  if (QZMutexTryAcquire(m_arrayLock) < 0) {
    QZMutexRelease(m_lock);
    return false;
  }
  AddReader(id);
  QZMutexRelease(m_arrayLock);
  QZMutexRelease(m_lock);
  return true;
}

bool CQZRWLockImpl::TryAcquireWrite() {
  if (QZMutexTryAcquire(m_lock) < 0) return false;
  if (m_writeActive.load(kRelaxed)) {
    m_holdCount.fetch_add(1, kRelaxed);
    return true;
  }
  m_waitingWriter.store(qz::os::GetCurrentThreadId(), kRelaxed);
  bool entered = false;
  if (QZMutexTryAcquire(m_arrayLock) >= 0) {
    const bool alone = OnlyHolder(m_waitingWriter.load(kRelaxed));
    QZMutexRelease(m_arrayLock);
    entered = alone || QZGateTryWait(m_writerGate) >= 0;
  }
  if (entered) {
    m_parkedReadCount.store(static_cast<int32_t>(m_holdCount.load(kRelaxed)), kRelaxed);
    m_holdCount.store(1, kRelaxed);
    m_writeActive.store(true, kRelaxed);
    m_waitingWriter.store(0, kRelaxed);
    return true;
  }
  QZMutexRelease(m_lock);
  m_waitingWriter.store(0, kRelaxed);  // after the release, even if another writer owns it by now
  return false;
}
