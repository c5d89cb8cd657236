// tour_sync.cpp - tour step: plain and checked mutexes, and a contended mutex with statistics.
#include <string>
#include <thread>
#include <vector>

#include "qzcore.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

std::string Code(QZRESULT hr) { return qztool::Result(hr); }

void TourMutexes() {
  QZMutexHandle plain;
  Show("QZMutexCreate(\"tour.plain\", 0)", Code(QZMutexCreate("tour.plain", 0, &plain)));
  QZMutexAcquire(plain);
  Show("QZMutexTryAcquire by the holder (recursive)", Code(QZMutexTryAcquire(plain)));
  QZMutexRelease(plain);
  QZMutexRelease(plain);
  QZMutexStats stats;
  Show("QZGetLockStats on a plain mutex", Code(QZGetLockStats(plain, &stats)));
  Show("QZMutexDestroy(plain)", std::to_string(QZMutexDestroy(plain)) + " references left");

  QZMutexHandle checked;
  QZMutexCreate("tour.checked", QZ_MUTEX_CHECKED | QZ_MUTEX_NONRECURSIVE, &checked);
  QZMutexAcquire(checked);
  Show("checked non-recursive: acquire again by its owner", Code(QZMutexAcquire(checked)));
  Show("QZMutexAssertOwnership(held, expected 1)", std::to_string(QZMutexAssertOwnership(checked, 1)));
  QZMutexRelease(checked);
  Show("checked: release with nothing held", Code(QZMutexRelease(checked)));
  QZMutexDestroy(checked);
}

void TourContention() {
  QZMutexHandle mutex;
  QZMutexCreate("tour.contended", QZ_MUTEX_STATS, &mutex);
  constexpr int kThreads = 4;
  constexpr int kRounds = 20000;
  std::vector<std::thread> threads;
  long counter = 0;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        QZMutexAcquire(mutex);
        ++counter;
        QZMutexRelease(mutex);
      }
    });
  }
  for (auto& t : threads) t.join();
  QZMutexStats stats;
  QZGetLockStats(mutex, &stats);
  Show("4 threads x 20000 acquires of a statistics mutex", "counter " + std::to_string(counter));
  Show("  acquireCount / heldCount", std::to_string(stats.acquireCount) + " / " + std::to_string(stats.heldCount));
  Show("  contentionCount (acquires that waited)", std::to_string(stats.contentionCount));
  Show("  maxAcquireTime / maxHeldTime (us)", std::to_string(stats.maxAcquireTime) + " / " + std::to_string(stats.maxHeldTime));
  Show("QZMutexDestroy(statistics mutex): retired, kept", std::to_string(QZMutexDestroy(mutex)));
  Show("QZResetLockStats()", Code(QZResetLockStats()));
}

void TourSync() {
  TourMutexes();
  TourContention();
}

}  // namespace

QZ_TOUR_STEP(20, "Mutexes", TourSync);
