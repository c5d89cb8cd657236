// named_bench.cpp - the named semaphore beside a POSIX named semaphore (sem_open): an uncontended
// post/wait pair, and a ping-pong between two threads where every wait sleeps and every post wakes.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <semaphore.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "qzcore.h"

namespace {

// glibc takes its multi-threaded paths only once a second thread has existed; a process that
// shares semaphores is never single-threaded, so every figure is taken after one.
const bool g_multiThreaded = [] {
  std::thread([] {}).join();
  return true;
}();

std::string BenchName(const char* what) {
  return std::string("qzbench-") + what + "-" + std::to_string(getpid());
}

// The two semaphores behind one interface, so both run the same loops.
struct PosixSem {
  explicit PosixSem(const std::string& name) : m_name("/" + name) {
    m_sem = sem_open(m_name.c_str(), O_CREAT, 0666, 0);
  }
  ~PosixSem() {
    sem_close(m_sem);
    sem_unlink(m_name.c_str());
  }
  void Post() { sem_post(m_sem); }
  void Wait() { sem_wait(m_sem); }
  std::string m_name;
  sem_t* m_sem;
};

struct QZSem {
  explicit QZSem(const std::string& name) { QZNamedSemOpen(name.c_str(), 0, &m_sem); }
  ~QZSem() { QZNamedSemClose(m_sem); }
  void Post() { QZNamedSemPost(m_sem); }
  void Wait() { QZNamedSemWait(m_sem); }
  QZSemaphoreHandle m_sem;
};

template <class Sem>
void PostWaitPair(benchmark::State& state) {
  Sem sem(BenchName("pair"));
  for (auto _ : state) {
    sem.Post();
    sem.Wait();
  }
}

template <class Sem>
void PingPong(benchmark::State& state) {
  Sem ping(BenchName("ping"));
  Sem pong(BenchName("pong"));
  const int64_t rounds = static_cast<int64_t>(state.max_iterations);
  std::thread partner([&] {
    for (int64_t i = 0; i < rounds; ++i) {
      ping.Wait();
      pong.Post();
    }
  });
  for (auto _ : state) {
    ping.Post();
    pong.Wait();
  }
  partner.join();
}

void BM_PosixNamedSemPostWait(benchmark::State& state) { PostWaitPair<PosixSem>(state); }
void BM_QZNamedSemPostWait(benchmark::State& state) { PostWaitPair<QZSem>(state); }
void BM_PosixNamedSemPingPong(benchmark::State& state) { PingPong<PosixSem>(state); }
void BM_QZNamedSemPingPong(benchmark::State& state) { PingPong<QZSem>(state); }

BENCHMARK(BM_PosixNamedSemPostWait);
BENCHMARK(BM_QZNamedSemPostWait);
BENCHMARK(BM_PosixNamedSemPingPong)->Iterations(100000)->UseRealTime();
BENCHMARK(BM_QZNamedSemPingPong)->Iterations(100000)->UseRealTime();

}  // namespace
