// byte_case_test.cpp - case mapping, character classes and case-insensitive compares of byte
// strings: the ASCII fast paths, and the non-ASCII rest that follows the C locale.
#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "qzcore/qzstring.h"
#include "text_locale.h"

namespace {

class ByteCase : public qztest::LocaleTest {};

std::string Mapped(char* (*map)(char*), std::string text) {
  EXPECT_EQ(map(text.data()), text.data());
  return text;
}
int Sign(int v) { return (v > 0) - (v < 0); }

TEST_P(ByteCase, SingleBytesFoldAsciiUpAndPassTheRestSignExtended) {
  for (int c = 0; c < 0x100; ++c) {
    const char byte = static_cast<char>(c);
    const int widened = static_cast<signed char>(byte);  // what the C library sees above ASCII
    const int upper = (c >= 'a' && c <= 'z') ? c - 0x20 : c;
    const bool ascii = c < 0x80;
    EXPECT_EQ(QZToUpperA(byte), ascii ? upper : std::toupper(widened)) << c;
    EXPECT_EQ(QZToLowerA(byte), ascii ? upper : std::tolower(widened)) << c;  // goes up on ASCII
    EXPECT_EQ(QZIsSpaceA(byte), ascii ? int(c == 0x20 || (c >= 0x09 && c <= 0x0D)) : std::isspace(widened)) << c;
    EXPECT_EQ(QZIsAlphaA(byte) != 0, std::isalpha(widened) != 0) << c;
    EXPECT_EQ(QZIsDigitA(byte) != 0, std::isdigit(widened) != 0) << c;
    // The string form agrees on every ASCII byte: only `a` to `z` change, and they go up.
    if (c != 0 && ascii) {
      EXPECT_EQ(Mapped(QZStrToLowerA, std::string(1, byte)), std::string(1, char(upper))) << c;
    }
  }
}

TEST_P(ByteCase, StringsMapAsciiUpThenTheRestByLocale) {
  EXPECT_EQ(Mapped(QZStrToLowerA, "Hello"), "HELLO");
  EXPECT_EQ(Mapped(QZStrToLowerA, ""), "");
  // A lone 0xC9 is no character in UTF-8: the byte mapping of the C library decides, and from it on
  // ASCII goes to lower case.
  EXPECT_EQ(Mapped(QZStrToLowerA, "a\xC9" "A"), "A" + std::string(1, char(std::tolower(0xC9))) + "a");
  // The bytes of a UTF-8 character are no letters of the locale's single-byte table and stay.
  EXPECT_EQ(Mapped(QZStrToLowerA, "ab\xC3\x89" "COLE"), "AB\xC3\x89" "cole");
  EXPECT_EQ(Mapped(QZStrToLowerA, "x\xC4\xB0" "Y"), "X\xC4\xB0" "y");
  EXPECT_EQ(Mapped(QZStrToUpperA, "abc-xyz_09"), "ABC-XYZ_09");
  EXPECT_EQ(Mapped(QZStrToUpperA, "stra\xC3\x9F" "e \xC3\xA9t\xC3\xA9"), "STRA\xC3\x9F" "E \xC3\xA9T\xC3\xA9");
}

TEST_P(ByteCase, CaseBlindCompareFoldsAsciiUpAndTheRestDown) {
  EXPECT_EQ(QZStrICmpA("abc", "ABC"), 0);
  EXPECT_LT(QZStrICmpA("abc", "abcd"), 0);
  // Folded up, `a` sorts below the underscore; a lower-case fold would say the opposite.
  EXPECT_LT(QZStrICmpA("Xa", "x_"), 0);
  // After a non-ASCII byte the locale's lower-case fold decides: the sign turns.
  EXPECT_GT(QZStrICmpA("\xC3\xA9" "a", "\xC3\xA9_"), 0);
  // The rest is compared byte by byte: the two UTF-8 forms of E-acute differ in their second byte,
  // while ASCII after a shared non-ASCII byte compares without regard to case.
  EXPECT_LT(QZStrICmpA("\xC3\x89" "cole", "\xC3\xA9" "cole"), 0);
  EXPECT_EQ(QZStrICmpA("\xC3\xA9" "cole", "\xC3\xA9" "COLE"), 0);
  // Letters, digits and the other ASCII bytes agree in sign with a plain upper-case fold.
  const char* samples[] = {"alpha", "ALPHA", "Alpha1", "beta", "BETA2", "b", "", "[x", "~", "@", "_", "a"};
  const auto upper = [](std::string s) {
    for (char& ch : s) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return s;
  };
  for (const char* a : samples) {
    for (const char* b : samples) {
      EXPECT_EQ(Sign(QZStrICmpA(a, b)), Sign(upper(a).compare(upper(b)))) << a << " / " << b;
    }
  }
  // The bounded form counts down, and the count carries over to the non-ASCII rest.
  EXPECT_EQ(QZStrNICmpA("abc", "abd", 2), 0);
  EXPECT_LT(QZStrNICmpA("abc", "abd", 3), 0);
  EXPECT_EQ(QZStrNICmpA("abc", "xyz", 0), 0);
  EXPECT_EQ(QZStrNICmpA("ABC", "abc", 100), 0);
  EXPECT_LT(QZStrNICmpA("ab", "abc", 3), 0);
  EXPECT_EQ(QZStrNICmpA("a\xC3X", "A\xC3Y", 2), 0);
  EXPECT_NE(QZStrNICmpA("a\xC3X", "A\xC3Y", 3), 0);
  EXPECT_EQ(QZStrNICmpA("a\xC3x", "A\xC3X", 3), 0);
}

INSTANTIATE_TEST_SUITE_P(Locales, ByteCase, ::testing::ValuesIn(qztest::kTextLocales));

}  // namespace
