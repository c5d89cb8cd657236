// ini_fuzz.cpp - libFuzzer target for the text file store's reader and writer.
//
// The input is a file's bytes. Loading must end without fault whatever the lines; the table is then
// written out, read back and walked with both iterators, and every key read through GetValue.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "registry/ini_file.h"
#include "registry/ini_iterators.h"

namespace {

std::string g_dir;  // a private directory for the two files

std::u16string Wide(const std::string& text) { return {text.begin(), text.end()}; }

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char pattern[] = "/tmp/qzcore-ini-fuzz-XXXXXX";
  if (mkdtemp(pattern) == nullptr) std::abort();
  g_dir = pattern;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input = g_dir + "/input.ini";
  const std::string output = g_dir + "/output.ini";
  if (FILE* f = std::fopen(input.c_str(), "wb")) {
    std::fwrite(data, 1, size, f);
    std::fclose(f);
  }
  const std::u16string in = Wide(input);
  const std::u16string out = Wide(output);
  IniFile file(in.c_str());
  {
    IniFile::CLock hold(file);
    if (file.Save(out.c_str()) != 0) std::abort();
  }
  IniFile written(out.c_str());
  // Reading what the writer made can only lose sections (at an early stop), never gain one.
  if (written.Sections().size() > file.Sections().size()) std::abort();
  for (const auto& section : written.GetSectionNames()) {
    IniFileSetIterator children(written, section.c_str());
    while (children.HasNext()) children.Next();
    IniFileKeyIterator keys(written, section.c_str());
    while (keys.HasNext()) keys.Next();
    QZWCHAR buffer[1024];
    for (const auto& [key, value] : written.Sections().find(section)->second) {
      if (value.size() < 1024 && written.GetValue(section.c_str(), key.c_str(), buffer) != 0) std::abort();
    }
  }
  return 0;
}
