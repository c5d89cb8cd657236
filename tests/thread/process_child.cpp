// process_child.cpp - the child role of the process tests and the parent's helpers.
#include "thread/process_child.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "qzcore/qzfile.h"
#include "support/test_support.h"

namespace qztest {
namespace {

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find(separator, at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

}  // namespace

std::string TestBinary() {
  const char* binary = std::getenv("QZCORE_TEST_BINARY");
  return binary != nullptr ? binary : std::filesystem::read_symlink("/proc/self/exe").string();
}

std::u16string Wide(const std::string& ascii) { return std::u16string(ascii.begin(), ascii.end()); }

std::vector<std::u16string> ChildEnvironment(const std::string& role,
                                             std::vector<std::string> extra) {
  extra.insert(extra.end(),
               {"GTEST_FILTER=ProcessChild.Role", "QZTEST_CHILD=1", "QZTEST_ROLE=" + role});
  std::vector<std::u16string> wide;
  for (const auto& e : extra) wide.push_back(Wide(e));
  return wide;
}

std::vector<const char16_t*> WideArray(const std::vector<std::u16string>& strings) {
  std::vector<const char16_t*> array;
  for (const auto& s : strings) array.push_back(s.c_str());
  array.push_back(nullptr);
  return array;
}

std::string ReadToEnd(QZFileHandle end) {
  std::string text;
  char buffer[4096];
  uint32_t got = 0;
  QZRESULT result;
  while ((result = QZFileRead(end, buffer, sizeof buffer, &got)) == 0) text.append(buffer, got);
  // A pipe whose writers are gone reads as broken (a general failure), as on the first platform.
  EXPECT_TRUE(result == QZ_E_FAIL || result == QZ_E_HANDLE_EOF) << result;
  EXPECT_EQ(QZFileClose(end), 0);
  return text;
}

// The report is "\2", then words, environment, directory and descriptors separated by "\1" (each a
// list separated by NULs), then "\3"; whatever the test framework prints stays outside.
bool ParseReport(const std::string& output, ChildReport* report) {
  const size_t start = output.find('\2');
  const size_t end = output.find('\3');
  if (start == std::string::npos || end == std::string::npos) return false;
  const auto parts = Split(output.substr(start + 1, end - start - 1), '\1');
  if (parts.size() != 4) return false;
  *report = {Split(parts[0], '\0'), Split(parts[1], '\0'), parts[2], Split(parts[3], '\0')};
  return true;
}

std::vector<std::string> OpenDescriptors() {
  const std::string own = "/proc/" + std::to_string(getpid()) + "/fd";  // the listing's descriptor
  std::vector<std::string> fds;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code ec;
    if (std::filesystem::read_symlink(entry.path(), ec) != own)
      fds.push_back(entry.path().filename().string());
  }
  std::sort(fds.begin(), fds.end());
  return fds;
}

bool HasZombieChild() {
  int status = 0;
  return waitpid(-1, &status, WNOHANG) > 0;
}

}  // namespace qztest

TEST(ProcessChild, Role) {
  if (!qztest::IsChild()) GTEST_SKIP() << "runs only as a child";
  const std::string role = std::getenv("QZTEST_ROLE");
  std::string out;
  if (role == "report") {
    std::string fds;
    for (const auto& fd : qztest::OpenDescriptors()) fds += fd + '\0';
    out = '\2' + qztest::ReadFile("/proc/self/cmdline") + '\1' +
          qztest::ReadFile("/proc/self/environ") + '\1' + std::filesystem::current_path().string() +
          '\1' + fds + '\3';
  } else if (role == "echo") {  // input to output, a mark on error, exit code 7
    out = qztest::ReadToEnd(0);
    if (write(2, "err", 3) != 3) _exit(91);
  }
  if (write(1, out.data(), out.size()) != static_cast<ssize_t>(out.size())) _exit(90);
  _exit(role == "echo" ? 7 : 0);
}
