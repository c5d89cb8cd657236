// wide_format_test.cpp - the 16-bit formatter behind alerts and traces.
#include <gtest/gtest.h>

#include <clocale>

#include "frame/wide_format.h"

namespace {

std::u16string Format(const char16_t* format, ...) {
  va_list args;
  va_start(args, format);
  std::u16string text = qz::core::FormatWideV(format, args);
  va_end(args);
  return text;
}

}  // namespace

TEST(WideFormat, StringAndCharacterConversionsFollowTheWideRules) {
  EXPECT_EQ(Format(u"%s|%ls|%ws", u"a", u"b", u"c"), u"a|b|c");
  EXPECT_EQ(Format(u"%hs|%S", "bytes", "more"), u"bytes|more");
  EXPECT_EQ(Format(u"%c%hc%C", u'\u00e9', 'x', 'y'), u"\u00e9xy");
  EXPECT_EQ(Format(u"[%5ls][%-5ls][%.2ls]", u"ab", u"ab", u"abcdef"), u"[   ab][ab   ][ab]");
  // The 0 flag pads text with zeros as it pads numbers, unless the text is left-aligned.
  EXPECT_EQ(Format(u"[%05ls][%-05hs][%03c][%06.2hs]", u"ab", "ab", u'x', "abcdef"), u"[000ab][ab   ][00x][0000ab]");
  EXPECT_EQ(Format(u"%ls %hs", static_cast<const char16_t*>(nullptr), static_cast<const char*>(nullptr)),
            u"(null) (null)");
  // Surrogate pairs pass through untouched.
  EXPECT_EQ(Format(u"<%ls>", u"\U0001F600"), u"<\U0001F600>");
}

TEST(WideFormat, IntegerSizesAreThoseOfTheFirstPlatform) {
  EXPECT_EQ(Format(u"%d %i %u", -5, 7, 4000000000u), u"-5 7 4000000000");
  // %ld reads a 32-bit long: a 64-bit value is cut.
  EXPECT_EQ(Format(u"%ld", 0x100000005L), u"5");
  EXPECT_EQ(Format(u"%lld %I64d %I64u", -1LL << 40, 1LL << 40, ~0ULL), u"-1099511627776 1099511627776 18446744073709551615");
  EXPECT_EQ(Format(u"%I32x %Ix %zu", 0xABCDu, size_t{1} << 33, size_t{12}), u"abcd 200000000 12");
  EXPECT_EQ(Format(u"%#x %#X %08.3f %-4d|", 255u, 255u, 3.14159, 12), u"0xff 0XFF 0003.142 12  |");
  EXPECT_EQ(Format(u"%hd %hhu", 70000, 300), u"4464 44");
  EXPECT_EQ(Format(u"%*d|%-*d|%.*f", 4, 1, 3, 2, 1, 2.25), u"   1|2  |2.2");
}

TEST(WideFormat, PointersPercentAndOddSpecifiers) {
  EXPECT_EQ(Format(u"%p", reinterpret_cast<void*>(0x12AB40)), u"000000000012AB40");
  EXPECT_EQ(Format(u"[%18p][%018p]", reinterpret_cast<void*>(0x1), reinterpret_cast<void*>(0x2)),
            u"[  0000000000000001][000000000000000002]");
  EXPECT_EQ(Format(u"100%%"), u"100%");
  int untouched = 5;
  EXPECT_EQ(Format(u"a%nb", &untouched), u"ab");
  EXPECT_EQ(untouched, 5);
  EXPECT_EQ(Format(u"%y and %"), u"%y and %");
}

TEST(WideFormat, BufferCutKeepsCapacityMinusOneUnits) {
  char16_t buffer[8];
  EXPECT_EQ(qz::core::FormatWideToBuffer(buffer, 8, u"%ls", u"0123456789"), 7u);
  EXPECT_EQ(std::u16string(buffer), u"0123456");
  EXPECT_EQ(qz::core::FormatWideToBuffer(buffer, 8, u"%d", 42), 2u);
  EXPECT_EQ(std::u16string(buffer), u"42");
}

TEST(WideFormat, ByteTextIsDecodedByTheLocale) {
  const char* old = std::setlocale(LC_CTYPE, nullptr);
  const std::string saved = old != nullptr ? old : "C";
  if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) GTEST_SKIP() << "no C.UTF-8 locale";
  EXPECT_EQ(Format(u"%hs", "caf\xc3\xa9"), u"caf\u00e9");
  EXPECT_EQ(Format(u"%hs", "bad\xff!"), u"bad\uFFFD!");
  std::setlocale(LC_CTYPE, saved.c_str());
}
