// expand_environment.cpp - %NAME% expansion of 16-bit text from the process environment.
//
// Portable: the environment is read with getenv. A reference whose variable is not set, and a
// lone "%", stay in the text as they are.
#include <cstdlib>
#include <string>

#include "platform/registry_store.h"
#include "platform/utf8.h"

namespace qz::os {

uint32_t ExpandEnvironmentStrings(const char16_t* source, size_t sourceUnits, char16_t* dest, uint32_t size) noexcept {
  try {
    std::u16string in;
    for (size_t i = 0; source != nullptr && i < sourceUnits && source[i] != 0; ++i) in += source[i];
    std::u16string out;
    for (size_t i = 0; i < in.size();) {
      const size_t close = in[i] == u'%' ? in.find(u'%', i + 1) : std::u16string::npos;
      if (close == std::u16string::npos || close == i + 1) {
        out += in[i++];
        continue;
      }
      const std::string name = Utf16ToUtf8Replacing(std::u16string_view(in).substr(i + 1, close - i - 1));
      if (const char* value = std::getenv(name.c_str())) {
        out += Utf8ToUtf16Replacing(value);
        i = close + 1;
      } else {
        out.append(in, i, close - i);  // the next "%" may open a reference of its own
        i = close;
      }
    }
    const auto needed = static_cast<uint32_t>(out.size() + 1);
    if (dest != nullptr && size >= needed) {
      out.copy(dest, out.size());
      dest[out.size()] = 0;
    }
    return needed;
  } catch (...) {
    return 0;
  }
}

}  // namespace qz::os
