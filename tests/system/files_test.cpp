// files_test.cpp - files by handle, locks, copying, directories and full path names, as a caller
// of the shared library sees them.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "qzcore/qzfile.h"
#include "support/test_support.h"

namespace {

constexpr QZFileHandle kNoFile = -1;
constexpr uint32_t kRW = QZFILE_READ | QZFILE_WRITE;

std::u16string Wide(const std::string& text) {
  std::u16string out;
  for (unsigned char c : text) out += static_cast<char16_t>(c);
  return out;
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

bool Exists(const std::string& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0;
}

std::string Hex(QZRESULT hr) {
  char text[16];
  std::snprintf(text, sizeof text, "%#x", static_cast<unsigned>(hr));
  return text;
}

class Files : public ::testing::Test {
 protected:
  std::u16string Path(const std::string& name) const { return Wide(m_dir.File(name)); }
  qztest::TempDir m_dir;
};

// Every disposition against an existing file (holding "abc") and a missing one: the result, whether
// a handle came back, and what the file holds afterwards ("-" for no file).
TEST_F(Files, DispositionsAndCreatedStatus) {
  struct Case {
    uint32_t flags;
    QZRESULT onExisting;
    const char* existingAfter;
    QZRESULT onMissing;
    const char* missingAfter;
  };
  const Case cases[] = {
      {0, 0, "abc", QZ_E_FILE_NOT_FOUND, "-"},
      {QZFILE_CREATE, 0, "abc", QZ_S_CREATED, ""},
      {QZFILE_TRUNCATE, 0, "", QZ_E_FILE_NOT_FOUND, "-"},
      {QZFILE_CREATE | QZFILE_TRUNCATE, 0, "", QZ_S_CREATED, ""},
      {QZFILE_CREATE | QZFILE_EXCLUSIVE, QZ_E_FAIL, "abc", 0, ""},
      {QZFILE_CREATE | QZFILE_TRUNCATE | QZFILE_EXCLUSIVE, QZ_E_FAIL, "abc", 0, ""},
      {QZFILE_EXCLUSIVE, QZ_E_FAIL, "abc", QZ_E_FAIL, "-"},
      {QZFILE_TRUNCATE | QZFILE_EXCLUSIVE, QZ_E_FAIL, "abc", QZ_E_FAIL, "-"},
  };
  int n = 0;
  for (const Case& c : cases) {
    for (bool existing : {true, false}) {
      const std::string name = m_dir.File("d" + std::to_string(n++));
      if (existing) WriteText(name, "abc");
      QZFileHandle file = 12345;
      const QZRESULT hr = QZFileOpen(Wide(name).c_str(), c.flags | kRW, 0x1B6, &file);
      const QZRESULT want = existing ? c.onExisting : c.onMissing;
      const std::string after = Exists(name) ? qztest::ReadFile(name) : "-";
      EXPECT_EQ(Hex(hr), Hex(want)) << "flags " << c.flags << (existing ? " existing" : " missing");
      EXPECT_EQ(after, existing ? c.existingAfter : c.missingAfter) << "flags " << c.flags;
      if (hr >= 0) {
        EXPECT_GE(file, 0);
        EXPECT_EQ(QZFileClose(file), 0);
      } else {
        EXPECT_EQ(file, kNoFile);
      }
    }
  }
}

TEST_F(Files, ReadWriteSeekAndTheEndOfTheFile) {
  QZFileHandle file;
  ASSERT_EQ(QZFileOpen(Path("rw").c_str(), QZFILE_CREATE | kRW, 0x1B6, &file), QZ_S_CREATED);
  uint32_t count = 99;
  EXPECT_EQ(QZFileWrite(file, "hello world", 11, &count), 0);
  EXPECT_EQ(count, 11u);
  uint32_t position = 99;
  EXPECT_EQ(QZFileSeek(file, -5, QZFILE_SEEK_END, &position), 0);
  EXPECT_EQ(position, 6u);
  char buffer[32] = {};
  EXPECT_EQ(QZFileRead(file, buffer, 0, &count), QZ_E_HANDLE_EOF);  // 0 bytes, mid-file
  EXPECT_EQ(QZFileRead(file, buffer, sizeof buffer, &count), 0);
  EXPECT_EQ(std::string(buffer, count), "world");
  EXPECT_EQ(QZFileRead(file, buffer, sizeof buffer, &count), QZ_E_HANDLE_EOF);
  EXPECT_EQ(count, 0u);

  // Before the start: failure, 0xFFFFFFFF in the position word, the file position kept.
  EXPECT_EQ(QZFileSeek(file, -1, QZFILE_SEEK_SET, &position), QZ_E_FAIL);
  EXPECT_EQ(position, 0xFFFFFFFFu);
  EXPECT_EQ(QZFileSeek(file, 0, QZFILE_SEEK_CUR, &position), 0);
  EXPECT_EQ(position, 11u);
  EXPECT_EQ(QZFileSeek(file, 0, 7, &position), QZ_E_FAIL);  // no such origin

  // Append positions at the end once; a later seek decides where writes go.
  QZFileHandle appender;
  ASSERT_EQ(QZFileOpen(Path("rw").c_str(), QZFILE_APPEND | QZFILE_WRITE, 0, &appender), 0);
  EXPECT_EQ(QZFileWrite(appender, "!", 1, &count), 0);
  EXPECT_EQ(QZFileSeek(appender, 0, QZFILE_SEEK_SET, &position), 0);
  EXPECT_EQ(QZFileWrite(appender, "J", 1, &count), 0);
  EXPECT_EQ(QZFileFlush(appender), 0);
  EXPECT_EQ(QZFileClose(appender), 0);
  EXPECT_EQ(qztest::ReadFile(m_dir.File("rw")), "Jello world!");
  uint64_t size = 0;
  EXPECT_EQ(QZFileGetSize(file, &size), 0);
  EXPECT_EQ(size, 12u);
  EXPECT_EQ(QZFileClose(file), 0);
}

// Positions are 32-bit: a file beyond 4 GiB is sized whole, but its end cannot be sought, and an
// append open fails there with the handle left open.
TEST_F(Files, PositionsBeyondThirtyTwoBits) {
  const std::string name = m_dir.File("big");
  constexpr uint64_t kBig = (5ull << 30) + 7;
  {
    const int fd = open(name.c_str(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(ftruncate(fd, static_cast<off_t>(kBig)), 0);  // sparse
    close(fd);
  }
  QZFileHandle file;
  ASSERT_EQ(QZFileOpen(Wide(name).c_str(), QZFILE_READ, 0, &file), 0);
  uint64_t size = 0;
  EXPECT_EQ(QZFileGetSize(file, &size), 0);
  EXPECT_EQ(size, kBig);
  uint32_t position = 0;
  EXPECT_EQ(QZFileSeek(file, 0, QZFILE_SEEK_END, &position), QZ_E_FAIL);
  EXPECT_EQ(position, 0xFFFFFFFFu);
  EXPECT_EQ(QZFileSeek(file, 0, QZFILE_SEEK_CUR, &position), 0);
  EXPECT_EQ(position, 0u);
  EXPECT_EQ(QZFileClose(file), 0);

  QZFileHandle appender = kNoFile;
  EXPECT_EQ(QZFileOpen(Wide(name).c_str(), QZFILE_APPEND | QZFILE_WRITE, 0, &appender), QZ_E_FAIL);
  ASSERT_GE(appender, 0);  // open, for the caller to close
  EXPECT_EQ(QZFileClose(appender), 0);
}

// What a handle may do follows its access: none, read only, write only.
TEST_F(Files, AccessOfTheHandle) {
  WriteText(m_dir.File("a"), "data");
  struct Case {
    uint32_t flags;
    QZRESULT read;
    QZRESULT write;
  };
  const Case cases[] = {
      {0, QZ_E_ACCESSDENIED, QZ_E_ACCESSDENIED},
      {QZFILE_READ, 0, QZ_E_ACCESSDENIED},
      {QZFILE_WRITE, QZ_E_ACCESSDENIED, 0},
  };
  for (const Case& c : cases) {
    QZFileHandle file;
    ASSERT_EQ(QZFileOpen(Path("a").c_str(), c.flags, 0, &file), 0) << c.flags;
    char buffer[8];
    uint32_t count = 77;
    EXPECT_EQ(Hex(QZFileRead(file, buffer, sizeof buffer, &count)), Hex(c.read)) << c.flags;
    EXPECT_EQ(Hex(QZFileWrite(file, "d", 1, &count)), Hex(c.write)) << c.flags;
    EXPECT_EQ(fcntl(static_cast<int>(file), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_EQ(QZFileClose(file), 0);
  }
  // A directory is not a file; a path through a file, or a missing directory, is not found.
  QZFileHandle file;
  EXPECT_EQ(QZFileOpen(Wide(m_dir.path()).c_str(), QZFILE_READ, 0, &file), QZ_E_ACCESSDENIED);
  EXPECT_EQ(QZFileOpen(Path("a/b").c_str(), QZFILE_CREATE | kRW, 0, &file), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(QZFileOpen(Path("no/b").c_str(), QZFILE_CREATE | kRW, 0, &file), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(file, kNoFile);
}

// A create whose permissions hold no write bit makes a read-only file; this handle still writes.
// Only the caller's CREATE counts, not the one a named temporary open adds.
TEST_F(Files, ReadOnlyAttribute) {
  struct Case {
    uint32_t flags;
    int32_t permissions;
    bool readOnly;
  };
  const Case cases[] = {
      {QZFILE_CREATE, 0x124, true},
      {QZFILE_CREATE, 0x1A4, false},
      {QZFILE_CREATE, 0x100, true},
      {QZFILE_TEMPORARY, 0x124, false},
      {QZFILE_TEMPORARY | QZFILE_CREATE, 0x124, true},
  };
  int n = 0;
  for (const Case& c : cases) {
    const std::string name = m_dir.File("ro" + std::to_string(n++));
    QZFileHandle file;
    ASSERT_EQ(QZFileOpen(Wide(name).c_str(), c.flags | QZFILE_WRITE, c.permissions, &file), QZ_S_CREATED);
    uint32_t count = 0;
    EXPECT_EQ(QZFileWrite(file, "x", 1, &count), 0);
    struct stat st;
    ASSERT_EQ(fstat(static_cast<int>(file), &st), 0);
    EXPECT_EQ((st.st_mode & 0222) == 0, c.readOnly) << n << ": " << std::oct << st.st_mode;
    EXPECT_EQ(QZFileClose(file), 0);
    if ((c.flags & QZFILE_TEMPORARY) != 0) {
      EXPECT_FALSE(Exists(name));
      continue;
    }
    EXPECT_EQ(QZFileDelete(Wide(name).c_str()), c.readOnly ? QZ_E_ACCESSDENIED : 0);
    EXPECT_EQ(Exists(name), c.readOnly);
  }
}

// Temporary files leave nothing behind, named or nameless, while open or after the close.
TEST_F(Files, TemporaryFilesLeaveNothing) {
  qztest::ScopedEnv tmpdir("TMPDIR", m_dir.path().c_str());
  for (const char16_t* path : {static_cast<const char16_t*>(nullptr), u""}) {
    QZFileHandle file;
    ASSERT_EQ(QZFileOpen(path, QZFILE_TEMPORARY | kRW, 0x1B6, &file), 0);
    EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
    uint32_t count = 0;
    EXPECT_EQ(QZFileWrite(file, "temp", 4, &count), 0);
    uint32_t position;
    EXPECT_EQ(QZFileSeek(file, 0, QZFILE_SEEK_SET, &position), 0);
    char buffer[8];
    EXPECT_EQ(QZFileRead(file, buffer, sizeof buffer, &count), 0);
    EXPECT_EQ(std::string(buffer, count), "temp");
    EXPECT_EQ(QZFileClose(file), 0);
  }
  // Named: created (the open adds CREATE), then gone from the directory at once.
  QZFileHandle file;
  ASSERT_EQ(QZFileOpen(Path("named").c_str(), QZFILE_TEMPORARY | kRW, 0x1B6, &file), QZ_S_CREATED);
  EXPECT_FALSE(Exists(m_dir.File("named")));
  EXPECT_EQ(QZFileClose(file), 0);
  EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));

  // The nameless file is made in $TMPDIR: a missing one fails the open.
  qztest::ScopedEnv missing("TMPDIR", m_dir.File("missing").c_str());
  EXPECT_EQ(QZFileOpen(nullptr, QZFILE_TEMPORARY | kRW, 0, &file), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(file, kNoFile);
}

TEST_F(Files, UnicodePathsReachTheSystemAsUtf8) {
  const std::u16string name = Path("") + u"gr\u00FC\u00DFe-\U0001F600";
  QZFileHandle file;
  ASSERT_EQ(QZFileOpen(name.c_str(), QZFILE_CREATE | QZFILE_WRITE, 0x1B6, &file), QZ_S_CREATED);
  EXPECT_EQ(QZFileClose(file), 0);
  EXPECT_TRUE(Exists(m_dir.File("gr\xC3\xBC\xC3\x9F" "e-\xF0\x9F\x98\x80")));
  EXPECT_EQ(QZFileDelete(name.c_str()), 0);
}

// A pipe whose writer is gone reads as a failure once drained, as on the first platform.
TEST_F(Files, DrainedPipeWithoutWriter) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  ASSERT_EQ(write(fds[1], "p", 1), 1);
  close(fds[1]);
  char c;
  uint32_t count = 0;
  EXPECT_EQ(QZFileRead(fds[0], &c, 1, &count), 0);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(QZFileRead(fds[0], &c, 1, &count), QZ_E_FAIL);
  EXPECT_EQ(QZFileClose(fds[0]), 0);
  EXPECT_EQ(QZFileClose(fds[0]), QZ_E_HANDLE);  // closed already
}

// ---- byte-range locks ----

class FileLocks : public Files {
 protected:
  QZFileHandle Open() {
    QZFileHandle file = kNoFile;
    EXPECT_GE(QZFileOpen(Path("locked").c_str(), QZFILE_CREATE | kRW, 0x1B6, &file), 0);
    return file;
  }
};

TEST_F(FileLocks, RefuseAnotherHandleOfTheSameProcess) {
  const QZFileHandle a = Open();
  const QZFileHandle b = Open();
  EXPECT_EQ(QZFileLock(a, 0, 10, 0), 0);
  EXPECT_EQ(QZFileLock(a, 0, 10, 0), 0);  // a handle never conflicts with itself
  struct Step {
    uint32_t offset, length, flags;
    QZRESULT want;
  };
  const Step steps[] = {
      {5, 1, 0, QZ_E_FAIL},                   // inside the held range
      {9, 4, QZFILE_LOCK_SHARED, QZ_E_FAIL},  // overlaps its end
      {10, 5, 0, 0},                          // just behind it
      {0, 0, 0, 0},                           // nothing locked by nothing
  };
  for (const Step& s : steps) {
    EXPECT_EQ(Hex(QZFileLock(b, s.offset, s.length, s.flags)), Hex(s.want)) << s.offset << "+" << s.length;
  }
  EXPECT_EQ(QZFileUnlock(a, 0, 10), 0);
  EXPECT_EQ(QZFileLock(b, 5, 1, 0), 0);
  // Shared beside shared; exclusive against either.
  EXPECT_EQ(QZFileLock(a, 100, 10, QZFILE_LOCK_SHARED), 0);
  EXPECT_EQ(QZFileLock(b, 100, 10, QZFILE_LOCK_SHARED), 0);
  EXPECT_EQ(QZFileLock(b, 105, 1, 0), QZ_E_FAIL);
  // Closing a handle releases its locks.
  EXPECT_EQ(QZFileClose(a), 0);
  EXPECT_EQ(QZFileLock(b, 100, 10, 0), 0);
  EXPECT_EQ(QZFileClose(b), 0);
}

TEST_F(FileLocks, WaitingLockGetsTheRangeWhenItIsReleased) {
  const QZFileHandle a = Open();
  const QZFileHandle b = Open();
  ASSERT_EQ(QZFileLock(a, 0, 100, 0), 0);
  std::atomic<bool> locked{false};
  std::thread waiter([&] {
    EXPECT_EQ(QZFileLock(b, 50, 10, QZFILE_LOCK_WAIT), 0);
    locked = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(locked.load());
  EXPECT_EQ(QZFileUnlock(a, 0, 100), 0);
  waiter.join();
  EXPECT_TRUE(locked.load());
  EXPECT_EQ(QZFileLock(a, 55, 1, 0), QZ_E_FAIL);
  EXPECT_EQ(QZFileClose(a), 0);
  EXPECT_EQ(QZFileClose(b), 0);
}

// The child: tries the range the parent holds, then a free one; exits 0 only if refused, then granted.
TEST_F(FileLocks, ChildSide) {
  if (!qztest::IsChild()) GTEST_SKIP() << "runs as the child of RefuseAnotherProcess";
  const char* path = std::getenv("QZTEST_LOCK_FILE");
  ASSERT_NE(path, nullptr);
  QZFileHandle file;
  ASSERT_EQ(QZFileOpen(Wide(path).c_str(), kRW, 0, &file), 0);
  const QZRESULT held = QZFileLock(file, 3, 2, QZFILE_LOCK_SHARED);
  const QZRESULT free = QZFileLock(file, 20, 2, 0);
  std::printf("held=%s free=%s\n", Hex(held).c_str(), Hex(free).c_str());
  QZFileClose(file);
}

TEST_F(FileLocks, RefuseAnotherProcess) {
  const QZFileHandle a = Open();
  ASSERT_EQ(QZFileLock(a, 0, 10, 0), 0);
  const auto child = qztest::RunSelf("FileLocks.ChildSide", {"QZTEST_LOCK_FILE=" + m_dir.File("locked")});
  EXPECT_EQ(child.exitCode, 0) << child.out << child.err;
  EXPECT_NE(child.out.find("held=0x80004005 free=0"), std::string::npos) << child.out;
  EXPECT_EQ(QZFileClose(a), 0);
}

// ---- copying ----

TEST_F(Files, CopyEmptyAndLargeFiles) {
  for (const size_t size : {size_t{0}, size_t{1}, size_t{16384}, size_t{3 * 1024 * 1024 + 123}}) {
    std::string content(size, '\0');
    for (size_t i = 0; i < size; ++i) content[i] = static_cast<char>((i * 131 + i / 7) & 0xFF);
    const std::string from = m_dir.File("src" + std::to_string(size));
    const std::string to = m_dir.File("dst" + std::to_string(size));
    WriteText(from, content);
    EXPECT_EQ(QZFileCopy(Wide(from).c_str(), Wide(to).c_str(), QZFILE_CREATE, 0x1B6, nullptr), QZ_S_CREATED);
    EXPECT_TRUE(qztest::ReadFile(to) == content) << size;
  }
}

TEST_F(Files, CopyDestinationFlagsDecide) {
  WriteText(m_dir.File("src"), "new");
  WriteText(m_dir.File("long"), "old-and-longer");
  const auto src = Path("src");
  QZFileHandle out = 5;
  // No TRUNCATE: an existing destination is overwritten from the start and keeps its tail.
  EXPECT_EQ(QZFileCopy(src.c_str(), Path("long").c_str(), QZFILE_CREATE, 0x1B6, &out), 0);
  ASSERT_GE(out, 0);
  uint32_t count;
  EXPECT_EQ(QZFileWrite(out, "+", 1, &count), 0);  // lands behind the copied bytes
  EXPECT_EQ(QZFileClose(out), 0);
  EXPECT_EQ(qztest::ReadFile(m_dir.File("long")), "new+and-longer");
  // Without CREATE the destination must exist; a missing source fails first.
  EXPECT_EQ(QZFileCopy(src.c_str(), Path("none").c_str(), 0, 0x1B6, &out), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(out, kNoFile);
  EXPECT_EQ(QZFileCopy(Path("none").c_str(), Path("x").c_str(), QZFILE_CREATE, 0x1B6, &out), QZ_E_FILE_NOT_FOUND);
  EXPECT_FALSE(Exists(m_dir.File("x")));
  // EXCLUSIVE onto an existing file: refused, untouched.
  EXPECT_EQ(QZFileCopy(src.c_str(), Path("long").c_str(), QZFILE_CREATE | QZFILE_EXCLUSIVE, 0x1B6, nullptr),
            QZ_E_FAIL);
  EXPECT_EQ(qztest::ReadFile(m_dir.File("long")), "new+and-longer");
}

// ---- directories ----

struct Listed {
  uint32_t mode;
  uint64_t size;
  int64_t modifyTime;
};

std::map<std::string, Listed> List(QZDirHandle dir, QZRESULT* end) {
  std::map<std::string, Listed> entries;
  QZDirEntry entry;
  for (int guard = 0; guard < 1000; ++guard) {
    *end = QZDirRead(dir, &entry, sizeof entry);
    if (*end != 0) break;
    std::string name;
    for (const QZWCHAR* p = entry.name; *p != 0; ++p) name += static_cast<char>(*p);
    entries[name] = {entry.mode, (uint64_t{entry.sizeHigh} << 32) | entry.sizeLow, entry.modifyTime};
  }
  return entries;
}

TEST_F(Files, ListsATreeItMade) {
  qztest::ScopedEnv zone("TZ", "Europe/Berlin");
  const std::string root = m_dir.File("tree");
  ASSERT_EQ(QZDirCreate(Wide(root).c_str(), 0), 0);
  ASSERT_EQ(QZDirCreate(Wide(root + "/sub").c_str(), 0755), 0);
  WriteText(root + "/three", "abc");
  WriteText(root + "/ro", "");
  chmod((root + "/ro").c_str(), 0444);
  // Times in either season come back as the file system holds them.
  const time_t winter = 981158400;  // 2001-02-03 00:00:00 UTC
  const time_t summer = 994118400;  // 2001-07-03 00:00:00 UTC
  const struct timespec times[2][2] = {{{winter, 0}, {winter, 0}}, {{summer, 0}, {summer, 0}}};
  utimensat(AT_FDCWD, (root + "/three").c_str(), times[0], 0);
  utimensat(AT_FDCWD, (root + "/ro").c_str(), times[1], 0);

  for (const std::string& spelling : {root, root + "/", root + "//", root + "\\", root + "/\\\\"}) {
    QZDirHandle dir = nullptr;
    ASSERT_EQ(QZDirOpen(Wide(spelling).c_str(), &dir), 0) << spelling;
    QZRESULT end = 0;
    const auto entries = List(dir, &end);
    EXPECT_EQ(end, QZ_E_FAIL);
    QZDirEntry entry;
    EXPECT_EQ(QZDirRead(dir, &entry, sizeof entry), QZ_E_FAIL);  // and stays at the end
    EXPECT_EQ(QZDirClose(dir), 0);
    ASSERT_EQ(entries.size(), 5u) << spelling;
    EXPECT_EQ(entries.at(".").mode, 0x41B6u);
    EXPECT_EQ(entries.at("..").mode, 0x41B6u);
    EXPECT_EQ(entries.at("sub").mode, 0x41B6u);
    EXPECT_EQ(entries.at("three").mode, 0x1B6u);
    EXPECT_EQ(entries.at("three").size, 3u);
    EXPECT_EQ(entries.at("three").modifyTime, winter);
    EXPECT_EQ(entries.at("ro").mode, 0x124u);
    EXPECT_EQ(entries.at("ro").modifyTime, summer);
  }
}

TEST_F(Files, DirectoryEdges) {
  const std::string empty = m_dir.File("empty");
  ASSERT_EQ(QZDirCreate(Wide(empty).c_str(), 0), 0);
  WriteText(m_dir.File("file"), "x");
  QZDirHandle dir = nullptr;
  QZRESULT end = 0;
  // An empty directory: "." and "..", then the end.
  ASSERT_EQ(QZDirOpen(Wide(empty).c_str(), &dir), 0);
  const auto entries = List(dir, &end);
  EXPECT_EQ(entries.size(), 2u);
  EXPECT_EQ(end, QZ_E_FAIL);
  EXPECT_EQ(QZDirClose(dir), 0);
  // A file opens, and its first read fails.
  ASSERT_EQ(QZDirOpen(Path("file").c_str(), &dir), 0);
  QZDirEntry entry;
  EXPECT_LT(QZDirRead(dir, &entry, sizeof entry), 0);
  EXPECT_EQ(QZDirClose(dir), 0);
  // Closed right after the open.
  ASSERT_EQ(QZDirOpen(Wide(empty).c_str(), &dir), 0);
  EXPECT_EQ(QZDirClose(dir), 0);
  EXPECT_EQ(QZDirClose(nullptr), 0);
  // Missing paths fail at the open, and leave -1.
  for (const std::string& missing : {m_dir.File("none"), m_dir.File("none/deeper"), m_dir.File("file/x"),
                                     std::string("/"), std::string("")}) {
    dir = nullptr;
    EXPECT_EQ(QZDirOpen(Wide(missing).c_str(), &dir), QZ_E_FILE_NOT_FOUND) << missing;
    EXPECT_EQ(dir, reinterpret_cast<QZDirHandle>(intptr_t{-1}));
  }
}

TEST_F(Files, CreateRemoveAndDeleteResults) {
  WriteText(m_dir.File("file"), "x");
  ASSERT_EQ(QZDirCreate(Path("full").c_str(), 0), 0);
  WriteText(m_dir.File("full/inside"), "x");
  struct Case {
    const char* what;
    QZRESULT (*call)(const QZWCHAR*);
    const char* name;
    QZRESULT want;
  };
  auto create = [](const QZWCHAR* p) { return QZDirCreate(p, 0); };
  const Case cases[] = {
      {"create existing", create, "full", QZ_E_ALREADY_EXISTS},
      {"create over a file", create, "file", QZ_E_ALREADY_EXISTS},
      {"create under missing", create, "none/sub", QZ_E_FILE_NOT_FOUND},
      {"create through a file", create, "file/sub", QZ_E_FILE_NOT_FOUND},
      {"remove not empty", QZDirRemove, "full", QZ_E_FAIL},
      {"remove a file", QZDirRemove, "file", QZ_E_FAIL},
      {"remove missing", QZDirRemove, "none", QZ_E_FILE_NOT_FOUND},
      {"delete a directory", QZFileDelete, "full", QZ_E_ACCESSDENIED},
      {"delete missing", QZFileDelete, "none", QZ_E_FILE_NOT_FOUND},
      {"delete under missing", QZFileDelete, "none/x", QZ_E_FILE_NOT_FOUND},
      {"delete a file", QZFileDelete, "full/inside", 0},
      {"remove emptied", QZDirRemove, "full", 0},
  };
  for (const Case& c : cases) EXPECT_EQ(Hex(c.call(Path(c.name).c_str())), Hex(c.want)) << c.what;
  EXPECT_FALSE(Exists(m_dir.File("full")));
}

TEST(PathExpand, ResolvesAsText) {
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  const std::string here = cwd;
  struct Case {
    std::string path;
    std::string want;
  };
  const Case cases[] = {
      {"a/./b/../c", (here == "/" ? "" : here) + "/a/c"},
      {".", here},
      {"/x/../../y", "/y"},
      {"//x///y/", "/x/y/"},
      {"/", "/"},
      {"/..", "/"},
      {"/no/such/link/..", "/no/such"},
  };
  for (const Case& c : cases) {
    QZWCHAR buffer[4200];
    ASSERT_EQ(QZPathExpand(Wide(c.path).c_str(), buffer, 4200), 0) << c.path;
    EXPECT_EQ(qztest::Narrow(buffer), c.want) << c.path;
  }
  // Exactly enough room, one unit short, and a buffer of 1: success, and unfilled when short.
  const std::u16string want = Wide("/a/b");
  QZWCHAR buffer[8];
  std::fill(std::begin(buffer), std::end(buffer), u'#');
  EXPECT_EQ(QZPathExpand(u"/a/b", buffer, 4), 0);
  EXPECT_EQ(buffer[0], u'#');
  EXPECT_EQ(QZPathExpand(u"/a/b", buffer, 1), 0);
  EXPECT_EQ(buffer[0], u'#');
  EXPECT_EQ(QZPathExpand(u"/a/b", buffer, 5), 0);
  EXPECT_EQ(std::u16string(buffer), want);
  EXPECT_EQ(QZPathExpand(u"", buffer, 8), QZ_E_FAIL);
}

}  // namespace
