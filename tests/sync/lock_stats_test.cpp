// lock_stats_test.cpp - the statistics dump: the file's blocks line by line, register order, the
// default and given paths, resets, a path that cannot be opened, and dumps of busy mutexes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <future>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "qzcore.h"
#include "support/test_support.h"

namespace {

using qztest::ReadFile;
using qztest::TempDir;

const std::string kHeader =
    "Name/Handle,Held Count,Total Held Time,Max Held Time,Acquire Count,Total Acquire Time,Max Acquire Time,"
    "Contention Count";
const std::string kStamp = R"(\d\d/\d\d/\d\d\d\d \d\d:\d\d:\d\d)";

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string Address(QZMutexHandle m) {
  char text[24];
  std::snprintf(text, sizeof text, "%016" PRIXPTR, reinterpret_cast<uintptr_t>(m));
  return text;
}

// A row split into its first column and the seven figures.
struct Row {
  std::string label, address, name;
  int64_t figures[7] = {};  // held count, total held, max held, acquire count, total acquire, max acquire, contention
};

bool ParseRow(const std::string& line, Row* row) {
  static const std::regex shape(R"(^(QZ_MUTEX|QZ_DEL_MUTEX):0x([0-9A-F]{16})\((.*)\)((,-?\d+){7})$)");
  std::smatch m;
  if (!std::regex_match(line, m, shape)) return false;
  row->label = m[1];
  row->address = m[2];
  row->name = m[3];
  std::istringstream figures(m[4].str().substr(1));
  for (auto& figure : row->figures) {
    figures >> figure;
    figures.ignore(1);
  }
  return true;
}

// Checks the frame of one block (head, header, tail, two empty lines) and returns its rows.
std::vector<std::string> BlockRows(const std::vector<std::string>& lines, size_t first, const std::string& label,
                                   size_t* next = nullptr) {
  EXPECT_TRUE(std::regex_match(lines.at(first), std::regex("BeginLockStatistics: " + label + " - " + kStamp)))
      << lines.at(first);
  EXPECT_EQ(lines.at(first + 1), "CPU Frequency,1000000");
  EXPECT_EQ(lines.at(first + 2), kHeader);
  size_t end = first + 3;
  while (end < lines.size() && lines[end].rfind("EndLockStatistics: ", 0) != 0) ++end;
  EXPECT_LT(end + 2, lines.size());
  EXPECT_TRUE(std::regex_match(lines.at(end), std::regex("EndLockStatistics: " + label + " - " + kStamp)))
      << lines.at(end);
  EXPECT_EQ(lines.at(end + 1), "");
  EXPECT_EQ(lines.at(end + 2), "");
  if (next != nullptr) *next = end + 3;
  return {lines.begin() + static_cast<long>(first) + 3, lines.begin() + static_cast<long>(end)};
}

class LockStats : public ::testing::Test {
 protected:
  void SetUp() override {
    QZResetLockStats();
    ASSERT_EQ(getcwd(m_oldDir, sizeof m_oldDir), m_oldDir);
    ASSERT_EQ(chdir(m_dir.path().c_str()), 0);
  }
  void TearDown() override {
    EXPECT_EQ(chdir(m_oldDir), 0);
    QZResetLockStats();
  }
  static QZMutexHandle Make(const char* name, uint32_t flags = QZ_MUTEX_STATS) {
    QZMutexHandle m = nullptr;
    EXPECT_EQ(QZMutexCreate(name, flags, &m), 0);
    return m;
  }
  TempDir m_dir;
  char m_oldDir[4096];
};

TEST_F(LockStats, EmptyRegisterAndDefaultsGiveFourLinesAndTwoEmptyOnes) {
  ASSERT_EQ(QZDumpLockStats(nullptr, nullptr), 0);
  const std::string text = ReadFile(m_dir.File("qzlockstats.csv"));
  EXPECT_EQ(text.find('\r'), std::string::npos);  // "\n" line ends
  const auto lines = Lines(text);
  ASSERT_EQ(lines.size(), 6u) << text;
  EXPECT_TRUE(BlockRows(lines, 0, "LockStatsDump").empty());

  // An empty label leaves nothing between the colon and the dash.
  ASSERT_EQ(QZDumpLockStats("", nullptr), 0);
  const auto again = Lines(ReadFile(m_dir.File("qzlockstats.csv")));
  ASSERT_EQ(again.size(), 12u);
  EXPECT_EQ(again[6].rfind("BeginLockStatistics:  - ", 0), 0u) << again[6];
}

TEST_F(LockStats, RowsFollowTheRegisterAndBlocksAppend) {
  // Six mutexes; every other one destroyed, so retired and live addresses interleave.
  std::vector<QZMutexHandle> mutexes;
  for (const char* name : {"m0", "m1,with comma", "m2", "m3", "m4", "m5"}) mutexes.push_back(Make(name));
  const QZMutexHandle plain = Make("plain", QZ_MUTEX_CHECKED), excluded = Make("excluded", QZ_MUTEX_STATS | QZ_MUTEX_NOSTATS);
  for (size_t i = 0; i < mutexes.size(); ++i) {
    for (size_t n = 0; n <= i; ++n) QZMutexAcquire(mutexes[i]);  // i + 1 recursive acquires
    for (size_t n = 0; n <= i; ++n) QZMutexRelease(mutexes[i]);
  }
  for (size_t i = 1; i < mutexes.size(); i += 2) ASSERT_EQ(QZMutexDestroy(mutexes[i]), 0);

  const std::u16string path = u"" + std::u16string(m_dir.path().begin(), m_dir.path().end()) + u"/stats-\u00fc.csv";
  ASSERT_EQ(QZDumpLockStats("first", path.c_str()), 0);
  const std::string firstBlock = ReadFile(m_dir.File("stats-\xC3\xBC.csv"));
  const auto rows = BlockRows(Lines(firstBlock), 0, "first");
  ASSERT_EQ(rows.size(), 6u) << firstBlock;
  std::string previousLabel, previousAddress;
  for (const auto& line : rows) {
    Row row;
    ASSERT_TRUE(ParseRow(line, &row)) << line;
    // Live rows first, each group by ascending address.
    if (row.label == previousLabel) {
      EXPECT_GT(row.address, previousAddress) << line;
    }
    if (row.label == "QZ_MUTEX") {
      EXPECT_NE(previousLabel, "QZ_DEL_MUTEX") << line;
    }
    previousLabel = row.label;
    previousAddress = row.address;
    const size_t i = static_cast<size_t>(row.name[1] - '0');
    EXPECT_EQ(row.label, i % 2 == 0 ? "QZ_MUTEX" : "QZ_DEL_MUTEX") << line;
    EXPECT_EQ(row.address, Address(mutexes[i])) << line;
    const int64_t count = static_cast<int64_t>(i) + 1;
    EXPECT_EQ(row.figures[0], count) << line;  // held count
    EXPECT_EQ(row.figures[3], count) << line;  // acquire count
    EXPECT_EQ(row.figures[6], 0) << line;      // nobody waited
    EXPECT_LE(row.figures[2], row.figures[1]) << line;
    EXPECT_LE(row.figures[5], row.figures[4]) << line;
  }

  // A reset ends the retired rows and zeroes the live ones; the next block goes below the first.
  QZResetLockStats();
  ASSERT_EQ(QZDumpLockStats("second", path.c_str()), 0);
  const std::string both = ReadFile(m_dir.File("stats-\xC3\xBC.csv"));
  ASSERT_EQ(both.compare(0, firstBlock.size(), firstBlock), 0);
  const auto lines = Lines(both);
  size_t second = 0;
  BlockRows(lines, 0, "first", &second);
  const auto after = BlockRows(lines, second, "second");
  ASSERT_EQ(after.size(), 3u);
  for (size_t i = 0; i < after.size(); ++i) {
    EXPECT_EQ(after[i], "QZ_MUTEX:0x" + Address(mutexes[2 * i]) + "(m" + std::to_string(2 * i) + "),0,0,0,0,0,0,0");
  }
  for (size_t i = 0; i < mutexes.size(); i += 2) QZMutexDestroy(mutexes[i]);
  QZMutexDestroy(plain);
  QZMutexDestroy(excluded);
}

TEST_F(LockStats, PathThatCannotBeOpenedFailsAndFreesTheRegister) {
  const std::string missing = m_dir.File("no-such-dir/qzlockstats.csv");
  const std::u16string path(missing.begin(), missing.end());
  EXPECT_EQ(QZDumpLockStats("x", path.c_str()), QZ_E_FAIL);
  EXPECT_EQ(access(missing.c_str(), F_OK), -1);
  EXPECT_EQ(QZDumpLockStats("x", u""), QZ_E_FAIL);  // no name at all
  // Another thread can still take the register's lock: creating a statistics mutex takes it.
  auto other = std::async(std::launch::async, [] {
    QZMutexHandle m = Make("after");
    return QZMutexDestroy(m);
  });
  ASSERT_EQ(other.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_EQ(other.get(), 0);
}

// Dumps and resets while other threads use the mutexes: the figures are read without their locks.
// The hold measured around a sleep checks the statistics clock against the steady clock.
TEST_F(LockStats, BusyMutexesAreDumpedWithoutTheirLocks) {
  const QZMutexHandle busy = Make("busy");
  std::atomic<bool> stop{false};
  std::vector<std::thread> users;
  for (int t = 0; t < 3; ++t) {
    users.emplace_back([&] {
      while (!stop.load()) {
        QZMutexAcquire(busy);
        QZMutexRelease(busy);
      }
    });
  }
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(QZDumpLockStats("busy", nullptr), 0);
    if (i % 5 == 0) QZResetLockStats();
  }
  stop = true;
  for (auto& t : users) t.join();
  QZMutexStats s;
  ASSERT_EQ(QZGetLockStats(busy, &s), 0);
  EXPECT_LE(s.maxHeldTime, s.totalHeldTime);
  const auto lines = Lines(ReadFile(m_dir.File("qzlockstats.csv")));
  size_t at = 0;
  for (int i = 0; i < 20; ++i) ASSERT_EQ(BlockRows(lines, at, "busy", &at).size(), 1u);

  QZResetLockStats();
  const auto start = std::chrono::steady_clock::now();
  QZMutexAcquire(busy);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  QZMutexRelease(busy);
  const auto outer = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
  ASSERT_EQ(QZGetLockStats(busy, &s), 0);
  EXPECT_GE(s.maxHeldTime, 50000 * 97 / 100);  // the clock's rate within a few percent
  EXPECT_LE(s.maxHeldTime, outer.count() * 103 / 100 + 1000);
  QZMutexDestroy(busy);
}

}  // namespace
