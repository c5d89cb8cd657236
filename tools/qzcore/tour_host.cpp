// tour_host.cpp - tour step: the host name, this host's address lists, and the this-computer test
// for the host name, numeric loopback addresses and an interface address.
#include <arpa/inet.h>
#include <netdb.h>

#include <string>

#include "qzcore/qzhost.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

std::string Text(const addrinfo* record) {
  char text[INET6_ADDRSTRLEN] = "?";
  if (record->ai_family == AF_INET) {
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(record->ai_addr)->sin_addr, text, sizeof text);
  } else if (record->ai_family == AF_INET6) {
    inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(record->ai_addr)->sin6_addr, text, sizeof text);
  }
  return text;
}

std::string Texts(const addrinfo* list) {
  std::string all;
  for (const addrinfo* r = list; r != nullptr; r = r->ai_next) all += (all.empty() ? "" : ", ") + Text(r);
  return all.empty() ? "(empty)" : all;
}

void Ask(const std::string& name) {
  Show("QZIsThisMyComputerA(\"" + name + "\")", std::to_string(QZIsThisMyComputerA(name.c_str())));
}

void TourHost() {
  char name[1026];
  QZRESULT hr = QZGetHostNameA(name, sizeof name);
  Show("QZGetHostNameA(buffer, 1026)", Hex(static_cast<uint32_t>(hr)) + " \"" + name + "\"");
  Show("QZGetHostNameA(buffer, 1) (too small)", Hex(static_cast<uint32_t>(QZGetHostNameA(name, 1))));

  addrinfo* interfaces = nullptr;
  addrinfo* loopback = nullptr;
  hr = QZGetMyAddressInformation(&interfaces, &loopback);
  Show("QZGetMyAddressInformation", Hex(static_cast<uint32_t>(hr)));
  Show("  interface addresses", Texts(interfaces));
  Show("  addresses of localhost", Texts(loopback));
  Show("QZCompareAddressInformation(loopback, loopback)", std::to_string(QZCompareAddressInformation(loopback, loopback)));

  std::string host = name;
  for (auto& c : host) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  Ask(name);
  Ask(host);
  Ask("127.0.0.1");
  Ask("::1");
  for (const addrinfo* r = interfaces; r != nullptr; r = r->ai_next) {
    if (Text(r) != "127.0.0.1") {
      Ask(Text(r));  // an interface's own address, first met here: resolved, then kept
      break;
    }
  }
  Ask("198.51.100.7");  // a documentation address: resolves to itself, belongs to no one
  Show("QZIsThisMyComputerW(NULL)", std::to_string(QZIsThisMyComputerW(nullptr)));
}

}  // namespace

QZ_TOUR_STEP(80, "Host identity", TourHost);
