// reportcheck page: one self-contained HTML file for a report, a comparison
// of two reports, or a folder of reports (a fleet). The page is made whole
// in memory and then written at once, to standard output or to a file that
// appears only when complete.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <locale.h>
#include <optional>
#include <vector>

#include "lang/Language.h"
#include "reader/PageData.h"
#include "reader/ReportDiff.h"
#include "reader/ReportPage.h"
#include "reader/ReportTables.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"
#include "reportcheck/ReportDatabase.h"


namespace reportcheck {

namespace {

constexpr Option kAgainstOption{"--against", "OLD", "mark the changes from the report OLD"};
constexpr Option kLangOption{"--lang", "en|fr", "the page's language (else the user's locale)"};
constexpr Option kOutputOption{"-o", "FILE", "write FILE, whole or not at all (else standard output)"};
constexpr const Option* kPageOptions[] = {&kAgainstOption, &kLangOption, &kOutputOption, &kRulesOption,
                                          &kTimeLimitOption};

struct PageOptions {
    const NativeChar* against = nullptr;
    const NativeChar* output = nullptr;
    const NativeChar* path = nullptr;
    std::string lang;  // "en" or "fr"
    RuleOptions rules;
};

// The language of the user's locale as the program chooses its own: French
// when the locale is French. Windows names it ("French_France.1252"); on
// Linux the environment does ("fr_FR.UTF-8").
bool UserLocaleIsFrench() {
#if defined(_WIN32)
    const char* current = ::setlocale(LC_ALL, nullptr);
    const std::string saved = current ? current : "C";
    const char* user = ::setlocale(LC_ALL, "");
    const std::wstring language = LanguagePartOfLocaleName(user ? user : "");
    ::setlocale(LC_ALL, saved.c_str());
    return !IsEnglishChoice(language);
#else
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value && *value) return std::strncmp(value, "fr", 2) == 0;
    }
    return false;
#endif
}

// Writes the page whole: to standard output, or to a file next to FILE
// that takes FILE's name only once it holds every byte.
bool WritePage(const std::string& page, const NativeChar* output) {
    if (!output) {
        BinaryOutput();
        Print(stdout, page);
        FlushOutput();  // a failure throws, and main says so
        return true;
    }
    std::string problem;
    if (WriteFileWhole(output, page, problem)) return true;
    Complain(ToUtf8(output), problem);
    return false;
}

// What the rules find in the reports of `db`. The rules are read once a run
// and kept: the findings point at them.
rules::Outcome RunRulesOn(const sqlite::Connection& db, const RuleOptions& options) {
    static const std::map<std::string, rules::Rule> inForce = rules::RulesInForce(options.rulesFolder);
    return rules::RunRules(db, rules::InSeverityOrder(inForce), options.timeLimit);
}

// One report's findings, and the rules that could not check it, read into a
// database of the moment as the findings command reads files.
void AddFindings(const NativeChar* path, const RuleOptions& options, report_page::PageReport& page) {
    const sqlite::Connection db("", sqlite::OpenMode::Memory);
    report_tables::CreateTables(db);
    AddReportFiles(db, {std::filesystem::path(path)}, false);
    const rules::Outcome outcome = RunRulesOn(db, options);
    for (const rules::Finding& f : outcome.findings) page.findings.push_back(report_page::PageFinding(f));
    for (const rules::Unchecked& u : outcome.unchecked) page.notChecked.push_back(report_page::PageNotChecked(u));
}

report_page::PageReport PageOf(const NativeChar* path, const LoadedReport& loaded) {
    report_page::PageReport page;
    page.file = ToUtf8(path);
    page.verdict = loaded.verdict;
    page.body = loaded.body;
    page.report = &loaded.report;
    return page;
}

// A report that will not do says so, as show and diff say it.
bool Usable(const NativeChar* path, const LoadedReport& loaded) {
    if (loaded.state == LoadState::Report) return true;
    Complain(ToUtf8(path), loaded.problem);
    return false;
}

int ReportPage(const PageOptions& options, const std::string& lang) {
    const LoadedReport loaded = LoadReport(options.path);
    std::optional<LoadedReport> old;
    if (options.against) old = LoadReport(options.against);
    const bool usable = Usable(options.path, loaded);
    if (!(old ? Usable(options.against, *old) : true) || !usable) return kSomeNotAReport;
    report_page::PageReport page = PageOf(options.path, loaded);
    AddFindings(options.path, options.rules, page);
    std::string json;
    if (old) {
        const auto changes = report_model::DiffReports(old->report, loaded.report);
        json = report_page::ComparisonPageJson(PageOf(options.against, *old), page, changes, lang);
    } else {
        json = report_page::ReportPageJson(page, lang);
    }
    if (!WritePage(report_page::BuildPageHtml(json, lang), options.output)) return kSomeNotAReport;
    return std::max(StatusOf(loaded), old ? StatusOf(*old) : kAllIntact);
}

// The worst verdict of a database's files, as collect would have said it.
int StatusOfFleet(const report_page::FleetSummary& fleet) {
    int status = kAllIntact;
    for (const auto& row : fleet.rows)
        status = std::max<int>(status, row.verdict == "intact" ? kAllIntact : row.verdict == "altered" ? kSomeAltered
                                                                                                 : kSomeNotAReport);
    return status;
}

int FleetPage(const PageOptions& options, const std::string& lang, bool database) {
    const std::string source = ToUtf8(options.path);
    std::optional<sqlite::Connection> memory;
    OpenedDatabase opened;
    if (database) {
        opened = OpenDatabase(source, sqlite::OpenMode::ReadOnly);
        if (!opened.db) {
            Complain(source, opened.problem);
            return kSomeNotAReport;
        }
    } else {
        memory.emplace("", sqlite::OpenMode::Memory);
        report_tables::CreateTables(*memory);
        AddReportFiles(*memory, {std::filesystem::path(options.path)}, false);
    }
    const sqlite::Connection& db = database ? *opened.db : *memory;
    const report_page::FleetSummary fleet = report_page::SummariseFleet(db, RunRulesOn(db, options.rules));
    const std::string json = report_page::FleetPageJson(source, fleet, lang);
    if (!WritePage(report_page::BuildPageHtml(json, lang), options.output)) return kSomeNotAReport;
    return StatusOfFleet(fleet);
}

int RunPage(const Arguments& arguments) {
    PageOptions options;
    if (auto problem = ReadRuleOptions(arguments, options.rules)) return UsageError(kPageCommand, *problem);
    options.path = arguments.Operands().front().c_str();
    if (const NativeString* against = arguments.Value(kAgainstOption)) options.against = against->c_str();
    if (const NativeString* output = arguments.Value(kOutputOption)) options.output = output->c_str();
    if (const NativeString* lang = arguments.Value(kLangOption)) {
        options.lang = ToUtf8(*lang);
        if (options.lang != "en" && options.lang != "fr") return UsageError(kPageCommand, "--lang takes en or fr");
    } else {
        options.lang = UserLocaleIsFrench() ? "fr" : "en";
    }
    const std::filesystem::path path(options.path);
    std::error_code error;
    const bool folder = std::filesystem::is_directory(path, error);
    const bool database = !folder && LooksLikeDatabase(path);
    if ((folder || database) && options.against)
        return UsageError(kPageCommand, "--against compares two reports, not a folder or a database");
    try {
        return folder || database ? FleetPage(options, options.lang, database) : ReportPage(options, options.lang);
    } catch (const rules::RuleError& failure) {
        Warn(failure.what());
    } catch (const sqlite::Error& failure) {
        Warn(failure.what());
    }
    return kSomeNotAReport;
}

}  // namespace
}  // namespace reportcheck

extern const Command kPageCommand{
    .name = "page",
    .synopsis = "page [--against OLD] [--lang en|fr] [-o FILE] REPORT|FOLDER|DATABASE",
    .summary = "one HTML page to look at: a report, a comparison or a fleet",
    .help = "Writes one HTML page that any current browser opens from disk, with no\n"
            "network: for a REPORT, its integrity, its findings and the report itself,\n"
            "section by section, its directories as tables that sort and filter; with\n"
            "--against OLD, each change from OLD marked where it stands; for a FOLDER\n"
            "(searched recursively, as collect does) or a DATABASE made by collect\n"
            "--db, one row per report, the findings across them and the versions of\n"
            "each file of the suite. The page runs no code but its own and shows\n"
            "every text of a report as text. Its language is --lang, else French when\n"
            "the user's locale is French, English otherwise.\n"
            "Exit status: 0 every report intact, 1 one altered (the page says so at\n"
            "the top), 2 a report that is not one or cannot be read (nothing written;\n"
            "in a FOLDER such a file gets its row and the page is written), a bad rule\n"
            "or database.\n",
    .options = reportcheck::kPageOptions,
    .minOperands = 1,
    .maxOperands = 1,
    .run = reportcheck::RunPage,
};
