// The findings rules on any rule text and any report:
//  - nothing crashes: a rule that cannot be used is refused with RuleError;
//  - the database is the same afterwards, row for row and in its schema,
//    whatever the rule tried (rules only read).
//
// Input: the rule up to the first zero byte, the report body after it (one
// code unit per byte). Byte 0 chooses what the rule part is: even, a whole
// rule file (header and query); odd, a query under a valid header.
#include <cstdint>
#include <string>

#include "FuzzCheck.h"
#include "reader/ReportModel.h"
#include "reader/ReportTables.h"
#include "reader/Rules.h"

namespace {

constexpr char kHeader[] =
    "-- id: fuzz.rule\n-- severity: warning\n-- title: T\n-- title.fr: T\n-- remedy: R\n-- remedy.fr: R\n";

// Every table's name, statement and rows, as one text.
std::string Digest(const sqlite::Connection& db) {
    std::string digest;
    sqlite::Statement tables(db, "SELECT name, coalesce(sql, '') FROM sqlite_schema ORDER BY name");
    while (tables.Step()) {
        const std::string name = tables.Text(0);
        digest += name + '\n' + tables.Text(1) + '\n';
        if (tables.Text(1).rfind("CREATE TABLE", 0) != 0) continue;
        sqlite::Statement rows(db, "SELECT * FROM main.\"" + name + "\"");
        while (rows.Step()) {
            for (int c = 0; c < rows.ColumnCount(); ++c) digest += (rows.IsNull(c) ? "~" : rows.Text(c)) + '\x1f';
            digest += '\n';
        }
    }
    return digest;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t zero = input.find('\0');
    const std::string rulePart = input.substr(0, zero);
    std::u16string body;
    if (zero != std::string::npos)
        for (std::size_t i = zero + 1; i < input.size(); ++i) body.push_back(static_cast<unsigned char>(input[i]));

    const sqlite::Connection db("", sqlite::OpenMode::Memory);
    // A rule that builds huge values is refused, not a memory failure here.
    sqlite3_limit(db.get(), SQLITE_LIMIT_LENGTH, 1 << 20);
    report_tables::CreateTables(db);
    {
        report_tables::TableWriter writer(db);
        const report_model::Report report = report_model::ParseReportBody(body);
        ReportVerdict verdict;
        verdict.state = ReportState::Intact;
        writer.Add({"fuzz.txt", 1, 2, std::nullopt}, report_tables::FileVerdict::Intact, "", &verdict, &report,
                   report_model::Utf8FromUtf16(body));
        writer.Add({"notes.txt", 3, 4, std::nullopt}, report_tables::FileVerdict::NotAReport, "not a report (empty file)", nullptr,
                   nullptr, {});
    }
    const std::string before = Digest(db);
    try {
        const rules::Rule rule =
            rules::ParseRule(data[0] % 2 == 0 ? rulePart : kHeader + rulePart, "fuzz.sql");
        rules::RunRules(db, {&rule}, std::chrono::milliseconds(50));
    } catch (const rules::RuleError&) {
        // Refused with a message: what a bad rule gets.
    }
    FUZZ_CHECK(Digest(db) == before);
    return 0;
}
