// host_network.h - the network operations of host identity: start-up, the host name, name
// resolution, and the address list of the interfaces of one family.
//
// The logic reaches them through a table (HostNetworkCalls), so that tests can stand in for the
// system: a resolver that counts its calls, an interface list of their choosing. The address
// records are the platform's own (AddressInfo, from host_network_native.h), and the logic reads
// them by the field names and byte offsets shared by every platform.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host_network_native.h"

namespace qz::os {

// The network layer was not started (the first platform's socket error for it).
inline constexpr uint32_t kErrorNetworkNotInitialised = 10093;

// One address of an address list: the address record and its length in bytes.
struct SocketAddress {
  const void* address;  // a sockaddr of the list's family, inside the same buffer
  int32_t length;       // bytes of that sockaddr
};

// An address list as the interface query returns it: a count, then that many addresses; the
// sockaddrs themselves follow in the same buffer.
struct SocketAddressList {
  int32_t count;                 // entries in `addresses`
  SocketAddress addresses[1];    // `count` entries
};

struct HostNetworkCalls {
  // One attempt to start the network layer; false (last error set) leaves no state behind.
  bool (*startup)() noexcept;
  // The host name, NUL-terminated if it fits in `size` bytes; false with the last error set.
  bool (*getHostName)(char* buffer, size_t size) noexcept;
  // getaddrinfo: 0 and a list that freeAddrInfo gives back, or a resolver error code.
  int (*getAddrInfo)(const char* node, const char* service, const AddressInfo* hints,
                     AddressInfo** result) noexcept;
  void (*freeAddrInfo)(AddressInfo* list) noexcept;
  // The addresses of all interfaces of `family` (kFamilyIPv4 or kFamilyIPv6), in interface order,
  // as a SocketAddressList in `buffer`. *bytesReturned is the size the whole list needs. With a
  // buffer too small (or none) it stores what fits, with its count, and returns false.
  bool (*queryAddressList)(int family, void* buffer, uint32_t size, uint32_t* bytesReturned) noexcept;
};

// The operations of the running system.
const HostNetworkCalls& SystemHostNetwork() noexcept;

}  // namespace qz::os
