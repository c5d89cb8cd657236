// process_manager.h - CQZProcessManager: starting child processes, the set of children that
// nobody has joined or detached yet, and the joins, exit-code reads and detaches over it.
//
// The manager is the first member of CQZClientData. Its lock m_setMutex guards the set and the
// wait array; QZProcessJoinChild holds it across its whole wait, so the other operations' steps on
// the set wait for that one child. Lock order: m_setMutex is a leaf apart from the mutex provider.
#pragma once

#include <cstdint>
#include <set>

#include "platform/process_spawn.h"
#include "qzcore/qztypes.h"

class CQZProcessManager {
 public:
  CQZProcessManager() noexcept;
  // Frees the wait array and the lock; the handles still in the set stay open and their children
  // run on.
  ~CQZProcessManager();
  CQZProcessManager(const CQZProcessManager&) = delete;
  CQZProcessManager& operator=(const CQZProcessManager&) = delete;

  // Starts a child (see QZProcessCreate), enters it in the set and returns its handle. `streams`
  // (null or three entries) is rewritten where it asked for pipes. Throws EQZCoreException.
  QZProcessHandle Create(const char16_t* program, const char16_t* arguments,
                         const char16_t* workingDirectory, const char16_t* const* environment,
                         QZFileHandle* streams);
  // Waits for the process (outside the lock), then reads its exit code.
  uint32_t Join(QZProcessHandle process);
  // Waits for whichever child in the set ends first, under the lock; *result gets its handle as
  // soon as it is known (also when reading the code then fails).
  uint32_t JoinChild(QZProcessHandle* result);
  // The exit code of an ended process, whose handle is then closed and taken out of the set;
  // QZ_E_FAIL for a running one, which keeps its handle.
  uint32_t ReadExitCode(QZProcessHandle process);
  // Closes the handle, then takes it out of the set (a handle not in it is no error).
  void Detach(QZProcessHandle process);

  // Children in the set now (for tests and diagnostics).
  size_t ChildCount();

 private:
  QZMutexHandle m_setMutex = nullptr;     // guards m_children and m_waitArray; recursive
  std::set<QZProcessHandle> m_children;   // started here, not yet joined or detached
  qz::os::CProcessWaitArray m_waitArray;  // reused by JoinChild; grows to twice the need
};

namespace qz::core {

// The work of QZProcessGetName: the file name of the program process `pid` runs, as strncpy
// copies it, with the last byte of the buffer then set to 0. False, and nothing written, when the
// process cannot be looked at or the full path of its program has 260 bytes or more.
bool GetProcessName(uint32_t pid, char* buffer, uint32_t size);

}  // namespace qz::core
