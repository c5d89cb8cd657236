// global_data.h - the process-wide object pointers and variables that every family may read.
//
// CQZGlobalData is the set of process-wide object pointers; the start (src/start/) builds them in a
// fixed order and the stop destroys them. They are declared here, at the bottom, with their types
// left incomplete, so that a family reaches the objects it owns without depending on the start.
#pragma once

#include <cstdint>

#include "qzcore/qztypes.h"

struct IMalloc;
class IMutexProvider;
class CQZLockStatManager;
class CQZModuleManager;
class CQZClientData;

// The process-wide object pointers: each null until built and null again once destroyed.
struct CQZGlobalData {
  static inline IMutexProvider* m_mutexProvider = nullptr;         // makes every mutex
  static inline CQZLockStatManager* m_lockStatManager = nullptr;   // register of mutexes with statistics
  static inline QZMutexHandle* m_debugMutex = nullptr;             // cell: serialises failure reporting
  static inline CQZModuleManager* m_moduleManager = nullptr;       // set of initialised modules
  static inline CQZClientData* m_clientData = nullptr;             // managers that serve the exports
};

extern int32_t g_initCount;        // starts not yet matched by a stop
extern uint32_t g_platformReady;   // set to 1 by the first start, never cleared
extern void* g_moduleHandle;       // what the load hook received; stored once, never read
extern void* g_moduleId;           // this library's identity in the module set
extern IMalloc* g_comMalloc;       // the task allocator
