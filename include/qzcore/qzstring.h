/* qzstring.h - byte (A) and 16-bit (W) string functions.
 *
 * A strings are NUL-terminated bytes in the process's current C locale: bytes below 0x80 are ASCII
 * and handled by the library's own rules, bytes of 0x80 and above are left to the C library. W
 * strings are NUL-terminated 16-bit units read unit by unit: a surrogate is a character like any
 * other, and no pair is ever recognised. Counts are in units of the string.
 *
 * None of these functions returns a QZRESULT, takes a lock or holds state; every one may be called
 * on any thread. A NULL string is not tested for unless a contract says so. Functions that reach
 * the C library see the current C locale, and a change of locale during a call is not guarded
 * against.
 */
#ifndef QZCORE_QZSTRING_H
#define QZCORE_QZSTRING_H

#include "qzcore/qztypes.h"

QZ_EXTERN_C_BEGIN

/* ---- Length and copy ---------------------------------------------------------------------- */

/* strncpy: copies at most `count` bytes, fills the rest of the `count` with NUL, and leaves the
 * result unterminated when the source has `count` or more bytes. Returns `destination`. */
QZ_API char* QZStrNCpyA(char* destination, const char* source, size_t count);

/* ---- Compare and search ------------------------------------------------------------------- */

/* strstr: the first occurrence of `sought` in `text` (`text` itself for an empty `sought`), or
 * NULL. */
QZ_API char* QZStrStrA(const char* text, const char* sought);

/* ---- Characters and case ------------------------------------------------------------------ */

/* In place. ASCII `a` to `z` become `A` to `Z` -- upper case, as in QZStrToUpperA; ASCII `A` to `Z`
 * and every other ASCII byte stay. At the first byte of 0x80 or above the rest of the string, from
 * that byte on, goes to lower case by the C locale. So on ASCII text this function delivers upper
 * case; host-name keys and copies rely on it. Returns `text`. */
QZ_API char* QZStrToLowerA(char* text);

QZ_EXTERN_C_END

#endif /* QZCORE_QZSTRING_H */
