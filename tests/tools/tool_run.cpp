// tool_run.cpp - runs the qzcore command through the shell, its output caught in files.
#include "tool_run.h"

#include <cstdlib>

#include "support/test_support.h"

namespace qztest {

ToolRun RunTool(const std::string& arguments, const std::string& directory) {
  const TempDir scratch;
  const std::string command = "cd '" + directory + "' && '" QZ_TOOL "' " + arguments + " >'" + scratch.File("out") +
                              "' 2>'" + scratch.File("err") + "'; echo $? >'" + scratch.File("rc") + "'";
  ToolRun run;
  if (std::system(command.c_str()) != 0) return run;
  run.exitCode = std::atoi(ReadFile(scratch.File("rc")).c_str());
  run.out = ReadFile(scratch.File("out"));
  run.err = ReadFile(scratch.File("err"));
  return run;
}

size_t CountOf(const std::string& text, const std::string& needle) {
  size_t count = 0;
  for (size_t at = text.find(needle); at != std::string::npos; at = text.find(needle, at + needle.size())) ++count;
  return count;
}

}  // namespace qztest
