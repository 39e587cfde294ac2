#include "reportcheck/ReportDatabase.h"

#include <fstream>
#include <stdexcept>

#include "reader/ReportTables.h"
#include "reportcheck/FileWalk.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"

namespace reportcheck {

namespace {

using report_tables::FileFacts;
using report_tables::FileVerdict;

constexpr const char* kReportTables[] = {"reports", "bodies",          "sections",    "adapters",
                                         "directories", "entries", "registry_values", "unrecognised"};
// Every table with rows of a report, children first: what removing a report
// deletes, whether or not the connection enforces the foreign keys.
constexpr const char kRemoveReports[] =
    "DELETE FROM main.findings WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM main.unchecked WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM main.bodies WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM main.sections WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM main.adapters WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM main.directories WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM main.entries WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM main.registry_values WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM main.unrecognised WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM main.reports WHERE report IN (SELECT report FROM temp.gone);"
    "DELETE FROM temp.gone;";

FileFacts FactsOf(const std::filesystem::path& path) {
    FileFacts facts;
    facts.path = PathText(path);
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    facts.size = error ? -1 : static_cast<std::int64_t>(size);
    const auto time = std::filesystem::last_write_time(path, error);
    facts.writeTime = error ? 0 : static_cast<std::int64_t>(time.time_since_epoch().count());
    return facts;
}

FileVerdict VerdictOf(const LoadedReport& loaded) {
    switch (loaded.state) {
        case LoadState::Report:
            return loaded.verdict.state == ReportState::Intact ? FileVerdict::Intact : FileVerdict::Altered;
        case LoadState::NotAReport: return FileVerdict::NotAReport;
        case LoadState::Unreadable: break;
    }
    return FileVerdict::Unreadable;
}

class FileAdder {
public:
    FileAdder(const sqlite::Connection& db, bool incremental)
        : incremental_(incremental),
          writer_(db),
          find_(db, "SELECT report, file_size, file_time FROM main.reports WHERE path = ?"),
          db_(db),
          remove_(db, "INSERT INTO temp.gone VALUES (?)"),
          seen_(db, "INSERT OR IGNORE INTO temp.seen VALUES (?)"),
          changed_(db, "INSERT OR IGNORE INTO temp.changed VALUES (?)") {}

    int File(const std::filesystem::path& path) {
        FileFacts facts = FactsOf(path);
        if (incremental_ && Unchanged(facts)) return kAllIntact;
        const LoadedReport loaded = LoadReport(path.c_str(), KeepBody::Utf8);
        facts.modified = loaded.modified;
        if (loaded.state != LoadState::Report) Complain(facts.path, loaded.problem);
        const std::int64_t id =
            writer_.Add(facts, VerdictOf(loaded), loaded.problem,
                        loaded.state == LoadState::Report ? &loaded.verdict : nullptr,
                        loaded.state == LoadState::Report ? &loaded.report : nullptr, loaded.bodyUtf8);
        Mark(id);
        return StatusOf(loaded);
    }

    int Problem(const std::filesystem::path& path, const std::string& problem) {
        Complain(PathText(path), problem);
        FileFacts facts;
        facts.path = PathText(path);
        facts.size = -1;
        if (incremental_) RemoveOld(facts.path);
        Mark(writer_.Add(facts, FileVerdict::Unreadable, problem, nullptr, nullptr, {}));
        return kSomeNotAReport;
    }

private:
    // Known with the same size and time: only marked as still there.
    // Known otherwise: its rows go, to be made again.
    bool Unchanged(const FileFacts& facts) {
        find_.Bind(1, std::string_view(facts.path));
        if (!find_.Step()) {
            find_.Reset();
            return false;
        }
        const std::int64_t id = find_.Integer(0);
        const bool same = find_.Integer(1) == facts.size && find_.Integer(2) == facts.writeTime;
        find_.Reset();
        if (same) {
            seen_.Bind(1, id);
            seen_.Run();
            return true;
        }
        Remove(id);
        return false;
    }

    void RemoveOld(const std::string& path) {
        find_.Bind(1, std::string_view(path));
        const bool known = find_.Step();
        const std::int64_t id = known ? find_.Integer(0) : 0;
        find_.Reset();
        if (known) Remove(id);
    }

    void Remove(std::int64_t id) {
        remove_.Bind(1, id);
        remove_.Run();
        db_.Execute(kRemoveReports);
    }

    void Mark(std::int64_t id) {
        seen_.Bind(1, id);
        seen_.Run();
        changed_.Bind(1, id);
        changed_.Run();
    }

    bool incremental_;
    report_tables::TableWriter writer_;
    sqlite::Statement find_;
    const sqlite::Connection& db_;
    sqlite::Statement remove_, seen_, changed_;
};

// Reports under `root` (the file itself, or anything below the folder) that
// this run did not see: removed or renamed since the last run.
void RemoveGone(const sqlite::Connection& db, const std::filesystem::path& root) {
    std::string prefix = PathText(root);
    const std::string separator = PathText(std::filesystem::path("a") / "b").substr(1, 1);
    const std::string below = prefix.size() && prefix.back() == separator[0] ? prefix : prefix + separator;
    sqlite::Statement gone(db,
                           "INSERT INTO temp.gone SELECT report FROM main.reports WHERE report NOT IN "
                           "(SELECT report FROM temp.seen) AND (path = ?1 OR substr(path, 1, length(?2)) = ?2)");
    gone.Execute(std::string_view(prefix), std::string_view(below));
    db.Execute(kRemoveReports);
}

}  // namespace

std::optional<std::string> ReadRuleOptions(const Arguments& arguments, RuleOptions& options) {
    if (const NativeString* folder = arguments.Value(kRulesOption)) options.rulesFolder = ToUtf8(*folder);
    const NativeString* limit = arguments.Value(kTimeLimitOption);
    if (!limit) return std::nullopt;
    const std::string value = ToUtf8(*limit);
    std::size_t used = 0;
    int seconds = 0;
    try {
        seconds = std::stoi(value, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used != value.size() || seconds < 1 || seconds > 3600)
        return std::string("--time-limit takes whole seconds from 1 to 3600");
    options.timeLimit = std::chrono::seconds(seconds);
    return std::nullopt;
}

bool LooksLikeDatabase(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    char magic[16] = {};
    in.read(magic, sizeof magic);
    return in.gcount() == 16 && std::string_view(magic, 16) == std::string_view("SQLite format 3\0", 16);
}

OpenedDatabase OpenDatabase(const std::string& path, sqlite::OpenMode mode) {
    OpenedDatabase opened;
    try {
        sqlite::Connection db(path, mode);
        if (auto problem = report_tables::ForeignDatabaseProblem(db, opened.empty)) {
            opened.problem = *problem;
            return opened;
        }
        if (opened.empty && mode == sqlite::OpenMode::ReadOnly) {
            opened.problem = "not a database of reportcheck collect --db (it has no tables)";
            return opened;
        }
        opened.db.emplace(std::move(db));
    } catch (const sqlite::Error& failure) {
        opened.problem = failure.what();
    }
    return opened;
}

int AddReportFiles(const sqlite::Connection& db, const std::vector<std::filesystem::path>& roots, bool incremental) {
    db.Execute(
        "CREATE TEMP TABLE IF NOT EXISTS seen (report INTEGER PRIMARY KEY);"
        "CREATE TEMP TABLE IF NOT EXISTS changed (report INTEGER PRIMARY KEY);"
        "CREATE TEMP TABLE IF NOT EXISTS gone (report INTEGER PRIMARY KEY);");
    FileAdder adder(db, incremental);
    const int status = ForEachFile(
        roots, {.onFile = [&](const std::filesystem::path& path) { return adder.File(path); },
                .onProblem = [&](const std::filesystem::path& path, const std::string& problem) {
                    return adder.Problem(path, problem);
                },
                .onSkip = {}});
    if (incremental)
        for (const std::filesystem::path& root : roots) RemoveGone(db, root);
    report_tables::MarkLatestReports(db);
    return status;
}

rules::Outcome RunRulesOnChanged(const sqlite::Connection& db, const std::vector<const rules::Rule*>& ruleList,
                                 std::chrono::milliseconds limit) {
    std::string shadow, unshadow;
    for (const char* table : kReportTables) {
        shadow += std::string("CREATE TEMP VIEW ") + table + " AS SELECT * FROM main." + table +
                  " WHERE report IN (SELECT report FROM temp.changed);";
        unshadow += std::string("DROP VIEW temp.") + table + ";";
    }
    db.Execute(shadow);
    struct Unshadow {
        const sqlite::Connection& db;
        const std::string& sql;
        ~Unshadow() { sqlite3_exec(db.get(), sql.c_str(), nullptr, nullptr, nullptr); }
    } unshadowAfter{db, unshadow};
    return rules::RunRules(db, ruleList, limit);
}

}  // namespace reportcheck
