// reportcheck: the support side's tool for saved reports.
//   reportcheck FILE...                integrity: one line per file, in the
//                                      order given; the exit status is that
//                                      of the worst file
//   reportcheck show --json FILE       the whole report as one JSON document
//   reportcheck diff [--json] OLD NEW  what changed from OLD to NEW
//   reportcheck collect PATH...        one JSON line per report (JSON Lines)
//   reportcheck collect --db FILE PATH...  the report tables in SQLite
//   reportcheck findings ... PATH...   what is wrong, by the findings rules
//   reportcheck rules [--rules DIR]    the rules in force
// Output is made whole before it is written, so a failure never leaves half
// a JSON document on standard output.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "format/ReportVerdict.h"
#include "reader/ReportDiff.h"
#include "reader/ReportJson.h"
#include "reader/ReportModel.h"
#include "reportcheck/FindingsCommands.h"
#include "reportcheck/PageCommand.h"
#include "reportcheck/ReportFiles.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

using namespace reportcheck;

constexpr const char kUsage[] =
    "usage: reportcheck FILE...\n"
    "       reportcheck show --json FILE\n"
    "       reportcheck diff [--json] OLD NEW\n"
    "       reportcheck collect PATH...\n"
    "       reportcheck collect --db FILE PATH...\n"
    "       reportcheck findings [--json] [--rules DIR] [--min-severity LEVEL] PATH...\n"
    "       reportcheck rules [--rules DIR]\n"
    "       reportcheck page [--against OLD] [--lang en|fr] [-o FILE] REPORT|FOLDER|DATABASE\n"
    "(reportcheck COMMAND --help tells more of each command.)\n"
    "\n"
    "Checks that each FILE is a report saved by Orvane Diagnostics whose\n"
    "checksum still matches its text, and prints one line per file:\n"
    "  FILE: intact (checksum 1a2b3c4d)\n"
    "  FILE: altered (trailer says 1a2b3c4d, body gives 0badf00d)\n"
    "  FILE: not a report (REASON)\n"
    "  FILE: cannot be read (REASON)\n"
    "Exit status: 0 when every file is intact, 1 when one is altered,\n"
    "2 when one is not a report or cannot be read, or when no FILE is given.\n"
    "The checksum catches accidental damage only: whoever edits a report on\n"
    "purpose can recompute it.\n";

int CheckFile(const NativeChar* path) {
    const std::string name = ToUtf8(path);
    std::string bytes;
    int error = 0;
    if (!ReadWholeFile(path, bytes, error)) {
        Print(stdout, name + ": cannot be read (" + std::strerror(error) + ")\n");
        return kSomeNotAReport;
    }
    const ReportVerdict verdict = CheckReportBytes(bytes);
    Print(stdout, name + ": " + DescribeReportVerdict(verdict) + "\n");
    switch (verdict.state) {
        case ReportState::Intact: return kAllIntact;
        case ReportState::Altered: return kSomeAltered;
        case ReportState::NotAReport: break;
    }
    return kSomeNotAReport;
}

// --- show, diff, collect ------------------------------------------------------

constexpr const char kShowUsage[] =
    "usage: reportcheck show --json FILE\n"
    "Prints the whole report FILE as one JSON document: its integrity (the\n"
    "checksum verdict and the line breaks found), every section's values as\n"
    "typed fields, and, under \"unrecognised\", every line the reader did not\n"
    "recognise where it stands, with its line number. Its form is described in\n"
    "docs/report-model.schema.json (\"schemaVersion\").\n"
    "Exit status: 0 intact, 1 altered (the JSON says so), 2 not a report or\n"
    "cannot be read (a message on standard error, nothing on standard output).\n";

constexpr const char kDiffUsage[] =
    "usage: reportcheck diff [--json] OLD NEW\n"
    "Prints what changed from the report OLD to the report NEW, grouped by\n"
    "section, one line per change, old value -> new value. Directory entries\n"
    "are matched by directory and name, adapters by adapter name, registry\n"
    "values by name, single values by their label. The header's time is not\n"
    "a difference; CR LF and LF reports compare alike. When either report is\n"
    "altered, the verdicts come first. --json gives the same as JSON.\n"
    "Exit status: 0 no difference (nothing printed), 1 differences, 2 trouble\n"
    "(a file that is not a report or cannot be read).\n";

constexpr const char kCollectUsage[] =
    "usage: reportcheck collect PATH...\n"
    "       reportcheck collect --db FILE PATH...   (see collect --db --help)\n"
    "Prints one JSON object per line (JSON Lines) for every file named, and\n"
    "for every file under a folder named (searched recursively, in name\n"
    "order): {\"path\", \"verdict\", \"reason\", \"report\"}, where verdict is\n"
    "intact, altered, not a report or unreadable, and report the document\n"
    "that show --json prints (null unless intact or altered). A bad file gets\n"
    "its line all the same, and a message on standard error.\n"
    "Exit status: 0 all intact, 1 one altered, 2 one not a report or\n"
    "unreadable, or no PATH.\n";

int Show(int argc, NativeChar* argv[]) {
    if (argc == 3 && IsHelpOption(ToUtf8(argv[2]))) {
        Print(stdout, kShowUsage);
        return kAllIntact;
    }
    if (argc != 4 || ToUtf8(argv[2]) != "--json") {
        Print(stderr, kShowUsage);
        return kSomeNotAReport;
    }
    const Loaded loaded = Load(argv[3]);
    if (loaded.state != LoadState::Report) {
        Complain(ToUtf8(argv[3]), loaded.problem);
        return kSomeNotAReport;
    }
    const std::string text =
        report_model::DumpJson(report_model::ReportToJson(loaded.report, loaded.verdict), 2) + "\n";
    BinaryOutput();
    Print(stdout, text);
    return StatusOf(loaded);
}

int Diff(int argc, NativeChar* argv[]) {
    if (argc == 3 && IsHelpOption(ToUtf8(argv[2]))) {
        Print(stdout, kDiffUsage);
        return kAllIntact;
    }
    const bool json = argc == 5 && ToUtf8(argv[2]) == "--json";
    if (argc != 4 && !json) {
        Print(stderr, kDiffUsage);
        return kSomeNotAReport;
    }
    const NativeChar* oldPath = argv[argc - 2];
    const NativeChar* newPath = argv[argc - 1];
    const Loaded before = Load(oldPath);
    const Loaded after = Load(newPath);
    bool trouble = false;
    for (const auto& [loaded, path] : {std::pair{&before, oldPath}, std::pair{&after, newPath}}) {
        if (loaded->state == LoadState::Report) continue;
        Complain(ToUtf8(path), loaded->problem);
        trouble = true;
    }
    if (trouble) return kSomeNotAReport;
    const report_model::ReportSide oldSide{&before.report, before.verdict};
    const report_model::ReportSide newSide{&after.report, after.verdict};
    const auto changes = report_model::DiffReports(before.report, after.report);
    const bool differ = !changes.empty() || before.verdict.state != after.verdict.state;
    std::string text;
    if (json)
        text = report_model::DumpJson(report_model::DiffToJson(oldSide, newSide, changes), 2) + "\n";
    else if (differ || before.verdict.state != ReportState::Intact)
        text = report_model::FormatDiffText(oldSide, newSide, changes);
    BinaryOutput();
    Print(stdout, text);
    return differ ? 1 : 0;
}

// One line of collect's output: {"path", "verdict", "reason", "report"},
// written straight as text, in a buffer kept from line to line (a report's
// line is some 20 kB); a tree of the JSON first took most of collect's time.
const std::string& CollectLine(const std::string& name, const char* verdict, const std::string* reason,
                               const Loaded* loaded) {
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

int CollectFile(const std::filesystem::path& path) {
    const std::string name = PathText(path);
    const Loaded loaded = Load(path.c_str());
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

int CollectProblem(const std::filesystem::path& path, const std::string& problem) {
    Complain(PathText(path), problem);
    Print(stdout, CollectLine(PathText(path), "unreadable", &problem, nullptr));
    return kSomeNotAReport;
}

int CollectPath(const std::filesystem::path& path) {
    return ForEachFile(path, CollectFile, CollectProblem);
}

int Collect(int argc, NativeChar* argv[]) {
    if (argc == 3 && IsHelpOption(ToUtf8(argv[2]))) {
        Print(stdout, kCollectUsage);
        return kAllIntact;
    }
    if (argc < 3) {
        Print(stderr, kCollectUsage);
        return kSomeNotAReport;
    }
    if (ToUtf8(argv[2]) == "--db") return CollectDatabase(argc, argv);
    BinaryOutput();
    // Room for a whole line, so that each leaves in one write when flushed
    // (glibc keeps its own size when not given the buffer).
    static char lineRoom[64 * 1024];
    std::setvbuf(stdout, lineRoom, _IOFBF, sizeof lineRoom);
    int status = kAllIntact;
    for (int i = 2; i < argc; ++i) status = std::max(status, CollectPath(std::filesystem::path(argv[i])));
    return status;
}

int Dispatch(int argc, NativeChar* argv[]);

int Run(int argc, NativeChar* argv[]) {
    try {
        return Dispatch(argc, argv);
    } catch (const std::exception& failure) {
        // Out of memory on a huge file, mostly: say so, and print nothing more.
        Print(stderr, std::string("reportcheck: ") + failure.what() + "\n");
        return kSomeNotAReport;
    } catch (...) {
        // Nothing of ours throws anything else; should a library do so, the
        // user still gets a word and the documented status, not an abort.
        Print(stderr, "reportcheck: unexpected failure\n");
        return kSomeNotAReport;
    }
}

int Dispatch(int argc, NativeChar* argv[]) {
    if (argc < 2) {
        Print(stderr, kUsage);
        return kSomeNotAReport;
    }
    if (argc == 2 && IsHelpOption(ToUtf8(argv[1]))) {
        Print(stdout, kUsage);
        return kAllIntact;
    }
    const std::string command = ToUtf8(argv[1]);
    if (command == "show") return Show(argc, argv);
    if (command == "diff") return Diff(argc, argv);
    if (command == "collect") return Collect(argc, argv);
    if (command == "findings") return Findings(argc, argv);
    if (command == "rules") return ListRules(argc, argv);
    if (command == "page") return Page(argc, argv);
    int status = kAllIntact;
    for (int i = 1; i < argc; ++i) status = std::max(status, CheckFile(argv[i]));
    return status;
}

}  // namespace

#if defined(_WIN32)
// wmain: names arrive as UTF-16 whatever the code page, so any file opens.
int wmain(int argc, wchar_t* argv[]) {
    return Run(argc, argv);
}

// The process's entry point, ahead of the runtime library's start-up: every
// library loaded by name from here on comes from the system directory, never
// from beside the program or from the current directory. The static imports
// are Windows' known DLLs only (kernel32, msvcrt).
extern "C" int mainCRTStartup();   // MinGW-w64's start-up for a console program
extern "C" int wmainCRTStartup();  // the Visual C++ runtime's
extern "C" int ReportCheckStartup() {
    ::SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
#if defined(__MINGW32__)
    return mainCRTStartup();
#else
    return wmainCRTStartup();
#endif
}
#else
int main(int argc, char* argv[]) {
    return Run(argc, argv);
}
#endif
