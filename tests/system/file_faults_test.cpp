// file_faults_test.cpp - files, directories and system information when the system fails in ways
// it will not on demand: refused opens, a full disk, short writes, failing reads, a lost directory
// stream, the library before its start.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <unistd.h>

#include "frame/global_data.h"
#include "platform/linux/syscalls.h"
#include "platform/system_calls.h"
#include "qzcore/qzfile.h"
#include "qzcore/qzsysinfo.h"
#include "support/test_support.h"

namespace {

constexpr QZFileHandle kNoFile = -1;

std::u16string Wide(const std::string& text) { return std::u16string(text.begin(), text.end()); }

class FileFaults : public ::testing::Test {
 protected:
  void TearDown() override {
    qz::os::ResetSystemCalls();
    g_platformReady = 1;
  }
  std::u16string Path(const std::string& name) const { return Wide(m_dir.File(name)); }
  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(m_dir.File(name), std::ios::binary) << text;
  }
  qztest::TempDir m_dir;
};

TEST_F(FileFaults, RefusedOpenGivesItsResult) {
  Write("src", "data");
  struct Case {
    int error;
    QZRESULT want;
  };
  const Case cases[] = {
      {EACCES, QZ_E_ACCESSDENIED}, {EROFS, QZ_E_ACCESSDENIED}, {ENOMEM, QZ_E_OUTOFMEMORY},
      {EMFILE, QZ_E_FAIL},         {ENOSPC, QZ_E_FAIL},        {ENAMETOOLONG, QZ_E_FAIL},
  };
  for (const Case& c : cases) {
    QZFileHandle file = 77;
    ASSERT_TRUE(qz::os::FailSystemCall("open", c.error));
    EXPECT_EQ(QZFileOpen(Path("new").c_str(), QZFILE_CREATE | QZFILE_WRITE, 0x1B6, &file), c.want) << c.error;
    EXPECT_EQ(file, kNoFile);
    // The copy's destination open, the second open it makes.
    QZFileHandle out = 77;
    int opens = 0;
    static int s_error;
    static int* s_opens;
    s_error = c.error;
    s_opens = &opens;
    qz::os::SetSystemCall("open", reinterpret_cast<qz::os::SystemCallPointer>(
                                      +[](const char* path, int flags, mode_t mode) -> int {
                                        if (++*s_opens == 2) {
                                          errno = s_error;
                                          return -1;
                                        }
                                        return ::open(path, flags, mode);
                                      }));
    EXPECT_EQ(QZFileCopy(Path("src").c_str(), Path("dst").c_str(), QZFILE_CREATE, 0x1B6, &out), c.want);
    EXPECT_EQ(out, kNoFile);
    qz::os::ResetSystemCalls();
  }
}

// The nameless temporary file cannot be made: the open fails on the empty name.
TEST_F(FileFaults, NamelessTemporaryThatCannotBeMade) {
  qztest::ScopedEnv tmpdir("TMPDIR", m_dir.path().c_str());
  ASSERT_TRUE(qz::os::FailSystemCall("mkostemp", EMFILE));
  QZFileHandle file;
  EXPECT_EQ(QZFileOpen(nullptr, QZFILE_TEMPORARY | QZFILE_WRITE, 0, &file), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(file, kNoFile);
}

// Writes that stop part way: the first `s_budget` bytes go to disk, then the disk is full.
size_t s_budget = 0;
ssize_t FillingDisk(int fd, const void* data, size_t size) {
  if (s_budget == 0) {
    errno = ENOSPC;
    return -1;
  }
  const size_t now = size < s_budget ? size : s_budget;
  s_budget -= now;
  return ::write(fd, data, now);
}

TEST_F(FileFaults, FullDiskOnWrite) {
  QZFileHandle file;
  ASSERT_EQ(QZFileOpen(Path("f").c_str(), QZFILE_CREATE | QZFILE_WRITE, 0x1B6, &file), QZ_S_CREATED);
  const std::string data(5000, 'w');
  qz::os::SetSystemCall("write", reinterpret_cast<qz::os::SystemCallPointer>(&FillingDisk));
  struct Case {
    size_t budget;
    QZRESULT want;
    uint32_t count;
  };
  const Case cases[] = {
      {0, QZ_E_FAIL, 0},  // not a byte: the disk's error
      {1000, 0, 1000},    // part way: no failure, the count tells
      {9000, 0, 5000},
  };
  for (const Case& c : cases) {
    s_budget = c.budget;
    uint32_t count = 99;
    EXPECT_EQ(QZFileWrite(file, data.data(), 5000, &count), c.want) << c.budget;
    EXPECT_EQ(count, c.count) << c.budget;
  }
  qz::os::ResetSystemCalls();
  EXPECT_EQ(QZFileClose(file), 0);
  EXPECT_EQ(qztest::ReadFile(m_dir.File("f")).size(), 6000u);
}

TEST_F(FileFaults, CopyStopsAtAFailedOrShortWrite) {
  Write("src", std::string(40000, 's'));
  // A short write: QZ_E_FAIL, and what was written stays.
  s_budget = 1000;
  qz::os::SetSystemCall("write", reinterpret_cast<qz::os::SystemCallPointer>(&FillingDisk));
  QZFileHandle out = 5;
  EXPECT_EQ(QZFileCopy(Path("src").c_str(), Path("short").c_str(), QZFILE_CREATE, 0x1B6, &out), QZ_E_FAIL);
  EXPECT_EQ(out, kNoFile);
  qz::os::ResetSystemCalls();
  EXPECT_EQ(qztest::ReadFile(m_dir.File("short")).size(), 1000u);
  // A failed write: its own translated error.
  ASSERT_TRUE(qz::os::FailSystemCall("write", EACCES));
  EXPECT_EQ(QZFileCopy(Path("src").c_str(), Path("denied").c_str(), QZFILE_CREATE, 0x1B6, nullptr),
            QZ_E_ACCESSDENIED);
  ASSERT_TRUE(qz::os::FailSystemCall("write", ENOSPC));
  EXPECT_EQ(QZFileCopy(Path("src").c_str(), Path("full").c_str(), QZFILE_CREATE, 0x1B6, nullptr), QZ_E_FAIL);
}

// A read that fails ends the copy as if at the end of the source, and the copy succeeds.
int s_reads = 0;
ssize_t FailingSecondRead(int fd, void* data, size_t size) {
  if (++s_reads == 2) {
    errno = EIO;
    return -1;
  }
  return ::read(fd, data, size);
}

TEST_F(FileFaults, FailedReadEndsTheCopyAsSuccess) {
  Write("src", std::string(40000, 's'));
  s_reads = 0;
  qz::os::SetSystemCall("read", reinterpret_cast<qz::os::SystemCallPointer>(&FailingSecondRead));
  EXPECT_EQ(QZFileCopy(Path("src").c_str(), Path("dst").c_str(), QZFILE_CREATE, 0x1B6, nullptr), QZ_S_CREATED);
  qz::os::ResetSystemCalls();
  EXPECT_EQ(qztest::ReadFile(m_dir.File("dst")).size(), 16384u);
}

// A first read that failed leaves the search unstarted, so the next read starts it again.
TEST_F(FileFaults, DirectoryStreamThatCannotBeHad) {
  QZDirHandle dir;
  ASSERT_EQ(QZDirOpen(Wide(m_dir.path()).c_str(), &dir), 0);
  QZDirEntry entry;
  ASSERT_TRUE(qz::os::FailSystemCall("fdopendir", ENOMEM));
  EXPECT_EQ(QZDirRead(dir, &entry, sizeof entry), QZ_E_OUTOFMEMORY);
  EXPECT_EQ(reinterpret_cast<QZDirState*>(dir)->findHandle, -1);
  EXPECT_EQ(QZDirRead(dir, &entry, sizeof entry), 0);
  ASSERT_TRUE(qz::os::FailSystemCall("readdir", EIO));
  EXPECT_EQ(QZDirRead(dir, &entry, sizeof entry), QZ_E_FAIL);
  EXPECT_EQ(QZDirClose(dir), 0);
}

// Before the library's start, sizes are not available and locks take the plain form: exclusive,
// whatever the flags ask.
TEST_F(FileFaults, BeforeTheStart) {
  QZFileHandle a, b;
  ASSERT_EQ(QZFileOpen(Path("l").c_str(), QZFILE_CREATE | QZFILE_READ | QZFILE_WRITE, 0x1B6, &a), QZ_S_CREATED);
  ASSERT_EQ(QZFileOpen(Path("l").c_str(), QZFILE_READ | QZFILE_WRITE, 0, &b), 0);
  EXPECT_EQ(QZFileLock(a, 0, 10, QZFILE_LOCK_SHARED), 0);
  EXPECT_EQ(QZFileLock(b, 0, 10, QZFILE_LOCK_SHARED), 0);  // shared beside shared, once started
  EXPECT_EQ(QZFileUnlock(a, 0, 10), 0);
  EXPECT_EQ(QZFileUnlock(b, 0, 10), 0);
  g_platformReady = 0;
  uint64_t size = 7;
  EXPECT_EQ(QZFileGetSize(a, &size), QZ_E_NOTIMPL);
  EXPECT_EQ(QZFileLock(a, 0, 10, QZFILE_LOCK_SHARED | QZFILE_LOCK_WAIT), 0);
  EXPECT_EQ(QZFileLock(b, 0, 10, QZFILE_LOCK_SHARED | QZFILE_LOCK_WAIT), QZ_E_FAIL);
  EXPECT_EQ(QZFileUnlock(a, 0, 10), 0);
  EXPECT_EQ(QZFileLock(b, 0, 10, QZFILE_LOCK_SHARED), 0);
  g_platformReady = 1;
  EXPECT_EQ(QZFileClose(a), 0);
  EXPECT_EQ(QZFileClose(b), 0);
}

// ---- system information ----

int UnknownUser(uid_t, struct passwd*, char*, size_t, struct passwd** result) {
  *result = nullptr;
  return 0;
}

int SmallAddressSpace(int, struct rlimit* limit) {
  limit->rlim_cur = limit->rlim_max = 8ull << 30;
  return 0;
}

TEST_F(FileFaults, SystemInformationWhenTheSystemCannotSay) {
  // No version: the first ten fields are filled, the last five keep what they held.
  QZSystemInfo info;
  std::memset(&info, 0xA5, sizeof info);
  ASSERT_TRUE(qz::os::FailSystemCall("uname", EFAULT));
  EXPECT_EQ(QZGetSystemInfo(&info, 0), QZ_E_FAIL);
  EXPECT_EQ(info.pageSize, static_cast<uint32_t>(sysconf(_SC_PAGESIZE)));
  for (uint16_t field : {info.platformId, info.reserved, info.versionMajor, info.versionMinor, info.versionBuild}) {
    EXPECT_EQ(field, 0xA5A5);
  }
  // A limit on the address space is the process's address space.
  qz::os::SetSystemCall("getrlimit", reinterpret_cast<qz::os::SystemCallPointer>(&SmallAddressSpace));
  ASSERT_EQ(QZGetSystemInfo(&info, 0), 0);
  EXPECT_EQ(info.totalVirtualMemory, 8ull << 30);
  EXPECT_EQ(info.reserved, 0);

  // A user the database does not know goes by number; a database that fails is a failure.
  QZWCHAR name[64];
  qz::os::SetSystemCall("getpwuid_r", reinterpret_cast<qz::os::SystemCallPointer>(&UnknownUser));
  ASSERT_EQ(QZGetUserName(name, 64), 0);
  EXPECT_EQ(qztest::Narrow(name), std::to_string(geteuid()));
  qz::os::ResetSystemCalls();
  ASSERT_TRUE(qz::os::FailSystemCall("getpwuid_r", EIO));
  EXPECT_EQ(QZGetUserName(name, 64), QZ_E_FAIL);
}

}  // namespace
