// reportcheck collect --db FILE PATH...: the report tables and the findings
// of every report under PATH, in a SQLite file that anything reading SQLite
// opens. A second run reads only new and changed reports. The collect
// command (CollectCommand.cpp) hands on to it when given --db.
#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>
#include <vector>

#include "reader/ReportTables.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"
#include "reportcheck/ReportDatabase.h"

namespace reportcheck {

namespace {

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
        add.Execute(std::string_view(rule->id), rules::SeverityName(rule->severity), std::string_view(rule->title),
                    std::string_view(rule->titleFr), std::string_view(rule->remedy),
                    std::string_view(rule->remedyFr),
                    rule->link.empty() ? std::nullopt : std::optional<std::string>(rule->link),
                    std::string_view(rule->source), std::string_view(rule->query));
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
        finding.Execute(f.report, std::string_view(f.rule->id), f.line, std::string_view(f.detail));
    }
    sqlite::Statement unchecked(db, "INSERT OR IGNORE INTO main.unchecked VALUES (?,?,?)");
    for (const rules::Unchecked& u : outcome.unchecked) {
        unchecked.Execute(u.report, std::string_view(u.rule->id), std::string_view(u.missing));
    }
}

// The database file a first run creates, removed again unless the run
// completes: SQLite creates the file when it opens it, and a run that then
// fails (a bad rule, say) would leave an empty file for the next run to take
// as its own. A file that was there before is never removed; the rolled
// back transaction leaves it byte for byte as it was.
class NewDatabaseFile {
public:
    explicit NewDatabaseFile(std::filesystem::path path) : path_(std::move(path)) {
        std::error_code error;
        isNew_ = !std::filesystem::exists(path_, error) && !error;
    }
    NewDatabaseFile(const NewDatabaseFile&) = delete;
    NewDatabaseFile& operator=(const NewDatabaseFile&) = delete;
    ~NewDatabaseFile() {
        if (!isNew_ || kept_) return;
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
        std::filesystem::path journal = path_;
        journal += "-journal";
        std::filesystem::remove(journal, ignored);
    }
    void Keep() { kept_ = true; }

private:
    std::filesystem::path path_;
    bool isNew_ = false;
    bool kept_ = false;
};

int Collect(const NativeString& path, const std::vector<std::filesystem::path>& roots, const RuleOptions& options) {
    const std::string file = ToUtf8(path);
    const auto inForce = rules::RulesInForce(options.rulesFolder);
    const auto ordered = rules::InSeverityOrder(inForce);
    // Declared before the connection: the file goes once SQLite has closed it.
    NewDatabaseFile created{std::filesystem::path(path)};
    OpenedDatabase opened = OpenDatabase(file, sqlite::OpenMode::ReadWriteCreate);
    if (!opened.db) {
        Complain(file, opened.problem + "; nothing written");
        return kSomeNotAReport;
    }
    const sqlite::Connection& db = *opened.db;
    // Pages that hold a whole report's body (some 5 kB) without overflow
    // pages; only a new file takes it.
    if (opened.empty) db.Execute("PRAGMA page_size = 16384");
    // Rows are written whole and in order, and a report's rows removed
    // together (AddReportFiles): checking every child row against its
    // report would cost a look-up per row.
    db.Execute("PRAGMA foreign_keys = OFF");
    sqlite::Transaction transaction(db);
    if (opened.empty) report_tables::CreateTables(db);
    const int status = AddReportFiles(db, roots, !opened.empty);
    // New rules, or a new file: every report's findings are made (again).
    const bool everyReport = StoreRules(db, ordered) || opened.empty;
    if (everyReport) db.Execute("INSERT OR IGNORE INTO temp.changed SELECT report FROM main.reports");
    StoreFindings(db, everyReport ? rules::RunRules(db, ordered, options.timeLimit)
                                  : RunRulesOnChanged(db, ordered, options.timeLimit));
    transaction.Commit();
    created.Keep();
    return status;
}

}  // namespace

int CollectDatabase(const Arguments& arguments) {
    RuleOptions options;
    if (auto problem = ReadRuleOptions(arguments, options)) return UsageError(kCollectCommand, *problem);
    std::vector<std::filesystem::path> roots;
    for (const NativeString& path : arguments.Operands()) roots.emplace_back(path);
    const std::string file = ToUtf8(*arguments.Value(kDbOption));
    try {
        return Collect(*arguments.Value(kDbOption), roots, options);
    } catch (const rules::RuleError& failure) {
        Warn(failure.what());
        Complain(file, "nothing written");
    } catch (const sqlite::Error& failure) {
        Complain(file, std::string(failure.what()) + "; nothing written");
    }
    return kSomeNotAReport;
}

}  // namespace reportcheck
