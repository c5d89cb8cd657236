/* qzprocess.h - child processes: start with pipes on request, join one or whichever ends first,
 * read exit codes, detach; and three queries about processes.
 *
 * A QZProcessHandle is a Linux pidfd widened to pointer size; -1 means no process (and stands for
 * the current process, see QZProcessGetHandle). The library keeps the set of children it started
 * and nobody has joined or detached yet: QZProcessJoinChild waits on that set.
 *
 *   child's state            handle   in the set   how it got there
 *   running or ended         valid    yes          QZProcessCreate returned 0
 *   gone from the library    closed   no           a join, a successful QZProcessGetExitCode,
 *                                                  or QZProcessDetach
 *
 * A closed handle must not be used again: its number may already name another descriptor. Using
 * one that still names nothing gives QZ_E_HANDLE.
 *
 * Every function may be called from any thread. QZProcessJoinChild holds the library's process-set
 * lock for its whole wait: while it waits, QZProcessCreate and the last step of every other join,
 * exit-code read and detach (in other threads) wait for it.
 *
 * The library reaps its own children. A program that reaps children it did not start itself
 * (waitpid(-1, ...), or SIGCHLD set to SIG_IGN) takes their exit codes away from the library.
 */
#ifndef QZCORE_QZPROCESS_H
#define QZCORE_QZPROCESS_H

#include "qzcore/qztypes.h"

/* The exit code that a running process reports where one is read (never a real one on Linux). */
#define QZ_PROCESS_STILL_ACTIVE 259u

QZ_EXTERN_C_BEGIN

/* Starts `program` (16-bit text, a path: relative paths are taken from the caller's current
 * directory, even when `workingDirectory` is given; no search along PATH, nothing appended).
 *
 * The child's argument vector is the command line `program` + " " + `arguments` (just `program`
 * when `arguments` is null; a trailing blank when it is empty) split by the first platform's C
 * run-time rules: blanks and tabs separate words; double quotes group, and are dropped; 2N
 * backslashes before a double quote give N backslashes and the quote groups, 2N+1 give N and a
 * literal quote; backslashes elsewhere are literal; inside a group "" is one literal quote. The
 * first word (the program's own name) ends at the first blank outside quotes and keeps its
 * backslashes. Neither `program` nor `arguments` is quoted by the library.
 *
 * `environment` (null-terminated array of "NAME=value" strings) becomes the child's whole
 * environment, sorted without regard to case in the collation order of the current locale (equal
 * entries in either order); null: the child inherits the caller's environment.
 * `workingDirectory` (null: the caller's) is where the child starts. `reserved` is ignored.
 *
 * `streams` (null: the child gets the caller's standard input, output and error) is in and out,
 * entries 0, 1, 2 for standard input, output and error. In: -1 asks for a new pipe; any other value
 * is a descriptor the child gets as that stream (it stays the caller's, and becomes the child's
 * stream whatever its close-on-exec flag). Out: each -1 is replaced by the caller's end of its pipe
 * (the write end for entry 0, the read end for 1 and 2), close-on-exec; the caller closes it. The
 * child inherits no descriptor but its three streams.
 *
 * Stores -1 in *result first (required), the handle on success. 0; QZ_E_FILE_NOT_FOUND for a
 * missing program or a directory on its path that is missing or is a file; QZ_E_ACCESSDENIED for a
 * program that is not executable or a directory; QZ_E_HANDLE for a stream entry that names no
 * descriptor; QZ_E_OUTOFMEMORY; QZ_E_FAIL for anything else, a missing working directory and a
 * null `program` included. On failure every pipe end made is closed (entries already replaced then
 * hold closed descriptors), and no process is left behind. */
QZ_API QZRESULT QZProcessCreate(const QZWCHAR* program, const QZWCHAR* arguments,
                                const QZWCHAR* workingDirectory, const QZWCHAR* const* environment,
                                uint32_t reserved, QZFileHandle* streams, QZProcessHandle* result);

/* Blocks until the process ends, then reads its exit code into *exitCode (may be null) and closes
 * the handle. The handle need not be in the library's set. 0; QZ_E_HANDLE for a closed handle. The
 * exit code is the process's own (0-255), or 128 + N for a process ended by signal N. */
QZ_API QZRESULT QZProcessJoin(QZProcessHandle process, uint32_t* exitCode);

/* Blocks until any child in the library's set has ended (the one first in handle order when
 * several have), stores its handle in *result (required), its exit code in *exitCode (may be null)
 * and closes it. Any number of children. 0; QZ_E_FAIL at once when the set is empty. */
QZ_API QZRESULT QZProcessJoinChild(QZProcessHandle* result, uint32_t* exitCode);

/* Never blocks. For an ended process: stores the exit code, closes the handle, 0. For a running one:
 * QZ_E_FAIL, and the handle stays valid (so this is the way to poll). QZ_E_HANDLE for a closed
 * handle. */
QZ_API QZRESULT QZProcessGetExitCode(QZProcessHandle process, uint32_t* exitCode);

/* Closes the handle and forgets the child, which runs on (the library still reaps it when it ends,
 * so no zombie is left). 0; QZ_E_HANDLE for a closed handle. */
QZ_API QZRESULT QZProcessDetach(QZProcessHandle process);

/* The handle that stands for the current process: -1, as the first platform's pseudo-handle. It
 * needs no closing: QZProcessDetach of it does nothing and gives 0, QZProcessGetExitCode gives
 * QZ_E_FAIL (still running), and a join of it never returns. */
QZ_API QZProcessHandle QZProcessGetHandle(void);

/* The number (pid) of the current process. */
QZ_API uint32_t QZProcessGetID(void);

/* The file name of the program that process `pid` runs (what follows the last '/' of its
 * executable's path), copied as strncpy does into `buffer` of `size` bytes, whose last byte is then
 * set to 0: a long name is cut, and the whole buffer is written. 1 if the name was delivered; 0 if
 * there is no such process, it may not be looked at, or its executable's full path is 260 bytes or
 * longer (the first platform's path buffer), and then the buffer is untouched. A size of
 * 0 writes nothing and gives 1 when the name was found. */
QZ_API uint16_t QZProcessGetName(uint32_t pid, char* buffer, uint32_t size);

QZ_EXTERN_C_END

#endif /* QZCORE_QZPROCESS_H */
