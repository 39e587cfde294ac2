// reportcheck collect PATH...: one JSON line per report file (JSON Lines),
// folders searched recursively.
#include <algorithm>
#include <filesystem>

#include "reader/ReportJson.h"
#include "reportcheck/Commands.h"
#include "reportcheck/FileWalk.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"
#include "reportcheck/ReportDatabase.h"

namespace {

namespace fs = std::filesystem;

// One line of collect's output: {"path", "verdict", "reason", "report"},
// written straight as text, in a buffer kept from line to line (a report's
// line is some 20 kB); a tree of the JSON first took most of collect's time.
const std::string& CollectLine(const std::string& name, const char* verdict, const std::string* reason,
                               const LoadedReport* loaded) {
    static std::string line;
    line.clear();
    report_model::JsonWriter json(line);
    json.Open('{');
    json.Key("path");
    json.String(name);
    json.Key("verdict");
    json.String(verdict);
    json.Key("reason");
    if (reason)
        json.String(*reason);
    else
        json.Null();
    json.Key("report");
    if (loaded)
        report_model::WriteReportJson(json, loaded->report, loaded->verdict);
    else
        json.Null();
    json.Close('}');
    line += '\n';
    return line;
}

int CollectFile(const fs::path& path) {
    const std::string name = PathText(path);
    const LoadedReport loaded = LoadReport(path.c_str());
    switch (loaded.state) {
        case LoadState::Report:
            Print(stdout, CollectLine(name, loaded.verdict.state == ReportState::Intact ? "intact" : "altered",
                                      nullptr, &loaded));
            break;
        case LoadState::NotAReport:
        case LoadState::Unreadable:
            Complain(name, loaded.problem);
            Print(stdout, CollectLine(name, loaded.state == LoadState::NotAReport ? "not a report" : "unreadable",
                                      &loaded.problem, nullptr));
            break;
    }
    std::fflush(stdout);
    return StatusOf(loaded);
}

int CollectProblem(const fs::path& path, const std::string& problem) {
    Complain(PathText(path), problem);
    Print(stdout, CollectLine(PathText(path), "unreadable", &problem, nullptr));
    return kSomeNotAReport;
}

int RunCollect(const Arguments& arguments) {
    if (arguments.Value(kDbOption)) return reportcheck::CollectDatabase(arguments);
    if (arguments.Has(kRulesOption) || arguments.Has(kTimeLimitOption))
        return UsageError(kCollectCommand, "--rules and --time-limit go with --db");
    BinaryOutput();
    // Room for a whole line, so that each leaves in one write when flushed
    // (glibc keeps its own size when not given the buffer).
    static char lineRoom[64 * 1024];
    std::setvbuf(stdout, lineRoom, _IOFBF, sizeof lineRoom);
    int status = kAllIntact;
    for (const NativeString& path : arguments.Operands())
        status = std::max(status, ForEachFile(fs::path(path), CollectFile, CollectProblem));
    return status;
}

constexpr const Option* kCollectOptions[] = {&kDbOption, &kRulesOption, &kTimeLimitOption};

}  // namespace

extern const Command kCollectCommand{
    .name = "collect",
    .synopsis = "collect [--db FILE] PATH...",
    .summary = "one JSON line per report (folders searched recursively)",
    .help = "Prints one JSON object per line (JSON Lines) for every file named, and\n"
            "for every file under a folder named (searched recursively, in name\n"
            "order): {\"path\", \"verdict\", \"reason\", \"report\"}, where verdict is\n"
            "intact, altered, not a report or unreadable, and report the document\n"
            "that show --json prints (null unless intact or altered). A bad file gets\n"
            "its line all the same, and a message on standard error.\n"
            "With --db FILE: the report tables and the findings of every report\n"
            "instead, into the SQLite database FILE (created when missing; see\n"
            "docs/report-tables.md). Run again over the same PATHs, it reads only new\n"
            "and changed reports (by size and time) and drops those that are gone.\n"
            "Nothing is written when FILE is not a database of ours or a rule fails\n"
            "(status 2).\n"
            "Exit status: 0 all intact, 1 one altered, 2 one not a report or\n"
            "unreadable.\n",
    .options = kCollectOptions,
    .minOperands = 1,
    .run = RunCollect,
};
