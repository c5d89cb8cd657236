// mutex.cpp - the plain mutex: the platform lock with nothing around it.
//
// Acquire and Release take the platform lock's Enter and Leave into their own bodies (flatten:
// where the build optimises across files they are inlined, cold paths and all kept out of line), so
// that an exported acquire is the virtual call and the lock's own steps, with no call between.
#include "sync/mutex.h"

__attribute__((flatten)) QZRESULT CQZCoreMutexImpl::Acquire() {
  m_criticalSection.Enter();
  return QZ_S_OK;
}

QZRESULT CQZCoreMutexImpl::TryAcquire() { return m_criticalSection.TryEnter() ? QZ_S_OK : QZ_E_FAIL; }

__attribute__((flatten)) QZRESULT CQZCoreMutexImpl::Release() {
  m_criticalSection.Leave();
  return QZ_S_OK;
}

QZRESULT CQZCoreMutexImpl::GetStats(QZMutexStats*) { return QZ_E_NOTIMPL; }

void CQZCoreMutexImpl::ResetStats() {}

int32_t CQZCoreMutexImpl::AssertOwnership(QZBOOL16) { return 1; }

void* CQZCoreMutexImpl::GetOSMutex() { return m_criticalSection.NativeHandle(); }
