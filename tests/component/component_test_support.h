// component_test_support.h - what the component suites share: where the example component and the
// library without an entry point were built, whether a library is mapped, 16-bit paths, and
// registering a class in the registry.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

#include "qzcore/qzcom.h"
#include "qzcore/qzlibrary.h"
#include "qzcore/qzregistry.h"
#include "sample_component.h"

namespace qztest {

inline const std::string kSamplePath = QZ_SAMPLE_COMPONENT;
inline const std::string kNoEntryPath = QZ_NO_ENTRY_LIBRARY;

// Whether a file of that path is mapped into this process now.
inline bool IsMapped(const std::string& path) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.size() >= path.size() && line.compare(line.size() - path.size(), path.size(), path) == 0) return true;
  }
  return false;
}

inline std::u16string Wide(const std::string& text) { return std::u16string(text.begin(), text.end()); }

// The braced text form of an identifier.
inline std::u16string Text(const QZGUID& g) {
  QZWCHAR text[39];
  QZComStringFromGUID(&g, text, 39);
  return text;
}

// Sets the default value of `key` in the classes hive.
inline QZRESULT SetDefault(const std::u16string& key, const std::u16string& value, uint32_t type = QZ_REG_SZ) {
  return QZRegistrySetValue(QZ_HKEY_CLASSES_64, key.c_str(), u"", type, value.c_str(),
                            static_cast<uint32_t>((value.size() + 1) * sizeof(QZWCHAR)));
}

// Registers `clsid` as served by the library at `path`.
inline QZRESULT Register(const QZGUID& clsid, const std::string& path, uint32_t type = QZ_REG_SZ) {
  return SetDefault(u"CLSID\\" + Text(clsid) + u"\\InprocServer32", Wide(path), type);
}

// Holds an open of the example component so that its counters outlive a flush.
struct SampleCounters {
  SampleCounters() {
    QZLibOpen(Wide(kSamplePath).c_str(), &library);
    entryCalls = Get(QZ_SAMPLE_ENTRY_CALLS);
    liveObjects = Get(QZ_SAMPLE_LIVE_OBJECTS);
    factoryRefs = Get(QZ_SAMPLE_FACTORY_REFS);
  }
  ~SampleCounters() {
    if (library != nullptr) QZLibClose(library);
  }
  SampleCounters(const SampleCounters&) = delete;
  SampleCounters& operator=(const SampleCounters&) = delete;
  QZSampleCounterFn Get(const char* name) const {
    void* fn = nullptr;
    QZLibGetSymbol(library, Wide(name).c_str(), &fn);
    return reinterpret_cast<QZSampleCounterFn>(fn);
  }
  QZLibHandle library = nullptr;
  QZSampleCounterFn entryCalls, liveObjects, factoryRefs;
};

}  // namespace qztest
