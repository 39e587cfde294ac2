#include "reader/Rules.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

// kBuiltInRuleFiles: {file name, text} of every rules/*.sql, made at build
// time by cmake/EmbedRules.cmake.
#include "BuiltInRules.inc"

namespace rules {

namespace {

constexpr std::string_view kKnownSections[] = {"header",  "program", "host", "windows", "hardware",
                                               "network", "installation", "registry data"};

std::string Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    const std::size_t last = text.find_last_not_of(" \t\r");
    return std::string(text.substr(first, last - first + 1));
}

bool ValidId(std::string_view id) {
    if (id.empty() || id.size() > 64) return false;
    return std::all_of(id.begin(), id.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '_';
    });
}

class HeaderReader {
public:
    HeaderReader(Rule& rule, const std::string& source) : rule_(rule), source_(source) {}

    [[noreturn]] void Fail(std::size_t line, const std::string& what) const {
        throw RuleError(source_ + ": line " + std::to_string(line) + ": " + what);
    }

    // One "-- key: value" line, or "--   more" that continues the last key.
    void Take(std::size_t number, std::string_view line) {
        std::string_view rest = line.substr(2);
        if (rest.substr(0, 3) == "   " && last_) {
            *last_ += " " + Trim(rest);
            return;
        }
        const std::size_t colon = rest.find(':');
        if (colon == std::string_view::npos) Fail(number, "a header line reads \"-- key: value\"");
        const std::string key = Trim(rest.substr(0, colon));
        const std::string value = Trim(rest.substr(colon + 1));
        std::string* slot = Slot(key);
        if (!slot) Fail(number, "unknown key \"" + key + "\"");
        if (!seen_.insert(key).second) Fail(number, "\"" + key + "\" given twice");
        *slot = value;
        last_ = slot;
    }

    void Finish(std::size_t firstQueryLine) {
        for (const char* key : {"id", "severity", "title", "title.fr", "remedy", "remedy.fr"})
            if (!seen_.count(key) || Slot(key)->empty()) Fail(1, std::string("no \"") + key + "\" in the header");
        if (!ValidId(rule_.id)) Fail(1, "the id \"" + rule_.id + "\" is not of lower-case letters, digits, . - _");
        const auto severity = SeverityFromName(severity_);
        if (!severity) Fail(1, "severity \"" + severity_ + "\" is none of error, warning, info");
        rule_.severity = *severity;
        std::stringstream names(needs_);
        for (std::string name; std::getline(names, name, ',');) {
            name = Trim(name);
            if (std::find(std::begin(kKnownSections), std::end(kKnownSections), name) == std::end(kKnownSections))
                Fail(1, "needs \"" + name + "\", which is no section (see the sections table)");
            rule_.needs.push_back(name);
        }
        if (Trim(rule_.query).empty()) Fail(firstQueryLine, "no query after the header");
    }

private:
    std::string* Slot(const std::string& key) {
        if (key == "id") return &rule_.id;
        if (key == "severity") return &severity_;
        if (key == "title") return &rule_.title;
        if (key == "title.fr") return &rule_.titleFr;
        if (key == "remedy") return &rule_.remedy;
        if (key == "remedy.fr") return &rule_.remedyFr;
        if (key == "link") return &rule_.link;
        if (key == "needs") return &needs_;
        if (key == "why") return &rule_.why;
        return nullptr;
    }

    Rule& rule_;
    const std::string& source_;
    std::string severity_, needs_;
    std::set<std::string> seen_;
    std::string* last_ = nullptr;
};

// --- running ---------------------------------------------------------------

struct Guard {
    std::chrono::steady_clock::time_point deadline;
};

int OnlyReading(void*, int action, const char*, const char*, const char*, const char*) {
    switch (action) {
        case SQLITE_SELECT:
        case SQLITE_READ:
        case SQLITE_FUNCTION:
        case SQLITE_RECURSIVE: return SQLITE_OK;
        default: return SQLITE_DENY;
    }
}

int PastDeadline(void* context) {
    return std::chrono::steady_clock::now() > static_cast<Guard*>(context)->deadline ? 1 : 0;
}

// Read-only for as long as it lives: the authorizer, query_only and the
// time limit on, all off again afterwards.
class ReadOnlyWhile {
public:
    ReadOnlyWhile(const sqlite::Connection& db, Guard& guard) : db_(db) {
        db_.Execute("PRAGMA query_only = 1");
        sqlite3_set_authorizer(db_.get(), OnlyReading, nullptr);
        sqlite3_progress_handler(db_.get(), 1000, PastDeadline, &guard);
    }
    ~ReadOnlyWhile() {
        sqlite3_progress_handler(db_.get(), 0, nullptr, nullptr);
        sqlite3_set_authorizer(db_.get(), nullptr, nullptr);
        sqlite3_exec(db_.get(), "PRAGMA query_only = 0", nullptr, nullptr, nullptr);
    }
    ReadOnlyWhile(const ReadOnlyWhile&) = delete;
    ReadOnlyWhile& operator=(const ReadOnlyWhile&) = delete;

private:
    const sqlite::Connection& db_;
};

bool OnlyCommentsAndBlanks(std::string_view tail) {
    std::size_t i = 0;
    while (i < tail.size()) {
        const char c = tail[i];
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == ';') {
            ++i;
        } else if (tail.substr(i, 2) == "--") {
            i = tail.find('\n', i);
            if (i == std::string_view::npos) return true;
        } else if (tail.substr(i, 2) == "/*") {
            i = tail.find("*/", i + 2);
            if (i == std::string_view::npos) return true;
            i += 2;
        } else {
            return false;
        }
    }
    return true;
}

std::string Describe(const Rule& rule) {
    return "rule " + rule.id + " (" + rule.source + ")";
}

// The rule's rows, read under the guard.
void RunOne(const sqlite::Connection& db, const Rule& rule, std::chrono::milliseconds limit,
            const std::set<std::int64_t>& skipped, std::vector<Finding>& findings) {
    Guard guard{std::chrono::steady_clock::now() + limit};
    ReadOnlyWhile readOnly(db, guard);
    sqlite3_stmt* raw = nullptr;
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(db.get(), rule.query.c_str(), static_cast<int>(rule.query.size()), &raw, &tail) !=
        SQLITE_OK)
        throw RuleError(Describe(rule) + ": " + sqlite3_errmsg(db.get()));
    std::unique_ptr<sqlite3_stmt, sqlite::StatementFinalizer> statement(raw);
    if (!raw) throw RuleError(Describe(rule) + ": no query after the header");
    if (!OnlyCommentsAndBlanks(tail)) throw RuleError(Describe(rule) + ": more than one statement; a rule is one query");
    if (sqlite3_column_count(raw) != 3)
        throw RuleError(Describe(rule) + ": the query gives " + std::to_string(sqlite3_column_count(raw)) +
                        " columns; a rule gives three: report, line, detail");
    int status;
    while ((status = sqlite3_step(raw)) == SQLITE_ROW) {
        const std::int64_t report = sqlite3_column_int64(raw, 0);
        if (skipped.count(report)) continue;
        Finding finding;
        finding.report = report;
        finding.rule = &rule;
        if (sqlite3_column_type(raw, 1) != SQLITE_NULL) finding.line = sqlite3_column_int64(raw, 1);
        const auto* detail = reinterpret_cast<const char*>(sqlite3_column_text(raw, 2));
        finding.detail = detail ? detail : "";
        // One line: the detail is printed after the evidence.
        std::replace_if(finding.detail.begin(), finding.detail.end(), [](char c) { return c == '\n' || c == '\r'; },
                        ' ');
        findings.push_back(std::move(finding));
    }
    if (status == SQLITE_INTERRUPT)
        throw RuleError(Describe(rule) + ": stopped after running longer than " +
                        std::to_string(std::chrono::duration_cast<std::chrono::seconds>(limit).count()) +
                        " seconds (a query that never ends?)");
    if (status != SQLITE_DONE) throw RuleError(Describe(rule) + ": " + sqlite3_errmsg(db.get()));
}

// The reports (intact or altered) that lack a section the rule needs.
std::vector<Unchecked> Unmet(const sqlite::Connection& db, const Rule& rule) {
    std::vector<Unchecked> unmet;
    if (rule.needs.empty()) return unmet;
    sqlite::Statement lacking(db,
                              "SELECT report FROM reports r WHERE verdict IN ('intact', 'altered') AND NOT EXISTS "
                              "(SELECT 1 FROM sections s WHERE s.report = r.report AND s.section = ?) ORDER BY report");
    std::set<std::int64_t> seen;
    for (const std::string& section : rule.needs) {
        lacking.Bind(1, std::string_view(section));
        while (lacking.Step()) {
            const std::int64_t report = lacking.Integer(0);
            if (seen.insert(report).second) unmet.push_back({report, &rule, section});
        }
        lacking.Reset();
    }
    return unmet;
}

}  // namespace

std::string_view SeverityName(Severity severity) {
    switch (severity) {
        case Severity::Error: return "error";
        case Severity::Warning: return "warning";
        case Severity::Info: return "info";
    }
    return "info";
}

std::optional<Severity> SeverityFromName(std::string_view name) {
    for (Severity s : {Severity::Error, Severity::Warning, Severity::Info})
        if (SeverityName(s) == name) return s;
    return std::nullopt;
}

Rule ParseRule(std::string_view text, const std::string& source) {
    Rule rule;
    rule.source = source;
    HeaderReader header(rule, source);
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
    std::size_t number = 0, start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        ++number;
        if (line.substr(0, 2) != "--") break;
        header.Take(number, line);
        start = end + 1;
    }
    rule.query = std::string(text.substr(std::min(start, text.size())));
    header.Finish(number);
    return rule;
}

std::map<std::string, Rule> BuiltInRules() {
    std::map<std::string, Rule> found;
    for (const auto& file : kBuiltInRuleFiles) {
        Rule rule = ParseRule(file.text, std::string("built-in ") + file.name);
        rule.source = "built-in";
        found[rule.id] = std::move(rule);
    }
    return found;
}

std::map<std::string, Rule> RulesInForce(const std::optional<std::string>& folder) {
    std::map<std::string, Rule> rules = BuiltInRules();
    if (!folder) return rules;
    namespace fs = std::filesystem;
    const fs::path root = fs::path(std::u8string(folder->begin(), folder->end()));
    std::error_code error;
    if (!fs::is_directory(root, error)) throw RuleError(*folder + ": not a folder of rules");
    std::vector<fs::path> files;
    for (fs::directory_iterator it(root, error), end; !error && it != end; it.increment(error))
        if (it->path().extension() == ".sql") files.push_back(it->path());
    if (error) throw RuleError(*folder + ": " + error.message());
    std::sort(files.begin(), files.end());
    std::set<std::string> fromFolder;
    for (const fs::path& file : files) {
        const std::u8string name8 = file.u8string();
        const std::string name(name8.begin(), name8.end());
        std::ifstream in(file, std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (!in && !in.eof()) throw RuleError(name + ": cannot be read");
        Rule rule = ParseRule(text, name);
        if (!fromFolder.insert(rule.id).second) throw RuleError(name + ": a second rule with the id " + rule.id);
        rules[rule.id] = std::move(rule);
    }
    return rules;
}

std::vector<const Rule*> InSeverityOrder(const std::map<std::string, Rule>& rules) {
    std::vector<const Rule*> ordered;
    for (const auto& [id, rule] : rules) ordered.push_back(&rule);
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const Rule* a, const Rule* b) { return a->severity > b->severity; });
    return ordered;
}

Outcome RunRules(const sqlite::Connection& db, const std::vector<const Rule*>& rules,
                 std::chrono::milliseconds limit) {
    Outcome outcome;
    for (const Rule* rule : rules) {
        std::vector<Unchecked> unmet = Unmet(db, *rule);
        std::set<std::int64_t> skipped;
        for (const Unchecked& u : unmet) skipped.insert(u.report);
        RunOne(db, *rule, limit, skipped, outcome.findings);
        std::move(unmet.begin(), unmet.end(), std::back_inserter(outcome.unchecked));
    }
    return outcome;
}

}  // namespace rules
