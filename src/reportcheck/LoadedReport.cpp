#include "reportcheck/LoadedReport.h"

#include <chrono>
#include <cstring>
#include <filesystem>

#include "reader/TerminalText.h"

namespace {

// The file's body as UTF-16, its bytes freed before the reader starts: a
// large report is held once as bytes, then once as text, never both with
// the model.
bool LoadBody(const NativeChar* path, LoadedReport& loaded) {
    std::string bytes;
    if (!ReadReportFile(path, bytes, loaded.problem)) return false;
    loaded.fileSize = bytes.size();
    loaded.verdict = CheckReportBytes(bytes);
    if (loaded.verdict.state == ReportState::NotAReport) {
        loaded.state = LoadState::NotAReport;
        loaded.problem = DescribeReportVerdict(loaded.verdict);
        return false;
    }
    loaded.body = ReportBodyOf(bytes);
    return true;
}

std::optional<std::int64_t> ModifiedSeconds(const NativeChar* path) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(path, error);
    if (error) return std::nullopt;
    const auto since1970 = std::chrono::file_clock::to_sys(time).time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(since1970).count();
}

}  // namespace

LoadedReport LoadReport(const NativeChar* path, KeepBody keepBody) {
    LoadedReport loaded;
    if (!LoadBody(path, loaded)) return loaded;
    loaded.state = LoadState::Report;
    loaded.report = report_model::ParseReportBody(loaded.body);
    loaded.modified = ModifiedSeconds(path);
    if (keepBody == KeepBody::No) std::u16string().swap(loaded.body);
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
