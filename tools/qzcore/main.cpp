// main.cpp - the qzcore command: `qzcore tour` walks through the library's families.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "tour.h"

namespace qztool {

std::vector<TourStep>& TourSteps() {
  static std::vector<TourStep> steps;
  return steps;
}

void Show(const std::string& call, const std::string& outcome) {
  std::printf("  %-52s -> %s\n", call.c_str(), outcome.c_str());
}

std::string Hex(unsigned long value) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%08lX", value);
  return text;
}

namespace {

int RunTour() {
  auto steps = TourSteps();
  std::sort(steps.begin(), steps.end(), [](const TourStep& a, const TourStep& b) { return a.order < b.order; });
  std::printf("QZCore tour: each family at work\n");
  for (const auto& step : steps) {
    std::printf("\n== %s ==\n", step.title);
    step.run();
  }
  std::printf("\nTour complete: %zu families.\n", steps.size());
  return 0;
}

void Usage(FILE* to) {
  std::fprintf(to, "usage: qzcore tour    walk through every family of the library\n");
}

}  // namespace
}  // namespace qztool

int main(int argc, char** argv) {
  if (argc >= 2 && std::strcmp(argv[1], "tour") == 0) return qztool::RunTour();
  if (argc >= 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    qztool::Usage(stdout);
    return 0;
  }
  qztool::Usage(stderr);
  return 2;
}
