// lockstats_report_test.cpp - `qzcore lockstats report` on checked-in and hand-made statistics
// files: the page's tables and charts for a known file, and a clear message with exit 1 (never a
// crash, never a page) for files that are cut short or are not statistics at all.
#include <gtest/gtest.h>

#include <fstream>

#include "support/test_support.h"
#include "tool_run.h"

namespace {

using qztest::CountOf;
using qztest::RunTool;

const std::string kHead =
    "BeginLockStatistics: run - 11/23/2026 09:00:00\n"
    "CPU Frequency,1000000\n"
    "Name/Handle,Held Count,Total Held Time,Max Held Time,Acquire Count,Total Acquire Time,Max Acquire Time,"
    "Contention Count\n";
const std::string kRow = "QZ_MUTEX:0x00005555AAAA0010(cache.lock),100,5000,400,100,300,90,4\n";
const std::string kEnd = "EndLockStatistics: run - 11/23/2026 09:00:01\n\n\n";

void Write(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

// The row of the mutex table that begins with this name cell.
std::string RowOf(const std::string& page, const std::string& nameCell) {
  const size_t at = page.find("<td>" + nameCell + "</td>", page.find("<table class=\"mutexes\">"));
  if (at == std::string::npos) return "";
  return page.substr(at, page.find("</tr>", at) - at);
}

TEST(LockStatsReport, KnownFileGivesEveryMutexBlockAndChart) {
  const qztest::TempDir dir;
  const auto run = RunTool("lockstats report '" QZ_TOOL_DATA "/qzlockstats.csv' -o report.html", dir.path());
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_NE(run.out.find("3 blocks, 5 mutexes -> report.html"), std::string::npos) << run.out;
  const std::string page = qztest::ReadFile(dir.File("report.html"));
  ASSERT_EQ(page.rfind("<!DOCTYPE html>", 0), 0u);

  // Every block, and every mutex once (same name at the same address across blocks), the retired
  // one marked; the busiest first.
  EXPECT_EQ(CountOf(page, "<tr class=\"block\">"), 3u);
  EXPECT_EQ(CountOf(page, "<tr class=\"mutex"), 5u);
  EXPECT_EQ(CountOf(page, "<tr class=\"mutex retired\">"), 1u);
  const size_t cache = page.find("<td>cache.lock</td>");
  const size_t queue = page.find("<td>queue, head (front)</td>");
  const size_t scratch = page.find("<td>&lt;temp&gt; &amp; &quot;scratch&quot;</td>");
  const size_t odd = page.find("<td>odd.kind</td>");
  ASSERT_NE(odd, std::string::npos);
  EXPECT_TRUE(cache < queue && queue < scratch && scratch < odd) << cache << " " << queue << " " << scratch << " " << odd;
  EXPECT_EQ(page.find("<temp>"), std::string::npos) << "a name reached the page unescaped";

  // Figures come from the last block that has the mutex, times converted to readable units.
  struct Row {
    const char* name;
    std::vector<std::string> cells;
  } rows[] = {
      {"cache.lock",
       {"live", ">3<", ">3000<", "3.00 s", "12.00 ms", "1.00 ms", ">3000<", "90.00 ms", "5.00 ms", "30 \u00b5s", ">300<",
        "10.0%"}},
      {"queue, head (front)", {"live", ">2<", ">40<", "800 \u00b5s", "60 \u00b5s", "20 \u00b5s", "80 \u00b5s", "5.0%"}},
      {"&lt;temp&gt; &amp; &quot;scratch&quot;", {"retired", ">2<", "120 \u00b5s", "40 \u00b5s", "33.3%"}},
      {"odd.kind", {"unknown", ">1<", "7 \u00b5s", ">0.0%<"}},
      {"<em>(unnamed)</em>", {"live", ">1<", ">0<", "<td class=\"n\">-</td>"}},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.name);
    const std::string row = RowOf(page, r.name);
    ASSERT_NE(row, "");
    size_t from = 0;
    for (const auto& cell : r.cells) {
      const size_t at = row.find(cell, from);
      EXPECT_NE(at, std::string::npos) << cell << " in " << row;
      if (at != std::string::npos) from = at + cell.size();
    }
  }

  // Three bar charts with a bar per mutex; three charts across blocks with a line per mutex and a
  // point per block that has it (3 + 2 + 2 + 1 + 1).
  EXPECT_EQ(CountOf(page, "<svg class=\"chart bars\""), 3u);
  EXPECT_EQ(CountOf(page, "<svg class=\"chart lines\""), 3u);
  EXPECT_EQ(CountOf(page, "<rect class=\"bar\""), 15u);
  EXPECT_EQ(CountOf(page, "<polyline class=\"series\""), 15u);
  EXPECT_EQ(CountOf(page, "<circle "), 27u);
  EXPECT_EQ(CountOf(page, "</svg>"), 6u);

  // Self-contained: no script, nothing to fetch.
  for (const char* outside : {"<script", "src=", "href=", "<link", "url(", "@import"}) {
    EXPECT_EQ(page.find(outside), std::string::npos) << outside;
  }
}

TEST(LockStatsReport, OneBlockWithWindowsLineEndsHasNoChartAcrossBlocks) {
  const qztest::TempDir dir;
  std::string crlf;
  for (char c : kHead + kRow + kEnd) crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
  Write(dir.File("one.csv"), crlf);
  const auto run = RunTool("lockstats report one.csv -o -", dir.path());
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(CountOf(run.out, "<tr class=\"mutex\">"), 1u);
  EXPECT_NE(RowOf(run.out, "cache.lock").find("5.00 ms"), std::string::npos);
  EXPECT_EQ(CountOf(run.out, "<svg class=\"chart lines\""), 0u);
  EXPECT_NE(run.out.find("One block"), std::string::npos);
}

TEST(LockStatsReport, IdleMutexesGiveANoteInsteadOfBars) {
  const qztest::TempDir dir;
  Write(dir.File("idle.csv"), kHead + "QZ_MUTEX:0x10(idle),0,0,0,0,0,0,0\n" + kEnd);
  const auto run = RunTool("lockstats report idle.csv -o -", dir.path());
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(CountOf(run.out, "nothing to show: every figure is 0"), 3u);
  EXPECT_EQ(CountOf(run.out, "<rect class=\"bar\""), 0u);
  EXPECT_EQ(CountOf(run.out, "</svg>"), 3u);
  EXPECT_EQ(CountOf(run.out, "<tr class=\"mutex\">"), 1u);
}

TEST(LockStatsReport, BlockThatBrokeOffBeforeAnotherIsKeptAndMarked) {
  const qztest::TempDir dir;
  Write(dir.File("broken.csv"), kHead + kRow + kHead + kRow + kEnd);
  const auto run = RunTool("lockstats report broken.csv", dir.path());
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err,
            "qzcore lockstats: broken.csv: the block of line 1 broke off without its End line; the next begins at "
            "line 5\n");
  const std::string page = qztest::ReadFile(dir.File("report.html"));
  EXPECT_EQ(CountOf(page, "broke off (incomplete)"), 1u);
  EXPECT_EQ(CountOf(page, "<tr class=\"block\">"), 2u);
}

TEST(LockStatsReport, BadFilesGetAClearMessageAndNoPage) {
  const std::string figures = ",1,2,3,4,5,6,7\n";
  struct Case {
    const char* what;
    std::string content;
    const char* message;  // standard error after "qzcore lockstats: bad.csv: "
  } cases[] = {
      {"empty", "", "no 'BeginLockStatistics:' line: not a lock statistics file"},
      {"only empty lines", "\n\n", "no 'BeginLockStatistics:' line: not a lock statistics file"},
      {"not statistics", "hello,world\n", "line 1: expected a 'BeginLockStatistics:' line, found 'hello,world'"},
      {"binary", std::string("BeginLockStatistics: x\0\x01", 24), "line 1: a NUL byte: this is not a text file"},
      {"cut after the Begin line", "BeginLockStatistics: run - now\n",
       "the file ends inside the block of line 1 (no 'EndLockStatistics:' line): it was cut short"},
      {"no End line", kHead + kRow,
       "the file ends inside the block of line 1 (no 'EndLockStatistics:' line): it was cut short"},
      {"cut inside a row", kHead + "QZ_MUTEX:0x00005555AAAA0010(cache.lo",
       "line 4: a row needs a name column and seven figures, in 'QZ_MUTEX:0x00005555AAAA0010(cache.lo'"},
      {"garbage after a good block", kHead + kRow + kEnd + "trailing words\n",
       "line 8: expected a 'BeginLockStatistics:' line, found 'trailing words'"},
      {"no frequency", "BeginLockStatistics: run - now\nName/Handle\n",
       "line 2: expected 'CPU Frequency,<ticks per second>', found 'Name/Handle'"},
      {"zero frequency", "BeginLockStatistics: run - now\nCPU Frequency,0\n",
       "line 2: expected 'CPU Frequency,<ticks per second>', found 'CPU Frequency,0'"},
      {"other header", "BeginLockStatistics: run - now\nCPU Frequency,1000000\nName,Count\n",
       "line 3: expected the column header 'Name/Handle,Held Count,...', found 'Name,Count'"},
      {"word for a figure", kHead + "QZ_MUTEX:0x10(a),1,2,3,x4,5,6,7\n" + kEnd,
       "line 4: 'x4' is not a 64-bit whole number, in 'QZ_MUTEX:0x10(a),1,2,3,x4,5,6,7'"},
      {"figure beyond 64 bits", kHead + "QZ_MUTEX:0x10(a),1,2,3,99999999999999999999,5,6,7\n" + kEnd,
       "line 4: '99999999999999999999' is not a 64-bit whole number, in "
       "'QZ_MUTEX:0x10(a),1,2,3,99999999999999999999,5,6,7'"},
      {"six figures", kHead + "QZ_MUTEX:0x10(a),1,2,3,4,5,6\n" + kEnd,
       "line 4: a row needs a name column and seven figures, in 'QZ_MUTEX:0x10(a),1,2,3,4,5,6'"},
      {"no address", kHead + "QZ_MUTEX(a)" + figures + kEnd,
       "line 4: the first column is not KIND:0xADDRESS(NAME), in 'QZ_MUTEX(a),1,2,3,4,5,6,7'"},
      {"address not hexadecimal", kHead + "QZ_MUTEX:0xZZ(a)" + figures + kEnd,
       "line 4: 'ZZ' is not a hexadecimal address, in 'QZ_MUTEX:0xZZ(a),1,2,3,4,5,6,7'"},
      {"name not closed", kHead + "QZ_MUTEX:0x10(a" + figures + kEnd,
       "line 4: the first column is not KIND:0xADDRESS(NAME), in 'QZ_MUTEX:0x10(a,1,2,3,4,5,6,7'"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const qztest::TempDir dir;
    Write(dir.File("bad.csv"), c.content);
    const auto run = RunTool("lockstats report bad.csv -o page.html", dir.path());
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, std::string("qzcore lockstats: bad.csv: ") + c.message + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(qztest::ReadFile(dir.File("page.html")), "");
  }
}

TEST(LockStatsReport, MissingInputAndUnwritableOutputAreFailures) {
  const qztest::TempDir dir;
  const auto missing = RunTool("lockstats report absent.csv", dir.path());
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_EQ(missing.err, "qzcore lockstats: cannot open 'absent.csv'\n");

  Write(dir.File("good.csv"), kHead + kRow + kEnd);
  const auto unwritable = RunTool("lockstats report good.csv -o no/such/dir/page.html", dir.path());
  EXPECT_EQ(unwritable.exitCode, 1);
  EXPECT_EQ(unwritable.err, "qzcore lockstats: cannot write 'no/such/dir/page.html'\n");
}

}  // namespace
