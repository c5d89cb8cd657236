// report_sinks.cpp - the report channels on Linux.
//
// Debugger text goes to $QZCORE_DEBUG_OUTPUT ("stderr" or a file appended to), else to standard
// error while a tracer is attached, else nowhere. Event entries go to $QZCORE_EVENT_LOG (one
// escaped line each) or to the system log through /dev/log, without touching the process's own
// openlog() state. The operator is asked on the controlling terminal.
#include "platform/report_sinks.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "io.h"
#include "platform/process_info.h"
#include "platform/utf8.h"
#include "syscalls.h"
#include "syslog_line.h"

namespace qz::os {
namespace {

constexpr const char kEventSource[] = "Morvalent Services";

// Appends `data` to the file at `path` in one write, creating the file if needed.
void AppendToFile(const char* path, const std::string& data) noexcept {
  const int fd = OpenCloexec(path, O_WRONLY | O_APPEND | O_CREAT, 0644);
  if (fd < 0) return;
  WriteAll(fd, data.data(), data.size());
  sys::close(fd);
}

std::string EscapeEventField(const std::string& s) {
  std::string out;
  out.reserve(s.size());
  for (char c : s) {
    if (c == '\\') out += "\\\\";
    else if (c == '\r') out += "\\r";
    else if (c == '\n') out += "\\n";
    else out += c;
  }
  return out;
}

// Sends one entry to the system log socket; silent if there is none.
void SendToSyslog(const std::string& line) noexcept {
  const int fd = sys::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return;
  struct sockaddr_un addr {};
  addr.sun_family = AF_UNIX;
  strcpy(addr.sun_path, "/dev/log");
  if (sys::connect(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof addr) == 0) {
    RetryOnEintr([&] { return sys::send(fd, line.data(), line.size(), MSG_NOSIGNAL); });
  }
  sys::close(fd);
}

}  // namespace

std::string SyslogLine(std::string_view ident, uint32_t pid, std::time_t when, std::string_view message) {
  static constexpr char kMonths[12][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  struct tm local;
  localtime_r(&when, &local);
  char stamp[32];
  std::snprintf(stamp, sizeof stamp, "%s %2d %02d:%02d:%02d", kMonths[local.tm_mon % 12], local.tm_mday,
                local.tm_hour, local.tm_min, local.tm_sec);
  // <14>: facility user (1), priority info (6).
  std::string line = "<14>";
  line += stamp;
  line += ' ';
  line += ident;
  line += '[';
  line += std::to_string(pid);
  line += "]: ";
  line += message;
  return line;
}

void OutputDebugText(std::u16string_view text) noexcept {
  try {
    const char* sink = getenv("QZCORE_DEBUG_OUTPUT");
    const std::string utf8 = Utf16ToUtf8Replacing(text);
    if (sink == nullptr || *sink == '\0') {
      if (IsDebuggerAttached()) WriteAll(2, utf8.data(), utf8.size());
    } else if (strcmp(sink, "stderr") == 0) {
      WriteAll(2, utf8.data(), utf8.size());
    } else {
      AppendToFile(sink, utf8);
    }
  } catch (...) {
    // A debugger channel that cannot be served is silent.
  }
}

void ReportEvent(const char16_t* title, std::u16string_view text) noexcept {
  try {
    const std::string titleUtf8 = title != nullptr ? Utf16ToUtf8Replacing(std::u16string_view(title)) : std::string();
    const std::string textUtf8 = Utf16ToUtf8Replacing(text);
    const char* path = getenv("QZCORE_EVENT_LOG");
    if (path != nullptr && *path != '\0') {
      AppendToFile(path, EscapeEventField(titleUtf8) + "\t" + EscapeEventField(textUtf8) + "\n");
    } else {
      SendToSyslog(SyslogLine(kEventSource, GetCurrentProcessId(), time(nullptr), titleUtf8 + ": " + textUtf8));
    }
  } catch (...) {
    // A failed event entry is silent.
  }
}

uint32_t AskOperator(uint32_t session, std::u16string_view caption, std::u16string_view body) noexcept {
  (void)session;  // the controlling terminal is this process's operator
  const int fd = OpenCloexec("/dev/tty", O_RDWR | O_NOCTTY);
  if (fd < 0) return kAnswerNone;
  uint32_t answer = kAnswerNone;
  try {
    const std::string text = "\n*** " + Utf16ToUtf8Replacing(caption) + " ***\n" + Utf16ToUtf8Replacing(body) + "\n";
    WriteAll(fd, text.data(), text.size());
    static constexpr char kPrompt[] = "[A]bort, [R]etry, [I]gnore? ";
    for (;;) {
      if (!WriteAll(fd, kPrompt, sizeof kPrompt - 1)) break;
      std::string line;
      char c;
      ssize_t n;
      while ((n = sys::read(fd, &c, 1)) == 1 && c != '\n') line += c;
      if (n < 0 && errno == EINTR) continue;
      size_t first = line.find_first_not_of(" \t\r");
      const char key = first == std::string::npos ? '\0' : static_cast<char>(tolower(line[first]));
      if (key == 'a') answer = kAnswerAbort;
      else if (key == 'r') answer = kAnswerRetry;
      else if (key == 'i') answer = kAnswerIgnore;
      if (answer != kAnswerNone || n <= 0) break;  // an answer, or the terminal went away
    }
  } catch (...) {
    answer = kAnswerNone;
  }
  sys::close(fd);
  return answer;
}

}  // namespace qz::os
