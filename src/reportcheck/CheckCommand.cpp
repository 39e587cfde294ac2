// reportcheck [check] FILE...: whether each file is a report that arrived
// whole, one line per file in the order given.
#include <algorithm>

#include "format/TransitDamage.h"
#include "reader/TerminalText.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"

namespace {

int CheckFile(const NativeString& path) {
    const std::string name = report_model::ForTerminal(ToUtf8(path));
    std::string bytes;
    std::string problem;
    if (!ReadReportFile(path.c_str(), bytes, problem)) {
        Print(stdout, name + ": " + problem + "\n");
        return kSomeNotAReport;
    }
    const ReportVerdict verdict = CheckReportBytes(bytes);
    std::string line = name + ": " + DescribeReportVerdict(verdict);
    if (verdict.state != ReportState::Intact) {
        const TransitDiagnosis diagnosis = DiagnoseTransitDamage(bytes, Restore::No);
        if (!diagnosis.damage.empty()) line += "; " + diagnosis.damage;
        if (diagnosis.restorable) line += " (reportcheck repair restores it)";
    }
    Print(stdout, line + "\n");
    switch (verdict.state) {
        case ReportState::Intact: return kAllIntact;
        case ReportState::Altered: return kSomeAltered;
        case ReportState::NotAReport: break;
    }
    return kSomeNotAReport;
}

int RunCheck(const Arguments& arguments) {
    int status = kAllIntact;
    for (const NativeString& path : arguments.Operands()) status = std::max(status, CheckFile(path));
    return status;
}

}  // namespace

extern const Command kCheckCommand{
    .name = "check",
    .synopsis = "check FILE...",
    .summary = "integrity: one line per file",
    .help = "Checks that each FILE is a report saved by Orvane Diagnostics whose\n"
            "checksum still matches its text, and prints one line per file, in the\n"
            "order given:\n"
            "  FILE: intact (checksum 1a2b3c4d)\n"
            "  FILE: altered (trailer says 1a2b3c4d, body gives 0badf00d)\n"
            "  FILE: not a report (REASON)\n"
            "followed, when a transfer's damage is recognised, by \"; \" and what\n"
            "happened, and \" (reportcheck repair restores it)\" when it can be undone.\n"
            "  FILE: cannot be read (REASON)\n"
            "Only regular files of at most 512 MB are read (no report is larger); a\n"
            "pipe, a device, a folder or a larger file cannot be read, at once.\n"
            "Control characters in FILE show escaped (\\x1b, \\u0085; see README).\n"
            "Exit status: 0 when every file is intact, 1 when one is altered,\n"
            "2 when one is not a report or cannot be read.\n"
            "The checksum catches accidental damage only: whoever edits a report on\n"
            "purpose can recompute it.\n",
    .options = {},
    .minOperands = 1,
    .run = RunCheck,
};
