// number_test.cpp - number parsing and formatting with a 32-bit long, for byte and 16-bit text:
// limits, errno, bases and radices, end pointers.
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <string>

#include "qzcore/qzstring.h"
#include "text_locale.h"

namespace {

// One spelling of each function for both unit types, so one test covers both families.
int32_t ToL(const char* s, char** e, int32_t b) { return QZStrToLA(s, e, b); }
int32_t ToL(const QZWCHAR* s, QZWCHAR** e, int32_t b) { return QZStrToLW(s, e, b); }
uint32_t ToUL(const char* s, char** e, int32_t b) { return QZStrToULA(s, e, b); }
uint32_t ToUL(const QZWCHAR* s, QZWCHAR** e, int32_t b) { return QZStrToULW(s, e, b); }
int32_t ToI(const char* s) { return QZStrToIA(s); }
int32_t ToI(const QZWCHAR* s) { return QZStrToIW(s); }
double ToD(const char* s, char** e) { return QZStrToDA(s, e); }
double ToD(const QZWCHAR* s, QZWCHAR** e) { return QZStrToDW(s, e); }
char* LToStr(int32_t v, char* b, int32_t r) { return QZLToStrA(v, b, r); }
QZWCHAR* LToStr(int32_t v, QZWCHAR* b, int32_t r) { return QZLToStrW(v, b, r); }
char* I64ToStr(int64_t v, char* b, int32_t r) { return QZInt64ToStrA(v, b, r); }
QZWCHAR* I64ToStr(int64_t v, QZWCHAR* b, int32_t r) { return QZInt64ToStrW(v, b, r); }

template <class T>
class Numbers : public ::testing::Test {
 protected:
  using Text = std::basic_string<T>;
  static Text Of(const std::string& ascii) { return Text(ascii.begin(), ascii.end()); }
};

using UnitTypes = ::testing::Types<char, QZWCHAR>;
TYPED_TEST_SUITE(Numbers, UnitTypes);

TYPED_TEST(Numbers, IntegerParsing) {
  const struct { const char* input; int32_t base; bool isUnsigned; int64_t value; ptrdiff_t used; int error; } cases[] = {
      // Signed: the 32-bit limits; out of range gives the limit, ERANGE, and the end behind every digit.
      {"2147483647", 10, false, INT32_MAX, 10, 0},
      {"-2147483648", 10, false, INT32_MIN, 11, 0},
      {"2147483648", 10, false, INT32_MAX, 10, ERANGE},
      {"-2147483649", 10, false, INT32_MIN, 11, ERANGE},
      {"99999999999999999999999x", 10, false, INT32_MAX, 23, ERANGE},
      {"80000000", 16, false, INT32_MAX, 8, ERANGE},
      {"-80000000", 16, false, INT32_MIN, 9, 0},
      // Unsigned: a sign wraps, magnitude saturates.
      {"4294967295", 10, true, 4294967295, 10, 0},
      {"4294967296", 10, true, 4294967295, 10, ERANGE},
      {"-1", 10, true, 4294967295, 2, 0},
      {"-4294967295", 10, true, 1, 11, 0},
      {"-4294967296", 10, true, 4294967295, 11, ERANGE},
      {"0xFFFFFFFF", 0, true, 4294967295, 10, 0},
      // White space; base 0 reads the prefix, base 16 accepts it, other bases read the 0 alone.
      {" \t\n\v\f\r-12abc", 10, false, -12, 9, 0},
      {"0x1A", 0, false, 26, 4, 0},
      {" -0x1A", 0, false, -26, 6, 0},
      {"012", 0, false, 10, 3, 0},
      {"019", 0, false, 1, 2, 0},
      {"0X1f", 16, false, 31, 4, 0},
      {"0x1A", 10, false, 0, 1, 0},
      // The prefix is no digit: without a hex digit behind it nothing is converted.
      {"0xg", 16, false, 0, 0, 0},
      {"  0x", 0, false, 0, 0, 0},
      {"0xg", 0, true, 0, 0, 0},
      // Digits up to base - 1, letters in either case; no digits: 0, end at the start, errno untouched.
      {"1012", 2, false, 5, 3, 0},
      {"zZ", 36, false, 35 * 36 + 35, 2, 0},
      {"  +", 10, false, 0, 0, 0},
      {"z", 35, false, 0, 0, 0},
      // A base outside 2 to 36 (and not 0) is refused.
      {"11", 1, false, 0, 0, EINVAL},
      {"11", 37, true, 0, 0, EINVAL},
      {"11", -2, false, 0, 0, EINVAL}};
  for (const auto& c : cases) {
    const auto text = this->Of(c.input);
    TypeParam* end = nullptr;
    errno = 0;
    const int64_t value = c.isUnsigned ? int64_t{ToUL(text.c_str(), &end, c.base)} : ToL(text.c_str(), &end, c.base);
    EXPECT_EQ(value, c.value) << c.input << " base " << c.base;
    EXPECT_EQ(end - text.c_str(), c.used) << c.input << " base " << c.base;
    EXPECT_EQ(errno, c.error) << c.input << " base " << c.base;
  }
  // The end pointer is optional; atoi clamps like strtol and reads no prefix.
  EXPECT_EQ(ToL(this->Of("42").c_str(), nullptr, 0), 42);
  errno = 0;
  EXPECT_EQ(ToI(this->Of("  -123xyz").c_str()), -123);
  EXPECT_EQ(ToI(this->Of("0x10").c_str()), 0);
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(ToI(this->Of("99999999999").c_str()), INT32_MAX);
  EXPECT_EQ(errno, ERANGE);
  EXPECT_EQ(ToI(this->Of("-99999999999").c_str()), INT32_MIN);
}

TYPED_TEST(Numbers, FormatsInEveryRadix) {
  const struct { int64_t value; int32_t radix; bool wide64; std::string text; int error; } cases[] = {
      {INT32_MIN, 10, false, "-2147483648", 0},
      {-1, 16, false, "ffffffff", 0},  // two's complement outside radix 10
      {-1, 2, false, std::string(32, '1'), 0},
      {35, 36, false, "z", 0},
      {INT32_MAX, 36, false, "zik0zj", 0},
      {INT64_MIN, 10, true, "-9223372036854775808", 0},
      {-1, 16, true, "ffffffffffffffff", 0},
      {INT64_MIN, 2, true, "1" + std::string(63, '0'), 0},
      {-255, 8, true, "1777777777777777777401", 0},
      // An invalid radix leaves an empty string and EINVAL.
      {5, 1, false, "", EINVAL},
      {5, 37, true, "", EINVAL}};
  for (const auto& c : cases) {
    TypeParam buffer[70];
    std::fill(std::begin(buffer), std::end(buffer), static_cast<TypeParam>('#'));
    errno = 0;
    const TypeParam* result = c.wide64 ? I64ToStr(c.value, buffer, c.radix)
                                       : LToStr(static_cast<int32_t>(c.value), buffer, c.radix);
    EXPECT_EQ(result, buffer);
    EXPECT_EQ(std::basic_string<TypeParam>(buffer), this->Of(c.text)) << c.value << " radix " << c.radix;
    EXPECT_EQ(errno, c.error) << c.value << " radix " << c.radix;
  }
}

TYPED_TEST(Numbers, FloatingPointEndsAndRange) {
  const auto text = this->Of("  -1.5e3xyz");
  TypeParam* end = nullptr;
  EXPECT_EQ(ToD(text.c_str(), &end), -1500.0);
  EXPECT_EQ(end - text.c_str(), 8);
  const auto none = this->Of("abc");
  EXPECT_EQ(ToD(none.c_str(), &end), 0.0);
  EXPECT_EQ(end, none.c_str());
  errno = 0;
  EXPECT_EQ(ToD(this->Of("1e999").c_str(), nullptr), HUGE_VAL);
  EXPECT_EQ(errno, ERANGE);
  // A long number beyond any small staging buffer.
  const auto longText = this->Of("1." + std::string(600, '0') + "1");
  EXPECT_EQ(ToD(longText.c_str(), &end), 1.0);
  EXPECT_EQ(static_cast<size_t>(end - longText.c_str()), longText.size());
}

TEST(NumbersWide, WhiteSpaceAndDecimalPointFollowTheLocale) {
  {
    QZ_USE_LOCALE_OR_SKIP(utf8, "C.UTF-8");
    // The ideographic space is white space to the wide functions; a surrogate is not.
    EXPECT_EQ(QZStrToLW(u"\u3000\u300042", nullptr, 10), 42);
    EXPECT_EQ(QZStrToIW(u"\xD800" u"5"), 0);
  }
  QZ_USE_LOCALE_OR_SKIP(german, "de_DE.UTF-8");
  char* endA = nullptr;
  QZWCHAR* endW = nullptr;
  const char* a = "1,25";
  const QZWCHAR* w = u"1,25";
  EXPECT_EQ(QZStrToDA(a, &endA), 1.25);
  EXPECT_EQ(QZStrToDW(w, &endW), 1.25);
  EXPECT_EQ(endA - a, 4);
  EXPECT_EQ(endW - w, 4);
}

}  // namespace
