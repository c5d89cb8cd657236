// error_report.h - the failure-reporting channel behind QZErrorAlert, QZTrace and QZAssert.
//
// The state (stored method, console session, debugger-continue word) lives here; the delivery goes
// through the platform's report sinks. Reporting locks the platform lock of the debug mutex
// directly (it sits below the mutex family); while the global data holds no debug mutex the steps
// run unlocked, so these work before the start and after the stop.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <atomic>
#include <cstdint>

namespace qz::os {
class CriticalSection;
}

namespace qz::core {

inline constexpr size_t kReportBufferUnits = 512;   // text of alerts and traces, terminator included
inline constexpr size_t kCaptionBufferUnits = 64;   // caption of the operator question

void ErrorAlertV(uint32_t method, const char16_t* title, const char16_t* format, va_list args);
void ErrorAlert(uint32_t method, const char16_t* title, const char16_t* format, ...);
void TraceV(const char16_t* format, va_list args);
void Trace(const char16_t* format, ...);
void Assert(const char* expression, const char* file, int32_t line);
void SetAlertMethod(uint32_t method) noexcept;

// The lock that serialises reporting: the start hands in the debug mutex's platform lock, the
// stop takes it back (null) before the mutex goes.
void SetReportLock(os::CriticalSection* lock) noexcept;

// The session that receives operator questions, worked out at most once.
uint32_t ConsoleSessionId();

}  // namespace qz::core

extern std::atomic<uint32_t> g_alertMethod;       // method used when an alert passes 0
extern std::atomic<uint32_t> g_consoleSessionId;  // 0xFFFFFFFF until worked out, then set once
extern std::atomic<int32_t> g_debuggerContinue;   // set non-zero in a debugger to end a wait for it
