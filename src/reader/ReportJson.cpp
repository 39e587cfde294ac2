#include "reader/ReportJson.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <optional>
#include <type_traits>
#include <vector>

#include "format/NumberText.h"
#include "reader/ReportModelText.h"

namespace report_model {

namespace {
using Json = nlohmann::ordered_json;

template <typename T>
inline constexpr bool kIsOptional = false;
template <typename T>
inline constexpr bool kIsOptional<std::optional<T>> = true;
template <typename T>
inline constexpr bool kIsVector = false;
template <typename T>
inline constexpr bool kIsVector<std::vector<T>> = true;

// A model value as JSON: nothing for an empty optional, an array for a list.
template <typename T>
void Put(JsonWriter& json, const T& value) {
    if constexpr (std::is_same_v<T, bool>) {
        json.Bool(value);
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
        json.Signed(value);
    } else if constexpr (std::is_integral_v<T>) {
        json.Unsigned(value);
    } else if constexpr (kIsOptional<T>) {
        if (value)
            Put(json, *value);
        else
            json.Null();
    } else if constexpr (kIsVector<T>) {
        json.Open('[');
        for (const auto& item : value) Put(json, item);
        json.Close(']');
    } else {
        json.String(value);
    }
}

template <typename T>
void Member(JsonWriter& json, std::string_view key, const T& value) {
    json.Key(key);
    Put(json, value);
}

// A value that a single line of the report carries, null without that line.
template <typename T>
void MemberIf(JsonWriter& json, std::string_view key, bool present, const T& value) {
    json.Key(key);
    if (present)
        Put(json, value);
    else
        json.Null();
}

// Sections end with where their heading stood.
// `key`, then the object `fill` writes of the value, or null without one.
template <typename T, typename Fill>
void ObjectOrNull(JsonWriter& json, std::string_view key, const std::optional<T>& value, Fill fill) {
    json.Key(key);
    if (!value) return json.Null();
    json.Open('{');
    fill(*value);
    json.Close('}');
}

void CloseSection(JsonWriter& json, const Heading& heading) {
    Member(json, "blankLineBefore", heading.blankLineBefore);
    json.Close('}');
}

void PutProgram(JsonWriter& json, const ProgramSection& p) {
    if (!p.heading.present) return json.Null();
    json.Open('{');
    Member(json, "name", p.name);
    Member(json, "version", p.version);
    Member(json, "directory", p.directory);
    Member(json, "elevated", p.elevated);
    CloseSection(json, p.heading);
}

void PutHost(JsonWriter& json, const HostSection& h) {
    if (!h.heading.present) return json.Null();
    json.Open('{');
    MemberIf(json, "netbiosName", h.hasNameLine, h.netbiosName);
    MemberIf(json, "domain", h.hasNameLine, h.domain);
    MemberIf(json, "wmiName", h.hasNameLine, h.wmiName);
    Member(json, "user", h.user);
    CloseSection(json, h.heading);
}

void PutWindows(JsonWriter& json, const WindowsSection& w) {
    if (!w.heading.present) return json.Null();
    json.Open('{');
    MemberIf(json, "versionLabel", w.hasVersionReported, w.versionLabel);
    MemberIf(json, "edition", w.hasVersionReported, w.edition);
    Member(json, "realVersion", w.realVersion);
    Member(json, "productId", w.productId);
    Member(json, "systemPath", w.systemPath);
    Member(json, "programFilesPath", w.programFilesPath);
    Member(json, "commonAppDataPath", w.commonAppDataPath);
    CloseSection(json, w.heading);
}

void PutHardware(JsonWriter& json, const HardwareSection& h) {
    if (!h.heading.present) return json.Null();
    json.Open('{');
    Member(json, "bits", h.bits);
    Member(json, "bios", h.bios);
    Member(json, "board", h.board);
    Member(json, "processorCount", h.processorCount);
    ObjectOrNull(json, "processor", h.processor, [&](const auto& p) {
        Member(json, "architecture", p.architecture);
        Member(json, "level", p.level);
        Member(json, "revision", p.revision);
    });
    Member(json, "activeProcessorMask", h.activeProcessorMask);
    Member(json, "pageSize", h.pageSize);
    ObjectOrNull(json, "applicationAddresses", h.applicationAddresses, [&](const auto& a) {
        Member(json, "lowest", a.lowest);
        Member(json, "highest", a.highest);
    });
    ObjectOrNull(json, "memory", h.memory, [&](const auto& m) {
        Member(json, "physicalK", m.physicalK);
        Member(json, "virtualK", m.virtualK);
        Member(json, "pagingK", m.pagingK);
    });
    ObjectOrNull(json, "volumeC", h.volume, [&](const auto& v) {
        Member(json, "serial", v.serial);
        Member(json, "flags", v.flags);
        Member(json, "fileSystem", v.fileSystem);
        Member(json, "totalK", v.totalK);
        Member(json, "freeK", v.freeK);
        Member(json, "userK", v.userK);
    });
    CloseSection(json, h.heading);
}

void PutAdapter(JsonWriter& json, const Adapter& a) {
    json.Open('{');
    Member(json, "name", a.name);
    Member(json, "ifIndex", a.ifIndex);
    Member(json, "unicastCount", a.unicastCount);
    Member(json, "anycastCount", a.anycastCount);
    Member(json, "multicastCount", a.multicastCount);
    Member(json, "dnsServerCount", a.dnsServerCount);
    Member(json, "dnsSuffix", a.dnsSuffix);
    Member(json, "description", a.description);
    Member(json, "friendlyName", a.friendlyName);
    Member(json, "physicalAddress", a.physicalAddress);
    Member(json, "flags", a.flags);
    Member(json, "mtu", a.mtu);
    Member(json, "ifType", a.ifType);
    Member(json, "operStatus", a.operStatus);
    Member(json, "ipv6IfIndex", a.ipv6IfIndex);
    Member(json, "zoneIndices", a.zoneIndices);
    Member(json, "prefixCount", a.prefixCount);
    Member(json, "closingBlankLine", a.closingBlankLine);
    json.Close('}');
}

void PutNetwork(JsonWriter& json, const NetworkSection& n) {
    if (!n.heading.present) return json.Null();
    json.Open('{');
    Member(json, "enumerationHeading", n.enumerationHeading);
    json.Key("adapters");
    json.Open('[');
    for (const Adapter& a : n.adapters) PutAdapter(json, a);
    json.Close(']');
    Member(json, "allocationFailed", n.allocationFailed);
    Member(json, "enumerationError", n.enumerationError);
    Member(json, "noAddressesFound", n.noAddressesFound);
    Member(json, "errorText", n.errorText);
    CloseSection(json, n.heading);
}

void PutEntry(JsonWriter& json, const DirectoryEntry& e) {
    json.Open('{');
    Member(json, "name", e.name);
    Member(json, "version", e.version);
    Member(json, "attributes", ChecksumText(e.attributes));
    Member(json, "size", e.size);
    Member(json, "created", e.created.PrintedText());
    Member(json, "createdIso", e.created.IsoText());
    Member(json, "written", e.written.PrintedText());
    Member(json, "writtenIso", e.written.IsoText());
    Member(json, "accessList", e.accessList);
    Member(json, "content", e.content);
    json.Close('}');
}

void PutInstallation(JsonWriter& json, const InstallationSection& inst) {
    if (!inst.heading.present) return json.Null();
    json.Open('{');
    json.Key("directories");
    json.Open('[');
    for (const Directory& d : inst.directories) {
        json.Open('{');
        Member(json, "kind", DirectoryKindName(d.kind));
        Member(json, "path", d.path);
        json.Key("entries");
        json.Open('[');
        for (const DirectoryEntry& e : d.entries) PutEntry(json, e);
        json.Close(']');
        json.Close('}');
    }
    json.Close(']');
    Member(json, "registryDataHeading", inst.registryDataHeading);
    // The reader takes each known value at most once, so the names are keys.
    json.Key("registry");
    json.Open('{');
    for (const RegistryValue& v : inst.registryValues) {
        if (v.number)
            Member(json, v.name, *v.number);
        else
            Member(json, v.name, v.text.value_or(""));
    }
    json.Close('}');
    CloseSection(json, inst.heading);
}

// What a byte asks of a JSON string; one look-up per byte, as the strings
// are most of collect's output.
enum class ByteKind : unsigned char { Plain, Escaped, BeyondAscii };
constexpr std::array<ByteKind, 256> kByteKinds = [] {
    std::array<ByteKind, 256> kinds{};
    for (std::size_t c = 0; c < 0x20; ++c) kinds[c] = ByteKind::Escaped;
    kinds['"'] = kinds['\\'] = ByteKind::Escaped;
    for (std::size_t c = 0x80; c < 0x100; ++c) kinds[c] = ByteKind::BeyondAscii;
    return kinds;
}();

// Where the first byte at or after `from` stands that is not plain, the
// text's size when there is none. Eight bytes are looked at together while
// none of them can be one: a byte below 0x20, '"', '\\' or from 0x80 sets
// its high bit in `maybe` (now and then a plain byte after one that does
// too), and the byte-by-byte look that follows decides.
std::size_t NextNotPlain(std::string_view text, std::size_t from) {
    constexpr std::uint64_t kOnes = 0x0101010101010101u, kHighs = 0x8080808080808080u;
    const auto zeroByte = [](std::uint64_t v) { return (v - kOnes) & ~v; };
    for (; from + 8 <= text.size(); from += 8) {
        std::uint64_t bytes;
        std::memcpy(&bytes, text.data() + from, sizeof bytes);
        const std::uint64_t maybe = ((bytes - kOnes * 0x20) & ~bytes) | zeroByte(bytes ^ (kOnes * '"')) |
                                    zeroByte(bytes ^ (kOnes * '\\')) | bytes;
        if ((maybe & kHighs) != 0) break;
    }
    while (from < text.size() && kByteKinds[static_cast<unsigned char>(text[from])] == ByteKind::Plain) ++from;
    return from;
}
}  // namespace

void JsonWriter::Separate() {
    if (comma_) out_ += ',';
    comma_ = false;
}

void JsonWriter::Open(char bracket) {
    Separate();
    out_ += bracket;
}

void JsonWriter::Close(char bracket) {
    out_ += bracket;
    comma_ = true;
    constexpr std::size_t kDrainBytes = 64 * 1024;
    if (drain_ && out_.size() >= kDrainBytes) {
        drain_(out_);
        out_.clear();
    }
}

void JsonWriter::Key(std::string_view key) {
    // Appended in one piece where it is short, as nearly every key is: a
    // report's document has a thousand of them.
    char piece[64];
    if (key.size() + 4 > sizeof piece) {
        Separate();
        out_ += '"';
        out_ += key;
        out_ += "\":";
        return;
    }
    char* end = piece;
    if (comma_) *end++ = ',';
    comma_ = false;
    *end++ = '"';
    end = std::copy(key.begin(), key.end(), end);
    *end++ = '"';
    *end++ = ':';
    out_.append(piece, end);
}

void JsonWriter::String(std::string_view text) {
    Separate();
    comma_ = true;
    const std::size_t start = out_.size();
    out_ += '"';
    std::size_t plain = 0;  // start of the characters not yet copied
    for (std::size_t i = NextNotPlain(text, 0); i < text.size(); i = NextNotPlain(text, i + 1)) {
        const char c = text[i];
        if (kByteKinds[static_cast<unsigned char>(c)] == ByteKind::BeyondAscii) {
            // What an ill-formed sequence becomes is nlohmann's to say (file
            // names are any bytes); texts beyond ASCII are rare.
            out_.resize(start);
            out_ += DumpJson(Json(WithoutLoneSurrogates(text)));
            return;
        }
        out_.append(text, plain, i - plain);
        plain = i + 1;
        out_ += '\\';
        switch (c) {
            case '"': out_ += '"'; break;
            case '\\': out_ += '\\'; break;
            case '\b': out_ += 'b'; break;
            case '\f': out_ += 'f'; break;
            case '\n': out_ += 'n'; break;
            case '\r': out_ += 'r'; break;
            case '\t': out_ += 't'; break;
            default:
                out_ += 'u';
                out_ += numtext::Hex<char>(static_cast<unsigned char>(c), 4, false);
        }
    }
    out_.append(text, plain);
    out_ += '"';
}

void JsonWriter::Null() {
    Separate();
    out_ += "null";
    comma_ = true;
}

void JsonWriter::Bool(bool value) {
    Separate();
    out_ += value ? "true" : "false";
    comma_ = true;
}

void JsonWriter::Signed(std::int64_t value) {
    Separate();
    char digits[24];
    out_.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    comma_ = true;
}

void JsonWriter::Unsigned(std::uint64_t value) {
    Separate();
    char digits[24];
    out_.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    comma_ = true;
}

void WriteHeaderTime(JsonWriter& json, const std::optional<HeaderTime>& time) {
    if (!time) return json.Null();
    json.Open('{');
    Member(json, "iso", time->iso);
    Member(json, "certain", time->Certain());
    json.Key("settledBy");
    time->settledBy ? json.String(SettledByName(*time->settledBy)) : json.Null();
    Member(json, "readings", time->readings);
    json.Close('}');
}

void WriteReportJson(JsonWriter& json, const Report& report, const ReportVerdict& verdict,
                     std::optional<std::int64_t> fileModified, const std::optional<TransitDamage>& transit) {
    WriteReportJson(json, report, verdict, ReadHeaderTime(report, fileModified), transit);
}

void WriteReportJson(JsonWriter& json, const Report& report, const ReportVerdict& verdict,
                     const std::optional<HeaderTime>& headerTime, const std::optional<TransitDamage>& transit) {
    json.Open('{');
    Member(json, "schemaVersion", kReportSchemaVersion);
    json.Key("integrity");
    json.Open('{');
    Member(json, "verdict", verdict.state == ReportState::Intact ? "intact" : "altered");
    Member(json, "storedChecksum", ChecksumText(verdict.stored));
    Member(json, "bodyChecksum", ChecksumText(verdict.computed));
    Member(json, "lineBreaks", report.lineBreaks.crlf ? "CR LF" : "LF");
    Member(json, "lineBreakExceptions", report.lineBreaks.exceptions);
    Member(json, "finalLineBreak", report.lineBreaks.finalLineBreak);
    // Only when something is known, so that every other report's JSON stays
    // as it was.
    if (transit) {
        json.Key("transitDamage");
        json.Open('{');
        Member(json, "damage", transit->damage);
        Member(json, "repairable", transit->repairable);
        json.Close('}');
    }
    json.Close('}');
    Member(json, "lineCount", report.lineCount);
    json.Key("header");
    if (report.header.present) {
        json.Open('{');
        Member(json, "text", report.header.text);
        Member(json, "blankLineAfter", report.header.blankLineAfter);
        json.Key("time");
        WriteHeaderTime(json, headerTime);
        json.Close('}');
    } else {
        json.Null();
    }
    json.Key("program");
    PutProgram(json, report.program);
    json.Key("host");
    PutHost(json, report.host);
    json.Key("windows");
    PutWindows(json, report.windows);
    json.Key("hardware");
    PutHardware(json, report.hardware);
    json.Key("network");
    PutNetwork(json, report.network);
    json.Key("installation");
    PutInstallation(json, report.installation);
    json.Key("unrecognised");
    json.Open('[');
    for (const UnrecognisedLine& u : report.unrecognised) {
        json.Open('{');
        Member(json, "line", u.line);
        Member(json, "text", u.text);
        json.Close('}');
    }
    json.Close(']');
    // Only in a redacted report, so that every other report's JSON stays as
    // it was.
    if (report.redaction) {
        json.Key("redaction");
        json.Open('{');
        Member(json, "line", report.redaction->line);
        Member(json, "kinds", report.redaction->kinds);
        json.Close('}');
    }
    json.Close('}');
}

Json ReportToJson(const Report& report, const ReportVerdict& verdict, std::optional<std::int64_t> fileModified,
                  const std::optional<TransitDamage>& transit) {
    std::string text;
    JsonWriter json(text);
    WriteReportJson(json, report, verdict, fileModified, transit);
    return Json::parse(text);
}

namespace {
bool HoldsLoneSurrogate(const Json& json) {
    if (json.is_string()) {
        const std::string& text = json.get_ref<const std::string&>();
        return text.find('\xED') != std::string::npos && WithoutLoneSurrogates(text) != text;
    }
    if (!json.is_structured()) return false;  // a primitive iterates as itself
    for (const Json& element : json)
        if (HoldsLoneSurrogate(element)) return true;
    return false;
}

// Every text of the tree with its lone surrogates as one U+FFFD each, where
// nlohmann would make one of each of their three bytes.
void ReplaceLoneSurrogates(Json& json) {
    if (json.is_string()) {
        json = WithoutLoneSurrogates(json.get_ref<const std::string&>());
        return;
    }
    if (!json.is_structured()) return;
    for (Json& element : json) ReplaceLoneSurrogates(element);
}
}  // namespace

std::string DumpJson(const Json& json, int indent) {
    constexpr auto kReplace = Json::error_handler_t::replace;  // file names are any bytes
    if (!HoldsLoneSurrogate(json)) return json.dump(indent, ' ', false, kReplace);
    Json copy = json;
    ReplaceLoneSurrogates(copy);
    return copy.dump(indent, ' ', false, kReplace);
}

}  // namespace report_model
