// name_resolution_test.cpp - what the resolver receives: the folded name, and the rewritten IPv6
// literal when the suffix survives the fold.
#include <gtest/gtest.h>
#include <netdb.h>

#include <string>

#include "fake_network.h"
#include "host/name_resolution.h"

namespace {

std::string Asked(const char* node) {
  qztest::FakeNetwork network;
  addrinfo* result = nullptr;
  qz::core::ResolveHostName(node, nullptr, nullptr, &result);
  if (result != nullptr) qz::os::FreeAddrInfo(result);
  return qztest::FakeNetwork::asked.empty() ? "<none>" : qztest::FakeNetwork::asked.front();
}

TEST(NameResolution, FoldsFirstSoOnlyANonAsciiNameIsRewritten) {
  // ASCII letters go to upper case, so the lower-case suffix is no longer found.
  EXPECT_EQ(Asked("fe80--1s4.ipv6-literal.net"), "FE80--1S4.IPV6-LITERAL.NET");
  EXPECT_EQ(Asked("Host-Name.example"), "HOST-NAME.EXAMPLE");

  // From a byte of 0x80 on the text stays lower case: the name is cut at the suffix and every
  // dash and lower-case "s" of the buffer is rewritten, also those in front of that byte.
  const std::string asked = Asked("s-1\xC9" "fe80--1s4.ipv6-literal.net");
  ASSERT_EQ(asked.size(), 13u);
  EXPECT_EQ(asked.substr(0, 3), "S:1");  // folded to upper case before the byte, dash rewritten
  EXPECT_EQ(asked.substr(4), "fe80::1%4");
}

}  // namespace
