// fake_network.h - a stand-in for the system's network operations: a chosen host name and
// interface addresses, a resolver that records what it is asked and resolves only numeric text
// (no network is ever used), and a start-up that can be made to fail.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/host_network.h"

namespace qztest {

struct FakeNetwork {
  // Resets every setting and count; returns the table to hand to the class under test.
  static const qz::os::HostNetworkCalls& Reset();

  static inline bool startupWorks = true;          // what start-up answers
  static inline int startups = 0;                  // start-up attempts
  static inline std::string hostName;              // what getHostName gives
  static inline uint32_t hostNameError = 0;        // nonzero: getHostName fails once with it
  static inline std::vector<std::string> asked;    // nodes given to the resolver, in order
  static inline std::map<std::string, std::string> aliases;  // node -> numeric text it resolves to
  static inline std::set<std::string> unresolvable;          // nodes that fail to resolve
  static inline std::vector<std::string> ipv4;     // interface addresses, numeric text
  static inline std::vector<std::string> ipv6;     // likewise; "addr%N" gives scope N
  static inline int queries = 0;                   // interface-list queries
};

}  // namespace qztest
