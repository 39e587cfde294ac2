#include "reportcheck/LoadedReport.h"

#include <cstring>

LoadedReport LoadReport(const NativeChar* path) {
    LoadedReport loaded;
    std::string bytes;
    int error = 0;
    if (!ReadWholeFile(path, bytes, error)) {
        loaded.problem = CannotBeRead(error);
        return loaded;
    }
    loaded.verdict = CheckReportBytes(bytes);
    if (loaded.verdict.state == ReportState::NotAReport) {
        loaded.state = LoadState::NotAReport;
        loaded.problem = DescribeReportVerdict(loaded.verdict);
        return loaded;
    }
    loaded.state = LoadState::Report;
    loaded.report = report_model::ParseReportBody(ReportBodyOf(bytes));
    return loaded;
}

int StatusOf(const LoadedReport& loaded) {
    if (loaded.state != LoadState::Report) return kSomeNotAReport;
    return loaded.verdict.state == ReportState::Intact ? kAllIntact : kSomeAltered;
}

void Complain(const std::string& name, const std::string& problem) {
    Print(stderr, "reportcheck: " + name + ": " + problem + "\n");
}

std::string CannotBeRead(int error) {
    return std::string("cannot be read (") + std::strerror(error) + ")";
}
