// this_computer.cpp - the this-computer cache: the known names, the once-per-name resolution and
// the lookups.
//
// The mutex is held across name resolution on purpose: every asker waits while one unknown name
// is resolved, and that is what makes each name resolved only once.
#include "host/this_computer.h"

#include <algorithm>
#include <cstring>
#include <exception>

#include "host/name_resolution.h"
#include "qzcore/qzstring.h"
#include "sync/mutex_lifecycle.h"

namespace qz::core {

CQZThisComputerCache& CQZThisComputerCache::Process() {
  static auto* const instance =
      new CQZThisComputerCache(CQZMyAddressInformation::Process());
  return *instance;
}

// The known names, under the mutex. A network layer that does not start leaves nothing behind.
void CQZThisComputerCache::Initialise(QZMutexHandle mutex) {
  CQZMutexGuard guard(mutex);
  if (m_initialised.load(std::memory_order_relaxed)) return;
  if (!qz::os::StartNetwork()) return;
  char hostName[kNameBufferSize] = {};
  qz::os::GetHostName(hostName, kNameBufferSize - 1);  // a failure leaves the empty name
  hostName[kNameBufferSize - 1] = '\0';
  try {
    m_addresses.Get(&m_interfaceAddresses, &m_loopbackAddresses);
  } catch (...) {
    // Not looked at, as a failed build is not: the lists stay empty and the names go in all the same.
  }
  QZStrToLowerA(hostName);
  for (const char* known : {static_cast<const char*>(hostName), "localhost", "127.0.0.1", "::1", ""}) {
    m_thisComputerNames.emplace(known, 1);
  }
  m_initialised.store(true, std::memory_order_release);
}

QZBOOL16 CQZThisComputerCache::Resolve(const char* folded) {
  qz::os::AddressInfo* result = nullptr;
  QZBOOL16 answer = 0;
  if (ResolveHostName(folded, nullptr, nullptr, &result) == 0) {
    answer = AddressListsShareAnAddress(result, m_loopbackAddresses) ||
                     AddressListsShareAnAddress(result, m_interfaceAddresses)
                 ? 1
                 : 0;
  }
  if (result != nullptr) qz::os::FreeAddrInfo(result);
  return answer;
}

QZBOOL16 CQZThisComputerCache::IsThisMyComputer(const char* name) noexcept {
  const QZMutexHandle mutex = m_mutex.Get();
  if (mutex == nullptr) return 0;
  QZBOOL16 answer = 0;
  if (!m_initialised.load(std::memory_order_acquire)) {
    try {
      Initialise(mutex);
    } catch (...) {
      // An allocation failed, or the mutex did: the guard has let go; go on only if the names
      // made it in.
    }
    if (!m_initialised.load(std::memory_order_acquire)) return 0;
  }

  char folded[kNameBufferSize];
  QZStrNCpyA(folded, name, std::min(std::strlen(name) + 1, kNameBufferSize - 1));
  folded[kNameBufferSize - 1] = '\0';
  QZStrToLowerA(folded);
  try {
    std::string key(folded);
    CQZMutexGuard guard(mutex);
    const auto known = m_thisComputerNames.find(key);
    if (known != m_thisComputerNames.end()) return known->second;
    answer = Resolve(folded);
    m_thisComputerNames.emplace(std::move(key), answer);
  } catch (...) {
    // The answer as it stood; the guard has let go of the mutex.
  }
  return answer;
}

}  // namespace qz::core
