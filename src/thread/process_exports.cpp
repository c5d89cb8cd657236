// process_exports.cpp - the exports of child processes and the process queries: each a line or
// two over CQZProcessManager (reached through the client data) or the platform layer.
#include <new>

#include "frame/export_frame.h"
#include "frame/global_data.h"
#include "platform/process_info.h"
#include "platform/process_spawn.h"
#include "qzcore/qzprocess.h"
#include "start/client_data.h"
#include "thread/process_manager.h"

namespace {

CQZProcessManager& Processes() noexcept { return CQZGlobalData::m_clientData->m_processManager; }

}  // namespace

extern "C" {

QZ_API QZRESULT QZProcessCreate(const QZWCHAR* program, const QZWCHAR* arguments,
                                const QZWCHAR* workingDirectory, const QZWCHAR* const* environment,
                                uint32_t reserved, QZFileHandle* streams, QZProcessHandle* result) {
  qz::core::StoreInvalidHandle(result);
  return QZExportFrame([&] {
    *result = Processes().Create(program, arguments, workingDirectory, environment, streams);
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZProcessJoin(QZProcessHandle process, uint32_t* exitCode) {
  return QZExportFrame([&] {
    const uint32_t code = Processes().Join(process);
    if (exitCode != nullptr) *exitCode = code;
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZProcessJoinChild(QZProcessHandle* result, uint32_t* exitCode) {
  return QZExportFrame([&] {
    const uint32_t code = Processes().JoinChild(result);
    if (exitCode != nullptr) *exitCode = code;
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZProcessGetExitCode(QZProcessHandle process, uint32_t* exitCode) {
  return QZExportFrame([&] {
    *exitCode = Processes().ReadExitCode(process);
    return QZ_S_OK;
  });
}

QZ_API QZRESULT QZProcessDetach(QZProcessHandle process) {
  return QZExportFrame([&] {
    Processes().Detach(process);
    return QZ_S_OK;
  });
}

QZ_API QZProcessHandle QZProcessGetHandle(void) { return qz::os::CurrentProcessHandle(); }

QZ_API uint32_t QZProcessGetID(void) { return qz::os::GetCurrentProcessId(); }

QZ_API uint16_t QZProcessGetName(uint32_t pid, char* buffer, uint32_t size) {
  try {
    return qz::core::GetProcessName(pid, buffer, size) ? 1 : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

}  // extern "C"
