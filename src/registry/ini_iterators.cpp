// ini_iterators.cpp - the two snapshots of the text file's names (see ini_iterators.h).
#include "registry/ini_iterators.h"

#include <set>

#include "frame/core_exception.h"

namespace {

std::u16string Take(const std::vector<std::u16string>& items, size_t& current) {
  if (current >= items.size()) throw EQZCoreException(QZ_E_HANDLE_EOF);
  return items[current++];
}

}  // namespace

IniFileSetIterator::IniFileSetIterator(IniFile& file, const QZWCHAR* section) : IniFileIteratorBase(section) {
  IniFile::CLock hold(file);
  file.ReloadIfChanged();
  const std::u16string prefix = m_name + u'\\';
  std::set<std::u16string> children;  // exact units, the shorter first on a tie
  for (const auto& name : file.GetSectionNames()) {
    const std::u16string path = name + u'\\';
    if (path.compare(0, prefix.size(), prefix) != 0) continue;
    const size_t end = path.find(u'\\', prefix.size());
    if (end == std::u16string::npos) continue;
    children.insert(path.substr(prefix.size(), end - prefix.size()));
  }
  m_items.assign(children.begin(), children.end());
}

std::u16string IniFileSetIterator::Next() { return Take(m_items, m_current); }
bool IniFileSetIterator::HasNext() const { return m_current < m_items.size(); }

IniFileKeyIterator::IniFileKeyIterator(IniFile& file, const QZWCHAR* section) : IniFileIteratorBase(section) {
  IniFile::CLock hold(file);
  file.ReloadIfChanged();
  const auto found = file.Sections().find(m_name);
  if (found != file.Sections().end()) {
    for (const auto& entry : found->second) m_items.push_back(entry.first);
  } else if (!file.HasSection(m_name)) {
    throw EQZCoreException(QZ_E_FILE_NOT_FOUND);
  }
}

std::u16string IniFileKeyIterator::Next() { return Take(m_items, m_current); }
bool IniFileKeyIterator::HasNext() const { return m_current < m_items.size(); }
