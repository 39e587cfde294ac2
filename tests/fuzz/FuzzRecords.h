// What several fuzz targets draw from their input alike: texts of any UTF-16
// units, calendar times of any 16-bit fields, a directory entry and an
// adapter's numbers, field by field in the order the records declare them
// (the seeds under corpus/ are read in that order); and wide printf text to
// compare the report's fixed layouts with.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cwchar>
#include <string>

#include "FuzzCheck.h"
#include "format/AdapterText.h"
#include "format/EntryText.h"
#include "format/InstallationRecord.h"

namespace fuzzrecords {

// Up to `maxLength` units, any value, lone surrogates and NULs included.
inline std::wstring AnyWideText(FuzzedDataProvider& input, std::size_t maxLength) {
    std::wstring text;
    const std::size_t length = input.ConsumeIntegralInRange<std::size_t>(0, maxLength);
    for (std::size_t i = 0; i < length && input.remaining_bytes() > 0; ++i)
        text.push_back(static_cast<wchar_t>(input.ConsumeIntegral<std::uint16_t>()));
    return text;
}

// SYSTEMTIME's fields are 16-bit: any value each.
inline CalendarTime AnyCalendarTime(FuzzedDataProvider& input) {
    CalendarTime time;
    time.day = input.ConsumeIntegral<std::uint16_t>();
    time.month = input.ConsumeIntegral<std::uint16_t>();
    time.year = input.ConsumeIntegral<std::uint16_t>();
    time.hour = input.ConsumeIntegral<std::uint16_t>();
    time.minute = input.ConsumeIntegral<std::uint16_t>();
    time.second = input.ConsumeIntegral<std::uint16_t>();
    return time;
}

// What the C runtime's swprintf makes of `format`: the text the report's
// own formatting must equal.
inline std::wstring Printed(const wchar_t* format, auto... values) {
    wchar_t text[256];
    const int length = std::swprintf(text, 256, format, values...);
    FUZZ_CHECK(length >= 0);
    return std::wstring(text, static_cast<std::size_t>(length));
}

// An access list's state, error code and up to four entries, each drawn by
// `drawEntry` (targets read an entry's mask and account in their own order).
template <class DrawEntry>
AccessListRecord DrawAccessList(FuzzedDataProvider& input, DrawEntry drawEntry) {
    AccessListRecord list;
    list.state = static_cast<AccessListState>(input.ConsumeIntegralInRange<int>(0, 3));
    list.errorCode = input.ConsumeIntegral<std::uint32_t>();
    const std::size_t count = input.ConsumeIntegralInRange<std::size_t>(0, 4);
    for (std::size_t i = 0; i < count; ++i) list.entries.push_back(drawEntry(input));
    return list;
}

// How a target draws an entry's times and texts; the numbers and the
// choices (an access list or not, a content excerpt or not) are drawn alike.
struct EntryDrawing {
    CalendarTime (*time)(FuzzedDataProvider&);
    std::wstring (*name)(FuzzedDataProvider&);
    std::wstring (*productVersion)(FuzzedDataProvider&);
    AccessListRecord (*accessList)(FuzzedDataProvider&);
    std::wstring (*contentLine)(FuzzedDataProvider&);
};

inline DirectoryEntryRecord DrawEntry(FuzzedDataProvider& input, const EntryDrawing& how) {
    DirectoryEntryRecord entry;
    entry.attributes = input.ConsumeIntegral<std::uint32_t>();
    entry.sizeLow = input.ConsumeIntegral<std::uint32_t>();
    entry.created = how.time(input);
    entry.written = how.time(input);
    entry.name = how.name(input);
    entry.productVersion = how.productVersion(input);
    if (input.ConsumeBool()) entry.accessList = how.accessList(input);
    if (input.ConsumeBool()) entry.content = ContentExcerptRecord{input.ConsumeBool(), how.contentLine(input)};
    return entry;
}

// An adapter's fields after its texts and address, each any value.
inline void DrawAdapterNumbers(FuzzedDataProvider& input, AdapterRecord& adapter) {
    adapter.flags = input.ConsumeIntegral<std::uint32_t>();
    adapter.mtu = input.ConsumeIntegral<std::uint32_t>();
    adapter.ifType = input.ConsumeIntegral<std::uint32_t>();
    adapter.operStatus = input.ConsumeIntegral<std::uint32_t>();
    adapter.ipv6IfIndex = input.ConsumeIntegral<std::uint32_t>();
    for (std::uint32_t& zone : adapter.zoneIndices) zone = input.ConsumeIntegral<std::uint32_t>();
}

}  // namespace fuzzrecords
