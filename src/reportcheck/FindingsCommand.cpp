// reportcheck findings: what the rules find in reports, for a person (per
// report, most severe first, with the evidence line and the remedy) or, with
// --json, for a program.
#include <algorithm>
#include <map>
#include <optional>
#include <vector>

#include "reader/ReportTables.h"
#include "reader/ReportJson.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"
#include "reportcheck/ReportDatabase.h"

namespace reportcheck {

namespace {

struct Options {
    bool json = false;
    rules::Severity minimum = rules::Severity::Info;
    RuleOptions rules;
    std::vector<std::filesystem::path> paths;
};

// The options as the command takes them; the problem with them, if any.
std::optional<std::string> ReadOptions(const Arguments& arguments, Options& options) {
    options.json = arguments.Has(kJsonOption);
    if (const NativeString* level = arguments.Value(kMinSeverityOption)) {
        const auto minimum = rules::SeverityFromName(ToUtf8(*level));
        if (!minimum) return std::string("--min-severity takes info, warning or error");
        options.minimum = *minimum;
    }
    for (const NativeString& path : arguments.Operands()) options.paths.emplace_back(path);
    const bool database = std::any_of(options.paths.begin(), options.paths.end(), LooksLikeDatabase);
    if (database && options.paths.size() > 1) return std::string("a database is read alone, without other PATHs");
    return ReadRuleOptions(arguments, options.rules);
}

// One report as the output lists it.
struct ReportRow {
    std::int64_t id = 0;
    std::string path, verdict, reason, stored, computed;
    std::vector<const rules::Finding*> findings;
    std::vector<const rules::Unchecked*> unchecked;
};

std::string VerdictText(const ReportRow& r) {
    if (r.verdict == "intact") return "intact (checksum " + r.stored + ")";
    if (r.verdict == "altered") return "altered (trailer says " + r.stored + ", body gives " + r.computed + ")";
    return r.reason;
}

std::vector<ReportRow> ReportRows(const sqlite::Connection& db, const rules::Outcome& outcome, bool byPath,
                                  rules::Severity minimum) {
    std::vector<ReportRow> rows;
    std::map<std::int64_t, std::size_t> index;
    sqlite::Statement all(db, std::string("SELECT report, path, verdict, coalesce(reason, ''), "
                                          "coalesce(stored_checksum, ''), coalesce(body_checksum, '') "
                                          "FROM main.reports ORDER BY ") +
                                  (byPath ? "path" : "report"));
    while (all.Step()) {
        index[all.Integer(0)] = rows.size();
        rows.push_back({all.Integer(0), all.Text(1), all.Text(2), all.Text(3), all.Text(4), all.Text(5), {}, {}});
    }
    for (const rules::Finding& f : outcome.findings) {
        const auto at = index.find(f.report);
        if (at != index.end() && f.rule->severity >= minimum) rows[at->second].findings.push_back(&f);
    }
    for (const rules::Unchecked& u : outcome.unchecked) {
        const auto at = index.find(u.report);
        if (at != index.end() && u.rule->severity >= minimum) rows[at->second].unchecked.push_back(&u);
    }
    for (ReportRow& row : rows)
        std::stable_sort(row.findings.begin(), row.findings.end(), [](const rules::Finding* a, const rules::Finding* b) {
            if (a->rule->severity != b->rule->severity) return a->rule->severity > b->rule->severity;
            if (a->rule->id != b->rule->id) return a->rule->id < b->rule->id;
            return a->line.value_or(0) < b->line.value_or(0);
        });
    return rows;
}

// The body lines findings point at, read once per report.
class Evidence {
public:
    explicit Evidence(const sqlite::Connection& db) : body_(db, "SELECT body FROM main.bodies WHERE report = ?") {}
    std::string Line(std::int64_t report, std::int64_t line) {
        if (report != report_) {
            body_.Bind(1, report);
            text_ = body_.Step() ? body_.Text(0) : std::string();
            body_.Reset();
            report_ = report;
        }
        return std::string(report_tables::BodyLine(text_, line));
    }

private:
    sqlite::Statement body_;
    std::int64_t report_ = -1;
    std::string text_;
};

std::string Plural(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string AsText(const std::vector<ReportRow>& rows, Evidence& evidence) {
    std::string out;
    std::size_t counts[3] = {}, unchecked = 0;
    for (const ReportRow& row : rows) {
        out += row.path + ": " + VerdictText(row) + "\n";
        for (const rules::Finding* f : row.findings) {
            const rules::Rule& rule = *f->rule;
            ++counts[static_cast<int>(rule.severity)];
            out += "  " + std::string(rules::SeverityName(rule.severity)) + " " + rule.id + ": " + rule.title + "\n";
            if (f->line) out += "    line " + std::to_string(*f->line) + ": " + evidence.Line(row.id, *f->line) + "\n";
            out += "    " + f->detail + "\n";
            out += "    remedy: " + rule.remedy + "\n";
            if (!rule.link.empty()) out += "    see " + rule.link + "\n";
        }
        for (const rules::Unchecked* u : row.unchecked) {
            ++unchecked;
            out += "  not checked: " + u->rule->id + " (no " + u->missing + ")\n";
        }
    }
    out += Plural(rows.size(), "report", "reports") + ": " + Plural(counts[2], "error", "errors") + ", " +
           Plural(counts[1], "warning", "warnings") + ", " + std::to_string(counts[0]) + " info";
    if (unchecked) out += "; " + Plural(unchecked, "rule", "rules") + " not checked";
    return out + "\n";
}

void OptionalString(report_model::JsonWriter& json, const char* key, const std::string& text) {
    json.Key(key);
    if (text.empty())
        json.Null();
    else
        json.String(text);
}

std::string AsJson(const std::vector<ReportRow>& rows, Evidence& evidence) {
    std::string out;
    report_model::JsonWriter json(out);
    std::size_t counts[3] = {}, unchecked = 0;
    json.Open('{');
    json.Key("schemaVersion");
    json.Signed(1);
    json.Key("reports");
    json.Open('[');
    for (const ReportRow& row : rows) {
        json.Open('{');
        json.Key("path");
        json.String(row.path);
        json.Key("verdict");
        json.String(row.verdict);
        OptionalString(json, "reason", row.reason);
        json.Key("findings");
        json.Open('[');
        for (const rules::Finding* f : row.findings) {
            const rules::Rule& rule = *f->rule;
            ++counts[static_cast<int>(rule.severity)];
            json.Open('{');
            json.Key("rule");
            json.String(rule.id);
            json.Key("severity");
            json.String(rules::SeverityName(rule.severity));
            json.Key("title");
            json.String(rule.title);
            json.Key("titleFr");
            json.String(rule.titleFr);
            json.Key("line");
            if (f->line)
                json.Signed(*f->line);
            else
                json.Null();
            json.Key("evidence");
            if (f->line)
                json.String(evidence.Line(row.id, *f->line));
            else
                json.Null();
            json.Key("detail");
            json.String(f->detail);
            json.Key("remedy");
            json.String(rule.remedy);
            json.Key("remedyFr");
            json.String(rule.remedyFr);
            OptionalString(json, "link", rule.link);
            json.Close('}');
        }
        json.Close(']');
        json.Key("notChecked");
        json.Open('[');
        for (const rules::Unchecked* u : row.unchecked) {
            ++unchecked;
            json.Open('{');
            json.Key("rule");
            json.String(u->rule->id);
            json.Key("missing");
            json.String(u->missing);
            json.Close('}');
        }
        json.Close(']');
        json.Close('}');
    }
    json.Close(']');
    json.Key("counts");
    json.Open('{');
    const std::pair<const char*, std::size_t> totals[] = {
        {"error", counts[2]}, {"warning", counts[1]}, {"info", counts[0]}, {"notChecked", unchecked}};
    for (const auto& [name, count] : totals) {
        json.Key(name);
        json.Unsigned(count);
    }
    json.Close('}');
    json.Close('}');
    return out + "\n";
}

int Report(const sqlite::Connection& db, const Options& options, const rules::Outcome& outcome, bool byPath,
           int fileStatus) {
    const std::vector<ReportRow> rows = ReportRows(db, outcome, byPath, options.minimum);
    Evidence evidence(db);
    const std::string text = options.json ? AsJson(rows, evidence) : AsText(rows, evidence);
    BinaryOutput();
    Print(stdout, text);
    if (fileStatus == kSomeNotAReport) return kSomeNotAReport;
    const bool found = std::any_of(rows.begin(), rows.end(), [](const ReportRow& r) { return !r.findings.empty(); });
    return found ? 1 : 0;
}

int FromDatabase(const Options& options, const std::map<std::string, rules::Rule>& inForce) {
    const std::string file = PathText(options.paths.front());
    OpenedDatabase opened = OpenDatabase(file, sqlite::OpenMode::ReadOnly);
    if (!opened.db) {
        Complain(file, opened.problem);
        return kSomeNotAReport;
    }
    const rules::Outcome outcome =
        rules::RunRules(*opened.db, rules::InSeverityOrder(inForce), options.rules.timeLimit);
    return Report(*opened.db, options, outcome, true, kAllIntact);
}

int FromFiles(const Options& options, const std::map<std::string, rules::Rule>& inForce) {
    const sqlite::Connection db("", sqlite::OpenMode::Memory);
    report_tables::CreateTables(db);
    const int status = AddReportFiles(db, options.paths, false);
    const rules::Outcome outcome = rules::RunRules(db, rules::InSeverityOrder(inForce), options.rules.timeLimit);
    return Report(db, options, outcome, false, status);
}


int RunFindings(const Arguments& arguments) {
    Options options;
    if (auto problem = ReadOptions(arguments, options)) return UsageError(kFindingsCommand, *problem);
    try {
        const auto inForce = rules::RulesInForce(options.rules.rulesFolder);
        return LooksLikeDatabase(options.paths.front()) ? FromDatabase(options, inForce) : FromFiles(options, inForce);
    } catch (const rules::RuleError& failure) {
        Print(stderr, std::string("reportcheck: ") + failure.what() + "\n");
    } catch (const sqlite::Error& failure) {
        Print(stderr, std::string("reportcheck: ") + failure.what() + "\n");
    }
    return kSomeNotAReport;
}

constexpr const Option* kFindingsOptions[] = {&kJsonOption, &kRulesOption, &kMinSeverityOption, &kTimeLimitOption};

}  // namespace
}  // namespace reportcheck

extern const Command kFindingsCommand{
    .name = "findings",
    .synopsis = "findings [--json] [--rules DIR] [--min-severity LEVEL] PATH...",
    .summary = "what is wrong in reports, by the findings rules",
    .help = "Runs the findings rules (reportcheck rules lists them) over the reports\n"
            "PATH names: report files, folders of them (searched recursively), or one\n"
            "database made by collect --db. Per report, most severe first: the rule's\n"
            "title, the evidence as \"line N: <the line>\", a detail and the remedy;\n"
            "then the rules that could not check the report for want of its data,\n"
            "and a closing count. --json gives the same for programs. --rules DIR\n"
            "adds the rules of DIR/*.sql or replaces built-in ones of the same id.\n"
            "Exit status: 0 no finding at or above the level, 1 findings, 2 trouble\n"
            "(a file not a report or unreadable, a bad rule or database).\n",
    .options = reportcheck::kFindingsOptions,
    .minOperands = 1,
    .run = reportcheck::RunFindings,
};
