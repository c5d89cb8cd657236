/* qzstring.h - byte (A) and 16-bit (W) string functions.
 *
 * A strings are NUL-terminated bytes in the process's current C locale: bytes below 0x80 are ASCII
 * and handled by the library's own rules, bytes of 0x80 and above are left to the C library. W
 * strings are NUL-terminated 16-bit units read unit by unit: a surrogate is a character like any
 * other, and no pair is ever recognised; classes and case of a unit come from the C library's wide
 * functions. Counts and sizes are in units of the string.
 *
 * None of these functions returns a QZRESULT, takes a lock or holds state; every one may be called
 * on any thread. A NULL string is not tested for unless a contract says so. Functions that reach
 * the C library see the current C locale, and a change of locale during a call is not guarded
 * against. A `long` of the number functions is 32 bits.
 */
#ifndef QZCORE_QZSTRING_H
#define QZCORE_QZSTRING_H

#include "qzcore/qztypes.h"

QZ_EXTERN_C_BEGIN

/* ---- Length and copy ---------------------------------------------------------------------- */

/* Length in units, without the terminator. The _32 names are the same functions, for callers that
 * read 32 bits of the result. */
QZ_API size_t QZStrLenA(const char* text);
QZ_API int32_t QZStrLenA_32(const char* text);
QZ_API size_t QZStrLenW(const QZWCHAR* text);
QZ_API int32_t QZStrLenW_32(const QZWCHAR* text);
/* The length, at most `maximum`. A maximum of 0 gives 0 without reading `text`. */
QZ_API size_t QZStrNLenA(const char* text, size_t maximum);
QZ_API size_t QZStrNLenW(const QZWCHAR* text, size_t maximum);

/* Copy through the terminator / append at the destination's terminator; no limit. Return
 * `destination`. */
QZ_API char* QZStrCpyA(char* destination, const char* source);
QZ_API QZWCHAR* QZStrCpyW(QZWCHAR* destination, const QZWCHAR* source);
QZ_API char* QZStrCatA(char* destination, const char* source);
QZ_API QZWCHAR* QZStrCatW(QZWCHAR* destination, const QZWCHAR* source);

/* strncpy/wcsncpy: copies at most `count` units, fills the rest of the `count` with NUL, and leaves
 * the result unterminated when the source has `count` or more units. Returns `destination`. */
QZ_API char* QZStrNCpyA(char* destination, const char* source, size_t count);
QZ_API QZWCHAR* QZStrNCpyW(QZWCHAR* destination, const QZWCHAR* source, size_t count);
/* strncat/wcsncat: appends at most `count` units, then always a terminator. Returns
 * `destination`. */
QZ_API char* QZStrNCatA(char* destination, const char* source, size_t count);
QZ_API QZWCHAR* QZStrNCatW(QZWCHAR* destination, const QZWCHAR* source, size_t count);

/* Bounded copy that always terminates: n = the smaller of size - 1 and `maximum`; copies at most n
 * units, fills up to n with NUL and stores a NUL at index n. Returns `destination`. size - 1 is
 * unsigned: a size of 0 is not guarded against, and lets `maximum` alone bound the copy. */
QZ_API char* QZStrNZCpyA(char* destination, size_t size, const char* source, size_t maximum);
QZ_API QZWCHAR* QZStrNZCpyW(QZWCHAR* destination, size_t size, const QZWCHAR* source, size_t maximum);
/* Bounded append that always terminates. The text ends at the first NUL among the first `size`
 * units; a buffer with none is taken as full and its last unit becomes the terminator. At most the
 * smaller of the room left (less one for the terminator) and `maximum` units are appended, padded
 * with NUL to that count, then a NUL. Returns the address where the appended text starts, not
 * `destination`. A size of 0 is not guarded against: it stores a NUL one unit before
 * `destination`. */
QZ_API char* QZStrNZCatA(char* destination, size_t size, const char* source, size_t maximum);
QZ_API QZWCHAR* QZStrNZCatW(QZWCHAR* destination, size_t size, const QZWCHAR* source, size_t maximum);

/* Concatenates `count` byte strings, passed as further arguments, into `destination` and
 * terminates it; returns the length in bytes. NULL and empty strings among them are skipped. A NULL
 * destination returns 0 and reads no further argument; a count of 0 or below stores an empty
 * string. There is no size: the caller answers for the room. */
QZ_API size_t QZStrCpyCatA(char* destination, int32_t count, ...);

/* A new copy of `text`, or NULL for a NULL `text`; the N forms copy at most `maximum` units
 * (stopping at a NUL; `text` need not be terminated within the maximum) and terminate the copy, a
 * maximum of 0 giving an empty string. Memory is obtained as the standard operator new obtains it
 * (malloc, then the new-handler in a loop); when none can be had, a C++ std::bad_alloc passes to
 * the caller: these functions never return NULL for lack of memory. Give copies back with
 * QZStrFreeA/QZStrFreeW (free). */
QZ_API char* QZStrDupA(const char* text);
QZ_API QZWCHAR* QZStrDupW(const QZWCHAR* text);
QZ_API char* QZStrNDupA(const char* text, uint32_t maximum);
QZ_API QZWCHAR* QZStrNDupW(const QZWCHAR* text, uint32_t maximum);
/* Frees a copy (NULL allowed). The two names are one function. */
QZ_API void QZStrFreeA(char* copy);
QZ_API void QZStrFreeW(QZWCHAR* copy);

/* ---- Compare and search ------------------------------------------------------------------- */

/* -1, 0 or 1: units compared as unsigned values. */
QZ_API int32_t QZStrCmpA(const char* first, const char* second);
QZ_API int32_t QZStrCmpW(const QZWCHAR* first, const QZWCHAR* second);
/* strncmp/wcsncmp: negative, 0 or positive over at most `count` units. */
QZ_API int32_t QZStrNCmpA(const char* first, const char* second, size_t count);
QZ_API int32_t QZStrNCmpW(const QZWCHAR* first, const QZWCHAR* second, size_t count);

/* Case-insensitive compare of byte strings: negative, 0 or positive. ASCII is folded to UPPER case
 * by plain comparisons, so the punctuation between `Z` and `a` (0x5B to 0x60) sorts above every
 * letter ("a" < "_"). At the first byte of 0x80 or above on either side, the rest of both strings
 * is compared byte by byte with both sides folded to lower case by the C locale's `tolower`. So
 * the sign for two strings that differ at the same letter may change when a non-ASCII byte stands
 * before it. */
QZ_API int32_t QZStrICmpA(const char* first, const char* second);
/* The same over at most `count` bytes; a count of 0 gives 0. */
QZ_API int32_t QZStrNICmpA(const char* first, const char* second, size_t count);
/* Case-insensitive compare of 16-bit strings, each unit folded to lower case by the C locale:
 * the difference of the first folded units that differ. No ASCII shortcut. */
QZ_API int32_t QZStrICmpW(const QZWCHAR* first, const QZWCHAR* second);
QZ_API int32_t QZStrNICmpW(const QZWCHAR* first, const QZWCHAR* second, size_t count);

/* strchr/strrchr and wcschr/wcsrchr: the first or last unit equal to `c` (the terminator for
 * NUL), or NULL. */
QZ_API char* QZStrChrA(const char* text, char c);
QZ_API char* QZStrRChrA(const char* text, char c);
QZ_API QZWCHAR* QZStrChrW(const QZWCHAR* text, QZWCHAR c);
QZ_API QZWCHAR* QZStrRChrW(const QZWCHAR* text, QZWCHAR c);
/* strstr/wcsstr: the first occurrence of `sought` in `text` (`text` itself for an empty `sought`),
 * or NULL. */
QZ_API char* QZStrStrA(const char* text, const char* sought);
QZ_API QZWCHAR* QZStrStrW(const QZWCHAR* text, const QZWCHAR* sought);

/* Re-entrant tokeniser. The caller keeps the position in a pointer of its own, set to the string
 * before the first call; the string is changed in place. Each call skips delimiters, cuts the next
 * token off with a NUL, moves the position behind it and returns the token. When the end of the
 * string is met the position becomes NULL; a NULL position returns NULL. Consecutive delimiters
 * give no empty tokens; an empty delimiter set makes the whole string one token. No state is kept
 * in the library: any number of walks may go on at once, on any threads. */
QZ_API char* QZStrTokA(char** position, const char* delimiters);
QZ_API QZWCHAR* QZStrTokW(QZWCHAR** position, const QZWCHAR* delimiters);

/* ---- Characters and case ------------------------------------------------------------------ */

/* isalpha/isdigit of the byte widened with its sign, and iswalpha/iswdigit of the unit, by the C
 * locale: nonzero or 0. */
QZ_API int32_t QZIsAlphaA(char c);
QZ_API int32_t QZIsDigitA(char c);
QZ_API int32_t QZIsAlphaW(QZWCHAR c);
QZ_API int32_t QZIsDigitW(QZWCHAR c);
/* White space: for ASCII exactly 0x20 and 0x09 to 0x0D (1 or 0); above, isspace of the signed
 * byte / iswspace of the unit. */
QZ_API int32_t QZIsSpaceA(char c);
QZ_API int32_t QZIsSpaceW(QZWCHAR c);

/* Upper case of one byte: ASCII `a` to `z` less 0x20; 0x80 and above, toupper of the signed byte
 * (which may be negative). */
QZ_API int32_t QZToUpperA(char c);
/* ASCII: the same mapping as QZToUpperA, to UPPER case (`a` gives `A`). 0x80 and above: tolower of
 * the signed byte. */
QZ_API int32_t QZToLowerA(char c);
/* Upper case of a unit (ASCII by plain comparison, above by towupper); lower case by towlower. */
QZ_API int32_t QZToUpperW(QZWCHAR c);
QZ_API int32_t QZToLowerW(QZWCHAR c);

/* In place. ASCII `a` to `z` become `A` to `Z`; at the first byte of 0x80 or above the rest of the
 * string goes to upper case byte by byte by the C locale's `toupper` (in a UTF-8 locale the bytes of
 * a multi-byte character stay as they are). Returns `text`. */
QZ_API char* QZStrToUpperA(char* text);
/* In place. ASCII `a` to `z` become `A` to `Z` -- upper case, as in QZStrToUpperA; ASCII `A` to `Z`
 * and every other ASCII byte stay. At the first byte of 0x80 or above the rest of the string, from
 * that byte on, goes to lower case byte by byte by the C locale's `tolower`. So on ASCII text this function delivers upper
 * case; host-name keys and copies rely on it. Returns `text`. */
QZ_API char* QZStrToLowerA(char* text);
/* In place: ASCII by plain comparison up to the first unit above 0x7F, the rest by towupper unit by
 * unit. Returns `text`. */
QZ_API QZWCHAR* QZStrToUpperW(QZWCHAR* text);
/* In place: every unit by towlower (true lower case). Returns `text`. */
QZ_API QZWCHAR* QZStrToLowerW(QZWCHAR* text);

/* ---- Numbers ------------------------------------------------------------------------------ */

/* atoi/_wtoi: optional white space and sign, decimal digits; out of range gives INT32_MAX or
 * INT32_MIN with errno ERANGE. */
QZ_API int32_t QZStrToIA(const char* text);
QZ_API int32_t QZStrToIW(const QZWCHAR* text);
/* strtol/wcstol and strtoul/wcstoul with a 32-bit long: white space, sign, base 2 to 36 or 0 (a 0x
 * prefix gives 16, a leading 0 gives 8). Out of range: the limit (INT32_MIN/INT32_MAX, UINT32_MAX)
 * and errno ERANGE; a minus sign before an unsigned value negates it modulo 2^32. An invalid base
 * gives 0 and errno EINVAL. *end (when `end` is not NULL) receives the address behind the number,
 * or `text` when there was none; a 0x prefix is no digit, so "0x" without a hexadecimal digit
 * behind it (base 0 or 16) converts nothing and gives 0 with *end at `text`. */
QZ_API int32_t QZStrToLA(const char* text, char** end, int32_t base);
QZ_API int32_t QZStrToLW(const QZWCHAR* text, QZWCHAR** end, int32_t base);
QZ_API uint32_t QZStrToULA(const char* text, char** end, int32_t base);
QZ_API uint32_t QZStrToULW(const QZWCHAR* text, QZWCHAR** end, int32_t base);
/* strtod/wcstod under the C locale. */
QZ_API double QZStrToDA(const char* text, char** end);
QZ_API double QZStrToDW(const QZWCHAR* text, QZWCHAR** end);
/* _ltoa/_i64toa and their wide forms: digits of `value` in `radix` (2 to 36, lower-case letters)
 * into `buffer`, terminated. A minus sign only in radix 10; other radices show the two's complement
 * bits. No bound: room for 34 (32-bit) or 66 (64-bit) units covers every value. An invalid radix
 * stores an empty string and sets errno to EINVAL. Return `buffer`. */
QZ_API char* QZLToStrA(int32_t value, char* buffer, int32_t radix);
QZ_API QZWCHAR* QZLToStrW(int32_t value, QZWCHAR* buffer, int32_t radix);
QZ_API char* QZInt64ToStrA(int64_t value, char* buffer, int32_t radix);
QZ_API QZWCHAR* QZInt64ToStrW(int64_t value, QZWCHAR* buffer, int32_t radix);

QZ_EXTERN_C_END

#endif /* QZCORE_QZSTRING_H */
