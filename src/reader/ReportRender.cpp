// The report body made again from the model: each recognised line in the
// report's order, the unrecognised lines put back at their numbers, the
// line breaks as they were. The reader accepts a line only when the line
// made here from what it read is that very line, so the two cannot drift.
#include <algorithm>

#include "format/EntryText.h"
#include "format/LineForms.h"
#include "reader/ReportModelText.h"
#include "reader/ReportRender.h"

namespace report_model {

using namespace lineform;

namespace {
void AddHeading(std::vector<std::string>& lines, const Heading& heading, std::string_view word) {
    if (!heading.present) return;
    if (heading.blankLineBefore) lines.emplace_back();
    lines.emplace_back(word);
}

std::string Parenthesised(const std::string& text) {
    return std::string(kOpenParenthesis.Narrow()) + text + std::string(kCloseParenthesis.Narrow());
}

void AddIf(std::vector<std::string>& lines, const std::optional<std::string>& value, std::string_view label) {
    if (value) lines.push_back(std::string(label) + *value);
}

template <typename Number>
void AddNumber(std::vector<std::string>& lines, const std::optional<Number>& value, std::string_view label) {
    if (!value) return;
    if constexpr (std::is_signed_v<Number>)
        lines.push_back(std::string(label) + SignedText(*value));
    else
        lines.push_back(std::string(label) + UnsignedText(*value));
}
}  // namespace

std::string ProgramNameLine(const std::string& name, const std::string& version) {
    return name + " " + version;
}
std::string HostNameLine(const HostSection& host) {
    return std::string(kHostName.Narrow()) + host.netbiosName +
           Parenthesised(host.domain + std::string(kDomainSeparator.Narrow()) + host.wmiName);
}
std::string VersionReportedValue(const WindowsSection& windows) {
    return windows.versionLabel + Parenthesised(windows.edition);
}
std::string VersionReportedLine(const WindowsSection& windows) {
    return std::string(kVersionReported.Narrow()) + VersionReportedValue(windows);
}
std::string ProcessorValue(const ProcessorLine& p) {
    return UnsignedText(p.architecture) + Parenthesised(UnsignedText(p.level) + "." + UnsignedText(p.revision));
}
std::string ProcessorLineText(const ProcessorLine& p) {
    return std::string(kProcessor.Narrow()) + ProcessorValue(p);
}
std::string AddressesValue(const AddressRange& range) {
    return range.lowest + "-" + range.highest;
}
std::string AddressesLine(const AddressRange& range) {
    return std::string(kApplicationAddresses.Narrow()) + AddressesValue(range);
}
std::string MemoryLineText(const MemoryLine& m) {
    return std::string(kMemory.Narrow()) + SignedText(m.physicalK) + kMemoryPhysical.narrow + SignedText(m.virtualK) +
           kMemoryVirtual.narrow + SignedText(m.pagingK) + kMemoryPaging.narrow;
}
std::string VolumeLineText(const VolumeLine& v) {
    return std::string(kVolume.Narrow()) + v.serial + " " + v.flags + " " + v.fileSystem + kVolumeTotal.narrow +
           SignedText(v.totalK) + kVolumeFree.narrow + SignedText(v.freeK) + kVolumeUser.narrow +
           SignedText(v.userK) + kVolumeEnd.narrow;
}

std::string CountLine(const std::optional<std::uint64_t>& count, std::string_view what) {
    if (*count == 0) return std::string(kNoCount.Narrow()) + std::string(what);
    return std::string(kNumberOf.Narrow()) + std::string(what) + kCountSeparator.narrow + UnsignedText(*count);
}
std::string ZoneIndicesValue(const std::vector<std::uint32_t>& zones) {
    std::string value;
    for (std::uint32_t zone : zones) value += UnsignedText(zone, 16) + " ";
    return value;
}
std::string ZoneIndicesLine(const std::vector<std::uint32_t>& zones) {
    return std::string(kZoneIndices.Narrow()) + ZoneIndicesValue(zones);
}
std::string PrefixLine(std::uint64_t count) {
    return CountLine(count, kPrefixEntries.Narrow());
}

std::string EnumerationErrorLine(std::int64_t code) {
    return std::string(kEnumerationError.Narrow()) + SignedText(code);
}

std::string EntryLine(const DirectoryEntry& e) {
    std::string line;
    AppendEntryLine(line, e);
    return line;
}
void AppendEntryLine(std::string& line, const DirectoryEntry& e) {
    line += '\t';
    AppendEntryHead(line, e.attributes, static_cast<std::uint32_t>(e.size));
    line += e.created.PrintedText();
    line += '\t';
    line += e.written.PrintedText();
    line += '\t';
    line += e.name;
    line += '\t';
    line += e.version;
    if (!e.accessList) return;
    line += kAccessList.Narrow();
    line += *e.accessList;
}
std::string ContentLine(const std::string& content) {
    return std::string(kContentLead.Narrow()) + content + kContentEnd.narrow;
}

std::string_view DirectoryTitle(DirectoryKind kind) {
    switch (kind) {
        case DirectoryKind::Current: return kCurrentDirectory.Narrow();
        case DirectoryKind::Standard: return kStandardDirectory.Narrow();
        case DirectoryKind::Registry: break;
        case DirectoryKind::SharedParameters: return kSharedParametersDirectory.Narrow();
        case DirectoryKind::SharedBatch: return kSharedBatchDirectory.Narrow();
    }
    return {};
}

std::string DirectoryHeadingLine(const Directory& d) {
    if (d.kind == DirectoryKind::Registry) return std::string(kRegistryDirectoryHeading.Narrow());
    return std::string(kDirectoryLead.Narrow()) + std::string(DirectoryTitle(d.kind)) + kDirectoryPathOpen.narrow +
           d.path.value_or("") + kDirectoryPathClose.narrow;
}

std::string RegistryValueLine(const RegistryValue& v) {
    return "\t" + v.name + kRegistryValueSeparator.narrow + (v.number ? SignedText(*v.number) : v.text.value_or(""));
}

std::string RedactionLine(const std::vector<std::string>& kinds) {
    std::string line(kRedactedLead.Narrow());
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        if (i > 0) line += kRedactedSeparator.narrow;
        line += kinds[i];
    }
    return line;
}

std::string_view DirectoryKindName(DirectoryKind kind) {
    switch (kind) {
        case DirectoryKind::Current: return "current";
        case DirectoryKind::Standard: return "standard";
        case DirectoryKind::Registry: return "registry";
        case DirectoryKind::SharedParameters: return "shared parameters";
        case DirectoryKind::SharedBatch: return "shared batch";
    }
    return "current";
}

namespace {
void AddDirectory(std::vector<std::string>& lines, const Directory& d) {
    lines.push_back(DirectoryHeadingLine(d));
    for (const DirectoryEntry& e : d.entries) {
        lines.push_back(EntryLine(e));
        if (e.content) lines.push_back(ContentLine(*e.content));
    }
}

void AddAdapter(std::vector<std::string>& lines, const Adapter& a) {
    lines.push_back(std::string(kAdapterName.Narrow()) + a.name);
    AddNumber(lines, a.ifIndex, kIfIndex.Narrow());
    if (a.unicastCount) lines.push_back(CountLine(a.unicastCount, kUnicastAddresses.Narrow()));
    if (a.anycastCount) lines.push_back(CountLine(a.anycastCount, kAnycastAddresses.Narrow()));
    if (a.multicastCount) lines.push_back(CountLine(a.multicastCount, kMulticastAddresses.Narrow()));
    if (a.dnsServerCount) lines.push_back(CountLine(a.dnsServerCount, kDnsServerAddresses.Narrow()));
    AddIf(lines, a.dnsSuffix, kDnsSuffix.Narrow());
    AddIf(lines, a.description, kDescription.Narrow());
    AddIf(lines, a.friendlyName, kFriendlyName.Narrow());
    AddIf(lines, a.physicalAddress, kPhysicalAddress.Narrow());
    AddNumber(lines, a.flags, kFlags.Narrow());
    AddNumber(lines, a.mtu, kMtu.Narrow());
    AddNumber(lines, a.ifType, kIfType.Narrow());
    AddNumber(lines, a.operStatus, kOperStatus.Narrow());
    AddNumber(lines, a.ipv6IfIndex, kIpv6IfIndex.Narrow());
    if (a.zoneIndices) lines.push_back(ZoneIndicesLine(*a.zoneIndices));
    if (a.prefixCount) lines.push_back(PrefixLine(*a.prefixCount));
    if (a.closingBlankLine) lines.emplace_back();
}
}  // namespace

std::vector<std::string> RecognisedLines(const Report& r) {
    std::vector<std::string> lines;
    if (r.header.present) {
        lines.push_back(r.header.text);
        if (r.header.blankLineAfter) lines.emplace_back();
    }
    const ProgramSection& program = r.program;
    AddHeading(lines, program.heading, kProgramHeading.Narrow());
    if (program.name) lines.push_back(ProgramNameLine(*program.name, program.version.value_or("")));
    AddIf(lines, program.directory, kProgramDirectory.Narrow());
    if (program.elevated) lines.emplace_back(kAdministratorLine.Narrow());

    const HostSection& host = r.host;
    AddHeading(lines, host.heading, kHostHeading.Narrow());
    if (host.hasNameLine) lines.push_back(HostNameLine(host));
    AddIf(lines, host.user, kUser.Narrow());

    const WindowsSection& windows = r.windows;
    AddHeading(lines, windows.heading, kWindowsHeading.Narrow());
    if (windows.hasVersionReported) lines.push_back(VersionReportedLine(windows));
    AddIf(lines, windows.realVersion, kRealVersion.Narrow());
    AddIf(lines, windows.productId, kProductId.Narrow());
    AddIf(lines, windows.systemPath, kSystemPath.Narrow());
    AddIf(lines, windows.programFilesPath, kProgramFilesPath.Narrow());
    AddIf(lines, windows.commonAppDataPath, kCommonAppDataPath.Narrow());

    const HardwareSection& hw = r.hardware;
    AddHeading(lines, hw.heading, kHardwareHeading.Narrow());
    if (hw.bits) lines.push_back(std::string(kSystemBits.Narrow()) + UnsignedText(*hw.bits) + kBitsUnit.narrow);
    AddIf(lines, hw.bios, kBios.Narrow());
    AddIf(lines, hw.board, kBoard.Narrow());
    AddNumber(lines, hw.processorCount, kProcessorCount.Narrow());
    if (hw.processor) lines.push_back(ProcessorLineText(*hw.processor));
    AddNumber(lines, hw.activeProcessorMask, kActiveProcessorMask.Narrow());
    AddNumber(lines, hw.pageSize, kPageSize.Narrow());
    if (hw.applicationAddresses) lines.push_back(AddressesLine(*hw.applicationAddresses));
    if (hw.memory) lines.push_back(MemoryLineText(*hw.memory));
    if (hw.volume) lines.push_back(VolumeLineText(*hw.volume));

    const NetworkSection& net = r.network;
    AddHeading(lines, net.heading, kNetworkHeading.Narrow());
    if (net.allocationFailed) lines.emplace_back(kAllocationFailure.Narrow());
    if (net.enumerationError) lines.push_back(EnumerationErrorLine(*net.enumerationError));
    if (net.noAddressesFound) lines.emplace_back(kNoAddressesFound.Narrow());
    AddIf(lines, net.errorText, kErrorText.Narrow());
    if (net.enumerationHeading) lines.emplace_back(kAdaptersHeading.Narrow());
    for (const Adapter& a : net.adapters) AddAdapter(lines, a);

    const InstallationSection& inst = r.installation;
    AddHeading(lines, inst.heading, kInstallationHeading.Narrow());
    bool registryDataDone = false;
    const auto addRegistryData = [&] {
        if (registryDataDone) return;
        registryDataDone = true;
        if (inst.registryDataHeading) lines.emplace_back(kRegistryDataHeading.Narrow());
        for (const RegistryValue& v : inst.registryValues) lines.push_back(RegistryValueLine(v));
    };
    for (const Directory& d : inst.directories) {
        if (d.kind > DirectoryKind::Standard) addRegistryData();
        AddDirectory(lines, d);
    }
    addRegistryData();
    if (r.redaction) {
        lines.emplace_back();
        lines.push_back(RedactionLine(r.redaction->kinds));
    }
    return lines;
}

std::u16string RenderReportBody(const Report& report) {
    const std::vector<std::string> recognised = RecognisedLines(report);
    std::string text;
    std::size_t nextRecognised = 0;
    std::size_t nextUnrecognised = 0;
    std::size_t nextException = 0;
    const auto& exceptions = report.lineBreaks.exceptions;
    const std::size_t total = recognised.size() + report.unrecognised.size();
    for (std::size_t number = 1; number <= total; ++number) {
        if (nextUnrecognised < report.unrecognised.size() && report.unrecognised[nextUnrecognised].line == number)
            text += report.unrecognised[nextUnrecognised++].text;
        else if (nextRecognised < recognised.size())
            text += recognised[nextRecognised++];
        else
            text += report.unrecognised[nextUnrecognised++].text;  // numbers with gaps: keep their order
        if (number == total && !report.lineBreaks.finalLineBreak) break;
        bool crlf = report.lineBreaks.crlf;
        if (nextException < exceptions.size() && exceptions[nextException] == number) {
            crlf = !crlf;
            ++nextException;
        }
        text += crlf ? "\r\n" : "\n";
    }
    return Utf16FromUtf8(text);
}

}  // namespace report_model
