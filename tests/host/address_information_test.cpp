// address_information_test.cpp - this host's address lists as built from the interface queries,
// and the comparison of address lists.
#include <gtest/gtest.h>
#include <arpa/inet.h>
#include <netdb.h>

#include <cstring>
#include <string>
#include <vector>

#include "fake_network.h"
#include "host/address_information.h"
#include "qzcore/qzhost.h"

namespace {

std::string Text(const addrinfo* r) {
  char text[INET6_ADDRSTRLEN] = "?";
  if (r->ai_family == AF_INET) {
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(r->ai_addr)->sin_addr, text, sizeof text);
    return text;
  }
  const auto* a = reinterpret_cast<const sockaddr_in6*>(r->ai_addr);
  inet_ntop(AF_INET6, &a->sin6_addr, text, sizeof text);
  return std::string(text) + (a->sin6_scope_id != 0 ? "%" + std::to_string(a->sin6_scope_id) : "");
}

std::vector<std::string> Texts(const addrinfo* list) {
  std::vector<std::string> all;
  for (const addrinfo* r = list; r != nullptr; r = r->ai_next) all.push_back(Text(r));
  return all;
}

using Strings = std::vector<std::string>;

addrinfo* Numeric(const char* text) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  EXPECT_EQ(getaddrinfo(text, nullptr, &hints, &list), 0) << text;
  return list;
}

TEST(AddressInformation, SortsInterfaceAddressesAndSetsLoopbackOnesApart) {
  qztest::FakeNetwork network;
  qztest::FakeNetwork::ipv6 = {"::1", "fe80::1%1", "2001:db8::5", "fe80::1%2", "fe80::1%1"};
  qz::core::CQZMyAddressInformation info;
  addrinfo* interfaces = nullptr;
  addrinfo* loopback = nullptr;
  ASSERT_EQ(info.Get(&interfaces, &loopback), 0);

  // ::1 is left out; the first fe80::1 of scope 1 heads the loopback list, a second one does not.
  EXPECT_EQ(Texts(interfaces), (Strings{"127.0.0.1", "10.1.2.3", "2001:db8::5", "fe80::1%2", "fe80::1%1"}));
  // The rest comes from resolving "localhost", as many entries as the resolver gives.
  const Strings loop = Texts(loopback);
  ASSERT_GE(loop.size(), 2u);
  EXPECT_EQ(loop[0], "fe80::1%1");
  EXPECT_EQ(loop[1], "127.0.0.1");
  EXPECT_EQ(interfaces->ai_addrlen, 16u);
  EXPECT_EQ(interfaces->ai_next->ai_next->ai_addrlen, 28u);
  // The head of each list carries the canonical name of "localhost", as its own copy on the first.
  ASSERT_NE(loopback->ai_canonname, nullptr);
  ASSERT_NE(interfaces->ai_canonname, nullptr);
  EXPECT_STREQ(interfaces->ai_canonname, loopback->ai_canonname);
  EXPECT_NE(interfaces->ai_canonname, loopback->ai_canonname);
  EXPECT_EQ(interfaces->ai_next->ai_canonname, nullptr);

  // A second call gives the same heads and asks the system nothing.
  const int queries = qztest::FakeNetwork::queries;
  addrinfo* again = nullptr;
  addrinfo* loopAgain = nullptr;
  ASSERT_EQ(info.Get(&again, &loopAgain), 0);
  EXPECT_EQ(again, interfaces);
  EXPECT_EQ(loopAgain, loopback);
  EXPECT_EQ(qztest::FakeNetwork::queries, queries);
  EXPECT_EQ(qztest::FakeNetwork::asked, (Strings{"localhost"}));
}

TEST(AddressInformation, AFailedStartLeavesNothingBuiltAndALaterCallBuilds) {
  qztest::FakeNetwork network;
  qztest::FakeNetwork::startWorks = false;
  qz::core::CQZMyAddressInformation info;
  auto* const sentinel = reinterpret_cast<addrinfo*>(0x1);
  addrinfo* interfaces = sentinel;
  addrinfo* loopback = sentinel;
  EXPECT_EQ(info.Get(&interfaces, &loopback), QZ_E_FAIL);
  EXPECT_EQ(interfaces, nullptr);
  EXPECT_EQ(loopback, sentinel);
  EXPECT_EQ(qztest::FakeNetwork::queries, 0);

  // An unresolvable "localhost" and no interfaces leave both lists empty, for good.
  qztest::FakeNetwork::startWorks = true;
  qztest::FakeNetwork::unresolvable.insert("localhost");
  qztest::FakeNetwork::ipv4.clear();
  qztest::FakeNetwork::ipv6.clear();
  EXPECT_EQ(info.Get(&interfaces, &loopback), 0);
  EXPECT_EQ(interfaces, nullptr);
  EXPECT_EQ(loopback, nullptr);
}

TEST(AddressInformation, ComparesAddressesByFamilyIgnoringScope) {
  addrinfo* v4 = Numeric("10.1.2.3");
  addrinfo* mapped = Numeric("::ffff:10.1.2.3");
  addrinfo* scope1 = Numeric("fe80::7%1");
  addrinfo* scope2 = Numeric("fe80::7%2");
  addrinfo* other = Numeric("fe80::8");
  // An IPv4 address never equals an IPv6 one, not even its mapped form.
  EXPECT_EQ(QZCompareAddressInformation(v4, mapped), 0);
  EXPECT_EQ(QZCompareAddressInformation(mapped, v4), 0);
  EXPECT_EQ(QZCompareAddressInformation(v4, v4), 1);
  EXPECT_EQ(QZCompareAddressInformation(scope1, scope2), 1);
  EXPECT_EQ(QZCompareAddressInformation(scope1, other), 0);
  EXPECT_EQ(QZCompareAddressInformation(nullptr, v4), 0);
  EXPECT_EQ(QZCompareAddressInformation(v4, nullptr), 0);
  // A match anywhere in either list counts.
  other->ai_next = scope2;
  EXPECT_EQ(QZCompareAddressInformation(v4, other), 0);
  EXPECT_EQ(QZCompareAddressInformation(scope1, other), 1);
  other->ai_next = nullptr;
  for (addrinfo* list : {v4, mapped, scope1, scope2, other}) freeaddrinfo(list);
}

TEST(AddressInformation, ProcessListsHoldTheSystemsInterfaceAddresses) {
  addrinfo* interfaces = nullptr;
  addrinfo* loopback = nullptr;
  ASSERT_EQ(QZGetMyAddressInformation(&interfaces, &loopback), 0);
  for (const auto& text : Texts(interfaces)) EXPECT_NE(text, "::1");
  addrinfo* again = nullptr;
  addrinfo* loopAgain = nullptr;
  ASSERT_EQ(QZGetMyAddressInformation(&again, &loopAgain), 0);
  EXPECT_EQ(again, interfaces);
  EXPECT_EQ(loopAgain, loopback);
}

}  // namespace
