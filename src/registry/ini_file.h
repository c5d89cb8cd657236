// ini_file.h - IniFile: the text file of sections, keys and string values behind the text-file
// registry, shared by every process of the machine under the named semaphore "QZCore_IniFileLock".
//
// A section stands for a registry key (its name holds the whole key path), a key for a value. The
// store adds, replaces, reads and enumerates; it never removes. Every SetValue rewrites the file.
// The file is read again when its modification time moves forward; a malformed file is never an
// error, the reader simply stops (see Load).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "qzcore/qztypes.h"

// Orders names by their units lowered with QZToLowerW, as unsigned numbers; a prefix comes first.
struct IniNoCaseLess {
  bool operator()(const std::u16string& a, const std::u16string& b) const noexcept;
};

using IniKeyMap = std::map<std::u16string, std::u16string, IniNoCaseLess>;
using IniSectionMap = std::map<std::u16string, IniKeyMap, IniNoCaseLess>;

class IniFile {
 public:
  // Opens the lock and loads `path` (null: empty) under it. Throws EQZCoreException when the lock
  // cannot be opened or taken.
  explicit IniFile(const QZWCHAR* path);
  // Frees the table and closes the lock. Does not save.
  virtual ~IniFile();
  IniFile(const IniFile&) = delete;
  IniFile& operator=(const IniFile&) = delete;

  // Stores `value` under `section` and `key` and rewrites the file: 0; -1 when the key exists and
  // `overwrite` is false (then nothing changes). A file that cannot be written is not reported.
  int32_t SetValue(const QZWCHAR* section, const QZWCHAR* key, const QZWCHAR* value, bool overwrite);
  // Copies the value with its terminator to `buffer`, which must have room for it: 0, or
  // QZ_E_FILE_NOT_FOUND when section or key is missing.
  QZRESULT GetValue(const QZWCHAR* section, const QZWCHAR* key, QZWCHAR* buffer);

  // The cross-process lock, held for the life of the object: waits without limit (a failed wait
  // throws its code); a failed release ends the process.
  class CLock {
   public:
    explicit CLock(IniFile& file);
    ~CLock();
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;

   private:
    IniFile& m_file;
  };

  // The following run with the lock held (through CLock) and are not to be called otherwise.
  void Load();
  int32_t Save(const QZWCHAR* path = nullptr);  // 0, or 1 when the file could not be opened
  void ReloadIfChanged();
  bool HasValue(const std::u16string& section, const std::u16string& key) const;
  bool HasSection(const std::u16string& section) const;
  std::vector<std::u16string> GetSectionNames() const;
  std::vector<std::u16string> GetSubSectionNames(const std::u16string& section) const;
  const IniSectionMap& Sections() const { return m_sections; }
  int64_t LastModified() const { return m_lastModified; }

 private:
  QZSemaphoreHandle m_lock;     // the named semaphore "QZCore_IniFileLock"
  std::u16string m_path;        // the file, as given
  IniSectionMap m_sections;     // the table in memory
  int64_t m_lastModified = 0;   // the file's modification time as last seen, in seconds
};

// Reader limits: fgets reads at most this many bytes of a line at a time (buffer of 511).
inline constexpr int kIniLineBuffer = 511;
