#include "report/ReportJson.h"

#include "report/ReportModelText.h"

namespace report_model {

namespace {
using Json = nlohmann::ordered_json;

template <typename T>
Json OrNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

void PutHeading(Json& json, const Heading& heading) {
    json["blankLineBefore"] = heading.blankLineBefore;
}

Json ProgramJson(const ProgramSection& p) {
    if (!p.heading.present) return nullptr;
    Json json;
    json["name"] = OrNull(p.name);
    json["version"] = OrNull(p.version);
    json["directory"] = OrNull(p.directory);
    json["elevated"] = p.elevated;
    PutHeading(json, p.heading);
    return json;
}

Json HostJson(const HostSection& h) {
    if (!h.heading.present) return nullptr;
    Json json;
    json["netbiosName"] = h.hasNameLine ? Json(h.netbiosName) : Json(nullptr);
    json["domain"] = h.hasNameLine ? Json(h.domain) : Json(nullptr);
    json["wmiName"] = h.hasNameLine ? Json(h.wmiName) : Json(nullptr);
    json["user"] = OrNull(h.user);
    PutHeading(json, h.heading);
    return json;
}

Json WindowsJson(const WindowsSection& w) {
    if (!w.heading.present) return nullptr;
    Json json;
    json["versionLabel"] = w.hasVersionReported ? Json(w.versionLabel) : Json(nullptr);
    json["edition"] = w.hasVersionReported ? Json(w.edition) : Json(nullptr);
    json["realVersion"] = OrNull(w.realVersion);
    json["productId"] = OrNull(w.productId);
    json["systemPath"] = OrNull(w.systemPath);
    json["programFilesPath"] = OrNull(w.programFilesPath);
    json["commonAppDataPath"] = OrNull(w.commonAppDataPath);
    PutHeading(json, w.heading);
    return json;
}

Json HardwareJson(const HardwareSection& h) {
    if (!h.heading.present) return nullptr;
    Json json;
    json["bits"] = OrNull(h.bits);
    json["bios"] = OrNull(h.bios);
    json["board"] = OrNull(h.board);
    json["processorCount"] = OrNull(h.processorCount);
    if (h.processor)
        json["processor"] = {{"architecture", h.processor->architecture},
                             {"level", h.processor->level},
                             {"revision", h.processor->revision}};
    else
        json["processor"] = nullptr;
    json["activeProcessorMask"] = OrNull(h.activeProcessorMask);
    json["pageSize"] = OrNull(h.pageSize);
    if (h.applicationAddresses)
        json["applicationAddresses"] = {{"lowest", h.applicationAddresses->lowest},
                                        {"highest", h.applicationAddresses->highest}};
    else
        json["applicationAddresses"] = nullptr;
    if (h.memory)
        json["memory"] = {{"physicalK", h.memory->physicalK},
                          {"virtualK", h.memory->virtualK},
                          {"pagingK", h.memory->pagingK}};
    else
        json["memory"] = nullptr;
    if (h.volume)
        json["volumeC"] = {{"serial", h.volume->serial},     {"flags", h.volume->flags},
                           {"fileSystem", h.volume->fileSystem}, {"totalK", h.volume->totalK},
                           {"freeK", h.volume->freeK},       {"userK", h.volume->userK}};
    else
        json["volumeC"] = nullptr;
    PutHeading(json, h.heading);
    return json;
}

Json AdapterJson(const Adapter& a) {
    Json json;
    json["name"] = a.name;
    json["ifIndex"] = OrNull(a.ifIndex);
    json["unicastCount"] = OrNull(a.unicastCount);
    json["anycastCount"] = OrNull(a.anycastCount);
    json["multicastCount"] = OrNull(a.multicastCount);
    json["dnsServerCount"] = OrNull(a.dnsServerCount);
    json["dnsSuffix"] = OrNull(a.dnsSuffix);
    json["description"] = OrNull(a.description);
    json["friendlyName"] = OrNull(a.friendlyName);
    json["physicalAddress"] = OrNull(a.physicalAddress);
    json["flags"] = OrNull(a.flags);
    json["mtu"] = OrNull(a.mtu);
    json["ifType"] = OrNull(a.ifType);
    json["operStatus"] = OrNull(a.operStatus);
    json["ipv6IfIndex"] = OrNull(a.ipv6IfIndex);
    json["zoneIndices"] = OrNull(a.zoneIndices);
    json["prefixCount"] = OrNull(a.prefixCount);
    json["closingBlankLine"] = a.closingBlankLine;
    return json;
}

Json NetworkJson(const NetworkSection& n) {
    if (!n.heading.present) return nullptr;
    Json json;
    json["enumerationHeading"] = n.enumerationHeading;
    json["adapters"] = Json::array();
    for (const Adapter& a : n.adapters) json["adapters"].push_back(AdapterJson(a));
    json["allocationFailed"] = n.allocationFailed;
    json["enumerationError"] = OrNull(n.enumerationError);
    json["noAddressesFound"] = n.noAddressesFound;
    json["errorText"] = OrNull(n.errorText);
    PutHeading(json, n.heading);
    return json;
}

Json EntryJson(const DirectoryEntry& e) {
    Json json;
    json["name"] = e.name;
    json["version"] = e.version;
    json["attributes"] = ChecksumText(e.attributes);
    json["size"] = e.size;
    json["created"] = e.created.printed;
    json["createdIso"] = e.created.iso;
    json["written"] = e.written.printed;
    json["writtenIso"] = e.written.iso;
    json["accessList"] = OrNull(e.accessList);
    json["content"] = OrNull(e.content);
    return json;
}

Json InstallationJson(const InstallationSection& inst) {
    if (!inst.heading.present) return nullptr;
    Json json;
    json["directories"] = Json::array();
    for (const Directory& d : inst.directories) {
        Json dir;
        dir["kind"] = std::string(DirectoryKindName(d.kind));
        dir["path"] = OrNull(d.path);
        dir["entries"] = Json::array();
        for (const DirectoryEntry& e : d.entries) dir["entries"].push_back(EntryJson(e));
        json["directories"].push_back(std::move(dir));
    }
    json["registryDataHeading"] = inst.registryDataHeading;
    json["registry"] = Json::object();
    for (const RegistryValue& v : inst.registryValues)
        json["registry"][v.name] = v.number ? Json(*v.number) : Json(v.text.value_or(""));
    PutHeading(json, inst.heading);
    return json;
}
}  // namespace

std::string ChecksumText(std::uint32_t checksum) {
    std::string digits = UnsignedText(checksum, 16);
    return std::string(8 - digits.size(), '0') + digits;
}

Json ReportToJson(const Report& report, const ReportVerdict& verdict) {
    Json json;
    json["schemaVersion"] = kReportSchemaVersion;
    Json integrity;
    integrity["verdict"] = verdict.state == ReportState::Intact ? "intact" : "altered";
    integrity["storedChecksum"] = ChecksumText(verdict.stored);
    integrity["bodyChecksum"] = ChecksumText(verdict.computed);
    integrity["lineBreaks"] = report.lineBreaks.crlf ? "CR LF" : "LF";
    integrity["lineBreakExceptions"] = report.lineBreaks.exceptions;
    integrity["finalLineBreak"] = report.lineBreaks.finalLineBreak;
    json["integrity"] = std::move(integrity);
    json["lineCount"] = report.lineCount;
    if (report.header.present)
        json["header"] = {{"text", report.header.text}, {"blankLineAfter", report.header.blankLineAfter}};
    else
        json["header"] = nullptr;
    json["program"] = ProgramJson(report.program);
    json["host"] = HostJson(report.host);
    json["windows"] = WindowsJson(report.windows);
    json["hardware"] = HardwareJson(report.hardware);
    json["network"] = NetworkJson(report.network);
    json["installation"] = InstallationJson(report.installation);
    json["unrecognised"] = Json::array();
    for (const UnrecognisedLine& u : report.unrecognised)
        json["unrecognised"].push_back({{"line", u.line}, {"text", u.text}});
    return json;
}

std::string DumpJson(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace report_model
