// exports.cpp - the exports of the option parser: QZGetOption and its twelve data cells.
//
// The cells are plain variables with default visibility, read and assigned in place by callers;
// the engine (option_parser.cpp) keeps its scan state in them.
#include "options/option_parser.h"
#include "qzcore/qzgetopt.h"

extern "C" {

QZ_API int32_t QZGetOptionIndex = 1;
QZ_API char* QZGetOptionArgument = nullptr;
QZ_API int32_t QZGetOptionOption = '?';
QZ_API int32_t QZGetOptionError = 1;
QZ_API int32_t QZGetOptionReset = 0;

QZ_API const char* QZGetOptionMsgCharacterRequiresArgument = "Usage: option requires an argument -- %c";
QZ_API const char* QZGetOptionMsgIllegal = "Usage: illegal option -- %c";
QZ_API const char* QZGetOptionMsgInvalid = "Usage: invalid option -- %c";
QZ_API const char* QZGetOptionMsgStringRequiresArgument = "Usage: option '%s%s' requires an argument";
QZ_API const char* QZGetOptionMsgAmbiguous = "Usage: option '%s%.*s' is ambiguous";
QZ_API const char* QZGetOptionMsgNoArgumentAllowed = "Usage: option '%s%.*s' doesn't allow an argument";
QZ_API const char* QZGetOptionMsgUnrecognized = "Usage: unrecognized option '%s%s'";

QZ_API int32_t QZGetOption(int32_t argc, char* const* argv, const QZLongOption* longOptions, int32_t* longIndex) {
  return qz::core::GetOptionInternal(argc, argv, "", longOptions, longIndex,
                                     qz::core::kOptionPermute | qz::core::kOptionLongOnly);
}

}  // extern "C"
