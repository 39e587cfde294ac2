// reportcheck show --json FILE: the whole report as one JSON document.
#include "reader/JsonIndent.h"
#include "reader/ReportJson.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"

namespace {

constexpr const Option* kShowOptions[] = {&kJsonOption};

int RunShow(const Arguments& arguments) {
    // JSON is the only form show prints so far; asking for it keeps the
    // command line open to others.
    if (!arguments.Has(kJsonOption)) return UsageError(kShowCommand, "show: --json is needed");
    const NativeString& path = arguments.Operands().front();
    LoadedReport loaded = LoadReport(path.c_str(), KeepBody::No);
    if (loaded.state != LoadState::Report) {
        Complain(ToUtf8(path), loaded.problem);
        return kSomeNotAReport;
    }
    // Made whole before anything is written: a failure leaves no half
    // document. The text on one line, the model freed, then laid out as it
    // is written: a large report is held as its JSON text and little more.
    std::string compact;
    // Room enough at once (the JSON is some 1.6 times the file): a string
    // that doubles as it grows holds both buffers when it moves, and pages
    // reserved but never written cost no memory.
    compact.reserve(loaded.fileSize * 3 + 64 * 1024);
    report_model::JsonWriter json(compact);
    report_model::WriteReportJson(json, loaded.report, loaded.verdict, loaded.modified);
    compact += '\n';
    const int status = StatusOf(loaded);
    loaded = LoadedReport();
    BinaryOutput();
    report_model::IndentJson(compact, [](std::string_view piece) { Print(stdout, piece); });
    return status;
}

}  // namespace

extern const Command kShowCommand{
    .name = "show",
    .synopsis = "show --json FILE",
    .summary = "the whole report as one JSON document",
    .help = "Prints the whole report FILE as one JSON document: its integrity (the\n"
            "checksum verdict and the line breaks found), every section's values as\n"
            "typed fields, the header's date and time as ISO 8601 and whether that\n"
            "reading is certain (day and month settled by the report's own file times\n"
            "where they read both ways), and, under \"unrecognised\", every line the\n"
            "reader did not recognise where it stands, with its line number. Its form\n"
            "is described in docs/report-model.schema.json (\"schemaVersion\").\n"
            "Exit status: 0 intact, 1 altered (the JSON says so), 2 not a report or\n"
            "cannot be read (a message on standard error, nothing on standard output).\n",
    .options = kShowOptions,
    .minOperands = 1,
    .maxOperands = 1,
    .run = RunShow,
};
