// A report made by the program's own writers from records, and the check
// that reportcheck's reader gives every record back: the proof that the two
// sides of the line forms (format/LineForms.h) agree. Used by the round-trip
// test (RoundTrip_test.cpp) and by the fuzz target report_writer_reader.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "format/AdapterText.h"
#include "format/InstallationRecord.h"
#include "format/ReportSink.h"
#include "format/ReportText.h"
#include "format/SystemSections.h"
#include "format/ViewText.h"
#include "reader/ReportModel.h"

namespace roundtrip {

// What the network section holds: the adapters' blocks, or one of its
// failure forms.
enum class NetworkForm { kAdapters, kAllocationFailed, kEnumerationFailed };

struct WrittenReport {
    std::wstring dateAndTime = L"11/22/26 14:36:06";
    ProgramRecord program;
    HostRecord host;
    WindowsRecord windows;
    HardwareRecord hardware;
    NetworkForm networkForm = NetworkForm::kAdapters;
    std::vector<AdapterRecord> adapters;
    std::uint32_t enumerationError = 0;
    std::optional<std::string> errorCharacter;  // the system message's first character
    InstallationRecord installation;
    CollectedEntries entries;
};

// UTF-16 of wide text whose units are all below 0x10000 (as on Windows).
inline std::u16string Utf16Of(std::wstring_view text) {
    return std::u16string(text.begin(), text.end());
}
inline std::string Utf8Of(std::wstring_view text) {
    return report_model::Utf8FromUtf16(Utf16Of(text));
}

// The body as the program saves it: the sections in the program's order,
// through the view's line breaks.
inline std::u16string WriteBody(WrittenReport& report) {
    StringReportSink sink;
    sink.Append(ComposeReportHeader(report.dateAndTime));
    RenderProgramSection(report.program, sink);
    RenderHostSection(report.host, sink);
    RenderWindowsSection(report.windows, sink);
    RenderHardwareSection(report.hardware, sink);
    sink.Append(kNetworkHeading);
    std::string listing;
    switch (report.networkForm) {
        case NetworkForm::kAdapters:
            listing = kAdaptersHeading;
            for (const AdapterRecord& adapter : report.adapters) AppendAdapterBlock(listing, adapter);
            break;
        case NetworkForm::kAllocationFailed: listing = kAdapterAllocationFailure; break;
        case NetworkForm::kEnumerationFailed:
            listing = FormatAdaptersFailure(report.enumerationError, report.errorCharacter);
            break;
    }
    sink.Append(std::wstring(listing.begin(), listing.end()));  // ASCII, as the code page would widen it
    RenderInstallationSection(report.installation, report.entries, sink);
    return Utf16Of(AsViewText(sink.Text()));
}

// Every field of `read` that differs from the record it was written from,
// as "<field>: read <value>, written <value>"; empty when all agree.
class Comparison {
public:
    template <typename Read, typename Written>
    void Expect(const std::string& field, const Read& read, const Written& written) {
        if (!(read == written)) mismatches_.push_back(field + ": read and written differ");
    }
    void ExpectText(const std::string& field, const std::optional<std::string>& read, const std::string& written) {
        if (read != written)
            mismatches_.push_back(field + ": read " + read.value_or("(none)") + ", written " + written);
    }
    std::vector<std::string> mismatches_;
};

inline void CompareSystemSections(Comparison& c, const report_model::Report& r, const WrittenReport& w) {
    std::string header = Utf8Of(ComposeReportHeader(w.dateAndTime));
    while (!header.empty() && header.back() == '\n') header.pop_back();
    c.Expect("header", r.header.text, header);
    c.ExpectText("program name", r.program.name, Utf8Of(w.program.applicationName));
    c.ExpectText("program version", r.program.version, Utf8Of(w.program.productVersion));
    c.ExpectText("program directory", r.program.directory, Utf8Of(w.program.directory));
    c.Expect("elevated", r.program.elevated, w.program.elevated);
    c.Expect("netbios name", r.host.netbiosName, Utf8Of(w.host.netbiosName));
    c.Expect("domain", r.host.domain, Utf8Of(w.host.wmiDomain));
    c.Expect("WMI name", r.host.wmiName, Utf8Of(w.host.wmiName));
    c.ExpectText("user", r.host.user, Utf8Of(w.host.userName));
    c.Expect("version label", r.windows.versionLabel, Utf8Of(w.windows.versionLabel));
    c.Expect("edition", r.windows.edition, Utf8Of(w.windows.editionLabel));
    c.ExpectText("real version", r.windows.realVersion, Utf8Of(w.windows.realVersion));
    if (w.windows.productId)
        c.ExpectText("product id", r.windows.productId, Utf8Of(RegistryDataAsText(*w.windows.productId)));
    else
        c.Expect("no product id", r.windows.productId.has_value(), false);
    c.ExpectText("system path", r.windows.systemPath, Utf8Of(w.windows.systemPath));
    c.ExpectText("program files", r.windows.programFilesPath, Utf8Of(w.windows.programFiles));
    c.ExpectText("common app data", r.windows.commonAppDataPath, Utf8Of(w.windows.commonAppData));

    const report_model::HardwareSection& h = r.hardware;
    const HardwareRecord& hw = w.hardware;
    c.Expect("bits", h.bits, std::optional<std::uint32_t>(64));
    c.ExpectText("bios", h.bios, Utf8Of(hw.biosName));
    c.ExpectText("board", h.board, Utf8Of(hw.boardManufacturer));
    c.Expect("processor count", h.processorCount, std::optional<std::uint32_t>(hw.processorCount));
    c.Expect("processor", h.processor.has_value(), true);
    if (h.processor) {
        c.Expect("architecture", h.processor->architecture, std::uint32_t{hw.processorArchitecture});
        c.Expect("level", h.processor->level, std::uint32_t{hw.processorLevel});
        c.Expect("revision", h.processor->revision, std::uint32_t{hw.processorRevision});
    }
    c.Expect("active processor mask", h.activeProcessorMask,
             std::optional<std::uint32_t>(static_cast<std::uint32_t>(hw.activeProcessorMask)));
    c.Expect("page size", h.pageSize, std::optional<std::uint32_t>(hw.pageSize));
    c.Expect("memory", h.memory.has_value(), true);
    if (h.memory) {
        c.Expect("physical", h.memory->physicalK, static_cast<std::int64_t>(hw.totalPhysical >> 10));
        c.Expect("virtual", h.memory->virtualK, static_cast<std::int64_t>(hw.totalVirtual >> 10));
        c.Expect("paging", h.memory->pagingK, static_cast<std::int64_t>(hw.totalPaging >> 10));
    }
    c.Expect("volume", h.volume.has_value(), hw.volumeC.has_value());
    if (h.volume && hw.volumeC) {
        c.Expect("file system", h.volume->fileSystem, Utf8Of(hw.volumeC->fileSystemName));
        c.Expect("total", h.volume->totalK, static_cast<std::int64_t>(hw.volumeC->totalBytes) / 1024);
        c.Expect("free", h.volume->freeK, static_cast<std::int64_t>(hw.volumeC->totalFreeBytes) / 1024);
        c.Expect("user", h.volume->userK, static_cast<std::int64_t>(hw.volumeC->bytesAvailableToCaller) / 1024);
    }
}

inline std::string PhysicalAddressText(const std::vector<std::uint8_t>& bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (std::uint8_t byte : bytes) {
        if (!text.empty()) text += '-';
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

inline void CompareAdapter(Comparison& c, const report_model::Adapter& a, const AdapterRecord& w) {
    const auto asSigned = [](std::uint32_t v) { return std::optional<std::int64_t>(static_cast<std::int32_t>(v)); };
    const auto count = [](std::size_t v) { return std::optional<std::uint64_t>(v); };
    c.Expect("adapter name", a.name, w.adapterName);
    c.Expect("IfIndex", a.ifIndex, std::optional<std::uint32_t>(w.ifIndex));
    c.Expect("unicast", a.unicastCount, count(w.unicastCount));
    c.Expect("anycast", a.anycastCount, count(w.anycastCount));
    c.Expect("multicast", a.multicastCount, count(w.multicastCount));
    c.Expect("DNS servers", a.dnsServerCount, count(w.dnsServerCount));
    c.ExpectText("DNS suffix", a.dnsSuffix, w.dnsSuffix);
    c.ExpectText("description", a.description, w.description);
    c.ExpectText("friendly name", a.friendlyName, w.friendlyName);
    if (w.physicalAddress.empty())
        c.Expect("no physical address", a.physicalAddress.has_value(), false);
    else
        c.ExpectText("physical address", a.physicalAddress, PhysicalAddressText(w.physicalAddress));
    c.Expect("flags", a.flags, asSigned(w.flags));
    c.Expect("mtu", a.mtu, std::optional<std::uint32_t>(w.mtu));
    c.Expect("if type", a.ifType, asSigned(w.ifType));
    c.Expect("oper status", a.operStatus, asSigned(w.operStatus));
    c.Expect("IPv6 IfIndex", a.ipv6IfIndex, std::optional<std::uint32_t>(w.ipv6IfIndex));
    c.Expect("zone indices", a.zoneIndices,
             std::optional<std::vector<std::uint32_t>>(std::vector<std::uint32_t>(w.zoneIndices.begin(),
                                                                                  w.zoneIndices.end())));
    c.Expect("prefixes", a.prefixCount, count(w.prefixCount));
    c.Expect("closing blank line", a.closingBlankLine, true);
}

inline void CompareNetwork(Comparison& c, const report_model::NetworkSection& n, const WrittenReport& w) {
    c.Expect("network heading", n.heading.present, true);
    c.Expect("allocation failed", n.allocationFailed, w.networkForm == NetworkForm::kAllocationFailed);
    const bool failed = w.networkForm == NetworkForm::kEnumerationFailed;
    c.Expect("enumeration error", n.enumerationError,
             failed ? std::optional<std::int64_t>(static_cast<std::int32_t>(w.enumerationError)) : std::nullopt);
    c.Expect("no addresses", n.noAddressesFound, failed && w.enumerationError == kErrorNoData);
    c.Expect("error text", n.errorText,
             failed && w.enumerationError != kErrorNoData ? w.errorCharacter : std::nullopt);
    c.Expect("adapters heading", n.enumerationHeading, w.networkForm == NetworkForm::kAdapters);
    c.Expect("adapter count", n.adapters.size(), w.networkForm == NetworkForm::kAdapters ? w.adapters.size() : 0);
    for (std::size_t i = 0; i < n.adapters.size() && i < w.adapters.size(); ++i)
        CompareAdapter(c, n.adapters[i], w.adapters[i]);
}

inline void CompareEntry(Comparison& c, const report_model::DirectoryEntry& e, const DirectoryEntryRecord& w) {
    c.Expect("attributes", e.attributes, w.attributes);
    c.Expect("size", e.size, static_cast<std::int32_t>(w.sizeLow));
    c.Expect("created", e.created.Printed(), Utf8Of(FormatCalendarTime(w.created)));
    c.Expect("written", e.written.Printed(), Utf8Of(FormatCalendarTime(w.written)));
    c.Expect("entry name", e.name, Utf8Of(w.name));
    c.Expect("entry version", e.version, Utf8Of(w.productVersion));
    if (w.accessList) {
        const std::string rendered = Utf8Of(RenderAccessList(*w.accessList));
        c.ExpectText("access list", e.accessList, rendered.substr(lineform::kAccessList.Narrow().size()));
    } else {
        c.Expect("no access list", e.accessList.has_value(), false);
    }
    if (w.content)
        c.ExpectText("content", e.content, Utf8Of(w.content->opened ? w.content->firstLine : kUnableToOpen));
    else
        c.Expect("no content", e.content.has_value(), false);
}

// The directories the section lists, in its order, with their kinds.
inline std::vector<std::pair<report_model::DirectoryKind, std::wstring>> ListedDirectories(
    const InstallationRecord& record) {
    using report_model::DirectoryKind;
    std::vector<std::pair<DirectoryKind, std::wstring>> listed = {
        {DirectoryKind::Current, record.currentDirectory}, {DirectoryKind::Standard, record.standardDirectory}};
    if (record.registryDirectory) listed.emplace_back(DirectoryKind::Registry, *record.registryDirectory);
    listed.emplace_back(DirectoryKind::SharedParameters, record.sharedParametersDirectory);
    listed.emplace_back(DirectoryKind::SharedBatch, record.sharedBatchDirectory);
    return listed;
}

inline void CompareInstallation(Comparison& c, const report_model::InstallationSection& inst,
                                const WrittenReport& w) {
    c.Expect("installation heading", inst.heading.present, true);
    c.Expect("registry data heading", inst.registryDataHeading, true);
    c.Expect("registry value count", inst.registryValues.size(), w.installation.registryValues.size());
    for (std::size_t i = 0; i < inst.registryValues.size() && i < w.installation.registryValues.size(); ++i) {
        const report_model::RegistryValue& read = inst.registryValues[i];
        const RegistryValueRecord& written = w.installation.registryValues[i];
        c.Expect("registry value name", read.name, Utf8Of(written.value.name));
        if (written.value.format == RegistryValueFormat::kNumber)
            c.Expect("registry number", read.number, std::optional<std::int32_t>(RegistryDataAsNumber(written.data)));
        else
            c.ExpectText("registry text", read.text, Utf8Of(RegistryDataAsText(written.data)));
    }
    const auto listed = ListedDirectories(w.installation);
    c.Expect("directory count", inst.directories.size(), listed.size());
    for (std::size_t i = 0; i < inst.directories.size() && i < listed.size(); ++i) {
        const report_model::Directory& d = inst.directories[i];
        c.Expect("directory kind", d.kind, listed[i].first);
        c.ExpectText("directory path", d.path, Utf8Of(listed[i].second));
        const auto found = w.entries.directories.find(listed[i].second);
        const std::size_t count = found == w.entries.directories.end() ? 0 : found->second.size();
        c.Expect("entry count", d.entries.size(), count);
        for (std::size_t k = 0; k < d.entries.size() && k < count; ++k)
            CompareEntry(c, d.entries[k], found->second[k]);
    }
}

// Reads the body back and lists what differs from the records; an
// unrecognised line counts as a difference too.
inline std::vector<std::string> Mismatches(const report_model::Report& read, const WrittenReport& written) {
    Comparison c;
    for (const report_model::UnrecognisedLine& line : read.unrecognised)
        c.mismatches_.push_back("unrecognised line " + std::to_string(line.line) + ": " + line.text);
    CompareSystemSections(c, read, written);
    CompareNetwork(c, read.network, written);
    CompareInstallation(c, read.installation, written);
    return c.mismatches_;
}

}  // namespace roundtrip
