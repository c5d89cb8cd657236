// guid_fuzz.cpp - the identifier text reader on any 16-bit text: it never reads past the
// terminator, writes nothing on a refusal, and what it accepts writes back to the same identifier
// and to the same text up to case.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "component/guid.h"

namespace {

char16_t Upper(char16_t unit) { return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<char16_t> text(size / 2 + 1, 0);  // exactly the input, then the terminator
  std::memcpy(text.data(), data, size / 2 * 2);

  QZGUID guid;
  std::memset(&guid, 0xA5, sizeof guid);
  QZGUID sentinel = guid;
  const QZRESULT result = qz::core::GuidFromString(text.data(), &guid);
  if (result != QZ_S_OK) {
    if (result != QZ_E_INVALIDARG || std::memcmp(&guid, &sentinel, sizeof guid) != 0) std::abort();
    return 0;
  }

  char16_t written[39];
  qz::core::StringFromGuid(guid, written, 39);
  QZGUID again;
  if (qz::core::GuidFromString(written, &again) != QZ_S_OK || !qz::core::IsEqualGuid(guid, again)) std::abort();
  if (qz::core::CompareGuid(guid, again) != 0) std::abort();
  const size_t start = text[0] == u'{' ? 1 : 0;  // the 36 characters of the pattern
  for (size_t i = 0; i < 36; ++i) {
    if (Upper(text[start + i]) != written[1 + i]) std::abort();
  }
  return 0;
}
