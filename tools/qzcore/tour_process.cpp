// tour_process.cpp - tour step: a child process whose output is read through a pipe, its exit
// code, the words a command line splits into, and what a missing program or an empty set gives.
#include <string>

#include "qzcore/qzfile.h"
#include "qzcore/qzprocess.h"
#include "tour.h"

namespace {

using qztool::Hex;
using qztool::Show;

std::string Code(QZRESULT hr) { return Hex(static_cast<uint32_t>(hr)); }

// Reads a pipe end to its end with QZFileRead, then closes it.
std::string ReadPipe(QZFileHandle end) {
  std::string text;
  char buffer[256];
  uint32_t got = 0;
  while (QZFileRead(end, buffer, sizeof buffer, &got) == 0) text.append(buffer, got);
  QZFileClose(end);
  return text;
}

std::string OneLine(std::string text) {
  for (char& c : text) {
    if (c == '\n') c = '|';
  }
  return "\"" + text + "\"";
}

void TourProcess() {
  QZFileHandle streams[3] = {-1, -1, -1};
  QZProcessHandle child;
  const char16_t* arguments =
      u"-c \"echo hello from a child; echo \\\"$1\\\" >&2; exit 3\" sh \"two words\"";
  Show("QZProcessCreate(\"/bin/sh\", -c \"...; exit 3\" sh \"two words\", pipes for all three)",
       Code(QZProcessCreate(u"/bin/sh", arguments, nullptr, nullptr, 0, streams, &child)));
  QZFileClose(streams[0]);  // no input for it
  Show("  its standard output, read with QZFileRead", OneLine(ReadPipe(streams[1])));
  Show("  its standard error (the quoted word came through whole)", OneLine(ReadPipe(streams[2])));
  uint32_t code = 0;
  const QZRESULT joined = QZProcessJoin(child, &code);
  Show("QZProcessJoin", Code(joined) + ", exit code " + std::to_string(code));

  QZProcessHandle killed;
  QZProcessCreate(u"/bin/sh", u"-c \"kill -TERM $$\"", nullptr, nullptr, 0, nullptr, &killed);
  QZProcessHandle which = -1;
  QZProcessJoinChild(&which, &code);
  Show("QZProcessJoinChild on a child that killed itself with SIGTERM",
       std::string(which == killed ? "that child" : "another") + ", exit code " +
           std::to_string(code) + " (128 + 15)");
  Show("QZProcessJoinChild with no child left", Code(QZProcessJoinChild(&which, &code)));

  QZProcessHandle missing;
  const QZRESULT notFound =
      QZProcessCreate(u"no-such-program", nullptr, nullptr, nullptr, 0, nullptr, &missing);
  Show("QZProcessCreate(\"no-such-program\") (no PATH search)",
       Code(notFound) + ", handle " + std::to_string(missing));

  char name[64] = "";
  QZProcessGetName(QZProcessGetID(), name, sizeof name);
  Show("QZProcessGetID / QZProcessGetName of this process",
       std::to_string(QZProcessGetID()) + " / " + name);
}

}  // namespace

QZ_TOUR_STEP(35, "Child processes", TourProcess);
