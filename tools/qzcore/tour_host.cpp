// tour_host.cpp - tour step: the host name, this host's address lists, and the this-computer test
// for the host name, numeric loopback addresses and an interface address.
#include <netdb.h>

#include <string>

#include "qzcore/qzhost.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

using qztool::AddressText;
using qztool::AddressTexts;

void Ask(const std::string& name) {
  Show("QZIsThisMyComputerA(\"" + name + "\")", std::to_string(QZIsThisMyComputerA(name.c_str())));
}

void TourHost() {
  char name[1026];
  QZRESULT hr = QZGetHostNameA(name, sizeof name);
  Show("QZGetHostNameA(buffer, 1026)", qztool::Result(hr) + " \"" + name + "\"");
  Show("QZGetHostNameA(buffer, 1) (too small)", qztool::Result(QZGetHostNameA(name, 1)));

  addrinfo* interfaces = nullptr;
  addrinfo* loopback = nullptr;
  hr = QZGetMyAddressInformation(&interfaces, &loopback);
  Show("QZGetMyAddressInformation(&interfaces, &loopback)", qztool::Result(hr) + ", lists " + qztool::Pointer(interfaces) + ", " + qztool::Pointer(loopback));
  Show("  interface addresses", AddressTexts(interfaces));
  Show("  addresses of localhost", AddressTexts(loopback));
  Show("QZCompareAddressInformation(loopback, loopback)", std::to_string(QZCompareAddressInformation(loopback, loopback)));

  std::string host = name;
  for (auto& c : host) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  Ask(name);
  Ask(host);
  Ask("127.0.0.1");
  Ask("::1");
  for (const addrinfo* r = interfaces; r != nullptr; r = r->ai_next) {
    if (AddressText(r) != "127.0.0.1") {
      Ask(AddressText(r));  // an interface's own address, first met here: resolved, then kept
      break;
    }
  }
  Ask("198.51.100.7");  // a documentation address: resolves to itself, belongs to no one
  Show("QZIsThisMyComputerW(NULL)", std::to_string(QZIsThisMyComputerW(nullptr)));
}

}  // namespace

QZ_TOUR_STEP(80, "Host identity", TourHost);
