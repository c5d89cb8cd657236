// global_data.h - the process-wide objects and variables, and the library's start and stop.
//
// CQZGlobalData is the set of process-wide object pointers, built by QZLibraryStart in a fixed
// order and destroyed by QZLibraryStop; exports reach their managers through it without tests.
// The load hook (QZDllMain) is the only caller of start and stop.
#pragma once

#include <cstdint>

#include "component/factory_manager.h"
#include "component/lib_manager.h"
#include "frame/ref_counted.h"
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

// The managers behind the exports, built in the order of their members and destroyed in reverse.
// Its count stays 0: the stop destroys it directly.
class CQZClientData : public CQZCoreRefCounted {
 public:
  CQZClientData();
  ~CQZClientData() override;

  CQZLibManager m_libManager;          // loading and searching libraries (stateless)
  CQZFactoryManager m_factoryManager;  // the class-object cache
};

extern int32_t g_initCount;        // starts not yet matched by a stop
extern uint32_t g_platformReady;   // set to 1 by the first start, never cleared
extern void* g_moduleHandle;       // what the load hook received; stored once, never read
extern void* g_moduleId;           // this library's identity in the module set
extern IMalloc* g_comMalloc;       // the task allocator

// Load hook reasons.
inline constexpr uint32_t QZ_DLL_PROCESS_DETACH = 0;
inline constexpr uint32_t QZ_DLL_PROCESS_ATTACH = 1;

// The load hook: called by the platform once at load (attach) and once at unload (detach), with no
// other thread inside the library. Always returns 1.
int32_t QZDllMain(void* moduleHandle, uint32_t reason, void* reserved) noexcept;

QZRESULT QZLibraryStart() noexcept;
QZRESULT QZLibraryStop() noexcept;
