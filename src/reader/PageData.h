// The data of a report page (`reportcheck page`): what the page's script
// draws, as one JSON document. Every text of a report travels as a JSON
// string and the page shows it as text only; HTML never sees it.
//
// A report's page carries its body line by line (line n is lines[n-1]), the
// line ranges of its sections, and the parts that the page shows as tables
// (directory entries, registry values, adapters), each with the number of the
// line it stands on, so that findings and changes can point at their line.
// A directory entry is an array (line, contentLine, attributes, size,
// created, written, name, version, acl, content), so that a report of
// 10,000 entries does not carry each member's name 10,000 times.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "reader/ReportDiff.h"
#include "reader/ReportModel.h"
#include "format/ReportVerdict.h"

namespace report_page {

enum class Severity { Error, Warning, Info };
std::string_view SeverityName(Severity severity);  // "error", "warning", "info"

// A finding as the rules give it: which rule, how grave, what it means and
// what to do (in both languages), the report line that shows it, one line
// of detail.
struct Finding {
    std::string rule;  // "suite.mixed-versions"
    Severity severity = Severity::Info;
    std::string titleEn, titleFr, remedyEn, remedyFr;
    std::size_t line = 0;  // 1-based body line; 0 when the finding has none
    std::string detail;
};

// One report as the page shows it.
struct PageReport {
    std::string file;  // as the user named it
    ReportVerdict verdict;
    std::u16string_view body;
    const report_model::Report* report = nullptr;
    std::vector<Finding> findings;
};

// One file of a fleet; `report` is null when the file is not a report.
struct FleetMember {
    std::string path;
    ReportVerdict verdict;
    bool unreadable = false;  // else, without a report, not a report
    std::string problem;      // why it is not a report, or cannot be read
    const report_model::Report* report = nullptr;
    std::vector<Finding> findings;
};

// A fleet summed up report by report as they come, so that memory holds
// only the summary and never every report at once.
class FleetSummary {
public:
    void Add(const FleetMember& member);
    void WriteJson(report_model::JsonWriter& json) const;

private:
    struct Row {
        std::string path, machine, user, when, verdict, reason;
        std::size_t counts[3] = {0, 0, 0};  // by severity
    };
    struct RuleSeen {
        std::string rule, titleEn, titleFr;
        Severity severity = Severity::Info;
        std::vector<std::size_t> rows;
    };
    struct VersionSeen {
        std::string file, version;
        std::vector<std::size_t> rows;
    };
    std::vector<Row> rows_;
    std::vector<RuleSeen> rules_;
    std::vector<VersionSeen> versions_;
};

// The page's JSON documents; `lang` is "en" or "fr".
std::string ReportPageJson(const PageReport& page, std::string_view lang);
std::string ComparisonPageJson(const PageReport& oldPage, const PageReport& newPage,
                               const std::vector<report_model::Change>& changes, std::string_view lang);
std::string FleetPageJson(const std::string& source, const FleetSummary& fleet, std::string_view lang);

// The body's lines, without their breaks (CR LF or LF), as UTF-8.
std::vector<std::string> BodyLines(std::u16string_view body);

}  // namespace report_page
