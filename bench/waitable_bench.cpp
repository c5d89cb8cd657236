// waitable_bench.cpp - an event ping-pong between two threads (each round trip two signals and two
// waits that block) beside the same hand-over built on a pthread mutex and condition variable, and
// the uncontended signal-and-wait of an auto-reset event beside the pthread pair.
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <atomic>
#include <thread>

#include "qzcore.h"

namespace {

void BM_QZEventPingPong(benchmark::State& state) {
  QZEventHandle ping, pong;
  QZEventCreate("ping", 0, &ping);
  QZEventCreate("pong", 0, &pong);
  std::atomic<bool> stop{false};
  std::thread partner([&] {
    for (;;) {
      QZEventWait(ping);
      if (stop.load(std::memory_order_relaxed)) return;
      QZEventSignal(pong);
    }
  });
  for (auto _ : state) {
    QZEventSignal(ping);
    QZEventWait(pong);
  }
  stop = true;
  QZEventSignal(ping);
  partner.join();
  QZEventDestroy(ping);
  QZEventDestroy(pong);
}
BENCHMARK(BM_QZEventPingPong)->UseRealTime();

// The hand-over a caller would write by hand: a turn variable under a mutex, one condition variable
// per direction.
struct CondPair {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  pthread_cond_t toPartner = PTHREAD_COND_INITIALIZER;
  pthread_cond_t toMain = PTHREAD_COND_INITIALIZER;
  int turn = 0;  // 0: main's, 1: partner's, 2: stop
};

void BM_PthreadCondPingPong(benchmark::State& state) {
  CondPair pair;
  std::thread partner([&] {
    pthread_mutex_lock(&pair.mutex);
    for (;;) {
      while (pair.turn == 0) pthread_cond_wait(&pair.toPartner, &pair.mutex);
      if (pair.turn == 2) break;
      pair.turn = 0;
      pthread_cond_signal(&pair.toMain);
    }
    pthread_mutex_unlock(&pair.mutex);
  });
  for (auto _ : state) {
    pthread_mutex_lock(&pair.mutex);
    pair.turn = 1;
    pthread_cond_signal(&pair.toPartner);
    while (pair.turn == 1) pthread_cond_wait(&pair.toMain, &pair.mutex);
    pthread_mutex_unlock(&pair.mutex);
  }
  pthread_mutex_lock(&pair.mutex);
  pair.turn = 2;
  pthread_cond_signal(&pair.toPartner);
  pthread_mutex_unlock(&pair.mutex);
  partner.join();
}
BENCHMARK(BM_PthreadCondPingPong)->UseRealTime();

// One thread: signal then a wait that passes at once.
void BM_QZEventSignalWait(benchmark::State& state) {
  std::thread([] {}).join();  // glibc's multi-threaded paths, as any caller of a lock library has
  QZEventHandle event;
  QZEventCreate("self", 0, &event);
  for (auto _ : state) {
    QZEventSignal(event);
    QZEventWait(event);
  }
  QZEventDestroy(event);
}
BENCHMARK(BM_QZEventSignalWait);

void BM_PthreadCondSignalWait(benchmark::State& state) {
  std::thread([] {}).join();
  CondPair pair;
  for (auto _ : state) {
    pthread_mutex_lock(&pair.mutex);
    pair.turn = 1;
    pthread_cond_signal(&pair.toMain);
    pthread_mutex_unlock(&pair.mutex);
    pthread_mutex_lock(&pair.mutex);
    while (pair.turn != 1) pthread_cond_wait(&pair.toMain, &pair.mutex);
    pair.turn = 0;
    pthread_mutex_unlock(&pair.mutex);
  }
}
BENCHMARK(BM_PthreadCondSignalWait);

}  // namespace
