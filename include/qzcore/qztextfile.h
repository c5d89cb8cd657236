/* qztextfile.h - UTF-16 text files, read and written line by line.
 *
 * The file holds UTF-16 with a byte-order mark: written in the platform's byte order with the mark
 * first; read in the order that the file's mark selects. Written lines end in CR LF on every system.
 * A handle belongs to one thread at a time (no lock); separate handles may be used from separate
 * threads. No export returns a QZRESULT.
 */
#ifndef QZCORE_QZTEXTFILE_H
#define QZCORE_QZTEXTFILE_H

#include "qzcore/qztypes.h"

/* An open UTF-16 text file; NULL means none. */
typedef struct QZTextFileOpaque* QZTextFileHandle;

QZ_EXTERN_C_BEGIN

/* Opens `path` (bytes, as they stand) with the fopen `mode`. Pass a binary mode ("rb", "wb", "ab")
 * for the exact bytes. NULL if the file cannot be opened (errno says why) or the converter is not
 * available. */
QZ_API QZTextFileHandle QZFileOpenUTF16(const char* path, const char* mode);

/* Flushes, closes and frees the handle. NULL does nothing. */
QZ_API void QZFileCloseUTF16(QZTextFileHandle file);

/* Reads the next line into `buffer` of `size` units (terminator included) and cuts it at its first
 * CR or LF. A line ends at LF, VT, FF, CR, CR LF, NEL, LS or PS; the ends other than CR and LF stay
 * at the end of the text. A longer line comes back in pieces of size - 1 units. Returns `buffer`
 * (an empty line is ""), or NULL at the end of the file or for a size below 1 (buffer untouched). */
QZ_API QZWCHAR* QZFileGetLineUTF16(QZWCHAR* buffer, int32_t size, QZTextFileHandle file);

/* Writes `text` and CR LF. Returns the units written, the length plus 2; a failing write of the
 * underlying stream is not reported. */
QZ_API int32_t QZFileWriteLineUTF16(const QZWCHAR* text, QZTextFileHandle file);

QZ_EXTERN_C_END

#endif /* QZCORE_QZTEXTFILE_H */
