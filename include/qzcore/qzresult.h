/* qzresult.h - result translation and the failure-reporting channel: alerts, traces, assertions.
 *
 * Exports report by result code. Besides that a programmer sees three things: QZTrace text on the
 * debugger channel, QZErrorAlert with its four delivery methods, and QZAssert built on both.
 *
 * On Linux the debugger channel is $QZCORE_DEBUG_OUTPUT ("stderr" or a file path, appended to),
 * else standard error while a debugger is attached, else nowhere. The event log is syslog (source
 * "Morvalent Services", facility user, priority info), or the file $QZCORE_EVENT_LOG with one line
 * per entry: title, a tab, text, with backslash, CR and LF escaped. The operator is asked on the
 * controlling terminal; with no terminal the question cannot be delivered.
 */
#ifndef QZCORE_QZRESULT_H
#define QZCORE_QZRESULT_H

#include "qzcore/qztypes.h"

/* Method bits of QZErrorAlert and QZErrorAlertSetMethod; any may be combined, others are ignored. */
#define QZ_ALERT_CONSOLE_MESSAGE 0x1u   /* ask the operator Abort/Retry/Ignore and act on the answer */
#define QZ_ALERT_BREAK 0x2u             /* breakpoint trap, as QZDebugBreak */
#define QZ_ALERT_WAIT_FOR_DEBUGGER 0x4u /* spin until a debugger sets s_debuggerContinue */
#define QZ_ALERT_EVENT_LOG 0x8u         /* one information entry in the event log */

QZ_EXTERN_C_BEGIN

/* Translates a platform error number: 0 -> 0; 2 and 3 -> QZ_E_FILE_NOT_FOUND; 5 -> QZ_E_ACCESSDENIED;
 * 6 -> QZ_E_HANDLE; 14 -> QZ_E_OUTOFMEMORY; 183 -> QZ_E_ALREADY_EXISTS; 258 -> QZ_E_TIMEOUT; any other
 * number -> QZ_E_FAIL. Pure; any thread. */
QZ_API QZRESULT QZResultFromNative(uint32_t nativeError);

/* Alerts a person. Method 0 means the stored method (QZErrorAlertSetMethod); if that is 0 too,
 * nothing happens and no argument is read. Steps, in order: QZ_ALERT_BREAK traps; with
 * QZ_ALERT_CONSOLE_MESSAGE or QZ_ALERT_EVENT_LOG the text is formatted (16-bit format: %s and %ls
 * take a 16-bit string, %hs a byte string) and cut at 511 units; QZ_ALERT_EVENT_LOG writes the entry
 * (title as given, may be null; then the text); QZ_ALERT_CONSOLE_MESSAGE asks the operator under
 * the library's debug lock, ending the process on Abort (abort signal, then exit code 3) and
 * trapping on Retry; QZ_ALERT_WAIT_FOR_DEBUGGER then spins until released. May block for as long as
 * the operator takes to answer. */
QZ_API void QZErrorAlert(uint32_t method, const QZWCHAR* title, const QZWCHAR* format, ...);

/* Stores the method used when QZErrorAlert is called with 0. Always returns 0. Unsynchronised. */
QZ_API QZRESULT QZErrorAlertSetMethod(uint32_t method);

/* Reports a failed assertion: traces "\nQZ_ASSERT(...)\n file:line\n", then alerts with the title
 * "Morvalent Services" under the stored method, or with QZ_ALERT_BREAK when no method is stored.
 * Returns if the alert returns. */
QZ_API void QZAssert(const char* expression, const char* file, int32_t line);

/* Writes "[0x<thread id>]" and then the formatted text (cut at 511 units) to the debugger channel,
 * as two pieces, under the library's debug lock. */
QZ_API void QZTrace(const QZWCHAR* format, ...);

QZ_EXTERN_C_END

/* Caller-side assertion: calls QZAssert with the expression text, file and line when it fails. */
#define QZ_ASSERT(expr) ((expr) ? (void)0 : QZAssert(#expr, __FILE__, __LINE__))

#endif /* QZCORE_QZRESULT_H */
