// fake_network.cpp - the stand-in network calls of fake_network.h, installed in the system-call
// table.
#include "fake_network.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netdb.h>

#include <cstdlib>
#include <cstring>

#include "platform/host_network.h"
#include "platform/system_calls.h"

namespace qztest {
namespace {

bool Start() noexcept {
  ++FakeNetwork::starts;
  return FakeNetwork::startWorks;
}

int GetHostName(char* buffer, size_t size) {
  std::strncpy(buffer, FakeNetwork::hostName.c_str(), size);
  return 0;
}

int GetAddrInfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
  FakeNetwork::asked.emplace_back(node);
  if (FakeNetwork::unresolvable.count(node) != 0) return EAI_NONAME;
  const auto alias = FakeNetwork::aliases.find(node);
  addrinfo numeric{};
  if (hints != nullptr) numeric = *hints;
  numeric.ai_flags |= AI_NUMERICHOST;
  return getaddrinfo(alias != FakeNetwork::aliases.end() ? alias->second.c_str() : node, service, &numeric, result);
}

void FreeAddrInfo(addrinfo* list) { freeaddrinfo(list); }

// One interface address: the list node and its sockaddr in one allocation.
struct Entry {
  ifaddrs node;
  sockaddr_in6 address;  // large enough for either family
};

// The IPv4 addresses, then the IPv6 ones, each as its own interface entry.
int GetIfAddrs(ifaddrs** list) {
  ++FakeNetwork::queries;
  ifaddrs** tail = list;
  *list = nullptr;
  for (int family : {AF_INET, AF_INET6}) {
    for (const auto& text : family == AF_INET ? FakeNetwork::ipv4 : FakeNetwork::ipv6) {
      auto* entry = static_cast<Entry*>(std::calloc(1, sizeof(Entry)));
      if (family == AF_INET) {
        auto* a = reinterpret_cast<sockaddr_in*>(&entry->address);
        a->sin_family = AF_INET;
        inet_pton(AF_INET, text.c_str(), &a->sin_addr);
      } else {
        sockaddr_in6& a = entry->address;
        a.sin6_family = AF_INET6;
        const size_t percent = text.find('%');
        inet_pton(AF_INET6, text.substr(0, percent).c_str(), &a.sin6_addr);
        if (percent != std::string::npos) a.sin6_scope_id = static_cast<uint32_t>(std::atoi(text.c_str() + percent + 1));
      }
      entry->node.ifa_addr = reinterpret_cast<sockaddr*>(&entry->address);
      *tail = &entry->node;
      tail = &entry->node.ifa_next;
    }
  }
  return 0;
}

void FreeIfAddrs(ifaddrs* list) {
  while (list != nullptr) {
    ifaddrs* next = list->ifa_next;
    std::free(list);  // the node is the first member of its Entry
    list = next;
  }
}

template <typename F>
void Replace(const char* name, F* call) {
  qz::os::SetSystemCall(name, reinterpret_cast<qz::os::SystemCallPointer>(call));
}

}  // namespace

FakeNetwork::FakeNetwork() {
  startWorks = true;
  starts = 0;
  hostName = "Build-Host7";
  asked.clear();
  aliases = {{"localhost", "127.0.0.1"}, {"LOCALHOST", "127.0.0.1"}};
  unresolvable.clear();
  ipv4 = {"127.0.0.1", "10.1.2.3"};
  ipv6 = {"::1", "2001:db8::5"};
  queries = 0;
  Replace("gethostname", &GetHostName);
  Replace("getaddrinfo", &GetAddrInfo);
  Replace("freeaddrinfo", &FreeAddrInfo);
  Replace("getifaddrs", &GetIfAddrs);
  Replace("freeifaddrs", &FreeIfAddrs);
  qz::os::SetNetworkStartForTesting(&Start);
}

FakeNetwork::~FakeNetwork() {
  qz::os::ResetSystemCalls();
  qz::os::SetNetworkStartForTesting(nullptr);
}

}  // namespace qztest
