// utf16_string_test.cpp - the UCS2 and UTF16 string families: stepping, counting, searching,
// comparing, bounded copies and case mapping.
#include <gtest/gtest.h>

#include <string>

#include "qzcore/qzunicode.h"

namespace {

using namespace std::string_literals;

const QZWCHAR kSmile[] = {0xD83D, 0xDE00, 0};  // U+1F600 as its pair

}  // namespace

TEST(Utf16String, NextCharReadsPairsAndLeavesStraySurrogates) {
  const QZWCHAR text[] = {0xD83D, 0xDE00, u'a', 0xD83D, u'b', 0xDC00, 0, u'z'};
  // An unknown length reads a pair whole; a lead with no trail behind it, or a lone trail, comes
  // back as it stands, one unit on; the terminator is returned as 0 and stepped over like any unit.
  const struct { uint32_t count; int32_t value; ptrdiff_t at; } steps[] = {
      {0xFFFFFFFFu, 0x1F600, 2}, {5, u'a', 3}, {5, 0xD83D, 4}, {5, u'b', 5}, {5, 0xDC00, 6}, {5, 0, 7}};
  const QZWCHAR* p = text;
  for (const auto& s : steps) {
    EXPECT_EQ(QZNextCharUTF16(&p, s.count), s.value) << s.at;
    EXPECT_EQ(p - text, s.at);
  }
  // A count of 1 never reads the unit behind a lead.
  p = kSmile;
  EXPECT_EQ(QZNextCharUTF16(&p, 1), 0xD83D);
  EXPECT_EQ(p, kSmile + 1);
  // Counts below 1, read as signed, return 0 without moving.
  p = kSmile;
  EXPECT_EQ(QZNextCharUTF16(&p, 0), 0);
  EXPECT_EQ(QZNextCharUTF16(&p, 0x80000000u), 0);
  EXPECT_EQ(p, kSmile);
}

TEST(Utf16String, LengthsCountsAndSearchesRespectPairs) {
  const QZWCHAR text[] = {u'a', 0xD83D, 0xDE00, 0xDC00, 0};
  EXPECT_EQ(QZStrLenUTF16(text), 4);
  EXPECT_EQ(QZStrNLenUTF16(text, 2), 2u);
  EXPECT_EQ(QZStrNLenUTF16(nullptr, 0), 0u);  // a maximum of 0 reads nothing
  // The pair is one code point, the stray trail another.
  EXPECT_EQ(QZCountCharUTF16(text), 3);
  EXPECT_EQ(QZCountCharUTF16(nullptr), 0);

  const QZWCHAR paired[] = {u'x', 0xD83D, 0xDE00, u'y', 0xD83D, 0xDE00, 0};
  const QZWCHAR stray[] = {u'x', 0xD83D, 0xDE00, 0xD83D, u'y', 0};
  // UCS2: a surrogate value is found only where it stands unpaired.
  EXPECT_EQ(QZStrChrUCS2(paired, 0xD83D), nullptr);
  EXPECT_EQ(QZStrChrUCS2(stray, 0xD83D), stray + 3);
  EXPECT_EQ(QZStrChrUCS2(paired, 0), paired + 6);
  // UTF16: a supplementary code point is found as its pair.
  EXPECT_EQ(QZStrChrUTF16(paired, 0x1F600), paired + 1);
  EXPECT_EQ(QZStrRChrUTF16(paired, 0x1F600), paired + 4);
  EXPECT_EQ(QZStrChrUTF16(paired, 0x110000), nullptr);
  EXPECT_EQ(QZStrChrUTF16(paired, 0), paired + 6);
  // A match must not split a pair.
  const QZWCHAR lead[] = {0xD83D, 0};
  EXPECT_EQ(QZStrStrUTF16(paired, lead), nullptr);
  EXPECT_EQ(QZStrStrUTF16(stray, lead), stray + 3);
  EXPECT_EQ(QZStrStrUTF16(paired, kSmile), paired + 1);
}

TEST(Utf16String, CompareOrdersAndFolds) {
  const QZWCHAR ff00[] = {0xFF00, 0};
  const QZWCHAR u10000[] = {0xD800, 0xDC00, 0};
  // Code-point order puts every supplementary character after U+FFFF; unit order does not.
  EXPECT_LT(QZStrCmpUTF16(ff00, u10000), 0);
  EXPECT_GT(QZStrCmpUCS2(ff00, u10000), 0);
  // UCS2 gives the difference of units; the end of a string is a NUL unit; only A-Z fold.
  EXPECT_EQ(QZStrCmpUCS2(u"ab", u"abc"), -u'c');
  EXPECT_EQ(QZStrICmpUCS2(u"ABC", u"abc"), 0);
  EXPECT_EQ(QZStrICmpUCS2(u"Z", u"a"), u'z' - u'a');
  EXPECT_EQ(QZStrICmpUCS2(u"[", u"a"), u'[' - u'a');
  EXPECT_NE(QZStrICmpUCS2(u"\u00C4", u"\u00E4"), 0);
  EXPECT_EQ(QZStrICmpUTF16(u"\u00C4X", u"\u00E4x"), 0);
  // The bounded compare honours its count (low 32 bits)...
  EXPECT_EQ(QZStrNCmpUTF16(u"abcX", u"abcY", 3), 0);
  EXPECT_LT(QZStrNCmpUTF16(u"abcX", u"abcY", 4), 0);
  EXPECT_EQ(QZStrNCmpUTF16(u"abcX", u"abcY", 0x100000003ull), 0);
  // ...the case-blind one always decides on three units.
  for (size_t count : {size_t{0}, size_t{1}, size_t{3}, size_t{100}}) {
    EXPECT_EQ(QZStrNICmpUTF16(u"abcX", u"ABCY", count), 0) << count;
    EXPECT_NE(QZStrNICmpUTF16(u"abX", u"ABY", count), 0) << count;
  }
}

TEST(Utf16String, BoundedCopyAndAppendTerminateAtTheBound) {
  const struct { std::u16string init; size_t size; const char16_t* source; size_t maximum; std::u16string shown; } copies[] = {
      {u"", 4, u"abcdef", 10, u"abc\0x"s},
      {u"", 8, u"ab", 5, u"ab\0xx\0x"s},  // nothing filled behind a copied NUL; the bound gets its NUL
      {u"", 0, u"abcdef", 2, u"ab\0x"s}};  // a size of 0 wraps, leaving the maximum in charge
  const struct { std::u16string init; size_t at, size; const char16_t* source; size_t maximum; ptrdiff_t returned;
                 std::u16string shown; } appends[] = {
      {u"ab\0"s, 0, 6, u"cdef", 10, 2, u"abcde\0x"s},
      {u"abcde\0"s, 0, 8, u"fgh", 1, 5, u"abcdef\0x"s},  // the maximum limits as well as the room
      {u"wxyz!", 0, 4, u"z", 5, 3, u"wxy\0!"s},          // full, unterminated: loses its last unit
      {u"ga\0"s, 1, 0, u"z", 5, 0, u"\0a\0"s}};          // size 0: NUL one unit before the destination
  for (const auto& c : copies) {
    std::u16string buf = c.init + std::u16string(8 - c.init.size(), u'x');
    EXPECT_EQ(QZStrNZCpyUTF16(buf.data(), c.size, c.source, c.maximum), buf.data());
    EXPECT_EQ(buf.substr(0, c.shown.size()), c.shown) << c.size;
  }
  for (const auto& c : appends) {
    std::u16string buf = c.init + std::u16string(8 - c.init.size(), u'x');
    EXPECT_EQ(QZStrNZCatUTF16(buf.data() + c.at, c.size, c.source, c.maximum) - buf.data(), c.returned);
    EXPECT_EQ(buf.substr(0, c.shown.size()), c.shown) << c.size;
  }
}

TEST(Utf16String, CaseMappingCoversTwiceTheLength) {
  // Two units of text: the text, its NUL and one unit behind it are mapped; the unit after is not.
  QZWCHAR buf[6] = {u'a', u'b', 0, u'x', u'y', 0};
  EXPECT_EQ(QZStrToUpperUTF16(buf), buf);
  EXPECT_EQ(std::u16string(buf, 5), std::u16string(u"AB\0Xy", 5));
  // Full case mapping may lengthen the text; what fits in twice the length is kept.
  QZWCHAR street[12] = u"stra\u00DFe";
  QZStrToUpperUTF16(street);
  EXPECT_EQ(std::u16string(street), u"STRASSE");
  QZWCHAR sharp[4] = {0xDF, 0xDF, 0, 0};
  QZStrToUpperUTF16(sharp);  // "SSSS" fills the span: no room is left for a terminator
  EXPECT_EQ(std::u16string(sharp, 4), u"SSSS");
  QZWCHAR mixed[10] = u"\u00C4\u03A3X";
  EXPECT_EQ(std::u16string(QZStrToLowerUTF16(mixed)), u"\u00E4\u03C3x");
  QZWCHAR empty[2] = {0, u'Q'};
  QZStrToLowerUTF16(empty);
  EXPECT_EQ(empty[1], u'Q');
}
