// byte_case_test.cpp - case mapping, character classes and case-insensitive compares of byte
// strings: the ASCII fast paths, and the non-ASCII rest that follows the C locale.
#include <gtest/gtest.h>

#include <cctype>
#include <memory>
#include <string>

#include "qzcore/qzstring.h"
#include "text_locale.h"

namespace {

class ByteCase : public qztest::LocaleTest {};

std::string Lowered(std::string text) {
  QZStrToLowerA(text.data());
  return text;
}
std::string Uppered(std::string text) {
  QZStrToUpperA(text.data());
  return text;
}
int Sign(int v) { return (v > 0) - (v < 0); }

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
  // The rest goes byte by byte: the bytes of a UTF-8 character are no letters of the locale's
  // single-byte table and stay, while ASCII after them goes to lower case.
  EXPECT_EQ(Lowered("ab\xC3\x89" "COLE"), "AB\xC3\x89" "cole");
  EXPECT_EQ(Lowered("x\xC4\xB0" "Y"), "X\xC4\xB0" "y");
}

TEST_P(ByteCase, StrToUpperUppersAsciiThenTheRestByLocale) {
  EXPECT_EQ(Uppered("abc-xyz_09"), "ABC-XYZ_09");
  EXPECT_EQ(Uppered("stra\xC3\x9F" "e \xC3\xA9t\xC3\xA9"), "STRA\xC3\x9F" "E \xC3\xA9T\xC3\xA9");
  EXPECT_EQ(Uppered(""), "");
}

TEST_P(ByteCase, SingleByteCaseAndSpaceMatchTheCLibraryAboveAscii) {
  for (int c = 0; c < 0x100; ++c) {
    const char byte = static_cast<char>(c);
    const int widened = static_cast<signed char>(byte);
    if (c < 0x80) {
      const int upper = (c >= 'a' && c <= 'z') ? c - 0x20 : c;
      EXPECT_EQ(QZToUpperA(byte), upper) << c;
      EXPECT_EQ(QZToLowerA(byte), upper) << c;  // the lower-case function goes up on ASCII
      EXPECT_EQ(QZIsSpaceA(byte), (c == 0x20 || (c >= 0x09 && c <= 0x0D)) ? 1 : 0) << c;
    } else {
      EXPECT_EQ(QZToUpperA(byte), std::toupper(widened)) << c;
      EXPECT_EQ(QZToLowerA(byte), std::tolower(widened)) << c;
      EXPECT_EQ(QZIsSpaceA(byte), std::isspace(widened)) << c;
    }
    EXPECT_EQ(QZIsAlphaA(byte) != 0, std::isalpha(widened) != 0) << c;
    EXPECT_EQ(QZIsDigitA(byte) != 0, std::isdigit(widened) != 0) << c;
  }
  EXPECT_EQ(QZIsSpaceA(0x0B), 1);
  EXPECT_EQ(QZIsSpaceA(0x0E), 0);
}

TEST_P(ByteCase, ICmpFoldsAsciiUpAndTheRestDown) {
  EXPECT_EQ(QZStrICmpA("abc", "ABC"), 0);
  EXPECT_EQ(QZStrICmpA("", ""), 0);
  EXPECT_LT(QZStrICmpA("abc", "abcd"), 0);
  EXPECT_GT(QZStrICmpA("abd", "ABC"), 0);
  // Folded up, `a` sorts below the underscore; a lower-case fold would say the opposite.
  EXPECT_LT(QZStrICmpA("a", "_"), 0);
  EXPECT_LT(QZStrICmpA("Xa", "x_"), 0);
  // After a non-ASCII byte the locale's lower-case fold decides: the sign turns.
  EXPECT_GT(QZStrICmpA("\xC3\xA9" "a", "\xC3\xA9_"), 0);
  // The rest is compared byte by byte: the two UTF-8 forms of E-acute differ in their second byte,
  // while ASCII after a shared non-ASCII byte compares without regard to case.
  EXPECT_LT(QZStrICmpA("\xC3\x89" "cole", "\xC3\xA9" "cole"), 0);
  EXPECT_EQ(QZStrICmpA("\xC3\xA9" "cole", "\xC3\xA9" "COLE"), 0);
  // Letters, digits and the other ASCII bytes agree in sign with a plain upper-case fold.
  const char* samples[] = {"alpha", "ALPHA", "Alpha1", "beta", "BETA2", "b", "", "[x", "~", "@"};
  for (const char* a : samples) {
    for (const char* b : samples) {
      std::string ua = a;
      std::string ub = b;
      for (char& ch : ua) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
      for (char& ch : ub) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
      EXPECT_EQ(Sign(QZStrICmpA(a, b)), Sign(ua.compare(ub))) << a << " / " << b;
    }
  }
}

TEST_P(ByteCase, NICmpCountsDown) {
  EXPECT_EQ(QZStrNICmpA("abc", "abd", 2), 0);
  EXPECT_LT(QZStrNICmpA("abc", "abd", 3), 0);
  EXPECT_EQ(QZStrNICmpA("abc", "xyz", 0), 0);
  EXPECT_EQ(QZStrNICmpA("ABC", "abc", 100), 0);
  EXPECT_LT(QZStrNICmpA("ab", "abc", 3), 0);
  // The count carries over to the non-ASCII rest.
  EXPECT_EQ(QZStrNICmpA("a\xC3X", "A\xC3Y", 2), 0);
  EXPECT_NE(QZStrNICmpA("a\xC3X", "A\xC3Y", 3), 0);
  EXPECT_EQ(QZStrNICmpA("a\xC3x", "A\xC3X", 3), 0);
}

INSTANTIATE_TEST_SUITE_P(Locales, ByteCase, ::testing::ValuesIn(qztest::kTextLocales));

}  // namespace
