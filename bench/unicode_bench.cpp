// unicode_bench.cpp - UTF-8/UTF-16 conversions beside the direct ICU calls they forward to, and the
// byte-to-16-bit conversion on ASCII text beside the C library's mbstowcs.
#include <benchmark/benchmark.h>
#include <unicode/ustring.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <vector>

#include "qzcore/qzunicode.h"

namespace {

// Mixed text: ASCII, Latin-1, CJK and a supplementary character in every 16 code points.
std::string MixedUtf8(size_t repeats) {
  std::string piece = "Grüße, 世界! abc \xF0\x9F\x98\x80 xyz";
  std::string text;
  for (size_t i = 0; i < repeats; ++i) text += piece;
  return text;
}

const std::string& Utf8Text() {
  static const std::string text = MixedUtf8(200);
  return text;
}

const std::u16string& Utf16Text() {
  static const std::u16string text = [] {
    std::u16string out(Utf8Text().size() + 1, 0);
    int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(out.data(), static_cast<int32_t>(out.size()), &length, Utf8Text().c_str(), -1, &error);
    out.resize(static_cast<size_t>(length));
    return out;
  }();
  return text;
}

void BM_IcuStrFromUTF8(benchmark::State& state) {
  std::vector<UChar> out(Utf16Text().size() + 1);
  for (auto _ : state) {
    int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(out.data(), static_cast<int32_t>(out.size()), &length, Utf8Text().c_str(), -1, &error);
    benchmark::DoNotOptimize(length);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * Utf8Text().size()));
}
BENCHMARK(BM_IcuStrFromUTF8);

void BM_QZUTF8ToUTF16(benchmark::State& state) {
  std::vector<QZWCHAR> out(Utf16Text().size() + 1);
  for (auto _ : state) benchmark::DoNotOptimize(QZUTF8ToUTF16(out.data(), Utf8Text().c_str(), out.size()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * Utf8Text().size()));
}
BENCHMARK(BM_QZUTF8ToUTF16);

void BM_IcuStrToUTF8(benchmark::State& state) {
  std::vector<char> out(Utf8Text().size() + 1);
  for (auto _ : state) {
    int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strToUTF8(out.data(), static_cast<int32_t>(out.size()), &length, Utf16Text().c_str(), -1, &error);
    benchmark::DoNotOptimize(length);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * Utf8Text().size()));
}
BENCHMARK(BM_IcuStrToUTF8);

void BM_QZUTF16ToUTF8(benchmark::State& state) {
  std::vector<char> out(Utf8Text().size() + 1);
  for (auto _ : state) benchmark::DoNotOptimize(QZUTF16ToUTF8(out.data(), Utf16Text().c_str(), out.size()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * Utf8Text().size()));
}
BENCHMARK(BM_QZUTF16ToUTF8);

// ASCII text in a UTF-8 locale.
const std::string& AsciiText() {
  static const std::string text = [] {
    std::setlocale(LC_ALL, "C.UTF-8");
    std::string out;
    while (out.size() < 4096) out += "The quick brown fox jumps over the lazy dog. ";
    return out;
  }();
  return text;
}

void BM_Mbstowcs(benchmark::State& state) {
  std::vector<wchar_t> out(AsciiText().size() + 1);
  for (auto _ : state) benchmark::DoNotOptimize(std::mbstowcs(out.data(), AsciiText().c_str(), out.size()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * AsciiText().size()));
}
BENCHMARK(BM_Mbstowcs);

void BM_QZAnsiToUnicode(benchmark::State& state) {
  std::vector<QZWCHAR> out(AsciiText().size() + 1);
  for (auto _ : state) benchmark::DoNotOptimize(QZAnsiToUnicode(out.data(), AsciiText().c_str(), out.size()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * AsciiText().size()));
}
BENCHMARK(BM_QZAnsiToUnicode);

}  // namespace
