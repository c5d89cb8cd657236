// lockstats_file.h - reads the lock-statistics file that QZDumpLockStats appends to
// ("qzlockstats.csv"): every block, each a Begin line, the tick frequency, the column header, one
// row per mutex and an End line.
#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

namespace qztool {

struct LockRow {
  std::string kind;  // "QZ_MUTEX" (live), "QZ_DEL_MUTEX" (retired) or "UNKNOWN"
  uint64_t address = 0;
  std::string name;  // as written: it may hold commas and parentheses
  int64_t heldCount = 0;
  int64_t totalHeldTime = 0;
  int64_t maxHeldTime = 0;
  int64_t acquireCount = 0;
  int64_t totalAcquireTime = 0;
  int64_t maxAcquireTime = 0;
  int64_t contentionCount = 0;
};

struct LockBlock {
  std::string label;
  std::string begun;  // the time on the Begin line
  std::string ended;  // the time on the End line; empty when the block broke off
  int64_t frequency = 1000000;  // time units per second
  size_t line = 0;              // line number of the Begin line
  bool complete = false;        // an End line closed it
  std::vector<LockRow> rows;
};

struct LockStatsFile {
  std::vector<LockBlock> blocks;
  std::vector<std::string> warnings;  // blocks that broke off before a later one began
};

// Reads every block of `in`. A block without its End line is kept (and warned about) when another
// block follows it, as a dump that broke off leaves it; at the end of the file it means the file
// was cut, which is an error. Returns false with `*error` set ("line N: ...") for anything that is
// not such a file.
bool ReadLockStats(std::istream& in, LockStatsFile* file, std::string* error);

}  // namespace qztool
