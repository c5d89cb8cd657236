// thread_exports.cpp - the exports of threads and of the calls on the calling thread: each a line
// or two over CQZThreadManager (reached through the client data) or the platform layer; and the
// start routine of every thread QZThreadCreate makes, the one other way into the library.
#include "frame/export_frame.h"
#include "frame/global_data.h"
#include "platform/last_error.h"
#include "platform/process_info.h"
#include "platform/thread.h"
#include "qzcore/qzthread.h"
#include "start/client_data.h"
#include "thread/thread_manager.h"

namespace {

CQZThreadManager& Threads() noexcept { return CQZGlobalData::m_clientData->m_threadManager; }

// Runs on the new thread. The manager is looked up when the function has returned, not taken at
// creation: threads must end before the library stops.
uint32_t StartRoutine(void* block) {
  const uintptr_t result = qz::core::RunThreadFunction(static_cast<CQZThreadStartBlock*>(block));
  Threads().MarkFinished(qz::os::GetCurrentThreadId());
  return static_cast<uint32_t>(result);
}

uint32_t IdOf(QZThreadHandle thread) noexcept { return static_cast<uint32_t>(thread); }

}  // namespace

extern "C" {

QZ_API QZRESULT QZThreadCreate(QZThreadFunction function, void* argument, void* /*reserved*/,
                               uint32_t stackSize, QZThreadHandle* outHandle, uint32_t* outId) {
  *outHandle = static_cast<QZThreadHandle>(-1);
  *outId = 0;
  return QZExportFrame([&] {
    *outHandle = Threads().Create(function, argument, stackSize, &StartRoutine, outId);
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZThreadJoin(QZThreadHandle thread, uint64_t* exitCode) {
  if (exitCode != nullptr) *exitCode = 0;
  return QZExportFrame([&] {
    const uint32_t code = Threads().Join(IdOf(thread));
    if (exitCode != nullptr) *exitCode = code;
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZThreadDetach(QZThreadHandle thread) {
  return QZExportFrame([&] {
    Threads().Detach(IdOf(thread));
    return QZ_S_OK;
  });
}

QZ_API uint32_t QZThreadGetID(void) { return qz::os::GetCurrentThreadId(); }

QZ_API void* QZThreadGetHandle(void) { return reinterpret_cast<void*>(qz::os::kCurrentThreadPseudo); }

QZ_API QZRESULT QZThreadYield(void) {
  qz::os::YieldThread();
  return QZ_S_OK;
}

QZ_API void QZSleep(uint32_t milliseconds) { qz::os::SleepMilliseconds(milliseconds); }

QZ_API QZRESULT QZSetCpuAffinity(const uint64_t* mask) {
  if (qz::os::SetThreadAffinity(*mask, nullptr)) return QZ_S_OK;
  return qz::core::ResultFromNative(qz::os::GetLastError());
}

QZ_API QZRESULT QZGetSetCpuAffinity(uint64_t* previous, const uint64_t* mask) {
  uint64_t before = 0;
  const bool set = qz::os::SetThreadAffinity(*mask, &before);
  *previous = set ? before : 0;
  return set ? QZ_S_OK : qz::core::ResultFromNative(qz::os::GetLastError());
}

}  // extern "C"
