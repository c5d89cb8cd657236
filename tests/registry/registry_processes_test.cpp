// registry_processes_test.cpp - the platform's store shared by processes and threads: writers at
// once lose nothing, a killed writer loses nothing it was told was committed, and no descriptor of
// the store reaches a child.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <set>
#include <thread>

#include "registry_helpers.h"

extern char** environ;

namespace {

using qztest::GetString;
using qztest::SetString;

std::u16string U16(const std::string& text) { return {text.begin(), text.end()}; }

constexpr int kKeys = 25;

// Child: writes its own value under each of the shared keys, in an order of its own.
TEST(RegistryProcessesChild, WriteSharedKeys) {
  if (!qztest::IsChild()) GTEST_SKIP() << "runs as a child of WritersAtOnceLoseNothing";
  const std::string who = getenv("QZTEST_WRITER");
  for (int n = 0; n < kKeys; ++n) {
    const int i = who == "a" ? n : kKeys - 1 - n;  // one walks up, the other down: they meet
    const std::u16string key = U16("Shared\\K" + std::to_string(i));
    ASSERT_EQ(SetString(QZ_HKEY_CONFIG_64, key, U16(who), U16(who + std::to_string(i))), 0);
    ASSERT_EQ(SetString(QZ_HKEY_CONFIG_64, key, u"last", U16(who)), 0);
  }
}

TEST(RegistryProcesses, WritersAtOnceLoseNothing) {
  qztest::TempDir dir;
  qztest::ScopedEnv env("QZCORE_REGISTRY_DIR", dir.path().c_str());
  qztest::ChildResult results[2];
  std::thread writers[2];
  for (int w = 0; w < 2; ++w) {
    writers[w] = std::thread([&results, w] {
      results[w] = qztest::RunSelf("RegistryProcessesChild.WriteSharedKeys", {std::string("QZTEST_WRITER=") + (w == 0 ? "a" : "b")});
    });
  }
  // Meanwhile this process reads and writes the same file from two threads of its own.
  std::thread reader([] {
    for (int i = 0; i < kKeys; ++i) GetString(QZ_HKEY_CONFIG_64, U16("Shared\\K" + std::to_string(i)), u"a");
  });
  for (int i = 0; i < kKeys; ++i) ASSERT_EQ(SetString(QZ_HKEY_CONFIG_64, U16("Shared\\K" + std::to_string(i)), u"p", u"p"), 0);
  reader.join();
  for (auto& t : writers) t.join();
  for (const auto& r : results) ASSERT_EQ(r.exitCode, 0) << r.out << r.err;

  for (int i = 0; i < kKeys; ++i) {
    const std::u16string key = U16("Shared\\K" + std::to_string(i));
    SCOPED_TRACE(i);
    EXPECT_EQ(GetString(QZ_HKEY_CONFIG_64, key, u"a"), U16("a" + std::to_string(i)));
    EXPECT_EQ(GetString(QZ_HKEY_CONFIG_64, key, u"b"), U16("b" + std::to_string(i)));
    EXPECT_EQ(GetString(QZ_HKEY_CONFIG_64, key, u"p"), u"p");
    const std::u16string last = GetString(QZ_HKEY_CONFIG_64, key, u"last");
    EXPECT_TRUE(last == u"a" || last == u"b");
    EXPECT_EQ(qztest::ValueNames(QZ_HKEY_CONFIG_64, key).size(), 4u);
  }
  EXPECT_EQ(qztest::SubKeys(QZ_HKEY_CONFIG_64, u"Shared").size(), static_cast<size_t>(kKeys));
}

// Child: writes until it is killed, telling its parent of each write once it was committed.
TEST(RegistryProcessesChild, WriteUntilKilled) {
  if (!qztest::IsChild()) GTEST_SKIP() << "runs as a child of KilledWriterLosesNothingCommitted";
  for (int i = 0;; ++i) {
    const std::string n = std::to_string(i);
    ASSERT_EQ(SetString(QZ_HKEY_USER, U16("Crash\\K" + n), u"v", U16("value" + n)), 0);
    std::printf("committed %d\n", i);
    std::fflush(stdout);
  }
}

TEST(RegistryProcesses, KilledWriterLosesNothingCommitted) {
  qztest::TempDir dir;
  qztest::ScopedEnv env("QZCORE_REGISTRY_DIR", dir.path().c_str());
  int out[2];
  ASSERT_EQ(pipe2(out, O_CLOEXEC), 0);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  std::vector<std::string> envs;
  for (char** e = environ; *e != nullptr; ++e) envs.emplace_back(*e);
  envs.emplace_back("QZTEST_CHILD=1");
  std::vector<char*> envp;
  for (auto& e : envs) envp.push_back(e.data());
  envp.push_back(nullptr);
  std::string exe = std::filesystem::read_symlink("/proc/self/exe").string();
  std::string filter = "--gtest_filter=RegistryProcessesChild.WriteUntilKilled";
  char* argv[] = {exe.data(), filter.data(), nullptr};
  pid_t pid;
  ASSERT_EQ(posix_spawn(&pid, exe.c_str(), &actions, nullptr, argv, envp.data()), 0);
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);

  // Read reports until enough writes are behind the child, then kill it in the middle of the next.
  std::set<int> committed;
  std::string pending;
  char buffer[256];
  while (committed.size() < 30) {
    const ssize_t n = read(out[0], buffer, sizeof buffer);
    ASSERT_GT(n, 0) << "the writer stopped early";
    pending.append(buffer, static_cast<size_t>(n));
    for (size_t nl; (nl = pending.find('\n')) != std::string::npos; pending.erase(0, nl + 1)) {
      int i;
      if (std::sscanf(pending.c_str(), "committed %d", &i) == 1) committed.insert(i);
    }
  }
  kill(pid, SIGKILL);
  int status = 0;
  waitpid(pid, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  // Reports that were still in the pipe count too.
  for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;) pending.append(buffer, static_cast<size_t>(n));
  for (size_t nl; (nl = pending.find('\n')) != std::string::npos; pending.erase(0, nl + 1)) {
    int i;
    if (std::sscanf(pending.c_str(), "committed %d", &i) == 1) committed.insert(i);
  }
  close(out[0]);

  for (int i : committed) {
    EXPECT_EQ(GetString(QZ_HKEY_USER, U16("Crash\\K" + std::to_string(i)), u"v"), U16("value" + std::to_string(i)));
  }
  // The store is whole: every key there has its value, and the count is the reports' or one more.
  const auto keys = qztest::SubKeys(QZ_HKEY_USER, u"Crash");
  EXPECT_GE(keys.size(), committed.size());
  EXPECT_LE(keys.size(), committed.size() + 1);
}

// A forked child leaves its parent's connection alone and works through one of its own.
TEST(RegistryProcesses, ForkedChildUsesTheStoreBesideItsParent) {
  qztest::TempDir dir;
  qztest::ScopedEnv env("QZCORE_REGISTRY_DIR", dir.path().c_str());
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"Fork", u"parent", u"1"), 0);
  const pid_t pid = fork();
  if (pid == 0) {
    const bool ok = GetString(QZ_HKEY_USER, u"Fork", u"parent") == u"1" &&
                    SetString(QZ_HKEY_USER, u"Fork", u"child", u"2") == 0;
    _exit(ok ? 0 : 1);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(GetString(QZ_HKEY_USER, u"Fork", u"child"), u"2");
  EXPECT_EQ(SetString(QZ_HKEY_USER, u"Fork", u"after", u"3"), 0);
  EXPECT_EQ(qztest::ValueNames(QZ_HKEY_USER, u"Fork"), (std::vector<std::u16string>{u"parent", u"child", u"after"}));
}

TEST(RegistryProcesses, StoreDescriptorsAreCloseOnExec) {
  qztest::TempDir dir;
  qztest::ScopedEnv env("QZCORE_REGISTRY_DIR", dir.path().c_str());
  ASSERT_EQ(SetString(QZ_HKEY_CONFIG, u"Fd", u"v", u"1"), 0);
  ASSERT_EQ(SetString(QZ_HKEY_USER, u"Fd", u"v", u"1"), 0);
  QZRegEnumHandle e;
  ASSERT_EQ(QZRegistryOpenKeyEnum(QZ_HKEY_USER, u"", &e), 0);
  int seen = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code ec;
    const auto target = std::filesystem::read_symlink(entry.path(), ec).string();
    if (ec || target.rfind(dir.path(), 0) != 0) continue;
    const int fd = std::stoi(entry.path().filename().string());
    EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0) << target;
    ++seen;
  }
  QZRegistryCloseEnum(e);
  EXPECT_GE(seen, 4);  // both files, each with its write-ahead log (and index)
}

// Child: removes the first subkey of "Walk" and adds one that sorts after the rest.
TEST(RegistryProcessesChild, ChangeWalkedKey) {
  if (!qztest::IsChild()) GTEST_SKIP() << "runs as a child of WalkSeesAnotherProcessesChanges";
  ASSERT_EQ(QZRegistryDeleteKey(QZ_HKEY_CONFIG, u"Walk\\a"), 0);
  ASSERT_EQ(SetString(QZ_HKEY_CONFIG, u"Walk\\z", u"v", u"1"), 0);
}

// A walk by index sees the key as it is at each step, also when another process changed it: the
// entries move under the index, whoever moved them.
TEST(RegistryProcesses, WalkSeesAnotherProcessesChanges) {
  qztest::TempDir dir;
  qztest::ScopedEnv env("QZCORE_REGISTRY_DIR", dir.path().c_str());
  for (const char16_t* key : {u"Walk\\a", u"Walk\\b", u"Walk\\c"}) ASSERT_EQ(SetString(QZ_HKEY_CONFIG, key, u"v", u"1"), 0);
  QZRegEnumHandle e;
  ASSERT_EQ(QZRegistryOpenKeyEnum(QZ_HKEY_CONFIG, u"Walk", &e), 0);
  char16_t name[8];
  uint32_t size = 8;
  ASSERT_EQ(QZRegistryEnumNextKey(e, name, &size), 0);
  EXPECT_EQ(std::u16string(name), u"a");
  const auto child = qztest::RunSelf("RegistryProcessesChild.ChangeWalkedKey");
  ASSERT_EQ(child.exitCode, 0) << child.out << child.err;
  std::vector<std::u16string> rest;  // now b, c, z: index 1 is c
  for (size = 8; QZRegistryEnumNextKey(e, name, &size) == 0; size = 8) rest.emplace_back(name, size);
  QZRegistryCloseEnum(e);
  EXPECT_EQ(rest, (std::vector<std::u16string>{u"c", u"z"}));
}

}  // namespace
