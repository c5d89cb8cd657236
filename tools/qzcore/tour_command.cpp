// tour_command.cpp - `qzcore tour`: runs every family's step (tour_<family>.cpp) in order.
#include <algorithm>
#include <cstdio>

#include "command.h"
#include "tour.h"

namespace qztool {

std::vector<TourStep>& TourSteps() {
  static std::vector<TourStep> steps;
  return steps;
}

void Show(const std::string& call, const std::string& outcome) {
  std::printf("  %s -> %s\n", PadToWidth(call, 52).c_str(), outcome.c_str());
}

std::string Pointer(const void* address) {
  if (address == nullptr) return "NULL";
  char text[32];
  std::snprintf(text, sizeof text, "%p", address);
  return text;
}

namespace {

int Tour(const Command& self, int argc, char** argv) {
  Arguments args = ReadArguments(self, argc, argv, nullptr, nullptr, 0, 0);
  if (args.exit >= 0) return args.exit;
  auto steps = TourSteps();
  std::stable_sort(steps.begin(), steps.end(), [](const TourStep& a, const TourStep& b) { return a.order < b.order; });
  std::printf("QZCore tour: each family at work\n");
  for (const auto& step : steps) {
    std::printf("\n== %s ==\n", step.title);
    step.run();
  }
  std::printf("\nTour complete: %zu families.\n", steps.size());
  return 0;
}

QZ_COMMAND("tour", "", "walk through every family of the library", Tour);

}  // namespace
}  // namespace qztool
