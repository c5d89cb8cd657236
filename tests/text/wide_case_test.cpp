// wide_case_test.cpp - classes, case mapping and case-insensitive compares of 16-bit units under
// the C locale, with the ASCII fast paths of the upper-case and white-space functions.
#include <gtest/gtest.h>

#include <cwctype>
#include <string>

#include "qzcore/qzstring.h"
#include "text_locale.h"

namespace {

class WideCase : public qztest::LocaleTest {};

std::u16string Mapped(QZWCHAR* (*map)(QZWCHAR*), std::u16string text) {
  EXPECT_EQ(map(text.data()), text.data());
  return text;
}

TEST_P(WideCase, UnitsFoldAsciiByTheFastPathAndTheRestByTheLocale) {
  for (uint32_t u = 0; u <= 0x7F; ++u) {
    const QZWCHAR unit = static_cast<QZWCHAR>(u);
    EXPECT_EQ(QZToUpperW(unit), static_cast<int32_t>(u - 'a' <= 25 ? u - 0x20 : u)) << u;
    EXPECT_EQ(QZToLowerW(unit), static_cast<int32_t>(u - 'A' <= 25 ? u + 0x20 : u)) << u;
    EXPECT_EQ(QZIsSpaceW(unit), (u == 0x20 || (u >= 0x09 && u <= 0x0D)) ? 1 : 0) << u;
    EXPECT_EQ(QZIsAlphaW(unit) != 0, std::iswalpha(u) != 0) << u;
    EXPECT_EQ(QZIsDigitW(unit) != 0, u - '0' <= 9) << u;
  }
  // Beyond ASCII the locale's tables answer; surrogates are no letters and have no case.
  EXPECT_EQ(QZToUpperW(0x00E9), 0x00C9);
  EXPECT_EQ(QZToLowerW(0x0130), u'i');
  EXPECT_EQ(QZToUpperW(0x03C3), 0x03A3);
  EXPECT_NE(QZIsSpaceW(0x3000), 0);
  EXPECT_EQ(QZIsSpaceW(0x00A0), 0);
  EXPECT_NE(QZIsAlphaW(0x0416), 0);
  EXPECT_EQ(QZToUpperW(0xD801), 0xD801);
  EXPECT_EQ(QZToLowerW(0xDC00), 0xDC00);
  EXPECT_EQ(QZIsAlphaW(0xD800), 0);
}

TEST_P(WideCase, StringsMapUnitByUnit) {
  EXPECT_EQ(Mapped(QZStrToUpperW, u"abc-xyz"), u"ABC-XYZ");
  EXPECT_EQ(Mapped(QZStrToUpperW, u"a\u00E9b\U0001F600\U00010428c"), u"A\u00C9B\U0001F600\U00010428C");
  EXPECT_EQ(Mapped(QZStrToUpperW, u""), u"");
  // Lower case is true lower case, unlike the byte form.
  EXPECT_EQ(Mapped(QZStrToLowerW, u"HeLLo \u00C9\u0391"), u"hello \u00E9\u03B1");
  // A pair is not one character: Deseret U+10400 keeps its case.
  EXPECT_EQ(Mapped(QZStrToLowerW, u"\U00010400"), u"\U00010400");
}

TEST_P(WideCase, CaseBlindCompareFoldsEveryUnitDown) {
  EXPECT_EQ(QZStrICmpW(u"\u00C4bc", u"\u00E4BC"), 0);
  EXPECT_EQ(QZStrICmpW(u"", u""), 0);
  EXPECT_LT(QZStrICmpW(u"ab", u"abc"), 0);
  // Lower-case fold: `a` sorts above the underscore, unlike the byte form.
  EXPECT_GT(QZStrICmpW(u"a", u"_"), 0);
  EXPECT_NE(QZStrICmpW(u"\xD801", u"\xD802"), 0);
  EXPECT_EQ(QZStrNICmpW(u"ABCx", u"abcy", 3), 0);
  EXPECT_NE(QZStrNICmpW(u"ABCx", u"abcy", 4), 0);
  EXPECT_EQ(QZStrNICmpW(u"a", u"b", 0), 0);
}

INSTANTIATE_TEST_SUITE_P(Locales, WideCase, ::testing::ValuesIn(qztest::kTextLocales));

}  // namespace
