// rwlock_bench.cpp - the reader/writer lock and threads beside their pthread peers: an
// uncontended read pair and write pair against pthread_rwlock_t, a re-entered read pair, and
// QZThreadCreate+QZThreadJoin against pthread_create+pthread_join.
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <cstdint>
#include <thread>

#include "qzcore.h"

namespace {

// glibc leaves out the atomic instructions of its locks while a process has only one thread; a
// process that uses a lock library never has only one, so every figure is taken after a second
// thread has existed.
const bool g_multiThreaded = [] {
  std::thread([] {}).join();
  return true;
}();

void BM_PthreadRWLockReadPair(benchmark::State& state) {
  pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
  for (auto _ : state) {
    pthread_rwlock_rdlock(&lock);
    pthread_rwlock_unlock(&lock);
  }
  pthread_rwlock_destroy(&lock);
}
BENCHMARK(BM_PthreadRWLockReadPair);

void BM_QZRWLockReadPair(benchmark::State& state) {
  QZRWLockHandle lock;
  QZRWLockCreate("bench", 0, &lock);
  for (auto _ : state) {
    QZRWLockAcquireRead(lock);
    QZRWLockReleaseRead(lock);
  }
  QZRWLockDestroy(lock);
}
BENCHMARK(BM_QZRWLockReadPair);

// A thread that already holds a read lock takes another: the re-entry path, one mutex only.
void BM_QZRWLockReenteredReadPair(benchmark::State& state) {
  QZRWLockHandle lock;
  QZRWLockCreate("bench", 0, &lock);
  QZRWLockAcquireRead(lock);
  for (auto _ : state) {
    QZRWLockAcquireRead(lock);
    QZRWLockReleaseRead(lock);
  }
  QZRWLockReleaseRead(lock);
  QZRWLockDestroy(lock);
}
BENCHMARK(BM_QZRWLockReenteredReadPair);

void BM_PthreadRWLockWritePair(benchmark::State& state) {
  pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
  for (auto _ : state) {
    pthread_rwlock_wrlock(&lock);
    pthread_rwlock_unlock(&lock);
  }
  pthread_rwlock_destroy(&lock);
}
BENCHMARK(BM_PthreadRWLockWritePair);

void BM_QZRWLockWritePair(benchmark::State& state) {
  QZRWLockHandle lock;
  QZRWLockCreate("bench", 0, &lock);
  for (auto _ : state) {
    QZRWLockAcquireWrite(lock);
    QZRWLockReleaseWrite(lock);
  }
  QZRWLockDestroy(lock);
}
BENCHMARK(BM_QZRWLockWritePair);

void* NothingPthread(void*) { return nullptr; }
uintptr_t NothingQZ(void*) { return 0; }

void BM_PthreadCreateJoin(benchmark::State& state) {
  for (auto _ : state) {
    pthread_t thread;
    pthread_create(&thread, nullptr, &NothingPthread, nullptr);
    pthread_join(thread, nullptr);
  }
}
BENCHMARK(BM_PthreadCreateJoin);

void BM_QZThreadCreateJoin(benchmark::State& state) {
  for (auto _ : state) {
    QZThreadHandle thread;
    uint32_t id;
    QZThreadCreate(&NothingQZ, nullptr, nullptr, 0, &thread, &id);
    QZThreadJoin(thread, nullptr);
  }
}
BENCHMARK(BM_QZThreadCreateJoin);

}  // namespace
