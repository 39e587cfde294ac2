// The small pieces the reader and the writer of the model share: text
// conversions, numbers in the report's exact forms, the report's time form.
#include "reader/ReportModelText.h"

#include <array>
#include <limits>

#include "format/EntryText.h"
#include "format/NumberText.h"
#include "format/ReportVerdict.h"
#include "reader/ReportTime.h"

namespace report_model {

namespace {
// A whole report goes through here. Reports are ASCII but for a name here
// and there, so that case comes first, in loops without branches that the
// compiler makes vector code of; the others are sized for the worst case
// and written in place (appending byte by byte took most of the reading).
// The code units are `unitAt(i)` for i below `count`: from text, or straight
// from a file's little-endian bytes.
template <typename UnitAt>
std::string Utf8FromUnits(std::size_t count, UnitAt unitAt) {
    char16_t allBits = 0;
    for (std::size_t i = 0; i < count; ++i) allBits |= unitAt(i);
    if (allBits < 0x80) {
        std::string ascii(count, '\0');
        // Through a pointer: written as ascii[i], each char could change the
        // string itself for all the compiler knows, and no vector code comes.
        char* out = ascii.data();
        for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<char>(unitAt(i));
        return ascii;
    }
    std::size_t bound = count;
    for (std::size_t i = 0; i < count; ++i) bound += (unitAt(i) >= 0x80) + (unitAt(i) >= 0x800);
    std::string out(bound, '\0');
    char* p = out.data();
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t c = unitAt(i);
        if (c < 0x80) {
            *p++ = static_cast<char>(c);
            continue;
        }
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < count && unitAt(i + 1) >= 0xDC00 && unitAt(i + 1) <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (unitAt(i + 1) - 0xDC00);
            ++i;
        }
        if (c < 0x800) {
            *p++ = static_cast<char>(0xC0 | c >> 6);
            *p++ = static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {  // lone surrogates land here too
            *p++ = static_cast<char>(0xE0 | c >> 12);
            *p++ = static_cast<char>(0x80 | (c >> 6 & 0x3F));
            *p++ = static_cast<char>(0x80 | (c & 0x3F));
        } else {
            *p++ = static_cast<char>(0xF0 | c >> 18);
            *p++ = static_cast<char>(0x80 | (c >> 12 & 0x3F));
            *p++ = static_cast<char>(0x80 | (c >> 6 & 0x3F));
            *p++ = static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    out.resize(static_cast<std::size_t>(p - out.data()));
    return out;
}
}  // namespace

std::string Utf8FromUtf16(std::u16string_view text) {
    return Utf8FromUnits(text.size(), [text](std::size_t i) { return text[i]; });
}

std::string Utf8FromUtf16LE(std::string_view bytes) {
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    return Utf8FromUnits(bytes.size() / 2,
                         [data](std::size_t i) { return static_cast<char16_t>(data[2 * i] | data[2 * i + 1] << 8); });
}

// A surrogate is ED A0..BF xx in that form; well-formed UTF-8 never has
// ED followed by A0..BF.
std::string WithoutLoneSurrogates(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool surrogate = static_cast<unsigned char>(text[i]) == 0xED && i + 2 < text.size() &&
                               static_cast<unsigned char>(text[i + 1]) >= 0xA0 &&
                               static_cast<unsigned char>(text[i + 1]) <= 0xBF;
        if (!surrogate) {
            out += text[i];
            continue;
        }
        out += "\xEF\xBF\xBD";
        i += 2;
    }
    return out;
}

// Only ever given what Utf8FromUtf16 made (or ASCII), so the forms are
// well-formed; anything else is still decoded without reading past the end.
std::u16string Utf16FromUtf8(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const unsigned char lead = static_cast<unsigned char>(text[i]);
        std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        if (i + length > text.size()) length = 1;
        std::uint32_t c = length == 1 ? lead : length == 2 ? lead & 0x1F : length == 3 ? lead & 0x0F : lead & 0x07;
        for (std::size_t k = 1; k < length; ++k) c = c << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        if (c >= 0x10000) {
            c -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(c));
        }
        i += length;
    }
    return out;
}

std::string Narrow(std::wstring_view ascii) {
    std::string out;
    out.reserve(ascii.size());
    for (wchar_t c : ascii) out.push_back(static_cast<char>(c));
    return out;
}

std::optional<std::uint64_t> ParseUnsigned(std::string_view text, std::uint64_t max, unsigned base) {
    if (text.empty() || text.size() > 20) return std::nullopt;
    if (text.size() > 1 && text[0] == '0') return std::nullopt;  // the report prints no leading zeros
    std::uint64_t value = 0;
    for (char c : text) {
        unsigned digit;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (base == 16 && c >= 'a' && c <= 'f')
            digit = static_cast<unsigned>(c - 'a' + 10);
        else
            return std::nullopt;
        if (digit >= base) return std::nullopt;
        if (value > (max - digit) / base) return std::nullopt;
        value = value * base + digit;
    }
    return value;
}

std::optional<std::int64_t> ParseSigned(std::string_view text, std::int64_t min, std::int64_t max) {
    const bool negative = !text.empty() && text[0] == '-';
    if (negative) text.remove_prefix(1);
    const std::uint64_t limit =
        negative ? static_cast<std::uint64_t>(-(min + 1)) + 1 : static_cast<std::uint64_t>(max);
    const auto magnitude = ParseUnsigned(text, limit, 10);
    if (!magnitude || (negative && *magnitude == 0)) return std::nullopt;
    if (!negative) return static_cast<std::int64_t>(*magnitude);
    return *magnitude == static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) + 1
               ? std::numeric_limits<std::int64_t>::min()
               : -static_cast<std::int64_t>(*magnitude);
}

std::string UnsignedText(std::uint64_t value, unsigned base) {
    return numtext::Unsigned<char>(value, base);
}

std::string SignedText(std::int64_t value) {
    return numtext::Signed<char>(value);
}

namespace {
bool Digits(std::string_view text, std::size_t from, std::size_t count, unsigned& value) {
    value = 0;
    for (std::size_t i = from; i < from + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        value = value * 10 + static_cast<unsigned>(text[i] - '0');
    }
    return true;
}
}  // namespace

std::optional<CalendarTime> ParseReportTime(std::string_view printed) {
    // "dd/mm/yyyy  hh:mm:ss"
    if (printed.size() != 20 || printed[2] != '/' || printed[5] != '/' || printed[10] != ' ' ||
        printed[11] != ' ' || printed[14] != ':' || printed[17] != ':')
        return std::nullopt;
    CalendarTime time;
    if (!Digits(printed, 0, 2, time.day) || !Digits(printed, 3, 2, time.month) || !Digits(printed, 6, 4, time.year) ||
        !Digits(printed, 12, 2, time.hour) || !Digits(printed, 15, 2, time.minute) ||
        !Digits(printed, 18, 2, time.second))
        return std::nullopt;
    return time;
}

std::optional<CalendarStamp> CalendarStamp::FromPrinted(std::string_view printed) {
    const auto time = ParseReportTime(printed);
    if (!time) return std::nullopt;
    // The form's two and four digits fit: 99 and 9999 at most.
    CalendarStamp stamp;
    stamp.year_ = static_cast<std::uint16_t>(time->year);
    stamp.day_ = static_cast<std::uint8_t>(time->day);
    stamp.month_ = static_cast<std::uint8_t>(time->month);
    stamp.hour_ = static_cast<std::uint8_t>(time->hour);
    stamp.minute_ = static_cast<std::uint8_t>(time->minute);
    stamp.second_ = static_cast<std::uint8_t>(time->second);
    return stamp;
}

CalendarStamp::Text CalendarStamp::PrintedText() const {
    return Filled("dd/mm/yyyy  hh:mm:ss", {2, 5, 10, 14, 17, 20});
}

CalendarTime CalendarStamp::Time() const {
    return {day_, month_, year_, hour_, minute_, second_};
}

std::optional<CalendarStamp::Text> CalendarStamp::IsoText() const {
    if (!IsRealCalendarTime(Time())) return std::nullopt;
    return Filled("yyyy-mm-ddThh:mm:ss", {10, 7, 4, 13, 16, 19});
}

std::optional<std::string> CalendarStamp::Iso() const {
    const auto text = IsoText();
    if (!text) return std::nullopt;
    return std::string(*text);
}

// The form with its numbers written in, each ending where `ends` says (day,
// month, year, hour, minute, second), the year in four digits, the others
// in two, two digits at a time: no text per number, as a large report
// prints hundreds of thousands of these.
CalendarStamp::Text CalendarStamp::Filled(std::string_view form, const std::array<std::size_t, 6>& ends) const {
    static constexpr std::array<char, 200> kPairs = [] {
        std::array<char, 200> pairs{};
        for (std::size_t n = 0; n < 100; ++n) {
            pairs[2 * n] = static_cast<char>('0' + n / 10);
            pairs[2 * n + 1] = static_cast<char>('0' + n % 10);
        }
        return pairs;
    }();
    Text text;
    text.size_ = form.copy(text.chars_.data(), text.chars_.size());
    const auto put = [&](std::size_t end, unsigned number) {
        text.chars_[end - 2] = kPairs[2 * (number % 100)];
        text.chars_[end - 1] = kPairs[2 * (number % 100) + 1];
    };
    put(ends[0], day_);
    put(ends[1], month_);
    put(ends[2], year_);
    put(ends[2] - 2, year_ / 100);
    put(ends[3], hour_);
    put(ends[4], minute_);
    put(ends[5], second_);
    return text;
}

std::string IsoFromReportTime(std::string_view printed) {
    const auto stamp = CalendarStamp::FromPrinted(printed);
    return stamp ? stamp->Iso().value_or("") : std::string();
}

}  // namespace report_model
