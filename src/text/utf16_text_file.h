// utf16_text_file.h - line-by-line UTF-16 text files on ICU's ustdio streams: the byte-order mark
// and byte order of ICU's "UTF-16" converter, lines written with CR LF and read without their end.
#pragma once

#include <cstdint>

#include "qzcore/qztypes.h"

struct UFILE;

namespace qz::text {

// Opens `path` with the fopen `mode` and a "UTF-16" converter; null if either fails (errno kept).
UFILE* OpenUtf16File(const char* path, const char* mode) noexcept;
// Flushes and closes; null is ignored.
void CloseUtf16File(UFILE* file) noexcept;

// Reads the next line, or its next size - 1 units, into `buffer`, cut at the first CR or LF. Null at
// the end of the file and for a size below 1.
QZWCHAR* ReadLine(QZWCHAR* buffer, int32_t size, UFILE* file) noexcept;

// Writes `text` and CR LF; the units taken by the converter (the length plus 2). A write failure of
// the stream is not seen; 0 when no memory is left for the line.
int32_t WriteLine(const QZWCHAR* text, UFILE* file) noexcept;

}  // namespace qz::text
