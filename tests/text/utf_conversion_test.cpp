// utf_conversion_test.cpp - UTF-8/UTF-16 conversions (round trips, invalid input, buffer edges), the
// C-locale byte conversions and the ANSI string objects.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "qzcore/qzunicode.h"
#include "support/test_support.h"
#include "text/ansi_string.h"
#include "text_locale.h"

using namespace std::string_literals;

namespace {

// Test-side encoder, independent of the library (UTF-8 comes from qztest::Narrow).
std::u16string EncodeUtf16(const std::vector<char32_t>& cps) {
  std::u16string out;
  for (char32_t c : cps) {
    if (c < 0x10000) {
      out += static_cast<char16_t>(c);
    } else {
      out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return out;
}

// Random scalar values from every encoding length, NUL excluded.
std::vector<char32_t> RandomText(std::mt19937& rng, size_t n) {
  static const char32_t kRanges[][2] = {{1, 0x7F}, {0x80, 0x7FF}, {0x800, 0xD7FF}, {0xE000, 0xFFFF}, {0x10000, 0x10FFFF}};
  std::vector<char32_t> cps;
  for (size_t i = 0; i < n; ++i) {
    const auto& r = kRanges[rng() % 5];
    cps.push_back(r[0] + rng() % (r[1] - r[0] + 1));
  }
  return cps;
}

}  // namespace

TEST(UtfConversion, RoundTripsValidTextBothWays) {
  std::mt19937 rng(20240611);
  for (int round = 0; round < 200; ++round) {
    const auto cps = RandomText(rng, rng() % 40);
    const std::u16string utf16 = EncodeUtf16(cps);
    const std::string utf8 = qztest::Narrow(utf16);

    EXPECT_EQ(QZUTF8ToUTF16(nullptr, utf8.c_str(), 0), static_cast<int64_t>(utf16.size()));
    std::vector<QZWCHAR> wide(utf16.size() + 1, 0xBEEF);
    ASSERT_EQ(QZUTF8ToUTF16(wide.data(), utf8.c_str(), wide.size()), static_cast<int64_t>(utf16.size()));
    EXPECT_EQ(std::u16string(wide.data()), utf16);

    EXPECT_EQ(QZUTF16ToUTF8(nullptr, utf16.c_str(), 0), static_cast<int64_t>(utf8.size()));
    std::vector<char> narrow(utf8.size() + 1, '#');
    ASSERT_EQ(QZUTF16ToUTF8(narrow.data(), wide.data(), narrow.size()), static_cast<int64_t>(utf8.size()));
    EXPECT_EQ(std::string(narrow.data()), utf8);

  }
}

TEST(UtfConversion, InvalidInputGivesBackTheCapacity) {
  // Ill-formed UTF-8: stray byte, lone continuation, overlong, surrogate, beyond U+10FFFF, cut short.
  const char* badUtf8[] = {"\xFF", "a\x80", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "ab\xE2\x82"};
  for (const char* bad : badUtf8) {
    QZWCHAR out[50];
    EXPECT_EQ(QZUTF8ToUTF16(out, bad, 50), 50) << bad;
    EXPECT_EQ(QZUTF8ToUTF16(nullptr, bad, 0), 0) << bad;  // a measurement yields 0
    int32_t length = -7;
    EXPECT_EQ(QZUTF8ToUTF16N(out, 50, &length, bad, -1), nullptr);
    EXPECT_EQ(length, -7);
  }
  // Unpaired surrogates: a lead at the end, a lead before a letter, a lone trail.
  const std::u16string badUtf16[] = {u"a\xD83D", u"\xD83Dx", u"x\xDE00"};
  for (const auto& bad : badUtf16) {
    char out[50];
    EXPECT_EQ(QZUTF16ToUTF8(out, bad.c_str(), 50), 50);
    int32_t length = -7;
    EXPECT_EQ(QZUTF16ToUTF8N(out, 50, &length, bad.c_str(), -1), nullptr);
    EXPECT_EQ(length, -7);
  }
  // A NULL source is refused the same way.
  EXPECT_EQ(QZUTF8ToUTF16(nullptr, nullptr, 9), 9);
  EXPECT_EQ(QZUTF16ToUTF8(nullptr, nullptr, 9), 9);
}

TEST(UtfConversion, CapacityEdges) {
  char out[8];
  memset(out, '#', sizeof out);
  // Exact fit: no terminator.
  EXPECT_EQ(QZUTF16ToUTF8(out, u"abc", 3), 3);
  EXPECT_EQ(std::string(out, 4), "abc#");
  // Too small: cut, the full length still reported, nothing written past the capacity.
  memset(out, '#', sizeof out);
  EXPECT_EQ(QZUTF16ToUTF8(out, u"abc", 2), 3);
  EXPECT_EQ(out[2], '#');
  // Room: terminated.
  EXPECT_EQ(QZUTF16ToUTF8(out, u"abc", 8), 3);
  EXPECT_EQ(out[3], 0);
  // Only the low 32 bits of the capacity count.
  memset(out, '#', sizeof out);
  EXPECT_EQ(QZUTF16ToUTF8(out, u"abc", 0x100000003ull), 3);
  EXPECT_EQ(out[3], '#');
  // A character is never cut in half: U+00E9 needs 2 bytes.
  memset(out, '#', sizeof out);
  EXPECT_EQ(QZUTF16ToUTF8(out, u"a\u00E9", 2), 3);
  EXPECT_EQ(out[1], '#');

  QZWCHAR wide[4] = {0xBEEF, 0xBEEF, 0xBEEF, 0xBEEF};
  EXPECT_EQ(QZUTF8ToUTF16(wide, "\xF0\x9F\x98\x80", 2), 2);  // the pair fits exactly
  EXPECT_EQ(wide[2], 0xBEEF);
  int32_t length = -7;
  // Overflow in the explicit form: the pointer still comes back, with the required length.
  EXPECT_EQ(QZUTF8ToUTF16N(wide, 1, &length, "abc", -1), wide);
  EXPECT_EQ(length, 3);
}

namespace {

// QZAnsiToUnicode into 8 units of 0xBEEF: the count, and the units with '#' for an untouched one.
std::pair<size_t, std::u16string> ToWide(const char* source, size_t maximum) {
  QZWCHAR out[8];
  std::fill(std::begin(out), std::end(out), 0xBEEF);
  const size_t count = QZAnsiToUnicode(out, source, maximum);
  std::u16string units(out, 8);
  for (auto& unit : units) unit = unit == 0xBEEF ? u'#' : unit;
  return {count, units};
}
using Wide = std::pair<size_t, std::u16string>;

}  // namespace

TEST(UtfConversion, AnsiToUnicodeUnderUtf8) {
  QZ_USE_LOCALE_OR_SKIP(locale, "C.UTF-8");
  // ASCII alone: the maximum may run out before the terminator, which is then not stored.
  EXPECT_EQ(ToWide("abcdef", 3), Wide(3, u"abc#####"));
  EXPECT_EQ(ToWide("ab", 8), Wide(2, u"ab\0#####"s));
  EXPECT_EQ(ToWide("abcdef", 0), Wide(0, u"########"));
  // Past ASCII the C library takes over; a supplementary character is a pair, never split.
  const char* text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";  // a, U+00E9, U+20AC, U+1F600
  EXPECT_EQ(QZAnsiToUnicode(nullptr, text, 0), 5u);
  EXPECT_EQ(ToWide(text, 8), Wide(5, u"a\u00E9\u20AC\U0001F600\0##"s));
  EXPECT_EQ(ToWide(text, 4), Wide(3, u"a\u00E9\u20AC#####"));
  // An invalid sequence: the count so far less one.
  EXPECT_EQ(ToWide("ab\xFF", 8).first, 1u);
  EXPECT_EQ(QZAnsiToUnicode(nullptr, "ab\xFF", 0), 1u);
  EXPECT_EQ(ToWide("\xFF", 8).first, static_cast<size_t>(-1));

  char bytes[8];
  memset(bytes, '#', sizeof bytes);
  EXPECT_EQ(QZUnicodeToAnsi(nullptr, u"a\u00E9\U0001F600", 0), 7u);
  EXPECT_EQ(QZUnicodeToAnsi(bytes, u"a\u00E9", 2), 1u);  // U+00E9 does not fit whole
  EXPECT_EQ(bytes[1], '#');
  EXPECT_EQ(QZUnicodeToAnsi(bytes, u"a\u00E9", 8), 3u);
  EXPECT_STREQ(bytes, "a\xC3\xA9");
  EXPECT_EQ(QZUnicodeToAnsi(bytes, u"a\xD800z", 8), static_cast<size_t>(-1));
}

TEST(UtfConversion, AnsiToUnicodeAsciiRunsAtAnyAlignmentAndBound) {
  QZ_USE_LOCALE_OR_SKIP(locale, "C.UTF-8");
  // ASCII runs of every length at every alignment, cut by every maximum, then U+00E9: the ASCII
  // path must stop exactly where the byte loop would.
  alignas(16) char storage[64];
  const std::string letters = "abcdefghijklmnopqrstuvwxyz0123456789ABCD";
  for (size_t offset = 0; offset < 8; ++offset) {
    for (size_t run = 0; run < 40; ++run) {
      const std::string text = letters.substr(0, run) + "\xC3\xA9";
      memcpy(storage + offset, text.c_str(), text.size() + 1);
      for (size_t max = 1; max <= run + 2; ++max) {
        QZWCHAR out[48];
        std::fill(std::begin(out), std::end(out), 0xBEEF);
        const size_t stored = std::min(max, run + 1);
        ASSERT_EQ(QZAnsiToUnicode(out, storage + offset, max), stored) << offset << " " << run << " " << max;
        std::u16string expected(letters.begin(), letters.begin() + static_cast<ptrdiff_t>(std::min(max, run)));
        if (max > run) expected += u'\u00E9';
        ASSERT_EQ(std::u16string(out, stored), expected);
        ASSERT_EQ(out[stored], max > run + 1 ? 0 : 0xBEEF);
      }
    }
  }
}

TEST(AnsiString, ConvertsByTheLocaleCodeset) {
  {
    QZ_USE_LOCALE_OR_SKIP(locale, "C.UTF-8");
    EXPECT_EQ(qz::text::AnsiToWideString("Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x98\x80"), u"Grüße \U0001F600");
    EXPECT_EQ(qz::text::WideToAnsiString(u"Grüße \U0001F600"), "Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x98\x80");
    // Invalid bytes become U+FFFD; what bytes cannot hold becomes "?".
    EXPECT_EQ(qz::text::AnsiToWideString("a\xFF" "b"), u"a\uFFFDb");
    EXPECT_EQ(qz::text::WideToAnsiString(u"a\xD800z\xDC00"), "a?z?");
    EXPECT_EQ(qz::text::AnsiToWideString(""), u"");
    EXPECT_EQ(qz::text::WideToAnsiString(u""), "");
    // Long text crosses the converter's internal chunks intact.
    const std::u16string longText(5000, u'\u00E9');
    EXPECT_EQ(qz::text::AnsiToWideString(qz::text::WideToAnsiString(longText.c_str()).c_str()), longText);
  }
  {
    QZ_USE_LOCALE_OR_SKIP(locale, "C");
    // The C locale knows no byte at 0x80 or above, neither here nor in the exports.
    EXPECT_EQ(ToWide("plain", 8), Wide(5, u"plain\0##"s));
    EXPECT_EQ(ToWide("\xE9", 8).first, static_cast<size_t>(-1));
    char bytes[8];
    EXPECT_EQ(QZUnicodeToAnsi(bytes, u"\u00E9", 8), static_cast<size_t>(-1));
    EXPECT_EQ(qz::text::AnsiToWideString("ok\xC3\xA9"), u"ok\uFFFD\uFFFD");
    EXPECT_EQ(qz::text::WideToAnsiString(u"ok\u00E9\U0001F600"), "ok??");
  }
}
