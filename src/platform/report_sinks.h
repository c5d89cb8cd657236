// report_sinks.h - the three channels through which the library speaks to a person: debugger
// text, the event log, and a blocking question to the operator.
#pragma once

#include <cstdint>
#include <string_view>

namespace qz::os {

// Hands text to a debugger, as it stands (no newline added). Nothing comes back.
void OutputDebugText(std::u16string_view text) noexcept;

// Writes one information entry with two strings to the persistent event log under the source
// "Morvalent Services". A null title is an absent first string. Failures are silent.
void ReportEvent(const char16_t* title, std::u16string_view text) noexcept;

// Operator answers of AskOperator.
inline constexpr uint32_t kAnswerNone = 0;  // the question could not be delivered
inline constexpr uint32_t kAnswerAbort = 3;
inline constexpr uint32_t kAnswerRetry = 4;
inline constexpr uint32_t kAnswerIgnore = 5;

// Asks the operator of `session` an Abort/Retry/Ignore question and waits for the answer.
uint32_t AskOperator(uint32_t session, std::u16string_view caption, std::u16string_view body) noexcept;

}  // namespace qz::os
