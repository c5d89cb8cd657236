// byte_string_test.cpp - copies, searches and the tokeniser of byte strings.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qzcore/qzstring.h"

namespace {

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

TEST(ByteString, StrFindsBytesExactly) {
  const char* text = "caf\xC3\xA9 CAF\xC3\xA9";
  EXPECT_EQ(QZStrStrA(text, "\xC3\xA9"), text + 3);
  EXPECT_EQ(QZStrStrA(text, "CAF"), text + 6);
  EXPECT_EQ(QZStrStrA(text, ""), text);
  EXPECT_EQ(QZStrStrA(text, "cafe"), nullptr);
  EXPECT_EQ(QZStrStrA("", "a"), nullptr);
}

}  // namespace
