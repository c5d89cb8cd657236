// lockstats_file.cpp - the reader of lock-statistics files (see lockstats_file.h).
#include "lockstats_file.h"

#include <cerrno>
#include <cstdlib>

namespace qztool {
namespace {

constexpr char kBegin[] = "BeginLockStatistics: ";
constexpr char kEnd[] = "EndLockStatistics: ";
constexpr char kFrequency[] = "CPU Frequency,";
constexpr char kHeader[] =
    "Name/Handle,Held Count,Total Held Time,Max Held Time,Acquire Count,Total Acquire Time,Max Acquire Time,"
    "Contention Count";

bool StartsWith(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

// "LABEL - TIME": the time is behind the last " - " (a label may hold the separator itself).
void SplitLabel(const std::string& rest, std::string* label, std::string* time) {
  const size_t at = rest.rfind(" - ");
  if (at == std::string::npos) {
    *label = rest;
    time->clear();
  } else {
    *label = rest.substr(0, at);
    *time = rest.substr(at + 3);
  }
}

bool ParseInt64(const std::string& text, int64_t* value) {
  if (text.empty() || text.size() > 20) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    if (!(text[i] >= '0' && text[i] <= '9') && !(i == 0 && text[i] == '-' && text.size() > 1)) return false;
  }
  errno = 0;
  const long long parsed = std::strtoll(text.c_str(), nullptr, 10);
  if (errno == ERANGE) return false;
  *value = parsed;
  return true;
}

// KIND:0xADDRESS(NAME),held,totalHeld,maxHeld,acquires,totalAcquire,maxAcquire,contention
bool ParseRow(const std::string& line, LockRow* row, std::string* why) {
  int64_t figures[7];
  size_t end = line.size();
  for (int i = 6; i >= 0; --i) {
    const size_t comma = line.rfind(',', end == 0 ? 0 : end - 1);
    if (comma == std::string::npos || end == 0) {
      *why = "a row needs a name column and seven figures";
      return false;
    }
    const std::string field = line.substr(comma + 1, end - comma - 1);
    if (!ParseInt64(field, &figures[i])) {
      *why = "'" + field + "' is not a 64-bit whole number";
      return false;
    }
    end = comma;
  }
  const std::string head = line.substr(0, end);
  const size_t colon = head.find(":0x");
  const size_t open = colon == std::string::npos ? std::string::npos : head.find('(', colon);
  if (colon == std::string::npos || open == std::string::npos || head.back() != ')') {
    *why = "the first column is not KIND:0xADDRESS(NAME)";
    return false;
  }
  const std::string hex = head.substr(colon + 3, open - colon - 3);
  if (hex.empty() || hex.size() > 16 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
    *why = "'" + hex + "' is not a hexadecimal address";
    return false;
  }
  row->kind = head.substr(0, colon);
  row->address = std::strtoull(hex.c_str(), nullptr, 16);
  row->name = head.substr(open + 1, head.size() - open - 2);
  row->heldCount = figures[0];
  row->totalHeldTime = figures[1];
  row->maxHeldTime = figures[2];
  row->acquireCount = figures[3];
  row->totalAcquireTime = figures[4];
  row->maxAcquireTime = figures[5];
  row->contentionCount = figures[6];
  return true;
}

std::string Quote(const std::string& line) {
  std::string shown = line.size() > 60 ? line.substr(0, 60) + "..." : line;
  for (auto& c : shown) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  }
  return "'" + shown + "'";
}

}  // namespace

bool ReadLockStats(std::istream& in, LockStatsFile* file, std::string* error) {
  enum class Expect { kBegin, kFrequency, kHeader, kRow } expect = Expect::kBegin;
  std::string line;
  size_t number = 0;
  auto fail = [&](const std::string& what) {
    *error = "line " + std::to_string(number) + ": " + what;
    return false;
  };
  while (std::getline(in, line)) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.find('\0') != std::string::npos) return fail("a NUL byte: this is not a text file");
    if (StartsWith(line, kBegin)) {
      if (expect != Expect::kBegin) {
        LockBlock& open = file->blocks.back();
        file->warnings.push_back("the block of line " + std::to_string(open.line) +
                                 " broke off without its End line; the next begins at line " +
                                 std::to_string(number));
      }
      LockBlock block;
      SplitLabel(line.substr(sizeof kBegin - 1), &block.label, &block.begun);
      block.line = number;
      file->blocks.push_back(block);
      expect = Expect::kFrequency;
      continue;
    }
    switch (expect) {
      case Expect::kBegin:
        if (line.find_first_not_of(" \t") == std::string::npos) continue;  // the empty lines between blocks
        return fail("expected a 'BeginLockStatistics:' line, found " + Quote(line));
      case Expect::kFrequency: {
        int64_t frequency = 0;
        if (!StartsWith(line, kFrequency) || !ParseInt64(line.substr(sizeof kFrequency - 1), &frequency) ||
            frequency <= 0) {
          return fail("expected 'CPU Frequency,<ticks per second>', found " + Quote(line));
        }
        file->blocks.back().frequency = frequency;
        expect = Expect::kHeader;
        continue;
      }
      case Expect::kHeader:
        if (line != kHeader) return fail("expected the column header 'Name/Handle,Held Count,...', found " + Quote(line));
        expect = Expect::kRow;
        continue;
      case Expect::kRow: {
        LockBlock& block = file->blocks.back();
        if (StartsWith(line, kEnd)) {
          std::string label;
          SplitLabel(line.substr(sizeof kEnd - 1), &label, &block.ended);
          block.complete = true;
          expect = Expect::kBegin;
          continue;
        }
        LockRow row;
        std::string why;
        if (!ParseRow(line, &row, &why)) return fail(why + ", in " + Quote(line));
        block.rows.push_back(row);
        continue;
      }
    }
  }
  if (in.bad()) return fail("the file could not be read");
  if (file->blocks.empty()) {
    *error = "no 'BeginLockStatistics:' line: not a lock statistics file";
    return false;
  }
  if (expect != Expect::kBegin) {
    *error = "the file ends inside the block of line " + std::to_string(file->blocks.back().line) +
             " (no 'EndLockStatistics:' line): it was cut short";
    return false;
  }
  return true;
}

}  // namespace qztool
