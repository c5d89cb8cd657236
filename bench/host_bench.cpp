// host_bench.cpp - a repeated this-computer test for a name already in the cache, beside a plain
// std::map lookup of the same key (the cache adds a copy, a fold and an uncontended lock).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <string>

#include "qzcore/qzhost.h"

namespace {

void BM_QZIsThisMyComputerCached(benchmark::State& state) {
  const char* name = "198.51.100.7";
  QZIsThisMyComputerA(name);  // resolved once, then answered from the cache
  for (auto _ : state) benchmark::DoNotOptimize(QZIsThisMyComputerA(name));
}
BENCHMARK(BM_QZIsThisMyComputerCached);

void BM_StdMapLookup(benchmark::State& state) {
  std::map<std::string, int16_t> names{{"localhost", 1}, {"127.0.0.1", 1}, {"::1", 1}, {"", 1},
                                       {"BUILD-HOST", 1}, {"198.51.100.7", 0}};
  const char* name = "198.51.100.7";
  for (auto _ : state) {
    const auto found = names.find(std::string(name));
    benchmark::DoNotOptimize(found->second);
  }
}
BENCHMARK(BM_StdMapLookup);

}  // namespace
