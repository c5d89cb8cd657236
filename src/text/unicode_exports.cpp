// unicode_exports.cpp - the exported functions of the UCS2 and UTF16 families, the conversions, the
// locale queries and the UTF-16 text files.
#include <unicode/ustdio.h>
#include <unicode/ustring.h>

#include "frame/export_frame.h"
#include "platform/c_multibyte.h"
#include "qzcore/qzlocale.h"
#include "qzcore/qzstring.h"
#include "qzcore/qztextfile.h"
#include "qzcore/qzunicode.h"
#include "text/locale_names.h"
#include "text/utf16_string.h"
#include "text/utf16_text_file.h"
#include "text/utf_conversion.h"

namespace {

constexpr uint32_t kCompareCodePointOrder = U_COMPARE_CODE_POINT_ORDER;  // 0x8000, default folding
constexpr int32_t kNoCaseCompareUnits = 3;  // the fixed count of QZStrNICmpUTF16

UFILE* File(QZTextFileHandle file) { return reinterpret_cast<UFILE*>(file); }

}  // namespace

extern "C" {

QZ_API int64_t QZStrLenUTF16(const QZWCHAR* text) { return qz::text::Length32(text); }

// QZStrNLenUTF16 is QZStrNLenW under a second name: its alias stands beside QZStrNLenW.

QZ_API int32_t QZCountCharUTF16(const QZWCHAR* text) { return u_countChar32(text, -1); }

QZ_API int32_t QZNextCharUTF16(const QZWCHAR** cursor, uint32_t count) { return qz::text::NextChar(cursor, count); }

QZ_API QZWCHAR* QZStrChrUCS2(const QZWCHAR* text, QZWCHAR unit) { return u_strchr(text, unit); }
QZ_API QZWCHAR* QZStrRChrUCS2(const QZWCHAR* text, QZWCHAR unit) { return u_strrchr(text, unit); }
QZ_API QZWCHAR* QZStrChrUTF16(const QZWCHAR* text, int32_t codePoint) { return u_strchr32(text, codePoint); }
QZ_API QZWCHAR* QZStrRChrUTF16(const QZWCHAR* text, int32_t codePoint) { return u_strrchr32(text, codePoint); }
QZ_API QZWCHAR* QZStrStrUTF16(const QZWCHAR* text, const QZWCHAR* sought) { return u_strstr(text, sought); }

QZ_API int32_t QZStrCmpUCS2(const QZWCHAR* a, const QZWCHAR* b) { return qz::text::CompareUnits(a, b); }
QZ_API int32_t QZStrICmpUCS2(const QZWCHAR* a, const QZWCHAR* b) { return qz::text::CompareUnitsAsciiNoCase(a, b); }

QZ_API int32_t QZStrCmpUTF16(const QZWCHAR* a, const QZWCHAR* b) { return u_strcmpCodePointOrder(a, b); }
QZ_API int32_t QZStrNCmpUTF16(const QZWCHAR* a, const QZWCHAR* b, size_t count) {
  return u_strncmpCodePointOrder(a, b, static_cast<int32_t>(count));
}
QZ_API int32_t QZStrICmpUTF16(const QZWCHAR* a, const QZWCHAR* b) { return u_strcasecmp(a, b, kCompareCodePointOrder); }
QZ_API int32_t QZStrNICmpUTF16(const QZWCHAR* a, const QZWCHAR* b, size_t /*count: not read*/) {
  return u_strncasecmp(a, b, kNoCaseCompareUnits, kCompareCodePointOrder);
}

QZ_API QZWCHAR* QZStrNZCpyUTF16(QZWCHAR* dest, size_t size, const QZWCHAR* source, size_t max) {
  return qz::text::CopyBounded(dest, size, source, max);
}
QZ_API QZWCHAR* QZStrNZCatUTF16(QZWCHAR* dest, size_t size, const QZWCHAR* source, size_t max) {
  return qz::text::AppendBounded(dest, size, source, max);
}

QZ_API QZWCHAR* QZStrToLowerUTF16(QZWCHAR* text) {
  return qz::text::MapCaseInPlace(text, qz::text::CaseMapping::kLower);
}
QZ_API QZWCHAR* QZStrToUpperUTF16(QZWCHAR* text) {
  return qz::text::MapCaseInPlace(text, qz::text::CaseMapping::kUpper);
}

QZ_API int64_t QZUTF16ToUTF8(char* dest, const QZWCHAR* source, size_t capacity) {
  return qz::text::Utf16ToUtf8(dest, source, capacity);
}
QZ_API int64_t QZUTF8ToUTF16(QZWCHAR* dest, const char* source, size_t capacity) {
  return qz::text::Utf8ToUtf16(dest, source, capacity);
}

QZ_API char* QZUTF16ToUTF8N(char* dest, int32_t capacity, int32_t* length, const QZWCHAR* source,
                            int32_t sourceLength) {
  UErrorCode error = U_ZERO_ERROR;
  return u_strToUTF8(dest, capacity, length, source, sourceLength, &error);
}
QZ_API QZWCHAR* QZUTF8ToUTF16N(QZWCHAR* dest, int32_t capacity, int32_t* length, const char* source,
                               int32_t sourceLength) {
  UErrorCode error = U_ZERO_ERROR;
  return u_strFromUTF8(dest, capacity, length, source, sourceLength, &error);
}

QZ_API size_t QZAnsiToUnicode(QZWCHAR* dest, const char* source, size_t max) {
  return qz::text::AnsiToUnicode(dest, source, max);
}
QZ_API size_t QZUnicodeToAnsi(char* dest, const QZWCHAR* source, size_t max) {
  return qz::os::Utf16ToMultiByte(dest, source, max);
}

QZ_API QZRESULT QZGetDefaultLocale(QZWCHAR* buffer, int32_t size) {
  return QZExportFrame([&] { return qz::text::GetDefaultLocale(buffer, size); });
}
QZ_API QZRESULT QZGetDefaultCharEncoding(QZWCHAR* buffer, int32_t size) {
  return qz::text::GetDefaultCharEncoding(buffer, size);
}

QZ_API QZTextFileHandle QZFileOpenUTF16(const char* path, const char* mode) {
  return reinterpret_cast<QZTextFileHandle>(qz::text::OpenUtf16File(path, mode));
}
QZ_API void QZFileCloseUTF16(QZTextFileHandle file) { qz::text::CloseUtf16File(File(file)); }
QZ_API QZWCHAR* QZFileGetLineUTF16(QZWCHAR* buffer, int32_t size, QZTextFileHandle file) {
  return qz::text::ReadLine(buffer, size, File(file));
}
QZ_API int32_t QZFileWriteLineUTF16(const QZWCHAR* text, QZTextFileHandle file) {
  return qz::text::WriteLine(text, File(file));
}

}  // extern "C"
