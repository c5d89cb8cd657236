// syslog_line.h - the text of one entry for the system log socket, as syslog(3) writes it.
//
// Kept apart from the sending so that the format can be checked without a log daemon.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace qz::os {

// "<14>Mmm dd hh:mm:ss ident[pid]: message" (facility user, priority info; local time). The month
// is always the English abbreviation, whatever the process's locale: log daemons parse the stamp
// that way, and syslog(3) writes it in the C locale too.
std::string SyslogLine(std::string_view ident, uint32_t pid, std::time_t when, std::string_view message);

}  // namespace qz::os
