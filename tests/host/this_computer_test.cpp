// this_computer_test.cpp - the this-computer test: known names, one resolution per folded name,
// answers by address, cutting of long names, and the 16-bit entry.
#include <gtest/gtest.h>
#include <arpa/inet.h>
#include <ifaddrs.h>
#include <unistd.h>

#include <string>

#include "fake_network.h"
#include "host/this_computer.h"
#include "qzcore/qzhost.h"

namespace {

using Strings = std::vector<std::string>;

class ThisComputer : public ::testing::Test {
 protected:
  qztest::FakeNetwork m_network;
  qz::core::CQZMyAddressInformation m_addresses;
  qz::core::CQZThisComputerCache m_cache{m_addresses};

  // Names the resolver was asked, leaving out the one of the address lists.
  static Strings Resolved() {
    Strings names;
    for (const auto& n : qztest::FakeNetwork::asked) if (n != "localhost") names.push_back(n);
    return names;
  }
};

TEST_F(ThisComputer, KnownNamesAreAnsweredWithoutResolution) {
  for (const char* name : {"", "127.0.0.1", "::1", "Build-Host7", "build-host7", "BUILD-HOST7"}) {
    EXPECT_EQ(m_cache.IsThisMyComputer(name), 1) << name;
  }
  EXPECT_EQ(Resolved(), Strings{});
  EXPECT_EQ(qztest::FakeNetwork::starts, 2);  // the cache's and the address lists' own

  // "localhost" folds to a key that is not among them: it is resolved, and kept under that key.
  EXPECT_EQ(m_cache.IsThisMyComputer("localhost"), 1);
  EXPECT_EQ(m_cache.IsThisMyComputer("LocalHost"), 1);
  EXPECT_EQ(Resolved(), Strings{"LOCALHOST"});
}

TEST_F(ThisComputer, EachNameIsResolvedOnceWhateverTheAnswer) {
  qztest::FakeNetwork::unresolvable.insert("NOWHERE.EXAMPLE");
  EXPECT_EQ(m_cache.IsThisMyComputer("nowhere.example"), 0);
  // The resolver works again: the stored negative answer stands.
  qztest::FakeNetwork::unresolvable.clear();
  qztest::FakeNetwork::aliases["NOWHERE.EXAMPLE"] = "127.0.0.1";
  EXPECT_EQ(m_cache.IsThisMyComputer("Nowhere.Example"), 0);
  EXPECT_EQ(Resolved(), Strings{"NOWHERE.EXAMPLE"});

  // Addresses: an interface's own is this computer, a neighbour's is not; both are kept.
  EXPECT_EQ(m_cache.IsThisMyComputer("10.1.2.3"), 1);
  EXPECT_EQ(m_cache.IsThisMyComputer("10.1.2.4"), 0);
  EXPECT_EQ(m_cache.IsThisMyComputer("2001:DB8::5"), 1);
  EXPECT_EQ(m_cache.IsThisMyComputer("10.1.2.3"), 1);
  EXPECT_EQ(m_cache.IsThisMyComputer("10.1.2.4"), 0);
  EXPECT_EQ(Resolved(), (Strings{"NOWHERE.EXAMPLE", "10.1.2.3", "10.1.2.4", "2001:DB8::5"}));
}

TEST_F(ThisComputer, LongNamesAreCutBeforeTheLookup) {
  qztest::FakeNetwork::unresolvable.insert(std::string(1025, 'A'));
  EXPECT_EQ(m_cache.IsThisMyComputer((std::string(1025, 'a') + std::string(975, 'x')).c_str()), 0);
  EXPECT_EQ(m_cache.IsThisMyComputer((std::string(1025, 'a') + std::string(975, 'y')).c_str()), 0);
  EXPECT_EQ(Resolved(), Strings{std::string(1025, 'A')});
}

TEST_F(ThisComputer, AFailedStartAnswersNoAndKeepsNothing) {
  qztest::FakeNetwork::startWorks = false;
  EXPECT_EQ(m_cache.IsThisMyComputer("127.0.0.1"), 0);
  EXPECT_EQ(qztest::FakeNetwork::asked, Strings{});
  qztest::FakeNetwork::startWorks = true;
  EXPECT_EQ(m_cache.IsThisMyComputer("127.0.0.1"), 1);
}

// The process's own cache over the real system: no name here needs more than numeric resolution.
TEST(ThisComputerProcess, KnowsTheHostNameAndItsAddresses) {
  // Case folding of the name is pinned above; here the system's own answers are wired in.
  char host[1026] = {};
  gethostname(host, sizeof host - 1);
  for (const char* name : {static_cast<const char*>(host), "127.0.0.1", "::1"}) {
    EXPECT_EQ(QZIsThisMyComputerA(name), 1) << name;
  }
  // An interface's address in text form is resolved to itself and found among the interfaces.
  ifaddrs* all = nullptr;
  ASSERT_EQ(getifaddrs(&all), 0);
  for (ifaddrs* a = all; a != nullptr; a = a->ifa_next) {
    if (a->ifa_addr == nullptr || a->ifa_addr->sa_family != AF_INET) continue;
    char text[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &reinterpret_cast<sockaddr_in*>(a->ifa_addr)->sin_addr, text, sizeof text);
    EXPECT_EQ(QZIsThisMyComputerA(text), 1) << text;
  }
  freeifaddrs(all);
  EXPECT_EQ(QZIsThisMyComputerA("198.51.100.7"), 0);

  // 16-bit names: converted whole or not at all.
  EXPECT_EQ(QZIsThisMyComputerW(u"127.0.0.1"), 1);
  EXPECT_EQ(QZIsThisMyComputerW(nullptr), 0);
  const std::u16string longName(1026, u'1');
  EXPECT_EQ(QZIsThisMyComputerW(longName.c_str()), 0);
}

}  // namespace
