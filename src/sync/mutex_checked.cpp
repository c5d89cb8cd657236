// mutex_checked.cpp - owner and depth checks and timing statistics of CQZCoreMutexChecked.
#include "sync/mutex_checked.h"

#include "frame/error_report.h"
#include "platform/process_info.h"
#include "platform/stat_clock.h"

std::atomic<int64_t> g_tickFrequency{0};

namespace {

constexpr char16_t kAlertTitle[] = u"QZCore Critical Error";

constexpr auto kRelaxed = std::memory_order_relaxed;

// The statistics clock: the processor's own counter where it has a usable one. Its frequency is
// settled before the first checked mutex exists, so every tick read here is in one unit.
inline int64_t CurrentTicks() noexcept { return qz::os::StatClockTicks(); }

// Adds to a figure that only the holder of the lock writes (a reset may zero it meanwhile).
template <class T>
inline void Add(std::atomic<T>& figure, T amount) noexcept {
  figure.store(figure.load(kRelaxed) + amount, kRelaxed);
}

template <class T>
inline void Raise(std::atomic<T>& figure, T value) noexcept {
  if (value > figure.load(kRelaxed)) figure.store(value, kRelaxed);
}

// value * 1000000 / g_tickFrequency, multiplying first. The product is kept in 128 bits, so the
// figures stay right for holds that add up to far more than the 64-bit product would allow.
int64_t TicksToMicroseconds(int64_t value) noexcept {
  return static_cast<int64_t>(static_cast<__int128>(value) * 1000000 / g_tickFrequency.load(kRelaxed));
}

}  // namespace

CQZCoreMutexChecked::CQZCoreMutexChecked(std::string name, uint32_t flags)
    : CQZCoreMutexImpl(std::move(name), flags) {
  if (g_tickFrequency.load(kRelaxed) == 0) g_tickFrequency.store(qz::os::StatClockFrequency(), kRelaxed);
}

bool CQZCoreMutexChecked::FailsRecursionCheck() {
  if ((m_flags & (QZ_MUTEX_CHECKED | QZ_MUTEX_NONRECURSIVE)) != (QZ_MUTEX_CHECKED | QZ_MUTEX_NONRECURSIVE)) return false;
  if (m_owner.load(std::memory_order_relaxed) != qz::os::GetCurrentThreadId()) return false;
  qz::core::ErrorAlert(0, kAlertTitle, u"CQZCoreMutexChecked::preAcquire m_owner check failed");
  return true;
}

void CQZCoreMutexChecked::NoteAcquire(int64_t start) {
  m_owner.store(qz::os::GetCurrentThreadId(), std::memory_order_relaxed);
  if (Stats()) {
    if (m_lockDepth == 0) {
      m_acquiredAt = CurrentTicks();
      if (start != 0) {
        const int64_t waited = m_acquiredAt - start;
        Add(m_totalAcquireTime, waited);
        Raise(m_maxAcquireTime, waited);
      }
    }
    Add<uint64_t>(m_acquireCount, 1);
  }
  ++m_lockDepth;
}

QZRESULT CQZCoreMutexChecked::Acquire() {
  const int64_t start = Stats() ? CurrentTicks() : 0;
  if (FailsRecursionCheck()) return QZ_E_FAIL;
  m_criticalSection.Enter();
  NoteAcquire(start);
  return QZ_S_OK;
}

QZRESULT CQZCoreMutexChecked::TryAcquire() {
  if (FailsRecursionCheck()) return QZ_E_FAIL;
  if (!m_criticalSection.TryEnter()) return QZ_E_FAIL;
  NoteAcquire(0);
  return QZ_S_OK;
}

QZRESULT CQZCoreMutexChecked::Release() {
  if (Checked()) {
    if (m_owner.load(std::memory_order_relaxed) != qz::os::GetCurrentThreadId()) {
      qz::core::ErrorAlert(0, kAlertTitle, u"CQZCoreMutexChecked::preRelease m_owner check failed");
      return QZ_E_FAIL;
    }
    if (m_lockDepth == 0) {
      qz::core::ErrorAlert(0, kAlertTitle, u"CQZCoreMutexChecked::preRelease m_lockDepth check failed");
      return QZ_E_FAIL;
    }
    if ((m_flags & QZ_MUTEX_NONRECURSIVE) != 0 && m_lockDepth != 1) {
      qz::core::ErrorAlert(0, kAlertTitle,
                           u"CQZCoreMutexChecked::preRelease m_lockDepth non recursive check failed ");
      return QZ_E_FAIL;
    }
  }
  --m_lockDepth;
  if (m_lockDepth == 0) m_owner.store(0, std::memory_order_relaxed);
  if (Stats()) {
    if (m_lockDepth == 0) {
      const int64_t held = CurrentTicks() - m_acquiredAt;
      Add(m_totalHeldTime, held);
      Raise(m_maxHeldTime, held);
    }
    Add<uint64_t>(m_heldCount, 1);
  }
  m_criticalSection.Leave();
  return QZ_S_OK;
}

QZRESULT CQZCoreMutexChecked::GetStats(QZMutexStats* stats) {
  stats->maxAcquireTime = TicksToMicroseconds(m_maxAcquireTime.load(kRelaxed));
  stats->totalAcquireTime = TicksToMicroseconds(m_totalAcquireTime.load(kRelaxed));
  stats->acquireCount = static_cast<int64_t>(m_acquireCount.load(kRelaxed));
  stats->maxHeldTime = TicksToMicroseconds(m_maxHeldTime.load(kRelaxed));
  stats->totalHeldTime = TicksToMicroseconds(m_totalHeldTime.load(kRelaxed));
  stats->heldCount = static_cast<int64_t>(m_heldCount.load(kRelaxed));
  stats->contentionCount = static_cast<int64_t>(m_criticalSection.ContentionCount());
  return QZ_S_OK;
}

void CQZCoreMutexChecked::ResetStats() {
  for (auto* figure : {&m_maxAcquireTime, &m_totalAcquireTime, &m_maxHeldTime, &m_totalHeldTime}) {
    figure->store(0, kRelaxed);
  }
  m_acquireCount.store(0, kRelaxed);
  m_heldCount.store(0, kRelaxed);
  m_criticalSection.ResetContentionCount();
}

int32_t CQZCoreMutexChecked::AssertOwnership(QZBOOL16 expected) {
  if (!Checked()) return 1;
  if (m_owner.load(std::memory_order_relaxed) == qz::os::GetCurrentThreadId()) return static_cast<int32_t>(expected);
  return expected == 0 ? 1 : 0;
}
