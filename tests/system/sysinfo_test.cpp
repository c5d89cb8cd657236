// sysinfo_test.cpp - QZGetSystemInfo against the system's own answers, and QZGetUserName against the
// password database.
#include <pwd.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "qzcore/qzsysinfo.h"
#include "support/test_support.h"

namespace {

// The first value of "key : value" in /proc/cpuinfo, or -1.
long CpuInfo(const std::string& key) {
  std::ifstream in("/proc/cpuinfo");
  std::string line;
  while (std::getline(in, line)) {
    const size_t colon = line.find(':');
    if (colon == std::string::npos) continue;
    std::string name = line.substr(0, colon);
    while (!name.empty() && (name.back() == ' ' || name.back() == '\t')) name.pop_back();
    if (name == key) return std::stol(line.substr(colon + 1));
  }
  return -1;
}

TEST(SystemInfo, FiguresOfThisMachine) {
  QZSystemInfo info;
  std::memset(&info, 0xA5, sizeof info);
  ASSERT_EQ(QZGetSystemInfo(&info, 0), 0);
  EXPECT_EQ(info.reserved, 0);
  EXPECT_EQ(info.platformId, QZ_PLATFORM_ID_LINUX);

  EXPECT_EQ(info.pageSize, static_cast<uint32_t>(sysconf(_SC_PAGESIZE)));
  EXPECT_EQ(info.allocationGranularity, info.pageSize);
  EXPECT_EQ(info.processorCount, static_cast<uint16_t>(sysconf(_SC_NPROCESSORS_ONLN)));

  struct sysinfo si;
  ASSERT_EQ(sysinfo(&si), 0);
  EXPECT_EQ(info.totalPhysicalMemory, uint64_t{si.totalram} * si.mem_unit);
  EXPECT_GT(info.availablePhysicalMemory, 0u);
  EXPECT_LE(info.availablePhysicalMemory, info.totalPhysicalMemory);
  EXPECT_GT(info.availableVirtualMemory, 0u);
  EXPECT_LT(info.availableVirtualMemory, info.totalVirtualMemory);

  struct utsname un;
  ASSERT_EQ(uname(&un), 0);
  unsigned major = 0, minor = 0;
  ASSERT_EQ(std::sscanf(un.release, "%u.%u", &major, &minor), 2);
  EXPECT_EQ(info.versionMajor, major);
  EXPECT_EQ(info.versionMinor, minor);

#if defined(__x86_64__)
  // The kernel's own reading of the processor.
  EXPECT_EQ(info.processorType, QZ_PROCESSOR_X8664);
  EXPECT_EQ(info.processorLevel, CpuInfo("cpu family"));
  EXPECT_EQ(info.processorRevision >> 8, CpuInfo("model"));
  EXPECT_EQ(info.processorRevision & 0xFF, CpuInfo("stepping"));
  EXPECT_EQ(info.totalVirtualMemory, 0x00007FFFFFFFF000ull);
#endif
}

TEST(SystemInfo, UserNameFitsOrFails) {
  const struct passwd* user = getpwuid(geteuid());
  const std::string want = user != nullptr ? user->pw_name : std::to_string(geteuid());
  QZWCHAR buffer[256];
  ASSERT_EQ(QZGetUserName(buffer, 256), 0);
  EXPECT_EQ(qztest::Narrow(buffer), want);
  const auto exact = static_cast<uint32_t>(want.size() + 1);
  EXPECT_EQ(QZGetUserName(buffer, exact), 0);
  EXPECT_EQ(qztest::Narrow(buffer), want);
  EXPECT_EQ(QZGetUserName(buffer, exact - 1), QZ_E_FAIL);
  EXPECT_EQ(QZGetUserName(buffer, 1), QZ_E_FAIL);
  EXPECT_EQ(QZGetUserName(buffer, 0), QZ_E_FAIL);
}

}  // namespace
