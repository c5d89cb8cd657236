// host_network.cpp - host identity on Linux: gethostname, getaddrinfo, and the interface address
// lists from getifaddrs. There is no network layer to start, so start-up succeeds unless a test
// said otherwise.
#include "platform/host_network.h"

#include <ifaddrs.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "errno_map.h"
#include "syscalls.h"
#include "platform/last_error.h"
#include "platform/native_error.h"

namespace qz::os {
namespace {

std::atomic<bool (*)() noexcept> g_startForTesting{nullptr};  // null: the platform's own start

size_t SocketAddressSize(int family) noexcept {
  return family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
}

}  // namespace

bool StartNetwork() noexcept {
  bool (*start)() noexcept = g_startForTesting.load(std::memory_order_acquire);
  return start == nullptr || start();
}

void SetNetworkStartForTesting(bool (*start)() noexcept) noexcept {
  g_startForTesting.store(start, std::memory_order_release);
}

bool GetHostName(char* buffer, size_t size) noexcept {
  if (sys::gethostname(buffer, size) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  return true;
}

int GetAddrInfo(const char* node, const char* service, const AddressInfo* hints, AddressInfo** result) noexcept {
  return sys::getaddrinfo(node, service, hints, result);
}

void FreeAddrInfo(AddressInfo* list) noexcept { sys::freeaddrinfo(list); }

// Every address of `family` that getifaddrs reports, in its order (interface by interface),
// packed as the first platform's address list: count, {address, length} entries, then the
// sockaddrs themselves.
bool QueryAddressList(int family, void* buffer, uint32_t size, uint32_t* bytesReturned) noexcept {
  *bytesReturned = 0;
  ifaddrs* all = nullptr;
  if (sys::getifaddrs(&all) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  int32_t count = 0;
  for (ifaddrs* a = all; a != nullptr; a = a->ifa_next) {
    if (a->ifa_addr != nullptr && a->ifa_addr->sa_family == family) ++count;
  }
  const size_t header = offsetof(SocketAddressList, addresses);
  const size_t perAddress = sizeof(SocketAddress) + SocketAddressSize(family);
  const size_t needed = header + static_cast<size_t>(count) * perAddress;
  *bytesReturned = static_cast<uint32_t>(needed);

  // Fill what fits, so that a list that grew since it was sized still leaves a usable snapshot.
  const int32_t fits = buffer == nullptr || size < header
                           ? 0
                           : static_cast<int32_t>(std::min<size_t>(count, (size - header) / perAddress));
  if (buffer != nullptr && size >= header) {
    auto* list = static_cast<SocketAddressList*>(buffer);
    auto* storage = static_cast<unsigned char*>(buffer) + header + static_cast<size_t>(fits) * sizeof(SocketAddress);
    int32_t stored = 0;
    for (ifaddrs* a = all; a != nullptr && stored < fits; a = a->ifa_next) {
      if (a->ifa_addr == nullptr || a->ifa_addr->sa_family != family) continue;
      const size_t length = SocketAddressSize(family);
      std::memcpy(storage, a->ifa_addr, length);
      list->addresses[stored].address = storage;
      list->addresses[stored].length = static_cast<int32_t>(length);
      storage += length;
      ++stored;
    }
    list->count = stored;
  }
  sys::freeifaddrs(all);
  if (fits < count || buffer == nullptr) {
    SetLastError(kErrorInsufficientBuffer);
    return false;
  }
  return true;
}

}  // namespace qz::os
