// directory_search.cpp - directory searches, file times and full path names on Linux
// (file_system.h).
//
// A search lists a directory with readdir, "." and ".." included, and describes each entry with
// statx: the birth time where the file system keeps one, the entry itself for a symbolic link.
// File times travel as the first platform's ticks (100 ns since 1601); their local form uses the
// zone's bias now in force. Full path names are worked out as text against the current directory.
#include <new>
#include <string>
#include <vector>

#include "errno_map.h"
#include "io.h"
#include "path_text.h"
#include "platform/file_system.h"
#include "platform/last_error.h"
#include "platform/native_error.h"
#include "platform/time_zone.h"
#include "platform/utf8.h"

namespace qz::os {
namespace {

constexpr int64_t kTicksPerSecond = 10000000;
constexpr int64_t kSecondsFrom1601To1970 = 11644473600;

// A running search: a directory stream, or the one entry a pattern without "/*" named.
struct Search {
  DIR* dir = nullptr;  // null for a single entry, already given
};

uint64_t Ticks(const struct statx_timestamp& t) noexcept {
  const int64_t seconds = t.tv_sec + kSecondsFrom1601To1970;
  if (seconds < 0) return 0;
  return static_cast<uint64_t>(seconds) * kTicksPerSecond + t.tv_nsec / 100;
}

// Describes `name` in the directory `dirFd` (AT_FDCWD: from the current directory). An entry that
// vanished since it was listed keeps its name and no figures.
void Describe(int dirFd, const char* name, FindData* data) {
  data->name = Utf8ToUtf16Replacing(name);
  data->attributes = kAttributeNormal;
  data->size = data->createTime = data->accessTime = data->writeTime = 0;
  struct statx st;
  if (sys::statx(dirFd, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_BASIC_STATS | STATX_BTIME,
                 &st) != 0) {
    return;
  }
  uint32_t attributes = 0;
  if (S_ISDIR(st.stx_mode)) attributes |= kAttributeDirectory;
  if ((st.stx_mode & 0222) == 0) attributes |= kAttributeReadOnly;
  data->attributes = attributes != 0 ? attributes : kAttributeNormal;
  data->size = S_ISDIR(st.stx_mode) ? 0 : st.stx_size;  // directories have no size of their own
  if ((st.stx_mask & STATX_BTIME) != 0) data->createTime = Ticks(st.stx_btime);
  data->accessTime = Ticks(st.stx_atime);
  data->writeTime = Ticks(st.stx_mtime);
}

// The last part of a path, for a search that names one entry.
std::string LastPart(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Days since 1970-01-01 to the civil date (proleptic Gregorian calendar).
void CivilFromDays(int64_t days, int64_t* year, unsigned* month, unsigned* day) noexcept {
  days += 719468;
  const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const auto dayOfEra = static_cast<unsigned>(days - era * 146097);
  const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned monthIndex = (5 * dayOfYear + 2) / 153;
  *day = dayOfYear - (153 * monthIndex + 2) / 5 + 1;
  *month = monthIndex < 10 ? monthIndex + 3 : monthIndex - 9;
  *year = static_cast<int64_t>(yearOfEra) + era * 400 + (*month <= 2 ? 1 : 0);
}

// The current directory as bytes; false with errno.
bool CurrentDirectory(std::string* out) {
  std::vector<char> buffer(256);
  for (;;) {
    if (sys::getcwd(buffer.data(), buffer.size()) != nullptr) {
      *out = buffer.data();
      return true;
    }
    if (errno != ERANGE) return false;
    buffer.resize(buffer.size() * 2);
  }
}

// `path` (absolute) with empty and "." parts dropped and ".." taking back the part before it; the
// root's ".." is the root. A path that ended in '/' keeps one.
std::u16string Normalise(const std::u16string& path) {
  std::vector<std::u16string_view> parts;
  const std::u16string_view all(path);
  size_t start = 0;
  while (start <= all.size()) {
    size_t end = all.find(u'/', start);
    if (end == std::u16string_view::npos) end = all.size();
    const std::u16string_view part = all.substr(start, end - start);
    if (part == u"..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!part.empty() && part != u".") {
      parts.push_back(part);
    }
    start = end + 1;
  }
  std::u16string out;
  for (const auto& part : parts) {
    out += u'/';
    out += part;
  }
  if (out.empty() || (path.back() == u'/')) out += u'/';
  return out;
}

}  // namespace

FindHandle FindFirstFile(const std::u16string& pattern, FindData* data) noexcept {
  try {
    const PathText utf8(pattern.c_str());
    if (!utf8.ok()) return kInvalidFind;
    const std::string& text = utf8.text();
    if (text.size() >= 2 && text.compare(text.size() - 2, 2, "/*") == 0) {
      std::string dirPath = text.substr(0, text.size() - 2);
      if (dirPath.empty()) dirPath = "/";
      const int fd = OpenCloexec(dirPath.c_str(), O_RDONLY | O_DIRECTORY);
      if (fd < 0) {
        SetLastErrorFromPathErrno(errno, dirPath.c_str());
        return kInvalidFind;
      }
      DIR* dir = sys::fdopendir(fd);
      if (dir == nullptr) {
        const int err = errno;
        sys::close(fd);
        SetLastErrorFromErrno(err);
        return kInvalidFind;
      }
      auto* search = new Search{dir};
      const auto handle = reinterpret_cast<FindHandle>(search);
      if (!FindNextFile(handle, data)) {
        const uint32_t error = GetLastError();
        FindClose(handle);
        SetLastError(error == kErrorNoMoreFiles ? kErrorFileNotFound : error);
        return kInvalidFind;
      }
      return handle;
    }
    if (text.empty()) {
      SetLastError(kErrorPathNotFound);
      return kInvalidFind;
    }
    struct statx st;
    if (sys::statx(AT_FDCWD, text.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &st) != 0) {
      SetLastErrorFromPathErrno(errno, text.c_str());
      return kInvalidFind;
    }
    Describe(AT_FDCWD, text.c_str(), data);
    data->name = Utf8ToUtf16Replacing(LastPart(text));
    return reinterpret_cast<FindHandle>(new Search{});
  } catch (const std::bad_alloc&) {
    SetLastError(kErrorOutOfMemory);
    return kInvalidFind;
  }
}

bool FindNextFile(FindHandle find, FindData* data) noexcept {
  auto* search = reinterpret_cast<Search*>(find);
  if (search->dir == nullptr) {
    SetLastError(kErrorNoMoreFiles);
    return false;
  }
  try {
    errno = 0;
    const struct dirent* entry = sys::readdir(search->dir);
    if (entry == nullptr) {
      if (errno != 0) {
        SetLastErrorFromErrno(errno);
      } else {
        SetLastError(kErrorNoMoreFiles);
      }
      return false;
    }
    Describe(dirfd(search->dir), entry->d_name, data);
    return true;
  } catch (const std::bad_alloc&) {
    SetLastError(kErrorOutOfMemory);
    return false;
  }
}

void FindClose(FindHandle find) noexcept {
  auto* search = reinterpret_cast<Search*>(find);
  if (search->dir != nullptr) sys::closedir(search->dir);
  delete search;
}

bool FileTimeToLocalFileTime(uint64_t utc, uint64_t* local) noexcept {
  // The zone's offset now, with the zone read afresh, as the time family reads it.
  struct timespec now;
  if (sys::clock_gettime(CLOCK_REALTIME, &now) != 0) {
    SetLastErrorFromErrno(errno);
    return false;
  }
  std::tm fields{};
  if (!LocalTime64(now.tv_sec, &fields)) return false;
  const int64_t shift = static_cast<int64_t>(fields.tm_gmtoff) * kTicksPerSecond;
  if (utc > static_cast<uint64_t>(INT64_MAX) || (shift < 0 && static_cast<int64_t>(utc) < -shift) ||
      (shift > 0 && static_cast<int64_t>(utc) > INT64_MAX - shift)) {
    SetLastError(kErrorInvalidParameter);
    return false;
  }
  *local = static_cast<uint64_t>(static_cast<int64_t>(utc) + shift);
  return true;
}

bool FileTimeToSystemTime(uint64_t ticks, CalendarTime* time) noexcept {
  if (ticks > static_cast<uint64_t>(INT64_MAX)) {
    SetLastError(kErrorInvalidParameter);
    return false;
  }
  const auto total = static_cast<int64_t>(ticks);
  const int64_t seconds = total / kTicksPerSecond - kSecondsFrom1601To1970;
  const int64_t days = seconds >= 0 ? seconds / 86400 : (seconds - 86399) / 86400;
  const int64_t secondOfDay = seconds - days * 86400;
  int64_t year = 0;
  unsigned month = 0;
  unsigned day = 0;
  CivilFromDays(days, &year, &month, &day);
  time->year = static_cast<uint16_t>(year);
  time->month = static_cast<uint16_t>(month);
  time->dayOfWeek = static_cast<uint16_t>(((days % 7) + 11) % 7);  // 1970-01-01 was a Thursday
  time->day = static_cast<uint16_t>(day);
  time->hour = static_cast<uint16_t>(secondOfDay / 3600);
  time->minute = static_cast<uint16_t>(secondOfDay / 60 % 60);
  time->second = static_cast<uint16_t>(secondOfDay % 60);
  time->milliseconds = static_cast<uint16_t>(total % kTicksPerSecond / 10000);
  return true;
}

uint32_t GetFullPathName(const char16_t* path, uint32_t size, char16_t* buffer) noexcept {
  if (path == nullptr || path[0] == 0) {
    SetLastError(kErrorInvalidName);
    return 0;
  }
  try {
    std::u16string full(path, Utf16Length(path));
    if (full[0] != u'/') {
      std::string cwd;
      if (!CurrentDirectory(&cwd)) {
        SetLastErrorFromErrno(errno);
        return 0;
      }
      full = Utf8ToUtf16Replacing(cwd) + u'/' + full;
    }
    full = Normalise(full);
    const auto length = static_cast<uint32_t>(full.size());
    if (size <= length) return length + 1;  // the size needed; nothing written
    full.copy(buffer, length);
    buffer[length] = 0;
    return length;
  } catch (const std::bad_alloc&) {
    SetLastError(kErrorOutOfMemory);
    return 0;
  }
}

}  // namespace qz::os
