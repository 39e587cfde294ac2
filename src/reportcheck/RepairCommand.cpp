// reportcheck repair IN OUT: a report damaged in transit, restored when
// undoing the damage gives a body whose checksum the trailer states.
#include "format/ReportVerdict.h"
#include "format/TransitDamage.h"
#include "reader/TerminalText.h"
#include "reportcheck/Commands.h"
#include "reportcheck/LoadedReport.h"

namespace {

int RunRepair(const Arguments& arguments) {
    const NativeString& in = arguments.Operands()[0];
    const NativeString& out = arguments.Operands()[1];
    std::string bytes, problem;
    if (!ReadReportFile(in.c_str(), bytes, problem)) {
        Complain(ToUtf8(in), problem);
        return kSomeNotAReport;
    }
    const ReportVerdict verdict = CheckReportBytes(bytes);
    if (verdict.state == ReportState::Intact) {
        Complain(ToUtf8(in), DescribeReportVerdict(verdict) + ": nothing to repair, " + ToUtf8(out) + " not written");
        return kAllIntact;
    }
    const TransitDiagnosis diagnosis = DiagnoseTransitDamage(bytes);
    if (!diagnosis.restored) {
        Complain(ToUtf8(in), DescribeReportVerdict(verdict) + (diagnosis.damage.empty() ? "" : "; " + diagnosis.damage) +
                                 ": cannot be restored, " + ToUtf8(out) + " not written");
        return verdict.state == ReportState::Altered ? kSomeAltered : kSomeNotAReport;
    }
    if (!WriteFileWhole(out.c_str(), *diagnosis.restored, problem)) {
        Complain(ToUtf8(out), problem);
        return kSomeNotAReport;
    }
    Print(stdout, report_model::ForTerminal(ToUtf8(out)) + ": " +
                      DescribeReportVerdict(CheckReportBytes(*diagnosis.restored)) + ", restored from " +
                      report_model::ForTerminal(ToUtf8(in)) + " (undone: " + diagnosis.undone + ")\n");
    return kAllIntact;
}

}  // namespace

extern const Command kRepairCommand{
    .name = "repair",
    .synopsis = "repair IN OUT",
    .summary = "a report damaged in transit, restored into OUT",
    .help = "Undoes what a mail program or a file transfer did to the report IN\n"
            "(re-encoded as UTF-8, big-endian UTF-16 or a single-byte encoding; line\n"
            "breaks converted between CR LF and LF) and writes the result to OUT,\n"
            "only when its body gives the checksum its trailer states: OUT is then\n"
            "intact, and the line says what was undone. The checksum is never\n"
            "recomputed; IN is never changed; OUT is written whole or not at all.\n"
            "Exit status: 0 restored (or IN already intact: nothing written), 1 IN\n"
            "altered and not restorable, 2 IN not a report and not restorable,\n"
            "cannot be read, or OUT cannot be written.\n",
    .options = {},
    .minOperands = 2,
    .maxOperands = 2,
    .run = RunRepair,
};
