#include "reader/PageData.h"

#include <algorithm>
#include <map>
#include <set>

#include "format/InstallationText.h"
#include "reader/ReportJson.h"
#include "reader/ReportModelText.h"
#include "reader/ReportRender.h"
#include "format/ReportText.h"

namespace report_page {

using report_model::JsonWriter;
using report_model::Report;

std::string_view SeverityName(Severity severity) {
    switch (severity) {
        case Severity::Error: return "error";
        case Severity::Warning: return "warning";
        case Severity::Info: return "info";
    }
    return "info";
}

std::vector<std::string> BodyLines(std::u16string_view body) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < body.size()) {
        std::size_t end = body.find(u'\n', start);
        const bool last = end == std::u16string_view::npos;
        if (last) end = body.size();
        std::size_t stop = end;
        if (!last && stop > start && body[stop - 1] == u'\r') --stop;
        lines.push_back(report_model::Utf8FromUtf16(body.substr(start, stop - start)));
        start = end + 1;
    }
    return lines;
}

namespace {

// The body line numbers of the recognised lines. The reader puts every
// recognised line in the report's order; the unrecognised ones keep their
// own numbers, so the recognised ones take the numbers left over, in order.
// Each part of the report is then found by its line, from a cursor that only
// moves forward, as RecognisedLines() makes them in the report's order.
class LinePlaces {
public:
    explicit LinePlaces(const Report& report) : recognised_(report_model::RecognisedLines(report)) {
        std::set<std::size_t> unrecognised;
        for (const auto& u : report.unrecognised) unrecognised.insert(u.line);
        std::size_t number = 1;
        for (std::size_t i = 0; i < recognised_.size(); ++i, ++number) {
            while (unrecognised.count(number)) ++number;
            numbers_.push_back(number);
        }
    }

    // The body line of the next recognised line that reads `text`, from
    // `cursor` on (which moves past it); 0 when there is none.
    std::size_t Next(std::string_view text, std::size_t& cursor) const {
        for (std::size_t i = cursor; i < recognised_.size(); ++i) {
            if (recognised_[i] != text) continue;
            cursor = i + 1;
            return numbers_[i];
        }
        return 0;
    }

private:
    std::vector<std::string> recognised_;
    std::vector<std::size_t> numbers_;
};

struct SectionPlace {
    const char* name;
    std::wstring_view heading;
    bool present;
};

std::string HeadingText(std::wstring_view heading) {
    return report_model::Narrow(heading.substr(1, heading.size() - 2));
}

void Member(JsonWriter& json, std::string_view key, std::string_view text) {
    json.Key(key);
    json.String(text);
}
void Member(JsonWriter& json, std::string_view key, std::size_t number) {
    json.Key(key);
    json.Unsigned(number);
}
template <typename T>
void MemberOrNull(JsonWriter& json, std::string_view key, const std::optional<T>& value) {
    json.Key(key);
    if (!value)
        json.Null();
    else if constexpr (std::is_same_v<T, std::string>)
        json.String(*value);
    else if constexpr (std::is_signed_v<T>)
        json.Signed(*value);
    else
        json.Unsigned(*value);
}
// A line number, null for none.
void LineMember(JsonWriter& json, std::string_view key, std::size_t line) {
    json.Key(key);
    if (line)
        json.Unsigned(line);
    else
        json.Null();
}

void WriteVerdict(JsonWriter& json, const ReportVerdict& verdict) {
    Member(json, "verdict", verdict.state == ReportState::Intact ? "intact" : "altered");
    Member(json, "storedChecksum", report_model::ChecksumText(verdict.stored));
    Member(json, "bodyChecksum", report_model::ChecksumText(verdict.computed));
}

void WriteFindings(JsonWriter& json, const std::vector<Finding>& findings) {
    json.Key("findings");
    json.Open('[');
    for (const Finding& f : findings) {
        json.Open('{');
        Member(json, "rule", f.rule);
        Member(json, "severity", SeverityName(f.severity));
        json.Key("title");
        json.Open('{');
        Member(json, "en", f.titleEn);
        Member(json, "fr", f.titleFr);
        json.Close('}');
        json.Key("remedy");
        json.Open('{');
        Member(json, "en", f.remedyEn);
        Member(json, "fr", f.remedyFr);
        json.Close('}');
        LineMember(json, "line", f.line);
        Member(json, "detail", f.detail);
        json.Close('}');
    }
    json.Close(']');
}

// Where each part of one report stands, and its JSON for the page.
class ReportLayout {
public:
    explicit ReportLayout(const Report& report) : report_(report), places_(report) { Place(); }

    void WriteJson(JsonWriter& json, const std::vector<std::string>& lines) const {
        json.Key("lines");
        json.Open('[');
        for (const std::string& line : lines) json.String(line);
        json.Close(']');
        WriteSections(json, lines.size());
        WriteDirectories(json);
        WriteRegistry(json);
        WriteAdapters(json);
        json.Key("unrecognised");
        json.Open('[');
        for (const auto& u : report_.unrecognised) json.Unsigned(u.line);
        json.Close(']');
    }

    // The line a change of `diff` is told at in this report; 0 for none.
    std::size_t LineOf(const report_model::Change& change) const {
        const auto subject = subjects_.find(change.section + '\x1f' + change.subject);
        if (subject != subjects_.end() && change.kind != report_model::ChangeKind::Removed) return subject->second;
        if (change.subject == "Registry installation data") {
            const auto value = registryByName_.find(change.field);
            if (value != registryByName_.end()) return value->second;
        }
        // What the report no longer has stands under what held it.
        const std::size_t colon = change.subject.rfind(": ");
        if (colon != std::string::npos) {
            const auto parent = subjects_.find(change.section + '\x1f' + change.subject.substr(0, colon));
            if (parent != subjects_.end()) return parent->second;
        }
        if (change.subject.empty()) {
            if (const std::size_t line = LabelLine(change.section, change.field)) return line;
        }
        const auto section = sectionLines_.find(change.section);
        return section == sectionLines_.end() ? 0 : section->second;
    }

private:
    void Place() {
        const SectionPlace sections[] = {
            {"Program", kProgramHeading, report_.program.heading.present},
            {"Host", kHostHeading, report_.host.heading.present},
            {"Windows", kWindowsHeading, report_.windows.heading.present},
            {"Hardware", kHardwareHeading, report_.hardware.heading.present},
            {"Network", kNetworkHeading, report_.network.heading.present},
            {"Orvane Software installation", kInstallationHeading,
             report_.installation.heading.present},
        };
        std::size_t cursor = 0;
        for (const SectionPlace& s : sections) {
            if (!s.present) continue;
            if (const std::size_t line = places_.Next(HeadingText(s.heading), cursor)) {
                headings_.push_back({s.name, line});
                sectionLines_[s.name] = line;
            }
        }
        PlaceAdapters();
        PlaceInstallation();
    }

    void PlaceAdapters() {
        std::size_t cursor = 0;
        for (const auto& a : report_.network.adapters) {
            const std::size_t line = places_.Next("\tAdapter name: " + a.name, cursor);
            adapterLines_.push_back(line);
            subjects_.emplace("Network\x1f" "adapter " + a.name, line);
        }
    }

    void PlaceInstallation() {
        const std::string section = "Orvane Software installation";
        std::size_t cursor = 0;
        for (const auto& d : report_.installation.directories) {
            PlacedDirectory placed;
            placed.line = places_.Next(report_model::DirectoryHeadingLine(d), cursor);
            const std::string title = report_model::DirectoryTitle(d.kind);
            subjects_.emplace(section + '\x1f' + title, placed.line);
            for (const auto& e : d.entries) {
                const std::size_t line = places_.Next(report_model::EntryLine(e), cursor);
                const std::size_t content = e.content ? places_.Next(report_model::ContentLine(*e.content), cursor) : 0;
                placed.entries.push_back({line, content});
                subjects_.emplace(section + '\x1f' + title + ": " + e.name, line);
            }
            directories_.push_back(std::move(placed));
        }
        cursor = 0;
        for (const auto& v : report_.installation.registryValues) {
            const std::size_t line = places_.Next(report_model::RegistryValueLine(v), cursor);
            registryLines_.push_back(line);
            registryByName_.emplace(v.name, line);
        }
    }

    // A section's own value by its label: the first line of the section
    // that starts with it ("C volume free" stands on "\tC volume: ...").
    std::size_t LabelLine(const std::string& section, const std::string& field) const {
        const auto start = sectionLines_.find(section);
        if (start == sectionLines_.end()) return 0;
        std::string label = field.substr(0, field.find(' '));
        if (field.rfind("C volume", 0) == 0) label = "C volume";
        const std::vector<std::string>& lines = *lines_;
        for (std::size_t n = start->second + 1; n <= lines.size(); ++n) {
            const std::string& text = lines[n - 1];
            if (text.empty() || (text[0] != '\t' && n > start->second + 1 && text.back() == ':')) break;
            const std::size_t begin = text.find_first_not_of('\t');
            if (begin != std::string::npos && text.compare(begin, label.size(), label) == 0) return n;
        }
        return 0;
    }

    void WriteSections(JsonWriter& json, std::size_t lineCount) const {
        json.Key("sections");
        json.Open('[');
        std::size_t first = 1;
        std::string name = "Header";
        const auto close = [&](std::size_t last) {
            if (last < first) return;
            json.Open('{');
            Member(json, "name", name);
            Member(json, "first", first);
            Member(json, "last", last);
            json.Close('}');
        };
        for (const auto& [heading, line] : headings_) {
            close(line - 1);
            first = line;
            name = heading;
        }
        close(lineCount);
        json.Close(']');
    }

    void WriteDirectories(JsonWriter& json) const {
        json.Key("directories");
        json.Open('[');
        for (std::size_t i = 0; i < directories_.size(); ++i) {
            const auto& d = report_.installation.directories[i];
            const PlacedDirectory& placed = directories_[i];
            json.Open('{');
            Member(json, "kind", report_model::DirectoryKindName(d.kind));
            Member(json, "title", report_model::DirectoryTitle(d.kind));
            MemberOrNull(json, "path", d.path);
            LineMember(json, "line", placed.line);
            json.Key("entries");  // each an array: line, contentLine, attributes, size, created, written, name, version, acl, content
            json.Open('[');
            for (std::size_t k = 0; k < d.entries.size(); ++k) WriteEntry(json, d.entries[k], placed.entries[k]);
            json.Close(']');
            json.Close('}');
        }
        json.Close(']');
    }

    struct PlacedEntry {
        std::size_t line, contentLine;
    };
    struct PlacedDirectory {
        std::size_t line = 0;
        std::vector<PlacedEntry> entries;
    };

    // An entry as an array, its members in the order of kEntryMembers: a
    // report of 10,000 entries would otherwise carry their names 10,000 times.
    static void WriteEntry(JsonWriter& json, const report_model::DirectoryEntry& e, const PlacedEntry& placed) {
        json.Open('[');
        json.Unsigned(placed.line);
        if (placed.contentLine)
            json.Unsigned(placed.contentLine);
        else
            json.Null();
        json.String(report_model::ChecksumText(e.attributes));
        json.Signed(e.size);
        json.String(e.created.printed);
        json.String(e.written.printed);
        json.String(e.name);
        json.String(e.version);
        OptionalString(json, e.accessList);
        OptionalString(json, e.content);
        json.Close(']');
    }

    static void OptionalString(JsonWriter& json, const std::optional<std::string>& text) {
        if (text)
            json.String(*text);
        else
            json.Null();
    }

    void WriteRegistry(JsonWriter& json) const {
        json.Key("registry");
        json.Open('[');
        const auto& values = report_.installation.registryValues;
        for (std::size_t i = 0; i < values.size(); ++i) {
            json.Open('{');
            LineMember(json, "line", registryLines_[i]);
            Member(json, "name", values[i].name);
            Member(json, "value", values[i].number ? report_model::SignedText(*values[i].number)
                                                   : values[i].text.value_or(""));
            json.Close('}');
        }
        json.Close(']');
    }

    void WriteAdapters(JsonWriter& json) const {
        json.Key("adapters");
        json.Open('[');
        const auto& adapters = report_.network.adapters;
        for (std::size_t i = 0; i < adapters.size(); ++i) {
            const auto& a = adapters[i];
            json.Open('{');
            LineMember(json, "line", adapterLines_[i]);
            Member(json, "name", a.name);
            MemberOrNull(json, "friendlyName", a.friendlyName);
            MemberOrNull(json, "description", a.description);
            MemberOrNull(json, "physicalAddress", a.physicalAddress);
            MemberOrNull(json, "operStatus", a.operStatus);
            MemberOrNull(json, "ifType", a.ifType);
            MemberOrNull(json, "mtu", a.mtu);
            MemberOrNull(json, "unicastCount", a.unicastCount);
            MemberOrNull(json, "dnsSuffix", a.dnsSuffix);
            json.Close('}');
        }
        json.Close(']');
    }

public:
    // The body's lines, for LabelLine; set before LineOf is asked.
    const std::vector<std::string>* lines_ = nullptr;

private:
    const Report& report_;
    LinePlaces places_;
    std::vector<std::pair<std::string, std::size_t>> headings_;
    std::map<std::string, std::size_t> sectionLines_;
    std::map<std::string, std::size_t> subjects_;
    std::map<std::string, std::size_t> registryByName_;
    std::vector<PlacedDirectory> directories_;
    std::vector<std::size_t> registryLines_;
    std::vector<std::size_t> adapterLines_;
};

void WriteReport(JsonWriter& json, const PageReport& page, const ReportLayout& layout,
                 const std::vector<std::string>& lines) {
    json.Key("report");
    json.Open('{');
    Member(json, "file", page.file);
    WriteVerdict(json, page.verdict);
    layout.WriteJson(json, lines);
    WriteFindings(json, page.findings);
    json.Close('}');
}

void OpenPage(JsonWriter& json, std::string_view kind, std::string_view lang) {
    json.Open('{');
    Member(json, "kind", kind);
    Member(json, "lang", lang);
}

const char* ChangeName(report_model::ChangeKind kind) {
    switch (kind) {
        case report_model::ChangeKind::Changed: return "changed";
        case report_model::ChangeKind::Added: return "added";
        case report_model::ChangeKind::Removed: return "removed";
    }
    return "changed";
}

}  // namespace

std::string ReportPageJson(const PageReport& page, std::string_view lang) {
    std::string text;
    JsonWriter json(text);
    OpenPage(json, "report", lang);
    const ReportLayout layout(*page.report);
    WriteReport(json, page, layout, BodyLines(page.body));
    json.Close('}');
    return text;
}

std::string ComparisonPageJson(const PageReport& oldPage, const PageReport& newPage,
                               const std::vector<report_model::Change>& changes, std::string_view lang) {
    std::string text;
    JsonWriter json(text);
    OpenPage(json, "comparison", lang);
    ReportLayout layout(*newPage.report);
    const std::vector<std::string> lines = BodyLines(newPage.body);
    layout.lines_ = &lines;
    WriteReport(json, newPage, layout, lines);
    json.Key("comparison");
    json.Open('{');
    Member(json, "oldFile", oldPage.file);
    json.Key("old");
    json.Open('{');
    WriteVerdict(json, oldPage.verdict);
    json.Close('}');
    json.Key("changes");
    json.Open('[');
    for (const auto& c : changes) {
        json.Open('{');
        Member(json, "section", c.section);
        Member(json, "subject", c.subject);
        Member(json, "field", c.field);
        Member(json, "change", ChangeName(c.kind));
        MemberOrNull(json, "old", c.oldValue);
        MemberOrNull(json, "new", c.newValue);
        LineMember(json, "line", layout.LineOf(c));
        json.Close('}');
    }
    json.Close(']');
    json.Close('}');
    json.Close('}');
    return text;
}

// --- fleet -------------------------------------------------------------------

namespace {
constexpr std::string_view kHeaderLead = "Orvane Software system report on ";

// The suite's own files: what its standard and registry directories list,
// folders and the "." and ".." entries left out.
bool IsSuiteFile(const report_model::Directory& d, const report_model::DirectoryEntry& e) {
    constexpr std::uint32_t kDirectoryAttribute = 0x10;
    return (d.kind == report_model::DirectoryKind::Standard || d.kind == report_model::DirectoryKind::Registry) &&
           !(e.attributes & kDirectoryAttribute);
}
}  // namespace

void FleetSummary::Add(const FleetMember& member) {
    const std::size_t index = rows_.size();
    Row row;
    row.path = member.path;
    row.reason = member.problem;
    if (!member.report) {
        row.verdict = member.unreadable ? "unreadable" : "not a report";
        rows_.push_back(std::move(row));
        return;
    }
    const Report& r = *member.report;
    row.verdict = member.verdict.state == ReportState::Intact ? "intact" : "altered";
    if (r.host.hasNameLine) row.machine = r.host.netbiosName;
    row.user = r.host.user.value_or("");
    if (r.header.present && r.header.text.rfind(kHeaderLead, 0) == 0) row.when = r.header.text.substr(kHeaderLead.size());
    for (const Finding& f : member.findings) {
        ++row.counts[static_cast<int>(f.severity)];
        auto rule = std::find_if(rules_.begin(), rules_.end(), [&](const RuleSeen& s) { return s.rule == f.rule; });
        if (rule == rules_.end()) rule = rules_.insert(rules_.end(), {f.rule, f.titleEn, f.titleFr, f.severity, {}});
        if (rule->rows.empty() || rule->rows.back() != index) rule->rows.push_back(index);
    }
    std::set<std::pair<std::string, std::string>> seen;
    for (const auto& d : r.installation.directories)
        for (const auto& e : d.entries) {
            if (!IsSuiteFile(d, e) || !seen.insert({e.name, e.version}).second) continue;
            auto version = std::find_if(versions_.begin(), versions_.end(), [&](const VersionSeen& v) {
                return v.file == e.name && v.version == e.version;
            });
            if (version == versions_.end()) version = versions_.insert(versions_.end(), {e.name, e.version, {}});
            version->rows.push_back(index);
        }
    rows_.push_back(std::move(row));
}

namespace {
void WriteIndices(JsonWriter& json, const std::vector<std::size_t>& rows) {
    json.Key("reports");
    json.Open('[');
    for (std::size_t row : rows) json.Unsigned(row);
    json.Close(']');
}
}  // namespace

void FleetSummary::WriteJson(JsonWriter& json) const {
    json.Key("reports");
    json.Open('[');
    for (const Row& row : rows_) {
        json.Open('{');
        Member(json, "path", row.path);
        Member(json, "machine", row.machine);
        Member(json, "user", row.user);
        Member(json, "when", row.when);
        Member(json, "verdict", row.verdict);
        Member(json, "reason", row.reason);
        Member(json, "errors", row.counts[0]);
        Member(json, "warnings", row.counts[1]);
        Member(json, "infos", row.counts[2]);
        json.Close('}');
    }
    json.Close(']');
    json.Key("findings");
    json.Open('[');
    for (const RuleSeen& rule : rules_) {
        json.Open('{');
        Member(json, "rule", rule.rule);
        Member(json, "severity", SeverityName(rule.severity));
        json.Key("title");
        json.Open('{');
        Member(json, "en", rule.titleEn);
        Member(json, "fr", rule.titleFr);
        json.Close('}');
        WriteIndices(json, rule.rows);
        json.Close('}');
    }
    json.Close(']');
    // Files by name, then versions by how many reports carry them.
    std::vector<const VersionSeen*> sorted;
    for (const VersionSeen& v : versions_) sorted.push_back(&v);
    std::stable_sort(sorted.begin(), sorted.end(), [](const VersionSeen* a, const VersionSeen* b) {
        if (a->file != b->file) return a->file < b->file;
        return a->rows.size() > b->rows.size();
    });
    json.Key("files");
    json.Open('[');
    for (std::size_t i = 0; i < sorted.size();) {
        json.Open('{');
        Member(json, "name", sorted[i]->file);
        json.Key("versions");
        json.Open('[');
        const std::string& file = sorted[i]->file;
        for (; i < sorted.size() && sorted[i]->file == file; ++i) {
            json.Open('{');
            Member(json, "version", sorted[i]->version);
            WriteIndices(json, sorted[i]->rows);
            json.Close('}');
        }
        json.Close(']');
        json.Close('}');
    }
    json.Close(']');
}

std::string FleetPageJson(const std::string& source, const FleetSummary& fleet, std::string_view lang) {
    std::string text;
    JsonWriter json(text);
    OpenPage(json, "fleet", lang);
    json.Key("fleet");
    json.Open('{');
    Member(json, "source", source);
    fleet.WriteJson(json);
    json.Close('}');
    json.Close('}');
    return text;
}

}  // namespace report_page
