// unicode_test_locale.h - switching the process's C locale for a test, skipping where the machine
// lacks the locale.
#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace qztest {

// Sets LC_ALL for a scope and restores the previous locale; ok() is false if the locale is missing.
class ScopedLocale {
 public:
  explicit ScopedLocale(const char* name)
      : m_old(std::setlocale(LC_ALL, nullptr)), m_ok(std::setlocale(LC_ALL, name) != nullptr) {}
  ~ScopedLocale() { std::setlocale(LC_ALL, m_old.c_str()); }
  bool ok() const { return m_ok; }

 private:
  std::string m_old;  // locale to restore
  bool m_ok;          // the locale was set
};

}  // namespace qztest

// Switches to `name` for the rest of the scope, or skips the test if the machine lacks it.
#define QZ_USE_LOCALE_OR_SKIP(var, name) \
  ::qztest::ScopedLocale var(name);      \
  if (!var.ok()) GTEST_SKIP() << "locale " << (name) << " is not installed"
