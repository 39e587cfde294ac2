// What the program's writers make, read back by reportcheck's reader: every
// line recognised and every field equal to the record it was written from.
// A label changed on one side only (format/LineForms.h is the one home of
// both) fails here.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "WrittenReport.h"

using namespace roundtrip;

namespace {

std::vector<std::uint8_t> Utf16Bytes(std::wstring_view text) {
    std::vector<std::uint8_t> bytes;
    for (wchar_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>((unit >> 8) & 0xFF));
    }
    bytes.insert(bytes.end(), {0, 0});
    return bytes;
}

std::vector<std::uint8_t> Dword(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

AdapterRecord SampleAdapter(std::string name, std::size_t counts) {
    AdapterRecord a;
    a.adapterName = std::move(name);
    a.ifIndex = 7;
    a.unicastCount = counts;
    a.anycastCount = 0;
    a.multicastCount = counts * 2;
    a.dnsServerCount = counts;
    a.dnsSuffix = "";  // empty values keep their line
    a.description = "Intel(R) Ethernet Connection";
    a.friendlyName = "Ethernet 2";
    a.physicalAddress = counts ? std::vector<std::uint8_t>{0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E} : std::vector<std::uint8_t>{};
    a.flags = 0x80000000u;  // shows negative
    a.mtu = 1500;
    a.ifType = 6;
    a.operStatus = 1;
    a.ipv6IfIndex = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < a.zoneIndices.size(); ++i) a.zoneIndices[i] = static_cast<std::uint32_t>(i * 0x1111);
    a.prefixCount = counts;
    return a;
}

AccessListRecord ReadAccessList() {
    AccessListRecord list;
    list.entries = {{true, AceKind::Allow, AccountName{L"BUILTIN", L"Administrators"}, 0x1F01FF},
                    {true, AceKind::Deny, AccountName{L"", L"Everyone"}, 0x2},
                    {true, AceKind::Other, std::nullopt, 0},
                    {false, AceKind::Other, std::nullopt, 0}};
    return list;
}

DirectoryEntryRecord Entry(std::wstring name, std::uint32_t sizeLow, std::wstring version = L"") {
    DirectoryEntryRecord e;
    e.attributes = 0x20;
    e.sizeLow = sizeLow;
    e.created = {7, 3, 2021, 14, 5, 9};
    e.written = {31, 12, 1999, 23, 59, 59};
    e.name = std::move(name);
    e.productVersion = std::move(version);
    return e;
}

// Every section, with an entry of each kind in the listed directories.
WrittenReport FullReport() {
    WrittenReport w;
    w.program = {L"OrvaneDiagnostics", L"9.3.1.1042", L"C:\\Tools", true};
    w.host = {L"PC1", L"PC1", L"WORKGROUP", L"anne"};
    w.windows.versionLabel = L"10 or more";
    w.windows.editionLabel = L"Server";
    w.windows.realVersion = L"10.0.19045";
    w.windows.productId = Utf16Bytes(L"12345-oem-0000001-54321");
    w.windows.systemPath = L"C:\\windows";
    w.windows.programFiles = L"C:\\Program Files";
    w.windows.commonAppData = L"C:\\ProgramData";
    HardwareRecord& h = w.hardware;
    h.biosName = L"Default System BIOS";
    h.boardManufacturer = L"Intel Corporation";
    h.processorCount = 2;
    h.processorArchitecture = 9;
    h.processorLevel = 26;
    h.processorRevision = 0xFFFF;
    h.activeProcessorMask = 0x1'0000'0003ull;  // shows its low half
    h.pageSize = 4096;
    h.lowestApplicationAddress = 0x10000;
    h.highestApplicationAddress = 0x7FFF'FFFE'FFFFull;
    h.totalPhysical = 17179869184ull;
    h.totalVirtual = 140737488224256ull;
    h.totalPaging = 20401094656ull;
    h.volumeC = VolumeRecord{0x1A2B3C4D, 0x03E706FF, L"NTFS", 511101108224ull, 83606011904ull, 83606011904ull};
    w.networkForm = NetworkForm::kAdapters;
    w.adapters = {SampleAdapter("{00000002-0000-0000-0000-4E6574446576}", 3), SampleAdapter("lo", 0)};

    std::vector<RegistryValueRecord> values;
    for (const InstallationValue& known : kInstallationValues) {
        if (known.format == RegistryValueFormat::kNumber)
            values.push_back({known, Dword(known.name == L"VersionBuild" ? 1042u : 0xFFFFFFFFu)});
        else if (known.name == kInstallLocationValue)
            values.push_back({known, Utf16Bytes(L"D:\\Suite")});
        else
            values.push_back({known, Utf16Bytes(L"")});  // an empty text value
    }
    w.installation = MakeInstallationRecord(L"C:\\Tools", w.windows.programFiles, w.windows.commonAppData,
                                            std::move(values));
    DirectoryEntryRecord dot = Entry(L".", 0);
    dot.attributes = 0x10;
    dot.accessList = AccessListRecord{AccessListState::kNullList, 0, {}};
    DirectoryEntryRecord big = Entry(L"big.bin", 0x80000001u);  // past 2 GiB: shows negative
    big.accessList = ReadAccessList();
    big.content = ContentExcerptRecord{true, L"MZ??\u00e9t\u00e9 ?"};
    DirectoryEntryRecord locked = Entry(L"locked.dat", 4096, L"1.2.3.4");
    locked.accessList = AccessListRecord{AccessListState::kSecurityUnreadable, 5, {}};
    locked.content = ContentExcerptRecord{false, L""};
    DirectoryEntryRecord empty = Entry(L"empty.txt", 0);
    empty.accessList = AccessListRecord{AccessListState::kDaclUnreadable, 1336, {}};
    empty.content = ContentExcerptRecord{true, L""};
    w.entries.directories[L"C:\\Tools"] = {dot, big, locked, empty};
    w.entries.directories[L"D:\\Suite"] = {Entry(L"tool.dll", 123456, L"9.3.1.1042")};
    w.entries.directories[w.installation.sharedBatchDirectory] = {Entry(L"\u65e5\u672c.txt", 0xFFFFFFFFu)};
    return w;
}

std::vector<std::string> ReadBack(WrittenReport& written) {
    const report_model::Report read = report_model::ParseReportBody(WriteBody(written));
    return Mismatches(read, written);
}

}  // namespace

TEST(WriterToReader, EverySectionAndLineFormReadsBackAsWritten) {
    WrittenReport written = FullReport();
    EXPECT_EQ(ReadBack(written), std::vector<std::string>{});
}

TEST(WriterToReader, EmptyValuesAndMissingOptionalLinesReadBackAsWritten) {
    WrittenReport written;
    written.windows.productId.reset();  // no "\tid: " line
    written.hardware.volumeC.reset();   // no "\tC volume: " line
    written.installation = MakeInstallationRecord(L"", L"", L"", {});  // no registry key
    EXPECT_EQ(ReadBack(written), std::vector<std::string>{});
}

TEST(WriterToReader, EveryFailureFormOfTheNetworkListingReadsBackAsWritten) {
    for (const auto& [form, error, character] :
         {std::tuple{NetworkForm::kAllocationFailed, 0u, std::optional<std::string>()},
          std::tuple{NetworkForm::kEnumerationFailed, kErrorNoData, std::optional<std::string>()},
          std::tuple{NetworkForm::kEnumerationFailed, 8u, std::optional<std::string>("N")},
          std::tuple{NetworkForm::kEnumerationFailed, 0x80000000u, std::optional<std::string>()}}) {
        WrittenReport written = FullReport();
        written.networkForm = form;
        written.enumerationError = error;
        written.errorCharacter = character;
        EXPECT_EQ(ReadBack(written), std::vector<std::string>{}) << "error " << error;
    }
}

TEST(WriterToReader, AReportWithoutAnAdapterReadsBackAsWritten) {
    WrittenReport written = FullReport();
    written.adapters.clear();
    EXPECT_EQ(ReadBack(written), std::vector<std::string>{});
}
