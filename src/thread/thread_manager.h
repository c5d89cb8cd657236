// thread_manager.h - CQZThreadManager: the map from thread id to the record of each thread the
// library made (and of the thread that loaded it), with the creation, join and detach over it;
// CQZThreadData, the record; and the start block that carries a request to its new thread.
//
// The manager is the second member of CQZClientData. m_mapMutex guards the map and both flags of
// every record; it is taken recursively by design and held only for map work: no wait, no thread
// call and no client code run under it, so it is a leaf apart from the mutex provider.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

#include "frame/ref_counted.h"
#include "platform/thread.h"
#include "qzcore/qzthread.h"
#include "qzcore/qztypes.h"

// One thread the library knows. The record outlives whichever comes second, the end of the thread
// function or the caller's join or detach: the second flag to be set takes it out of the map.
class CQZThreadData : public CQZCoreRefCounted {
 public:
  explicit CQZThreadData(qz::os::NativeThread handle) noexcept : m_handle(handle) {}
  ~CQZThreadData() override = default;  // never joins or detaches the thread

  const qz::os::NativeThread m_handle;  // the native thread; the pseudo handle for the loader
  bool m_detached = false;  // joined or detached: m_handle is given up. Under m_mapMutex
  bool m_finished = false;  // the thread function has returned. Under m_mapMutex
};

// What QZThreadCreate hands its new thread; it lives until the new thread has read it.
struct CQZThreadStartBlock {
  QZThreadFunction function;    // the caller's thread function
  void* argument;               // its argument
  QZSemaphoreHandle semaphore;  // posted once the creator has put the record in the map
};

class CQZThreadManager {
 public:
  // Makes m_mapMutex (its result ignored) and enters the calling thread, which loads the
  // library, with the pseudo handle.
  CQZThreadManager();
  // Destroys the mutex, then drops every record: threads never joined or detached are left as
  // they are.
  ~CQZThreadManager();
  CQZThreadManager(const CQZThreadManager&) = delete;
  CQZThreadManager& operator=(const CQZThreadManager&) = delete;

  // Starts a thread running `start` with a start block for function(argument); the block's
  // semaphore holds the function back until the record is in the map. *outId gets the id as soon
  // as the thread exists. Returns the id. Throws EQZCoreException; after a failure before the
  // thread exists nothing is left, after one past it the thread waits for good.
  uint32_t Create(QZThreadFunction function, void* argument, uint32_t stackSize,
                  qz::os::ThreadRoutine start, uint32_t* outId);
  // Waits for the thread and returns its exit code; the record is then marked joined. Throws
  // QZ_E_HANDLE for an unknown id and for a thread whose handle was given up (the record stays),
  // the mapped failure of the wait (the record stays).
  uint32_t Join(uint32_t id);
  // Gives the thread's handle up and marks the record, also when giving up failed (then throws
  // the mapped failure; QZ_E_HANDLE when it was given up before). An unknown id ends the process.
  void Detach(uint32_t id);

  // Puts a new record for `id` in the map; an old record of a recycled id is dropped without
  // giving its handle up.
  void AddThread(uint32_t id, qz::os::NativeThread handle);
  // A new reference to the record of `id`, or null.
  CQZThreadData* FindThread(uint32_t id);
  // Set one flag; when the other is set already, take the record out of the map.
  void MarkDetached(uint32_t id);
  void MarkFinished(uint32_t id);

  // Records in the map now, and whether the function of `id` has returned (for tests and
  // diagnostics; false for an unknown id).
  size_t ThreadCount();
  bool HasFinished(uint32_t id);

 private:
  void Mark(uint32_t id, bool CQZThreadData::*flag, bool CQZThreadData::*other, const char* what);
  bool IsGivenUp(CQZThreadData* record);

  QZMutexHandle m_mapMutex = nullptr;         // "CQZThreadManager::m_mapMutex"; recursive
  std::map<uint32_t, CQZThreadData*> m_map;   // one counted reference per record
};

namespace qz::core {

// Steps of the start routine before the thread function's result is known: waits for the
// creator's hand-over, frees the block and its semaphore, and runs the function. Nothing is
// caught: a failed wait or an exception of the function ends the process.
uintptr_t RunThreadFunction(CQZThreadStartBlock* block);

}  // namespace qz::core
