#include "format/EntryText.h"

#include "format/NumberText.h"

namespace {
// FILE_READ_DATA | FILE_READ_ATTRIBUTES
constexpr std::uint32_t kReadBits = 0x81;
// FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_WRITE_EA | FILE_WRITE_ATTRIBUTES
constexpr std::uint32_t kWriteBits = 0x116;
// FILE_EXECUTE | FILE_READ_DATA
constexpr std::uint32_t kExecuteBits = 0x21;

std::wstring TwoDigits(unsigned value) { return numtext::PadLeft(numtext::Unsigned<wchar_t>(value), 2, L'0'); }

std::wstring_view AceKindText(AceKind kind) {
    switch (kind) {
        case AceKind::Allow: return L" Allow ";
        case AceKind::Deny: return L" Deny ";
        case AceKind::Other: break;
    }
    return L" Unknown Right ";
}
}  // namespace

std::wstring FormatEntryHead(std::uint32_t attributes, std::uint32_t sizeLow) {
    std::wstring text;
    AppendEntryHead(text, attributes, sizeLow);
    return text;
}

std::wstring FormatCalendarTime(const CalendarTime& time) {
    return TwoDigits(time.day) + L'/' + TwoDigits(time.month) + L'/' +
           numtext::PadLeft(numtext::Unsigned<wchar_t>(time.year), 4, L'0') + L"  " + TwoDigits(time.hour) + L':' +
           TwoDigits(time.minute) + L':' + TwoDigits(time.second);
}

std::wstring NormaliseVersion(std::wstring_view version) {
    std::wstring text;
    for (wchar_t c : version) {
        if (c == L' ') continue;
        text.push_back(c == L',' ? L'.' : c);
    }
    return text;
}

std::wstring FormatAccessLetters(AceKind kind, std::uint32_t mask) {
    if (kind == AceKind::Other) return {};
    // Allow entries must grant every bit of a position, deny entries any bit.
    const auto shows = [kind, mask](std::uint32_t bits) {
        return kind == AceKind::Allow ? (mask & bits) == bits : (mask & bits) != 0;
    };
    return {shows(kReadBits) ? L'R' : L' ', shows(kWriteBits) ? L'W' : L' ', shows(kExecuteBits) ? L'X' : L' '};
}

std::wstring FormatAccessEntry(AceKind kind, const std::optional<AccountName>& account, std::uint32_t mask) {
    std::wstring text(AceKindText(kind));
    if (!account) return text + L";";
    if (!account->domain.empty()) text += account->domain + L"\\";
    text += account->name;
    text += L" [" + FormatAccessLetters(kind, mask) + L"];";
    return text;
}

std::wstring FormatApiFailure(std::wstring_view function, std::uint32_t code) {
    return L" failed " + std::wstring(function) + L" (" + numtext::Signed<wchar_t>(static_cast<std::int32_t>(code)) +
           L")";
}

std::string CleanExcerpt(std::string_view line) {
    std::string text(line);
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 32) c = '?';
    }
    return text;
}

std::wstring FormatContentPart(std::wstring_view excerpt) {
    return L"\n" + std::wstring(lineform::kContentLead.Wide()) + std::wstring(excerpt) + lineform::kContentEnd.wide;
}

bool IsDotEntry(std::wstring_view name) { return name == L"." || name == L".."; }
