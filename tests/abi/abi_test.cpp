// abi_test.cpp - the shared library's dynamic symbol table matches the checked-in export lists.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace {

std::set<std::string> ExpectedSymbols() {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(QZ_ABI_SYMBOL_DIR)) {
    if (entry.path().extension() != ".txt") continue;
    std::ifstream in(entry.path());
    std::string line;
    while (std::getline(in, line)) {
      if (!line.empty() && line[0] != '#') names.insert(line);
    }
  }
  return names;
}

std::set<std::string> ExportedSymbols() {
  std::set<std::string> names;
  const std::string command = std::string("nm -D --defined-only ") + QZ_ABI_LIBRARY;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return names;
  char line[512];
  while (fgets(line, sizeof line, pipe) != nullptr) {
    char address[64], type[8], name[400];
    if (sscanf(line, "%63s %7s %399s", address, type, name) == 3) names.insert(name);
  }
  pclose(pipe);
  return names;
}

}  // namespace

TEST(Abi, ExportsExactlyTheListedSymbols) {
  const std::set<std::string> expected = ExpectedSymbols();
  const std::set<std::string> exported = ExportedSymbols();
  ASSERT_FALSE(exported.empty()) << "could not read the symbol table of " << QZ_ABI_LIBRARY;
  for (const auto& name : expected) EXPECT_TRUE(exported.count(name)) << "missing export: " << name;
  for (const auto& name : exported) EXPECT_TRUE(expected.count(name)) << "unlisted export: " << name;
}

// Programs record the SONAME, so it carries the major version and never the full one: a compatible
// release must be able to replace the file under them.
TEST(Abi, SharedObjectNamesItsMajorVersion) {
  const std::string command = std::string("readelf -d ") + QZ_ABI_LIBRARY;
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string sonames;
  char line[512];
  while (fgets(line, sizeof line, pipe) != nullptr) {
    const std::string text = line;
    if (text.find("(SONAME)") != std::string::npos) sonames += text.substr(text.find('['));
  }
  pclose(pipe);
  EXPECT_EQ(sonames, "[libw64qzcore5.so.5]\n");
  EXPECT_EQ(std::filesystem::path(QZ_ABI_LIBRARY).filename().string().rfind("libw64qzcore5.so.5.", 0), 0u)
      << "the file is named for the full version";
}
