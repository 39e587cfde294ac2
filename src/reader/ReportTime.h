// When a report was made, as data: the header's date and time read in the
// forms the machines' locales print them ("11/16/2026 9:12:00 AM",
// "23/11/2026 19:50:05", "23.11.2026 19:50:06", "11/23/26 19:24:16",
// "2026-11-23 19:50:05", "2026-11-23 오후 7:50:05", "23/11/2026 19:50"...),
// as ISO 8601 local time with no zone, and whether that reading is certain.
//
// The header prints the date in the order of the machine's locale, which
// the report does not name: 05/11/2026 is the 5th of November or the 11th
// of May. The report's own times settle it where they can: it was made
// after every file it lists was written or created, and before the report
// file itself was last written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "format/EntryText.h"
#include "reader/ReportModel.h"

namespace report_model {

// Whether the fields name a real date and time: month 1 to 12, a day its
// month has (29 February in leap years only), hours 0 to 23, minutes and
// seconds 0 to 59, a year from 1 to 9999.
bool IsRealCalendarTime(const CalendarTime& time);

// "2026-11-23T19:50:05".
std::string IsoText(const CalendarTime& time);

// What a header's text allows: nothing when it holds no date and time in a
// known form (an empty header too); otherwise every real reading of it,
// day first before month first, none when the date or time cannot be.
struct HeaderReadings {
    std::vector<CalendarTime> readings;
    bool seconds = true;  // false for a time printed to the minute ("19:50")
};
std::optional<HeaderReadings> ReadingsOfHeader(std::string_view headerText);

// A reading in ISO: "2026-11-23T19:50:05", or "2026-11-23T19:50" for a time
// printed without seconds, which are not made up: as text it still sorts
// before every time of a later minute and after every earlier one.
std::string HeaderIso(const CalendarTime& time, bool seconds);

enum class SettledBy {
    Date,       // the date reads one way only (year first, a day over 12, day equal to month)
    FileTimes,  // two readings, of which the report's own times rule out one
};
std::string_view SettledByName(SettledBy settledBy);  // "date", "file times"

struct HeaderTime {
    // The reading, when exactly one is left; then the time is certain.
    std::optional<std::string> iso;
    std::optional<SettledBy> settledBy;  // set with `iso`
    // Every reading of the text in ISO, day first before month first: one
    // when the date settles it, two when day and month can be read both
    // ways, none when the date or time cannot be.
    std::vector<std::string> readings;
    bool Certain() const { return iso.has_value(); }
};

// The slack given to every comparison with a file time: the report's times
// are the making machine's local time, the report file's the reader's.
inline constexpr std::int64_t kTimeZoneSlackSeconds = 24 * 60 * 60;

// The header's time, or nothing when the header holds none. `fileModified`
// is the report file's last write, in seconds since 1970-01-01 UTC, where
// the reader has the file.
std::optional<HeaderTime> ReadHeaderTime(const Report& report, std::optional<std::int64_t> fileModified);

}  // namespace report_model
