// text_locale.h - runs a test under a named C locale and restores the previous one afterwards,
// skipping where the machine lacks the locale.
#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <memory>
#include <string>

namespace qztest {

// Switches LC_ALL to `name` for a scope; ok() says whether the machine has that locale.
class ScopedLocale {
 public:
  explicit ScopedLocale(const char* name)
      : m_old(std::setlocale(LC_ALL, nullptr)), m_ok(std::setlocale(LC_ALL, name) != nullptr) {}
  ~ScopedLocale() { std::setlocale(LC_ALL, m_old.c_str()); }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;
  bool ok() const { return m_ok; }

 private:
  std::string m_old;  // locale to restore
  bool m_ok;          // the locale was set
};

// The locales the locale-dependent tests run under; those the machine lacks are skipped.
inline const char* const kTextLocales[] = {"C.UTF-8", "de_DE.UTF-8"};

// A suite whose tests run once under each locale of its parameter.
class LocaleTest : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    m_locale = std::make_unique<ScopedLocale>(GetParam());
    if (!m_locale->ok()) GTEST_SKIP() << "locale " << GetParam() << " not installed";
  }
  std::unique_ptr<ScopedLocale> m_locale;  // the parameter's locale for the test's length
};

}  // namespace qztest

// Switches to `name` for the rest of the scope, or skips the test if the machine lacks it.
#define QZ_USE_LOCALE_OR_SKIP(var, name) \
  ::qztest::ScopedLocale var(name);      \
  if (!var.ok()) GTEST_SKIP() << "locale " << (name) << " is not installed"
