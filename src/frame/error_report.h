// error_report.h - the failure-reporting channel behind QZErrorAlert, QZTrace and QZAssert.
//
// The state (stored method, console session, debugger-continue word) lives here; the delivery goes
// through the platform's report sinks. Every step that takes the debug mutex is skipped while the
// global data holds none, so these work before the start and after the stop.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace qz::core {

inline constexpr size_t kReportBufferUnits = 512;   // text of alerts and traces, terminator included
inline constexpr size_t kCaptionBufferUnits = 64;   // caption of the operator question

void ErrorAlertV(uint32_t method, const char16_t* title, const char16_t* format, va_list args);
void ErrorAlert(uint32_t method, const char16_t* title, const char16_t* format, ...);
void TraceV(const char16_t* format, va_list args);
void Trace(const char16_t* format, ...);
void Assert(const char* expression, const char* file, int32_t line);
void SetAlertMethod(uint32_t method) noexcept;

// The session that receives operator questions, worked out at most once.
uint32_t ConsoleSessionId();

}  // namespace qz::core

extern uint32_t s_alertMethod;              // method used when an alert passes 0
extern uint32_t s_consoleSessionId;         // 0xFFFFFFFF until worked out
extern volatile int32_t s_debuggerContinue; // set non-zero in a debugger to end a wait for it
