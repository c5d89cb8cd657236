// wide_string_test.cpp - 16-bit strings read unit by unit: lengths, copies, order, searches, the
// tokeniser and the copies on the heap, with surrogates as ordinary units.
#include <gtest/gtest.h>

#include <string>

#include "qzcore/qzstring.h"

namespace {

std::u16string Units(const QZWCHAR* text, size_t count) { return std::u16string(text, count); }

TEST(WideString, LengthsCountUnits) {
  EXPECT_EQ(QZStrLenW_32(u"a\U0001F600b"), 4);  // a pair is two units
  EXPECT_EQ(QZStrNLenW(u"abcdef", 4), 4u);
  EXPECT_EQ(QZStrNLenW(nullptr, 0), 0u);  // a maximum of 0 reads nothing
}

TEST(WideString, CopiesPadAndTerminateAsTheByteForms) {
  QZWCHAR buffer[8];
  std::u16string hashes(8, u'#');
  // wcsncpy: NUL up to the count, unterminated when the source fills it.
  hashes.copy(buffer, 8);
  EXPECT_EQ(QZStrNCpyW(buffer, u"ab", 4), buffer);
  EXPECT_EQ(Units(buffer, 6), std::u16string(u"ab\0\0##", 6));
  hashes.copy(buffer, 8);
  QZStrNCpyW(buffer, u"abcdef", 3);
  EXPECT_EQ(Units(buffer, 4), u"abc#");
  // NZ copy: cut at size - 1, padded up to n, terminator at n.
  hashes.copy(buffer, 8);
  EXPECT_EQ(QZStrNZCpyW(buffer, 4, u"abcdef", 10), buffer);
  EXPECT_EQ(Units(buffer, 5), std::u16string(u"abc\0#", 5));
  // NZ append: the address of the appended text; a full buffer gives up its last unit.
  hashes.copy(buffer, 8);
  QZStrCpyW(buffer, u"ab");
  EXPECT_EQ(QZStrNZCatW(buffer, 8, u"cde", 2), buffer + 2);
  EXPECT_EQ(Units(buffer, 6), std::u16string(u"abcd\0#", 6));
  hashes.copy(buffer, 8);
  EXPECT_EQ(QZStrNZCatW(buffer, 4, u"z", 5), buffer + 3);
  EXPECT_EQ(Units(buffer, 5), std::u16string(u"###\0#", 5));
  // Plain and bounded appends.
  QZStrCpyW(buffer, u"ab");
  EXPECT_EQ(QZStrCatW(buffer, u"c"), buffer);
  EXPECT_EQ(QZStrNCatW(buffer, u"defgh", 2), buffer);
  EXPECT_EQ(std::u16string(buffer), u"abcde");
}

TEST(WideString, CmpOrdersByUnitValue) {
  EXPECT_EQ(QZStrCmpW(u"ab", u"abc"), -1);
  // U+FF00 against the lead unit 0xD800 of U+10000: code-unit order puts U+FF00 after.
  EXPECT_EQ(QZStrCmpW(u"\uFF00", u"\U00010000"), 1);
  EXPECT_EQ(QZStrCmpW(u"\u00E9", u"z"), 1);
  EXPECT_GT(QZStrNCmpW(u"\uFF00", u"\U00010000", 1), 0);
  EXPECT_EQ(QZStrNCmpW(u"abX", u"abY", 2), 0);
}

TEST(WideString, SearchesSeeSurrogatesAsUnits) {
  const QZWCHAR* text = u"x\U0001F600y\U0001F600";
  EXPECT_EQ(QZStrChrW(text, 0xDE00), text + 2);
  EXPECT_EQ(QZStrRChrW(text, 0xD83D), text + 4);
  EXPECT_EQ(QZStrChrW(text, 0), text + 6);
  EXPECT_EQ(QZStrStrW(text, u"\xDE00y"), text + 2);
  EXPECT_EQ(QZStrStrW(text, u"yy"), nullptr);
  const QZWCHAR* repeat = u"aab";  // a partial match at the start
  EXPECT_EQ(QZStrStrW(repeat, u"ab"), repeat + 1);
}

TEST(WideString, TokSplitsOnAnyUnit) {
  QZWCHAR text[] = u";;a\xD83D;b\xD83D";
  QZWCHAR* position = text;
  EXPECT_EQ(std::u16string(QZStrTokW(&position, u";\xD83D")), u"a");
  EXPECT_EQ(std::u16string(QZStrTokW(&position, u";\xD83D")), u"b");
  EXPECT_EQ(position, text + 7);
  EXPECT_EQ(QZStrTokW(&position, u";\xD83D"), nullptr);
  EXPECT_EQ(position, nullptr);
}

TEST(WideString, DupCopiesUnits) {
  EXPECT_EQ(QZStrDupW(nullptr), nullptr);
  QZWCHAR* copy = QZStrDupW(u"a\U0001F600");
  EXPECT_EQ(std::u16string(copy), u"a\U0001F600");
  QZStrFreeW(copy);
  copy = QZStrNDupW(u"a\U0001F600", 2);  // may cut a pair: units are what count
  EXPECT_EQ(std::u16string(copy), u"a\xD83D");
  QZStrFreeW(copy);
}

}  // namespace
