// registry_helpers.h - small helpers of the registry suites: each test's own store directory, and
// reading keys and values back as plain lists.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qzcore/qzregistry.h"
#include "support/test_support.h"

namespace qztest {

// Points the registry at a fresh directory for the test's life.
class RegistryDirTest : public ::testing::Test {
 protected:
  RegistryDirTest() : m_env("QZCORE_REGISTRY_DIR", m_dir.path().c_str()) {}
  TempDir m_dir;
  ScopedEnv m_env;
};

inline QZRESULT SetString(int32_t hive, const std::u16string& path, const std::u16string& name,
                          const std::u16string& value, uint32_t type = QZ_REG_SZ) {
  return QZRegistrySetValue(hive, path.c_str(), name.c_str(), type, value.c_str(),
                            static_cast<uint32_t>((value.size() + 1) * 2));
}

// The string value (terminator dropped), or "<0x...>" with the result when the read fails.
inline std::u16string GetString(int32_t hive, const std::u16string& path, const std::u16string& name) {
  char16_t buffer[1024] = {};
  uint32_t size = sizeof buffer;
  uint32_t type = 99;
  const QZRESULT hr = QZRegistryGetValue(hive, path.c_str(), name.c_str(), &type, buffer, &size);
  if (hr != 0) {
    char text[32];
    snprintf(text, sizeof text, "<0x%08X>", static_cast<unsigned>(hr));
    return std::u16string(text, text + strlen(text));
  }
  return std::u16string(buffer, size / 2 > 0 ? size / 2 - 1 : 0);
}

// All subkey names of a key, in the order given; "!" marks a failed open.
inline std::vector<std::u16string> SubKeys(int32_t hive, const std::u16string& path) {
  std::vector<std::u16string> names;
  QZRegEnumHandle e;
  if (QZRegistryOpenKeyEnum(hive, path.c_str(), &e) != 0) return {u"!"};
  char16_t name[300];
  for (uint32_t size = 300; QZRegistryEnumNextKey(e, name, &size) == 0; size = 300) names.emplace_back(name, size);
  QZRegistryCloseEnum(e);
  return names;
}

// All value names of a key, in the order given; "!" marks a failed open.
inline std::vector<std::u16string> ValueNames(int32_t hive, const std::u16string& path) {
  std::vector<std::u16string> names;
  QZRegEnumHandle e;
  if (QZRegistryOpenValueEnum(hive, path.c_str(), &e) != 0) return {u"!"};
  char16_t name[300];
  uint32_t type = 0, dataSize = 0;
  for (uint32_t size = 300; QZRegistryEnumNextValue(e, name, &size, &type, nullptr, &dataSize) == 0; size = 300) {
    names.emplace_back(name, size);
  }
  QZRegistryCloseEnum(e);
  return names;
}

}  // namespace qztest
