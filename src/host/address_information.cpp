// address_information.cpp - building this host's address lists from the interface queries and
// the loopback name, and comparing address lists.
//
// The snapshot is taken once: a failure of the resolver, of the interface query or of an
// allocation while building leaves that list (or part of it) empty for good; only a network layer
// that does not start leaves the lists unbuilt for a later try.
#include "host/address_information.h"

#include <cstdlib>
#include <cstring>

#include "frame/core_exception.h"
#include "sync/mutex_lifecycle.h"

namespace qz::core {
namespace {

// Byte offsets inside a sockaddr, the same on every platform.
constexpr size_t kIPv4AddressOffset = 4;
constexpr size_t kIPv6AddressOffset = 8;
constexpr size_t kIPv6ScopeOffset = 24;
constexpr int32_t kIPv4Length = 16;
constexpr int32_t kIPv6Length = 28;

const unsigned char kLoopbackIPv6[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
const unsigned char kLinkLocalLoopbackIPv6[16] = {0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

const unsigned char* Bytes(const void* address) noexcept { return static_cast<const unsigned char*>(address); }

uint32_t ScopeOf(const void* address) noexcept {
  uint32_t scope;
  std::memcpy(&scope, Bytes(address) + kIPv6ScopeOffset, sizeof scope);
  return scope;
}

uint16_t FamilyOf(const void* address) noexcept {
  uint16_t family;
  std::memcpy(&family, address, sizeof family);
  return family;
}

bool SameAddress(const AddressInfo& a, const AddressInfo& b) noexcept {
  if (a.ai_family == qz::os::kFamilyIPv4 && b.ai_family == qz::os::kFamilyIPv4) {
    return std::memcmp(Bytes(a.ai_addr) + kIPv4AddressOffset, Bytes(b.ai_addr) + kIPv4AddressOffset, 4) == 0;
  }
  if (a.ai_family == qz::os::kFamilyIPv6 && b.ai_family == qz::os::kFamilyIPv6) {
    return std::memcmp(Bytes(a.ai_addr) + kIPv6AddressOffset, Bytes(b.ai_addr) + kIPv6AddressOffset, 16) == 0;
  }
  return false;
}

}  // namespace

bool AddressListsShareAnAddress(const AddressInfo* first, const AddressInfo* second) noexcept {
  for (const AddressInfo* a = first; a != nullptr; a = a->ai_next) {
    for (const AddressInfo* b = second; b != nullptr; b = b->ai_next) {
      if (SameAddress(*a, *b)) return true;
    }
  }
  return false;
}

CQZMyAddressInformation::CQZMyAddressInformation() noexcept {
  std::memset(&m_linkLocalLoopbackAddress, 0, sizeof m_linkLocalLoopbackAddress);
  m_linkLocalLoopbackAddress.sin6_family = qz::os::kFamilyIPv6;
  std::memcpy(&m_linkLocalLoopbackAddress.sin6_addr, kLinkLocalLoopbackIPv6, 16);
  m_linkLocalLoopbackAddress.sin6_scope_id = 1;
  std::memset(&m_linkLocalLoopbackRecord, 0, sizeof m_linkLocalLoopbackRecord);
  m_linkLocalLoopbackRecord.ai_family = qz::os::kFamilyIPv6;
  m_linkLocalLoopbackRecord.ai_socktype = qz::os::kSocketStream;
  m_linkLocalLoopbackRecord.ai_protocol = qz::os::kProtocolTcp;
  m_linkLocalLoopbackRecord.ai_addrlen = kIPv6Length;
  m_linkLocalLoopbackRecord.ai_addr = reinterpret_cast<decltype(m_linkLocalLoopbackRecord.ai_addr)>(&m_linkLocalLoopbackAddress);
}

// Only instances of tests end; the process's instance lives until the process does.
CQZMyAddressInformation::~CQZMyAddressInformation() {
  AddressInfo* record = m_interfaceAddressList;
  if (record != nullptr) std::free(record->ai_canonname);
  while (record != nullptr) {
    AddressInfo* next = record->ai_next;
    std::free(record);
    record = next;
  }
  if (m_resolvedLoopback != nullptr) qz::os::FreeAddrInfo(m_resolvedLoopback);
  std::free(m_ipv4AddressBuffer);
  std::free(m_ipv6AddressBuffer);
}

CQZMyAddressInformation& CQZMyAddressInformation::Process() {
  static auto* const instance = new CQZMyAddressInformation();
  return *instance;
}

QZRESULT CQZMyAddressInformation::Get(AddressInfo** interfaces, AddressInfo** loopback) {
  *interfaces = nullptr;
  const QZMutexHandle mutex = m_mutex.Get();
  if (mutex == nullptr) throw EQZCoreException(QZ_E_OUTOFMEMORY);
  CQZMutexGuard guard(mutex);
  if (!m_initialised.load(std::memory_order_acquire)) {
    if (!qz::os::StartNetwork()) return QZ_E_FAIL;
    Build();
    m_initialised.store(true, std::memory_order_release);
  }
  *interfaces = m_interfaceAddressList;
  *loopback = m_loopbackAddressList;
  return QZ_S_OK;
}

void CQZMyAddressInformation::Build() {
  AddressInfo hints;
  std::memset(&hints, 0, sizeof hints);
  hints.ai_flags = qz::os::kAddressCanonicalName;
  AddressInfo* resolved = nullptr;
  if (qz::os::GetAddrInfo("localhost", nullptr, &hints, &resolved) != 0) resolved = nullptr;
  m_resolvedLoopback = resolved;
  m_loopbackAddressList = resolved;

  m_ipv4AddressBuffer = QueryAddressList(qz::os::kFamilyIPv4);
  m_ipv6AddressBuffer = QueryAddressList(qz::os::kFamilyIPv6);

  if (m_ipv4AddressBuffer != nullptr) {
    const auto& list = *static_cast<const qz::os::SocketAddressList*>(m_ipv4AddressBuffer);
    for (int32_t i = 0; i < list.count; ++i) {
      AppendInterfaceRecord(FamilyOf(list.addresses[i].address), kIPv4Length, list.addresses[i].address);
    }
  }
  if (m_loopbackAddressList != nullptr) m_linkLocalLoopbackRecord.ai_canonname = m_loopbackAddressList->ai_canonname;
  if (m_ipv6AddressBuffer != nullptr) AddIPv6Addresses(*static_cast<const qz::os::SocketAddressList*>(m_ipv6AddressBuffer));

  if (m_loopbackAddressList != nullptr && m_loopbackAddressList->ai_canonname != nullptr &&
      m_interfaceAddressList != nullptr) {
    const char* name = m_loopbackAddressList->ai_canonname;
    const size_t size = std::strlen(name) + 1;
    if (auto* copy = static_cast<char*>(std::calloc(size, 1))) {
      std::memcpy(copy, name, size);
      m_interfaceAddressList->ai_canonname = copy;
    }
  }
}

// Two steps: the size, then the list. The buffer is kept as the second step left it, even if the
// list grew in between (it then holds what fitted).
void* CQZMyAddressInformation::QueryAddressList(int family) {
  uint32_t needed = 0;
  qz::os::QueryAddressList(family, nullptr, 0, &needed);
  if (needed == 0) return nullptr;
  void* buffer = std::malloc(needed);
  if (buffer == nullptr) return nullptr;
  std::memset(buffer, 0, needed);
  uint32_t returned = 0;
  qz::os::QueryAddressList(family, buffer, needed, &returned);
  return buffer;
}

void CQZMyAddressInformation::AddIPv6Addresses(const qz::os::SocketAddressList& list) {
  for (int32_t i = 0; i < list.count; ++i) {
    const void* address = list.addresses[i].address;
    const unsigned char* bytes = Bytes(address) + kIPv6AddressOffset;
    if (std::memcmp(bytes, kLoopbackIPv6, 16) == 0) continue;
    // fe80::1 of scope 1 is the loopback interface's link-local address: it belongs in front of
    // the loopback list, once.
    if (std::memcmp(bytes, kLinkLocalLoopbackIPv6, 16) == 0 && ScopeOf(address) == 1 &&
        m_loopbackAddressList != &m_linkLocalLoopbackRecord) {
      m_linkLocalLoopbackRecord.ai_next = m_loopbackAddressList;
      m_loopbackAddressList = &m_linkLocalLoopbackRecord;
      continue;
    }
    AppendInterfaceRecord(FamilyOf(address), kIPv6Length, address);
  }
}

void CQZMyAddressInformation::AppendInterfaceRecord(int family, int32_t length, const void* address) {
  auto* record = static_cast<AddressInfo*>(std::calloc(1, sizeof(AddressInfo)));
  if (record == nullptr) return;  // the snapshot goes without this address
  record->ai_family = family;
  record->ai_addrlen = static_cast<decltype(record->ai_addrlen)>(length);
  record->ai_addr = reinterpret_cast<decltype(record->ai_addr)>(const_cast<void*>(address));
  if (m_interfaceTail == nullptr) {
    m_interfaceAddressList = record;
  } else {
    m_interfaceTail->ai_next = record;
  }
  m_interfaceTail = record;
}

}  // namespace qz::core
