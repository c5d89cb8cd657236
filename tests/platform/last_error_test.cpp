// last_error_test.cpp - errno values as the platform error numbers the logic reads, and the
// system-log entry's text.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <clocale>
#include <string>

#include "platform/last_error.h"
#include "platform/linux/errno_map.h"
#include "platform/linux/syslog_line.h"
#include "support/test_support.h"

namespace {

using qz::os::ErrnoContext;
using qz::os::TranslateErrno;

TEST(LastError, ErrnoTranslation) {
  EXPECT_EQ(TranslateErrno(ENOENT), 2u);
  EXPECT_EQ(TranslateErrno(EACCES), 5u);
  EXPECT_EQ(TranslateErrno(EPERM), 5u);
  EXPECT_EQ(TranslateErrno(EROFS), 5u);
  EXPECT_EQ(TranslateErrno(EBADF), 6u);
  EXPECT_EQ(TranslateErrno(ENOMEM), 14u);
  EXPECT_EQ(TranslateErrno(EEXIST), 183u);
  EXPECT_EQ(TranslateErrno(ETIMEDOUT), 258u);
  EXPECT_EQ(TranslateErrno(EINVAL), 87u);
  EXPECT_EQ(TranslateErrno(ENOTEMPTY), 145u);
  // Values whose meaning depends on the operation.
  EXPECT_EQ(TranslateErrno(EEXIST, ErrnoContext::kExclusiveCreate), 80u);
  EXPECT_EQ(TranslateErrno(EWOULDBLOCK, ErrnoContext::kByteRangeLock), 33u);
  EXPECT_EQ(TranslateErrno(EACCES, ErrnoContext::kByteRangeLock), 33u);
  EXPECT_NE(TranslateErrno(EWOULDBLOCK), 33u);
  // A symbolic-link loop is no missing file, and an overflow is no short buffer (122 asks the
  // caller to grow its buffer and try again).
  EXPECT_EQ(TranslateErrno(ELOOP), 1921u);
  EXPECT_EQ(TranslateErrno(EOVERFLOW), 534u);
  EXPECT_EQ(TranslateErrno(ERANGE), 122u);
  // Anything unlisted is a general failure.
  EXPECT_EQ(TranslateErrno(EDOM), 1u);
}

TEST(LastError, MissingDirectoryOnThePathIsThree) {
  qztest::TempDir dir;
  ASSERT_EQ(mkdir(dir.File("sub").c_str(), 0700), 0);
  EXPECT_EQ(qz::os::SetLastErrorFromPathErrno(ENOENT, dir.File("sub/missing").c_str()), 2u);
  EXPECT_EQ(qz::os::GetLastError(), 2u);
  EXPECT_EQ(qz::os::SetLastErrorFromPathErrno(ENOENT, dir.File("nodir/missing").c_str()), 3u);
  EXPECT_EQ(qz::os::GetLastError(), 3u);
  EXPECT_EQ(qz::os::SetLastErrorFromPathErrno(ENOENT, dir.File("nodir/").c_str()), 2u);
  EXPECT_EQ(qz::os::SetLastErrorFromPathErrno(ENOENT, "no-such-file-here"), 2u);
}

TEST(SystemLog, EntryStampIsEnglishInAnyLocale) {
  qztest::ScopedEnv tz("TZ", "UTC");
  tzset();
  const std::string saved = std::setlocale(LC_ALL, nullptr);
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no de_DE.UTF-8 locale";
  // 2024-03-05 07:08:09 UTC: "Mär" in German, "Mar" for the log daemon.
  const std::string line = qz::os::SyslogLine("Morvalent Services", 42, 1709622489, "T: text");
  std::setlocale(LC_ALL, saved.c_str());
  EXPECT_EQ(line, "<14>Mar  5 07:08:09 Morvalent Services[42]: T: text");
}

}  // namespace
