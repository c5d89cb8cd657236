// exports.cpp - the exports of host identity: host name, name resolution, this host's address
// lists and their comparison, and the this-computer test.
#include <new>

#include "frame/export_frame.h"
#include "host/address_information.h"
#include "host/host_name.h"
#include "host/name_resolution.h"
#include "host/this_computer.h"
#include "platform/ansi_codepage.h"
#include "platform/utf8.h"
#include "qzcore/qzhost.h"

extern "C" {

QZ_API QZRESULT QZGetHostNameA(char* buffer, int32_t size) {
  return qz::core::GetHostNameA(buffer, size);
}

QZ_API QZRESULT QZGetHostName(QZWCHAR* buffer, int32_t size) { return qz::core::GetHostNameW(buffer, size); }

QZ_API int32_t QZgetaddrinfo(const char* node, const char* service, const struct addrinfo* hints,
                             struct addrinfo** result) {
  try {
    return qz::core::ResolveHostName(node, service, hints, result);
  } catch (const std::bad_alloc&) {
    return qz::os::kAddrInfoMemoryError;
  }
}

QZ_API void QZfreeaddrinfo(struct addrinfo* list) { qz::os::FreeAddrInfo(list); }

QZ_API QZRESULT QZGetMyAddressInformation(struct addrinfo** interfaces, struct addrinfo** loopback) {
  return QZExportFrame([&] { return qz::core::CQZMyAddressInformation::Process().Get(interfaces, loopback); });
}

QZ_API QZBOOL16 QZCompareAddressInformation(const struct addrinfo* first, const struct addrinfo* second) {
  return qz::core::AddressListsShareAnAddress(first, second) ? 1 : 0;
}

QZ_API QZBOOL16 QZIsThisMyComputerA(const char* name) {
  return qz::core::CQZThisComputerCache::Process().IsThisMyComputer(name);
}

QZ_API QZBOOL16 QZIsThisMyComputerW(const QZWCHAR* name) {
  if (name == nullptr) return 0;
  char bytes[qz::core::CQZThisComputerCache::kNameBufferSize];
  const auto units = static_cast<int32_t>(qz::os::Utf16Length(name) + 1);  // the terminator too
  if (qz::os::WideCharToMultiByte(name, units, bytes, sizeof bytes) == 0) return 0;
  return QZIsThisMyComputerA(bytes);
}

}  // extern "C"
