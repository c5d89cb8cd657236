// process_manager.cpp - CQZProcessManager: the creation of a child with its pipes, command line
// and environment, and the set of children with its joins and detaches.
#include "thread/process_manager.h"

#include <cstring>
#include <string>
#include <vector>

#include "frame/core_exception.h"
#include "platform/last_error.h"
#include "platform/native_error.h"
#include "platform/utf8.h"
#include "qzcore/qzfile.h"
#include "qzcore/qzmutex.h"
#include "sync/mutex_lifecycle.h"
#include "thread/process_command_line.h"
#include "thread/process_environment.h"

namespace {

// The pipe ends of one creation. Its end closes every child end (the child has its copies by
// then, or there is no child), and the caller's ends too unless the process was made.
class CQZPipeRecord {
 public:
  CQZPipeRecord() {
    m_parentEnds.reserve(3);
    m_childEnds.reserve(3);
  }
  ~CQZPipeRecord() {
    for (QZFileHandle end : m_childEnds) CloseEnd(end);
    if (m_closeParentEnds) {
      for (QZFileHandle end : m_parentEnds) CloseEnd(end);
    }
  }
  CQZPipeRecord(const CQZPipeRecord&) = delete;
  CQZPipeRecord& operator=(const CQZPipeRecord&) = delete;

  // Never allocates: room for three of each was made at the start.
  void Add(QZFileHandle parentEnd, QZFileHandle childEnd) noexcept {
    m_parentEnds.push_back(parentEnd);
    m_childEnds.push_back(childEnd);
  }
  void KeepParentEnds() noexcept { m_closeParentEnds = false; }

 private:
  static void CloseEnd(QZFileHandle end) noexcept {
    if (end != -1) QZFileClose(end);
  }

  std::vector<QZFileHandle> m_parentEnds;  // the ends the caller keeps
  std::vector<QZFileHandle> m_childEnds;   // the ends the child gets
  bool m_closeParentEnds = true;           // false once the process exists
};

// Null-terminated array of pointers to `strings`.
std::vector<const char*> Pointers(const std::vector<std::string>& strings) {
  std::vector<const char*> pointers;
  pointers.reserve(strings.size() + 1);
  for (const auto& s : strings) pointers.push_back(s.c_str());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

CQZProcessManager::CQZProcessManager() noexcept {
  QZMutexCreate("CQZProcessManager::m_setMutex", 0, &m_setMutex);  // the result is not looked at
}

CQZProcessManager::~CQZProcessManager() {
  if (qz::core::IsMutexHandle(m_setMutex)) QZMutexDestroy(m_setMutex);
}

QZProcessHandle CQZProcessManager::Create(const char16_t* program, const char16_t* arguments,
                                          const char16_t* workingDirectory,
                                          const char16_t* const* environment,
                                          QZFileHandle* streams) {
  CQZPipeRecord pipes;
  intptr_t childStreams[3] = {-1, -1, -1};
  if (streams != nullptr) {
    for (int i = 0; i < 3; ++i) {
      if (streams[i] != -1) {
        childStreams[i] = streams[i];  // the caller's own, passed as it stands
        continue;
      }
      intptr_t readEnd = -1;
      intptr_t writeEnd = -1;
      if (!qz::os::CreatePipe(&readEnd, &writeEnd)) qz::core::ThrowLastError();
      // Standard input: the child reads, the caller writes. Output and error: the other way.
      const intptr_t childEnd = i == 0 ? readEnd : writeEnd;
      const intptr_t parentEnd = i == 0 ? writeEnd : readEnd;
      pipes.Add(parentEnd, childEnd);
      childStreams[i] = childEnd;
      streams[i] = parentEnd;
    }
  }
  if (program == nullptr) {
    qz::os::SetLastError(qz::os::kErrorInvalidParameter);
    qz::core::ThrowLastError();
  }

  const std::string path = qz::os::Utf16ToUtf8Replacing(program);
  const std::vector<std::string> words = qz::core::SplitCommandLine(
      qz::os::Utf16ToUtf8Replacing(qz::core::BuildCommandLine(program, arguments)));
  const std::vector<const char*> argv = Pointers(words);
  std::vector<std::string> environmentStrings;
  std::vector<const char*> environmentPointers;
  if (environment != nullptr) {
    for (const auto& entry : qz::core::SortedEnvironment(environment)) {
      environmentStrings.push_back(qz::os::Utf16ToUtf8Replacing(entry));
    }
    environmentPointers = Pointers(environmentStrings);
  }
  std::string directory;
  if (workingDirectory != nullptr) directory = qz::os::Utf16ToUtf8Replacing(workingDirectory);

  qz::os::ProcessStart start;
  start.program = path.c_str();
  start.argv = argv.data();
  start.environment = environment != nullptr ? environmentPointers.data() : nullptr;
  start.workingDirectory = workingDirectory != nullptr ? directory.c_str() : nullptr;
  start.streams = streams != nullptr ? childStreams : nullptr;
  intptr_t process = -1;
  if (!qz::os::StartProcess(start, &process)) qz::core::ThrowLastError();

  try {
    qz::core::CQZMutexGuard guard(m_setMutex);
    m_children.insert(process);
  } catch (...) {
    qz::os::CloseProcessHandle(process);  // the child runs on, detached
    throw;
  }
  pipes.KeepParentEnds();
  return process;
}

uint32_t CQZProcessManager::Join(QZProcessHandle process) {
  if (!qz::os::WaitForProcess(process)) qz::core::ThrowLastError();
  return ReadExitCode(process);
}

uint32_t CQZProcessManager::JoinChild(QZProcessHandle* result) {
  qz::core::CQZMutexGuard guard(m_setMutex);
  const size_t count = m_children.size();
  if (m_waitArray.Capacity() < count) m_waitArray.Reallocate(2 * count);
  size_t next = 0;
  for (QZProcessHandle child : m_children) m_waitArray.Set(next++, child);
  size_t index = 0;
  if (!m_waitArray.WaitForAny(count, &index)) qz::core::ThrowLastError();
  *result = m_waitArray.Get(index);
  return ReadExitCode(*result);  // takes m_setMutex again: it is recursive
}

uint32_t CQZProcessManager::ReadExitCode(QZProcessHandle process) {
  uint32_t code = 0;
  if (!qz::os::GetProcessExitCode(process, &code)) qz::core::ThrowLastError();
  if (code == qz::os::kProcessStillActive) throw EQZCoreException(QZ_E_FAIL);
  Detach(process);
  return code;
}

void CQZProcessManager::Detach(QZProcessHandle process) {
  if (!qz::os::CloseProcessHandle(process)) qz::core::ThrowLastError();
  qz::core::CQZMutexGuard guard(m_setMutex);
  m_children.erase(process);
}

size_t CQZProcessManager::ChildCount() {
  qz::core::CQZMutexGuard guard(m_setMutex);
  return m_children.size();
}

namespace qz::core {

bool GetProcessName(uint32_t pid, char* buffer, uint32_t size) {
  // The image path is read into a buffer of 260 bytes, as on the first platform: a path that
  // does not fit with its terminator gives no name at all.
  constexpr size_t kImagePathBuffer = 260;
  std::string path;
  if (!qz::os::GetProcessImagePath(pid, &path) || path.size() >= kImagePathBuffer) return false;
  const size_t separator = path.rfind(qz::os::kImagePathSeparator);
  const std::string name = separator == std::string::npos ? path : path.substr(separator + 1);
  if (size > 0) {
    std::strncpy(buffer, name.c_str(), size);
    buffer[size - 1] = '\0';
  }
  return true;
}

}  // namespace qz::core
