// The relational form of reports: the tables that `reportcheck collect --db`
// writes and that findings rules query, in SQLite. One row per report, then
// one row per directory, entry, adapter, registry value, unrecognised line
// and section heading, each with the number of the body line it comes from.
// docs/report-tables.md describes every column; kTablesSchemaVersion changes
// whenever the tables do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "reader/Sqlite.h"
#include "reader/ReportModel.h"
#include "format/ReportVerdict.h"

namespace report_tables {

inline constexpr int kTablesSchemaVersion = 2;
// What tells our database from any other SQLite file: PRAGMA application_id.
inline constexpr std::int32_t kApplicationId = 0x4F524456;  // "ORDV"

// The CREATE statements, exactly as docs/report-tables.md shows them.
std::string_view TablesSchema();

// Creates the tables in an empty database and stamps it as ours.
void CreateTables(const sqlite::Connection& db);

// Why `db` cannot be used as a database of ours, or nothing when it can.
// An empty database (no tables at all) is fine: CreateTables makes it one.
std::optional<std::string> ForeignDatabaseProblem(const sqlite::Connection& db, bool& empty);

// A file as collect finds it: where it is, when it was written, how big.
struct FileFacts {
    std::string path;  // as given, UTF-8
    std::int64_t size = 0;
    std::int64_t writeTime = 0;  // file system's own ticks; only compared
    // The same in seconds since 1970 UTC, where known: what can settle the
    // header's time (reader/ReportTime.h).
    std::optional<std::int64_t> modified;
};

enum class FileVerdict { Intact, Altered, NotAReport, Unreadable };
std::string_view FileVerdictName(FileVerdict verdict);  // "intact", ..., "unreadable"

// Adds one file's rows and gives its report number. For files that are not
// reports `report` and `body` are null and only the reports row is made.
class TableWriter {
public:
    explicit TableWriter(const sqlite::Connection& db);
    std::int64_t Add(const FileFacts& file, FileVerdict verdict, const std::string& reason,
                     const ReportVerdict* checksum, const report_model::Report* report, std::string_view body);

private:
    void AddSections(std::int64_t id, const report_model::Report& report);
    void AddAdapters(std::int64_t id, const report_model::Report& report);
    void AddInstallation(std::int64_t id, const report_model::Report& report);

    const sqlite::Connection& db_;
    sqlite::Statement report_, body_, section_, adapter_, directory_, entry_, value_, unrecognised_;
};

// Sets `latest` on every row of `reports`: 1 on each machine's (host_name's)
// latest intact report of certain time, the lowest report number of equal
// times; 0 on every other row. Run after every change of the rows.
void MarkLatestReports(const sqlite::Connection& db);

// The text of body line `number` (1-based) of `body`, without its break;
// empty when there is no such line.
std::string_view BodyLine(std::string_view body, std::int64_t number);

}  // namespace report_tables
