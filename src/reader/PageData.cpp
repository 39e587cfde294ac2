#include "reader/PageData.h"

#include <algorithm>
#include <map>
#include <set>

#include "format/LineForms.h"
#include "reader/ReportJson.h"
#include "reader/ReportModelText.h"
#include "reader/ReportTime.h"

namespace report_page {

using report_model::JsonWriter;
using report_model::Report;

Finding PageFinding(const rules::Finding& f) {
    const rules::Rule& rule = *f.rule;
    return {rule.id, rule.severity, rule.title, rule.titleFr, rule.remedy, rule.remedyFr,
            static_cast<std::size_t>(f.line.value_or(0)), f.detail};
}

NotChecked PageNotChecked(const rules::Unchecked& u) {
    return {u.rule->id, u.rule->title, u.rule->titleFr, u.missing};
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

struct SectionPlace {
    const char* name;
    const report_model::Heading& heading;
};

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

// {"en": ..., "fr": ...}: a text of the rules in both languages.
void Bilingual(JsonWriter& json, std::string_view key, std::string_view english, std::string_view french) {
    json.Key(key);
    json.Open('{');
    Member(json, "en", english);
    Member(json, "fr", french);
    json.Close('}');
}

void WriteFindings(JsonWriter& json, const std::vector<Finding>& findings) {
    json.Key("findings");
    json.Open('[');
    for (const Finding& f : findings) {
        json.Open('{');
        Member(json, "rule", f.rule);
        Member(json, "severity", rules::SeverityName(f.severity));
        Bilingual(json, "title", f.titleEn, f.titleFr);
        Bilingual(json, "remedy", f.remedyEn, f.remedyFr);
        LineMember(json, "line", f.line);
        Member(json, "detail", f.detail);
        json.Close('}');
    }
    json.Close(']');
}

// Where each part of one report stands, and its JSON for the page.
class ReportLayout {
public:
    explicit ReportLayout(const Report& report) : report_(report) { Place(); }

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
    // Where each part stands, from the line numbers the reader keeps.
    void Place() {
        const SectionPlace sections[] = {
            {"Program", report_.program.heading},
            {"Host", report_.host.heading},
            {"Windows", report_.windows.heading},
            {"Hardware", report_.hardware.heading},
            {"Network", report_.network.heading},
            {"Orvane Software installation", report_.installation.heading},
        };
        for (const SectionPlace& s : sections) {
            if (!s.heading.present || !s.heading.line) continue;
            headings_.push_back({s.name, s.heading.line});
            sectionLines_[s.name] = s.heading.line;
        }
        for (const auto& a : report_.network.adapters) subjects_.emplace("Network\x1f" "adapter " + a.name, a.line);
        const std::string section = "Orvane Software installation";
        for (const auto& d : report_.installation.directories) {
            const std::string title = report_model::DirectoryName(d.kind);
            subjects_.emplace(section + '\x1f' + title, d.line);
            for (const auto& e : d.entries) subjects_.emplace(section + '\x1f' + title + ": " + e.name, e.line);
        }
        for (const auto& v : report_.installation.registryValues) registryByName_.emplace(v.name, v.line);
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
        for (const auto& d : report_.installation.directories) {
            json.Open('{');
            Member(json, "kind", report_model::DirectoryKindName(d.kind));
            Member(json, "title", report_model::DirectoryName(d.kind));
            MemberOrNull(json, "path", d.path);
            LineMember(json, "line", d.line);
            json.Key("entries");  // each an array: line, contentLine, attributes, size, created, written, name, version, acl, content
            json.Open('[');
            for (const auto& e : d.entries) WriteEntry(json, e);
            json.Close(']');
            json.Close('}');
        }
        json.Close(']');
    }

    // An entry as an array, its members in the order of kEntryMembers: a
    // report of 10,000 entries would otherwise carry their names 10,000 times.
    static void WriteEntry(JsonWriter& json, const report_model::DirectoryEntry& e) {
        json.Open('[');
        json.Unsigned(e.line);
        if (e.content)
            json.Unsigned(e.line + 1);  // the content line follows its entry's
        else
            json.Null();
        json.String(report_model::ChecksumText(e.attributes));
        json.Signed(e.size);
        json.String(e.created.Printed());
        json.String(e.written.Printed());
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
        for (const auto& v : report_.installation.registryValues) {
            json.Open('{');
            LineMember(json, "line", v.line);
            Member(json, "name", v.name);
            Member(json, "value", v.number ? report_model::SignedText(*v.number) : v.text.value_or(""));
            json.Close('}');
        }
        json.Close(']');
    }

    void WriteAdapters(JsonWriter& json) const {
        json.Key("adapters");
        json.Open('[');
        for (const auto& a : report_.network.adapters) {
            json.Open('{');
            LineMember(json, "line", a.line);
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
    std::vector<std::pair<std::string, std::size_t>> headings_;
    std::map<std::string, std::size_t> sectionLines_;
    std::map<std::string, std::size_t> subjects_;
    std::map<std::string, std::size_t> registryByName_;
};

void WriteNotChecked(JsonWriter& json, const std::vector<NotChecked>& notChecked) {
    json.Key("notChecked");
    json.Open('[');
    for (const NotChecked& n : notChecked) {
        json.Open('{');
        Member(json, "rule", n.rule);
        Bilingual(json, "title", n.titleEn, n.titleFr);
        Member(json, "missing", n.missing);
        json.Close('}');
    }
    json.Close(']');
}

void WriteReport(JsonWriter& json, const PageReport& page, const ReportLayout& layout,
                 const std::vector<std::string>& lines) {
    json.Key("report");
    json.Open('{');
    Member(json, "file", page.file);
    WriteVerdict(json, page.verdict);
    layout.WriteJson(json, lines);
    WriteFindings(json, page.findings);
    WriteNotChecked(json, page.notChecked);
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
constexpr std::string_view kHeaderLead = lineform::kHeaderLead.Narrow();

// The readings of a header whose time the tables hold as not certain:
// both of an ambiguous date, none of an impossible one or of no time.
std::vector<std::string> UncertainReadings(const std::string& header) {
    std::vector<std::string> readings;
    if (const auto read = report_model::ReadingsOfHeader(header))
        for (const auto& reading : read->readings) readings.push_back(report_model::HeaderIso(reading, read->seconds));
    return readings;
}

void AddRows(const sqlite::Connection& db, FleetSummary& fleet, std::map<std::int64_t, std::size_t>& index) {
    sqlite::Statement rows(db,
                           "SELECT report, path, verdict, coalesce(reason, ''), coalesce(host_name, ''), "
                           "coalesce(host_user, ''), coalesce(header, ''), time FROM main.reports ORDER BY report");
    while (rows.Step()) {
        FleetSummary::Row row;
        row.path = rows.Text(1);
        row.verdict = rows.Text(2);
        row.reason = rows.Text(3);
        row.machine = rows.Text(4);
        row.user = rows.Text(5);
        const std::string header = rows.Text(6);
        if (header.rfind(kHeaderLead, 0) == 0) row.when = header.substr(kHeaderLead.size());
        if (!rows.IsNull(7)) row.time = rows.Text(7);
        else row.readings = UncertainReadings(header);
        index[rows.Integer(0)] = fleet.rows.size();
        fleet.rows.push_back(std::move(row));
    }
}

void AddFindings(const rules::Outcome& outcome, FleetSummary& fleet, const std::map<std::int64_t, std::size_t>& index) {
    std::map<std::string, std::size_t> byRule;
    for (const rules::Finding& f : outcome.findings) {
        const auto at = index.find(f.report);
        if (at == index.end()) continue;
        const std::size_t row = at->second;
        ++fleet.rows[row].counts[static_cast<int>(f.rule->severity)];
        auto [seen, added] = byRule.emplace(f.rule->id, fleet.rules.size());
        if (added) fleet.rules.push_back({f.rule->id, f.rule->title, f.rule->titleFr, f.rule->severity, {}});
        std::vector<std::size_t>& rows = fleet.rules[seen->second].rows;
        if (rows.empty() || rows.back() != row) rows.push_back(row);
    }
}

// The rules that could not check a report, each rule and missing section
// once for the fleet, and by index in each report's row.
void AddNotChecked(const rules::Outcome& outcome, FleetSummary& fleet,
                   const std::map<std::int64_t, std::size_t>& index) {
    std::map<std::pair<std::string, std::string>, std::size_t> known;
    for (const rules::Unchecked& u : outcome.unchecked) {
        const auto at = index.find(u.report);
        if (at == index.end()) continue;
        const auto [seen, added] = known.emplace(std::pair(u.rule->id, u.missing), fleet.notChecked.size());
        if (added) fleet.notChecked.push_back(PageNotChecked(u));
        fleet.rows[at->second].notChecked.push_back(seen->second);
    }
}

// The suite's own files: what its standard and registry directories list,
// folders (attribute 0x10) left out, each name and version once a report.
void AddVersions(const sqlite::Connection& db, FleetSummary& fleet, const std::map<std::int64_t, std::size_t>& index) {
    sqlite::Statement files(db,
                            "SELECT DISTINCT report, name, version FROM main.entries "
                            "WHERE directory IN ('standard', 'registry') AND (attributes & 16) = 0 "
                            "ORDER BY name, version, report");
    while (files.Step()) {
        const auto at = index.find(files.Integer(0));
        if (at == index.end()) continue;
        std::string name = files.Text(1), version = files.Text(2);
        if (fleet.versions.empty() || fleet.versions.back().file != name || fleet.versions.back().version != version)
            fleet.versions.push_back({std::move(name), std::move(version), {}});
        fleet.versions.back().rows.push_back(at->second);
    }
    std::stable_sort(fleet.versions.begin(), fleet.versions.end(),
                     [](const FleetSummary::VersionSeen& a, const FleetSummary::VersionSeen& b) {
                         if (a.file != b.file) return a.file < b.file;
                         return a.rows.size() > b.rows.size();
                     });
}

void WriteIndices(JsonWriter& json, std::string_view key, const std::vector<std::size_t>& indices) {
    json.Key(key);
    json.Open('[');
    for (std::size_t index : indices) json.Unsigned(index);
    json.Close(']');
}

void WriteFleet(JsonWriter& json, const FleetSummary& fleet) {
    json.Key("reports");
    json.Open('[');
    for (const auto& row : fleet.rows) {
        json.Open('{');
        Member(json, "path", row.path);
        Member(json, "machine", row.machine);
        Member(json, "user", row.user);
        Member(json, "when", row.when);
        MemberOrNull(json, "time", row.time);
        json.Key("readings");
        json.Open('[');
        for (const std::string& reading : row.readings) json.String(reading);
        json.Close(']');
        Member(json, "verdict", row.verdict);
        Member(json, "reason", row.reason);
        Member(json, "errors", row.counts[static_cast<int>(rules::Severity::Error)]);
        Member(json, "warnings", row.counts[static_cast<int>(rules::Severity::Warning)]);
        Member(json, "infos", row.counts[static_cast<int>(rules::Severity::Info)]);
        WriteIndices(json, "notChecked", row.notChecked);
        json.Close('}');
    }
    json.Close(']');
    WriteNotChecked(json, fleet.notChecked);
    json.Key("findings");
    json.Open('[');
    for (const auto& rule : fleet.rules) {
        json.Open('{');
        Member(json, "rule", rule.rule);
        Member(json, "severity", rules::SeverityName(rule.severity));
        Bilingual(json, "title", rule.titleEn, rule.titleFr);
        WriteIndices(json, "reports", rule.rows);
        json.Close('}');
    }
    json.Close(']');
    json.Key("files");
    json.Open('[');
    for (std::size_t i = 0; i < fleet.versions.size();) {
        json.Open('{');
        const std::string& file = fleet.versions[i].file;
        Member(json, "name", file);
        json.Key("versions");
        json.Open('[');
        for (; i < fleet.versions.size() && fleet.versions[i].file == file; ++i) {
            json.Open('{');
            Member(json, "version", fleet.versions[i].version);
            WriteIndices(json, "reports", fleet.versions[i].rows);
            json.Close('}');
        }
        json.Close(']');
        json.Close('}');
    }
    json.Close(']');
}
}  // namespace

FleetSummary SummariseFleet(const sqlite::Connection& db, const rules::Outcome& outcome) {
    FleetSummary fleet;
    std::map<std::int64_t, std::size_t> index;
    AddRows(db, fleet, index);
    AddFindings(outcome, fleet, index);
    AddNotChecked(outcome, fleet, index);
    AddVersions(db, fleet, index);
    return fleet;
}

std::string FleetPageJson(const std::string& source, const FleetSummary& fleet, std::string_view lang) {
    std::string text;
    JsonWriter json(text);
    OpenPage(json, "fleet", lang);
    json.Key("fleet");
    json.Open('{');
    Member(json, "source", source);
    WriteFleet(json, fleet);
    json.Close('}');
    json.Close('}');
    return text;
}

}  // namespace report_page
