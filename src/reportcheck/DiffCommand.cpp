// reportcheck diff [--json] OLD NEW: what changed from one report to another.
#include <memory>

#include "reader/ReportDiff.h"
#include "reader/ReportJson.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"
#include "reportcheck/Options.h"

namespace {

constexpr const Option* kDiffOptions[] = {&kJsonOption, &kIgnoreOption};

int RunDiff(const Arguments& arguments) {
    report_model::IgnoredKinds ignored;
    if (const NativeString* kinds = arguments.Value(kIgnoreOption)) {
        std::string problem;
        const auto parsed = report_model::ParseIgnoredKinds(ToUtf8(*kinds), problem);
        if (!parsed) return UsageError(kDiffCommand, problem);
        ignored = *parsed;
    }
    const NativeString& oldPath = arguments.Operands()[0];
    const NativeString& newPath = arguments.Operands()[1];
    const LoadedReport before = LoadReport(oldPath.c_str(), KeepBody::No);
    const LoadedReport after = LoadReport(newPath.c_str(), KeepBody::No);
    bool trouble = false;
    for (const auto& [loaded, path] : {std::pair{&before, &oldPath}, std::pair{&after, &newPath}}) {
        if (loaded->state == LoadState::Report) continue;
        Complain(ToUtf8(*path), loaded->problem);
        trouble = true;
    }
    if (trouble) return kSomeNotAReport;
    const report_model::ReportSide oldSide{&before.report, before.verdict};
    const report_model::ReportSide newSide{&after.report, after.verdict};
    // The changes written as they are found: a comparison in which every
    // entry of a large report changed would otherwise hold them all, and
    // all its output.
    BinaryOutput();
    const auto write = [](std::string_view text) { Print(stdout, text); };
    std::unique_ptr<report_model::DiffWriter> writer;
    if (arguments.Has(kJsonOption))
        writer = std::make_unique<report_model::DiffJsonWriter>(oldSide, newSide, write);
    else
        writer = std::make_unique<report_model::DiffTextWriter>(oldSide, newSide, write);
    std::size_t told = 0;
    report_model::ForEachChange(before.report, after.report, [&](const report_model::Change& c) {
        if (report_model::IsIgnored(c, ignored)) return;
        ++told;
        writer->Add(c);
    });
    writer->Finish();
    const bool differ = told > 0 || before.verdict.state != after.verdict.state;
    return differ ? kSomeAltered : kAllIntact;
}

}  // namespace

extern const Command kDiffCommand{
    .name = "diff",
    .synopsis = "diff [--json] [--ignore KINDS] OLD NEW",
    .summary = "what changed from OLD to NEW",
    .help = "Prints what changed from the report OLD to the report NEW, grouped by\n"
            "section, one line per change, old value -> new value. Directory entries\n"
            "are matched by directory and name, adapters by adapter name, registry\n"
            "values by name, single values by their label. The header's time is not\n"
            "a difference; CR LF and LF reports compare alike. When either report is\n"
            "altered, the verdicts come first; when either has lines the reader did\n"
            "not recognise, they are counted and numbered next. --ignore leaves out\n"
            "kinds of change (--ignore times,free-space). --json gives the same as\n"
            "JSON, a document with no changes when there is no difference.\n"
            "Exit status: 0 no difference (text: nothing printed), 1 differences, 2 trouble\n"
            "(a file that is not a report or cannot be read).\n",
    .options = kDiffOptions,
    .minOperands = 2,
    .maxOperands = 2,
    .run = RunDiff,
};
