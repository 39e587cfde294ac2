// The report tables as the findings commands fill and read them: report
// files added to a database (all of them, or only the new and changed ones),
// and the rules run over what is there.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "reader/Rules.h"
#include "reader/Sqlite.h"
#include "reportcheck/CommandLine.h"

namespace reportcheck {

// The options findings, collect --db and rules share.
struct RuleOptions {
    std::optional<std::string> rulesFolder;  // --rules DIR
    std::chrono::milliseconds timeLimit = rules::kDefaultRuleTimeLimit;  // --time-limit SECONDS
};
// Reads --rules and --time-limit; the problem with their values, if any.
std::optional<std::string> ReadRuleOptions(const Arguments& arguments, RuleOptions& options);

// collect --db FILE PATH... (CollectDbCommand.cpp), which collect hands on.
int CollectDatabase(const Arguments& arguments);

// Whether the file starts as every SQLite database does.
bool LooksLikeDatabase(const std::filesystem::path& path);

// Opens a database of ours, or says why not (a message for the user): not
// SQLite, not made by collect --db, or another schema version.
struct OpenedDatabase {
    std::optional<sqlite::Connection> db;
    std::string problem;
    bool empty = false;  // no tables yet (collect --db makes them)
};
OpenedDatabase OpenDatabase(const std::string& path, sqlite::OpenMode mode);

// Adds the files under `roots` to `db` (report rows, or a reports row with
// the verdict for a file that is not a report) and lists the numbers of the
// reports added in temp.changed. With `incremental`, a file whose path, size
// and time are already in the database is only marked in temp.seen, a
// changed one replaced, and reports under the roots that are gone are
// removed. Gives the worst file status.
int AddReportFiles(const sqlite::Connection& db, const std::vector<std::filesystem::path>& roots, bool incremental);

// Runs `rules` over the reports listed in temp.changed only: each table is
// shadowed for the time by a temporary view of those reports' rows.
rules::Outcome RunRulesOnChanged(const sqlite::Connection& db, const std::vector<const rules::Rule*>& rules,
                                 std::chrono::milliseconds limit);

}  // namespace reportcheck
