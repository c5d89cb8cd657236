// tour.h - the steps of `qzcore tour`: each family registers one step from its own file.
#pragma once

#include <string>
#include <vector>

#include "tool_text.h"

namespace qztool {

struct TourStep {
  int order;              // steps run in ascending order
  const char* title;      // heading printed before the step
  void (*run)();          // prints what the family does
};

std::vector<TourStep>& TourSteps();

struct TourRegistration {
  explicit TourRegistration(TourStep step) { TourSteps().push_back(step); }
};

// Prints one line of the tour: what was called, and what it gave; the arrows line up whatever
// characters the call holds.
void Show(const std::string& call, const std::string& outcome);
// A pointer as a pointer: "NULL", or its address in hex.
std::string Pointer(const void* address);

}  // namespace qztool

#define QZ_TOUR_STEP(order, title, fn) \
  static const ::qztool::TourRegistration qz_tour_registration_##fn({order, title, fn})
