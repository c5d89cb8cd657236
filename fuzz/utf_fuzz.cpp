// utf_fuzz.cpp - libFuzzer target for the UTF-8 and UTF-16 decoders: the input is read once as
// UTF-8 and once as UTF-16 units; valid text must survive a round trip unchanged, the measured length
// must match the converted one, and the code-point walk must agree with the code-point count.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "qzcore/qzunicode.h"

namespace {

void Check(bool condition) {
  if (!condition) abort();
}

void FuzzUtf8(const uint8_t* data, size_t size) {
  const std::string utf8(reinterpret_cast<const char*>(data), strnlen(reinterpret_cast<const char*>(data), size));
  const int64_t needed = QZUTF8ToUTF16(nullptr, utf8.c_str(), 0);
  std::vector<QZWCHAR> wide(static_cast<size_t>(needed) + 1, 0xBEEF);
  const int64_t got = QZUTF8ToUTF16(wide.data(), utf8.c_str(), wide.size());
  if (needed == 0 && !utf8.empty()) {
    // Invalid text: the capacity comes back, and the explicit form refuses it too.
    Check(got == static_cast<int64_t>(wide.size()));
    int32_t length = -7;
    Check(QZUTF8ToUTF16N(wide.data(), static_cast<int32_t>(wide.size()), &length, utf8.c_str(), -1) == nullptr);
    Check(length == -7);
    return;
  }
  Check(got == needed);
  Check(wide[static_cast<size_t>(got)] == 0);
  std::vector<char> back(utf8.size() + 1, '#');
  Check(QZUTF16ToUTF8(back.data(), wide.data(), back.size()) == static_cast<int64_t>(utf8.size()));
  Check(memcmp(back.data(), utf8.c_str(), utf8.size() + 1) == 0);
}

void FuzzUtf16(const uint8_t* data, size_t size) {
  std::vector<QZWCHAR> units(size / 2 + 1, 0);
  for (size_t i = 0; i + 1 < size; i += 2) units[i / 2] = static_cast<QZWCHAR>(data[i] | (data[i + 1] << 8));
  units.back() = 0;
  const QZWCHAR* text = units.data();

  // Walking by code point meets exactly as many code points as ICU counts before the terminator.
  const int64_t length = QZStrLenUTF16(text);
  int32_t walked = 0;
  for (const QZWCHAR* p = text; p < text + length; ++walked) QZNextCharUTF16(&p, static_cast<uint32_t>(text + length - p));
  Check(walked == QZCountCharUTF16(text));

  const int64_t needed = QZUTF16ToUTF8(nullptr, text, 0);
  std::vector<char> utf8(static_cast<size_t>(needed) + 1, '#');
  const int64_t got = QZUTF16ToUTF8(utf8.data(), text, utf8.size());
  if (needed == 0 && length != 0) {
    Check(got == static_cast<int64_t>(utf8.size()));
    return;
  }
  Check(got == needed);
  std::vector<QZWCHAR> back(static_cast<size_t>(length) + 1, 0xBEEF);
  Check(QZUTF8ToUTF16(back.data(), utf8.data(), back.size()) == length);
  Check(memcmp(back.data(), text, (static_cast<size_t>(length) + 1) * sizeof(QZWCHAR)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzUtf8(data, size);
  FuzzUtf16(data, size);
  return 0;
}
