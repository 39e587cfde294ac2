// The text pieces of a directory entry's report line, made from plain values
// so that the layout is tested on any host; the Win32 side only gathers the
// values (see DirectoryListing.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "format/LineForms.h"
#include "format/NumberText.h"

// "%08x %10d\t": the attribute bits, then the low 32 bits of the size read as
// a signed number (sizes from 2 GiB show negative, from 4 GiB wrap).
std::wstring FormatEntryHead(std::uint32_t attributes, std::uint32_t sizeLow);
// The same appended to `out`, wide for the tool's writer, narrow for the
// reader that checks each line it reads against it.
template <typename Ch>
void AppendEntryHead(std::basic_string<Ch>& out, std::uint32_t attributes, std::uint32_t sizeLow) {
    numtext::AppendPadded<Ch>(out, attributes, 8, static_cast<Ch>('0'), 16);
    out += static_cast<Ch>(' ');
    numtext::AppendPadded<Ch>(out, static_cast<std::int32_t>(sizeLow), 10);
    out += static_cast<Ch>('\t');
}

// A local date and time as the fields of a calendar.
struct CalendarTime {
    unsigned day = 0;
    unsigned month = 0;
    unsigned year = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
};

// "dd/mm/yyyy  hh:mm:ss", day first, 24-hour clock.
std::wstring FormatCalendarTime(const CalendarTime& time);

// A version string without blanks and with "," turned into ".".
std::wstring NormaliseVersion(std::wstring_view version);

// The kinds of access-control entry that the list tells apart.
enum class AceKind { Allow, Deny, Other };

// The three positions between the brackets: "R", "W", "X" or a blank each.
// An allow entry needs all bits of a position, a deny entry any of them;
// other kinds show nothing.
std::wstring FormatAccessLetters(AceKind kind, std::uint32_t mask);

struct AccountName {
    std::wstring domain;
    std::wstring name;
};

// One entry of the access list: " Allow ", " Deny " or " Unknown Right ",
// then "DOMAIN\\name [RWX];", or just ";" when the account is unknown.
std::wstring FormatAccessEntry(AceKind kind, const std::optional<AccountName>& account, std::uint32_t mask);

inline constexpr std::wstring_view kAccessListHeading = lineform::kAccessList.Wide();  // " ACL:"
inline constexpr std::wstring_view kNullAccessList = L" NULL (Allow All)";
// What an entry that cannot be read shows.
inline constexpr std::wstring_view kUnreadableAccessEntry = L";";

// " failed <function> (<code>)", the code in signed decimal.
std::wstring FormatApiFailure(std::wstring_view function, std::uint32_t code);

// The first line of a file as fgets reads it into an 80-byte buffer.
inline constexpr std::size_t kExcerptBufferSize = 80;

// Control bytes (below 32, line ends included) become "?"; bytes from 128 up
// stay as they are, for the ANSI code page to convert.
std::string CleanExcerpt(std::string_view line);

inline constexpr std::wstring_view kUnableToOpen = L"!!!unable to open file!!!";

// "\n\t\t\t\tContent:\"" + excerpt + "\"": the excerpt on its own line.
std::wstring FormatContentPart(std::wstring_view excerpt);

// "." and "..", which get no content part.
bool IsDotEntry(std::wstring_view name);
