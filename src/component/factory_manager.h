// factory_manager.h - CQZFactoryManager, the process-wide cache of class objects, and
// CQZFactoryData, one cached class.
//
// A class is looked up once: its registration is read, its library opened (one open per cached
// class, which is what keeps the library in memory) and its entry point asked for the class
// object; later lookups only call QueryInterface on the cached object. Failures are not cached.
//
// Lock order: m_mapMutex before CQZModuleManager::m_setLock (taken by the guarded open and close).
// m_mapMutex is recursive and held across the registry read, the library's loading and start code,
// the entry point and QueryInterface, so a component may look up another class from its entry point.
#pragma once

#include <map>

#include "component/guid.h"
#include "frame/ref_counted.h"
#include "qzcore/qzcom.h"

// One cached class: a component reference on the class object and one open of its library.
class CQZFactoryData : public CQZCoreRefCounted {
 public:
  // Takes a reference on `classObject` (when not null); owns the open of `library` from here on.
  CQZFactoryData(IQZUnknown* classObject, QZLibHandle library) noexcept;
  // Releases the class object while its code is still mapped, then closes the library through the
  // module guard (which refuses once the library's own stop has begun).
  ~CQZFactoryData() override;

  IQZUnknown* classObject;  // the class object; null once destruction has begun
  QZLibHandle library;      // the library it came from
};

class CQZFactoryManager {
 public:
  // Creates m_mapMutex ("CQZFactoryManager::m_mapMutex", flags 0), the result not looked at.
  CQZFactoryManager();
  // Destroys m_mapMutex first, then the entries without the lock: no thread may be inside by then.
  ~CQZFactoryManager();
  CQZFactoryManager(const CQZFactoryManager&) = delete;
  CQZFactoryManager& operator=(const CQZFactoryManager&) = delete;

  // The class object of `clsid` with the interface `iid` into *result (one reference for the
  // caller). Throws EQZCoreException with the failure's result.
  QZRESULT GetClassObject(const QZGUID& clsid, const QZGUID* iid, void** result);

  // Drops every entry under the lock; a cached library is unloaded unless someone else opened it.
  void Flush() noexcept;

  // The class identifier registered for `progId` (no lock, no cache).
  static QZRESULT ClassIdFromProgId(const QZWCHAR* progId, QZGUID* result) noexcept;

 private:
  // A hit takes one reference for the caller into *data. Takes m_mapMutex again for itself.
  bool Lookup(const QZGUID& clsid, CQZFactoryData** data);
  // Reads the registration, loads the library and calls its entry point: a new record (count 1).
  CQZFactoryData* Load(const QZGUID& clsid, const QZGUID* iid, void** result);

  QZMutexHandle m_mapMutex = nullptr;                                  // recursive; see above
  std::map<QZGUID, CQZFactoryData*, qz::core::GuidBytesLess> m_classes;  // each owns one reference
};
