// reg_key.h - qz::core::CRegKey: one registry key of either store as an object, so that a single
// walk (CopyTree, CopyValue) reads one store and writes the other; and the migration between them.
//
// A key holds its hive and path and, once asked, an open enumeration of its subkeys and one of its
// values, each fetching one name ahead. CIniRegKey speaks to the text-file registry, CNativeRegKey
// to the QZRegistry* exports; a destination key stands only for its store (SetValue takes hive and
// path). Keys are counted (CRegKeyPtr) and used by one thread at a time.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "frame/ref_counted.h"
#include "qzcore/qztypes.h"

namespace qz::core {

class CRegKey;

// A counted reference to a key; the holder that drops the last one destroys it.
class CRegKeyPtr {
 public:
  CRegKeyPtr() noexcept = default;
  explicit CRegKeyPtr(CRegKey* key) noexcept { Reset(key); }
  CRegKeyPtr(const CRegKeyPtr& other) noexcept { Reset(other.m_key); }
  CRegKeyPtr& operator=(const CRegKeyPtr& other) noexcept {
    Reset(other.m_key);
    return *this;
  }
  ~CRegKeyPtr() { Reset(nullptr); }
  void Reset(CRegKey* key) noexcept;
  CRegKey* operator->() const noexcept { return m_key; }
  CRegKey& operator*() const noexcept { return *m_key; }
  CRegKey* Get() const noexcept { return m_key; }

 private:
  CRegKey* m_key = nullptr;  // one counted reference, or null
};

inline constexpr uintptr_t kNoEnum = static_cast<uintptr_t>(-1);

class CRegKey : public CQZCoreRefCounted {
 public:
  CRegKey(int32_t hive, std::u16string path) : m_hive(hive), m_path(std::move(path)) {}

  virtual QZRESULT OpenKeyEnum() = 0;
  virtual QZRESULT EnumNextKey(QZWCHAR* name, uint32_t* size) = 0;
  virtual QZRESULT OpenValueEnum() = 0;
  virtual QZRESULT EnumNextValue(QZWCHAR* name, uint32_t* size) = 0;
  virtual QZRESULT CloseEnum(uintptr_t handle) = 0;
  virtual void CreateKey(CRegKeyPtr& out, int32_t hive, const std::u16string& path) = 0;
  virtual QZRESULT GetValue(const std::u16string& name, uint32_t* type, void* data, uint32_t* size) = 0;
  virtual QZRESULT SetValue(int32_t hive, const std::u16string& path, const std::u16string& name, uint32_t type,
                            const void* data, uint32_t size) = 0;

  // True when a subkey is to come; opens the enumeration first (a failed open is thrown).
  bool HasMoreKeys();
  // A new key object for the next subkey; throws QZ_E_HANDLE_EOF past the last.
  void NextKey(CRegKeyPtr& out);
  // True when a value is to come; a failed open is simply false.
  bool HasMoreValues();
  // The next value's name; throws QZ_E_HANDLE_EOF past the last.
  std::u16string NextValue();

  int32_t m_hive;                 // hive number
  std::u16string m_path;          // path in the hive; empty for its top
  uintptr_t m_keyEnum = kNoEnum;  // open enumeration of subkeys, or -1
  uintptr_t m_valueEnum = kNoEnum;  // open enumeration of values, or -1
  bool m_hasNextKey = false;      // m_nextKey holds a name fetched ahead
  std::u16string m_nextKey;       // the name fetched ahead
  bool m_hasNextValue = false;    // m_nextValue holds a name fetched ahead
  std::u16string m_nextValue;     // the name fetched ahead
};

class CIniRegKey final : public CRegKey {
 public:
  using CRegKey::CRegKey;
  ~CIniRegKey() override;
  QZRESULT OpenKeyEnum() override;
  QZRESULT EnumNextKey(QZWCHAR* name, uint32_t* size) override;
  QZRESULT OpenValueEnum() override;
  QZRESULT EnumNextValue(QZWCHAR* name, uint32_t* size) override;
  QZRESULT CloseEnum(uintptr_t handle) override;
  void CreateKey(CRegKeyPtr& out, int32_t hive, const std::u16string& path) override;
  QZRESULT GetValue(const std::u16string& name, uint32_t* type, void* data, uint32_t* size) override;
  QZRESULT SetValue(int32_t hive, const std::u16string& path, const std::u16string& name, uint32_t type,
                    const void* data, uint32_t size) override;
};

class CNativeRegKey final : public CRegKey {
 public:
  using CRegKey::CRegKey;
  ~CNativeRegKey() override;
  QZRESULT OpenKeyEnum() override;
  QZRESULT EnumNextKey(QZWCHAR* name, uint32_t* size) override;
  QZRESULT OpenValueEnum() override;
  QZRESULT EnumNextValue(QZWCHAR* name, uint32_t* size) override;
  QZRESULT CloseEnum(uintptr_t handle) override;
  void CreateKey(CRegKeyPtr& out, int32_t hive, const std::u16string& path) override;
  QZRESULT GetValue(const std::u16string& name, uint32_t* type, void* data, uint32_t* size) override;
  QZRESULT SetValue(int32_t hive, const std::u16string& path, const std::u16string& name, uint32_t type,
                    const void* data, uint32_t size) override;
};


// A new key of store `kind`; QZ_E_BAD_KEY_KIND for another kind.
CRegKeyPtr CreateRegKey(int32_t hive, const std::u16string& path, uint32_t kind);

// Copies value `name` of `source` to `destination` (same hive and path): a value that cannot be
// read, or does not fit 2048 bytes, is skipped; the write's result is ignored.
void CopyValue(CRegKey& source, const std::u16string& name, CRegKey& destination);

// Copies `source` with all beneath it, depth first, subkeys before the key's own values. A key
// comes into being at the destination only through a value under it.
void CopyTree(CRegKey& source, CRegKey& destination);

// The walk of QZRegistryMigrate over every hive, and the deletion of the file after a walk out of it.
QZRESULT RegistryMigrate(uint32_t from, uint32_t to) noexcept;

}  // namespace qz::core
