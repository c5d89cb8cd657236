// tour_unicode.cpp - tour step: UTF-16 strings by code point, UTF-8 conversions with their length
// contract, the locale and encoding names, and a UTF-16 text file written and read back.
#include <unistd.h>

#include <cstdio>
#include <string>

#include "qzcore/qzlocale.h"
#include "qzcore/qztextfile.h"
#include "qzcore/qzunicode.h"
#include "tour.h"

namespace {

using qztool::Utf8;

using qztool::Hex;
using qztool::Show;

std::string Code(QZRESULT hr) { return qztool::Result(hr); }


void TourStrings() {
  const QZWCHAR smile[] = {u'a', 0xD83D, 0xDE00, u'b', 0};
  Show("QZStrLenUTF16(\"a\\U0001F600b\")", std::to_string(QZStrLenUTF16(smile)) + " units");
  Show("QZCountCharUTF16(same)", std::to_string(QZCountCharUTF16(smile)) + " code points");
  const QZWCHAR* cursor = smile + 1;
  const int32_t cp = QZNextCharUTF16(&cursor, 0xFFFFFFFFu);
  Show("QZNextCharUTF16 at the pair", Hex(static_cast<uint32_t>(cp)) + ", moved " + std::to_string(cursor - smile - 1) + " units");
  const QZWCHAR ff00[] = {0xFF00, 0};
  const QZWCHAR u10000[] = {0xD800, 0xDC00, 0};
  Show("QZStrCmpUTF16(U+FF00, U+10000)", QZStrCmpUTF16(ff00, u10000) < 0 ? "negative (code-point order)" : "positive");
  Show("QZStrCmpUCS2(U+FF00, U+10000)", QZStrCmpUCS2(ff00, u10000) < 0 ? "negative" : "positive (unit order)");
  Show("QZStrICmpUCS2(\"\\u00C4\", \"\\u00E4\")", std::to_string(QZStrICmpUCS2(u"\u00C4", u"\u00E4")) + " (ASCII fold only)");
  Show("QZStrICmpUTF16(\"\\u00C4\", \"\\u00E4\")", std::to_string(QZStrICmpUTF16(u"\u00C4", u"\u00E4")));
  Show("QZStrNICmpUTF16(\"abcX\", \"ABCY\", 100)", std::to_string(QZStrNICmpUTF16(u"abcX", u"ABCY", 100)) + " (three units decide)");
  QZWCHAR street[16] = u"Stra\u00DFe";
  QZStrToUpperUTF16(street);
  Show("QZStrToUpperUTF16(\"Stra\\u00DFe\")", Utf8(street));
}

void TourConversions() {
  QZWCHAR wide[8];
  Show("QZUTF8ToUTF16(NULL, \"gr\\u00FC\\u00DF\", 0)", std::to_string(QZUTF8ToUTF16(nullptr, "gr\xC3\xBC\xC3\x9F", 0)) + " units needed");
  Show("QZUTF8ToUTF16(buf, \"\\xFF\", 50)", std::to_string(QZUTF8ToUTF16(wide, "\xFF", 50)) + " (invalid: the capacity)");
  Show("QZUTF8ToUTF16N(buf, 8, NULL, \"\\xFF\", -1)", qztool::Pointer(QZUTF8ToUTF16N(wide, 8, nullptr, "\xFF", -1)));
  char bytes[8];
  Show("QZUTF16ToUTF8(buf, \"abc\", 3)", std::to_string(QZUTF16ToUTF8(bytes, u"abc", 3)) + " (exact fit, no terminator)");
  Show("QZUTF16ToUTF8(buf, \"abc\", 2)", std::to_string(QZUTF16ToUTF8(bytes, u"abc", 2)) + " (cut: the full length)");
  Show("QZAnsiToUnicode(buf, \"abcdef\", 3)", std::to_string(QZAnsiToUnicode(wide, "abcdef", 3)));
  Show("QZAnsiToUnicode(NULL, \"caf\\xC3\\xA9\", 0)", std::to_string(static_cast<int64_t>(QZAnsiToUnicode(nullptr, "caf\xC3\xA9", 0))) + " (C locale decides)");
}

void TourLocale() {
  QZWCHAR buf[32];
  const QZRESULT hr = QZGetDefaultLocale(buf, 32);
  Show("QZGetDefaultLocale(buf, 32)", Code(hr) + (hr == 0 ? " \"" + Utf8(buf) + "\"" : ""));
  Show("QZGetDefaultLocale(buf, 2)", Code(QZGetDefaultLocale(buf, 2)));
  const QZRESULT enc = QZGetDefaultCharEncoding(buf, 8);
  Show("QZGetDefaultCharEncoding(buf, 8)", Code(enc) + (enc == 0 ? " \"" + Utf8(buf) + "\"" : ""));
  Show("QZGetDefaultCharEncoding(buf, 7)", Code(QZGetDefaultCharEncoding(buf, 7)));
}

void TourTextFile() {
  const std::string path = "/tmp/qzcore-tour-utf16-" + std::to_string(getpid()) + ".txt";
  QZTextFileHandle file = QZFileOpenUTF16(path.c_str(), "wb");
  Show("QZFileOpenUTF16(path, \"wb\")", "handle " + qztool::Pointer(file));
  if (file == nullptr) return;
  Show("QZFileWriteLineUTF16(\"Gr\\u00FC\\u00DFe\")", std::to_string(QZFileWriteLineUTF16(u"Gr\u00FC\u00DFe", file)) + " units");
  Show("QZFileWriteLineUTF16(\"\\U0001F600\")", std::to_string(QZFileWriteLineUTF16(u"\U0001F600", file)) + " units");
  QZFileCloseUTF16(file);
  std::string hex;
  if (FILE* f = std::fopen(path.c_str(), "rb")) {
    int c;
    while ((c = std::fgetc(f)) != EOF) {
      char b[4];
      std::snprintf(b, sizeof b, "%02X ", c);
      hex += b;
    }
    std::fclose(f);
  }
  Show("file bytes", hex);
  file = QZFileOpenUTF16(path.c_str(), "rb");
  QZWCHAR line[16];
  while (QZFileGetLineUTF16(line, 16, file) != nullptr) Show("QZFileGetLineUTF16", "\"" + Utf8(line) + "\"");
  Show("QZFileGetLineUTF16 at the end", "NULL");
  QZFileCloseUTF16(file);
  std::remove(path.c_str());
}

void TourUnicode() {
  TourStrings();
  TourConversions();
  TourLocale();
  TourTextFile();
}

}  // namespace

QZ_TOUR_STEP(40, "UTF-16, conversions, locale names, text files", TourUnicode);
