// Reports made by the program's writers from random records are read back
// by reportcheck's reader with no unrecognised line and every field equal to
// its record (tests/reader/WrittenReport.h says what is compared). Texts are
// drawn from letters, digits, blanks, dots and characters beyond ASCII: a
// value holding a line break, a tab or a line's own separators ("(", ")",
// "\", ":") cannot be told from the line around it, in any reader.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>

#include "../reader/WrittenReport.h"
#include "FuzzCheck.h"
#include "FuzzRecords.h"

namespace {

using namespace roundtrip;

constexpr wchar_t kAlphabet[] = L"aZ09 ._-\u00e9\u65e5";

std::wstring Text(FuzzedDataProvider& input, std::size_t maxLength, bool blanks = true) {
    std::wstring text;
    const std::size_t length = input.ConsumeIntegralInRange<std::size_t>(0, maxLength);
    for (std::size_t i = 0; i < length; ++i) {
        const wchar_t c = kAlphabet[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kAlphabet) - 2)];
        text.push_back(!blanks && c == L' ' ? L'_' : c);
    }
    return text;
}

std::string Ascii(FuzzedDataProvider& input, std::size_t maxLength) {
    std::string text;
    for (wchar_t c : Text(input, maxLength))
        if (c < 0x80) text.push_back(static_cast<char>(c));
    return text;
}

std::vector<std::uint8_t> Utf16Bytes(const std::wstring& text) {
    std::vector<std::uint8_t> bytes;
    for (wchar_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>((unit >> 8) & 0xFF));
    }
    return bytes;
}

CalendarTime Time(FuzzedDataProvider& input) {
    return {input.ConsumeIntegralInRange<unsigned>(1, 31), input.ConsumeIntegralInRange<unsigned>(1, 12),
            input.ConsumeIntegralInRange<unsigned>(1601, 9999), input.ConsumeIntegralInRange<unsigned>(0, 23),
            input.ConsumeIntegralInRange<unsigned>(0, 59), input.ConsumeIntegralInRange<unsigned>(0, 59)};
}

AccessListRecord AccessList(FuzzedDataProvider& input) {
    return fuzzrecords::DrawAccessList(input, [](FuzzedDataProvider& in) {
        AccessEntryRecord entry;
        entry.readable = in.ConsumeBool();
        entry.kind = static_cast<AceKind>(in.ConsumeIntegralInRange<int>(0, 2));
        if (in.ConsumeBool()) entry.account = AccountName{Text(in, 8), Text(in, 8)};
        entry.mask = in.ConsumeIntegral<std::uint32_t>();
        return entry;
    });
}

DirectoryEntryRecord Entry(FuzzedDataProvider& input) {
    return fuzzrecords::DrawEntry(input, {Time, [](FuzzedDataProvider& in) { return Text(in, 12); },
                                          [](FuzzedDataProvider& in) { return Text(in, 8, false); }, AccessList,
                                          [](FuzzedDataProvider& in) { return Text(in, 12); }});
}

AdapterRecord Adapter(FuzzedDataProvider& input) {
    AdapterRecord a;
    a.adapterName = Ascii(input, 12);
    a.ifIndex = input.ConsumeIntegral<std::uint32_t>();
    // Counts stay below 2^31: the listing prints them as "%d".
    a.unicastCount = input.ConsumeIntegralInRange<std::size_t>(0, 0x7FFFFFFF);
    a.anycastCount = input.ConsumeIntegralInRange<std::size_t>(0, 3);
    a.multicastCount = input.ConsumeIntegralInRange<std::size_t>(0, 3);
    a.dnsServerCount = input.ConsumeIntegralInRange<std::size_t>(0, 3);
    a.dnsSuffix = Ascii(input, 8);
    a.description = Ascii(input, 12);
    a.friendlyName = Ascii(input, 12);
    a.physicalAddress = input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 8));
    fuzzrecords::DrawAdapterNumbers(input, a);
    a.prefixCount = input.ConsumeIntegralInRange<std::size_t>(0, 0x7FFFFFFF);
    return a;
}

void FillSystemSections(FuzzedDataProvider& input, WrittenReport& w) {
    w.program = {Text(input, 12), Text(input, 10, false), Text(input, 16), input.ConsumeBool()};
    w.host = {Text(input, 8), Text(input, 8), Text(input, 8), Text(input, 8)};
    w.windows.versionLabel = Text(input, 10);
    w.windows.editionLabel = Text(input, 8);
    w.windows.realVersion = Text(input, 10);
    if (input.ConsumeBool()) w.windows.productId = Utf16Bytes(Text(input, 12));
    w.windows.systemPath = Text(input, 12);
    w.windows.programFiles = Text(input, 12);
    w.windows.commonAppData = Text(input, 12);
    HardwareRecord& h = w.hardware;
    h.biosName = Text(input, 12);
    h.boardManufacturer = Text(input, 12);
    h.processorCount = input.ConsumeIntegral<std::uint32_t>();
    h.processorArchitecture = input.ConsumeIntegral<std::uint16_t>();
    h.processorLevel = input.ConsumeIntegral<std::uint16_t>();
    h.processorRevision = input.ConsumeIntegral<std::uint16_t>();
    h.activeProcessorMask = input.ConsumeIntegral<std::uint64_t>();
    h.pageSize = input.ConsumeIntegral<std::uint32_t>();
    h.lowestApplicationAddress = input.ConsumeIntegral<std::uint64_t>();
    h.highestApplicationAddress = input.ConsumeIntegral<std::uint64_t>();
    h.totalPhysical = input.ConsumeIntegral<std::uint64_t>();
    h.totalVirtual = input.ConsumeIntegral<std::uint64_t>();
    h.totalPaging = input.ConsumeIntegral<std::uint64_t>();
    if (input.ConsumeBool())
        h.volumeC = VolumeRecord{input.ConsumeIntegral<std::uint32_t>(), input.ConsumeIntegral<std::uint32_t>(),
                                 Text(input, 6, false), input.ConsumeIntegral<std::uint64_t>(),
                                 input.ConsumeIntegral<std::uint64_t>(), input.ConsumeIntegral<std::uint64_t>()};
}

void FillNetwork(FuzzedDataProvider& input, WrittenReport& w) {
    w.networkForm = static_cast<NetworkForm>(input.ConsumeIntegralInRange<int>(0, 2));
    w.enumerationError = input.ConsumeBool() ? kErrorNoData : input.ConsumeIntegral<std::uint32_t>();
    if (input.ConsumeBool()) w.errorCharacter = std::string(1, input.ConsumeBool() ? 'N' : 'L');
    const std::size_t count = input.ConsumeIntegralInRange<std::size_t>(0, 3);
    for (std::size_t i = 0; i < count; ++i) w.adapters.push_back(Adapter(input));
}

void FillInstallation(FuzzedDataProvider& input, WrittenReport& w) {
    std::vector<RegistryValueRecord> values;
    for (const InstallationValue& known : kInstallationValues) {
        if (!input.ConsumeBool()) continue;
        if (known.format == RegistryValueFormat::kNumber)
            values.push_back({known, input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 6))});
        else
            values.push_back({known, Utf16Bytes(Text(input, 12))});
    }
    w.installation = MakeInstallationRecord(Text(input, 10), Text(input, 10), Text(input, 10), std::move(values));
    for (const auto& [kind, directory] : ListedDirectories(w.installation)) {
        auto& entries = w.entries.directories[directory];
        const std::size_t count = input.ConsumeIntegralInRange<std::size_t>(0, 3);
        for (std::size_t i = 0; i < count; ++i) entries.push_back(Entry(input));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    WrittenReport written;
    FillSystemSections(input, written);
    FillNetwork(input, written);
    FillInstallation(input, written);
    const report_model::Report read = report_model::ParseReportBody(WriteBody(written));
    const std::vector<std::string> mismatches = Mismatches(read, written);
    for (const std::string& mismatch : mismatches) std::fprintf(stderr, "%s\n", mismatch.c_str());
    FUZZ_CHECK(mismatches.empty());
    return 0;
}
