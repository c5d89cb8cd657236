// mutex.cpp - the plain mutex: the platform lock with nothing around it.
#include "sync/mutex.h"

QZRESULT CQZCoreMutexImpl::Acquire() {
  m_criticalSection.Enter();
  return QZ_S_OK;
}

QZRESULT CQZCoreMutexImpl::TryAcquire() { return m_criticalSection.TryEnter() ? QZ_S_OK : QZ_E_FAIL; }

QZRESULT CQZCoreMutexImpl::Release() {
  m_criticalSection.Leave();
  return QZ_S_OK;
}

QZRESULT CQZCoreMutexImpl::GetStats(QZMutexStats*) { return QZ_E_NOTIMPL; }

void CQZCoreMutexImpl::ResetStats() {}

int32_t CQZCoreMutexImpl::AssertOwnership(QZBOOL16) { return 1; }

void* CQZCoreMutexImpl::GetOSMutex() { return m_criticalSection.NativeHandle(); }
