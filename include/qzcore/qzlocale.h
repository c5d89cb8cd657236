/* qzlocale.h - the user's locale and byte encoding, named in the library's own terms.
 *
 * Both queries are stateless, safe on any thread, and read the process's locale afresh on each
 * call (on Linux: the locale of LC_CTYPE, which the library sets from the environment when it is
 * loaded, and its codeset).
 */
#ifndef QZCORE_QZLOCALE_H
#define QZCORE_QZLOCALE_H

#include "qzcore/qztypes.h"

QZ_EXTERN_C_BEGIN

/* The user's locale as an ICU-style name ("de_DE", "en_US", "root", "en_US_POSIX" for the C
 * locale) from the library's table of locale identifiers; an identifier without a row, or a locale
 * without one, gives "en_US". The buffer of `size` units is filled with NUL behind the name.
 * 0; QZ_E_BUFFER_TOO_SMALL (buffer untouched) when the name and its terminator need more than
 * `size` units; QZ_E_OUTOFMEMORY. */
QZ_API QZRESULT QZGetDefaultLocale(QZWCHAR* buffer, int32_t size);

/* The byte encoding as a code page name: "CP" and the number in decimal ("CP65001" for UTF-8,
 * "CP20127" for ASCII, "CP28591" for ISO-8859-1, "CP0" for an encoding without a number), terminated.
 * 0; QZ_E_BUFFER_TOO_SMALL (buffer untouched) for a size below 8, whatever the number's length. */
QZ_API QZRESULT QZGetDefaultCharEncoding(QZWCHAR* buffer, int32_t size);

QZ_EXTERN_C_END

#endif /* QZCORE_QZLOCALE_H */
