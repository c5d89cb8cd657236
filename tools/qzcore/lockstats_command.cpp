// lockstats_command.cpp - `qzcore lockstats report FILE.csv [-o report.html]`: reads every block of
// a lock-statistics file and writes one self-contained HTML page (no script, nothing fetched): the
// blocks, a table of every mutex, and inline SVG charts of held and acquire times, of contention,
// and of how the busiest mutexes change from block to block.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "command.h"
#include "lockstats_file.h"

namespace qztool {
namespace {

constexpr const char* kColors[] = {"#1f77b4", "#d62728", "#2ca02c", "#ff7f0e", "#9467bd", "#8c564b"};
constexpr size_t kTopBars = 15;    // mutexes in a bar chart
constexpr size_t kTopSeries = 6;   // mutexes in a chart across blocks

std::string Escape(const std::string& text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&#39;"; break;
      default: out += c;
    }
  }
  return out;
}

std::string Fixed(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

// A time in microseconds, in the unit that reads best.
std::string Duration(double us) {
  if (us < 1000.0) return Fixed(us, us < 10.0 && us != static_cast<long long>(us) ? 2 : 0) + " \u00b5s";
  if (us < 1e6) return Fixed(us / 1e3, 2) + " ms";
  return Fixed(us / 1e6, 2) + " s";
}

std::string Count(double value) { return Fixed(value, 0); }

// "1 hold", "3 holds".
std::string Counted(int64_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string HexAddress(uint64_t address) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%016llX", static_cast<unsigned long long>(address));
  return text;
}

// Cut for a chart label; a cut never splits a UTF-8 sequence.
std::string Short(const std::string& text, size_t most) {
  if (text.size() <= most) return text;
  size_t cut = most - 1;
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  return text.substr(0, cut) + "\u2026";
}

// One mutex as the report sees it: the same name at the same address, across blocks.
struct Mutex {
  std::string name;
  uint64_t address = 0;
  std::string kind;                     // in the last block that has it
  std::vector<const LockRow*> perBlock;  // null where a block has no row for it
  const LockRow* last = nullptr;
  double toMicro = 1.0;  // of the block of `last`
  double Held() const { return last->totalHeldTime * toMicro; }
  double Acquire() const { return last->totalAcquireTime * toMicro; }
};

std::vector<Mutex> Collect(const LockStatsFile& file) {
  std::map<std::pair<std::string, uint64_t>, size_t> index;
  std::vector<Mutex> all;
  for (size_t b = 0; b < file.blocks.size(); ++b) {
    const LockBlock& block = file.blocks[b];
    for (const LockRow& row : block.rows) {
      auto [it, added] = index.try_emplace({row.name, row.address}, all.size());
      if (added) {
        Mutex m;
        m.name = row.name;
        m.address = row.address;
        m.perBlock.assign(file.blocks.size(), nullptr);
        all.push_back(m);
      }
      Mutex& m = all[it->second];
      m.perBlock[b] = &row;
      m.last = &row;
      m.kind = row.kind;
      m.toMicro = 1e6 / static_cast<double>(block.frequency);
    }
  }
  return all;
}

std::string Label(const Mutex& m) { return m.name.empty() ? "(unnamed)" : m.name; }

struct Bar {
  std::string label;
  double value;
  std::string text;
};

// Horizontal bars, longest first.
std::string BarChart(const std::string& title, std::vector<Bar> bars) {
  std::stable_sort(bars.begin(), bars.end(), [](const Bar& a, const Bar& b) { return a.value > b.value; });
  if (bars.size() > kTopBars) bars.resize(kTopBars);
  const int labelWidth = 250, barWidth = 360, row = 22, top = 34;
  double most = 0;
  for (const auto& b : bars) most = std::max(most, b.value);
  const int height = top + static_cast<int>(most > 0 ? bars.size() : 1) * row + 10;
  std::ostringstream svg;
  svg << "<svg class=\"chart bars\" xmlns=\"http://www.w3.org/2000/svg\" width=\"900\" height=\"" << height
      << "\" viewBox=\"0 0 900 " << height << "\" role=\"img\" aria-label=\"" << Escape(title) << "\">\n"
      << "<text x=\"0\" y=\"18\" class=\"title\">" << Escape(title) << "</text>\n";
  if (bars.empty() || most <= 0) {
    svg << "<text x=\"0\" y=\"" << top + 14 << "\" class=\"note\">nothing to show: every figure is 0</text>\n</svg>\n";
    return svg.str();
  }
  for (size_t i = 0; i < bars.size(); ++i) {
    const int y = top + static_cast<int>(i) * row;
    const double width = most > 0 ? bars[i].value / most * barWidth : 0;
    svg << "<text x=\"" << labelWidth - 6 << "\" y=\"" << y + 14 << "\" text-anchor=\"end\">"
        << Escape(Short(bars[i].label, 36)) << "</text>"
        << "<rect class=\"bar\" x=\"" << labelWidth << "\" y=\"" << y + 3 << "\" width=\"" << Fixed(std::max(width, 1.0), 1)
        << "\" height=\"" << row - 6 << "\" fill=\"" << kColors[0] << "\"><title>" << Escape(bars[i].label) << ": "
        << Escape(bars[i].text) << "</title></rect>"
        << "<text x=\"" << Fixed(labelWidth + std::max(width, 1.0), 1) << "\" y=\"" << y + 14 << "\" dx=\"6\">"
        << Escape(bars[i].text) << "</text>\n";
  }
  svg << "</svg>\n";
  return svg.str();
}

struct Series {
  std::string label;
  std::vector<double> values;  // one per block; negative: no row in that block
};

// One line per mutex across the blocks.
std::string LineChart(const std::string& title, size_t blocks, const std::vector<Series>& series,
                      std::string (*format)(double)) {
  const int left = 80, right = 40, top = 34, plotHeight = 200, width = 760;
  const int plotWidth = width - left - right;
  const int legendTop = top + plotHeight + 34;
  const int height = legendTop + static_cast<int>(series.size()) * 18 + 6;
  double most = 0;
  for (const auto& s : series) {
    for (double v : s.values) most = std::max(most, v);
  }
  if (most <= 0) most = 1;
  auto x = [&](size_t b) { return left + (blocks > 1 ? static_cast<double>(b) * plotWidth / (blocks - 1) : plotWidth / 2.0); };
  auto y = [&](double v) { return top + plotHeight - v / most * plotHeight; };
  std::ostringstream svg;
  svg << "<svg class=\"chart lines\" xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
      << "\" viewBox=\"0 0 " << width << " " << height << "\" role=\"img\" aria-label=\"" << Escape(title) << "\">\n"
      << "<text x=\"0\" y=\"18\" class=\"title\">" << Escape(title) << "</text>\n";
  for (int t = 0; t <= 4; ++t) {
    const double v = most * t / 4;
    svg << "<line class=\"grid\" x1=\"" << left << "\" x2=\"" << left + plotWidth << "\" y1=\"" << Fixed(y(v), 1)
        << "\" y2=\"" << Fixed(y(v), 1) << "\"/><text x=\"" << left - 6 << "\" y=\"" << Fixed(y(v) + 4, 1)
        << "\" text-anchor=\"end\">" << Escape(format(v)) << "</text>\n";
  }
  for (size_t b = 0; b < blocks; ++b) {
    svg << "<text x=\"" << Fixed(x(b), 1) << "\" y=\"" << top + plotHeight + 18 << "\" text-anchor=\"middle\">block "
        << b + 1 << "</text>\n";
  }
  for (size_t i = 0; i < series.size(); ++i) {
    const char* color = kColors[i % (sizeof kColors / sizeof *kColors)];
    std::string points;
    for (size_t b = 0; b < blocks; ++b) {
      if (series[i].values[b] < 0) continue;
      if (!points.empty()) points += ' ';
      points += Fixed(x(b), 1);
      points += ',';
      points += Fixed(y(series[i].values[b]), 1);
    }
    svg << "<polyline class=\"series\" fill=\"none\" stroke=\"" << color << "\" stroke-width=\"2\" points=\"" << points
        << "\"/>\n";
    for (size_t b = 0; b < blocks; ++b) {
      if (series[i].values[b] < 0) continue;
      svg << "<circle cx=\"" << Fixed(x(b), 1) << "\" cy=\"" << Fixed(y(series[i].values[b]), 1) << "\" r=\"3.5\" fill=\""
          << color << "\"><title>" << Escape(series[i].label) << ", block " << b + 1 << ": "
          << Escape(format(series[i].values[b])) << "</title></circle>\n";
    }
    const int ly = legendTop + static_cast<int>(i) * 18;
    svg << "<rect x=\"" << left << "\" y=\"" << ly - 10 << "\" width=\"12\" height=\"12\" fill=\"" << color
        << "\"/><text x=\"" << left + 18 << "\" y=\"" << ly << "\">" << Escape(Short(series[i].label, 80)) << "</text>\n";
  }
  svg << "</svg>\n";
  return svg.str();
}

std::string FormatDuration(double us) { return Duration(us); }
std::string FormatCount(double value) { return Count(value); }

std::vector<Series> Busiest(const std::vector<Mutex>& mutexes, size_t blocks, double (*key)(const Mutex&),
                            double (*value)(const LockRow&, double toMicro), const LockStatsFile& file) {
  std::vector<const Mutex*> order;
  for (const auto& m : mutexes) order.push_back(&m);
  std::stable_sort(order.begin(), order.end(), [&](const Mutex* a, const Mutex* b) { return key(*a) > key(*b); });
  if (order.size() > kTopSeries) order.resize(kTopSeries);
  std::vector<Series> out;
  for (const Mutex* m : order) {
    Series s{Label(*m) + " (" + HexAddress(m->address) + ")", {}};
    for (size_t b = 0; b < blocks; ++b) {
      const LockRow* row = m->perBlock[b];
      s.values.push_back(row != nullptr ? value(*row, 1e6 / static_cast<double>(file.blocks[b].frequency)) : -1.0);
    }
    out.push_back(s);
  }
  return out;
}

const char kStyle[] = R"(
body { font-family: sans-serif; margin: 2em; color: #222; }
h1 { font-size: 1.5em; } h2 { font-size: 1.2em; margin-top: 2em; }
table { border-collapse: collapse; font-size: 0.9em; }
th, td { border: 1px solid #ccc; padding: 3px 8px; }
th { background: #eee; } td.n { text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; }
tr.retired td { color: #777; }
.note { color: #a33; font-size: 0.9em; }
svg.chart { display: block; margin: 1em 0; font-size: 12px; }
svg .title { font-size: 14px; font-weight: bold; }
svg .grid { stroke: #ddd; }
svg text { fill: #222; }
)";

std::string Report(const std::string& source, const LockStatsFile& file) {
  const std::vector<Mutex> mutexes = Collect(file);
  std::ostringstream html;
  html << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>Lock statistics: "
       << Escape(source) << "</title>\n<style>" << kStyle << "</style>\n</head>\n<body>\n"
       << "<h1>Lock statistics: " << Escape(source) << "</h1>\n<p>" << file.blocks.size() << " block"
       << (file.blocks.size() == 1 ? "" : "s") << ", " << mutexes.size() << " mutex" << (mutexes.size() == 1 ? "" : "es")
       << ". Figures are counted from the mutex's creation or the last reset to each dump; times are converted "
          "from each block's tick frequency.</p>\n";

  html << "<h2>Blocks</h2>\n<table class=\"blocks\">\n<tr><th>#</th><th>label</th><th>begun</th><th>ended</th>"
          "<th>live</th><th>retired</th><th>ticks per second</th></tr>\n";
  for (size_t b = 0; b < file.blocks.size(); ++b) {
    const LockBlock& block = file.blocks[b];
    size_t live = 0, retired = 0;
    for (const auto& row : block.rows) (row.kind == "QZ_DEL_MUTEX" ? retired : live)++;
    html << "<tr class=\"block\"><td class=\"n\">" << b + 1 << "</td><td>" << Escape(block.label) << "</td><td>"
         << Escape(block.begun) << "</td><td>"
         << (block.complete ? Escape(block.ended) : "<span class=\"note\">broke off (incomplete)</span>") << "</td><td class=\"n\">"
         << live << "</td><td class=\"n\">" << retired << "</td><td class=\"n\">" << block.frequency << "</td></tr>\n";
  }
  html << "</table>\n";

  html << "<h2>Charts</h2>\n";
  std::vector<Bar> held, acquire, contention;
  for (const auto& m : mutexes) {
    held.push_back({Label(m), m.Held(), Duration(m.Held()) + " in " + Counted(m.last->heldCount, "hold")});
    acquire.push_back({Label(m), m.Acquire(), Duration(m.Acquire()) + " in " + Counted(m.last->acquireCount, "acquire")});
    const double share = m.last->acquireCount > 0 ? 100.0 * m.last->contentionCount / m.last->acquireCount : 0;
    contention.push_back({Label(m), static_cast<double>(m.last->contentionCount),
                          Counted(m.last->contentionCount, "wait") + " (" + Fixed(share, 1) + "% of acquires)"});
  }
  html << BarChart("Total held time per mutex (its last block)", held)
       << BarChart("Total acquire (waiting) time per mutex (its last block)", acquire)
       << BarChart("Contention: acquires that had to wait (its last block)", contention);
  const size_t blocks = file.blocks.size();
  if (blocks > 1) {
    html << LineChart("Total held time from block to block (busiest mutexes)", blocks,
                      Busiest(mutexes, blocks, [](const Mutex& m) { return m.Held(); },
                              [](const LockRow& r, double k) { return r.totalHeldTime * k; }, file),
                      FormatDuration)
         << LineChart("Total acquire time from block to block (busiest mutexes)", blocks,
                      Busiest(mutexes, blocks, [](const Mutex& m) { return m.Acquire(); },
                              [](const LockRow& r, double k) { return r.totalAcquireTime * k; }, file),
                      FormatDuration)
         << LineChart("Contention count from block to block (most contended mutexes)", blocks,
                      Busiest(mutexes, blocks, [](const Mutex& m) { return double(m.last->contentionCount); },
                              [](const LockRow& r, double) { return double(r.contentionCount); }, file),
                      FormatCount);
  } else {
    html << "<p>One block: the changes from block to block need two or more.</p>\n";
  }

  html << "<h2>Every mutex</h2>\n<p>Figures of the last block that has the mutex; rows by total held time.</p>\n"
          "<table class=\"mutexes\">\n<tr><th>name</th><th>address</th><th>state</th><th>blocks</th><th>holds</th>"
          "<th>total held</th><th>max held</th><th>mean held</th><th>acquires</th><th>total acquire</th>"
          "<th>max acquire</th><th>mean acquire</th><th>contention</th><th>contended</th></tr>\n";
  std::vector<const Mutex*> order;
  for (const auto& m : mutexes) order.push_back(&m);
  std::stable_sort(order.begin(), order.end(), [](const Mutex* a, const Mutex* b) { return a->Held() > b->Held(); });
  for (const Mutex* m : order) {
    const LockRow& r = *m->last;
    const size_t seen = blocks - static_cast<size_t>(std::count(m->perBlock.begin(), m->perBlock.end(), nullptr));
    const char* state = r.kind == "QZ_MUTEX" ? "live" : r.kind == "QZ_DEL_MUTEX" ? "retired" : "unknown";
    html << "<tr class=\"mutex" << (r.kind == "QZ_DEL_MUTEX" ? " retired" : "") << "\"><td>"
         << (m->name.empty() ? std::string("<em>(unnamed)</em>") : Escape(m->name))
         << "</td><td><code>" << HexAddress(m->address) << "</code></td><td>" << state << "</td><td class=\"n\">" << seen
         << "</td><td class=\"n\">" << r.heldCount << "</td><td class=\"n\">" << Duration(r.totalHeldTime * m->toMicro)
         << "</td><td class=\"n\">" << Duration(r.maxHeldTime * m->toMicro) << "</td><td class=\"n\">"
         << (r.heldCount > 0 ? Duration(r.totalHeldTime * m->toMicro / r.heldCount) : "-") << "</td><td class=\"n\">"
         << r.acquireCount << "</td><td class=\"n\">" << Duration(r.totalAcquireTime * m->toMicro) << "</td><td class=\"n\">"
         << Duration(r.maxAcquireTime * m->toMicro) << "</td><td class=\"n\">"
         << (r.acquireCount > 0 ? Duration(r.totalAcquireTime * m->toMicro / r.acquireCount) : "-")
         << "</td><td class=\"n\">" << r.contentionCount << "</td><td class=\"n\">"
         << (r.acquireCount > 0 ? Fixed(100.0 * r.contentionCount / r.acquireCount, 1) + "%" : "-") << "</td></tr>\n";
  }
  html << "</table>\n</body>\n</html>\n";
  return html.str();
}

constexpr char kOptionsHelp[] = "  -o, --output FILE  write the page to FILE (default: report.html; - for standard output)\n";

int LockStats(const Command& self, int argc, char** argv) {
  static const QZLongOption options[] = {{"output", 1, 'o'}, {nullptr, 0, 0}};
  Arguments args = ReadArguments(self, argc, argv, options, kOptionsHelp, 2, 2);
  if (args.exit >= 0) return args.exit;
  if (args.operands[0] != "report") return UsageError(&self, "unknown action '" + args.operands[0] + "' (report)");
  const std::string& input = args.operands[1];
  const std::string output = args.options.count('o') != 0 ? args.options['o'] : "report.html";

  std::ifstream in(input, std::ios::binary);
  if (!in) return Failure(&self, "cannot open '" + input + "'");
  LockStatsFile file;
  std::string error;
  if (!ReadLockStats(in, &file, &error)) return Failure(&self, input + ": " + error);
  for (const auto& warning : file.warnings) std::fprintf(stderr, "qzcore lockstats: %s: %s\n", input.c_str(), warning.c_str());

  const std::string page = Report(input, file);
  if (output == "-") {
    std::fwrite(page.data(), 1, page.size(), stdout);
    return std::fflush(stdout) == 0 ? 0 : Failure(&self, "cannot write the page to standard output");
  }
  std::ofstream out(output, std::ios::binary | std::ios::trunc);
  out << page;
  out.close();
  if (!out) {
    std::remove(output.c_str());
    return Failure(&self, "cannot write '" + output + "'");
  }
  std::printf("%s: %zu blocks, %zu mutexes -> %s\n", input.c_str(), file.blocks.size(), Collect(file).size(),
              output.c_str());
  return 0;
}

QZ_COMMAND("lockstats", "report FILE.csv [-o report.html]",
           "turn a lock statistics file (qzlockstats.csv) into an HTML page with tables and charts", LockStats);

}  // namespace
}  // namespace qztool
