// reportcheck collect PATH...: one JSON line per report file (JSON Lines),
// folders searched recursively.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "reader/ReportJson.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"

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

// A folder's files in name order, then its folders', one level at a time;
// only one folder's names are held at once.
int CollectPath(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_regular_file(status)) return CollectFile(path);
    if (!fs::is_directory(status)) {
        // A pipe or a device would block the reading; a broken link has nothing to read.
        return CollectProblem(path, fs::exists(status) ? "cannot be read (not a regular file)" : CannotBeRead(ENOENT));
    }
    std::vector<fs::path> names;
    fs::directory_iterator it(path, error), end;
    if (error) return CollectProblem(path, "cannot be read (" + error.message() + ")");
    for (; it != end; it.increment(error)) {
        if (error) break;
        names.push_back(it->path());
    }
    if (error) return CollectProblem(path, "cannot be read (" + error.message() + ")");
    std::sort(names.begin(), names.end());
    int worst = kAllIntact;
    for (const fs::path& name : names) worst = std::max(worst, CollectPath(name));
    return worst;
}

int RunCollect(const Arguments& arguments) {
    BinaryOutput();
    // Room for a whole line, so that each leaves in one write when flushed
    // (glibc keeps its own size when not given the buffer).
    static char lineRoom[64 * 1024];
    std::setvbuf(stdout, lineRoom, _IOFBF, sizeof lineRoom);
    int status = kAllIntact;
    for (const NativeString& path : arguments.Operands()) status = std::max(status, CollectPath(fs::path(path)));
    return status;
}

}  // namespace

extern const Command kCollectCommand{
    .name = "collect",
    .synopsis = "collect PATH...",
    .summary = "one JSON line per report (folders searched recursively)",
    .help = "Prints one JSON object per line (JSON Lines) for every file named, and\n"
            "for every file under a folder named (searched recursively, in name\n"
            "order): {\"path\", \"verdict\", \"reason\", \"report\"}, where verdict is\n"
            "intact, altered, not a report or unreadable, and report the document\n"
            "that show --json prints (null unless intact or altered). A bad file gets\n"
            "its line all the same, and a message on standard error.\n"
            "Exit status: 0 all intact, 1 one altered, 2 one not a report or\n"
            "unreadable.\n",
    .options = {},
    .minOperands = 1,
    .run = RunCollect,
};
