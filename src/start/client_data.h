// client_data.h - CQZClientData, the managers that serve the exports.
//
// It sits above every family because its members come from several of them; a family's exports
// reach it through CQZGlobalData::m_clientData, and nothing else in a family includes this header.
#pragma once

#include "component/factory_manager.h"
#include "component/lib_manager.h"
#include "frame/ref_counted.h"
#include "thread/process_manager.h"
#include "thread/thread_manager.h"

// The managers behind the exports, built in the order of their members and destroyed in reverse.
// Its count stays 0: the stop destroys it directly.
class CQZClientData : public CQZCoreRefCounted {
 public:
  CQZClientData();
  ~CQZClientData() override;

  CQZProcessManager m_processManager;  // child processes; built first of the managers
  CQZThreadManager m_threadManager;    // threads made for clients, and the loading thread
  CQZLibManager m_libManager;          // loading and searching libraries (stateless)
  CQZFactoryManager m_factoryManager;  // the class-object cache
};
