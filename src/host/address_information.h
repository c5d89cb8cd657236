// address_information.h - this host's address lists (interfaces and loopback), built once, and
// the comparison of two address lists.
//
// CQZMyAddressInformation takes one snapshot of the system's addresses under its own mutex and
// keeps it; the process has one instance that is never destroyed (lists handed out stay valid
// until the process ends). Tests build their own instances, with the system-call table standing in
// for the system.
#pragma once

#include <atomic>

#include "sync/lazy_mutex.h"
#include "platform/host_network.h"
#include "qzcore/qztypes.h"

namespace qz::core {

using qz::os::AddressInfo;

// True when some record of `first` and some record of `second` hold the same address: IPv4 by
// its 32 bits, IPv6 by its 128 bits (port, flow and scope ignored); other families never match.
bool AddressListsShareAnAddress(const AddressInfo* first, const AddressInfo* second) noexcept;

class CQZMyAddressInformation {
 public:
  CQZMyAddressInformation() noexcept;
  ~CQZMyAddressInformation();
  CQZMyAddressInformation(const CQZMyAddressInformation&) = delete;
  CQZMyAddressInformation& operator=(const CQZMyAddressInformation&) = delete;

  // The process's instance.
  static CQZMyAddressInformation& Process();

  // Builds the lists on the first successful call and gives out both heads. *interfaces is NULL
  // first; QZ_E_FAIL when the network layer does not start (and a later call tries again). Throws
  // EQZCoreException if the mutex cannot be made or taken.
  QZRESULT Get(AddressInfo** interfaces, AddressInfo** loopback);

 private:
  void Build();
  void AppendInterfaceRecord(int family, int32_t length, const void* address);
  void AddIPv6Addresses(const qz::os::SocketAddressList& list);
  void* QueryAddressList(int family);

  AddressInfo* m_interfaceAddressList = nullptr;  // records of this class, one per address
  AddressInfo* m_interfaceTail = nullptr;      // last record, where the next is appended
  AddressInfo* m_loopbackAddressList = nullptr;  // "localhost", maybe behind the link-local record
  AddressInfo* m_resolvedLoopback = nullptr;   // what the resolver returned for "localhost"
  void* m_ipv4AddressBuffer = nullptr;         // the IPv4 interface query; records point into it
  void* m_ipv6AddressBuffer = nullptr;         // the IPv6 interface query
  qz::os::SocketAddressIPv6 m_linkLocalLoopbackAddress;  // fe80::1, scope 1
  AddressInfo m_linkLocalLoopbackRecord;       // fixed record of that address
  std::atomic<bool> m_initialised{false};      // the lists are built
  CQZLazyMutex m_mutex{"QZGetMyAddressInformation"};  // guards the building
};

}  // namespace qz::core
