// unit_string_test.cpp - byte and 16-bit strings read unit by unit: lengths, copies, order,
// searches, the tokeniser and the copies on the heap. The typed tests run once per unit type; the
// rest pin what only one of the two has (signed bytes, the list join, surrogates as plain units).
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qzcore/qzstring.h"

namespace {

using namespace std::string_literals;

// One spelling of each function for both unit types.
size_t NLen(const char* s, size_t m) { return QZStrNLenA(s, m); }
size_t NLen(const QZWCHAR* s, size_t m) { return QZStrNLenW(s, m); }
char* NCpy(char* d, const char* s, size_t n) { return QZStrNCpyA(d, s, n); }
QZWCHAR* NCpy(QZWCHAR* d, const QZWCHAR* s, size_t n) { return QZStrNCpyW(d, s, n); }
char* NZCpy(char* d, size_t z, const char* s, size_t m) { return QZStrNZCpyA(d, z, s, m); }
QZWCHAR* NZCpy(QZWCHAR* d, size_t z, const QZWCHAR* s, size_t m) { return QZStrNZCpyW(d, z, s, m); }
char* NZCat(char* d, size_t z, const char* s, size_t m) { return QZStrNZCatA(d, z, s, m); }
QZWCHAR* NZCat(QZWCHAR* d, size_t z, const QZWCHAR* s, size_t m) { return QZStrNZCatW(d, z, s, m); }
int32_t Cmp(const char* a, const char* b) { return QZStrCmpA(a, b); }
int32_t Cmp(const QZWCHAR* a, const QZWCHAR* b) { return QZStrCmpW(a, b); }
int32_t NCmp(const char* a, const char* b, size_t n) { return QZStrNCmpA(a, b, n); }
int32_t NCmp(const QZWCHAR* a, const QZWCHAR* b, size_t n) { return QZStrNCmpW(a, b, n); }
char* Chr(const char* s, char c) { return QZStrChrA(s, c); }
QZWCHAR* Chr(const QZWCHAR* s, QZWCHAR c) { return QZStrChrW(s, c); }
char* RChr(const char* s, char c) { return QZStrRChrA(s, c); }
QZWCHAR* RChr(const QZWCHAR* s, QZWCHAR c) { return QZStrRChrW(s, c); }
char* Str(const char* s, const char* t) { return QZStrStrA(s, t); }
QZWCHAR* Str(const QZWCHAR* s, const QZWCHAR* t) { return QZStrStrW(s, t); }
char* Tok(char** p, const char* d) { return QZStrTokA(p, d); }
QZWCHAR* Tok(QZWCHAR** p, const QZWCHAR* d) { return QZStrTokW(p, d); }
char* NDup(const char* s, uint32_t m) { return QZStrNDupA(s, m); }
QZWCHAR* NDup(const QZWCHAR* s, uint32_t m) { return QZStrNDupW(s, m); }
// The free function is one under both names: each type's copy goes back through the other.
void Free(char* p) { QZStrFreeW(reinterpret_cast<QZWCHAR*>(p)); }
void Free(QZWCHAR* p) { QZStrFreeA(reinterpret_cast<char*>(p)); }

template <class T>
class UnitString : public ::testing::Test {
 protected:
  using Text = std::basic_string<T>;
  static Text Of(const std::string& ascii) { return Text(ascii.begin(), ascii.end()); }
  // Fills the buffer with '#' and puts `init` (NULs included as given) at its start.
  T* Fill(const std::string& init) {
    std::fill(std::begin(m_buf), std::end(m_buf), static_cast<T>('#'));
    std::copy(init.begin(), init.end(), m_buf);
    return m_buf;
  }
  // The first `count` units of the buffer as bytes.
  std::string Shown(size_t count) const {
    std::string out;
    for (size_t i = 0; i < count; ++i) out += static_cast<char>(m_buf[i]);
    return out;
  }
  T m_buf[12];  // the destination of the copies
};

using UnitTypes = ::testing::Types<char, QZWCHAR>;
TYPED_TEST_SUITE(UnitString, UnitTypes);

TYPED_TEST(UnitString, BoundedLengthReadsNothingForAZeroMaximum) {
  EXPECT_EQ(NLen(this->Of("abcdef").c_str(), 4), 4u);
  EXPECT_EQ(NLen(static_cast<const TypeParam*>(nullptr), 0), 0u);
}

TYPED_TEST(UnitString, CopiesPadCutAndTerminate) {
  // Padded copy: NUL up to the count, unterminated when the source fills it, nothing for 0.
  const struct { const char* source; size_t count; std::string shown; } padded[] = {
      {"ab", 5, "ab\0\0\0###"s}, {"abcdef", 4, "abcd####"}, {"abc", 0, "########"}};
  for (const auto& c : padded) {
    EXPECT_EQ(NCpy(this->Fill(""), this->Of(c.source).c_str(), c.count), this->m_buf);
    EXPECT_EQ(this->Shown(8), c.shown) << c.source << " " << c.count;
  }
  // Terminated copy: cut at size - 1, NUL from the source's end up to the maximum and at it.
  const struct { size_t size; const char* source; size_t maximum; std::string shown; } cut[] = {
      {4, "abcdef", 10, "abc\0#"s},     // cut by the size
      {10, "ab", 5, "ab\0\0\0\0#"s},    // short source, padded up to the maximum
      {4, "abc", 10, "abc\0#"s},        // exact fit
      {1, "abc", 10, "\0#"s},           // room for the terminator only
      {0, "abcdef", 3, "abc\0#"s}};     // size 0 is unguarded: the maximum alone bounds
  for (const auto& c : cut) {
    EXPECT_EQ(NZCpy(this->Fill(""), c.size, this->Of(c.source).c_str(), c.maximum), this->m_buf);
    EXPECT_EQ(this->Shown(c.shown.size()), c.shown) << c.size << " " << c.source;
  }
}

TYPED_TEST(UnitString, TerminatedAppendReturnsTheAppendedText) {
  const struct { std::string init; size_t at, size; const char* source; size_t maximum; ptrdiff_t returned;
                 std::string shown; } cases[] = {
      {"abc\0"s, 0, 8, "de", 1, 3, "abcd\0#"s},              // the maximum limits the room
      {"ab\0"s, 0, 8, "x", 10, 2, "abx\0\0\0\0\0#"s},        // padded by the copy up to its count
      {"abcd", 0, 4, "z", 10, 3, "abc\0#"s},                 // full, unterminated: gives up its last
      {"ab\0"s, 0, 5, "cd", 10, 2, "abcd\0#"s},              // exact fit
      {"ab\0"s, 0, 4, "cd", 10, 2, "abc\0#"s},               // one short cuts the last one
      {"", 0, 1, "z", 10, 0, "\0#"s},                        // size 1: only the terminator
      {"", 1, 0, "z", 10, 0, "\0##"s}};                      // size 0: NUL one before the destination
  for (const auto& c : cases) {
    TypeParam* const result = NZCat(this->Fill(c.init) + c.at, c.size, this->Of(c.source).c_str(), c.maximum);
    EXPECT_EQ(result - this->m_buf, c.returned) << c.size << " " << c.source;
    EXPECT_EQ(this->Shown(c.shown.size()), c.shown) << c.size << " " << c.source;
  }
}

TYPED_TEST(UnitString, OrderAndSearches) {
  const auto of = [](const char* ascii) { return TestFixture::Of(ascii); };
  EXPECT_EQ(Cmp(of("abc").c_str(), of("abc").c_str()), 0);
  EXPECT_EQ(Cmp(of("ab").c_str(), of("abz").c_str()), -1);
  const TypeParam high[] = {static_cast<TypeParam>(0xE9), 0};
  EXPECT_EQ(Cmp(high, of("z").c_str()), 1);  // units compare unsigned: 0xE9 is above `z`
  EXPECT_LT(NCmp(of("abX").c_str(), of("abY").c_str(), 3), 0);
  EXPECT_EQ(NCmp(of("abX").c_str(), of("abY").c_str(), 2), 0);

  const auto text = of("aab,b");  // a partial match at the start
  const TypeParam* t = text.c_str();
  EXPECT_EQ(Str(t, of("ab").c_str()), t + 1);
  EXPECT_EQ(Str(t, of("").c_str()), t);
  EXPECT_EQ(Str(t, of("bb").c_str()), nullptr);
  EXPECT_EQ(Chr(t, static_cast<TypeParam>('b')), t + 2);
  EXPECT_EQ(RChr(t, static_cast<TypeParam>('b')), t + 4);
  EXPECT_EQ(Chr(t, static_cast<TypeParam>(0)), t + 5);
}

TYPED_TEST(UnitString, TokWalksWithTheCallersPosition) {
  const auto of = [](const char* ascii) { return TestFixture::Of(ascii); };
  const auto comma = of(",");
  auto text = of(",,a,b,");
  TypeParam* position = text.data();
  EXPECT_EQ(std::basic_string<TypeParam>(Tok(&position, comma.c_str())), of("a"));
  EXPECT_EQ(position, text.data() + 4);
  EXPECT_EQ(std::basic_string<TypeParam>(Tok(&position, comma.c_str())), of("b"));
  EXPECT_EQ(Tok(&position, comma.c_str()), nullptr);
  EXPECT_EQ(position, nullptr);
  EXPECT_EQ(Tok(&position, comma.c_str()), nullptr);
  // Only delimiters: nothing, and the walk is over; a token that runs to the end ends it too.
  auto commas = of(",,,");
  position = commas.data();
  EXPECT_EQ(Tok(&position, comma.c_str()), nullptr);
  EXPECT_EQ(position, nullptr);
  auto words = of(" one\ttwo");
  position = words.data();
  EXPECT_EQ(std::basic_string<TypeParam>(Tok(&position, of(" \t").c_str())), of("one"));
  EXPECT_EQ(std::basic_string<TypeParam>(Tok(&position, of(" \t").c_str())), of("two"));
  EXPECT_EQ(position, nullptr);
  // An empty set makes the string one token; two walks at once do not disturb each other.
  auto whole = of("a,b");
  position = whole.data();
  EXPECT_EQ(std::basic_string<TypeParam>(Tok(&position, of("").c_str())), of("a,b"));
  auto left = of("1 2");
  auto right = of("x y");
  TypeParam* p = left.data();
  TypeParam* q = right.data();
  Tok(&p, of(" ").c_str());
  EXPECT_EQ(std::basic_string<TypeParam>(Tok(&q, of(" ").c_str())), of("x"));
  EXPECT_EQ(std::basic_string<TypeParam>(Tok(&p, of(" ").c_str())), of("2"));
}

TYPED_TEST(UnitString, DupCopiesWithinTheMaximum) {
  EXPECT_EQ(NDup(static_cast<const TypeParam*>(nullptr), 5), nullptr);
  TypeParam* copy = NDup(this->Of("abc").c_str(), 0);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy[0], 0);
  Free(copy);
  // The source need not be terminated within the maximum.
  const TypeParam unterminated[3] = {'x', 'y', 'z'};
  copy = NDup(unterminated, 2);
  EXPECT_EQ(std::basic_string<TypeParam>(copy), this->Of("xy"));
  Free(copy);
  Free(static_cast<TypeParam*>(nullptr));
}

TEST(ByteString, SignedBytesListJoinAndWholeCopies) {
  const char* text = "caf\xC3\xA9 CAF\xC3\xA9";  // a byte above 0x7F is found as itself
  EXPECT_EQ(QZStrChrA(text, '\xA9'), text + 4);
  EXPECT_EQ(QZStrRChrA(text, '\xA9'), text + 10);
  EXPECT_EQ(QZStrLenA_32(text), 11);
  // The list join skips NULL and empty items and refuses a negative count.
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
  EXPECT_EQ(QZStrDupA(nullptr), nullptr);
  char* copy = QZStrDupA("hello");
  EXPECT_STREQ(copy, "hello");
  QZStrFreeA(copy);
}

TEST(WideString, SurrogatesAreOrdinaryUnits) {
  const QZWCHAR* text = u"x\U0001F600y\U0001F600";
  EXPECT_EQ(QZStrLenW_32(text), 6);
  EXPECT_EQ(QZStrChrW(text, 0xDE00), text + 2);
  EXPECT_EQ(QZStrRChrW(text, 0xD83D), text + 4);
  EXPECT_EQ(QZStrStrW(text, u"\xDE00y"), text + 2);
  // U+FF00 against the lead unit 0xD800 of U+10000: unit order puts U+FF00 after.
  EXPECT_EQ(QZStrCmpW(u"\uFF00", u"\U00010000"), 1);
  EXPECT_GT(QZStrNCmpW(u"\uFF00", u"\U00010000", 1), 0);
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
  // Plain and bounded appends.
  QZWCHAR buffer[8];
  QZStrCpyW(buffer, u"ab");
  EXPECT_EQ(QZStrCatW(buffer, u"c"), buffer);
  EXPECT_EQ(QZStrNCatW(buffer, u"defgh", 2), buffer);
  EXPECT_EQ(std::u16string(buffer), u"abcde");
}

}  // namespace
