// option_parser.cpp - the option-parsing engine: word scanning, permutation, the long-option
// match with abbreviations, and the messages on standard error.
//
// The scan state is process-wide and unguarded (one thread parses, at program start). The exported
// cells live in exports.cpp; the private items below complete the state.
#include "options/option_parser.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qz::core {
namespace {

constexpr int32_t kBadOption = '?';
constexpr int32_t kMissingArgument = ':';
constexpr int32_t kInOrder = 1;  // an operand returned under kOptionAllArgs

char kEmpty[] = "";

char* OptionPlace = kEmpty;   // where the scan stands inside the current word
int32_t NonOptionStart = -1;  // first skipped operand
int32_t NonOptionEnd = -1;    // one behind the first block of skipped operands
int32_t DashPrefix = 0;       // 0 "-", 1 "--", 2 "-W ", else "": prefixes names in messages

const char* DashText() noexcept {
  switch (DashPrefix) {
    case 0:
      return "-";
    case 1:
      return "--";
    case 2:
      return "-W ";
    default:
      return "";
  }
}

// Messages: the format with its arguments, a newline, a flush; no program name.
void PrintMessage(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::vfprintf(stderr, format, args);
  va_end(args);
  std::fputc('\n', stderr);
  std::fflush(stderr);
}

// The engine's view of one call: its arguments and what it derived from them.
struct ScanCall {
  int32_t argc;                     // words in the vector
  char* const* argv;                // the vector (permuted in place)
  const char* shortOptions;         // option string after any leading '+' or '-'
  bool silent;                      // the option string began with ':'
  const QZLongOption* longOptions;  // table or NULL
  int32_t* longIndex;               // where the entry's index goes, or NULL
  uint32_t flags;                   // kOption* bits in force for this call
};

bool PrintingAllowed(const ScanCall& call) noexcept { return QZGetOptionError != 0 && !call.silent; }

int32_t BadArgument(const ScanCall& call) noexcept { return call.silent ? kMissingArgument : kBadOption; }

int32_t GreatestCommonDivisor(int32_t a, int32_t b) noexcept {
  int32_t c = a % b;
  while (c != 0) {
    a = b;
    b = c;
    c = a % b;
  }
  return b;
}

// Leaves the skipped operands behind the options just scanned, and the index on the first operand.
void MoveOperandsBehindOptions(const ScanCall& call) noexcept {
  PermuteArguments(NonOptionStart, NonOptionEnd, QZGetOptionIndex, call.argv);
  QZGetOptionIndex -= NonOptionEnd - NonOptionStart;
}

// Matches the word at OptionPlace (dashes already stepped over) against the table. Returns the
// entry's val, '?' or ':' on an error, or -1 when the word should be read as a short option instead.
int32_t MatchLongOption(const ScanCall& call, bool shortToo) {
  char* current = OptionPlace;
  const char* dashes = DashText();
  ++QZGetOptionIndex;

  char* attached = std::strchr(current, '=');
  size_t length;
  if (attached != nullptr) {
    length = static_cast<size_t>(attached - current);
    ++attached;
  } else {
    length = std::strlen(current);
  }

  const QZLongOption* table = call.longOptions;
  int32_t match = -1;
  bool exact = false;
  bool secondPartial = false;
  for (int32_t i = 0; table[i].name != nullptr; ++i) {
    if (std::strncmp(current, table[i].name, length) != 0) continue;
    if (std::strlen(table[i].name) == length) {
      match = i;
      exact = true;
      break;
    }
    if (shortToo && length == 1) continue;
    if (match == -1) {
      match = i;
    } else if ((call.flags & kOptionLongOnly) != 0 || table[i].has_arg != table[match].has_arg ||
               table[i].val != table[match].val) {
      secondPartial = true;
    }
  }

  if (!exact && secondPartial) {
    if (PrintingAllowed(call)) PrintMessage(QZGetOptionMsgAmbiguous, dashes, static_cast<int>(length), current);
    QZGetOptionOption = 0;
    return kBadOption;
  }
  if (match == -1) {
    if (shortToo) {
      --QZGetOptionIndex;
      return -1;
    }
    if (PrintingAllowed(call)) PrintMessage(QZGetOptionMsgUnrecognized, dashes, current);
    QZGetOptionOption = 0;
    return kBadOption;
  }

  const QZLongOption& entry = table[match];
  if (entry.has_arg == 0 && attached != nullptr) {
    if (PrintingAllowed(call))
      PrintMessage(QZGetOptionMsgNoArgumentAllowed, dashes, static_cast<int>(length), current);
    QZGetOptionOption = entry.val;
    return kBadOption;
  }
  if (entry.has_arg == 1) {
    if (attached != nullptr) {
      QZGetOptionArgument = attached;
    } else {
      // No test against the count: the vector's terminating NULL is what ends it.
      QZGetOptionArgument = call.argv[QZGetOptionIndex++];
    }
    if (QZGetOptionArgument == nullptr) {
      if (PrintingAllowed(call)) PrintMessage(QZGetOptionMsgStringRequiresArgument, dashes, current);
      QZGetOptionOption = entry.val;
      --QZGetOptionIndex;
      return BadArgument(call);
    }
  }
  // Any other has_arg takes no argument: an attached value is accepted and not stored.
  if (call.longIndex != nullptr) *call.longIndex = match;
  return entry.val;
}

// Finds the next option word, skipping (and, with kOptionPermute, collecting) operands. Returns
// true with OptionPlace inside an option word, or false with the value the call returns.
bool NextOptionWord(const ScanCall& call, int32_t* result) {
  while (QZGetOptionReset != 0 || *OptionPlace == '\0') {
    QZGetOptionReset = 0;
    if (QZGetOptionIndex >= call.argc) {
      OptionPlace = kEmpty;
      if (NonOptionEnd != -1) {
        MoveOperandsBehindOptions(call);
      } else if (NonOptionStart != -1) {
        QZGetOptionIndex = NonOptionStart;
      }
      NonOptionStart = NonOptionEnd = -1;
      *result = -1;
      return false;
    }
    OptionPlace = call.argv[QZGetOptionIndex];
    if (*OptionPlace != '-' || OptionPlace[1] == '\0') {
      OptionPlace = kEmpty;
      if ((call.flags & kOptionAllArgs) != 0) {
        QZGetOptionArgument = call.argv[QZGetOptionIndex++];
        *result = kInOrder;
        return false;
      }
      if ((call.flags & kOptionPermute) == 0) {
        *result = -1;
        return false;
      }
      if (NonOptionStart == -1) {
        NonOptionStart = QZGetOptionIndex;
      } else if (NonOptionEnd != -1) {
        // A second block of operands: join it to the first, behind the options between them.
        PermuteArguments(NonOptionStart, NonOptionEnd, QZGetOptionIndex, call.argv);
        NonOptionStart = QZGetOptionIndex - (NonOptionEnd - NonOptionStart);
        NonOptionEnd = -1;
      }
      ++QZGetOptionIndex;
      continue;
    }
    if (NonOptionStart != -1 && NonOptionEnd == -1) NonOptionEnd = QZGetOptionIndex;
    ++OptionPlace;
    if (OptionPlace[0] == '-' && OptionPlace[1] == '\0') {
      ++QZGetOptionIndex;
      OptionPlace = kEmpty;
      if (NonOptionEnd != -1) MoveOperandsBehindOptions(call);
      NonOptionStart = NonOptionEnd = -1;
      *result = -1;
      return false;
    }
  }
  return true;
}

// The option character at OptionPlace, with or without its argument.
int32_t ShortOption(const ScanCall& call, bool posixlyCorrect) {
  // The character as the first platform's signed char widens it: a byte of 0x80 or above is
  // negative, the same on every target whatever the signedness of its plain char.
  const int32_t optionChar = static_cast<signed char>(*OptionPlace++);
  const char* letterEntry = optionChar != 0 ? std::strchr(call.shortOptions, optionChar) : nullptr;
  if (optionChar == ':' || (optionChar == '-' && *OptionPlace != '\0') || letterEntry == nullptr) {
    if (optionChar == '-' && *OptionPlace == '\0') return -1;
    if (*OptionPlace == '\0') ++QZGetOptionIndex;
    if (PrintingAllowed(call)) PrintMessage(posixlyCorrect ? QZGetOptionMsgIllegal : QZGetOptionMsgInvalid, optionChar);
    QZGetOptionOption = optionChar;
    return kBadOption;
  }

  if (call.longOptions != nullptr && optionChar == 'W' && letterEntry[1] == ';') {
    // -W name: the long option is the rest of the word or the next word.
    if (*OptionPlace == '\0') {
      if (++QZGetOptionIndex >= call.argc) {
        OptionPlace = kEmpty;
        if (PrintingAllowed(call)) PrintMessage(QZGetOptionMsgCharacterRequiresArgument, optionChar);
        QZGetOptionOption = optionChar;
        return BadArgument(call);
      }
      OptionPlace = call.argv[QZGetOptionIndex];
    }
    DashPrefix = 2;
    const int32_t result = MatchLongOption(call, false);
    OptionPlace = kEmpty;
    return result;
  }

  if (letterEntry[1] != ':') {
    if (*OptionPlace == '\0') ++QZGetOptionIndex;
    return optionChar;
  }
  QZGetOptionArgument = nullptr;
  if (*OptionPlace != '\0') {
    QZGetOptionArgument = OptionPlace;
  } else if (letterEntry[2] != ':') {
    if (++QZGetOptionIndex >= call.argc) {
      OptionPlace = kEmpty;
      if (PrintingAllowed(call)) PrintMessage(QZGetOptionMsgCharacterRequiresArgument, optionChar);
      QZGetOptionOption = optionChar;
      return BadArgument(call);
    }
    QZGetOptionArgument = call.argv[QZGetOptionIndex];
  }
  OptionPlace = kEmpty;
  ++QZGetOptionIndex;
  return optionChar;
}

}  // namespace

void PermuteArguments(int32_t start, int32_t end, int32_t optionEnd, char* const* argv) noexcept {
  char** words = const_cast<char**>(argv);
  const int32_t operands = end - start;
  const int32_t options = optionEnd - end;
  const int32_t cycles = GreatestCommonDivisor(operands, options);
  const int32_t cycleLength = (optionEnd - start) / cycles;
  for (int32_t i = 0; i < cycles; ++i) {
    const int32_t cycleStart = end + i;
    int32_t pos = cycleStart;
    for (int32_t j = 0; j < cycleLength; ++j) {
      pos = pos >= end ? pos - operands : pos + options;
      char* swap = words[pos];
      words[pos] = words[cycleStart];
      words[cycleStart] = swap;
    }
  }
}

int32_t GetOptionInternal(int32_t argc, char* const* argv, const char* shortOptions,
                          const QZLongOption* longOptions, int32_t* longIndex, uint32_t flags) {
  if (shortOptions == nullptr) return -1;

  // Read on every call, so a caller may set or clear it between scans; only its presence counts.
  const bool posixlyCorrect = std::getenv("POSIXLY_CORRECT") != nullptr;
  if (*shortOptions == '-') {
    flags |= kOptionAllArgs;
  } else if (posixlyCorrect || *shortOptions == '+') {
    flags &= ~kOptionPermute;
  }
  if (*shortOptions == '+' || *shortOptions == '-') ++shortOptions;

  if (QZGetOptionIndex == 0) QZGetOptionIndex = QZGetOptionReset = 1;
  QZGetOptionArgument = nullptr;
  if (QZGetOptionReset != 0) NonOptionStart = NonOptionEnd = -1;

  const ScanCall call{argc, argv, shortOptions, *shortOptions == ':', longOptions, longIndex, flags};
  int32_t result;
  if (!NextOptionWord(call, &result)) return result;

  // A long option when a table is given, the word is more than a lone dash, and it began with
  // "--" or every word with a dash is long.
  if (longOptions != nullptr && OptionPlace != argv[QZGetOptionIndex] &&
      (*OptionPlace == '-' || (flags & kOptionLongOnly) != 0)) {
    bool shortToo = false;
    DashPrefix = 0;
    if (*OptionPlace == '-') {
      ++OptionPlace;
      DashPrefix = 1;
    } else if (*OptionPlace != ':' && std::strchr(shortOptions, *OptionPlace) != nullptr) {
      shortToo = true;
    }
    result = MatchLongOption(call, shortToo);
    if (result != -1) {
      OptionPlace = kEmpty;
      return result;
    }
  }
  return ShortOption(call, posixlyCorrect);
}

}  // namespace qz::core
