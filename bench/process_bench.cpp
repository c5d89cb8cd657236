// process_bench.cpp - starting /bin/true and waiting for it: QZProcessCreate plus QZProcessJoin
// beside posix_spawn plus waitpid, with and without pipes for the three streams.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "qzcore.h"

extern char** environ;

namespace {

// A process that uses the library has more than one thread; take every figure after a second
// thread has existed, so glibc is on its multi-threaded paths.
const bool g_multiThreaded = [] {
  std::thread([] {}).join();
  return true;
}();

void BM_PosixSpawnWaitpid(benchmark::State& state) {
  char program[] = "/bin/true";
  char* argv[] = {program, nullptr};
  for (auto _ : state) {
    pid_t pid;
    if (posix_spawn(&pid, program, nullptr, nullptr, argv, environ) != 0)
      state.SkipWithError("posix_spawn");
    int status;
    waitpid(pid, &status, 0);
  }
}
BENCHMARK(BM_PosixSpawnWaitpid)->UseRealTime();

void BM_QZProcessCreateJoin(benchmark::State& state) {
  for (auto _ : state) {
    QZProcessHandle process;
    if (QZProcessCreate(u"/bin/true", nullptr, nullptr, nullptr, 0, nullptr, &process) != 0) {
      state.SkipWithError("QZProcessCreate");
    }
    uint32_t code;
    QZProcessJoin(process, &code);
  }
}
BENCHMARK(BM_QZProcessCreateJoin)->UseRealTime();

// With pipes: posix_spawn with three pipes made and duplicated by hand.
void BM_PosixSpawnPipesWaitpid(benchmark::State& state) {
  char program[] = "/bin/true";
  char* argv[] = {program, nullptr};
  for (auto _ : state) {
    int pipes[3][2];
    for (auto& p : pipes) pipe2(p, O_CLOEXEC);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipes[0][0], 0);
    posix_spawn_file_actions_adddup2(&actions, pipes[1][1], 1);
    posix_spawn_file_actions_adddup2(&actions, pipes[2][1], 2);
    pid_t pid;
    if (posix_spawn(&pid, program, &actions, nullptr, argv, environ) != 0)
      state.SkipWithError("posix_spawn");
    posix_spawn_file_actions_destroy(&actions);
    for (auto& p : pipes) {
      close(p[0]);
      close(p[1]);
    }
    int status;
    waitpid(pid, &status, 0);
  }
}
BENCHMARK(BM_PosixSpawnPipesWaitpid)->UseRealTime();

void BM_QZProcessCreatePipesJoin(benchmark::State& state) {
  for (auto _ : state) {
    QZFileHandle streams[3] = {-1, -1, -1};
    QZProcessHandle process;
    if (QZProcessCreate(u"/bin/true", nullptr, nullptr, nullptr, 0, streams, &process) != 0) {
      state.SkipWithError("QZProcessCreate");
    }
    for (QZFileHandle end : streams) close(static_cast<int>(end));
    uint32_t code;
    QZProcessJoin(process, &code);
  }
}
BENCHMARK(BM_QZProcessCreatePipesJoin)->UseRealTime();

}  // namespace
