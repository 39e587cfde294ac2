// What changed from one report to another, for `reportcheck diff`.
//
// Both reports are flattened into labelled values that carry the identity by
// which they are matched: single values by their label, adapters by adapter
// name, directories by kind, directory entries by directory kind and name,
// registry values by name. The header (the time the report was taken) and
// the line-break convention are not compared.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "format/ReportVerdict.h"
#include "reader/ReportJson.h"
#include "reader/ReportModel.h"

namespace report_model {

enum class ChangeKind { Changed, Added, Removed };

struct Change {
    std::string section;   // "Hardware", "Orvane Software installation", ...
    std::string subject;   // "" for a section's own values; "adapter {...}",
                           // "Standard installation directory: tool.dll", ...
    std::string field;     // "C volume free", "version", ...; "" for a whole subject
    ChangeKind kind = ChangeKind::Changed;
    std::optional<std::string> oldValue, newValue;  // as the report prints them
};

struct ReportSide {
    const Report* report = nullptr;
    ReportVerdict verdict;
};

std::vector<Change> DiffReports(const Report& oldReport, const Report& newReport);

// The human form: the verdicts first when either report is altered, then
// one line per change under its section's name. Empty when nothing changed.
std::string FormatDiffText(const ReportSide& oldSide, const ReportSide& newSide, const std::vector<Change>& changes);

// The same for programs.
nlohmann::ordered_json DiffToJson(const ReportSide& oldSide, const ReportSide& newSide,
                                  const std::vector<Change>& changes);

}  // namespace report_model
