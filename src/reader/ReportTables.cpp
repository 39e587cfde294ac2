#include "reader/ReportTables.h"

#include <string>

#include "format/ReportChecksum.h"
#include "reader/ReportTime.h"

namespace report_tables {

namespace {

using report_model::Report;

constexpr std::string_view kSchema = R"sql(CREATE TABLE reports (
  report INTEGER PRIMARY KEY,
  path TEXT NOT NULL UNIQUE,
  file_size INTEGER NOT NULL,
  file_time INTEGER NOT NULL,
  verdict TEXT NOT NULL,
  reason TEXT,
  stored_checksum TEXT,
  body_checksum TEXT,
  line_breaks TEXT,
  line_count INTEGER,
  header TEXT,
  time TEXT,
  time_settled_by TEXT,
  latest INTEGER,
  program_name TEXT,
  program_version TEXT,
  program_name_line INTEGER,
  program_directory TEXT,
  program_directory_line INTEGER,
  elevated INTEGER,
  elevated_line INTEGER,
  host_name TEXT,
  host_domain TEXT,
  host_wmi_name TEXT,
  host_user TEXT,
  windows_version_label TEXT,
  windows_edition TEXT,
  windows_real_version TEXT,
  windows_product_id TEXT,
  windows_system_path TEXT,
  windows_program_files_path TEXT,
  windows_common_app_data_path TEXT,
  bits INTEGER,
  bios TEXT,
  board TEXT,
  processor_count INTEGER,
  processor_architecture INTEGER,
  processor_level INTEGER,
  processor_revision INTEGER,
  active_processor_mask INTEGER,
  page_size INTEGER,
  lowest_address TEXT,
  highest_address TEXT,
  memory_physical_k INTEGER,
  memory_virtual_k INTEGER,
  memory_paging_k INTEGER,
  volume_serial TEXT,
  volume_flags TEXT,
  volume_file_system TEXT,
  volume_total_k INTEGER,
  volume_free_k INTEGER,
  volume_user_k INTEGER,
  volume_line INTEGER,
  network_failure TEXT
);
CREATE TABLE bodies (
  report INTEGER PRIMARY KEY REFERENCES reports ON DELETE CASCADE,
  body TEXT NOT NULL
);
CREATE TABLE sections (
  report INTEGER NOT NULL REFERENCES reports ON DELETE CASCADE,
  section TEXT NOT NULL,
  line INTEGER NOT NULL,
  PRIMARY KEY (report, section)
) WITHOUT ROWID;
CREATE TABLE adapters (
  report INTEGER NOT NULL REFERENCES reports ON DELETE CASCADE,
  line INTEGER NOT NULL,
  name TEXT NOT NULL,
  if_index INTEGER,
  unicast_count INTEGER,
  anycast_count INTEGER,
  multicast_count INTEGER,
  dns_server_count INTEGER,
  dns_suffix TEXT,
  description TEXT,
  friendly_name TEXT,
  physical_address TEXT,
  flags INTEGER,
  mtu INTEGER,
  if_type INTEGER,
  oper_status INTEGER,
  ipv6_if_index INTEGER,
  prefix_count INTEGER,
  PRIMARY KEY (report, line)
) WITHOUT ROWID;
CREATE TABLE directories (
  report INTEGER NOT NULL REFERENCES reports ON DELETE CASCADE,
  line INTEGER NOT NULL,
  kind TEXT NOT NULL,
  path TEXT,
  PRIMARY KEY (report, line)
) WITHOUT ROWID;
CREATE TABLE entries (
  report INTEGER NOT NULL REFERENCES reports ON DELETE CASCADE,
  line INTEGER NOT NULL,
  directory TEXT NOT NULL,
  name TEXT NOT NULL,
  attributes INTEGER NOT NULL,
  size INTEGER NOT NULL,
  created TEXT NOT NULL,
  created_iso TEXT,
  written TEXT NOT NULL,
  written_iso TEXT,
  version TEXT NOT NULL,
  access_list TEXT,
  content TEXT,
  PRIMARY KEY (report, line)
) WITHOUT ROWID;
CREATE TABLE registry_values (
  report INTEGER NOT NULL REFERENCES reports ON DELETE CASCADE,
  line INTEGER NOT NULL,
  name TEXT NOT NULL,
  text TEXT,
  number INTEGER,
  PRIMARY KEY (report, line)
) WITHOUT ROWID;
CREATE TABLE unrecognised (
  report INTEGER NOT NULL REFERENCES reports ON DELETE CASCADE,
  line INTEGER NOT NULL,
  text TEXT NOT NULL,
  PRIMARY KEY (report, line)
) WITHOUT ROWID;
CREATE TABLE rules (
  rule TEXT PRIMARY KEY,
  severity TEXT NOT NULL,
  title TEXT NOT NULL,
  title_fr TEXT NOT NULL,
  remedy TEXT NOT NULL,
  remedy_fr TEXT NOT NULL,
  link TEXT,
  source TEXT NOT NULL,
  query TEXT NOT NULL
);
CREATE TABLE findings (
  report INTEGER NOT NULL REFERENCES reports ON DELETE CASCADE,
  rule TEXT NOT NULL,
  line INTEGER,
  detail TEXT NOT NULL
);
CREATE INDEX findings_by_report ON findings (report);
CREATE TABLE unchecked (
  report INTEGER NOT NULL REFERENCES reports ON DELETE CASCADE,
  rule TEXT NOT NULL,
  missing TEXT NOT NULL,
  PRIMARY KEY (report, rule)
) WITHOUT ROWID;
)sql";

std::optional<std::string> Optional(bool present, std::string_view text) {
    if (!present) return std::nullopt;
    return std::string(text);
}

std::optional<std::int64_t> LineOrNull(std::size_t line) {
    if (line == 0) return std::nullopt;
    return static_cast<std::int64_t>(line);
}

std::optional<std::string> NetworkFailure(const report_model::NetworkSection& n) {
    if (n.allocationFailed) return "memory allocation failed";
    if (n.enumerationError) return "GetAdaptersAddresses failed with error " + std::to_string(*n.enumerationError);
    if (n.noAddressesFound) return "no addresses were found";
    if (n.errorText) return "error: " + *n.errorText;
    return std::nullopt;
}

constexpr const char kInsertReport[] =
    "INSERT INTO reports VALUES (NULL,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,"
    "?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

// Each machine's latest: the first of its intact reports of certain time,
// latest first (ISO local times order as text). A machine with none gives
// NULL, which IN would make NULL for every row: left out.
constexpr const char kMarkLatest[] =
    "UPDATE main.reports SET latest = (report IN (SELECT chosen FROM ("
    "SELECT (SELECT c.report FROM main.reports c WHERE c.host_name = m.host_name AND c.verdict = 'intact' "
    "AND c.time IS NOT NULL ORDER BY c.time DESC, c.report LIMIT 1) AS chosen "
    "FROM (SELECT DISTINCT host_name FROM main.reports WHERE host_name IS NOT NULL) m) "
    "WHERE chosen IS NOT NULL))";


}  // namespace

std::string_view TablesSchema() {
    return kSchema;
}

void MarkLatestReports(const sqlite::Connection& db) {
    db.Execute(kMarkLatest);
}

void CreateTables(const sqlite::Connection& db) {
    db.Execute(std::string(kSchema) + "PRAGMA application_id = " + std::to_string(kApplicationId) +
               ";\nPRAGMA user_version = " + std::to_string(kTablesSchemaVersion) + ";\n");
}

std::optional<std::string> ForeignDatabaseProblem(const sqlite::Connection& db, bool& empty) {
    const auto pragma = [&](const char* sql) {
        sqlite::Statement statement(db, sql);
        return statement.Step() ? statement.Integer(0) : 0;
    };
    // Reading the header is the first read of the file: a file that is not
    // SQLite at all fails here, with SQLite's "file is not a database".
    const std::int64_t tables = pragma("SELECT count(*) FROM sqlite_schema");
    const std::int64_t application = pragma("PRAGMA application_id");
    const std::int64_t version = pragma("PRAGMA user_version");
    empty = tables == 0 && application == 0;
    if (empty) return std::nullopt;
    if (application != kApplicationId) return std::string("not a database of reportcheck collect --db");
    if (version != kTablesSchemaVersion)
        return "tables of schema version " + std::to_string(version) + ", this reportcheck reads version " +
               std::to_string(kTablesSchemaVersion);
    return std::nullopt;
}

std::string_view FileVerdictName(FileVerdict verdict) {
    switch (verdict) {
        case FileVerdict::Intact: return "intact";
        case FileVerdict::Altered: return "altered";
        case FileVerdict::NotAReport: return "not a report";
        case FileVerdict::Unreadable: return "unreadable";
    }
    return "unreadable";
}

TableWriter::TableWriter(const sqlite::Connection& db)
    : db_(db),
      report_(db, kInsertReport),
      body_(db, "INSERT INTO bodies VALUES (?,?)"),
      section_(db, "INSERT INTO sections VALUES (?,?,?)"),
      adapter_(db, "INSERT INTO adapters VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"),
      directory_(db, "INSERT INTO directories VALUES (?,?,?,?)"),
      entry_(db, "INSERT INTO entries VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?)"),
      value_(db, "INSERT INTO registry_values VALUES (?,?,?,?,?)"),
      unrecognised_(db, "INSERT INTO unrecognised VALUES (?,?,?)") {}

std::int64_t TableWriter::Add(const FileFacts& file, FileVerdict verdict, const std::string& reason,
                              const ReportVerdict* checksum, const Report* report, std::string_view body) {
    const std::optional<std::string> reasonText = Optional(!reason.empty(), reason);
    if (!report || !checksum) {
        report_.Execute(std::string_view(file.path), file.size, file.writeTime, FileVerdictName(verdict), reasonText);
        return sqlite3_last_insert_rowid(db_.get());
    }
    const Report& r = *report;
    const std::string stored = ChecksumText(checksum->stored), computed = ChecksumText(checksum->computed);
    const auto time = report_model::ReadHeaderTime(*report, file.modified);
    const std::optional<std::string> settledBy =
        time && time->settledBy ? std::optional<std::string>(report_model::SettledByName(*time->settledBy))
                                : std::nullopt;
    const auto& p = r.program;
    const auto& h = r.host;
    const auto& w = r.windows;
    const auto& hw = r.hardware;
    const auto processor = [&](std::uint32_t report_model::ProcessorLine::*field) {
        return hw.processor ? std::optional<std::int64_t>((*hw.processor).*field) : std::nullopt;
    };
    const auto memory = [&](std::int64_t report_model::MemoryLine::*field) {
        return hw.memory ? std::optional<std::int64_t>((*hw.memory).*field) : std::nullopt;
    };
    const auto volumeNumber = [&](std::int64_t report_model::VolumeLine::*field) {
        return hw.volume ? std::optional<std::int64_t>((*hw.volume).*field) : std::nullopt;
    };
    const auto volumeText = [&](std::string report_model::VolumeLine::*field) {
        return hw.volume ? std::optional<std::string>((*hw.volume).*field) : std::nullopt;
    };
    report_.Execute(std::string_view(file.path), file.size, file.writeTime, FileVerdictName(verdict), reasonText,
                    std::string_view(stored), std::string_view(computed),
                    std::string_view(r.lineBreaks.crlf ? "CR LF" : "LF"), static_cast<std::int64_t>(r.lineCount),
                    Optional(r.header.present, r.header.text), time ? time->iso : std::nullopt, settledBy,
                    std::optional<std::int64_t>(), p.name, p.version, LineOrNull(p.nameLine),
                    p.directory, LineOrNull(p.directoryLine),
                    p.heading.present ? std::optional<std::int64_t>(p.elevated ? 1 : 0) : std::nullopt,
                    LineOrNull(p.elevatedLine), Optional(h.hasNameLine, h.netbiosName),
                    Optional(h.hasNameLine, h.domain), Optional(h.hasNameLine, h.wmiName), h.user,
                    Optional(w.hasVersionReported, w.versionLabel), Optional(w.hasVersionReported, w.edition),
                    w.realVersion, w.productId, w.systemPath, w.programFilesPath, w.commonAppDataPath, hw.bits,
                    hw.bios, hw.board, hw.processorCount, processor(&report_model::ProcessorLine::architecture),
                    processor(&report_model::ProcessorLine::level), processor(&report_model::ProcessorLine::revision),
                    hw.activeProcessorMask, hw.pageSize,
                    hw.applicationAddresses ? std::optional<std::string>(hw.applicationAddresses->lowest)
                                            : std::nullopt,
                    hw.applicationAddresses ? std::optional<std::string>(hw.applicationAddresses->highest)
                                            : std::nullopt,
                    memory(&report_model::MemoryLine::physicalK), memory(&report_model::MemoryLine::virtualK),
                    memory(&report_model::MemoryLine::pagingK), volumeText(&report_model::VolumeLine::serial),
                    volumeText(&report_model::VolumeLine::flags), volumeText(&report_model::VolumeLine::fileSystem),
                    volumeNumber(&report_model::VolumeLine::totalK), volumeNumber(&report_model::VolumeLine::freeK),
                    volumeNumber(&report_model::VolumeLine::userK), LineOrNull(hw.volumeLine),
                    NetworkFailure(r.network));
    const std::int64_t id = sqlite3_last_insert_rowid(db_.get());
    body_.Execute(id, body);
    AddSections(id, r);
    AddAdapters(id, r);
    AddInstallation(id, r);
    for (const report_model::UnrecognisedLine& u : r.unrecognised) {
        unrecognised_.Execute(id, static_cast<std::int64_t>(u.line), std::string_view(u.text));
    }
    return id;
}

void TableWriter::AddSections(std::int64_t id, const Report& r) {
    const auto add = [&](std::string_view name, std::size_t line) {
        if (line == 0) return;
        section_.Execute(id, name, static_cast<std::int64_t>(line));
    };
    add("header", r.header.present ? 1 : 0);
    add("program", r.program.heading.line);
    add("host", r.host.heading.line);
    add("windows", r.windows.heading.line);
    add("hardware", r.hardware.heading.line);
    add("network", r.network.heading.line);
    add("installation", r.installation.heading.line);
    // Installation data from the registry counts as there when at least one
    // value was read under its heading: a key that could not be opened, or
    // no suite, shows the heading alone.
    add("registry data", r.installation.registryValues.empty() ? 0 : r.installation.registryDataLine);
}

void TableWriter::AddAdapters(std::int64_t id, const Report& r) {
    for (const report_model::Adapter& a : r.network.adapters) {
        adapter_.Execute(id, static_cast<std::int64_t>(a.line), std::string_view(a.name), a.ifIndex, a.unicastCount,
                         a.anycastCount, a.multicastCount, a.dnsServerCount, a.dnsSuffix, a.description,
                         a.friendlyName, a.physicalAddress, a.flags, a.mtu, a.ifType, a.operStatus, a.ipv6IfIndex,
                         a.prefixCount);
    }
}

namespace {
// A stamp's ISO text as a view of `text`, which lives until the row is
// written: no text of its own for each of a listing's many times.
std::optional<std::string_view> IsoView(const std::optional<report_model::CalendarStamp::Text>& text) {
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
}
}  // namespace

void TableWriter::AddInstallation(std::int64_t id, const Report& r) {
    for (const report_model::Directory& d : r.installation.directories) {
        const std::string_view kind = report_model::DirectoryKindName(d.kind);
        directory_.Execute(id, static_cast<std::int64_t>(d.line), kind, d.path);
        for (const report_model::DirectoryEntry& e : d.entries) {
            entry_.Execute(id, static_cast<std::int64_t>(e.line), kind, std::string_view(e.name),
                           static_cast<std::int64_t>(e.attributes), static_cast<std::int64_t>(e.size),
                           std::string_view(e.created.PrintedText()), IsoView(e.created.IsoText()),
                           std::string_view(e.written.PrintedText()), IsoView(e.written.IsoText()),
                           std::string_view(e.version), e.accessList, e.content);
        }
    }
    for (const report_model::RegistryValue& v : r.installation.registryValues) {
        value_.Execute(id, static_cast<std::int64_t>(v.line), std::string_view(v.name), v.text, v.number);
    }
}

std::string_view BodyLine(std::string_view body, std::int64_t number) {
    if (number < 1) return {};
    std::size_t start = 0;
    for (std::int64_t n = 1; n < number; ++n) {
        const std::size_t feed = body.find('\n', start);
        if (feed == std::string_view::npos) return {};
        start = feed + 1;
    }
    if (start >= body.size()) return {};
    std::size_t end = body.find('\n', start);
    if (end == std::string_view::npos) end = body.size();
    if (end > start && body[end - 1] == '\r') --end;
    return body.substr(start, end - start);
}

}  // namespace report_tables
