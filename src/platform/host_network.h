// host_network.h - the network operations of host identity: start-up, the host name, name
// resolution, and the address list of the interfaces of one family.
//
// The bodies call the system through the platform's system-call table, so tests stand in for the
// system by replacing its entries (a resolver that counts its calls, an interface list of their
// choosing; see system_calls.h). The address
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

// One attempt to start the network layer; false (last error set) leaves no state behind.
bool StartNetwork() noexcept;

// The host name, NUL-terminated if it fits in `size` bytes; false with the last error set.
bool GetHostName(char* buffer, size_t size) noexcept;

// The resolver: 0 and a list that FreeAddrInfo gives back, or a resolver error code.
int GetAddrInfo(const char* node, const char* service, const AddressInfo* hints, AddressInfo** result) noexcept;
void FreeAddrInfo(AddressInfo* list) noexcept;

// The addresses of all interfaces of `family` (kFamilyIPv4 or kFamilyIPv6), in interface order,
// as a SocketAddressList in `buffer`. *bytesReturned is the size the whole list needs. With a
// buffer too small (or none) it stores what fits, with its count, and returns false.
bool QueryAddressList(int family, void* buffer, uint32_t size, uint32_t* bytesReturned) noexcept;

// Tests only: the network layer's start-up, which no system call stands behind on every platform
// (so the system-call table cannot replace it), answers through `start` from now on; null puts the
// platform's own start back.
void SetNetworkStartForTesting(bool (*start)() noexcept) noexcept;

}  // namespace qz::os
