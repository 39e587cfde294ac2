#include "reader/ReportTime.h"

#include <algorithm>
#include <chrono>

#include "format/LineForms.h"
#include "reader/ReportModelText.h"

namespace report_model {

namespace {

// A run of 1 to `maxWidth` digits, and how many there were.
struct Number {
    unsigned value = 0;
    std::size_t width = 0;
};

std::optional<Number> ReadNumber(std::string_view text, std::size_t maxWidth) {
    if (text.empty() || text.size() > maxWidth) return std::nullopt;
    Number number{0, text.size()};
    for (char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        number.value = number.value * 10 + static_cast<unsigned>(c - '0');
    }
    return number;
}

// `text` cut at each `separator`, or nothing unless there are `count` parts
// of 1 to `maxWidth` digits each.
std::optional<std::vector<Number>> ReadNumbers(std::string_view text, char separator, std::size_t count,
                                               std::size_t maxWidth) {
    std::vector<Number> numbers;
    for (;;) {
        const std::size_t end = text.find(separator);
        const auto number = ReadNumber(text.substr(0, end), maxWidth);
        if (!number) return std::nullopt;
        numbers.push_back(*number);
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
    if (numbers.size() != count) return std::nullopt;
    return numbers;
}

// The first character that is not a digit: what the locale puts between
// the fields.
char SeparatorOf(std::string_view text) {
    const auto at = std::find_if(text.begin(), text.end(), [](char c) { return c < '0' || c > '9'; });
    return at == text.end() ? '\0' : *at;
}

// "23/11/2026", "11/23/26", "23.11.2026", "2026.11.23." (a trailing full
// stop, as Hungarian has it), "2026-11-23"...: its three numbers, or nothing.
std::optional<std::vector<Number>> ReadDateFields(std::string_view token) {
    const char separator = SeparatorOf(token);
    if (separator != '/' && separator != '.' && separator != '-') return std::nullopt;
    if (separator == '.' && token.size() > 1 && token.back() == '.') token.remove_suffix(1);
    return ReadNumbers(token, separator, 3, 4);
}

// A two-digit year as the C library reads %y: 69 to 99 are 1969 to 1999,
// 00 to 68 are 2000 to 2068.
unsigned FullYear(const Number& year) {
    if (year.width > 2) return year.value;
    return year.value >= 69 ? 1900 + year.value : 2000 + year.value;
}

// Day and month of a date whose year comes last: day first, then month
// first, once when both read the same.
std::vector<CalendarTime> DayMonthOrders(const std::vector<Number>& date) {
    const unsigned year = FullYear(date[2]);
    std::vector<CalendarTime> orders{{date[0].value, date[1].value, year, 0, 0, 0}};
    if (date[0].value != date[1].value) orders.push_back({date[1].value, date[0].value, year, 0, 0, 0});
    return orders;
}

// The dates a token can be, before any check of the calendar; nothing when
// it is not a date in a known form.
std::optional<std::vector<CalendarTime>> DateOrders(std::string_view token) {
    const auto date = ReadDateFields(token);
    if (!date) return std::nullopt;
    const std::vector<Number>& d = *date;
    if (d[0].width == 4 && d[1].width <= 2 && d[2].width <= 2)
        return std::vector<CalendarTime>{{d[2].value, d[1].value, d[0].value, 0, 0, 0}};
    if (d[0].width <= 2 && d[1].width <= 2 && (d[2].width == 4 || d[2].width <= 2)) return DayMonthOrders(d);
    return std::nullopt;
}

struct ClockTime {
    unsigned hour = 0, minute = 0, second = 0;
    bool real = true;  // false for an hour that the clock it names does not have
};

// "AM", "pm", "a.m.", "P.M.": whether afternoon; nothing for another word.
std::optional<bool> ReadDesignator(std::string_view token) {
    std::string letters;
    for (char c : token)
        if (c != '.') letters += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    if (letters == "am") return false;
    if (letters == "pm") return true;
    return std::nullopt;
}

// "19:50:05", "9:12:00" with "AM" or "PM", "19.50.05" (Finnish).
std::optional<ClockTime> ReadClock(std::string_view token, std::optional<std::string_view> designator) {
    const char separator = SeparatorOf(token);
    if (separator != ':' && separator != '.') return std::nullopt;
    const auto fields = ReadNumbers(token, separator, 3, 2);
    if (!fields) return std::nullopt;
    ClockTime clock{(*fields)[0].value, (*fields)[1].value, (*fields)[2].value};
    if (!designator) return clock;
    const auto afternoon = ReadDesignator(*designator);
    if (!afternoon) return std::nullopt;
    // A 12-hour clock reads 12 AM, 1 AM ... 11 PM; 0 and 13 are no hour of it.
    clock.real = clock.hour >= 1 && clock.hour <= 12;
    clock.hour = clock.hour % 12 + (*afternoon ? 12 : 0);
    return clock;
}

std::vector<std::string_view> Words(std::string_view text) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::size_t start = text.find_first_not_of(' ');
        if (start == std::string_view::npos) break;
        text.remove_prefix(start);
        const std::size_t end = text.find(' ');
        words.push_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end);
    }
    return words;
}

// Seconds since 1970-01-01 of a real calendar time, taken as UTC: the
// report's local times compared among themselves and, with slack, with a
// file's time.
std::int64_t SecondsOf(const CalendarTime& t) {
    using namespace std::chrono;
    const sys_days day{year{static_cast<int>(t.year)} / month{t.month} / std::chrono::day{t.day}};
    return static_cast<std::int64_t>(day.time_since_epoch().count()) * 86400 + t.hour * 3600 + t.minute * 60 +
           t.second;
}

// The latest time a listed entry was written or created: the report was
// made after it.
std::optional<std::int64_t> LatestListedTime(const Report& report) {
    std::optional<std::int64_t> latest;
    const auto consider = [&](const CalendarStamp& stamp) {
        const CalendarTime time = stamp.Time();
        if (!IsRealCalendarTime(time)) return;
        latest = std::max(latest.value_or(SecondsOf(time)), SecondsOf(time));
    };
    for (const Directory& directory : report.installation.directories)
        for (const DirectoryEntry& entry : directory.entries) {
            consider(entry.created);
            consider(entry.written);
        }
    return latest;
}

}  // namespace

bool IsRealCalendarTime(const CalendarTime& time) {
    using namespace std::chrono;
    // Clamped first: the calendar types hold no more than these.
    const year_month_day date{year{static_cast<int>(std::min(time.year, 99999u))}, month{std::min(time.month, 255u)},
                              day{std::min(time.day, 255u)}};
    return time.year >= 1 && time.year <= 9999 && date.ok() && time.hour < 24 && time.minute < 60 && time.second < 60;
}

// Written into place: every entry of a report gets two.
std::string IsoText(const CalendarTime& time) {
    std::string iso = "0000-00-00T00:00:00";
    const auto put = [&](std::size_t end, unsigned value, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i, value /= 10) iso[end - i - 1] = static_cast<char>('0' + value % 10);
    };
    put(4, time.year, 4);
    put(7, time.month, 2);
    put(10, time.day, 2);
    put(13, time.hour, 2);
    put(16, time.minute, 2);
    put(19, time.second, 2);
    return iso;
}

std::optional<std::vector<CalendarTime>> ReadingsOfHeader(std::string_view headerText) {
    constexpr std::string_view lead = lineform::kHeaderLead.Narrow();
    if (headerText.substr(0, lead.size()) != lead) return std::nullopt;
    const std::vector<std::string_view> words = Words(headerText.substr(lead.size()));
    if (words.size() != 2 && words.size() != 3) return std::nullopt;
    auto dates = DateOrders(words[0]);
    const auto clock = ReadClock(words[1], words.size() == 3 ? std::optional(words[2]) : std::nullopt);
    if (!dates || !clock) return std::nullopt;
    std::vector<CalendarTime> readings;
    for (CalendarTime& date : *dates) {
        date.hour = clock->hour;
        date.minute = clock->minute;
        date.second = clock->second;
        if (clock->real && IsRealCalendarTime(date)) readings.push_back(date);
    }
    return readings;
}

std::string_view SettledByName(SettledBy settledBy) {
    return settledBy == SettledBy::Date ? "date" : "file times";
}

std::optional<HeaderTime> ReadHeaderTime(const Report& report, std::optional<std::int64_t> fileModified) {
    if (!report.header.present) return std::nullopt;
    const auto readings = ReadingsOfHeader(report.header.text);
    if (!readings) return std::nullopt;
    HeaderTime time;
    for (const CalendarTime& reading : *readings) time.readings.push_back(IsoText(reading));
    if (readings->size() == 1) {
        time.iso = time.readings.front();
        time.settledBy = SettledBy::Date;
        return time;
    }
    const std::optional<std::int64_t> listed = readings->empty() ? std::nullopt : LatestListedTime(report);
    const auto possible = [&](const CalendarTime& reading) {
        const std::int64_t seconds = SecondsOf(reading);
        return (!listed || seconds + kTimeZoneSlackSeconds >= *listed) &&
               (!fileModified || seconds <= *fileModified + kTimeZoneSlackSeconds);
    };
    const auto left = std::count_if(readings->begin(), readings->end(), possible);
    if (readings->size() == 2 && left == 1) {
        time.iso = time.readings[possible(readings->front()) ? 0 : 1];
        time.settledBy = SettledBy::FileTimes;
    }
    return time;
}

}  // namespace report_model
