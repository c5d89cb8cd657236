// tour_frame.cpp - tour step: result codes, alerts and traces, heap blocks, atomics and swaps.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

#include "qzcore.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

std::string TempPath(const char* stem) { return std::string("/tmp/qzcore-tour-") + stem + "-" + std::to_string(getpid()); }

std::string Slurp(const std::string& path) {
  std::string text;
  if (FILE* f = std::fopen(path.c_str(), "r")) {
    char buf[512];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) text.append(buf, n);
    std::fclose(f);
  }
  std::remove(path.c_str());
  for (auto& c : text) if (c == '\n' || c == '\t') c = ' ';
  return text;
}

void TourResults() {
  for (uint32_t native : {0u, 2u, 3u, 5u, 87u, 183u, 258u}) {
    Show("QZResultFromNative(" + std::to_string(native) + ")", qztool::Result(QZResultFromNative(native)));
  }
}

void TourAlerts() {
  const std::string events = TempPath("events");
  const std::string debug = TempPath("debug");
  setenv("QZCORE_EVENT_LOG", events.c_str(), 1);
  setenv("QZCORE_DEBUG_OUTPUT", debug.c_str(), 1);
  QZErrorAlert(0, u"Tour", u"stored method is 0: nothing happens");
  Show("QZErrorAlert(0, ...) with no stored method", "nothing shown");
  QZErrorAlert(QZ_ALERT_EVENT_LOG, u"Tour", u"sample alert %d of %ls (no action needed)", 1, u"the tour");
  Show("QZErrorAlert(QZ_ALERT_EVENT_LOG, \"Tour\", ...)", "event entry: " + Slurp(events));
  QZTrace(u"opened %hs in %d ms", "qzregistry.ini", 12);
  Show("QZTrace(\"opened %hs in %d ms\", ...)", "debugger text: " + Slurp(debug));
  unsetenv("QZCORE_EVENT_LOG");
  unsetenv("QZCORE_DEBUG_OUTPUT");
}

void TourMemory() {
  void* block = nullptr;
  QZRESULT hr = QZMalloc(16, &block);
  Show("QZMalloc(16, &block)", qztool::Result(hr) + ", block " + qztool::Pointer(block) + ", usable size " +
                                  std::to_string(QZMallocSize(block)));
  static_cast<unsigned char*>(block)[0] = 0xAB;
  hr = QZRecalloc(&block, 4096);
  Show("QZRecalloc(&block, 4096)", qztool::Result(hr) + ", block " + qztool::Pointer(block) + ", first byte kept: " +
                                      Hex(static_cast<unsigned char*>(block)[0]) + ", byte 4095: " +
                                      std::to_string(static_cast<unsigned char*>(block)[4095]));
  QZFree(block);
  Show("QZGetAlignedSize(9)", std::to_string(QZGetAlignedSize(9)));
  volatile int32_t word = 5;
  const int32_t old = QZAtomicCompareExchange(&word, 9, 4);
  Show("QZAtomicCompareExchange(&5, new 9, expected 4)", "returns " + std::to_string(old) + ", word stays " + std::to_string(word));
  Show("QZAtomicIncrement(&5)", std::to_string(QZAtomicIncrement(&word)));
  Show("QZSwapInt32(0x12345678)", Hex(QZSwapInt32(0x12345678)));
}

void TourFrame() {
  TourResults();
  TourAlerts();
  TourMemory();
}

}  // namespace

QZ_TOUR_STEP(10, "Results, alerts, memory", TourFrame);
