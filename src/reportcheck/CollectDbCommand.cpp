// reportcheck collect --db FILE PATH...: the report tables and the findings
// of every report under PATH, in a SQLite file that anything reading SQLite
// opens. A second run reads only new and changed reports.
#include <algorithm>
#include <stdexcept>
#include <vector>

#include "reader/ReportTables.h"
#include "reportcheck/FindingsCommands.h"
#include "reportcheck/ReportDatabase.h"

namespace reportcheck {

namespace {

constexpr const char kCollectDbUsage[] =
    "usage: reportcheck collect --db FILE [--rules DIR] [--time-limit SECONDS] PATH...\n"
    "Writes every report under PATH (files, and folders searched recursively)\n"
    "into the SQLite database FILE, created when missing: the report tables\n"
    "(docs/report-tables.md) and the findings of the rules in force. Run again\n"
    "over the same PATHs, it reads only new and changed reports (by size and\n"
    "time), and drops those that are gone. A file that is not a report gets\n"
    "its row and verdict all the same, and a message on standard error.\n"
    "Nothing is written when FILE is not a database of ours, or a rule fails.\n"
    "Exit status: 0 all intact, 1 one altered, 2 one not a report or\n"
    "unreadable, a bad FILE or rule, or bad arguments.\n";

// The rules table as the rules in force have it. Whether it changed tells
// whether the findings of unchanged reports must be made again.
bool StoreRules(const sqlite::Connection& db, const std::vector<const rules::Rule*>& inForce) {
    std::string before;
    for (sqlite::Statement old(db, "SELECT rule, severity, query FROM main.rules ORDER BY rule"); old.Step();)
        before += old.Text(0) + '\x1f' + old.Text(1) + '\x1f' + old.Text(2) + '\x1e';
    db.Execute("DELETE FROM main.rules");
    sqlite::Statement add(db, "INSERT INTO main.rules VALUES (?,?,?,?,?,?,?,?,?)");
    std::vector<const rules::Rule*> byId(inForce);
    std::sort(byId.begin(), byId.end(), [](const rules::Rule* a, const rules::Rule* b) { return a->id < b->id; });
    std::string after;
    for (const rules::Rule* rule : byId) {
        add.BindAll(std::string_view(rule->id), rules::SeverityName(rule->severity), std::string_view(rule->title),
                    std::string_view(rule->titleFr), std::string_view(rule->remedy),
                    std::string_view(rule->remedyFr),
                    rule->link.empty() ? std::nullopt : std::optional<std::string>(rule->link),
                    std::string_view(rule->source), std::string_view(rule->query));
        add.Run();
        after += rule->id + '\x1f' + std::string(rules::SeverityName(rule->severity)) + '\x1f' + rule->query + '\x1e';
    }
    return before != after;
}

void StoreFindings(const sqlite::Connection& db, const rules::Outcome& outcome) {
    db.Execute(
        "DELETE FROM main.findings WHERE report IN (SELECT report FROM temp.changed);"
        "DELETE FROM main.unchecked WHERE report IN (SELECT report FROM temp.changed);");
    // A rule may name any number; only the reports of this run get rows.
    sqlite::Statement known(db, "SELECT 1 FROM temp.changed WHERE report = ?");
    const auto isChanged = [&](std::int64_t report) {
        known.Bind(1, report);
        const bool found = known.Step();
        known.Reset();
        return found;
    };
    sqlite::Statement finding(db, "INSERT INTO main.findings VALUES (?,?,?,?)");
    for (const rules::Finding& f : outcome.findings) {
        if (!isChanged(f.report)) continue;
        finding.BindAll(f.report, std::string_view(f.rule->id), f.line, std::string_view(f.detail));
        finding.Run();
    }
    sqlite::Statement unchecked(db, "INSERT OR IGNORE INTO main.unchecked VALUES (?,?,?)");
    for (const rules::Unchecked& u : outcome.unchecked) {
        unchecked.BindAll(u.report, std::string_view(u.rule->id), std::string_view(u.missing));
        unchecked.Run();
    }
}

int Collect(const std::string& file, const std::vector<std::filesystem::path>& roots, const RuleOptions& options) {
    const auto inForce = rules::RulesInForce(options.rulesFolder);
    const auto ordered = rules::InSeverityOrder(inForce);
    OpenedDatabase opened = OpenDatabase(file, sqlite::OpenMode::ReadWriteCreate);
    if (!opened.db) {
        Complain(file, opened.problem + "; nothing written");
        return kSomeNotAReport;
    }
    const sqlite::Connection& db = *opened.db;
    sqlite::Transaction transaction(db);
    if (opened.empty) report_tables::CreateTables(db);
    const int status = AddReportFiles(db, roots, true);
    if (StoreRules(db, ordered)) db.Execute("INSERT OR IGNORE INTO temp.changed SELECT report FROM main.reports");
    StoreFindings(db, RunRulesOnChanged(db, ordered, options.timeLimit));
    transaction.Commit();
    return status;
}

}  // namespace

int CollectDatabase(int argc, NativeChar* argv[]) {
    // argv: reportcheck collect --db FILE [options] PATH...
    if (argc == 4 && IsHelpOption(ToUtf8(argv[3]))) {
        Print(stdout, kCollectDbUsage);
        return kAllIntact;
    }
    RuleOptions options;
    std::vector<std::filesystem::path> roots;
    try {
        if (argc < 5) throw std::invalid_argument("");
        for (int i = 4; i < argc; ++i)
            if (!TakeRuleOption(argc, argv, i, options)) roots.emplace_back(argv[i]);
        if (roots.empty()) throw std::invalid_argument("");
    } catch (const std::invalid_argument& bad) {
        Print(stderr, std::string(*bad.what() ? std::string("reportcheck: ") + bad.what() + "\n" : "") + kCollectDbUsage);
        return kSomeNotAReport;
    }
    const std::string file = ToUtf8(argv[3]);
    try {
        return Collect(file, roots, options);
    } catch (const rules::RuleError& failure) {
        Print(stderr, std::string("reportcheck: ") + failure.what() + "\nreportcheck: " + file + ": nothing written\n");
    } catch (const sqlite::Error& failure) {
        Complain(file, std::string(failure.what()) + "; nothing written");
    }
    return kSomeNotAReport;
}

}  // namespace reportcheck
