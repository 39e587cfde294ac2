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

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reader/ReportDiff.h"
#include "reader/Rules.h"
#include "reader/Sqlite.h"
#include "reader/ReportModel.h"
#include "format/ReportVerdict.h"

namespace report_page {

// A finding as the rules give it (reader/Rules.h): which rule, how grave,
// what it means and what to do (in both languages), the report line that
// shows it, one line of detail.
struct Finding {
    std::string rule;  // "suite.mixed-versions"
    rules::Severity severity = rules::Severity::Info;
    std::string titleEn, titleFr, remedyEn, remedyFr;
    std::size_t line = 0;  // 1-based body line; 0 when the finding has none
    std::string detail;
};
Finding PageFinding(const rules::Finding& finding);

// A rule that could not check the report for want of a section it needs.
struct NotChecked {
    std::string rule, titleEn, titleFr;
    std::string missing;  // the section, as the report tables name it ("registry data")
};
NotChecked PageNotChecked(const rules::Unchecked& unchecked);

// One report as the page shows it.
struct PageReport {
    std::string file;  // as the user named it
    ReportVerdict verdict;
    std::u16string_view body;
    const report_model::Report* report = nullptr;
    std::vector<Finding> findings;
    std::vector<NotChecked> notChecked;
};

// A fleet as the report tables hold it (reader/ReportTables.h), with what
// the rules found: a row per file with the rules that could not check it,
// the findings by rule, and the versions of the suite's files (its standard
// and registry directories' files).
struct FleetSummary {
    struct Row {
        std::string path, machine, user, when, verdict, reason;
        // The header's time in ISO where it is certain (reader/ReportTime.h);
        // where it is not, every reading of it: two for an ambiguous date.
        std::optional<std::string> time;
        std::vector<std::string> readings;
        std::size_t counts[3] = {0, 0, 0};  // by rules::Severity
        std::vector<std::size_t> notChecked;  // indices into FleetSummary::notChecked
    };
    struct RuleSeen {
        std::string rule, titleEn, titleFr;
        rules::Severity severity = rules::Severity::Info;
        std::vector<std::size_t> rows;
    };
    struct VersionSeen {
        std::string file, version;
        std::vector<std::size_t> rows;
    };
    std::vector<Row> rows;
    std::vector<RuleSeen> rules;
    std::vector<NotChecked> notChecked;  // each rule and missing section once
    std::vector<VersionSeen> versions;  // by file name, then most rows first
};
FleetSummary SummariseFleet(const sqlite::Connection& db, const rules::Outcome& outcome);

// The page's JSON documents; `lang` is "en" or "fr".
std::string ReportPageJson(const PageReport& page, std::string_view lang);
std::string ComparisonPageJson(const PageReport& oldPage, const PageReport& newPage,
                               const std::vector<report_model::Change>& changes, std::string_view lang);
std::string FleetPageJson(const std::string& source, const FleetSummary& fleet, std::string_view lang);

// The body's lines, without their breaks (CR LF or LF), as UTF-8.
std::vector<std::string> BodyLines(std::u16string_view body);

}  // namespace report_page
