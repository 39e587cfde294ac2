// reportcheck collect PATH...: one JSON line per report file (JSON Lines),
// folders searched recursively.
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "reader/ReportJson.h"
#include "reportcheck/Commands.h"
#include "reportcheck/FileWalk.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"
#include "reportcheck/ReportDatabase.h"

namespace {

namespace fs = std::filesystem;

struct LineFacts {
    const char* verdict;
    const std::string* reason = nullptr;       // why it is not a report, or cannot be read
    const std::string* copyOf = nullptr;       // the path of an earlier line with the same report
    const LoadedReport* loaded = nullptr;      // the report, when it is one
};

// One line of collect's output: {"path", "pathBytes", "verdict", "reason",
// "copyOf", "report"}, written straight as text, in a buffer kept from line
// to line (a report's line is some 20 kB); a tree of the JSON first took
// most of collect's time.
const std::string& CollectLine(const fs::path& path, const LineFacts& facts) {
    static std::string line;
    line.clear();
    report_model::JsonWriter json(line);
    const auto stringOrNull = [&](const std::string* text) { text ? json.String(*text) : json.Null(); };
    json.Open('{');
    json.Key("path");
    json.String(PathText(path));
    json.Key("pathBytes");
    const std::optional<std::string> bytes = PathBytesUnlessText(path);
    stringOrNull(bytes ? &*bytes : nullptr);
    json.Key("verdict");
    json.String(facts.verdict);
    json.Key("reason");
    stringOrNull(facts.reason);
    json.Key("copyOf");
    stringOrNull(facts.copyOf);
    json.Key("report");
    if (facts.loaded)
        report_model::WriteReportJson(json, facts.loaded->report, facts.loaded->verdict, facts.loaded->transit);
    else
        json.Null();
    json.Close('}');
    line += '\n';
    return line;
}

// Copies of one report (the same checksum and the same body, whatever the
// file's name or time): the first path each was read at.
class CopyFinder {
public:
    const std::string* EarlierCopy(const LoadedReport& loaded, const fs::path& path) {
        const Key key{loaded.verdict.stored, loaded.verdict.computed, loaded.body.size(),
                      std::hash<std::u16string_view>()(loaded.body)};
        const auto [at, added] = first_.try_emplace(key, PathText(path));
        return added ? nullptr : &at->second;
    }

private:
    using Key = std::tuple<std::uint32_t, std::uint32_t, std::size_t, std::size_t>;
    std::map<Key, std::string> first_;
};

int CollectFile(CopyFinder& copies, const fs::path& path) {
    const LoadedReport loaded = LoadReport(path.c_str(), KeepBody::Yes, Diagnose::Yes);
    switch (loaded.state) {
        case LoadState::Report:
            Print(stdout,
                  CollectLine(path, {.verdict = loaded.verdict.state == ReportState::Intact ? "intact" : "altered",
                                     .copyOf = copies.EarlierCopy(loaded, path),
                                     .loaded = &loaded}));
            break;
        case LoadState::NotAReport:
        case LoadState::Unreadable:
            Complain(PathText(path), loaded.problem);
            Print(stdout, CollectLine(path, {.verdict = loaded.state == LoadState::NotAReport ? "not a report"
                                                                                              : "unreadable",
                                             .reason = &loaded.problem}));
            break;
    }
    FlushOutput();
    return StatusOf(loaded);
}

int CollectProblem(const fs::path& path, const std::string& problem) {
    Complain(PathText(path), problem);
    Print(stdout, CollectLine(path, {.verdict = "unreadable", .reason = &problem}));
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
    std::vector<fs::path> roots;
    for (const NativeString& path : arguments.Operands()) roots.emplace_back(path);
    CopyFinder copies;
    return ForEachFile(roots, {.onFile = [&](const fs::path& path) { return CollectFile(copies, path); },
                               .onProblem = CollectProblem,
                               .onSkip = {}});
}

constexpr const Option* kCollectOptions[] = {&kDbOption, &kRulesOption, &kTimeLimitOption};

}  // namespace

extern const Command kCollectCommand{
    .name = "collect",
    .synopsis = "collect [--db FILE] PATH...",
    .summary = "one JSON line per report (folders searched recursively)",
    .help = "Prints one JSON object per line (JSON Lines) for every file named, and\n"
            "for every file under a folder named (searched recursively, in name\n"
            "order): {\"path\", \"pathBytes\", \"verdict\", \"reason\", \"copyOf\",\n"
            "\"report\"}, where verdict is intact, altered, not a report or unreadable,\n"
            "copyOf the path of an earlier line with the same report (checksum and\n"
            "body), pathBytes the name's bytes in hex when it is not valid text, and\n"
            "report the document that show --json prints (null unless intact or\n"
            "altered). A bad file gets its line all the same, and a message on\n"
            "standard error. Links to folders are not followed, nothing outside the\n"
            "PATHs is read, and a file is read once however the PATHs overlap; what\n"
            "is skipped is said on standard error. Files over 512 MB, pipes and\n"
            "devices are unreadable.\n"
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
