// tour_options.cpp - tour step: the option parser scanning a vector, with permutation,
// abbreviations, an ambiguous prefix and an argument, then a second scan after a reset.
#include <string>
#include <vector>

#include "qzcore/qzgetopt.h"
#include "tour.h"

namespace {

using qztool::Show;

const QZLongOption kTable[] = {{"verbose", 0, 'v'}, {"version", 0, 'V'}, {"output", 1, 'o'}, {nullptr, 0, 0}};

std::string Words(const std::vector<char*>& argv) {
  std::string text;
  for (char* word : argv) {
    if (word == nullptr) break;
    if (!text.empty()) text += ' ';
    text += word;
  }
  return text;
}

std::string Outcome(int32_t result, int32_t entry) {
  if (result == -1) return "-1 (end), operands from index " + std::to_string(QZGetOptionIndex);
  if (result == '?') return "'?' (error), option " + std::to_string(QZGetOptionOption);
  std::string text = std::string("'") + static_cast<char>(result) + "' entry " + std::to_string(entry);
  if (QZGetOptionArgument != nullptr) text += std::string(", argument \"") + QZGetOptionArgument + "\"";
  return text;
}

void Scan(std::vector<char*>& argv) {
  const int32_t argc = static_cast<int32_t>(argv.size()) - 1;
  int32_t result;
  do {
    int32_t entry = -1;
    result = QZGetOption(argc, argv.data(), kTable, &entry);
    Show("QZGetOption(...)", Outcome(result, entry));
  } while (result != -1);
  Show("vector after the scan", Words(argv));
}

void TourOptions() {
  std::string text[] = {"prog", "in.txt", "-verb", "--out=log", "more.txt", "--ver", "--", "-rest"};
  std::vector<char*> argv;
  for (auto& word : text) argv.push_back(word.data());
  argv.push_back(nullptr);

  const int32_t printing = QZGetOptionError;
  QZGetOptionError = 0;  // the ambiguous "--ver" would print to standard error
  QZGetOptionIndex = 0;
  Show("vector", Words(argv));
  Scan(argv);

  Show("QZGetOptionIndex = 0 (second scan)", "");
  QZGetOptionIndex = 0;
  Scan(argv);
  QZGetOptionError = printing;
}

}  // namespace

QZ_TOUR_STEP(90, "Option parser", TourOptions);
