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
    const LoadedReport loaded = LoadReport(path.c_str(), KeepBody::No, Diagnose::Yes);
    if (loaded.state != LoadState::Report) {
        Complain(ToUtf8(path), loaded.problem);
        return kSomeNotAReport;
    }
    // Written as it is made, laid out on the way: a large report is held as
    // its model and little more. Nothing can fail once the report is read
    // but the output itself.
    BinaryOutput();
    report_model::JsonIndenter indented([](std::string_view piece) { Print(stdout, piece); });
    std::string compact;
    report_model::JsonWriter json(compact, [&](std::string_view made) { indented.Add(made); });
    report_model::WriteReportJson(json, loaded.report, loaded.verdict, loaded.modified, loaded.transit);
    compact += '\n';
    indented.Add(compact);
    indented.Finish();
    return StatusOf(loaded);
}

}  // namespace

extern const Command kShowCommand{
    .name = "show",
    .synopsis = "show --json FILE",
    .summary = "the whole report as one JSON document",
    .help = "Prints the whole report FILE as one JSON document: its integrity (the\n"
            "checksum verdict, the line breaks found, and what a transfer did to an\n"
            "altered file when that is known), every section's values as typed\n"
            "fields, the header's date and time as ISO 8601 and whether that\n"
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
