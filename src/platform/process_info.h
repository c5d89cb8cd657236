// process_info.h - identity of the calling thread and process, yielding, and the two ways a
// process stops itself (breakpoint trap, abort).
#pragma once

#include <cstdint>

namespace qz::os {

// Kernel id of the calling thread; never 0.
uint32_t GetCurrentThreadId() noexcept;
uint32_t GetCurrentProcessId() noexcept;
// Gives up the rest of the time slice (a sleep of 0).
void YieldThread() noexcept;
// Stops in an attached debugger, which may continue; without one the process ends.
void BreakpointTrap() noexcept;
// Ends the process as an aborted one: the abort signal, then exit code 3 if that returns.
[[noreturn]] void AbortProcess() noexcept;

// The terminal session of process `pid`; false if the platform cannot say.
bool ProcessIdToSessionId(uint32_t pid, uint32_t* session) noexcept;
// The platform's "session at the physical console" query, if it has one (else null).
using ActiveConsoleSessionFn = uint32_t (*)();
ActiveConsoleSessionFn FindActiveConsoleSessionQuery() noexcept;
// Platform identifier and major version of the running system; false if unknown.
bool QueryPlatformVersion(uint32_t* platformId, uint32_t* majorVersion) noexcept;

// Whether a debugger is attached to this process now.
bool IsDebuggerAttached() noexcept;

}  // namespace qz::os
