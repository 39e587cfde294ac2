#include "reportcheck/LoadedReport.h"

#include <cstring>
#include <functional>

#include "format/TransitDamage.h"
#include "reader/TerminalText.h"

namespace {

std::optional<report_model::TransitDamage> TransitDamageOf(std::string_view bytes) {
    TransitDiagnosis diagnosis = DiagnoseTransitDamage(bytes, Restore::No);
    if (diagnosis.damage.empty()) return std::nullopt;
    return report_model::TransitDamage{std::move(diagnosis.damage), diagnosis.restorable};
}

}  // namespace

LoadedReport LoadReport(const NativeChar* path, KeepBody keepBody, Diagnose diagnose) {
    LoadedReport loaded;
    std::string bytes;
    if (!ReadReportFile(path, bytes, loaded.problem, &loaded.modified)) return loaded;
    loaded.fileSize = bytes.size();
    loaded.verdict = CheckReportBytes(bytes);
    if (loaded.verdict.state == ReportState::NotAReport) {
        loaded.state = LoadState::NotAReport;
        loaded.problem = DescribeReportVerdict(loaded.verdict);
        return loaded;
    }
    loaded.state = LoadState::Report;
    if (diagnose == Diagnose::Yes && loaded.verdict.state == ReportState::Altered)
        loaded.transit = TransitDamageOf(bytes);
    // The file's bytes are freed before the reader starts: a large report is
    // held as bytes and then as text (UTF-8 without a copy of the body, or
    // UTF-16 when the body is kept), never both with the model.
    if (keepBody == KeepBody::Digest) loaded.bodyDigest = std::hash<std::string_view>()(ReportBodyBytesOf(bytes));
    if (keepBody != KeepBody::Yes) {
        std::string text = report_model::Utf8FromUtf16LE(ReportBodyBytesOf(bytes));
        std::string().swap(bytes);
        if (keepBody == KeepBody::Utf8) loaded.bodyUtf8 = text;
        loaded.report = report_model::ParseReportUtf8(std::move(text));
    } else {
        loaded.body = ReportBodyOf(bytes);
        std::string().swap(bytes);
        loaded.report = report_model::ParseReportBody(loaded.body);
    }
    return loaded;
}

int StatusOf(const LoadedReport& loaded) {
    if (loaded.state != LoadState::Report) return kSomeNotAReport;
    return loaded.verdict.state == ReportState::Intact ? kAllIntact : kSomeAltered;
}

void Complain(const std::string& name, const std::string& problem) {
    Print(stderr, "reportcheck: " + report_model::ForTerminal(name) + ": " + report_model::ForTerminal(problem) + "\n");
}

void Warn(std::string_view message) {
    Print(stderr, "reportcheck: " + report_model::ForTerminal(message) + "\n");
}

std::string CannotBeRead(int error) {
    return std::string("cannot be read (") + std::strerror(error) + ")";
}
