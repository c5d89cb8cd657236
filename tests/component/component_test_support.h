// component_test_support.h - what the component suites share: where the example component and the
// library without an entry point were built, whether a library is mapped, and 16-bit paths.
#pragma once

#include <fstream>
#include <string>

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

}  // namespace qztest
