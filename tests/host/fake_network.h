// fake_network.h - the system's network calls stood in for through the system-call table: a chosen
// host name and interface addresses, a resolver that records what it is asked and resolves only
// numeric text (no network is ever used), and a start-up that can be made to fail.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace qztest {

// While an instance lives, the platform's gethostname, getaddrinfo, freeaddrinfo, getifaddrs and
// freeifaddrs entries (and its network start) answer from the settings below, which it resets.
struct FakeNetwork {
  FakeNetwork();
  ~FakeNetwork();
  FakeNetwork(const FakeNetwork&) = delete;
  FakeNetwork& operator=(const FakeNetwork&) = delete;

  static inline bool startWorks = true;          // what the network start answers
  static inline int starts = 0;                  // network starts
  static inline std::string hostName;            // what gethostname gives
  static inline std::vector<std::string> asked;  // nodes given to the resolver, in order
  static inline std::map<std::string, std::string> aliases;  // node -> numeric text it resolves to
  static inline std::set<std::string> unresolvable;          // nodes that fail to resolve
  static inline std::vector<std::string> ipv4;   // interface addresses, numeric text
  static inline std::vector<std::string> ipv6;   // likewise; "addr%N" gives scope N
  static inline int queries = 0;                 // interface-list queries (getifaddrs)
};

}  // namespace qztest
