// tour.h - the steps of `qzcore tour`: each family registers one step from its own file.
#pragma once

#include <string>
#include <vector>

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

// Prints one line of the tour: what was called, and what it gave.
void Show(const std::string& call, const std::string& outcome);
// "0x80004005"-style text of a result code.
std::string Hex(unsigned long value);
// UTF-8 text of NUL-terminated 16-bit text, through the library's own conversion ("?" if invalid).
std::string Utf8(const char16_t* text);

}  // namespace qztool

#define QZ_TOUR_STEP(order, title, fn) \
  static const ::qztool::TourRegistration qz_tour_registration_##fn({order, title, fn})

namespace qztool {

// A command the tour starts in a child of its own (`qzcore <name> ARGS...`, not in the usage text):
// a step that shows two processes at work registers one. `run` gets the words after the name.
struct HiddenCommand {
  const char* name;
  int (*run)(int argc, char** argv);
};

std::vector<HiddenCommand>& HiddenCommands();

struct HiddenCommandRegistration {
  explicit HiddenCommandRegistration(HiddenCommand command) { HiddenCommands().push_back(command); }
};

// The exit code of the hidden command named argv[1], or -1 when there is none of that name.
int RunHiddenCommand(int argc, char** argv);

}  // namespace qztool

#define QZ_HIDDEN_COMMAND(name, fn) \
  static const ::qztool::HiddenCommandRegistration qz_hidden_command_##fn({name, fn})
