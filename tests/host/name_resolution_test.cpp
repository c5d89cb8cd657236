// name_resolution_test.cpp - what the resolver receives: the folded name, and the rewritten IPv6
// literal when the suffix survives the fold.
#include <gtest/gtest.h>
#include <netdb.h>

#include <string>

#include "fake_network.h"
#include "host/name_resolution.h"
#include "qzcore/qzhost.h"

namespace {

std::string Asked(const char* node) {
  const auto& calls = qztest::FakeNetwork::Reset();
  addrinfo* result = nullptr;
  qz::core::ResolveHostName(calls, node, nullptr, nullptr, &result);
  if (result != nullptr) calls.freeAddrInfo(result);
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

TEST(NameResolution, ExportResolvesNumericTextOfBothFamilies) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* v4 = nullptr;
  ASSERT_EQ(QZgetaddrinfo("127.0.0.1", nullptr, &hints, &v4), 0);
  EXPECT_EQ(v4->ai_family, AF_INET);
  addrinfo* v6 = nullptr;
  ASSERT_EQ(QZgetaddrinfo("fe80::a:1%1", nullptr, &hints, &v6), 0);  // hex digits fold harmlessly
  EXPECT_EQ(v6->ai_family, AF_INET6);
  addrinfo* none = nullptr;
  EXPECT_NE(QZgetaddrinfo("not numeric", nullptr, &hints, &none), 0);
  QZfreeaddrinfo(v4);
  QZfreeaddrinfo(v6);
}

}  // namespace
