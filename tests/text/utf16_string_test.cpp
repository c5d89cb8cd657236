// utf16_string_test.cpp - the UCS2 and UTF16 string families: stepping, counting, searching,
// comparing, bounded copies and case mapping.
#include <gtest/gtest.h>

#include <string>

#include "qzcore/qzunicode.h"

namespace {

const QZWCHAR kSmile[] = {0xD83D, 0xDE00, 0};  // U+1F600 as its pair

}  // namespace

TEST(Utf16String, NextCharReadsPairsAndLeavesStraySurrogates) {
  const QZWCHAR text[] = {0xD83D, 0xDE00, u'a', 0xD83D, u'b', 0xDC00, 0, u'z'};
  const QZWCHAR* p = text;
  // Unknown length: a pair is read whole.
  EXPECT_EQ(QZNextCharUTF16(&p, 0xFFFFFFFFu), 0x1F600);
  EXPECT_EQ(p, text + 2);
  EXPECT_EQ(QZNextCharUTF16(&p, 5), u'a');
  // A lead with no trail behind it comes back as it stands, one unit on.
  EXPECT_EQ(QZNextCharUTF16(&p, 5), 0xD83D);
  EXPECT_EQ(p, text + 4);
  EXPECT_EQ(QZNextCharUTF16(&p, 5), u'b');
  EXPECT_EQ(QZNextCharUTF16(&p, 5), 0xDC00);
  // The terminator is returned as 0 and stepped over like any unit.
  EXPECT_EQ(QZNextCharUTF16(&p, 5), 0);
  EXPECT_EQ(p, text + 7);

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

TEST(Utf16String, LengthsAndCodePointCounts) {
  const QZWCHAR text[] = {u'a', 0xD83D, 0xDE00, 0xDC00, 0};
  EXPECT_EQ(QZStrLenUTF16(text), 4);
  EXPECT_EQ(QZStrNLenUTF16(text, 2), 2u);
  EXPECT_EQ(QZStrNLenUTF16(text, 99), 4u);
  EXPECT_EQ(QZStrNLenUTF16(nullptr, 0), 0u);  // a maximum of 0 reads nothing
  // The pair is one code point, the stray trail another.
  EXPECT_EQ(QZCountCharUTF16(text), 3);
  EXPECT_EQ(QZCountCharUTF16(nullptr), 0);
}

TEST(Utf16String, SearchesRespectPairs) {
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
  // UCS2 gives the difference of units; the end of a string is a NUL unit.
  EXPECT_EQ(QZStrCmpUCS2(u"ab", u"abc"), -u'c');
  EXPECT_EQ(QZStrICmpUCS2(u"ABC", u"abc"), 0);
  EXPECT_EQ(QZStrICmpUCS2(u"Z", u"a"), u'z' - u'a');
  EXPECT_EQ(QZStrICmpUCS2(u"[", u"a"), u'[' - u'a');  // only A-Z fold
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

TEST(Utf16String, BoundedCopyTerminatesAtTheBound) {
  QZWCHAR buf[8];
  std::u16string(8, u'x').copy(buf, 8);
  EXPECT_EQ(QZStrNZCpyUTF16(buf, 4, u"abcdef", 10), buf);
  EXPECT_EQ(std::u16string(buf, 5), std::u16string(u"abc\0x", 5));

  // Behind a copied NUL nothing is filled; the bound gets its NUL.
  std::u16string(8, u'x').copy(buf, 8);
  QZStrNZCpyUTF16(buf, 8, u"ab", 5);
  EXPECT_EQ(std::u16string(buf, 7), std::u16string(u"ab\0xx\0x", 7));

  // A size of 0 wraps, leaving the maximum in charge.
  std::u16string(8, u'x').copy(buf, 8);
  QZStrNZCpyUTF16(buf, 0, u"abcdef", 2);
  EXPECT_EQ(std::u16string(buf, 4), std::u16string(u"ab\0x", 4));
}

TEST(Utf16String, BoundedAppendReturnsTheAppendedText) {
  QZWCHAR buf[8] = {u'a', u'b', 0, u'x', u'x', u'x', u'x', u'x'};
  EXPECT_EQ(QZStrNZCatUTF16(buf, 6, u"cdef", 10), buf + 2);
  EXPECT_EQ(std::u16string(buf, 7), std::u16string(u"abcde\0x", 7));
  QZStrNZCatUTF16(buf, 8, u"fgh", 1);  // the maximum limits as well as the room
  EXPECT_EQ(std::u16string(buf), u"abcdef");

  // A full, unterminated buffer loses its last unit to the NUL and gains nothing.
  QZWCHAR full[5] = {u'w', u'x', u'y', u'z', u'!'};
  EXPECT_EQ(QZStrNZCatUTF16(full, 4, u"z", 5), full + 3);
  EXPECT_EQ(std::u16string(full, 5), std::u16string(u"wxy\0!", 5));

  // A size of 0 writes its NUL one unit before the destination.
  QZWCHAR guard[3] = {u'g', u'a', 0};
  EXPECT_EQ(QZStrNZCatUTF16(guard + 1, 0, u"z", 5), guard);
  EXPECT_EQ(guard[0], 0);
  EXPECT_EQ(guard[1], u'a');
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
