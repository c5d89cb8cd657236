// lock_counter.cpp - a C++ caller of QZCore: threads sharing a counter under a QZCore mutex (with
// a small RAII guard, as C++ callers wrap it), the lock's statistics, the option parser, and the
// this-computer test. Exits 1 if a result is not what the library promises.
#include <qzcore.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

class CLockGuard {
 public:
  explicit CLockGuard(QZMutexHandle mutex) : m_mutex(mutex) { QZMutexAcquire(m_mutex); }
  ~CLockGuard() { QZMutexRelease(m_mutex); }
  CLockGuard(const CLockGuard&) = delete;
  CLockGuard& operator=(const CLockGuard&) = delete;

 private:
  QZMutexHandle m_mutex;
};

int g_failures = 0;

void Check(bool ok, const std::string& what) {
  std::printf("%-58s %s\n", what.c_str(), ok ? "ok" : "FAILED");
  if (!ok) ++g_failures;
}

}  // namespace

int main(int argc, char** argv) {
  // --threads N (default 4): read with the library's option parser.
  int threads = 4;
  static const QZLongOption options[] = {{"threads", 1, 't'}, {nullptr, 0, 0}};
  for (int32_t option; (option = QZGetOption(argc, argv, options, nullptr)) != -1;) {
    if (option != 't') return 2;  // the parser has printed what was wrong
    threads = static_cast<int>(QZStrToLA(QZGetOptionArgument, nullptr, 10));
  }
  if (threads < 1 || threads > 64) threads = 4;

  QZMutexHandle mutex;
  Check(QZMutexCreate("example.shared", QZ_MUTEX_STATS, &mutex) == QZ_S_OK, "QZMutexCreate with statistics");
  constexpr int kRounds = 10000;
  long counter = 0;
  std::vector<std::thread> workers;
  for (int t = 0; t < threads; ++t) {
    workers.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        CLockGuard guard(mutex);
        ++counter;
      }
    });
  }
  for (auto& w : workers) w.join();
  Check(counter == static_cast<long>(threads) * kRounds, std::to_string(threads) + " threads x 10000 increments, none lost");

  QZMutexStats stats{};
  Check(QZGetLockStats(mutex, &stats) == QZ_S_OK && stats.acquireCount == counter && stats.heldCount == counter,
        "the lock counted every acquire and release");
  Check(stats.contentionCount >= 0 && stats.contentionCount <= stats.acquireCount, "contention within the acquires");
  QZMutexDestroy(mutex);

  Check(QZIsThisMyComputerA("localhost") != 0, "QZIsThisMyComputerA(\"localhost\")");
  Check(QZIsThisMyComputerA("192.0.2.1") == 0, "QZIsThisMyComputerA(a documentation address) is 0");

  std::printf("%s\n", g_failures == 0 ? "all checks passed" : "some checks FAILED");
  return g_failures == 0 ? 0 : 1;
}
