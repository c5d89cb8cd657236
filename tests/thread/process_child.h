// process_child.h - the child side of the process tests (this binary started again, running
// ProcessChild.Role as QZTEST_ROLE says) and the parent's helpers around it.
#pragma once

#include <string>
#include <vector>

#include "qzcore/qzprocess.h"

namespace qztest {

// What a reporting child saw: its words, environment, directory and open descriptors.
struct ChildReport {
  std::vector<std::string> words, environment;
  std::string directory;
  std::vector<std::string> descriptors;
};

std::string TestBinary();  // QZCORE_TEST_BINARY, else /proc/self/exe
std::u16string Wide(const std::string& ascii);
// The environment a child needs for `role`, plus `extra`, as 16-bit strings.
std::vector<std::u16string> ChildEnvironment(const std::string& role,
                                             std::vector<std::string> extra = {});
std::vector<const char16_t*> WideArray(
    const std::vector<std::u16string>& strings);  // null-terminated
std::string ReadToEnd(QZFileHandle end);          // QZFileRead to the end, then QZFileClose
bool ParseReport(const std::string& output, ChildReport* report);
std::vector<std::string> OpenDescriptors();  // of this process
bool HasZombieChild();

}  // namespace qztest
