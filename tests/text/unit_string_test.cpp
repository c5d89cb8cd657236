// unit_string_test.cpp - byte and 16-bit strings read unit by unit: lengths, copies, order,
// searches, the tokeniser and the copies on the heap. Both unit types share one implementation of
// each operation, so the edges are pinned on bytes; the 16-bit tests pin each entry point once,
// with surrogates as plain units.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qzcore/qzstring.h"

namespace {

using namespace std::string_literals;

// A 12-byte buffer of '#' that starts with `init` (NULs included as given).
struct Buffer {
  explicit Buffer(const std::string& init = "") {
    std::memset(bytes, '#', sizeof bytes);
    std::memcpy(bytes, init.data(), init.size());
  }
  std::string Shown(size_t count) const { return std::string(bytes, count); }
  char bytes[12];  // the destination
};

TEST(ByteString, CopiesPadCutAndTerminate) {
  // Padded copy: NUL up to the count, unterminated when the source fills it, nothing for 0.
  const struct { const char* source; size_t count; std::string shown; } padded[] = {
      {"ab", 5, "ab\0\0\0###"s}, {"abcdef", 4, "abcd####"}, {"abc", 0, "########"}};
  for (const auto& c : padded) {
    Buffer b;
    EXPECT_EQ(QZStrNCpyA(b.bytes, c.source, c.count), b.bytes);
    EXPECT_EQ(b.Shown(8), c.shown) << c.source << " " << c.count;
  }
  // Terminated copy: cut at size - 1, NUL from the source's end up to the maximum and at it.
  const struct { size_t size; const char* source; size_t maximum; std::string shown; } cut[] = {
      {4, "abcdef", 10, "abc\0#"s},   // cut by the size
      {10, "ab", 5, "ab\0\0\0\0#"s},  // short source, padded up to the maximum
      {4, "abc", 10, "abc\0#"s},      // exact fit
      {1, "abc", 10, "\0#"s},         // room for the terminator only
      {0, "abcdef", 3, "abc\0#"s}};   // size 0 is unguarded: the maximum alone bounds
  for (const auto& c : cut) {
    Buffer b;
    EXPECT_EQ(QZStrNZCpyA(b.bytes, c.size, c.source, c.maximum), b.bytes);
    EXPECT_EQ(b.Shown(c.shown.size()), c.shown) << c.size << " " << c.source;
  }
}

TEST(ByteString, TerminatedAppendReturnsTheAppendedText) {
  const struct { std::string init; size_t at, size; const char* source; size_t maximum; ptrdiff_t returned;
                 std::string shown; } cases[] = {
      {"abc\0"s, 0, 8, "de", 1, 3, "abcd\0#"s},        // the maximum limits the room
      {"ab\0"s, 0, 8, "x", 10, 2, "abx\0\0\0\0\0#"s},  // padded by the copy up to its count
      {"abcd", 0, 4, "z", 10, 3, "abc\0#"s},           // full, unterminated: gives up its last byte
      {"ab\0"s, 0, 5, "cd", 10, 2, "abcd\0#"s},        // exact fit
      {"ab\0"s, 0, 4, "cd", 10, 2, "abc\0#"s},         // one short cuts the last one
      {"", 0, 1, "z", 10, 0, "\0#"s},                  // size 1: only the terminator
      {"", 1, 0, "z", 10, 0, "\0##"s}};                // size 0: NUL one before the destination
  for (const auto& c : cases) {
    Buffer b(c.init);
    EXPECT_EQ(QZStrNZCatA(b.bytes + c.at, c.size, c.source, c.maximum) - b.bytes, c.returned) << c.size;
    EXPECT_EQ(b.Shown(c.shown.size()), c.shown) << c.size << " " << c.source;
  }
}

TEST(ByteString, ListJoinSkipsNullAndEmptyItems) {
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
  char* copy = QZStrNDupA("abc", 0);
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

TEST(ByteString, LengthOrderAndSearches) {
  EXPECT_EQ(QZStrLenA_32("abc\xC3\xA9"), 5);
  EXPECT_EQ(QZStrNLenA("abcdef", 4), 4u);
  EXPECT_EQ(QZStrNLenA(nullptr, 0), 0u);  // a maximum of 0 reads nothing
  EXPECT_EQ(QZStrCmpA("abc", "abc"), 0);
  EXPECT_EQ(QZStrCmpA("ab", "abz"), -1);
  EXPECT_EQ(QZStrCmpA("\xE9", "z"), 1);  // 0xE9 above `z`, not below it as a signed byte
  const char* text = "caf\xC3\xA9 CAF\xC3\xA9";
  EXPECT_EQ(QZStrChrA(text, '\xA9'), text + 4);
  EXPECT_EQ(QZStrRChrA(text, '\xA9'), text + 10);
  EXPECT_EQ(QZStrChrA(text, 0), text + 11);
}

// Every token of a walk over `text`, each followed by "|", then "end" if the position became NULL.
std::string Walk(std::string text, const char* delimiters) {
  std::string tokens;
  char* position = text.data();
  while (const char* token = QZStrTokA(&position, delimiters)) tokens += std::string(token) + "|";
  return tokens + (position == nullptr ? "end" : "open");
}

TEST(ByteString, TokWalksWithTheCallersPosition) {
  // Leading and trailing delimiters, only delimiters, a token that runs to the end, an empty set.
  EXPECT_EQ(Walk(",,a,b,", ","), "a|b|end");
  EXPECT_EQ(Walk(",,,", ","), "end");
  EXPECT_EQ(Walk(" one\ttwo", " \t"), "one|two|end");
  EXPECT_EQ(Walk("a,b", ""), "a,b|end");
  // The position stops behind the token's delimiter; an ended walk stays ended.
  char text[] = ",,a,b";
  char* position = text;
  EXPECT_STREQ(QZStrTokA(&position, ","), "a");
  EXPECT_EQ(position, text + 4);
  QZStrTokA(&position, ",");
  EXPECT_EQ(QZStrTokA(&position, ","), nullptr);
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

TEST(WideString, EveryEntryReadsSurrogatesAsPlainUnits) {
  const QZWCHAR* text = u"x\U0001F600y\U0001F600";
  EXPECT_EQ(QZStrLenW_32(text), 6);
  EXPECT_EQ(QZStrNLenW(text, 4), 4u);
  EXPECT_EQ(QZStrChrW(text, 0xDE00), text + 2);
  EXPECT_EQ(QZStrRChrW(text, 0xD83D), text + 4);
  EXPECT_EQ(QZStrStrW(text, u"\xDE00y"), text + 2);
  EXPECT_EQ(QZStrChrW(text, 0), text + 6);
  EXPECT_EQ(QZStrStrW(text, u"yy"), nullptr);
  const QZWCHAR* repeat = u"aab";  // a partial match at the start
  EXPECT_EQ(QZStrStrW(repeat, u"ab"), repeat + 1);
  // U+FF00 against the lead unit 0xD800 of U+10000: unit order puts U+FF00 after.
  EXPECT_EQ(QZStrCmpW(u"\uFF00", u"\U00010000"), 1);
  EXPECT_GT(QZStrNCmpW(u"\uFF00", u"\U00010000", 1), 0);
  EXPECT_EQ(QZStrNCmpW(u"abX", u"abY", 2), 0);
  QZWCHAR tokens[] = u";;a\xD83D;b\xD83D";
  QZWCHAR* position = tokens;
  EXPECT_EQ(std::u16string(QZStrTokW(&position, u";\xD83D")), u"a");
  EXPECT_EQ(std::u16string(QZStrTokW(&position, u";\xD83D")), u"b");
  EXPECT_EQ(position, tokens + 7);
  QZWCHAR* copy = QZStrNDupW(text, 2);  // may cut a pair
  EXPECT_EQ(std::u16string(copy), u"x\xD83D");
  QZStrFreeW(copy);
  copy = QZStrDupW(text);
  EXPECT_EQ(std::u16string(copy), text);
  QZStrFreeW(copy);
  // The copies and appends, with the byte forms' edges.
  QZWCHAR buffer[8];
  std::fill(std::begin(buffer), std::end(buffer), u'#');
  EXPECT_EQ(std::u16string(QZStrNCpyW(buffer, u"ab", 4), 5), u"ab\0\0#"s);
  EXPECT_EQ(std::u16string(QZStrNZCpyW(buffer, 4, u"abcdef", 10), 5), u"abc\0#"s);
  buffer[3] = u'#';
  EXPECT_EQ(QZStrNZCatW(buffer, 4, u"z", 5), buffer + 3);  // full: gives up its last unit
  EXPECT_EQ(QZStrNZCatW(buffer, 8, u"cde", 2), buffer + 3);
  EXPECT_EQ(std::u16string(buffer, 7), u"abccd\0#"s);
  EXPECT_EQ(std::u16string(QZStrCpyW(buffer, u"ab")), u"ab");
  EXPECT_EQ(QZStrCatW(buffer, u"c"), buffer);
  EXPECT_EQ(std::u16string(QZStrNCatW(buffer, u"defgh", 2)), u"abcde");
}

}  // namespace
