// number_test.cpp - number parsing and formatting with a 32-bit long, for byte and 16-bit text:
// limits, errno, bases and radices, end pointers.
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <memory>
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

  // Parses `input` with strtol and reports the value, how many units were used and errno.
  struct Outcome {
    int64_t value;
    ptrdiff_t used;
    int error;
  };
  static Outcome Long(const std::string& input, int32_t base, bool isUnsigned = false) {
    const Text text = Of(input);
    T* end = nullptr;
    errno = 0;
    const int64_t value = isUnsigned ? static_cast<int64_t>(ToUL(text.c_str(), &end, base))
                                     : static_cast<int64_t>(ToL(text.c_str(), &end, base));
    return {value, end - text.c_str(), errno};
  }
  static std::string Format(int64_t value, int32_t radix, bool wide64) {
    T buffer[70];
    std::fill(std::begin(buffer), std::end(buffer), static_cast<T>('#'));
    errno = 0;
    const T* result = wide64 ? I64ToStr(value, buffer, radix) : LToStr(static_cast<int32_t>(value), buffer, radix);
    EXPECT_EQ(result, buffer);
    std::string out;
    for (const T* p = buffer; *p != 0; ++p) out += static_cast<char>(*p);
    return out;
  }
};

using UnitTypes = ::testing::Types<char, QZWCHAR>;
TYPED_TEST_SUITE(Numbers, UnitTypes);

#define EXPECT_PARSE(outcome, v, u, e)     \
  do {                                     \
    const auto o = (outcome);              \
    EXPECT_EQ(o.value, (v));               \
    EXPECT_EQ(o.used, (u));                \
    EXPECT_EQ(o.error, (e));               \
  } while (0)

TYPED_TEST(Numbers, SignedParseStopsAtThe32BitLimits) {
  EXPECT_PARSE(this->Long("2147483647", 10), INT32_MAX, 10, 0);
  EXPECT_PARSE(this->Long("-2147483648", 10), INT32_MIN, 11, 0);
  // Out of range: the limit, ERANGE, and the end behind every digit.
  EXPECT_PARSE(this->Long("2147483648", 10), INT32_MAX, 10, ERANGE);
  EXPECT_PARSE(this->Long("-2147483649", 10), INT32_MIN, 11, ERANGE);
  EXPECT_PARSE(this->Long("99999999999999999999999x", 10), INT32_MAX, 23, ERANGE);
  EXPECT_PARSE(this->Long("80000000", 16), INT32_MAX, 8, ERANGE);
  EXPECT_PARSE(this->Long("-80000000", 16), INT32_MIN, 9, 0);
}

TYPED_TEST(Numbers, UnsignedParseWrapsTheSignAndSaturates) {
  EXPECT_PARSE(this->Long("4294967295", 10, true), 4294967295, 10, 0);
  EXPECT_PARSE(this->Long("4294967296", 10, true), 4294967295, 10, ERANGE);
  EXPECT_PARSE(this->Long("-1", 10, true), 4294967295, 2, 0);
  EXPECT_PARSE(this->Long("-4294967295", 10, true), 1, 11, 0);
  EXPECT_PARSE(this->Long("-4294967296", 10, true), 4294967295, 11, ERANGE);
  EXPECT_PARSE(this->Long("0xFFFFFFFF", 0, true), 4294967295, 10, 0);
}

TYPED_TEST(Numbers, BasesPrefixesAndWhiteSpace) {
  EXPECT_PARSE(this->Long(" \t\n\v\f\r-12abc", 10), -12, 9, 0);
  // Base 0 reads the prefix; base 16 accepts it; other bases read the 0 alone.
  EXPECT_PARSE(this->Long("0x1A", 0), 26, 4, 0);
  EXPECT_PARSE(this->Long(" -0x1A", 0), -26, 6, 0);
  EXPECT_PARSE(this->Long("012", 0), 10, 3, 0);
  EXPECT_PARSE(this->Long("019", 0), 1, 2, 0);
  EXPECT_PARSE(this->Long("0X1f", 16), 31, 4, 0);
  EXPECT_PARSE(this->Long("0x1A", 10), 0, 1, 0);
  // The prefix is no digit: without a hex digit behind it nothing is converted.
  EXPECT_PARSE(this->Long("0xg", 16), 0, 0, 0);
  EXPECT_PARSE(this->Long("  0x", 0), 0, 0, 0);
  EXPECT_PARSE(this->Long("0xg", 0, true), 0, 0, 0);
  // Radix edges: digits up to base - 1, letters in either case.
  EXPECT_PARSE(this->Long("1012", 2), 5, 3, 0);
  EXPECT_PARSE(this->Long("zZ", 36), 35 * 36 + 35, 2, 0);
  // No digits: 0 with the end at the start, errno untouched.
  EXPECT_PARSE(this->Long("  +", 10), 0, 0, 0);
  EXPECT_PARSE(this->Long("z", 35), 0, 0, 0);
  // A base outside 2 to 36 (and not 0) is refused.
  EXPECT_PARSE(this->Long("11", 1), 0, 0, EINVAL);
  EXPECT_PARSE(this->Long("11", 37), 0, 0, EINVAL);
  EXPECT_PARSE(this->Long("11", -2), 0, 0, EINVAL);
  // The end pointer is optional.
  EXPECT_EQ(ToL(this->Of("42").c_str(), nullptr, 0), 42);
}

TYPED_TEST(Numbers, AtoiClampsLikeStrtol) {
  errno = 0;
  EXPECT_EQ(ToI(this->Of("  -123xyz").c_str()), -123);
  EXPECT_EQ(ToI(this->Of("0x10").c_str()), 0);
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(ToI(this->Of("99999999999").c_str()), INT32_MAX);
  EXPECT_EQ(errno, ERANGE);
  EXPECT_EQ(ToI(this->Of("-99999999999").c_str()), INT32_MIN);
}

TYPED_TEST(Numbers, FormatsInEveryRadix) {
  EXPECT_EQ(this->Format(INT32_MIN, 10, false), "-2147483648");
  EXPECT_EQ(this->Format(-1, 16, false), "ffffffff");  // two's complement outside radix 10
  EXPECT_EQ(this->Format(-1, 2, false), std::string(32, '1'));
  EXPECT_EQ(this->Format(35, 36, false), "z");
  EXPECT_EQ(this->Format(INT32_MAX, 36, false), "zik0zj");
  EXPECT_EQ(this->Format(INT64_MIN, 10, true), "-9223372036854775808");
  EXPECT_EQ(this->Format(-1, 16, true), "ffffffffffffffff");
  EXPECT_EQ(this->Format(INT64_MIN, 2, true), "1" + std::string(63, '0'));
  EXPECT_EQ(this->Format(-255, 8, true), "1777777777777777777401");
  // An invalid radix leaves an empty string and EINVAL.
  EXPECT_EQ(this->Format(5, 1, false), "");
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(this->Format(5, 37, true), "");
  EXPECT_EQ(errno, EINVAL);
}

TYPED_TEST(Numbers, FloatingPointFollowsTheCLibrary) {
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
    qztest::ScopedLocale utf8("C.UTF-8");
    if (!utf8.ok()) GTEST_SKIP() << "C.UTF-8 not installed";
    // The ideographic space is white space to the wide functions; a surrogate is not.
    QZWCHAR* end = nullptr;
    EXPECT_EQ(QZStrToLW(u"\u3000\u300042", &end, 10), 42);
    EXPECT_EQ(QZStrToIW(u"\xD800" u"5"), 0);
  }
  qztest::ScopedLocale german("de_DE.UTF-8");
  if (!german.ok()) GTEST_SKIP() << "de_DE.UTF-8 not installed";
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
