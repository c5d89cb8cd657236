// ini_file.cpp - IniFile: the reader's and writer's rules of the text file, the reload by
// modification time, and the cross-process lock around each public operation.
#include "registry/ini_file.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <memory>

#include "frame/core_exception.h"
#include "platform/crt_stream.h"
#include "platform/process_info.h"
#include "qzcore/qznamed.h"
#include "qzcore/qzstring.h"
#include "text/ansi_string.h"

namespace {

// Only the space is trimmed; a string of spaces only is left as it stands.
std::u16string Trim(const std::u16string& text) {
  const size_t first = text.find_first_not_of(u' ');
  if (first == std::u16string::npos) return text;
  const size_t last = text.find_last_not_of(u' ');
  return text.substr(first, last - first + 1);
}

std::u16string Str(const QZWCHAR* text) { return text != nullptr ? std::u16string(text) : std::u16string(); }

struct CStreamCloser {
  void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};
using CStream = std::unique_ptr<std::FILE, CStreamCloser>;

// One line as the reader sees it: at most 510 bytes. A CR before the newline is dropped, as the
// text mode of the first platform drops it before the line is counted: a CR that fills the buffer
// and has its newline behind it stands for that newline, so a line of 509 bytes ending in CR LF
// arrives whole, as it would there.
bool ReadLine(std::FILE* stream, char (&line)[kIniLineBuffer]) {
  if (std::fgets(line, kIniLineBuffer, stream) == nullptr) return false;
  const size_t n = std::strlen(line);
  if (n >= 2 && line[n - 2] == '\r' && line[n - 1] == '\n') {
    line[n - 2] = '\n';
    line[n - 1] = '\0';
  } else if (n == kIniLineBuffer - 1 && line[n - 1] == '\r') {
    const int next = std::getc(stream);
    if (next == '\n') {
      line[n - 1] = '\n';
    } else if (next != EOF) {
      std::ungetc(next, stream);
    }
  }
  return true;
}

}  // namespace

bool IniNoCaseLess::operator()(const std::u16string& a, const std::u16string& b) const noexcept {
  const size_t n = a.size() < b.size() ? a.size() : b.size();
  for (size_t i = 0; i < n; ++i) {
    const auto x = static_cast<uint16_t>(QZToLowerW(a[i]));
    const auto y = static_cast<uint16_t>(QZToLowerW(b[i]));
    if (x != y) return x < y;
  }
  return a.size() < b.size();
}

IniFile::IniFile(const QZWCHAR* path) : m_path(Str(path)) {
  qz::core::ThrowIfFailed(QZNamedSemOpen("QZCore_IniFileLock", 1, &m_lock));
  try {
    CLock hold(*this);
    Load();
  } catch (...) {
    QZNamedSemClose(m_lock);
    throw;
  }
}

IniFile::~IniFile() { QZNamedSemClose(m_lock); }

IniFile::CLock::CLock(IniFile& file) : m_file(file) { qz::core::ThrowIfFailed(QZNamedSemWait(file.m_lock)); }

IniFile::CLock::~CLock() {
  if (QZNamedSemPost(m_file.m_lock) < 0) {
    std::fputs("QZCore: the lock \"QZCore_IniFileLock\" could not be released; ending the process\n", stderr);
    qz::os::AbortProcess();
  }
}

void IniFile::Load() {
  m_sections.clear();
  const std::string path = qz::text::WideToAnsiString(m_path.c_str());
  CStream file(qz::os::OpenStream(path.c_str(), false));
  if (file == nullptr) return;  // a missing file is an empty store
  char line[kIniLineBuffer];
  while (ReadLine(file.get(), line)) {
    IniKeyMap keys;
    const std::u16string header = qz::text::AnsiToWideString(line);
    if (line[0] != '[') continue;  // comments, blank lines and stray lines between sections
    const size_t close = header.rfind(u']');
    if (close == std::u16string::npos) return;  // the load ends here
    const std::u16string name = header.substr(1, close - 1);
    for (;;) {
      if (!ReadLine(file.get(), line)) break;
      const char first = line[0];
      if (first == '\0' || first == '\n' || std::isspace(static_cast<signed char>(first))) break;
      std::u16string text = qz::text::AnsiToWideString(line);
      if (!text.empty()) text.pop_back();  // taken to be the newline, unseen
      const size_t equals = text.find(u'=');
      if (equals == std::u16string::npos) return;  // this section is dropped with the rest
      keys[Trim(text.substr(0, equals))] = Trim(text.substr(equals + 1));
    }
    m_sections[name] = std::move(keys);
  }
}

int32_t IniFile::Save(const QZWCHAR* path) {
  const std::string target = qz::text::WideToAnsiString(path != nullptr ? path : m_path.c_str());
  CStream file(qz::os::OpenStream(target.c_str(), true));
  if (file == nullptr) return 1;
  for (const auto& [section, keys] : m_sections) {
    std::fprintf(file.get(), "[%s]\n", qz::text::WideToAnsiString(section.c_str()).c_str());
    for (const auto& [key, value] : keys) {
      std::fprintf(file.get(), "%s=%s\n", qz::text::WideToAnsiString(key.c_str()).c_str(),
                   qz::text::WideToAnsiString(value.c_str()).c_str());
    }
    std::fputs("\n", file.get());
  }
  // Taken before the close: a flush that lands in a later second makes this process reload what
  // it wrote, which is harmless.
  int64_t modified = 0;
  if (qz::os::StreamModifiedTime(file.get(), &modified)) m_lastModified = modified;
  return 0;
}

void IniFile::ReloadIfChanged() {
  int64_t modified = 0;
  if (!qz::os::PathModifiedTime(qz::text::WideToAnsiString(m_path.c_str()).c_str(), &modified)) return;
  if (modified > m_lastModified) Load();
  m_lastModified = modified;  // also backwards, without a reload
}

bool IniFile::HasValue(const std::u16string& section, const std::u16string& key) const {
  const auto found = m_sections.find(section);
  return found != m_sections.end() && found->second.count(key) != 0;
}

bool IniFile::HasSection(const std::u16string& section) const {
  return m_sections.count(section) != 0 || !GetSubSectionNames(section).empty();
}

std::vector<std::u16string> IniFile::GetSectionNames() const {
  std::vector<std::u16string> names;
  names.reserve(m_sections.size());
  for (const auto& entry : m_sections) names.push_back(entry.first);
  return names;
}

std::vector<std::u16string> IniFile::GetSubSectionNames(const std::u16string& section) const {
  // The prefix test keeps case, unlike the map: what lies beneath is found only under the exact path.
  const std::u16string prefix = section + u'\\';
  std::vector<std::u16string> names;
  for (const auto& name : GetSectionNames()) {
    if ((name + u'\\').compare(0, prefix.size(), prefix) == 0) names.push_back(name);
  }
  return names;
}

int32_t IniFile::SetValue(const QZWCHAR* section, const QZWCHAR* key, const QZWCHAR* value, bool overwrite) {
  CLock hold(*this);
  ReloadIfChanged();
  const bool exists = HasValue(Str(section), Str(key));
  if (!exists || overwrite) {
    m_sections[Str(section)][Str(key)] = Str(value);
    Save(nullptr);  // the caller is told 0 whether or not the file could be written
  }
  return exists && !overwrite ? -1 : 0;
}

QZRESULT IniFile::GetValue(const QZWCHAR* section, const QZWCHAR* key, QZWCHAR* buffer) {
  CLock hold(*this);
  ReloadIfChanged();
  if (!HasValue(Str(section), Str(key))) return QZ_E_FILE_NOT_FOUND;
  const std::u16string& value = m_sections.find(Str(section))->second.find(Str(key))->second;
  QZStrNCpyW(buffer, value.c_str(), value.size() + 1);
  return 0;
}
