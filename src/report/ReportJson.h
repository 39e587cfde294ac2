// The report model as JSON: what `reportcheck show --json` prints and what
// each line of `collect` carries. Its form is docs/report-model.schema.json;
// kReportSchemaVersion changes with any change to that form.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

#include "report/ReportModel.h"
#include "report/ReportVerdict.h"

namespace report_model {

inline constexpr int kReportSchemaVersion = 1;

// The whole model; `verdict` is the file's (intact or altered).
nlohmann::ordered_json ReportToJson(const Report& report, const ReportVerdict& verdict);

// JSON text on one line; a lone surrogate kept in a text shows as U+FFFD.
std::string DumpJson(const nlohmann::ordered_json& json, int indent = -1);

// "1a2b3c4d"
std::string ChecksumText(std::uint32_t checksum);

}  // namespace report_model
