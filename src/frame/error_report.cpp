// error_report.cpp - alerts, traces and assertions over the platform's report sinks.
#include "frame/error_report.h"

#include <atomic>

#include "frame/core_exception.h"
#include "frame/wide_format.h"
#include "platform/critical_section.h"
#include "platform/process_info.h"
#include "platform/report_sinks.h"
#include "qzcore/qzresult.h"

std::atomic<uint32_t> g_alertMethod{0};
std::atomic<uint32_t> g_consoleSessionId{0xFFFFFFFF};
std::atomic<int32_t> g_debuggerContinue{0};

namespace qz::core {
namespace {

constexpr uint32_t kNoSession = 0xFFFFFFFF;
constexpr uint32_t kPlatformNt = 2;

// The platform lock of the debug mutex, or null while the global data holds none.
std::atomic<os::CriticalSection*> g_reportLock{nullptr};

// Holds the report lock for a scope, or nothing while there is none.
class CReportLockGuard {
 public:
  CReportLockGuard() noexcept : m_lock(g_reportLock.load(std::memory_order_acquire)) {
    if (m_lock != nullptr) m_lock->Enter();
  }
  ~CReportLockGuard() {
    if (m_lock != nullptr) m_lock->Leave();
  }
  CReportLockGuard(const CReportLockGuard&) = delete;
  CReportLockGuard& operator=(const CReportLockGuard&) = delete;

 private:
  os::CriticalSection* m_lock;  // held, or null
};

uint32_t WorkOutConsoleSession() noexcept {
  const os::ActiveConsoleSessionFn activeConsole = os::FindActiveConsoleSessionQuery();
  uint32_t session = 0;
  os::ProcessIdToSessionId(os::GetCurrentProcessId(), &session);
  if (session != 0 || activeConsole == nullptr) return session;
  // A process in session 0 (a service) has no operator of its own: ask for the console's.
  const uint32_t console = activeConsole();
  if (console != kNoSession) return console;
  uint32_t platformId = 0;
  uint32_t major = 0;
  if (os::QueryPlatformVersion(&platformId, &major) && platformId == kPlatformNt && major > 5) return 1;
  return 0;
}

uint32_t ShowConsoleMessage(const char16_t* title, const char16_t* text) {
  if (g_consoleSessionId.load(std::memory_order_acquire) == kNoSession) {
    CReportLockGuard guard;
    if (g_consoleSessionId.load(std::memory_order_relaxed) == kNoSession) {
      g_consoleSessionId.store(WorkOutConsoleSession(), std::memory_order_release);
    }
  }
  char16_t caption[kCaptionBufferUnits];
  FormatWideToBuffer(caption, kCaptionBufferUnits, u"%ls [Process ID %d]", title,
                     static_cast<int>(os::GetCurrentProcessId()));
  char16_t body[kReportBufferUnits];
  FormatWideToBuffer(body, kReportBufferUnits, u"%ls\n\nPress retry to debug the application.", text);
  return os::AskOperator(g_consoleSessionId.load(std::memory_order_acquire), caption, body);
}

}  // namespace

uint32_t ConsoleSessionId() { return g_consoleSessionId.load(std::memory_order_acquire); }

void SetAlertMethod(uint32_t method) noexcept { g_alertMethod.store(method, std::memory_order_relaxed); }

void SetReportLock(os::CriticalSection* lock) noexcept { g_reportLock.store(lock, std::memory_order_release); }

void ErrorAlertV(uint32_t method, const char16_t* title, const char16_t* format, va_list args) {
  if (method == 0) {
    method = g_alertMethod.load(std::memory_order_relaxed);
    if (method == 0) return;
  }
  if ((method & QZ_ALERT_BREAK) != 0) os::BreakpointTrap();
  char16_t text[kReportBufferUnits] = {0};
  if ((method & (QZ_ALERT_CONSOLE_MESSAGE | QZ_ALERT_EVENT_LOG)) != 0) {
    FormatWideToBuffer(text, kReportBufferUnits, format, args);
  }
  if ((method & QZ_ALERT_EVENT_LOG) != 0) os::ReportEvent(title, text);
  if ((method & QZ_ALERT_CONSOLE_MESSAGE) != 0) {
    CReportLockGuard guard;
    const uint32_t answer = ShowConsoleMessage(title != nullptr ? title : u"QZErrorAlert", text);
    if (answer == os::kAnswerAbort) os::AbortProcess();
    if (answer == os::kAnswerRetry) os::BreakpointTrap();
  }
  if ((method & QZ_ALERT_WAIT_FOR_DEBUGGER) != 0) {
    while (g_debuggerContinue.load(std::memory_order_acquire) == 0) os::YieldThread();
    g_debuggerContinue.store(0, std::memory_order_relaxed);
  }
}

void ErrorAlert(uint32_t method, const char16_t* title, const char16_t* format, ...) {
  va_list args;
  va_start(args, format);
  ErrorAlertV(method, title, format, args);
  va_end(args);
}

namespace {

void TraceWith(PlainString plain, const char16_t* format, va_list args) {
  CReportLockGuard guard;
  char16_t buffer[kReportBufferUnits];
  FormatWideToBuffer(buffer, kReportBufferUnits, u"[%#x]", os::GetCurrentThreadId());
  os::OutputDebugText(buffer);
  FormatWideToBuffer(buffer, kReportBufferUnits, format, args, plain);
  os::OutputDebugText(buffer);
}

void TraceBytesArgs(const char16_t* format, ...) {
  va_list args;
  va_start(args, format);
  TraceWith(PlainString::kBytes, format, args);
  va_end(args);
}

}  // namespace

void TraceV(const char16_t* format, va_list args) { TraceWith(PlainString::kWide, format, args); }

void Trace(const char16_t* format, ...) {
  va_list args;
  va_start(args, format);
  TraceV(format, args);
  va_end(args);
}

void Assert(const char* expression, const char* file, int32_t line) {
  // The expression and the file are byte strings behind plain %s: this formatter reads them as
  // byte text here, so the trace is readable and never reads past their ends.
  TraceBytesArgs(u"\nQZ_ASSERT(%s)\n %s:%d\n", expression, file, line);
  ErrorAlert(g_alertMethod.load(std::memory_order_relaxed) != 0 ? 0 : QZ_ALERT_BREAK, u"Morvalent Services",
             u"Morvalent Services Debug Assertion Failed!\n\nFile: %hs\nLine: %d\n\nExpression: %hs", file, line,
             expression);
}

}  // namespace qz::core
