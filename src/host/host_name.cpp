// host_name.cpp - reading the host name, with one start of the network layer when the system says
// it was not started.
#include "host/host_name.h"

#include <cstring>

#include "frame/core_exception.h"
#include "platform/last_error.h"
#include "qzcore/qzhost.h"
#include "qzcore/qzunicode.h"

namespace qz::core {
namespace {
constexpr size_t kHostNameBufferSize = 1026;
}

QZRESULT GetHostNameA(char* buffer, int32_t size) noexcept {
  char name[kHostNameBufferSize];
  bool read = qz::os::GetHostName(name, kHostNameBufferSize);
  if (!read && qz::os::GetLastError() == qz::os::kErrorNetworkNotInitialised) {
    qz::os::StartNetwork();
    read = qz::os::GetHostName(name, kHostNameBufferSize);
  }
  name[kHostNameBufferSize - 1] = '\0';
  if (!read) return ResultFromNative(qz::os::GetLastError());
  const size_t length = std::strlen(name);
  if (size < 0 || static_cast<size_t>(size) < length + 1) return QZ_E_FAIL;
  std::memcpy(buffer, name, length + 1);
  return QZ_S_OK;
}

QZRESULT GetHostNameW(QZWCHAR* buffer, int32_t size) noexcept {
  char name[kHostNameBufferSize];
  const QZRESULT result = QZGetHostNameA(name, static_cast<int32_t>(sizeof name));
  if (result != QZ_S_OK) return result;
  const size_t length = std::strlen(name);
  if (size < 0 || static_cast<size_t>(size) < length + 1) return QZ_E_FAIL;
  QZAnsiToUnicode(buffer, name, static_cast<size_t>(size));
  return QZ_S_OK;
}

}  // namespace qz::core
