// Helpers of the report model's reader and writer (ReportParse.cpp,
// ReportRender.cpp): numbers exactly as the report prints them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "format/EntryText.h"
#include "reader/ReportModel.h"

namespace report_model {

// ASCII wide text (the report's own literals) as narrow text.
std::string Narrow(std::wstring_view ascii);

// A number in the one form the report prints it: digits only (lower-case
// for base 16), no leading zero, at most `max`. Anything else is no number.
std::optional<std::uint64_t> ParseUnsigned(std::string_view text, std::uint64_t max, unsigned base = 10);
// The same with an optional "-" (never "-0").
std::optional<std::int64_t> ParseSigned(std::string_view text, std::int64_t min, std::int64_t max);

std::string UnsignedText(std::uint64_t value, unsigned base = 10);
std::string SignedText(std::int64_t value);

// "dd/mm/yyyy  hh:mm:ss" as its fields, or nothing.
std::optional<CalendarTime> ParseReportTime(std::string_view printed);

}  // namespace report_model
