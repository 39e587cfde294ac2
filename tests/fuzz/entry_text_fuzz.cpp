// The pieces of a directory entry's line: the head with attributes and size,
// the times, the version, the access letters and entries, the failure texts
// and, above all, the content excerpt, read from any file contents exactly as
// the listing reads it (fgets into an 80-byte buffer, cut at the first NUL)
// and cleaned. The fixed layouts are checked against the C runtime's own
// printf conversions, which the report's formats are written in.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string>

#include "FuzzCheck.h"
#include "FuzzRecords.h"
#include "format/EntryText.h"

namespace {

using fuzzrecords::AnyWideText;
using fuzzrecords::Printed;

void CheckHeadAndTimes(FuzzedDataProvider& input) {
    const auto attributes = input.ConsumeIntegral<std::uint32_t>();
    const auto sizeLow = input.ConsumeIntegral<std::uint32_t>();
    FUZZ_CHECK(FormatEntryHead(attributes, sizeLow) ==
               Printed(L"%08x %10d\t", attributes, static_cast<std::int32_t>(sizeLow)));

    // Any value of SYSTEMTIME's 16-bit fields must come out as printf has it.
    const CalendarTime time = fuzzrecords::AnyCalendarTime(input);
    FUZZ_CHECK(FormatCalendarTime(time) == Printed(L"%02u/%02u/%04u  %02u:%02u:%02u", time.day, time.month, time.year,
                                                   time.hour, time.minute, time.second));
}

void CheckVersion(FuzzedDataProvider& input) {
    const std::wstring version = AnyWideText(input, 64);
    const std::wstring normalised = NormaliseVersion(version);
    std::wstring expected;
    for (wchar_t c : version)
        if (c != L' ') expected.push_back(c == L',' ? L'.' : c);
    FUZZ_CHECK(normalised == expected);
}

void CheckAccess(FuzzedDataProvider& input) {
    const auto kind = static_cast<AceKind>(input.ConsumeIntegralInRange<int>(0, 2));
    const auto mask = input.ConsumeIntegral<std::uint32_t>();
    const std::wstring letters = FormatAccessLetters(kind, mask);
    if (kind == AceKind::Other) {
        FUZZ_CHECK(letters.empty());
    } else {
        // Allow: every bit of a position; deny: any bit of it.
        const auto shows = [&](std::uint32_t bits) {
            return kind == AceKind::Allow ? (mask & bits) == bits : (mask & bits) != 0;
        };
        FUZZ_CHECK(letters.size() == 3);
        FUZZ_CHECK(letters[0] == (shows(0x81) ? L'R' : L' '));
        FUZZ_CHECK(letters[1] == (shows(0x116) ? L'W' : L' '));
        FUZZ_CHECK(letters[2] == (shows(0x21) ? L'X' : L' '));
    }
    const std::wstring lead = kind == AceKind::Allow  ? L" Allow "
                              : kind == AceKind::Deny ? L" Deny "
                                                      : L" Unknown Right ";
    if (input.ConsumeBool()) {
        FUZZ_CHECK(FormatAccessEntry(kind, std::nullopt, mask) == lead + L";");
    } else {
        AccountName account{AnyWideText(input, 32), AnyWideText(input, 32)};
        const std::wstring who = account.domain.empty() ? account.name : account.domain + L"\\" + account.name;
        FUZZ_CHECK(FormatAccessEntry(kind, account, mask) == lead + who + L" [" + letters + L"];");
    }
    const auto code = input.ConsumeIntegral<std::uint32_t>();
    FUZZ_CHECK(FormatApiFailure(L"GetFileSecurity", code) ==
               Printed(L" failed %ls (%d)", L"GetFileSecurity", static_cast<std::int32_t>(code)));
}

// The excerpt of a file holding `contents`, read as the listing reads it.
void CheckExcerpt(const std::string& contents) {
    std::string copy = contents;  // fmemopen wants writable memory
    std::FILE* file = copy.empty() ? std::tmpfile() : fmemopen(copy.data(), copy.size(), "rb");
    FUZZ_CHECK(file != nullptr);
    char line[kExcerptBufferSize];
    const bool read = std::fgets(line, sizeof(line), file) != nullptr;
    std::fclose(file);
    FUZZ_CHECK(read == !contents.empty());
    if (!read) {
        FUZZ_CHECK(FormatContentPart(L"") == L"\n\t\t\t\tContent:\"\"");
        return;
    }
    const std::string raw(line, std::strlen(line));
    FUZZ_CHECK(raw.size() <= kExcerptBufferSize - 1);
    FUZZ_CHECK(contents.compare(0, raw.size(), raw) == 0);

    const std::string cleaned = CleanExcerpt(raw);
    FUZZ_CHECK(cleaned.size() == raw.size());
    for (std::size_t i = 0; i < raw.size(); ++i) {
        const auto byte = static_cast<unsigned char>(raw[i]);
        FUZZ_CHECK(cleaned[i] == (byte < 32 ? '?' : raw[i]));
    }
    // Whatever the bytes, the excerpt stays on its own line between its quotes.
    std::wstring wide;
    for (char c : cleaned) wide.push_back(static_cast<unsigned char>(c));
    FUZZ_CHECK(wide.find_first_of(L"\n\r\t") == std::wstring::npos);
    FUZZ_CHECK(FormatContentPart(wide) == L"\n\t\t\t\tContent:\"" + wide + L"\"");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    // The file's contents come first (any bytes, up to 512 of them), the
    // fields of the entry after them.
    const std::string contents = input.ConsumeRandomLengthString(512);
    CheckExcerpt(contents);
    CheckHeadAndTimes(input);
    CheckVersion(input);
    CheckAccess(input);
    const std::wstring name = AnyWideText(input, 4);
    FUZZ_CHECK(IsDotEntry(name) == (name == L"." || name == L".."));
    return 0;
}
