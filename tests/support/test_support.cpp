// test_support.cpp - the shared test helpers (see test_support.h).
#include "support/test_support.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

extern char** environ;

namespace qztest {

ScopedEnv::ScopedEnv(const char* name, const char* value) : m_name(name) {
  const char* old = getenv(name);
  m_had = old != nullptr;
  if (m_had) m_old = old;
  if (value != nullptr) setenv(name, value, 1);
  else unsetenv(name);
}

ScopedEnv::~ScopedEnv() {
  if (m_had) setenv(m_name.c_str(), m_old.c_str(), 1);
  else unsetenv(m_name.c_str());
}

TempDir::TempDir() {
  const char* base = getenv("TMPDIR");
  std::string pattern = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/qzcore-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) abort();
  m_path = pattern;
}

TempDir::~TempDir() {
  std::error_code ec;
  std::filesystem::remove_all(m_path, ec);
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::string UniqueName(const std::string& prefix) {
  static std::atomic<int> counter{0};
  return prefix + "-" + std::to_string(getpid()) + "-" + std::to_string(counter.fetch_add(1));
}

std::string Narrow(const std::u16string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t cp = text[i];
    if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < text.size()) cp = 0x10000 + ((cp - 0xD800) << 10) + (text[++i] - 0xDC00);
    if (cp < 0x80) {
      out += static_cast<char>(cp);
    } else if (cp < 0x800) {
      out += static_cast<char>(0xC0 | (cp >> 6));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      out += static_cast<char>(0xE0 | (cp >> 12));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (cp >> 18));
      out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    }
  }
  return out;
}

namespace {

// Reaps `pid` and records how it ended: its exit code, or 128 + the signal that ended it.
void WaitForChild(pid_t pid, ChildResult& result) {
  int status = 0;
  waitpid(pid, &status, 0);
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) {
    result.signal = WTERMSIG(status);
    result.exitCode = 128 + result.signal;
  }
}

}  // namespace

bool IsChild() {
  const char* v = getenv("QZTEST_CHILD");
  return v != nullptr && std::string(v) == "1";
}

ChildResult RunSelf(const std::string& test, const std::vector<std::string>& env) {
  ChildResult result;
  int outPipe[2];
  int errPipe[2];
  if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errPipe, O_CLOEXEC) != 0) return result;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, outPipe[1], 1);
  posix_spawn_file_actions_adddup2(&actions, errPipe[1], 2);
  std::vector<std::string> envStrings;
  for (char** e = environ; *e != nullptr; ++e) envStrings.emplace_back(*e);
  envStrings.emplace_back("QZTEST_CHILD=1");
  for (const auto& e : env) envStrings.push_back(e);
  std::vector<char*> envp;
  for (auto& e : envStrings) envp.push_back(e.data());
  envp.push_back(nullptr);
  std::string self = "/proc/self/exe";
  std::string filter = "--gtest_filter=" + test;
  std::string exe = std::filesystem::read_symlink(self).string();
  char* argv[] = {exe.data(), filter.data(), nullptr};
  pid_t pid;
  const int rc = posix_spawn(&pid, exe.c_str(), &actions, nullptr, argv, envp.data());
  posix_spawn_file_actions_destroy(&actions);
  close(outPipe[1]);
  close(errPipe[1]);
  if (rc == 0) {
    struct pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int open = 2;
    char buf[4096];
    while (open > 0 && poll(fds, 2, -1) > 0) {
      for (int i = 0; i < 2; ++i) {
        if (fds[i].fd < 0 || (fds[i].revents & (POLLIN | POLLHUP)) == 0) continue;
        const ssize_t n = read(fds[i].fd, buf, sizeof buf);
        if (n <= 0) {
          fds[i].fd = -1;
          --open;
        } else {
          (i == 0 ? result.out : result.err).append(buf, static_cast<size_t>(n));
        }
      }
    }
    WaitForChild(pid, result);
  }
  close(outPipe[0]);
  close(errPipe[0]);
  return result;
}

}  // namespace qztest

#include <pty.h>

namespace qztest {

ChildResult RunSelfOnTerminal(const std::string& test, const std::vector<std::string>& env,
                              const std::string& prompt, const std::vector<std::string>& answers) {
  ChildResult result;
  std::string exe = std::filesystem::read_symlink("/proc/self/exe").string();
  std::string filter = "--gtest_filter=" + test;
  int master = -1;
  const pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
  if (pid < 0) return result;
  if (pid == 0) {
    setenv("QZTEST_CHILD", "1", 1);
    for (const auto& e : env) putenv(strdup(e.c_str()));
    char* argv[] = {exe.data(), filter.data(), nullptr};
    execv(exe.c_str(), argv);
    _exit(127);
  }
  size_t answered = 0;
  size_t searchFrom = 0;
  char buf[4096];
  for (;;) {
    struct pollfd pfd = {master, POLLIN, 0};
    if (poll(&pfd, 1, 30000) <= 0) break;  // a child that hangs for 30 s is a failure anyway
    const ssize_t n = read(master, buf, sizeof buf);
    if (n <= 0) break;  // EIO once the child has closed the terminal
    result.out.append(buf, static_cast<size_t>(n));
    size_t at;
    while ((at = result.out.find(prompt, searchFrom)) != std::string::npos) {
      searchFrom = at + prompt.size();
      if (answered < answers.size()) {
        const std::string line = answers[answered++] + "\n";
        if (write(master, line.data(), line.size()) < 0) break;
      } else {
        close(master);
        master = -1;
        break;
      }
    }
    if (master < 0) break;
  }
  if (master >= 0) close(master);
  WaitForChild(pid, result);
  return result;
}

}  // namespace qztest
