// fake_network.cpp - the stand-in network operations of fake_network.h.
#include "fake_network.h"

#include <arpa/inet.h>

#include <cstdlib>
#include <cstring>

#include "platform/last_error.h"

namespace qztest {
namespace {

bool Startup() noexcept {
  ++FakeNetwork::startups;
  return FakeNetwork::startupWorks;
}

bool GetHostName(char* buffer, size_t size) noexcept {
  if (FakeNetwork::hostNameError != 0) {
    qz::os::SetLastError(FakeNetwork::hostNameError);
    FakeNetwork::hostNameError = 0;
    return false;
  }
  std::strncpy(buffer, FakeNetwork::hostName.c_str(), size);
  return true;
}

int GetAddrInfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) noexcept {
  FakeNetwork::asked.emplace_back(node);
  if (FakeNetwork::unresolvable.count(node) != 0) return EAI_NONAME;
  const auto alias = FakeNetwork::aliases.find(node);
  addrinfo numeric{};
  if (hints != nullptr) numeric = *hints;
  numeric.ai_flags |= AI_NUMERICHOST;
  return getaddrinfo(alias != FakeNetwork::aliases.end() ? alias->second.c_str() : node, service, &numeric, result);
}

void FreeAddrInfo(addrinfo* list) noexcept { freeaddrinfo(list); }

std::vector<std::vector<unsigned char>> SocketAddresses(int family) {
  std::vector<std::vector<unsigned char>> all;
  for (const auto& text : family == AF_INET ? FakeNetwork::ipv4 : FakeNetwork::ipv6) {
    if (family == AF_INET) {
      sockaddr_in a{};
      a.sin_family = AF_INET;
      inet_pton(AF_INET, text.c_str(), &a.sin_addr);
      all.emplace_back(reinterpret_cast<unsigned char*>(&a), reinterpret_cast<unsigned char*>(&a + 1));
    } else {
      sockaddr_in6 a{};
      a.sin6_family = AF_INET6;
      const size_t percent = text.find('%');
      inet_pton(AF_INET6, text.substr(0, percent).c_str(), &a.sin6_addr);
      if (percent != std::string::npos) a.sin6_scope_id = static_cast<uint32_t>(std::atoi(text.c_str() + percent + 1));
      all.emplace_back(reinterpret_cast<unsigned char*>(&a), reinterpret_cast<unsigned char*>(&a + 1));
    }
  }
  return all;
}

bool QueryAddressList(int family, void* buffer, uint32_t size, uint32_t* bytesReturned) noexcept {
  ++FakeNetwork::queries;
  const auto addresses = SocketAddresses(family);
  const size_t header = offsetof(qz::os::SocketAddressList, addresses);
  size_t needed = header + addresses.size() * sizeof(qz::os::SocketAddress);
  for (const auto& a : addresses) needed += a.size();
  *bytesReturned = static_cast<uint32_t>(needed);
  if (buffer == nullptr || size < needed) return false;
  auto* list = static_cast<qz::os::SocketAddressList*>(buffer);
  auto* storage = static_cast<unsigned char*>(buffer) + header + addresses.size() * sizeof(qz::os::SocketAddress);
  list->count = static_cast<int32_t>(addresses.size());
  for (size_t i = 0; i < addresses.size(); ++i) {
    std::memcpy(storage, addresses[i].data(), addresses[i].size());
    list->addresses[i] = {storage, static_cast<int32_t>(addresses[i].size())};
    storage += addresses[i].size();
  }
  return true;
}

const qz::os::HostNetworkCalls kFakeCalls = {Startup, GetHostName, GetAddrInfo, FreeAddrInfo, QueryAddressList};

}  // namespace

const qz::os::HostNetworkCalls& FakeNetwork::Reset() {
  startupWorks = true;
  startups = 0;
  hostName = "Build-Host7";
  hostNameError = 0;
  asked.clear();
  aliases = {{"localhost", "127.0.0.1"}, {"LOCALHOST", "127.0.0.1"}};
  unresolvable.clear();
  ipv4 = {"127.0.0.1", "10.1.2.3"};
  ipv6 = {"::1", "2001:db8::5"};
  queries = 0;
  return kFakeCalls;
}

}  // namespace qztest
