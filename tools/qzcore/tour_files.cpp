// tour_files.cpp - tour step: a file written, locked from a second handle (refused) and copied; a
// directory listed; the machine's figures and the user's name.
#include <cstdlib>
#include <filesystem>
#include <string>

#include "qzcore/qzfile.h"
#include "qzcore/qzsysinfo.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;
using qztool::Utf8;

std::u16string Wide(const std::string& text) { return std::u16string(text.begin(), text.end()); }

std::string Result(QZRESULT hr) { return Hex(static_cast<uint32_t>(hr)); }

void TourFiles() {
  const char* base = std::getenv("TMPDIR");
  const std::string dir = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/qzcore-tour-files";
  const std::u16string wdir = Wide(dir);
  const std::u16string first = Wide(dir + "/first.txt");
  const std::u16string second = Wide(dir + "/second.txt");
  std::error_code ignored;
  std::filesystem::remove_all(dir, ignored);
  Show("QZDirCreate(\"" + dir + "\")", Result(QZDirCreate(wdir.c_str(), 0755)));

  QZFileHandle a = -1;
  QZRESULT hr = QZFileOpen(first.c_str(), QZFILE_CREATE | QZFILE_READ | QZFILE_WRITE, 0x1B6, &a);
  Show("QZFileOpen(first.txt, CREATE|READ|WRITE)", Result(hr) + (hr == QZ_S_CREATED ? " (created)" : ""));
  uint32_t count = 0;
  const std::string text = "written through one handle\n";
  hr = QZFileWrite(a, text.data(), static_cast<uint32_t>(text.size()), &count);
  Show("QZFileWrite", Result(hr) + ", " + std::to_string(count) + " bytes");
  Show("QZFileLock(first, 0, 10, exclusive)", Result(QZFileLock(a, 0, 10, 0)));

  QZFileHandle b = -1;
  hr = QZFileOpen(first.c_str(), QZFILE_CREATE | QZFILE_READ | QZFILE_WRITE, 0x1B6, &b);
  Show("QZFileOpen(first.txt) again", Result(hr) + (hr == 0 ? " (existed)" : ""));
  Show("QZFileLock(second handle, 5, 1) (held)", Result(QZFileLock(b, 5, 1, 0)));
  Show("QZFileLock(second handle, 10, 5) (free)", Result(QZFileLock(b, 10, 5, 0)));
  Show("QZFileUnlock(first, 0, 10)", Result(QZFileUnlock(a, 0, 10)));
  Show("QZFileLock(second handle, 5, 1) now", Result(QZFileLock(b, 5, 1, 0)));
  QZFileClose(b);
  QZFileClose(a);

  QZFileHandle copy = -1;
  hr = QZFileCopy(first.c_str(), second.c_str(), QZFILE_CREATE | QZFILE_TRUNCATE, 0x124, &copy);
  Show("QZFileCopy(first, second, read-only permissions)", Result(hr));
  uint64_t size = 0;
  QZFileGetSize(copy, &size);
  Show("QZFileGetSize(second)", std::to_string(size) + " bytes");
  QZFileClose(copy);

  QZDirHandle listing = nullptr;
  Show("QZDirOpen(\"" + dir + "/\")", Result(QZDirOpen(Wide(dir + "/").c_str(), &listing)));
  QZDirEntry entry;
  while ((hr = QZDirRead(listing, &entry, sizeof entry)) == 0) {
    const uint64_t bytes = (uint64_t{entry.sizeHigh} << 32) | entry.sizeLow;
    Show("  " + Utf8(entry.name), "mode " + Hex(entry.mode) + ", " + std::to_string(bytes) +
                                      " bytes, modified " + std::to_string(entry.modifyTime));
  }
  Show("QZDirRead at the end", Result(hr));
  QZDirClose(listing);
  Show("QZFileDelete(second) (read-only)", Result(QZFileDelete(second.c_str())));
  Show("QZFileDelete(first)", Result(QZFileDelete(first.c_str())));
  Show("QZDirRemove(dir) (not empty)", Result(QZDirRemove(wdir.c_str())));
  std::filesystem::remove_all(dir, ignored);

  QZWCHAR full[512];
  QZPathExpand(u"some/./where/../file", full, 512);
  Show("QZPathExpand(\"some/./where/../file\")", Utf8(full));

  QZSystemInfo info{};
  hr = QZGetSystemInfo(&info, sizeof info);
  Show("QZGetSystemInfo", Result(hr));
  Show("  memory", std::to_string(info.totalPhysicalMemory >> 20) + " MiB, " +
                       std::to_string(info.availablePhysicalMemory >> 20) + " MiB available");
  Show("  page size, granularity", std::to_string(info.pageSize) + ", " + std::to_string(info.allocationGranularity));
  Show("  processor", "type " + std::to_string(info.processorType) + ", level " + std::to_string(info.processorLevel) +
                          ", revision " + Hex(info.processorRevision) + ", " +
                          std::to_string(info.processorCount) + " online");
  Show("  system", "platform " + Hex(info.platformId) + ", version " + std::to_string(info.versionMajor) + "." +
                       std::to_string(info.versionMinor) + "." + std::to_string(info.versionBuild));
  QZWCHAR user[128];
  hr = QZGetUserName(user, 128);
  Show("QZGetUserName", Result(hr) + " \"" + Utf8(user) + "\"");
}

}  // namespace

QZ_TOUR_STEP(70, "Files, directories, system information", TourFiles);
