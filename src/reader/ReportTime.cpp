#include "reader/ReportTime.h"

#include <algorithm>
#include <array>
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
    bool seconds = true;  // false for a time printed to the minute
    bool real = true;     // false for an hour that the clock it names does not have
};

// The words locales print for before and after noon on a 12-hour clock, as
// Windows gives them, folded (FoldedMarker): "AM", "a.m.", "a. m." (Spanish),
// Korean, Chinese, Japanese, Greek, Arabic, Persian, Turkish, Vietnamese,
// Albanian. Korean, Chinese and Japanese put theirs before the time.
struct Designator {
    std::string_view word;
    bool afternoon;
};
constexpr std::array<Designator, 24> kDesignators{{
    {"am", false}, {"pm", true},                                              // English, Spanish "a. m."
    {"\xEC\x98\xA4\xEC\xA0\x84", false}, {"\xEC\x98\xA4\xED\x9B\x84", true},  // Korean
    {"\xE4\xB8\x8A\xE5\x8D\x88", false}, {"\xE4\xB8\x8B\xE5\x8D\x88", true},  // Chinese
    {"\xE5\x8D\x88\xE5\x89\x8D", false}, {"\xE5\x8D\x88\xE5\xBE\x8C", true},  // Japanese
    {"\xCF\x80\xCE\xBC", false}, {"\xCE\xBC\xCE\xBC", true},                  // Greek, small letters
    {"\xCE\xA0\xCE\x9C", false}, {"\xCE\x9C\xCE\x9C", true},                  // Greek, capitals
    {"\xD8\xB5", false}, {"\xD9\x85", true},                                  // Arabic
    {"\xD9\x82\xD8\xB8", false}, {"\xD8\xA8\xD8\xB8", true},                  // Persian "ق.ظ", "ب.ظ"
    {"\xC3\xB6\xC3\xB6", false}, {"\xC3\xB6s", true},                         // Turkish, small letters
    {"\xC3\x96\xC3\x96", false}, {"\xC3\x96s", true},                         // Turkish, capitals ("ÖS")
    {"sa", false}, {"ch", true},                                              // Vietnamese
    {"pd", false}, {"md", true},                                              // Albanian
}};

// Bulgarian prints "г." (year) after the date and "ч." (hours) after the time.
constexpr std::string_view kYearWord = "\xD0\xB3.";
constexpr std::string_view kHoursWord = "\xD1\x87";  // folded

// A marker's words as one: no full stop, no space, Latin letters in lower
// case ("P. M." is "pm").
std::string FoldedMarker(std::string_view marker) {
    std::string folded;
    for (char c : marker)
        if (c != '.' && c != ' ') folded += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return folded;
}

// Whether a folded marker says afternoon; nothing for another word.
std::optional<bool> ReadDesignator(std::string_view folded) {
    for (const Designator& designator : kDesignators)
        if (designator.word == folded) return designator.afternoon;
    return std::nullopt;
}

// "19:50:05", "19:50", "19.50.05" (Finnish): hours, minutes and seconds
// when printed.
std::optional<ClockTime> ReadClockNumbers(std::string_view token) {
    const char separator = SeparatorOf(token);
    if (separator != ':' && separator != '.') return std::nullopt;
    if (const auto fields = ReadNumbers(token, separator, 3, 2))
        return ClockTime{(*fields)[0].value, (*fields)[1].value, (*fields)[2].value};
    if (const auto fields = ReadNumbers(token, separator, 2, 2))
        return ClockTime{(*fields)[0].value, (*fields)[1].value, 0, false};
    return std::nullopt;
}

// The clock read with the markers around it, folded: a designator before
// it ("오후 7:50:05") or after it ("7:50:05 PM", "7:50:05 p. m."), or none.
std::optional<ClockTime> ReadClock(std::string_view token, const std::string& before, std::string after) {
    auto clock = ReadClockNumbers(token);
    if (!clock) return std::nullopt;
    if (after == kHoursWord) after.clear();
    if (before.empty() && after.empty()) return clock;
    if (!before.empty() && !after.empty()) return std::nullopt;
    const auto afternoon = ReadDesignator(before.empty() ? after : before);
    if (!afternoon) return std::nullopt;
    // A 12-hour clock reads 12 AM, 1 AM ... 11 PM; 0 and 13 are no hour of it.
    clock->real = clock->hour >= 1 && clock->hour <= 12;
    clock->hour = clock->hour % 12 + (*afternoon ? 12 : 0);
    return clock;
}

// The no-break spaces locales put inside their markers ("p.\u00A0m.").
constexpr std::array<std::string_view, 2> kNoBreakSpaces{"\xC2\xA0", "\xE2\x80\xAF"};

// The text with each no-break space made a plain one.
std::string WithPlainSpaces(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        const auto noBreak = std::find_if(kNoBreakSpaces.begin(), kNoBreakSpaces.end(),
                                          [&](std::string_view space) { return text.starts_with(space); });
        const bool found = noBreak != kNoBreakSpaces.end();
        plain += found ? ' ' : text.front();
        text.remove_prefix(found ? noBreak->size() : 1);
    }
    return plain;
}

// The words of a text cut at spaces, no-break spaces included.
std::vector<std::string> Words(std::string_view text) {
    const std::string spaced = WithPlainSpaces(text);
    std::vector<std::string> words;
    std::string_view rest = spaced;
    while (!rest.empty()) {
        const std::size_t start = rest.find_first_not_of(' ');
        if (start == std::string_view::npos) break;
        rest.remove_prefix(start);
        const std::size_t end = rest.find(' ');
        words.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end);
    }
    return words;
}

bool StartsWithDigit(std::string_view word) {
    return !word.empty() && word.front() >= '0' && word.front() <= '9';
}

// The date at the start of `words`: one word ("23.11.2026"), or one a word
// after each full stop ("2026. 11. 23.", Hungarian; "23. 11. 2026",
// Slovak), then Bulgarian's "г." if there. `next` is left after it.
std::optional<std::vector<CalendarTime>> ReadDate(const std::vector<std::string>& words, std::size_t& next) {
    if (words.empty()) return std::nullopt;
    std::string date = words[0];
    next = 1;
    while (date.back() == '.' && std::count(date.begin(), date.end(), '.') < 3 && next < words.size() &&
           StartsWithDigit(words[next]))
        date += words[next++];
    if (next < words.size() && words[next] == kYearWord) ++next;
    return DateOrders(date);
}

// The words from `first` to `last` as one folded marker.
std::string MarkerOf(const std::vector<std::string>& words, std::size_t first, std::size_t last) {
    std::string marker;
    for (std::size_t i = first; i < last; ++i) marker += words[i];
    return FoldedMarker(marker);
}

// The time after the date: a clock with a marker before or after it, one
// written onto it after a full stop ("7:50:05.MD", Albanian).
std::optional<ClockTime> ReadTime(const std::vector<std::string>& words, std::size_t first) {
    std::size_t at = first;
    while (at < words.size() && !StartsWithDigit(words[at])) ++at;
    if (at == words.size()) return std::nullopt;
    std::string_view clock = words[at];
    std::string after = MarkerOf(words, at + 1, words.size());
    const std::size_t attached = SeparatorOf(clock) == ':' ? clock.find('.') : std::string_view::npos;
    if (attached != std::string_view::npos) {
        if (!after.empty()) return std::nullopt;
        after = FoldedMarker(clock.substr(attached + 1));
        if (after.empty()) return std::nullopt;
        clock = clock.substr(0, attached);
    }
    return ReadClock(clock, MarkerOf(words, first, at), after);
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

std::string HeaderIso(const CalendarTime& time, bool seconds) {
    std::string iso = IsoText(time);
    if (!seconds) iso.resize(iso.size() - 3);
    return iso;
}

std::optional<HeaderReadings> ReadingsOfHeader(std::string_view headerText) {
    constexpr std::string_view lead = lineform::kHeaderLead.Narrow();
    if (headerText.substr(0, lead.size()) != lead) return std::nullopt;
    const std::vector<std::string> words = Words(headerText.substr(lead.size()));
    std::size_t next = 0;
    auto dates = ReadDate(words, next);
    const auto clock = dates ? ReadTime(words, next) : std::nullopt;
    if (!clock) return std::nullopt;
    HeaderReadings header{{}, clock->seconds};
    for (CalendarTime& date : *dates) {
        date.hour = clock->hour;
        date.minute = clock->minute;
        date.second = clock->second;
        if (clock->real && IsRealCalendarTime(date)) header.readings.push_back(date);
    }
    return header;
}

std::string_view SettledByName(SettledBy settledBy) {
    return settledBy == SettledBy::Date ? "date" : "file times";
}

std::optional<HeaderTime> ReadHeaderTime(const Report& report, std::optional<std::int64_t> fileModified) {
    if (!report.header.present) return std::nullopt;
    const auto header = ReadingsOfHeader(report.header.text);
    if (!header) return std::nullopt;
    const std::vector<CalendarTime>& readings = header->readings;
    HeaderTime time;
    for (const CalendarTime& reading : readings) time.readings.push_back(HeaderIso(reading, header->seconds));
    if (readings.size() == 1) {
        time.iso = time.readings.front();
        time.settledBy = SettledBy::Date;
        return time;
    }
    const std::optional<std::int64_t> listed = readings.empty() ? std::nullopt : LatestListedTime(report);
    const auto possible = [&](const CalendarTime& reading) {
        const std::int64_t seconds = SecondsOf(reading);
        return (!listed || seconds + kTimeZoneSlackSeconds >= *listed) &&
               (!fileModified || seconds <= *fileModified + kTimeZoneSlackSeconds);
    };
    const auto left = std::count_if(readings.begin(), readings.end(), possible);
    if (readings.size() == 2 && left == 1) {
        time.iso = time.readings[possible(readings.front()) ? 0 : 1];
        time.settledBy = SettledBy::FileTimes;
    }
    return time;
}

}  // namespace report_model
