// tool_run.h - runs the qzcore command as a user would, and gives back its exit code and output.
#pragma once

#include <string>

namespace qztest {

struct ToolRun {
  int exitCode = -1;  // 128 + N when signal N ended it
  std::string out;
  std::string err;
};

// Runs qzcore with `arguments` (a shell word list, quoted by the caller) in `directory`.
ToolRun RunTool(const std::string& arguments, const std::string& directory);

// How often `needle` occurs in `text`.
size_t CountOf(const std::string& text, const std::string& needle);

}  // namespace qztest
