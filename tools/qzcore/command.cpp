// command.cpp - the registry of qzcore's subcommands and the argument reading they share.
#include "command.h"

#include <algorithm>
#include <cstring>

namespace qztool {
namespace {

std::vector<Command>& Registry() {
  static std::vector<Command> commands;
  return commands;
}

std::string Prefix(const Command* command) {
  return command != nullptr ? std::string("qzcore ") + command->name : std::string("qzcore");
}

}  // namespace

CommandRegistration::CommandRegistration(Command command) {
  auto& all = Registry();
  all.insert(std::upper_bound(all.begin(), all.end(), command,
                              [](const Command& a, const Command& b) { return std::strcmp(a.name, b.name) < 0; }),
             command);
}

const std::vector<Command>& Commands() { return Registry(); }

const Command* FindCommand(const std::string& name) {
  for (const auto& command : Registry()) {
    if (name == command.name) return &command;
  }
  return nullptr;
}

int UsageError(const Command* command, const std::string& message) {
  std::fprintf(stderr, "%s: %s\nTry '%s --help' for more information.\n", Prefix(command).c_str(), message.c_str(),
               Prefix(command).c_str());
  return kExitUsage;
}

int Failure(const Command* command, const std::string& message) {
  std::fprintf(stderr, "%s: %s\n", Prefix(command).c_str(), message.c_str());
  return 1;
}

void PrintCommandHelp(const Command& command, const char* optionsHelp, FILE* to) {
  std::fprintf(to, "Usage: qzcore %s%s%s\n%s\n\nOptions:\n%s  -h, --help         show this help and exit\n", command.name,
               *command.synopsis != '\0' ? " " : "", command.synopsis, command.summary,
               optionsHelp != nullptr ? optionsHelp : "");
}

Arguments ReadArguments(const Command& command, int argc, char** argv, const QZLongOption* options,
                        const char* optionsHelp, size_t minOperands, size_t maxOperands) {
  constexpr int kHelp = 0x10000;  // above any option value a command picks
  std::vector<QZLongOption> table;
  for (const QZLongOption* o = options; o != nullptr && o->name != nullptr; ++o) table.push_back(*o);
  table.push_back({"help", 0, kHelp});
  table.push_back({nullptr, 0, 0});

  Arguments result;
  // The parser's own messages are off: the command says what was wrong, once, in its own words.
  QZGetOptionError = 0;
  QZGetOptionIndex = 1;
  QZGetOptionReset = 1;
  for (int32_t option; (option = QZGetOption(argc, argv, table.data(), nullptr)) != -1;) {
    if (option == kHelp) {
      PrintCommandHelp(command, optionsHelp, stdout);
      result.exit = 0;
      return result;
    }
    if (option == '?') {
      std::string text = "unknown or ambiguous option '" + std::string(argv[QZGetOptionIndex - 1]) + "'";
      for (const auto& entry : table) {
        if (entry.name != nullptr && entry.val == QZGetOptionOption) {
          text = std::string("option '--") + entry.name + (entry.has_arg == 1 ? "' needs an argument" : "' takes no argument");
        }
      }
      result.exit = UsageError(&command, text);
      return result;
    }
    result.options[option] = QZGetOptionArgument != nullptr ? QZGetOptionArgument : "";
  }
  for (int i = QZGetOptionIndex; i < argc; ++i) result.operands.emplace_back(argv[i]);
  if (result.operands.size() < minOperands) {
    result.exit = UsageError(&command, std::string("missing operand (qzcore ") + command.name + " " + command.synopsis + ")");
  } else if (result.operands.size() > maxOperands) {
    result.exit = UsageError(&command, "unexpected argument '" + result.operands[maxOperands] + "'");
  }
  return result;
}

}  // namespace qztool
