// mutex_bench.cpp - uncontended acquire/release pairs: the library's mutexes beside a recursive
// pthread mutex and std::recursive_mutex, and a statistics-keeping mutex beside a plain one.
#include <benchmark/benchmark.h>
#include <pthread.h>
#include <time.h>

#include <mutex>
#include <thread>

#include "qzcore.h"

namespace {

// glibc leaves out the atomic instructions of its locks while a process has only one thread. A
// process that uses a lock library never has only one, so every figure here is taken after a
// second thread has existed.
const bool g_multiThreaded = [] {
  std::thread([] {}).join();
  return true;
}();

void BM_PthreadRecursivePair(benchmark::State& state) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_t mutex;
  pthread_mutex_init(&mutex, &attr);
  for (auto _ : state) {
    pthread_mutex_lock(&mutex);
    pthread_mutex_unlock(&mutex);
  }
  pthread_mutex_destroy(&mutex);
}
BENCHMARK(BM_PthreadRecursivePair);

void BM_StdRecursiveMutexPair(benchmark::State& state) {
  std::recursive_mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}
BENCHMARK(BM_StdRecursiveMutexPair);

void QZPair(benchmark::State& state, uint32_t flags) {
  QZMutexHandle mutex;
  QZMutexCreate("bench", flags, &mutex);
  for (auto _ : state) {
    QZMutexAcquire(mutex);
    QZMutexRelease(mutex);
  }
  QZMutexDestroy(mutex);
  QZResetLockStats();
}

void BM_QZMutexPlainPair(benchmark::State& state) { QZPair(state, 0); }
BENCHMARK(BM_QZMutexPlainPair);

void BM_QZMutexSpinPair(benchmark::State& state) { QZPair(state, QZ_MUTEX_SPIN); }
BENCHMARK(BM_QZMutexSpinPair);

void BM_QZMutexCheckedPair(benchmark::State& state) { QZPair(state, QZ_MUTEX_CHECKED); }
BENCHMARK(BM_QZMutexCheckedPair);

void BM_QZMutexStatsPair(benchmark::State& state) { QZPair(state, QZ_MUTEX_STATS); }
BENCHMARK(BM_QZMutexStatsPair);

// What a statistics pair costs when it times itself with the system's monotonic clock: the plain
// pair plus the three clock reads of an acquire and a release. The library's statistics clock is
// the processor's counter instead.
void BM_QZMutexPlainPairWithThreeClockReads(benchmark::State& state) {
  QZMutexHandle mutex;
  QZMutexCreate("bench", 0, &mutex);
  struct timespec ts;
  for (auto _ : state) {
    clock_gettime(CLOCK_MONOTONIC, &ts);
    QZMutexAcquire(mutex);
    clock_gettime(CLOCK_MONOTONIC, &ts);
    benchmark::DoNotOptimize(ts);
    clock_gettime(CLOCK_MONOTONIC, &ts);
    QZMutexRelease(mutex);
  }
  QZMutexDestroy(mutex);
}
BENCHMARK(BM_QZMutexPlainPairWithThreeClockReads);

// Two threads on one mutex: the library's plain mutex against the raw recursive pthread mutex.
pthread_mutex_t g_sharedPthread;
QZMutexHandle g_sharedQZ;

void BM_PthreadRecursiveContended(benchmark::State& state) {
  if (state.thread_index() == 0) {
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&g_sharedPthread, &attr);
  }
  for (auto _ : state) {
    pthread_mutex_lock(&g_sharedPthread);
    pthread_mutex_unlock(&g_sharedPthread);
  }
}
BENCHMARK(BM_PthreadRecursiveContended)->Threads(2)->UseRealTime();

void BM_QZMutexPlainContended(benchmark::State& state) {
  if (state.thread_index() == 0) QZMutexCreate("bench.contended", 0, &g_sharedQZ);
  for (auto _ : state) {
    QZMutexAcquire(g_sharedQZ);
    QZMutexRelease(g_sharedQZ);
  }
}
BENCHMARK(BM_QZMutexPlainContended)->Threads(2)->UseRealTime();

}  // namespace
