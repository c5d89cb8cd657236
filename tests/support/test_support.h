// test_support.h - helpers shared by the test suites: scoped environment variables and
// temporary directories, reading files, unique names, and re-running this test binary as a child.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace qztest {

// True in a ThreadSanitizer build: cases that unlock what they do not hold on purpose step aside.
#if defined(__SANITIZE_THREAD__)
inline constexpr bool kThreadSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
inline constexpr bool kThreadSanitizer = true;
#else
inline constexpr bool kThreadSanitizer = false;
#endif
#else
inline constexpr bool kThreadSanitizer = false;
#endif

// Sets (or unsets, with null) an environment variable for a scope and restores it afterwards.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string m_name;
  bool m_had;
  std::string m_old;
};

// A fresh directory under $TMPDIR (or /tmp), removed with its contents at scope exit.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return m_path; }
  std::string File(const std::string& name) const { return m_path + "/" + name; }

 private:
  std::string m_path;
};

// The whole content of a file ("" if it cannot be read).
std::string ReadFile(const std::string& path);

// A name unique to this process and call: prefix, pid and a counter.
std::string UniqueName(const std::string& prefix);

// UTF-8 text of 16-bit text (test-side conversion, independent of the library).
std::string Narrow(const std::u16string& text);

// Result of a child run: exit code (or 128 + signal), and what it wrote to stdout and stderr.
struct ChildResult {
  int exitCode = -1;
  int signal = 0;  // the signal that ended it, or 0
  std::string out;
  std::string err;
};

// Runs this test binary again with --gtest_filter=<test> and the environment `env` added
// ("NAME=value" items); the child knows it is one through QZTEST_CHILD=1.
ChildResult RunSelf(const std::string& test, const std::vector<std::string>& env = {});
bool IsChild();

}  // namespace qztest

namespace qztest {

// Runs this test binary again as in RunSelf, but on a new pseudo-terminal that becomes the child's
// controlling terminal. Each time the terminal shows `prompt`, the next of `answers` is typed (a
// line); with no answers left the terminal is closed. `out` receives all the terminal showed.
ChildResult RunSelfOnTerminal(const std::string& test, const std::vector<std::string>& env,
                              const std::string& prompt, const std::vector<std::string>& answers);

}  // namespace qztest
