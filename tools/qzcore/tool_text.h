// tool_text.h - text helpers the qzcore commands share: result codes, addresses, 16-bit text, and
// the width a UTF-8 text takes on a terminal.
#pragma once

#include <cstdint>
#include <string>

struct addrinfo;

namespace qztool {

// "0x80004005"-style text of a value.
std::string Hex(unsigned long value);
// A result code as a result: its name where the library defines one ("S_OK", "QZ_E_FAIL"), with
// its value in hex ("QZ_E_FAIL (0x80004005)"); only the hex value for others.
std::string Result(int32_t code);
// UTF-8 text of NUL-terminated 16-bit text, through the library's own conversion ("?" if invalid).
std::string Utf8(const char16_t* text);
// Columns the UTF-8 text takes on a terminal: combining marks none, East Asian wide forms two,
// every other character one (a malformed byte counts one).
size_t DisplayWidth(const std::string& text);
// `text` followed by spaces up to `width` columns.
std::string PadToWidth(const std::string& text, size_t width);
// The numeric address of one record, and of a whole list joined by ", " ("(empty)" for none).
std::string AddressText(const addrinfo* record);
std::string AddressTexts(const addrinfo* list);

}  // namespace qztool
