// command.h - the subcommands of `qzcore`: each lives in its own <name>_command.cpp and registers
// itself with QZ_COMMAND; main.cpp only reads the global options and dispatches.
//
// A command's function receives itself and the words from its name on (argv[0] is the name). ReadArguments
// handles what every command shares: --help, options the command does not know, and the number of
// operands, each failure told once on standard error with a pointer to the help.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "qzcore/qzgetopt.h"

namespace qztool {

struct Command {
  const char* name;      // the word that selects it
  const char* synopsis;  // its arguments, as the usage line shows them after the name
  const char* summary;   // one line saying what it does
  int (*run)(const Command& self, int argc, char** argv);
};

// Every registered command, sorted by name.
const std::vector<Command>& Commands();
// The command of that name, or null.
const Command* FindCommand(const std::string& name);

struct CommandRegistration {
  explicit CommandRegistration(Command command);
};

// Exit codes: 0 done, 1 the command ran and the answer is "no" or the work failed, 2 a usage error.
constexpr int kExitUsage = 2;

// Prints "qzcore[ COMMAND]: MESSAGE" and the pointer to the help on standard error; returns 2.
int UsageError(const Command* command, const std::string& message);
// Prints "qzcore[ COMMAND]: MESSAGE" on standard error; returns 1.
int Failure(const Command* command, const std::string& message);
// The help of one command, to `to`.
void PrintCommandHelp(const Command& command, const char* optionsHelp, FILE* to);

// What ReadArguments found. `exit` is -1 when the command should go on, else the code to return
// (0 after --help, 2 after a usage error already reported).
struct Arguments {
  int exit = -1;
  std::vector<std::string> operands;
  std::map<int, std::string> options;  // option value -> its argument ("" when it takes none)
};

// Reads the command's options (`options` ends with a null name; may be null) and checks that the
// operands number between `minOperands` and `maxOperands`. --help is always known; `optionsHelp`
// lists the command's own options for its help text (may be null).
Arguments ReadArguments(const Command& command, int argc, char** argv, const QZLongOption* options,
                        const char* optionsHelp, size_t minOperands, size_t maxOperands);

}  // namespace qztool

#define QZ_COMMAND(name, synopsis, summary, fn) \
  static const ::qztool::CommandRegistration qz_command_registration_##fn({name, synopsis, summary, fn})
