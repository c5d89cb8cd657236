// ini_iterators.h - walking the text file as a tree: the direct children of a section (the
// subkeys of a registry key) and the keys of one section (its values).
//
// Each iterator takes a snapshot of names under the store's lock when it is built and never
// touches the store again; values are read when asked for. Calling order: construct, HasNext,
// Next, ..., delete (through the virtual destructor). One thread at a time.
#pragma once

#include <string>
#include <vector>

#include "registry/ini_file.h"

class IniFileIteratorBase {
 public:
  explicit IniFileIteratorBase(std::u16string name) : m_name(std::move(name)) {}
  virtual ~IniFileIteratorBase() = default;
  IniFileIteratorBase(const IniFileIteratorBase&) = delete;
  IniFileIteratorBase& operator=(const IniFileIteratorBase&) = delete;

  // The section asked for, as it was passed.
  virtual std::u16string GetName() const { return m_name; }
  // The next item; past the last, throws EQZCoreException with QZ_E_HANDLE_EOF.
  virtual std::u16string Next() = 0;
  virtual bool HasNext() const = 0;

 protected:
  std::u16string m_name;  // the section asked for
};

// The direct children of `section`: the next path component of every section beneath it, each
// once, in exact 16-bit unit order. The prefix test keeps case. Throws only for the lock.
class IniFileSetIterator : public IniFileIteratorBase {
 public:
  IniFileSetIterator(IniFile& file, const QZWCHAR* section);
  std::u16string Next() override;
  bool HasNext() const override;

 private:
  std::vector<std::u16string> m_items;  // the snapshot
  size_t m_current = 0;                 // the next item
};

// The keys of `section` in the order of the store's map. Throws QZ_E_FILE_NOT_FOUND when there is
// neither such a section nor anything beneath it; a section that is only a parent gives nothing.
class IniFileKeyIterator : public IniFileIteratorBase {
 public:
  IniFileKeyIterator(IniFile& file, const QZWCHAR* section);
  std::u16string Next() override;
  bool HasNext() const override;

 private:
  std::vector<std::u16string> m_items;  // the snapshot
  size_t m_current = 0;                 // the next item
};
