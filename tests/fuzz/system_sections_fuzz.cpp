// The Program, Host, Windows, Hardware and Installation sections rendered
// from records of any values: each section keeps its heading, its number of
// pieces and its labels, every piece is one line (an entry with a content
// excerpt is one piece of two lines), and each text value appears as given,
// whatever characters it holds. Numbers of any size render without fault
// (the sanitizers watch the conversions); the fixed layouts of an entry line
// are checked against the C runtime's printf conversions.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cwchar>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzCheck.h"
#include "FuzzRecords.h"
#include "format/InstallationRecord.h"
#include "format/SystemSections.h"

namespace {

using fuzzrecords::AnyWideText;
using fuzzrecords::Printed;

// "<label><value>\n", the value exactly as given.
void CheckLine(const std::wstring& piece, std::wstring_view label, const std::wstring& value) {
    FUZZ_CHECK(piece == std::wstring(label) + value + L"\n");
}

bool EndsWithLineFeed(const std::wstring& piece) { return !piece.empty() && piece.back() == L'\n'; }

void CheckProgram(FuzzedDataProvider& input) {
    ProgramRecord facts;
    facts.applicationName = AnyWideText(input, 16);
    facts.productVersion = AnyWideText(input, 16);
    facts.directory = AnyWideText(input, 32);
    facts.elevated = input.ConsumeBool();
    RecordingSink sink;
    RenderProgramSection(facts, sink);
    FUZZ_CHECK(sink.Pieces().size() == (facts.elevated ? 4u : 3u));
    FUZZ_CHECK(sink.Pieces()[0] == kProgramHeading);
    FUZZ_CHECK(sink.Pieces()[1] == facts.applicationName + L" " + facts.productVersion + L"\n");
    CheckLine(sink.Pieces()[2], L"in ", facts.directory);
    if (facts.elevated) FUZZ_CHECK(sink.Pieces()[3] == kAdministratorLine);
}

void CheckHost(FuzzedDataProvider& input) {
    HostRecord facts{AnyWideText(input, 16), AnyWideText(input, 16), AnyWideText(input, 16), AnyWideText(input, 16)};
    RecordingSink sink;
    RenderHostSection(facts, sink);
    FUZZ_CHECK(sink.Pieces().size() == 3u);
    FUZZ_CHECK(sink.Pieces()[0] == kHostHeading);
    CheckLine(sink.Pieces()[1], L"\tname: ", facts.netbiosName + L" (" + facts.wmiDomain + L"\\" + facts.wmiName + L")");
    CheckLine(sink.Pieces()[2], L"\tuser: ", facts.userName);
}

void CheckWindows(FuzzedDataProvider& input) {
    WindowsRecord facts;
    facts.versionLabel = AnyWideText(input, 12);
    facts.editionLabel = AnyWideText(input, 8);
    facts.realVersion = AnyWideText(input, 16);
    if (input.ConsumeBool()) {
        const std::size_t size = input.ConsumeIntegralInRange<std::size_t>(0, 64);
        facts.productId = input.ConsumeBytes<std::uint8_t>(size);
    }
    facts.systemPath = AnyWideText(input, 32);
    facts.programFiles = AnyWideText(input, 32);
    facts.commonAppData = AnyWideText(input, 32);
    RecordingSink sink;
    RenderWindowsSection(facts, sink);
    const std::size_t id = facts.productId ? 1 : 0;
    FUZZ_CHECK(sink.Pieces().size() == 6u + id);
    FUZZ_CHECK(sink.Pieces()[0] == kWindowsHeading);
    CheckLine(sink.Pieces()[1], L"\tversion reported: ", facts.versionLabel + L" (" + facts.editionLabel + L")");
    CheckLine(sink.Pieces()[2], L"\treal version: ", facts.realVersion);
    if (facts.productId) {
        FUZZ_CHECK(sink.Pieces()[3].rfind(L"\tid: ", 0) == 0 && EndsWithLineFeed(sink.Pieces()[3]));
    }
    CheckLine(sink.Pieces()[3 + id], L"\tsystem path: ", facts.systemPath);
    CheckLine(sink.Pieces()[4 + id], L"\tprogram file path: ", facts.programFiles);
    CheckLine(sink.Pieces()[5 + id], L"\tapplication common shared path: ", facts.commonAppData);
}

void CheckHardware(FuzzedDataProvider& input) {
    HardwareRecord facts;
    facts.biosName = AnyWideText(input, 16);
    facts.boardManufacturer = AnyWideText(input, 16);
    facts.processorCount = input.ConsumeIntegral<std::uint32_t>();
    facts.processorArchitecture = input.ConsumeIntegral<std::uint16_t>();
    facts.processorLevel = input.ConsumeIntegral<std::uint16_t>();
    facts.processorRevision = input.ConsumeIntegral<std::uint16_t>();
    facts.activeProcessorMask = input.ConsumeIntegral<std::uint64_t>();
    facts.pageSize = input.ConsumeIntegral<std::uint32_t>();
    facts.lowestApplicationAddress = input.ConsumeIntegral<std::uint64_t>();
    facts.highestApplicationAddress = input.ConsumeIntegral<std::uint64_t>();
    facts.totalPhysical = input.ConsumeIntegral<std::uint64_t>();
    facts.totalVirtual = input.ConsumeIntegral<std::uint64_t>();
    facts.totalPaging = input.ConsumeIntegral<std::uint64_t>();
    if (input.ConsumeBool()) {
        VolumeRecord volume;
        volume.serialNumber = input.ConsumeIntegral<std::uint32_t>();
        volume.fileSystemFlags = input.ConsumeIntegral<std::uint32_t>();
        volume.totalBytes = input.ConsumeIntegral<std::uint64_t>();
        volume.totalFreeBytes = input.ConsumeIntegral<std::uint64_t>();
        volume.bytesAvailableToCaller = input.ConsumeIntegral<std::uint64_t>();
        volume.fileSystemName = AnyWideText(input, 8);
        facts.volumeC = volume;
    }
    RecordingSink sink;
    RenderHardwareSection(facts, sink);
    FUZZ_CHECK(sink.Pieces().size() == (facts.volumeC ? 11u : 10u));
    FUZZ_CHECK(sink.Pieces()[0] == kHardwareHeading);
    FUZZ_CHECK(sink.Pieces()[1] == kSystemBitsLine);
    CheckLine(sink.Pieces()[2], L"\tbios: ", facts.biosName);
    CheckLine(sink.Pieces()[3], L"\tboard: ", facts.boardManufacturer);
    CheckLine(sink.Pieces()[4], L"\tnumber of processors: ", std::to_wstring(facts.processorCount));
    CheckLine(sink.Pieces()[5], L"\tprocessor : ",
              std::to_wstring(facts.processorArchitecture) + L" (" + std::to_wstring(facts.processorLevel) + L"." +
                  std::to_wstring(facts.processorRevision) + L")");
    CheckLine(sink.Pieces()[6], L"\tactive processor mask: ",
              std::to_wstring(static_cast<std::uint32_t>(facts.activeProcessorMask)));
    CheckLine(sink.Pieces()[7], L"\tpage size: ", std::to_wstring(facts.pageSize));
    // The numeric lines hold no other line break than their last character.
    for (std::size_t i = 8; i < sink.Pieces().size(); ++i) {
        FUZZ_CHECK(EndsWithLineFeed(sink.Pieces()[i]));
        if (i < 10) FUZZ_CHECK(sink.Pieces()[i].find(L'\n') == sink.Pieces()[i].size() - 1);
    }
    if (facts.volumeC) {
        const std::wstring& line = sink.Pieces()[10];
        FUZZ_CHECK(line.rfind(L"\tC volume: 0x", 0) == 0);
        FUZZ_CHECK(line.find(L" " + facts.volumeC->fileSystemName + L" total ") != std::wstring::npos);
    }
}

std::wstring PrintedTime(const CalendarTime& t) {
    return Printed(L"%02u/%02u/%04u  %02u:%02u:%02u", t.day, t.month, t.year, t.hour, t.minute, t.second);
}

AccessListRecord AnyAccessList(FuzzedDataProvider& input) {
    return fuzzrecords::DrawAccessList(input, [](FuzzedDataProvider& in) {
        AccessEntryRecord entry;
        entry.readable = in.ConsumeBool();
        entry.kind = static_cast<AceKind>(in.ConsumeIntegralInRange<int>(0, 2));
        entry.mask = in.ConsumeIntegral<std::uint32_t>();
        if (in.ConsumeBool()) entry.account = AccountName{AnyWideText(in, 8), AnyWideText(in, 8)};
        return entry;
    });
}

std::wstring ExpectedAccessList(const AccessListRecord& list) {
    std::wstring text = L" ACL:";
    switch (list.state) {
        case AccessListState::kSecurityUnreadable:
            return text + Printed(L" failed GetFileSecurity (%d)", static_cast<std::int32_t>(list.errorCode));
        case AccessListState::kDaclUnreadable:
            return text + Printed(L" failed GetSecurityDescriptorDacl (%d)", static_cast<std::int32_t>(list.errorCode));
        case AccessListState::kNullList: return text + L" NULL (Allow All)";
        case AccessListState::kRead: break;
    }
    for (const AccessEntryRecord& entry : list.entries) {
        if (!entry.readable) {
            text += L";";
            continue;
        }
        text += entry.kind == AceKind::Allow  ? L" Allow "
                : entry.kind == AceKind::Deny ? L" Deny "
                                              : L" Unknown Right ";
        if (!entry.account) {
            text += L";";
            continue;
        }
        if (!entry.account->domain.empty()) text += entry.account->domain + L"\\";
        text += entry.account->name + L" [";
        if (entry.kind != AceKind::Other) {
            const auto shows = [&](std::uint32_t bits) {
                return entry.kind == AceKind::Allow ? (entry.mask & bits) == bits : (entry.mask & bits) != 0;
            };
            text += shows(0x81) ? L'R' : L' ';
            text += shows(0x116) ? L'W' : L' ';
            text += shows(0x21) ? L'X' : L' ';
        }
        text += L"];";
    }
    return text;
}

DirectoryEntryRecord AnyEntry(FuzzedDataProvider& input) {
    return fuzzrecords::DrawEntry(input, {fuzzrecords::AnyCalendarTime,
                                          [](FuzzedDataProvider& in) { return AnyWideText(in, 12); },
                                          [](FuzzedDataProvider& in) { return AnyWideText(in, 12); }, AnyAccessList,
                                          [](FuzzedDataProvider& in) { return AnyWideText(in, 16); }});
}

// "\t<head><created>\t<written>\t<name>\t<version>[ ACL:...][content]\n"
std::wstring ExpectedEntryLine(const DirectoryEntryRecord& entry) {
    std::wstring line = L"\t" + Printed(L"%08x %10d\t", entry.attributes, static_cast<std::int32_t>(entry.sizeLow));
    line += PrintedTime(entry.created) + L"\t" + PrintedTime(entry.written) + L"\t";
    line += entry.name + L"\t" + entry.productVersion;
    if (entry.accessList) line += ExpectedAccessList(*entry.accessList);
    if (entry.content) {
        line += L"\n\t\t\t\tContent:\"";
        line += entry.content->opened ? entry.content->firstLine : L"!!!unable to open file!!!";
        line += L"\"";
    }
    return line + L"\n";
}

void CheckInstallation(FuzzedDataProvider& input) {
    const std::wstring programDirectory = AnyWideText(input, 8);
    const std::wstring programFiles = AnyWideText(input, 8);
    const std::wstring commonAppData = AnyWideText(input, 8);
    const std::wstring standard = programFiles + L"\\Orvane Software V9";
    std::vector<RegistryValueRecord> values;
    for (const InstallationValue& value : kInstallationValues) {
        if (!input.ConsumeBool()) continue;
        std::vector<std::uint8_t> data;
        // The location often names a directory that the section lists anyway.
        if (value.name == kInstallLocationValue && input.ConsumeBool()) {
            const std::wstring& named = input.ConsumeBool() ? standard : programDirectory;
            for (wchar_t unit : named) data.insert(data.end(), {std::uint8_t(unit & 0xFF), std::uint8_t(unit >> 8)});
        } else {
            data = input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 24));
        }
        values.push_back({value, std::move(data)});
    }
    const std::vector<RegistryValueRecord> given = values;
    const InstallationRecord record =
        MakeInstallationRecord(programDirectory, programFiles, commonAppData, std::move(values));

    std::wstring location;
    for (const RegistryValueRecord& value : given)
        if (value.value.name == kInstallLocationValue) location = RegistryDataAsText(value.data);
    const bool listsLocation = !location.empty() && location != standard && location != programDirectory;
    FUZZ_CHECK(record.registryDirectory.has_value() == listsLocation);

    // Some directories cannot be searched; the others hold a few entries.
    CollectedEntries entries;
    const std::wstring parameters = commonAppData + L"\\Orvane Software";
    const std::wstring batch = parameters + L"\\Runner";
    const auto directories = {&programDirectory, &standard, static_cast<const std::wstring*>(&location),
                              &parameters, &batch};
    for (const std::wstring* directory : directories) {
        if (!input.ConsumeBool()) continue;
        std::vector<DirectoryEntryRecord>& listed = entries.directories[*directory];
        listed.clear();
        const std::size_t count = input.ConsumeIntegralInRange<std::size_t>(0, 3);
        for (std::size_t i = 0; i < count; ++i) listed.push_back(AnyEntry(input));
    }

    RecordingSink sink;
    RenderInstallationSection(record, entries, sink);
    std::vector<std::wstring> expected{L"\nOrvane Software installation:\n"};
    const auto listing = [&](const std::wstring& heading, const std::wstring& directory) {
        expected.push_back(heading);
        const auto found = entries.directories.find(directory);
        if (found == entries.directories.end()) return;
        for (const DirectoryEntryRecord& entry : found->second) expected.push_back(ExpectedEntryLine(entry));
    };
    listing(L"* Current directory (" + programDirectory + L"):\n", programDirectory);
    listing(L"* Standard installation directory (" + standard + L"):\n", standard);
    expected.push_back(L"* Registry installation data:\n");
    for (const RegistryValueRecord& value : given) {
        const std::wstring shown = value.value.format == RegistryValueFormat::kNumber
                                       ? std::to_wstring(RegistryDataAsNumber(value.data))
                                       : RegistryDataAsText(value.data);
        expected.push_back(L"\t" + std::wstring(value.value.name) + L": " + shown + L"\n");
    }
    if (listsLocation) listing(L"* Registry installation directory:\n", location);
    listing(L"* Shared parameters directory (" + parameters + L"):\n", parameters);
    listing(L"* Shared Batch directory (" + batch + L"):\n", batch);
    FUZZ_CHECK(sink.Pieces() == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    CheckProgram(input);
    CheckHost(input);
    CheckWindows(input);
    CheckHardware(input);
    CheckInstallation(input);
    return 0;
}
