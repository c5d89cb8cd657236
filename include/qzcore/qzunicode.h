/* qzunicode.h - 16-bit Unicode strings (UCS2 and UTF16 families) and conversions between UTF-8,
 * UTF-16 and the byte text of the process's C locale.
 *
 * Which family: UCS2 for text known to hold only the Basic Multilingual Plane, compared exactly and
 * cheaply (unit order, ASCII-only case fold); UTF16 for any Unicode text, read by code point (a valid
 * surrogate pair is one character, order by code point so every supplementary character sorts after
 * U+FFFF, Unicode case folding and mapping through ICU). The W family (qzstring.h) reads the same
 * storage unit by unit with no notion of pairs.
 *
 * None of these returns a QZRESULT, takes a lock or tests a pointer unless told: a NULL string is a
 * fault. All are safe on any thread. Lengths and counts are in units of the string they measure.
 */
#ifndef QZCORE_QZUNICODE_H
#define QZCORE_QZUNICODE_H

#include "qzcore/qztypes.h"

QZ_EXTERN_C_BEGIN

/* Units before the terminator, counted in 32 bits and widened with the sign. */
QZ_API int64_t QZStrLenUTF16(const QZWCHAR* text);
/* Units before the terminator, at most `max`; a `max` of 0 reads nothing. */
QZ_API size_t QZStrNLenUTF16(const QZWCHAR* text, size_t max);
/* Code points; an unpaired surrogate counts as one. NULL gives 0. */
QZ_API int32_t QZCountCharUTF16(const QZWCHAR* text);

/* The code point at *cursor, reading at most `count` units, and moves *cursor past it.
 * `count` 0xFFFFFFFF means unknown (a pair may be read); otherwise it is read as signed, and below 1
 * the result is 0 with *cursor unmoved. An unpaired surrogate comes back as its own value. A NUL unit
 * comes back as 0 and is stepped over too: a caller walking a string stops at 0. */
QZ_API int32_t QZNextCharUTF16(const QZWCHAR** cursor, uint32_t count);

/* First and last occurrence of a unit, or NULL. A surrogate value matches only where it stands
 * unpaired. A unit of 0 finds the terminator. */
QZ_API QZWCHAR* QZStrChrUCS2(const QZWCHAR* text, QZWCHAR unit);
QZ_API QZWCHAR* QZStrRChrUCS2(const QZWCHAR* text, QZWCHAR unit);
/* First and last occurrence of a code point (a supplementary one as its pair), or NULL; NULL for a
 * value above 0x10FFFF. 0 finds the terminator. */
QZ_API QZWCHAR* QZStrChrUTF16(const QZWCHAR* text, int32_t codePoint);
QZ_API QZWCHAR* QZStrRChrUTF16(const QZWCHAR* text, int32_t codePoint);
/* First occurrence of `sought` that begins and ends on code-point boundaries, or NULL. */
QZ_API QZWCHAR* QZStrStrUTF16(const QZWCHAR* text, const QZWCHAR* sought);

/* Difference of the first differing units (a shorter string is negative), 0 when equal. */
QZ_API int32_t QZStrCmpUCS2(const QZWCHAR* a, const QZWCHAR* b);
/* The same after folding differing units A-Z to a-z; no other fold (U+00C4 and U+00E4 differ). */
QZ_API int32_t QZStrICmpUCS2(const QZWCHAR* a, const QZWCHAR* b);

/* Code-point order; only the sign is the contract. */
QZ_API int32_t QZStrCmpUTF16(const QZWCHAR* a, const QZWCHAR* b);
/* Code-point order of at most `count` units (the low 32 bits, as signed), stopping at a NUL. */
QZ_API int32_t QZStrNCmpUTF16(const QZWCHAR* a, const QZWCHAR* b, size_t count);
/* Code-point order after Unicode default case folding. */
QZ_API int32_t QZStrICmpUTF16(const QZWCHAR* a, const QZWCHAR* b);
/* Settled behaviour: `count` is not read; the first 3 units of each string decide, so "abcd" and
 * "ABCZ" compare equal. */
QZ_API int32_t QZStrNICmpUTF16(const QZWCHAR* a, const QZWCHAR* b, size_t count);

/* Copies at most n = min(size - 1, max) units of `source` (size - 1 computed unsigned: a size of 0
 * gives n = max), stopping after a copied NUL, and stores a NUL at dest[n]. Units between the copied
 * NUL and index n are left alone. Returns `dest`. */
QZ_API QZWCHAR* QZStrNZCpyUTF16(QZWCHAR* dest, size_t size, const QZWCHAR* source, size_t max);
/* Appends to the text in `dest` (the terminator among its first `size` units; if there is none the
 * last unit is overwritten) at most min(room, max) units and a NUL. Returns the start of the appended
 * text, not `dest`. A size of 0 writes the NUL one unit before `dest`: callers pass a size >= 1. */
QZ_API QZWCHAR* QZStrNZCatUTF16(QZWCHAR* dest, size_t size, const QZWCHAR* source, size_t max);

/* Unicode full case mapping in place under ICU's default locale; returns `text`. For a text of L
 * units the 2L units from `text` are mapped and written back (the units behind the terminator come
 * back case-mapped): the buffer must hold 2L units. A text that grows keeps what fits in 2L. */
QZ_API QZWCHAR* QZStrToLowerUTF16(QZWCHAR* text);
QZ_API QZWCHAR* QZStrToUpperUTF16(QZWCHAR* text);

/* Converts the NUL-terminated `source`; `capacity` counts its low 32 bits (bytes, or units). The
 * result is the full length without the terminator: above the capacity the output was cut, equal to
 * it the output fits with no terminator, below it a terminator follows. NULL `dest` with capacity 0
 * measures. Invalid input (an unpaired surrogate, an ill-formed byte sequence; no substitution) or a
 * NULL source gives back the capacity, which a caller cannot tell from an exact fit. */
QZ_API int64_t QZUTF16ToUTF8(char* dest, const QZWCHAR* source, size_t capacity);
QZ_API int64_t QZUTF8ToUTF16(QZWCHAR* dest, const char* source, size_t capacity);

/* The same conversions with an explicit source length (-1: NUL-terminated). Return `dest` (also when
 * the output was cut: *length then holds the size required), or NULL for invalid input or arguments,
 * with *length left alone. */
QZ_API char* QZUTF16ToUTF8N(char* dest, int32_t capacity, int32_t* length, const QZWCHAR* source,
                            int32_t sourceLength);
QZ_API QZWCHAR* QZUTF8ToUTF16N(QZWCHAR* dest, int32_t capacity, int32_t* length, const char* source,
                               int32_t sourceLength);

/* Byte text of the current C locale to 16-bit units (mbstowcs on 16-bit units; a character above
 * U+FFFF is a pair). With NULL `dest`: the units needed, `max` not read. Otherwise at most `max` units
 * are stored and the result is the count stored without the terminator; when `max` runs out there is
 * no terminator. ASCII is copied by the library without the C library. An invalid sequence gives the
 * count converted so far less one (so (size_t)-1 when it is at the start). */
QZ_API size_t QZAnsiToUnicode(QZWCHAR* dest, const char* source, size_t max);
/* 16-bit units to byte text of the current C locale, as wcstombs: at most `max` bytes, never part of
 * a character, NUL stored if it fits; NULL `dest` measures. (size_t)-1 for a character the locale
 * cannot represent or an unpaired surrogate. */
QZ_API size_t QZUnicodeToAnsi(char* dest, const QZWCHAR* source, size_t max);

QZ_EXTERN_C_END

#endif /* QZCORE_QZUNICODE_H */
