// The report body made again from the model: each recognised line in the
// report's order, the unrecognised lines put back at their numbers, the
// line breaks as they were. The reader accepts a line only when the line
// made here from what it read is that very line, so the two cannot drift.
#include <algorithm>

#include "format/AdapterText.h"
#include "format/InstallationText.h"
#include "format/ReportText.h"
#include "reader/ReportModelText.h"
#include "reader/ReportRender.h"

namespace report_model {

namespace {
// A heading constant "\n<Word>:\n" as its line "<Word>:".
std::string HeadingLine(std::wstring_view heading) {
    return Narrow(heading.substr(1, heading.size() - 2));
}

void AddHeading(std::vector<std::string>& lines, const Heading& heading, std::wstring_view text) {
    if (!heading.present) return;
    if (heading.blankLineBefore) lines.emplace_back();
    lines.push_back(HeadingLine(text));
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
    return "\tname: " + host.netbiosName + " (" + host.domain + "\\" + host.wmiName + ")";
}
std::string VersionReportedLine(const WindowsSection& windows) {
    return "\tversion reported: " + windows.versionLabel + " (" + windows.edition + ")";
}
std::string ProcessorLineText(const ProcessorLine& p) {
    return "\tprocessor : " + UnsignedText(p.architecture) + " (" + UnsignedText(p.level) + "." +
           UnsignedText(p.revision) + ")";
}
std::string AddressesLine(const AddressRange& range) {
    return "\tapplication addresses: " + range.lowest + "-" + range.highest;
}
std::string MemoryLineText(const MemoryLine& m) {
    return "\tmemory: " + SignedText(m.physicalK) + "K physical, " + SignedText(m.virtualK) + "K virtual, " +
           SignedText(m.pagingK) + "K paging";
}
std::string VolumeLineText(const VolumeLine& v) {
    return "\tC volume: " + v.serial + " " + v.flags + " " + v.fileSystem + " total " + SignedText(v.totalK) +
           "K free " + SignedText(v.freeK) + "K (user " + SignedText(v.userK) + "K)";
}

std::string CountLine(const std::optional<std::uint64_t>& count, std::string_view what) {
    if (*count == 0) return "\tNo " + std::string(what);
    return "\tNumber of " + std::string(what) + ": " + UnsignedText(*count);
}
std::string ZoneIndicesLine(const std::vector<std::uint32_t>& zones) {
    std::string line = "\tZoneIndices (hex): ";
    for (std::uint32_t zone : zones) line += UnsignedText(zone, 16) + " ";
    return line;
}
std::string PrefixLine(std::uint64_t count) {
    if (count == 0) return "\tNo IP Adapter Prefix entries";
    return "\tNumber of IP Adapter Prefix entries: " + UnsignedText(count);
}

std::string EnumerationErrorLine(std::int64_t code) {
    return "Call to GetAdaptersAddresses failed with error: " + SignedText(code);
}

std::string EntryLine(const DirectoryEntry& e) {
    std::string line(1, '\t');
    line += Narrow(FormatEntryHead(e.attributes, static_cast<std::uint32_t>(e.size)));
    line += e.created.printed + "\t" + e.written.printed + "\t" + e.name + "\t" + e.version;
    if (e.accessList) line += Narrow(kAccessListHeading) + *e.accessList;
    return line;
}
std::string ContentLine(const std::string& content) {
    return "\t\t\t\tContent:\"" + content + "\"";
}

std::string DirectoryHeadingLine(const Directory& d) {
    const std::string path = d.path.value_or("");
    switch (d.kind) {
        case DirectoryKind::Current: return "* Current directory (" + path + "):";
        case DirectoryKind::Standard: return "* Standard installation directory (" + path + "):";
        case DirectoryKind::Registry: return HeadingLine(L"\n" + std::wstring(kRegistryDirectoryHeading));
        case DirectoryKind::SharedParameters: return "* Shared parameters directory (" + path + "):";
        case DirectoryKind::SharedBatch: return "* Shared Batch directory (" + path + "):";
    }
    return {};
}

std::string RegistryValueLine(const RegistryValue& v) {
    return "\t" + v.name + ": " + (v.number ? SignedText(*v.number) : v.text.value_or(""));
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
    lines.push_back("\tAdapter name: " + a.name);
    AddNumber(lines, a.ifIndex, "\tIfIndex (IPv4 interface): ");
    if (a.unicastCount) lines.push_back(CountLine(a.unicastCount, "Unicast Addresses"));
    if (a.anycastCount) lines.push_back(CountLine(a.anycastCount, "Anycast Addresses"));
    if (a.multicastCount) lines.push_back(CountLine(a.multicastCount, "Multicast Addresses"));
    if (a.dnsServerCount) lines.push_back(CountLine(a.dnsServerCount, "DNS Server Addresses"));
    AddIf(lines, a.dnsSuffix, "\tDNS Suffix: ");
    AddIf(lines, a.description, "\tDescription: ");
    AddIf(lines, a.friendlyName, "\tFriendly name: ");
    AddIf(lines, a.physicalAddress, "\tPhysical address: ");
    AddNumber(lines, a.flags, "\tFlags: ");
    AddNumber(lines, a.mtu, "\tMtu: ");
    AddNumber(lines, a.ifType, "\tIfType: ");
    AddNumber(lines, a.operStatus, "\tOperStatus: ");
    AddNumber(lines, a.ipv6IfIndex, "\tIpv6IfIndex (IPv6 interface): ");
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
    AddHeading(lines, program.heading, kProgramHeading);
    if (program.name) lines.push_back(ProgramNameLine(*program.name, program.version.value_or("")));
    AddIf(lines, program.directory, "in ");
    if (program.elevated) lines.push_back(Narrow(kAdministratorLine.substr(0, kAdministratorLine.size() - 1)));

    const HostSection& host = r.host;
    AddHeading(lines, host.heading, kHostHeading);
    if (host.hasNameLine) lines.push_back(HostNameLine(host));
    AddIf(lines, host.user, "\tuser: ");

    const WindowsSection& windows = r.windows;
    AddHeading(lines, windows.heading, kWindowsHeading);
    if (windows.hasVersionReported) lines.push_back(VersionReportedLine(windows));
    AddIf(lines, windows.realVersion, "\treal version: ");
    AddIf(lines, windows.productId, "\tid: ");
    AddIf(lines, windows.systemPath, "\tsystem path: ");
    AddIf(lines, windows.programFilesPath, "\tprogram file path: ");
    AddIf(lines, windows.commonAppDataPath, "\tapplication common shared path: ");

    const HardwareSection& hw = r.hardware;
    AddHeading(lines, hw.heading, kHardwareHeading);
    if (hw.bits) lines.push_back("\tsystem: " + UnsignedText(*hw.bits) + " bits");
    AddIf(lines, hw.bios, "\tbios: ");
    AddIf(lines, hw.board, "\tboard: ");
    AddNumber(lines, hw.processorCount, "\tnumber of processors: ");
    if (hw.processor) lines.push_back(ProcessorLineText(*hw.processor));
    AddNumber(lines, hw.activeProcessorMask, "\tactive processor mask: ");
    AddNumber(lines, hw.pageSize, "\tpage size: ");
    if (hw.applicationAddresses) lines.push_back(AddressesLine(*hw.applicationAddresses));
    if (hw.memory) lines.push_back(MemoryLineText(*hw.memory));
    if (hw.volume) lines.push_back(VolumeLineText(*hw.volume));

    const NetworkSection& net = r.network;
    AddHeading(lines, net.heading, kNetworkHeading);
    if (net.allocationFailed)
        lines.push_back(std::string(kAdapterAllocationFailure.substr(0, kAdapterAllocationFailure.size() - 1)));
    if (net.enumerationError) lines.push_back(EnumerationErrorLine(*net.enumerationError));
    if (net.noAddressesFound) lines.push_back("\tNo addresses were found for the requested parameters");
    AddIf(lines, net.errorText, "\tError: ");
    if (net.enumerationHeading) lines.push_back(std::string(kAdaptersHeading.substr(0, kAdaptersHeading.size() - 1)));
    for (const Adapter& a : net.adapters) AddAdapter(lines, a);

    const InstallationSection& inst = r.installation;
    AddHeading(lines, inst.heading, kInstallationHeading);
    bool registryDataDone = false;
    const auto addRegistryData = [&] {
        if (registryDataDone) return;
        registryDataDone = true;
        if (inst.registryDataHeading) lines.push_back(Narrow(kRegistryDataHeading.substr(0, kRegistryDataHeading.size() - 1)));
        for (const RegistryValue& v : inst.registryValues) lines.push_back(RegistryValueLine(v));
    };
    for (const Directory& d : inst.directories) {
        if (d.kind > DirectoryKind::Standard) addRegistryData();
        AddDirectory(lines, d);
    }
    addRegistryData();
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
