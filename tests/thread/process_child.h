// process_child.h - the child side of the process tests and the parent's helpers around it.
//
// The child is this test binary started again through QZProcessCreate, running the test
// ProcessChild.Role: QZTEST_ROLE in its environment says what it does (report its words,
// environment, directory and descriptors; copy its input; exit with a code). The parent's helpers
// build the environment for it, read pipe ends to their end and parse a report.
#pragma once

#include <string>
#include <vector>

#include "qzcore/qzprocess.h"

namespace qztest {

// What a reporting child saw.
struct ChildReport {
  std::vector<std::string> words;        // its argument vector
  std::vector<std::string> environment;  // its environment, in order
  std::string directory;                 // its working directory
  std::vector<int> descriptors;          // its open descriptors
};

// The test binary to start as a child (QZCORE_TEST_BINARY, else /proc/self/exe).
std::string TestBinary();
// UTF-16 of UTF-8 text, and a null-terminated array over 16-bit strings.
std::u16string Wide(const std::string& text);
std::vector<const char16_t*> WideArray(const std::vector<std::u16string>& strings);
// The environment entries a child needs to run `role`.
std::vector<std::string> ChildEnvironment(const std::string& role);

// Reads a descriptor to its end with read(2), then closes it.
std::string ReadToEnd(QZFileHandle fd);
// Writes all of `text` to a descriptor.
void WriteAll(QZFileHandle fd, const std::string& text);
// Parses what a reporting child wrote (false if the report is not complete).
bool ParseReport(const std::string& output, ChildReport* report);

// Descriptors open in this process now, and whether this process has a child left to reap.
std::vector<int> OpenDescriptors();
bool HasZombieChild();

}  // namespace qztest
