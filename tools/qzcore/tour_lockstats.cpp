// tour_lockstats.cpp - tour step: a small contended workload on mutexes with statistics, dumped to
// a file in a temporary directory, and the file shown.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "qzcore.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

void TourLockStats() {
  QZResetLockStats();
  QZMutexHandle shared, retired;
  QZMutexCreate("tour.shared", QZ_MUTEX_STATS, &shared);
  QZMutexCreate("tour.retired", QZ_MUTEX_STATS | QZ_MUTEX_CHECKED, &retired);
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) {
        QZMutexAcquire(shared);
        QZMutexRelease(shared);
      }
      QZMutexAcquire(retired);
      QZMutexRelease(retired);
    });
  }
  for (auto& t : threads) t.join();
  QZMutexDestroy(retired);  // retired: still in the dump

  const char* tmp = std::getenv("TMPDIR");
  std::string dir = std::string(tmp != nullptr && *tmp != 0 ? tmp : "/tmp") + "/qzcore-tour-XXXXXX";
  if (mkdtemp(dir.data()) == nullptr) {
    Show("mkdtemp", "failed");
    return;
  }
  const std::string file = dir + "/qzlockstats.csv";
  const std::u16string path(file.begin(), file.end());
  Show("QZDumpLockStats(\"tour\", " + file + ")", Hex(static_cast<uint32_t>(QZDumpLockStats("tour", path.c_str()))));
  const std::string missing = dir + "/missing/qzlockstats.csv";
  const std::u16string bad(missing.begin(), missing.end());
  Show("QZDumpLockStats into a missing directory", Hex(static_cast<uint32_t>(QZDumpLockStats("tour", bad.c_str()))));
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) std::printf("    | %s\n", line.c_str());
  std::remove(file.c_str());
  rmdir(dir.c_str());
  QZMutexDestroy(shared);
  QZResetLockStats();
}

}  // namespace

QZ_TOUR_STEP(21, "Lock statistics", TourLockStats);
