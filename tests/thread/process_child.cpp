// process_child.cpp - the child role of the process tests and the parent's helpers.
#include "thread/process_child.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "qzcore/qzfile.h"
#include "support/test_support.h"

namespace qztest {
namespace {

constexpr char kArgv[] = "\x02" "ARGV\x02";
constexpr char kEnv[] = "\x02" "ENV\x02";
constexpr char kCwd[] = "\x02" "CWD\x02";
constexpr char kFds[] = "\x02" "FDS\x02";
constexpr char kEnd[] = "\x02" "END\x02";

void Put(const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = write(1, text.data() + done, text.size() - done);
    if (n <= 0) _exit(90);
    done += static_cast<size_t>(n);
  }
}

std::vector<std::string> SplitNul(const std::string& text) {
  std::vector<std::string> parts;
  size_t at = 0;
  while (at < text.size()) {
    const size_t nul = text.find('\0', at);
    parts.push_back(text.substr(at, nul - at));
    if (nul == std::string::npos) break;
    at = nul + 1;
  }
  return parts;
}

std::string Between(const std::string& text, const char* from, const char* to) {
  const size_t start = text.find(from);
  const size_t stop = text.find(to);
  if (start == std::string::npos || stop == std::string::npos || stop < start) return {};
  return text.substr(start + std::strlen(from), stop - start - std::strlen(from));
}

}  // namespace

std::string TestBinary() {
  const char* binary = std::getenv("QZCORE_TEST_BINARY");
  if (binary != nullptr && *binary != '\0') return binary;
  char path[4096];
  const ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  return std::string(path, n > 0 ? static_cast<size_t>(n) : 0);
}

std::u16string Wide(const std::string& text) {
  std::u16string out;
  for (size_t i = 0; i < text.size();) {
    const auto c = static_cast<unsigned char>(text[i]);
    char32_t cp = c;
    size_t length = 1;
    if (c >= 0xF0) { cp = c & 0x07; length = 4; }
    else if (c >= 0xE0) { cp = c & 0x0F; length = 3; }
    else if (c >= 0xC0) { cp = c & 0x1F; length = 2; }
    for (size_t k = 1; k < length && i + k < text.size(); ++k) cp = (cp << 6) | (text[i + k] & 0x3F);
    i += length;
    if (cp >= 0x10000) {
      out += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    } else {
      out += static_cast<char16_t>(cp);
    }
  }
  return out;
}

std::vector<const char16_t*> WideArray(const std::vector<std::u16string>& strings) {
  std::vector<const char16_t*> array;
  for (const auto& s : strings) array.push_back(s.c_str());
  array.push_back(nullptr);
  return array;
}

std::vector<std::string> ChildEnvironment(const std::string& role) {
  return {"GTEST_FILTER=ProcessChild.Role", "QZTEST_CHILD=1", "QZTEST_ROLE=" + role};
}

std::string ReadToEnd(QZFileHandle fd) {
  std::string text;
  char buffer[4096];
  uint32_t got = 0;
  QZRESULT result;
  while ((result = QZFileRead(fd, buffer, sizeof buffer, &got)) == 0) text.append(buffer, got);
  // A pipe whose writers are gone reads as broken (a general failure), as on the first platform.
  EXPECT_TRUE(result == QZ_E_FAIL || result == QZ_E_HANDLE_EOF) << result;
  EXPECT_EQ(QZFileClose(fd), 0);
  return text;
}

void WriteAll(QZFileHandle fd, const std::string& text) {
  uint32_t written = 0;
  EXPECT_EQ(QZFileWrite(fd, text.data(), static_cast<uint32_t>(text.size()), &written), 0);
  EXPECT_EQ(written, text.size());
}

bool ParseReport(const std::string& output, ChildReport* report) {
  if (output.find(kEnd) == std::string::npos) return false;
  report->words = SplitNul(Between(output, kArgv, kEnv));
  report->environment = SplitNul(Between(output, kEnv, kCwd));
  report->directory = Between(output, kCwd, kFds);
  report->descriptors.clear();
  for (const auto& fd : SplitNul(Between(output, kFds, kEnd))) report->descriptors.push_back(std::atoi(fd.c_str()));
  return true;
}

std::vector<int> OpenDescriptors() {
  std::vector<int> fds;
  DIR* dir = opendir("/proc/self/fd");
  if (dir == nullptr) return fds;
  while (const dirent* entry = readdir(dir)) {
    if (entry->d_name[0] == '.') continue;
    const int fd = std::atoi(entry->d_name);
    if (fd != dirfd(dir)) fds.push_back(fd);
  }
  closedir(dir);
  std::sort(fds.begin(), fds.end());
  return fds;
}

bool HasZombieChild() {
  int status = 0;
  return waitpid(-1, &status, WNOHANG) > 0;
}

}  // namespace qztest

// The child: does what QZTEST_ROLE says, then ends without running anything else.
TEST(ProcessChild, Role) {
  if (!qztest::IsChild()) GTEST_SKIP() << "runs only as a child";
  const char* roleText = std::getenv("QZTEST_ROLE");
  const std::string role = roleText != nullptr ? roleText : "";
  if (role == "report") {
    std::string text = qztest::kArgv + qztest::ReadFile("/proc/self/cmdline");
    text += qztest::kEnv + qztest::ReadFile("/proc/self/environ");
    char cwd[4096];
    text += qztest::kCwd + std::string(getcwd(cwd, sizeof cwd) != nullptr ? cwd : "");
    text += qztest::kFds;
    for (int fd : qztest::OpenDescriptors()) text += std::to_string(fd) + '\0';
    text += qztest::kEnd;
    qztest::Put(text);
    _exit(0);
  }
  if (role == "echo") {
    // Standard input to standard output, a mark on standard error, then exit code 7.
    const std::string input = qztest::ReadToEnd(0);
    qztest::Put(input);
    if (write(2, "err", 3) != 3) _exit(91);
    _exit(7);
  }
  if (role == "exit") _exit(std::atoi(std::getenv("QZTEST_EXIT_CODE")));
  _exit(99);
}
