// file_bench.cpp - copying a 64 MiB file: QZFileCopy (16 KiB through a heap buffer, the library's
// contract) beside copy_file_range (the kernel copies, no user-space buffer) and beside a plain
// 16 KiB read/write loop (the same steps without the library).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "qzcore.h"

namespace {

constexpr size_t kFileSize = 64u << 20;

// Every figure taken with a second thread having existed, as in a process that uses the library.
const bool g_multiThreaded = [] {
  std::thread([] {}).join();
  return true;
}();

struct Files {
  std::string dir, source, destination;
  Files() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/qzcore-bench-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    dir = pattern;
    source = dir + "/source";
    destination = dir + "/destination";
    std::vector<char> block(1 << 20);
    for (size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 2654435761u >> 24);
    const int fd = open(source.c_str(), O_CREAT | O_WRONLY | O_TRUNC | O_CLOEXEC, 0644);
    for (size_t done = 0; done < kFileSize; done += block.size()) {
      if (write(fd, block.data(), block.size()) != static_cast<ssize_t>(block.size())) std::abort();
    }
    close(fd);
  }
  ~Files() {
    unlink(source.c_str());
    unlink(destination.c_str());
    rmdir(dir.c_str());
  }
};

Files& TheFiles() {
  static Files files;
  return files;
}

std::u16string Wide(const std::string& text) { return std::u16string(text.begin(), text.end()); }

void Finish(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kFileSize));
}

void BM_QZFileCopy(benchmark::State& state) {
  const std::u16string from = Wide(TheFiles().source);
  const std::u16string to = Wide(TheFiles().destination);
  for (auto _ : state) {
    if (QZFileCopy(from.c_str(), to.c_str(), QZFILE_CREATE | QZFILE_TRUNCATE, 0x1B6, nullptr) < 0) {
      state.SkipWithError("QZFileCopy failed");
    }
  }
  Finish(state);
}
BENCHMARK(BM_QZFileCopy)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CopyFileRange(benchmark::State& state) {
  for (auto _ : state) {
    const int in = open(TheFiles().source.c_str(), O_RDONLY | O_CLOEXEC);
    const int out = open(TheFiles().destination.c_str(), O_CREAT | O_WRONLY | O_TRUNC | O_CLOEXEC, 0644);
    size_t left = kFileSize;
    while (left > 0) {
      const ssize_t n = copy_file_range(in, nullptr, out, nullptr, left, 0);
      if (n <= 0) {
        state.SkipWithError("copy_file_range failed");
        break;
      }
      left -= static_cast<size_t>(n);
    }
    close(in);
    close(out);
  }
  Finish(state);
}
BENCHMARK(BM_CopyFileRange)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ReadWriteLoop16K(benchmark::State& state) {
  std::vector<char> buffer(16384);
  for (auto _ : state) {
    const int in = open(TheFiles().source.c_str(), O_RDONLY | O_CLOEXEC);
    const int out = open(TheFiles().destination.c_str(), O_CREAT | O_WRONLY | O_TRUNC | O_CLOEXEC, 0644);
    ssize_t n;
    while ((n = read(in, buffer.data(), buffer.size())) > 0) {
      if (write(out, buffer.data(), static_cast<size_t>(n)) != n) state.SkipWithError("write failed");
    }
    close(in);
    close(out);
  }
  Finish(state);
}
BENCHMARK(BM_ReadWriteLoop16K)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
