// byte_string_test.cpp - lengths, copies, searches, the copies on the heap and the tokeniser of
// byte strings.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qzcore/qzstring.h"

namespace {

TEST(ByteString, BoundedLengthReadsNothingForAZeroMaximum) {
  EXPECT_EQ(QZStrLenA_32("abc\xC3\xA9"), 5);
  EXPECT_EQ(QZStrNLenA("abcdef", 4), 4u);
  EXPECT_EQ(QZStrNLenA(nullptr, 0), 0u);
}

TEST(ByteString, NCpyFillsWithNulAndMayLeaveTheResultUnterminated) {
  char buffer[8];
  // Short source: NUL up to the count, nothing beyond it.
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(QZStrNCpyA(buffer, "ab", 5), buffer);
  EXPECT_EQ(std::string(buffer, 8), std::string("ab\0\0\0###", 8));
  // Source as long as the count: no terminator.
  std::memset(buffer, '#', sizeof buffer);
  QZStrNCpyA(buffer, "abcdef", 4);
  EXPECT_EQ(std::string(buffer, 8), "abcd####");
  // A count of 0 writes nothing.
  std::memset(buffer, '#', sizeof buffer);
  QZStrNCpyA(buffer, "abc", 0);
  EXPECT_EQ(std::string(buffer, 8), "########");
}

TEST(ByteString, NZCpyCutsAndTerminates) {
  char buffer[12];
  // Cut by the size: three bytes and the terminator at index 3.
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(QZStrNZCpyA(buffer, 4, "abcdef", 10), buffer);
  EXPECT_EQ(std::string(buffer, 5), std::string("abc\0#", 5));
  // Short source: NUL from its end up to the maximum, terminator at the maximum, nothing beyond.
  std::memset(buffer, '#', sizeof buffer);
  QZStrNZCpyA(buffer, 10, "ab", 5);
  EXPECT_EQ(std::string(buffer, 7), std::string("ab\0\0\0\0#", 7));
  // Exact fit, and a size of 1 that holds only the terminator.
  std::memset(buffer, '#', sizeof buffer);
  QZStrNZCpyA(buffer, 4, "abc", 10);
  EXPECT_EQ(std::string(buffer, 5), std::string("abc\0#", 5));
  std::memset(buffer, '#', sizeof buffer);
  QZStrNZCpyA(buffer, 1, "abc", 10);
  EXPECT_EQ(std::string(buffer, 2), std::string("\0#", 2));
  // Size 0 is unguarded: the maximum alone bounds the copy.
  std::memset(buffer, '#', sizeof buffer);
  QZStrNZCpyA(buffer, 0, "abcdef", 3);
  EXPECT_EQ(std::string(buffer, 5), std::string("abc\0#", 5));
}

TEST(ByteString, NZCatAppendsWithinTheSizeAndReturnsTheAppendedText) {
  char buffer[12];
  // Room for one more byte than the maximum allows.
  std::memset(buffer, '#', sizeof buffer);
  std::memcpy(buffer, "abc", 4);
  EXPECT_EQ(QZStrNZCatA(buffer, 8, "de", 1), buffer + 3);
  EXPECT_EQ(std::string(buffer, 6), std::string("abcd\0#", 6));
  // Padded by the copy up to its count.
  std::memset(buffer, '#', sizeof buffer);
  std::memcpy(buffer, "ab", 3);
  QZStrNZCatA(buffer, 8, "x", 10);
  EXPECT_EQ(std::string(buffer, 9), std::string("abx\0\0\0\0\0#", 9));
  // A full buffer without a terminator gives up its last byte for one.
  std::memset(buffer, '#', sizeof buffer);
  std::memcpy(buffer, "abcd", 4);
  EXPECT_EQ(QZStrNZCatA(buffer, 4, "z", 10), buffer + 3);
  EXPECT_EQ(std::string(buffer, 5), std::string("abc\0#", 5));
  // Exact fit; one byte short cuts the last one.
  std::memset(buffer, '#', sizeof buffer);
  std::memcpy(buffer, "ab", 3);
  EXPECT_EQ(QZStrNZCatA(buffer, 5, "cd", 10), buffer + 2);
  EXPECT_EQ(std::string(buffer, 6), std::string("abcd\0#", 6));
  std::memset(buffer, '#', sizeof buffer);
  std::memcpy(buffer, "ab", 3);
  QZStrNZCatA(buffer, 4, "cd", 10);
  EXPECT_EQ(std::string(buffer, 5), std::string("abc\0#", 5));
  // Size 1: an unterminated byte gives way to the terminator, nothing is appended.
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(QZStrNZCatA(buffer, 1, "z", 10), buffer);
  EXPECT_EQ(std::string(buffer, 2), std::string("\0#", 2));
  // Size 0 is unguarded: a NUL lands one byte before the destination.
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(QZStrNZCatA(buffer + 1, 0, "z", 10), buffer);
  EXPECT_EQ(std::string(buffer, 3), std::string("\0##", 3));
}

TEST(ByteString, CpyCatJoinsTheListSkippingNullAndEmpty) {
  char buffer[16];
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(QZStrCpyCatA(buffer, 3, "ab", static_cast<const char*>(nullptr), "cd"), 4u);
  EXPECT_STREQ(buffer, "abcd");
  EXPECT_EQ(QZStrCpyCatA(buffer, 4, "", "x", "", "yz"), 3u);
  EXPECT_STREQ(buffer, "xyz");
  EXPECT_EQ(QZStrCpyCatA(buffer, -1, "ab"), 0u);
  EXPECT_STREQ(buffer, "");
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(QZStrCpyCatA(buffer, 0), 0u);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(QZStrCpyCatA(nullptr, 2, "ab", "cd"), 0u);
}

TEST(ByteString, DupCopiesWithinTheMaximum) {
  EXPECT_EQ(QZStrDupA(nullptr), nullptr);
  EXPECT_EQ(QZStrNDupA(nullptr, 5), nullptr);
  char* copy = QZStrDupA("hello");
  EXPECT_STREQ(copy, "hello");
  QZStrFreeA(copy);
  copy = QZStrNDupA("abc", 0);
  ASSERT_NE(copy, nullptr);
  EXPECT_STREQ(copy, "");
  QZStrFreeA(copy);
  // The source need not be terminated within the maximum.
  const char unterminated[3] = {'x', 'y', 'z'};
  copy = QZStrNDupA(unterminated, 2);
  EXPECT_STREQ(copy, "xy");
  QZStrFreeW(reinterpret_cast<QZWCHAR*>(copy));  // one function under both names
  QZStrFreeA(nullptr);
}

TEST(ByteString, CmpOrdersBytesAsUnsigned) {
  EXPECT_EQ(QZStrCmpA("abc", "abc"), 0);
  EXPECT_EQ(QZStrCmpA("ab", "abz"), -1);
  EXPECT_EQ(QZStrCmpA("\xE9", "z"), 1);  // 0xE9 above `z`, not below it as a signed byte
  EXPECT_LT(QZStrNCmpA("abX", "abY", 3), 0);
  EXPECT_EQ(QZStrNCmpA("abX", "abY", 2), 0);
}

TEST(ByteString, SearchesFindBytesExactly) {
  const char* text = "caf\xC3\xA9 CAF\xC3\xA9";
  EXPECT_EQ(QZStrStrA(text, "\xC3\xA9"), text + 3);
  EXPECT_EQ(QZStrStrA(text, ""), text);
  EXPECT_EQ(QZStrStrA(text, "cafe"), nullptr);
  EXPECT_EQ(QZStrChrA(text, '\xA9'), text + 4);
  EXPECT_EQ(QZStrRChrA(text, '\xA9'), text + 10);
  EXPECT_EQ(QZStrChrA(text, 0), text + 11);
}

TEST(ByteString, TokWalksWithTheCallersPosition) {
  char text[] = ",,a,b,";
  char* position = text;
  EXPECT_STREQ(QZStrTokA(&position, ","), "a");
  EXPECT_EQ(position, text + 4);
  EXPECT_STREQ(QZStrTokA(&position, ","), "b");
  EXPECT_EQ(QZStrTokA(&position, ","), nullptr);
  EXPECT_EQ(position, nullptr);
  EXPECT_EQ(QZStrTokA(&position, ","), nullptr);
  // Only delimiters: nothing, and the walk is over.
  char commas[] = ",,,";
  position = commas;
  EXPECT_EQ(QZStrTokA(&position, ","), nullptr);
  EXPECT_EQ(position, nullptr);
  // A token that runs to the end ends the walk; an empty set makes the string one token.
  char words[] = " one\ttwo";
  position = words;
  EXPECT_STREQ(QZStrTokA(&position, " \t"), "one");
  EXPECT_STREQ(QZStrTokA(&position, " \t"), "two");
  EXPECT_EQ(position, nullptr);
  char whole[] = "a,b";
  position = whole;
  EXPECT_STREQ(QZStrTokA(&position, ""), "a,b");
  EXPECT_EQ(position, nullptr);
  // Two walks at once do not disturb each other.
  char left[] = "1 2";
  char right[] = "x y";
  char* p = left;
  char* q = right;
  QZStrTokA(&p, " ");
  EXPECT_STREQ(QZStrTokA(&q, " "), "x");
  EXPECT_STREQ(QZStrTokA(&p, " "), "2");
}

}  // namespace
