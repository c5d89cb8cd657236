// name_resolution.cpp - the copy, fold and rewrite of a name before it reaches the resolver.
//
// The order is fixed: the copy is folded first (QZStrToLowerA turns ASCII letters to upper case),
// and only then searched, case-sensitively, for the lower-case suffix. So an all-ASCII name goes to
// the resolver in upper case and unrewritten; the suffix is found only behind a byte of 0x80 or
// above, from which on the fold lowers the text.
#include "host/name_resolution.h"

#include <cstring>
#include <memory>

#include "qzcore/qzhost.h"
#include "qzcore/qzstring.h"

namespace qz::core {

int ResolveHostName(const char* node, const char* service,
                    const qz::os::AddressInfo* hints, qz::os::AddressInfo** result) {
  const size_t length = std::strlen(node) + 1;
  std::unique_ptr<char[]> copy(new char[length]);
  std::memcpy(copy.get(), node, length);
  QZStrToLowerA(copy.get());
  if (char* suffix = QZStrStrA(copy.get(), QZ_IPV6_LITERAL_SUFFIX)) {
    *suffix = '\0';
    // The whole buffer, also behind the new terminator: dashes stand for colons, "s" for the
    // zone-index mark.
    for (size_t i = 0; i < length; ++i) {
      if (copy[i] == '-') {
        copy[i] = ':';
      } else if (copy[i] == 's') {
        copy[i] = '%';
      }
    }
  }
  return qz::os::GetAddrInfo(copy.get(), service, hints, result);
}

}  // namespace qz::core
