// host_network_native.h - the POSIX address records behind host_network.h: glibc's addrinfo and
// sockaddr_in6, and the numbers of its address families and resolver codes.
#pragma once

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace qz::os {

using AddressInfo = ::addrinfo;
using SocketAddressIPv6 = ::sockaddr_in6;

inline constexpr int kFamilyIPv4 = AF_INET;
inline constexpr int kFamilyIPv6 = AF_INET6;
inline constexpr int kSocketStream = SOCK_STREAM;
inline constexpr int kProtocolTcp = IPPROTO_TCP;
inline constexpr int kAddressCanonicalName = AI_CANONNAME;
// The resolver's "out of memory" result.
inline constexpr int kAddrInfoMemoryError = EAI_MEMORY;

}  // namespace qz::os
