// this_computer.h - CQZThisComputerCache, the answers to "is this name this computer?".
//
// One process-wide cache maps folded names to answers. The first call stores the known names (the
// host name, "localhost", "127.0.0.1", "::1", "") and takes this host's address lists; any other
// name is resolved once, under the cache's mutex, and its answer, positive or negative, is kept
// until the process ends. Lock order: the cache's mutex before that of the address lists.
#pragma once

#include <atomic>
#include <map>
#include <string>

#include "host/address_information.h"
#include "sync/lazy_mutex.h"
#include "platform/host_network.h"
#include "qzcore/qztypes.h"

namespace qz::core {

class CQZThisComputerCache {
 public:
  // Bytes of a name buffer: names are cut to one less, plus the terminator.
  static constexpr size_t kNameBufferSize = 1026;

  explicit CQZThisComputerCache(CQZMyAddressInformation& addresses) noexcept : m_addresses(addresses) {}
  CQZThisComputerCache(const CQZThisComputerCache&) = delete;
  CQZThisComputerCache& operator=(const CQZThisComputerCache&) = delete;

  // The process's cache, made by the first caller and never destroyed.
  static CQZThisComputerCache& Process();

  // 1 when `name` (not NULL) denotes this computer, else 0; any failure is 0. Never throws.
  QZBOOL16 IsThisMyComputer(const char* name) noexcept;

 private:
  void Initialise(QZMutexHandle mutex);
  QZBOOL16 Resolve(const char* folded);

  CQZMyAddressInformation& m_addresses;               // where this host's address lists come from
  std::map<std::string, QZBOOL16> m_thisComputerNames;  // folded name -> answer, never shrinks
  std::atomic<bool> m_initialised{false};             // the known names are in
  qz::os::AddressInfo* m_interfaceAddresses = nullptr;  // owned by m_addresses
  qz::os::AddressInfo* m_loopbackAddresses = nullptr;   // owned by m_addresses
  CQZLazyMutex m_mutex{"QZIsThisMyComputerA"};        // serialises all cache work
};

}  // namespace qz::core
