// main.cpp - the qzcore command: reads the global options (--help, --version) and hands the rest to
// the subcommand named first. Each subcommand lives in its own <name>_command.cpp (see command.h).
#include <cstdio>
#include <cstring>
#include <string>

#include "command.h"
#include "tour.h"
#include "qzcore/qzgetopt.h"

#ifndef QZ_VERSION_TEXT
#error "QZ_VERSION_TEXT comes from the build"
#endif

namespace qztool {

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

namespace {

void Usage(FILE* to) {
  std::fprintf(to, "Usage: qzcore [--help | --version] COMMAND [ARGUMENTS]\n\nCommands:\n");
  for (const auto& command : Commands()) {
    std::string left = std::string(command.name) + (*command.synopsis != '\0' ? " " : "") + command.synopsis;
    if (left.size() > 30) {
      std::fprintf(to, "  %s\n  %-30s  %s\n", left.c_str(), "", command.summary);
    } else {
      std::fprintf(to, "  %-30s  %s\n", left.c_str(), command.summary);
    }
  }
  std::fprintf(to,
               "\nOptions:\n"
               "  -h, --help     show this help and exit\n"
               "  -v, --version  print the library's version and exit\n"
               "\n'qzcore help COMMAND' or 'qzcore COMMAND --help' shows one command's help.\n");
}

int Help(const Command& self, int argc, char** argv) {
  Arguments args = ReadArguments(self, argc, argv, nullptr, nullptr, 0, 1);
  if (args.exit >= 0) return args.exit;
  if (args.operands.empty()) {
    Usage(stdout);
    return 0;
  }
  const Command* command = FindCommand(args.operands[0]);
  if (command == nullptr) return UsageError(nullptr, "unknown command '" + args.operands[0] + "'");
  // The command prints its own help, options included.
  char name[64];
  char help[] = "--help";
  std::snprintf(name, sizeof name, "%s", command->name);
  char* words[] = {name, help, nullptr};
  return command->run(*command, 2, words);
}

QZ_COMMAND("help", "[COMMAND]", "show the usage, or one command's help", Help);

}  // namespace
}  // namespace qztool

int main(int argc, char** argv) {
  if (const int hidden = qztool::RunHiddenCommand(argc, argv); hidden >= 0) return hidden;
  // Global options stand before the command; everything from the command on belongs to it.
  int first = 1;
  while (first < argc && argv[first][0] == '-' && std::strcmp(argv[first], "-") != 0) {
    if (std::strcmp(argv[first++], "--") == 0) break;
  }
  int global = first;
  if (global > 1 && std::strcmp(argv[global - 1], "--") == 0) --global;
  enum { kHelp = 'h', kVersion = 'v' };
  static const QZLongOption options[] = {{"help", 0, kHelp}, {"version", 0, kVersion}, {nullptr, 0, 0}};
  QZGetOptionError = 0;
  for (int32_t option; (option = QZGetOption(global, argv, options, nullptr)) != -1;) {
    if (option == kHelp) {
      qztool::Usage(stdout);
      return 0;
    }
    if (option == kVersion) {
      std::printf("qzcore %s (libw64qzcore5 %s)\n", QZ_VERSION_TEXT, QZ_VERSION_TEXT);
      return 0;
    }
    return qztool::UsageError(nullptr, std::string("unknown option '") + argv[QZGetOptionIndex - 1] + "'");
  }
  if (first >= argc) return qztool::UsageError(nullptr, "no command given");
  const qztool::Command* command = qztool::FindCommand(argv[first]);
  if (command == nullptr) return qztool::UsageError(nullptr, std::string("unknown command '") + argv[first] + "'");
  return command->run(*command, argc - first, argv + first);
}
