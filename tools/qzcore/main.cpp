// main.cpp - the qzcore command: `qzcore tour` walks through the library's families, `qzcore host
// NAME` tells whether NAME is this computer, `qzcore com` registers and creates components. The
// command line is read with the library's own option parser.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "qzcore/qzgetopt.h"
#include "qzcore/qzhost.h"
#include "com_command.h"
#include "qzcore.h"
#include "tour.h"

namespace qztool {

std::vector<TourStep>& TourSteps() {
  static std::vector<TourStep> steps;
  return steps;
}

void Show(const std::string& call, const std::string& outcome) {
  std::printf("  %-52s -> %s\n", call.c_str(), outcome.c_str());
}

std::vector<HiddenCommand>& HiddenCommands() {
  static std::vector<HiddenCommand> commands;
  return commands;
}

int RunHiddenCommand(int argc, char** argv) {
  for (const auto& command : HiddenCommands()) {
    if (argc >= 2 && std::strcmp(argv[1], command.name) == 0) return command.run(argc - 2, argv + 2);
  }
  return -1;
}

std::string Hex(unsigned long value) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%08lX", value);
  return text;
}

std::string Utf8(const char16_t* text) {
  const int64_t length = QZUTF16ToUTF8(nullptr, text, 0);
  std::string out(static_cast<size_t>(length) + 1, '\0');
  if (QZUTF16ToUTF8(out.data(), text, out.size()) != length) return "?";
  out.resize(static_cast<size_t>(length));
  return out;
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

// Exit code 0 when NAME is this computer, 1 when it is not.
int RunHost(const char* name) {
  const bool mine = QZIsThisMyComputerA(name) != 0;
  std::printf("%s: %s\n", name, mine ? "this computer" : "not this computer");
  return mine ? 0 : 1;
}

void Usage(FILE* to) {
  std::fprintf(to,
               "usage: qzcore tour         walk through every family of the library\n"
               "       qzcore host NAME    tell whether NAME (a host name or address) is this computer\n"
               "       qzcore reg ...      query, add, delete, import and export registry keys (reg alone: help)\n"
               "       qzcore com register CLSID PATH [PROGID]   register a component library\n"
               "       qzcore com create CLSID|PROGID            create an object of a registered class\n"
               "       qzcore --help       show this text\n");
}

}  // namespace
}  // namespace qztool

int main(int argc, char** argv) {
  if (const int hidden = qztool::RunHiddenCommand(argc, argv); hidden >= 0) return hidden;
  static const QZLongOption options[] = {{"help", 0, 'h'}, {nullptr, 0, 0}};
  for (int32_t option; (option = QZGetOption(argc, argv, options, nullptr)) != -1;) {
    if (option == 'h') {
      qztool::Usage(stdout);
      return 0;
    }
    qztool::Usage(stderr);  // the parser has said what was wrong
    return 2;
  }
  const int operands = argc - QZGetOptionIndex;
  const char* command = operands >= 1 ? argv[QZGetOptionIndex] : "";
  if (operands == 1 && std::strcmp(command, "tour") == 0) return qztool::RunTour();
  if (operands == 2 && std::strcmp(command, "host") == 0) return qztool::RunHost(argv[QZGetOptionIndex + 1]);
  if (std::strcmp(command, "com") == 0) return qztool::RunCom(operands, argv + QZGetOptionIndex);
  qztool::Usage(stderr);
  return 2;
}
