// tour_named.cpp - tour step: a named semaphore and shared memory shared with a child process,
// which the step starts from this same program (the hidden command "tour-named-child").
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "qzcore.h"
#include "tour.h"

extern char** environ;

namespace {

using qztool::Show;

constexpr char kChildCommand[] = "tour-named-child";

std::string Code(QZRESULT hr) { return qztool::Result(hr); }

// The child: joins both objects, leaves a line in the memory and posts the semaphore.
int NamedChild(int argc, char** argv) {
  if (argc != 1) return 2;
  QZSemaphoreHandle sem;
  if (QZNamedSemOpen(argv[0], 0, &sem) != 0) return 1;
  QZSharedMemHandle shm;
  const QZRESULT joined = QZSharedMemOpen(argv[0], QZ_SHM_CREATE, 0, 4096, &shm);
  void* view = nullptr;
  if (joined != 0 || QZSharedMemAttach(shm, QZ_SHM_WRITE, &view) != 0) return 1;
  std::snprintf(static_cast<char*>(view), 4096, "hello from process %d (create path gave %s)",
                static_cast<int>(getpid()), Code(joined).c_str());
  QZSharedMemDetach(view);
  QZSharedMemClose(shm);
  const QZRESULT posted = QZNamedSemPost(sem);
  QZNamedSemClose(sem);
  return posted == 0 ? 0 : 1;
}
QZ_HIDDEN_COMMAND(kChildCommand, NamedChild);

void TourNamed() {
  const std::string name = "qzcore-tour-" + std::to_string(getpid());
  QZSemaphoreHandle sem;
  Show("QZNamedSemOpen(\"" + name + "\", 0)", Code(QZNamedSemOpen(name.c_str(), 0, &sem)));
  Show("QZNamedSemTryWait (count 0)", Code(QZNamedSemTryWait(sem)));
  QZSharedMemHandle shm;
  const QZRESULT opened = QZSharedMemOpen(name.c_str(), QZ_SHM_CREATE, 0, 4096, &shm);
  Show("QZSharedMemOpen(CREATE, 4096 bytes)",
       Code(opened) + (opened == QZ_S_CREATED ? " (created)" : opened == 0 ? " (joined)" : ""));
  QZSharedMemHandle reader;
  QZSharedMemOpen(name.c_str(), QZ_SHM_READ, 0, 0, &reader);
  void* view = nullptr;
  Show("QZSharedMemAttach(read-only handle, WRITE)",
       Code(QZSharedMemAttach(reader, QZ_SHM_WRITE, &view)));
  QZSharedMemClose(reader);

  std::string self = "/proc/self/exe";
  std::string command = kChildCommand;
  std::string argument = name;
  char* childArgv[] = {self.data(), command.data(), argument.data(), nullptr};
  pid_t pid;
  if (posix_spawn(&pid, self.c_str(), nullptr, nullptr, childArgv, environ) != 0) {
    Show("start the child", "failed");
  } else {
    // Polled rather than waited for without limit, so that a child that fails ends the wait.
    int status = 0;
    bool exited = false;
    QZRESULT posted = QZ_E_FAIL;
    while ((posted = QZNamedSemTryWait(sem)) != 0 && !exited) {
      exited = waitpid(pid, &status, WNOHANG) == pid;
      if (!exited) usleep(1000);
    }
    Show("QZNamedSemTryWait until the child has posted", Code(posted));
    if (QZSharedMemAttach(shm, QZ_SHM_READ, &view) == 0) {
      Show("the shared memory now reads", static_cast<const char*>(view));
      QZSharedMemDetach(view);
    }
    if (!exited) waitpid(pid, &status, 0);
    Show("the child's exit code", std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1));
  }
  QZSharedMemClose(shm);
  const QZRESULT firstPost = QZNamedSemPost(sem);
  const QZRESULT secondPost = QZNamedSemPost(sem);
  int taken = 0;
  while (QZNamedSemTryWait(sem) == 0) ++taken;
  Show("QZNamedSemPost twice, then QZNamedSemTryWait until it fails",
       Code(firstPost) + ", " + Code(secondPost) + ", " + std::to_string(taken) + " taken");
  Show("QZNamedSemClose (the last holder removes the name)", Code(QZNamedSemClose(sem)));
}

}  // namespace

QZ_TOUR_STEP(25, "Named semaphores and shared memory", TourNamed);
