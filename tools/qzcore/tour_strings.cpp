// tour_strings.cpp - tour step: byte and 16-bit strings, their case oddities, bounded copies, the
// tokeniser and the number conversions with a 32-bit long.
#include <cerrno>
#include <clocale>
#include <cstring>
#include <string>

#include "qzcore.h"
#include "qzcore/qzstring.h"
#include "tour.h"

namespace {

using qztool::Utf8;

using qztool::Show;

std::string Quote(const std::string& text) { return "\"" + text + "\""; }


void TourCase() {
  Show("C locale in force", Quote(std::setlocale(LC_CTYPE, nullptr)));
  char hello[] = "Hello";
  Show("QZStrToLowerA(\"Hello\") (ASCII goes UP)", Quote(QZStrToLowerA(hello)));
  char mixed[] = "caf\xC3\x89 NO\xC3\x8BL";
  Show("QZStrToLowerA(\"cafÉ NOËL\") (lower from the first non-ASCII byte)", Quote(QZStrToLowerA(mixed)));
  char upper[] = "stra\xC3\x9F" "e \xC3\xA9t\xC3\xA9";
  Show("QZStrToUpperA(\"straße été\")", Quote(QZStrToUpperA(upper)));
  Show("QZStrICmpA(\"abc\", \"ABC\")", std::to_string(QZStrICmpA("abc", "ABC")));
  Show("QZStrICmpA(\"a\", \"_\") (folded up: A < _)", std::to_string(QZStrICmpA("a", "_")));
  Show("QZStrICmpW(u\"a\", u\"_\") (folded down: a > _)", std::to_string(QZStrICmpW(u"a", u"_")));
  Show("QZStrNICmpA(\"abc\", \"abd\", 2)", std::to_string(QZStrNICmpA("abc", "abd", 2)));
  QZWCHAR wide[] = u"Stra\u00DFe \u00C9T\u00C9 \U0001F600";
  Show("QZStrToLowerW(u\"Straße ÉTÉ 😀\")", Quote(Utf8(QZStrToLowerW(wide))));
  Show("QZStrCmpW(u\"\\uFF00\", u\"\\U00010000\") (unit order)", std::to_string(QZStrCmpW(u"\uFF00", u"\U00010000")));
}

void TourCopies() {
  char buffer[8] = "abc";
  const std::string appended = QZStrNZCatA(buffer, 8, "defghij", 10);
  Show("QZStrNZCatA(\"abc\", size 8, \"defghij\", max 10)", "appended " + Quote(appended) + ", buffer " + Quote(buffer));
  char joined[32];
  const size_t n = QZStrCpyCatA(joined, 4, "host", static_cast<const char*>(nullptr), ".", "example");
  Show("QZStrCpyCatA(4: \"host\", NULL, \".\", \"example\")", Quote(joined) + ", length " + std::to_string(n));
  char* copy = QZStrNDupA("truncated", 5);
  Show("QZStrNDupA(\"truncated\", 5)", Quote(copy));
  QZStrFreeA(copy);
  char list[] = ",,alpha,,beta,gamma,";
  char* position = list;
  std::string tokens;
  while (char* token = QZStrTokA(&position, ",")) tokens += Quote(token) + " ";
  Show("QZStrTokA over \",,alpha,,beta,gamma,\"", tokens + "then position " + qztool::Pointer(position));
}

void TourNumbers() {
  char* end = nullptr;
  errno = 0;
  int32_t value = QZStrToLA("  99999999999 rest", &end, 10);
  Show("QZStrToLA(\"  99999999999 rest\", 10)",
       std::to_string(value) + ", errno " + (errno == ERANGE ? "ERANGE" : std::to_string(errno)) + ", end at " + Quote(end));
  Show("QZStrToULA(\"-1\", 10)", std::to_string(QZStrToULA("-1", nullptr, 10)));
  Show("QZStrToLW(u\"0x7fffffff\", base 0)", std::to_string(QZStrToLW(u"0x7fffffff", nullptr, 0)));
  char digits[70];
  Show("QZLToStrA(-1, 16)", Quote(QZLToStrA(-1, digits, 16)));
  Show("QZLToStrA(-1, 10)", Quote(QZLToStrA(-1, digits, 10)));
  Show("QZInt64ToStrA(INT64_MIN, 36)", Quote(QZInt64ToStrA(INT64_MIN, digits, 36)));
  QZWCHAR wdigits[70];
  Show("QZInt64ToStrW(1234567890123, 2)", Quote(Utf8(QZInt64ToStrW(1234567890123, wdigits, 2))));
}

void TourStrings() {
  TourCase();
  TourCopies();
  TourNumbers();
}

}  // namespace

QZ_TOUR_STEP(30, "Byte and wide strings", TourStrings);
