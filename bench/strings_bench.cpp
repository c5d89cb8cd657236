// strings_bench.cpp - the byte and 16-bit string functions beside their C library peers: the
// case-insensitive compare (ASCII fast path and non-ASCII rest), in-place case mapping, number
// parsing with a 32-bit long, the bounded copy, and the 16-bit length.
#include <benchmark/benchmark.h>
#include <strings.h>

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

#include "qzcore/qzstring.h"

namespace {

// Host-name sized text that differs only in case, so the whole string is compared.
const char kFirst[] = "Build-Server-07.Example.Internal";
const char kSecond[] = "build-server-07.EXAMPLE.internal";
// The same with a non-ASCII byte early on, which sends the rest to the locale's compare.
const char kFirstAccented[] = "B\xC3\xBCild-Server-07.Example.Internal";
const char kSecondAccented[] = "b\xC3\x9Cild-server-07.EXAMPLE.internal";

// Every benchmark runs under the same UTF-8 C locale.
void UseUtf8Locale() { std::setlocale(LC_ALL, "C.UTF-8"); }

void BM_StrcasecmpAscii(benchmark::State& state) {
  UseUtf8Locale();
  for (auto _ : state) benchmark::DoNotOptimize(strcasecmp(kFirst, kSecond));
}
BENCHMARK(BM_StrcasecmpAscii);

void BM_QZStrICmpAAscii(benchmark::State& state) {
  UseUtf8Locale();
  for (auto _ : state) benchmark::DoNotOptimize(QZStrICmpA(kFirst, kSecond));
}
BENCHMARK(BM_QZStrICmpAAscii);

void BM_StrcasecmpNonAscii(benchmark::State& state) {
  UseUtf8Locale();
  for (auto _ : state) benchmark::DoNotOptimize(strcasecmp(kFirstAccented, kSecondAccented));
}
BENCHMARK(BM_StrcasecmpNonAscii);

void BM_QZStrICmpANonAscii(benchmark::State& state) {
  UseUtf8Locale();
  for (auto _ : state) benchmark::DoNotOptimize(QZStrICmpA(kFirstAccented, kSecondAccented));
}
BENCHMARK(BM_QZStrICmpANonAscii);

void BM_ToupperLoop(benchmark::State& state) {
  UseUtf8Locale();
  char text[sizeof kFirst];
  for (auto _ : state) {
    std::memcpy(text, kFirst, sizeof kFirst);
    for (char* p = text; *p != 0; ++p) *p = static_cast<char>(std::toupper(static_cast<unsigned char>(*p)));
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(BM_ToupperLoop);

void BM_QZStrToUpperA(benchmark::State& state) {
  UseUtf8Locale();
  char text[sizeof kFirst];
  for (auto _ : state) {
    std::memcpy(text, kFirst, sizeof kFirst);
    benchmark::DoNotOptimize(QZStrToUpperA(text));
  }
}
BENCHMARK(BM_QZStrToUpperA);

void BM_Strtol(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(std::strtol("  -1234567890", nullptr, 10));
}
BENCHMARK(BM_Strtol);

void BM_QZStrToLA(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(QZStrToLA("  -1234567890", nullptr, 10));
}
BENCHMARK(BM_QZStrToLA);

void BM_Wcstol(benchmark::State& state) {
  UseUtf8Locale();
  for (auto _ : state) benchmark::DoNotOptimize(std::wcstol(L"  -1234567890", nullptr, 10));
}
BENCHMARK(BM_Wcstol);

void BM_QZStrToLW(benchmark::State& state) {
  UseUtf8Locale();
  for (auto _ : state) benchmark::DoNotOptimize(QZStrToLW(u"  -1234567890", nullptr, 10));
}
BENCHMARK(BM_QZStrToLW);

void BM_Strncpy(benchmark::State& state) {
  char buffer[64];
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::strncpy(buffer, kFirst, sizeof buffer - 1));
    buffer[sizeof buffer - 1] = 0;
  }
}
BENCHMARK(BM_Strncpy);

void BM_QZStrNZCpyA(benchmark::State& state) {
  char buffer[64];
  for (auto _ : state) benchmark::DoNotOptimize(QZStrNZCpyA(buffer, sizeof buffer, kFirst, SIZE_MAX));
}
BENCHMARK(BM_QZStrNZCpyA);

void BM_Wcslen(benchmark::State& state) {
  const wchar_t* text = L"Build-Server-07.Example.Internal";
  for (auto _ : state) benchmark::DoNotOptimize(std::wcslen(text));
}
BENCHMARK(BM_Wcslen);

void BM_QZStrLenW(benchmark::State& state) {
  const QZWCHAR* text = u"Build-Server-07.Example.Internal";
  for (auto _ : state) benchmark::DoNotOptimize(QZStrLenW(text));
}
BENCHMARK(BM_QZStrLenW);

}  // namespace
