// Findings rules: what reportcheck looks for in reports. A rule is a file of
// its own, a header of SQL comments then one query over the report tables
// (docs/report-tables.md) whose rows are the findings:
//
//   -- id: suite.mixed-versions
//   -- severity: warning                      (error, warning or info)
//   -- title: The suite's files carry more than one product version
//   -- title.fr: Les fichiers de la suite portent plusieurs versions
//   -- remedy: Repair the installation ...
//   -- remedy.fr: Réparer l'installation ...
//   -- link: https://...                      (optional)
//   -- needs: installation, registry data     (optional; sections table names)
//   -- why: the reasoning, for docs/rules.md  (optional; "--   " continues a key)
//   SELECT report, line, detail FROM ...
//
// The query gives three columns: the report's number, the body line that is
// the evidence (or NULL) and a one-line detail. A report that lacks a section
// the rule needs is "not checked" by it rather than passed.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "reader/Sqlite.h"

namespace rules {

enum class Severity { Info, Warning, Error };  // in rising order
std::string_view SeverityName(Severity severity);
std::optional<Severity> SeverityFromName(std::string_view name);

struct Rule {
    std::string id;
    Severity severity = Severity::Warning;
    std::string title, titleFr, remedy, remedyFr;
    std::string link;
    std::vector<std::string> needs;
    std::string why;
    std::string query;
    std::string source;  // the file it came from, or "built-in"
};

// A rule file that cannot be used; the message names the file.
class RuleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads one rule file's text; `source` names it in messages.
Rule ParseRule(std::string_view text, const std::string& source);

// The rules that ship inside the binary (from rules/*.sql), by id.
std::map<std::string, Rule> BuiltInRules();

// The built-in rules, then every *.sql file of `folder` (UTF-8 path), which
// adds a rule or replaces the built-in one of the same id.
std::map<std::string, Rule> RulesInForce(const std::optional<std::string>& folder);

// The rules in force, most severe first, then by id.
std::vector<const Rule*> InSeverityOrder(const std::map<std::string, Rule>& rules);

struct Finding {
    std::int64_t report = 0;
    const Rule* rule = nullptr;
    std::optional<std::int64_t> line;
    std::string detail;
};

struct Unchecked {
    std::int64_t report = 0;
    const Rule* rule = nullptr;
    std::string missing;  // the first section it needs that the report lacks
};

struct Outcome {
    std::vector<Finding> findings;
    std::vector<Unchecked> unchecked;
};

// Runs the rules over the reports of `db` (intact and altered ones; files
// that are not reports have nothing to check). While a rule runs the
// connection reads only: an authorizer allows reading and nothing else (no
// writes, ATTACH, PRAGMA), and a rule that runs longer than `limit` is
// stopped. A rule that fails throws RuleError naming its file.
Outcome RunRules(const sqlite::Connection& db, const std::vector<const Rule*>& rules,
                 std::chrono::milliseconds limit);

inline constexpr std::chrono::seconds kDefaultRuleTimeLimit{10};

}  // namespace rules
