// A file named on the command line, read and judged: the report in it, or
// why there is none. Every command that reads reports starts here.
#pragma once

#include <string>

#include "format/ReportVerdict.h"
#include "reader/ReportModel.h"
#include "reportcheck/Console.h"

// reportcheck's exit statuses, the same for every command; README and each
// command's --help list them.
enum ExitStatus {
    kAllIntact = 0,        // (diff: no difference)
    kSomeAltered = 1,      // (diff: differences)
    kSomeNotAReport = 2,   // not a report, or cannot be read
    kRedactionFailed = 3,  // redact: a replaced value survived; nothing written
    kUsageError = 64,      // the command line is wrong (sysexits.h's EX_USAGE)
};

enum class LoadState { Report, NotAReport, Unreadable };

struct LoadedReport {
    LoadState state = LoadState::Unreadable;
    ReportVerdict verdict;
    std::string problem;  // why it is not a report, or cannot be read
    report_model::Report report;
    std::u16string body;  // the body as it is, for whoever quotes its lines
};

LoadedReport LoadReport(const NativeChar* path);

// kAllIntact, kSomeAltered or kSomeNotAReport.
int StatusOf(const LoadedReport& loaded);

// "reportcheck: NAME: PROBLEM" on standard error.
void Complain(const std::string& name, const std::string& problem);

// "cannot be read (REASON)" for an errno value.
std::string CannotBeRead(int error);
