// byte_case_test.cpp - case mapping and case-insensitive compares of byte strings: the ASCII fast
// paths, and the non-ASCII rest that follows the C locale.
#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "qzcore/qzstring.h"
#include "text_locale.h"

namespace {

class ByteCase : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    m_locale = std::make_unique<qztest::ScopedLocale>(GetParam());
    if (!m_locale->ok()) GTEST_SKIP() << "locale " << GetParam() << " not installed";
  }
  std::unique_ptr<qztest::ScopedLocale> m_locale;
};

std::string Lowered(std::string text) {
  QZStrToLowerA(text.data());
  return text;
}

TEST_P(ByteCase, StrToLowerDeliversUpperCaseOnAscii) {
  EXPECT_EQ(Lowered("Hello"), "HELLO");
  EXPECT_EQ(Lowered(""), "");
  // Every ASCII byte: only `a` to `z` change, and they go up.
  for (int c = 1; c < 0x80; ++c) {
    const char in[2] = {static_cast<char>(c), 0};
    std::string out = Lowered(in);
    const int expected = (c >= 'a' && c <= 'z') ? c - 0x20 : c;
    EXPECT_EQ(static_cast<unsigned char>(out[0]), expected) << "byte " << c;
  }
}

TEST_P(ByteCase, StrToLowerLowersFromTheFirstNonAsciiByteOn) {
  // A lone 0xC9 is no character in UTF-8: the byte mapping of the C library decides.
  const std::string out = Lowered("a\xC9" "A");
  ASSERT_EQ(out.size(), 3u);
  EXPECT_EQ(out[0], 'A');
  EXPECT_EQ(static_cast<unsigned char>(out[1]), std::tolower(0xC9));
  EXPECT_EQ(out[2], 'a');
  // Whole characters of the locale's encoding go to lower case, and ASCII after them as well.
  EXPECT_EQ(Lowered("ab\xC3\x89" "COLE"), "AB\xC3\xA9" "cole");
  // A mapping that would change the byte length (U+0130 to `i`) leaves the character alone.
  EXPECT_EQ(Lowered("x\xC4\xB0" "Y"), "X\xC4\xB0" "y");
}

INSTANTIATE_TEST_SUITE_P(Locales, ByteCase, ::testing::ValuesIn(qztest::kTextLocales));

}  // namespace
