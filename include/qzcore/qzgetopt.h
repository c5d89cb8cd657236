/* qzgetopt.h - the command-line option parser: long options with permutation and abbreviation.
 *
 * QZGetOption walks an argument vector and returns one option per call. Every word that begins
 * with a dash is a long option, whether it has one dash or two (-verbose and --verbose are the
 * same). A name may be abbreviated to any prefix that no other entry of the table shares; an exact
 * name always wins. Words that are not options are moved behind the options (permutation) unless
 * the environment variable POSIXLY_CORRECT is set, in which case the scan stops at the first such
 * word. A single "-" is an operand; "--" ends the options.
 *
 * The parser's state lives in the exported variables below, which callers read and assign in
 * place. It is not guarded: use the parser from one thread, normally at program start.
 *
 *   result        meaning
 *   -1            no more options: QZGetOptionIndex is the first operand
 *   '?' (0x3F)    error: QZGetOptionOption tells which option (0 when none), a message went to
 *                 standard error if QZGetOptionError is nonzero
 *   entry's val   that option; its argument (if any) is in QZGetOptionArgument
 *
 * Errors and the message each prints (the formats are the QZGetOptionMsg* cells; each message ends
 * with a newline and the stream is flushed; no program name is printed):
 *   unknown name                           QZGetOptionMsgUnrecognized       option 0
 *   prefix of several names                QZGetOptionMsgAmbiguous          option 0
 *   --name=value where has_arg is 0        QZGetOptionMsgNoArgumentAllowed  option val
 *   has_arg 1 and no value, no next word   QZGetOptionMsgStringRequiresArgument  option val
 *   any option word with a NULL table      QZGetOptionMsgInvalid            option: the character
 *
 * A second scan: set QZGetOptionIndex to 0 (taken as 1 with a reset), or set QZGetOptionReset to 1
 * with QZGetOptionIndex at the first word to scan.
 */
#ifndef QZCORE_QZGETOPT_H
#define QZCORE_QZGETOPT_H

#include "qzcore/qztypes.h"

/* One entry of the long-option table; the table ends with an entry whose name is NULL. */
typedef struct QZLongOption {
  const char* name; /* full name, without dashes */
  int32_t has_arg;  /* 0: no argument; 1: required (--name=value or --name value); any other value:
                       no argument is taken, and an attached "=value" is accepted and dropped */
  int32_t val;      /* what QZGetOption returns for this entry */
} QZLongOption;

QZ_EXTERN_C_BEGIN

/* Index of the next word to look at (starts at 1). 0 restarts the scan at 1. */
QZ_API extern int32_t QZGetOptionIndex;
/* Argument of the option just returned, pointing into the vector, or NULL. */
QZ_API extern char* QZGetOptionArgument;
/* The option behind the last error: the entry's val, the character (as a signed char widens it:
 * a byte of 0x80 or above is negative), or 0 (starts at '?'). */
QZ_API extern int32_t QZGetOptionOption;
/* Nonzero (the start value 1): error messages are printed to standard error. */
QZ_API extern int32_t QZGetOptionError;
/* Set to nonzero to restart a scan at QZGetOptionIndex. */
QZ_API extern int32_t QZGetOptionReset;

/* Message formats; assign translated texts that keep the same conversions. */
QZ_API extern const char* QZGetOptionMsgCharacterRequiresArgument; /* %c */
QZ_API extern const char* QZGetOptionMsgIllegal;                   /* %c, POSIXLY_CORRECT set */
QZ_API extern const char* QZGetOptionMsgInvalid;                   /* %c */
QZ_API extern const char* QZGetOptionMsgStringRequiresArgument;    /* %s dashes, %s name */
QZ_API extern const char* QZGetOptionMsgAmbiguous;                 /* %s dashes, %.*s name */
QZ_API extern const char* QZGetOptionMsgNoArgumentAllowed;         /* %s dashes, %.*s name */
QZ_API extern const char* QZGetOptionMsgUnrecognized;              /* %s dashes, %s word */

/* Returns the next option of argv[0..argc-1] (see the table above). `longOptions` may be NULL (every
 * option word is then an error); `longIndex`, if not NULL, receives the index of the entry found.
 * The words of argv may be reordered in place (the pointers, never the text): when the scan ends,
 * the options stand in front of the operands, each group in its original order. Not thread-safe. */
QZ_API int32_t QZGetOption(int32_t argc, char* const* argv, const QZLongOption* longOptions, int32_t* longIndex);

QZ_EXTERN_C_END

#endif /* QZCORE_QZGETOPT_H */
